// The growth of times: operations of the library alone, over about three decades of sizes. The remark of a row is what
// the method needs; bench/scaling.py compares the measured growth with it.
#include <initializer_list>

#include "inputs.h"

namespace bench {

namespace {

template <class Inputs, class Call>
void add_sizes(const std::string& operation, const std::string& method, std::initializer_list<long> sizes, Call f) {
  for (long n : sizes) row<Inputs>(operation, n, {}).note(method).ours(f);
}
template <class Inputs, class Call, class Prepare>
void add_sizes(const std::string& operation, const std::string& method, std::initializer_list<long> sizes, Call f,
               Prepare prepare) {
  for (long n : sizes) row<Inputs>(operation, n, {}).note(method).ours(f, prepare);
}

// Points in order, one in five far off, or in random order; changed by most operations.
template <bool Sorted>
struct growing_list {
  explicit growing_list(long size) : n(size), rotation(rotation_for(24.0 * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      test::random_source r(30 + std::uint64_t(i));
      original.emplace_back();
      original.back().reserve(index(n));
      for (long k = 0; k < n; ++k) {
        const double x = Sorted ? double(k) : r.uniform();
        original.back().add(vector(x, std::ldexp(r.uniform(), -8) + (r.below(5) == 0 ? 9.0 : 0.0)));
      }
    }
    lists = original;
  }
  static void restore(growing_list& in) { in.lists = in.original; }
  vectormat& at(int i) { return lists[std::size_t(i)]; }
  long n;
  int rotation;
  std::vector<vectormat> original, lists;
};

// The chain that findline took out of a list.
struct taken {
  std::unique_ptr<vectormat> found;
};
values values_of(const taken& t) { return bench::values_of(*t.found); }

void add_lists_of(std::initializer_list<long> sizes) {
  using sorted = growing_list<true>;
  using random = growing_list<false>;
  add_sizes<random>("list: add, point by point", "n", sizes, [](random& in, int i) {
    vectormat l;
    for (const vector& p : in.at(i)) l.add(p);
    return l;
  });
  add_sizes<random>("list: average", "n", sizes, [](random& in, int i) { return in.at(i).average(); });
  add_sizes<random>(
      "list: del(0)", "n", sizes, [](random & in, int i) -> auto& {
        vectormat& l = in.at(i);
        const vector first = l[0];
        l.del(0);
        l.add(first);
        return l;
      },
      random::restore);
  add_sizes<random>(
      "list: sort", "n log n", sizes, [](random & in, int i) -> auto& {
        in.at(i).sort();
        return in.at(i);
      },
      random::restore);
  add_sizes<sorted>(
      "list: DeleteErrors", "n", sizes, [](sorted & in, int i) -> auto& {
        in.at(i).DeleteErrors(4);
        return in.at(i);
      },
      sorted::restore);
  add_sizes<sorted>(
      "list: findline", "n", sizes,
      [](sorted& in, int i) { return taken{std::unique_ptr<vectormat>(in.at(i).findline(vector(1, 0)))}; },
      sorted::restore);
}

struct growing_cloud {
  explicit growing_cloud(long size) : n(index(size)) {
    for (const plain::vec2& p : curve_points(size, 91)) flat.emplace_back(p.x, p.y);
    for (const plain::vec3& p : surface_points(size, 92)) space.emplace_back(p.x, p.y, p.z);
    for (const plain::vec3& p : plane_points(size, 93)) near_plane.emplace_back(p.x, p.y, p.z);
    const point_pairs pairs = matched_points(size, 94);
    for (long k = 0; k < size; ++k) {
      from.emplace_back(pairs.a(0, k), pairs.a(1, k), pairs.a(2, k));
      to.emplace_back(pairs.b(0, k), pairs.b(1, k), pairs.b(2, k));
    }
    system = to_mat(random_values(std::size_t(4 * size), 95), 4, size);
    right = to_mat(random_values(std::size_t(size), 96), 1, size);
  }
  index n;
  static constexpr int rotation = 1;
  std::vector<vector> flat;
  std::vector<vector3d> space, near_plane, from, to;
  real_matrix system, right, solution;
  binom curve;
  hyperbinom surface;
  real_square map;
};

void add_clouds(std::initializer_list<long> sizes) {
  using inputs = growing_cloud;
  add_sizes<inputs>(
      "fit, 4 coefficients", "n", sizes, [](inputs & in, int) -> auto& {
        in.curve.create(in.flat.data(), in.n, 4u);
        return in.curve;
      });
  add_sizes<inputs>(
      "surface fit, grade 3", "n", sizes, [](inputs & in, int) -> auto& {
        in.surface.create(in.space.data(), in.n, 3u);
        return in.surface;
      });
  add_sizes<inputs>("plane fit", "n", sizes, [](inputs& in, int) { return plane(in.near_plane.data(), in.n).normal; });
  add_sizes<inputs>(
      "least squares, 4 columns", "n", sizes, [](inputs & in, int) -> auto& {
        in.solution.solve(in.system, in.right);
        return in.solution;
      });
  add_sizes<inputs>(
      "calc_match", "n", sizes, [](inputs & in, int) -> auto& {
        (void)in.map.calc_match(in.from.data(), in.to.data(), in.n);
        return in.map;
      });
  add_sizes<inputs>(
      "calc_transform", "n", sizes, [](inputs & in, int) -> auto& {
        in.map.calc_transform(in.from.data(), in.to.data(), in.n);
        return in.map;
      });
}

struct growing_square {
  explicit growing_square(long size)
      : n(size), rotation(rotation_for(8.0 * double(n) * double(n))), b(random_values(std::size_t(n), 98)) {
    for (int i = 0; i < rotation; ++i) {
      values v = random_values(std::size_t(n * n), 97 + std::uint64_t(i));
      for (long k = 0; k < n; ++k) v[std::size_t(k * n + k)] += 3;
      square.push_back(to_sqmat(v, n));
      matrix.push_back(to_mat(v, n, n));
    }
    x = to_mat(b, 1, n);
  }
  long n;
  int rotation;
  values b;
  std::vector<real_square> square;
  std::vector<real_matrix> matrix;
  real_matrix x, u, s, v;
  real_square result;
};

void add_squares(std::initializer_list<long> sizes, std::initializer_list<long> short_sizes) {
  using inputs = growing_square;
  add_sizes<inputs>("product", "n^3", sizes,
                    [](inputs& in, int i) { return in.matrix[std::size_t(i)] * in.matrix[std::size_t(i)]; });
  add_sizes<inputs>(
      "solve", "n^3", sizes, [](inputs & in, int i) -> auto& {
        std::copy(in.b.begin(), in.b.end(), in.x.getData());
        in.square[std::size_t(i)].solve(in.x);
        return in.x;
      });
  add_sizes<inputs>("det", "n^3", sizes, [](inputs& in, int i) { return in.square[std::size_t(i)].det(); });
  add_sizes<inputs>(
      "orthogonalize", "n^3", sizes, [](inputs & in, int i) -> auto& {
        in.result = in.square[std::size_t(i)];
        in.result.orthogonalize();
        return in.result;
      });
  add_sizes<inputs>(
      "decompose", "n^3", sizes, [](inputs & in, int i) -> auto& {
        in.matrix[std::size_t(i)].decompose(in.u, in.s, in.v);
        return in.s;
      });
  add_sizes<inputs>(
      "invert", "n^5", short_sizes, [](inputs & in, int i) -> auto& {
        in.matrix[std::size_t(i)].invert(in.u);
        return in.u;
      });
}

// Samples of a search: the zero, and the extreme point of the curvature, lie just below 1.
struct growing_search {
  explicit growing_search(long size)
      : n(size), step(1 / double(size)), eps(step * 1e-3), x(random_values(std::size_t(n), 99)), y(x) {
    take(zero, curve_with_zero(before_one(step, 0)));
    take(bend, curve_with_bend(before_one(step, 0)));
    take(rising, {0.25, 0.5, 0.125, 0.0625});
  }
  static void take(binom& p, const values& c) {
    p.create(tessarn::slong(c.size()));
    for (std::size_t k = 0; k < c.size(); ++k) p.set(tessarn::slong(k), c[k]);
  }
  long n;
  double step, eps;
  static constexpr int rotation = 1;
  values x, y;
  binom zero, bend, rising;
};

void add_samples(std::initializer_list<long> sizes) {
  using inputs = growing_search;
  add_sizes<inputs>(
      "func over an array", "n", sizes, [](inputs & in, int) -> auto& {
        in.zero.func(in.x.data(), in.y.data(), index(in.n));
        return in.y;
      });
  add_sizes<inputs>("find_zero by samples", "n", sizes,
                    [](inputs& in, int) { return in.zero.find_zero(0, 1, in.step, in.eps); });
  add_sizes<inputs>("find_extrpoint_arc by samples", "n", sizes,
                    [](inputs& in, int) { return in.bend.find_extrpoint_arc(0, 1, in.step, in.eps); });
  add_sizes<inputs>("find_high_hpoint_arc by samples", "n", sizes,
                    [](inputs& in, int) { return in.bend.find_high_hpoint_arc(0, 1, in.step, in.eps); });
  add_sizes<inputs>("antifunction by samples", "n", sizes,
                    [](inputs& in, int) { return in.rising.antifunction(0, 1, in.step); });
}

struct growing_polynomial {
  explicit growing_polynomial(long size) { growing_search::take(p, random_values(std::size_t(size), 100)); }
  static constexpr int rotation = 1;
  binom p, result;
};

void add_polynomials(std::initializer_list<long> sizes) {
  using inputs = growing_polynomial;
  add_sizes<inputs>(
      "polynomial product", "n^2", sizes, [](inputs & in, int) -> auto& {
        in.result.copy(in.p);
        in.result *= in.p;
        return in.result;
      });
  add_sizes<inputs>(
      "shift_h", "n^2", sizes, [](inputs & in, int) -> auto& {
        in.result.copy(in.p);
        in.result.shift_h(0.25);
        return in.result;
      });
}

}  // namespace

void add_scaling() {
  const auto points = {1000L, 3000L, 10000L, 30000L, 100000L, 300000L, 1000000L};
  add_lists_of(points);
  add_clouds(points);
  add_samples(points);
  add_polynomials({4, 16, 64, 256, 1024, 4096});
  add_squares({2, 4, 8, 16, 32, 64, 128, 256, 512, 1024}, {2, 4, 8, 16, 32, 64, 128});
}

}  // namespace bench
