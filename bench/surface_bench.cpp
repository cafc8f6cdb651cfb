// Surfaces: values over arrays, and the product.
#include <array>

#include "inputs.h"
#include "plain/surface.h"

namespace bench {

namespace {

constexpr long grade = 3;
using table = std::array<double, grade * grade>;  // row by row, powers of x ascending

hyperbinom surface_of(const values& c, long g) {
  hyperbinom p;
  p.create(tessarn::slong(g));
  for (long j = 0; j < g; ++j) {
    for (long i = 0; i < g; ++i) p.set(tessarn::slong(i), tessarn::slong(j), c[std::size_t(g * j + i)]);
  }
  return p;
}

struct place_inputs {
  explicit place_inputs(long size) : n(std::size_t(size)), x(random_values(n, 81)), y(random_values(n, 82)), z(n) {
    const values drawn = random_values(grade * grade, 80);
    std::copy(drawn.begin(), drawn.end(), c.begin());
    ours = surface_of(drawn, grade);
    plain = {grade, drawn};
  }
  std::size_t n;
  static constexpr int rotation = 1;
  values x, y, z;
  table c;
  hyperbinom ours;
  plain::surface plain;
};

// One place after the other: the class has no call for arrays.
void add_values(long n) {
  const double powers = 2.0 * grade * (grade - 1) + grade, terms = grade * grade;
  row<place_inputs> r("hyperbinom::func at places, 9 coefficients", n,
                      {(powers + terms) * double(n), 24.0 * double(n)});
  r.agree({1e-12}).note("ascending powers, not Horner's scheme; the peer knows the grade");
  r.ours([](place_inputs & in, int) -> auto& {
    for (std::size_t k = 0; k < in.n; ++k) in.z[k] = in.ours.func(in.x[k], in.y[k]);
    return in.z;
  });
  r.peer(
      "other", "Horner loop", [](place_inputs & in, int) -> auto& {
        const table c = in.c;
        for (std::size_t k = 0; k < in.n; ++k) {
          double s = 0;
          for (std::size_t j = grade; j-- > 0;) {
            double t = 0;
            for (std::size_t i = grade; i-- > 0;) t = t * in.x[k] + c[grade * j + i];
            s = s * in.y[k] + t;
          }
          in.z[k] = s;
        }
        return in.z;
      });
  r.plain([](place_inputs & in, int) -> auto& {
    for (std::size_t k = 0; k < in.n; ++k) in.z[k] = plain::func(in.plain, in.x[k], in.y[k]);
    return in.z;
  });
}

struct surface_pair_inputs {
  explicit surface_pair_inputs(long size) : n(size) {
    for (int i = 0; i < rotation; ++i) {
      c.push_back(random_values(std::size_t(n * n), 83 + std::uint64_t(i)));
      ours.push_back(surface_of(c.back(), n));
    }
  }
  std::size_t next(int i) const { return std::size_t((i + 1) % rotation); }
  long n;
  static constexpr int rotation = 7;
  std::vector<values> c;
  std::vector<hyperbinom> ours;
};

void add_surface_product(long n) {
  const double m = double(n);
  row<surface_pair_inputs> r("hyperbinom product by grade", n, {2 * m * m * m * m, 48 * m * m});
  r.agree({1e-12});
  r.ours([](surface_pair_inputs& in, int i) {
    hyperbinom p;
    p.copy(in.ours[std::size_t(i)]);
    p *= in.ours[in.next(i)];
    return p;
  });
  r.peer("other", "loops", [](surface_pair_inputs& in, int i) {
    const values &a = in.c[std::size_t(i)], &b = in.c[in.next(i)];
    const std::size_t n = std::size_t(in.n), side = 2 * n - 1;
    values p(side * side);
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t l = 0; l < n; ++l) {
        for (std::size_t k = 0; k < n; ++k) {
          const double factor = b[n * j + k];
          double* to = &p[side * (j + l) + k];
          for (std::size_t h = 0; h < n; ++h) to[h] += a[n * l + h] * factor;
        }
      }
    }
    return p;
  });
  r.plain([](surface_pair_inputs& in, int i) {
    plain::surface p{in.n, in.c[std::size_t(i)]};
    plain::mul(p, plain::surface{in.n, in.c[in.next(i)]});
    return p;
  });
}

}  // namespace

void add_surfaces() {
  add_values(1000);
  add_values(100000);
  add_surface_product(3);
  add_surface_product(12);
}

}  // namespace bench
