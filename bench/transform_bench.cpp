// Affine maps between clouds of points, and the direction that is as parallel and as perpendicular as
// possible to others.
#include <Eigen/Dense>

#include "inputs.h"
#include "lapack.h"
#include "plain/match.h"
#include "plain/plane_fit.h"

namespace bench {

namespace {

// The first three rows: the last one fits the constant 1, which the peers do not.
struct upper_rows {
  const values rows;
};
values values_of(const upper_rows& m) { return values(m.rows.begin(), m.rows.begin() + 12); }
template <class Point>
struct cloud {
  std::vector<Point> points;
};
template <class Point>
values values_of(const cloud<Point>& c) {
  values r;
  for (const Point& p : c.points) r.insert(r.end(), {p.x, p.y, p.z});
  return r;
}
// The two clouds of a match, and the map between them.
struct map_inputs {
  explicit map_inputs(long size) : n(size), rotation(rotation_for(64.0 * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      const auto [p, q] = matched_points(n, 8000 + std::uint64_t(i));
      a.emplace_back();
      b.emplace_back();
      plain_a.emplace_back();
      plain_b.emplace_back();
      for (long k = 0; k < n; ++k) {
        a.back().emplace_back(p(0, k), p(1, k), p(2, k));
        b.back().emplace_back(q(0, k), q(1, k), q(2, k));
        plain_a.back().push_back({p(0, k), p(1, k), p(2, k)});
        plain_b.back().push_back({q(0, k), q(1, k), q(2, k)});
      }
      eigen_a.push_back(p);
      eigen_b.push_back(q);
    }
    map.calc_transform(a[0].data(), b[0].data(), index(n));
    plain_map = to_plain_square(values(map.getData(), map.getData() + 16), 4);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 4; ++x) eigen_map.matrix()(y, x) = map.get(index(x), index(y));
    }
    out.points.resize(std::size_t(n));
    plain_out.points.resize(std::size_t(n));
    eigen_out.resize(3, n);
  }
  long n;
  int rotation;
  std::vector<std::vector<vector3d>> a, b;
  std::vector<std::vector<plain::point3>> plain_a, plain_b;
  std::vector<Eigen::Matrix3Xd> eigen_a, eigen_b;
  real_square map;
  plain::square plain_map;
  Eigen::AffineCompact3d eigen_map;
  cloud<vector3d> out;
  cloud<plain::point3> plain_out;
  Eigen::Matrix3Xd eigen_out;
  Eigen::MatrixXd design, right;
  std::vector<double> work;
};

// Three rows of a matrix, whose columns hold the rows of the result.
upper_rows rows_of(const Eigen::MatrixXd& solved) { return {values(solved.data(), solved.data() + 12)}; }
struct points_of {
  const Eigen::Matrix3Xd* m;
};
values values_of(const points_of& p) { return values(p.m->data(), p.m->data() + p.m->size()); }

void fill_design(map_inputs& in, int i) {
  in.design.resize(in.n, 4);
  in.design.leftCols(3) = in.eigen_a[std::size_t(i)].transpose();
  in.design.col(3).setOnes();
}

void add_calc_transform(long n) {
  // Ten sums of the normal equations and twelve right-hand sides, two operations each.
  row<map_inputs> r("calc_transform", n, {40.0 * double(n), 64.0 * double(n), traffic::read});
  r.agree({1e-8});
  r.ours([](map_inputs& in, int i) {
    in.map.calc_transform(in.a[std::size_t(i)].data(), in.b[std::size_t(i)].data(), index(in.n));
    return upper_rows{values(in.map.getData(), in.map.getData() + 12)};
  });
  r.peer("Eigen", "Eigen normal equations", [](map_inputs& in, int i) {
    fill_design(in, i);
    const Eigen::Matrix4d normal = in.design.transpose() * in.design;
    const Eigen::Matrix<double, 4, 3> sums = in.design.transpose() * in.eigen_b[std::size_t(i)].transpose();
    return rows_of(normal.ldlt().solve(sums));
  });
  r.peer("LAPACK", "dgels", [](map_inputs& in, int i) {
    fill_design(in, i);
    in.right = in.eigen_b[std::size_t(i)].transpose();
    in.work.resize(std::size_t(4 * 64 + 64));
    int rows = int(in.n), four = 4, three = 3, length = int(in.work.size()), info = 0;
    LAPACK_dgels("N", &rows, &four, &three, in.design.data(), &rows, in.right.data(), &rows, in.work.data(), &length,
                 &info);
    return rows_of(in.right.topRows(4));
  });
  r.plain([](map_inputs& in, int i) {
    plain::square t;
    plain::calc_transform(t, in.plain_a[std::size_t(i)].data(), in.plain_b[std::size_t(i)].data(), plain::u32(in.n));
    return upper_rows{t.data};
  });
}

void add_transform(long n) {
  row<map_inputs> r("transform over an array", n, {18.0 * double(n), 64.0 * double(n)});
  r.agree({1e-13});
  r.ours([](map_inputs & in, int i) -> auto& {
    in.map.transform(in.a[std::size_t(i)].data(), in.out.points.data(), index(in.n));
    return in.out;
  });
  r.peer("Eigen", "Eigen Affine3d", [](map_inputs& in, int i) {
    in.eigen_out.noalias() = in.eigen_map.linear() * in.eigen_a[std::size_t(i)];
    in.eigen_out.colwise() += in.eigen_map.translation();
    return points_of{&in.eigen_out};
  });
  r.peer("Eigen", "Eigen Affine3d, point by point", [](map_inputs& in, int i) {
    for (long k = 0; k < in.n; ++k) in.eigen_out.col(k) = in.eigen_map * in.eigen_a[std::size_t(i)].col(k);
    return points_of{&in.eigen_out};
  });
  r.plain([](map_inputs & in, int i) -> auto& {
    for (std::size_t k = 0; k < in.plain_out.points.size(); ++k)
      plain::transform(in.plain_map, in.plain_a[std::size_t(i)][k], in.plain_out.points[k]);
    return in.plain_out;
  });
}

// Directions near the z axis, and others across it, of any lengths.
struct direction_inputs {
  explicit direction_inputs(long size) : n(size) {
    for (int i = 0; i < rotation; ++i) {
      test::random_source r(90 + std::uint64_t(i));
      parallel.emplace_back();
      perpendicular.emplace_back();
      plain_parallel.emplace_back();
      plain_perpendicular.emplace_back();
      eigen_parallel.emplace_back(3, n);
      eigen_perpendicular.emplace_back(3, n);
      for (long k = 0; k < n; ++k) {
        plain::vec3 p, q;
        p.x = r.uniform() / 8;
        p.y = r.uniform() / 8;
        p.z = 1;
        q.x = r.uniform();
        q.y = r.uniform();
        q.z = r.uniform() / 8;
        parallel.back().emplace_back(p.x, p.y, p.z);
        perpendicular.back().emplace_back(q.x, q.y, q.z);
        plain_parallel.back().push_back(p);
        plain_perpendicular.back().push_back(q);
        eigen_parallel.back().col(k) = Eigen::Vector3d(p.x, p.y, p.z);
        eigen_perpendicular.back().col(k) = Eigen::Vector3d(q.x, q.y, q.z);
      }
    }
  }
  long n;
  static constexpr int rotation = 3;
  std::vector<std::vector<vector3d>> parallel, perpendicular;
  std::vector<std::vector<plain::vec3>> plain_parallel, plain_perpendicular;
  std::vector<Eigen::Matrix3Xd> eigen_parallel, eigen_perpendicular;
};

void add_calc_normale(long n) {
  // One pass for the six sums of squares of each array.
  row<direction_inputs> r("CalcNormale, as many of each", n, {24.0 * double(n), 64.0 * double(n), traffic::read});
  r.agree({1e-5}).note("a search of stated steps");
  r.ours([](direction_inputs& in, int i) {
    vector3d v;
    (void)plane::CalcNormale(v, in.parallel[std::size_t(i)].data(), index(in.n),
                             in.perpendicular[std::size_t(i)].data(), index(in.n));
    return v;
  });
  r.peer("Eigen", "Eigen, smallest eigenvector", [](direction_inputs& in, int i) -> Eigen::Vector3d {
    const Eigen::Matrix3Xd &p = in.eigen_parallel[std::size_t(i)], &q = in.eigen_perpendicular[std::size_t(i)];
    const Eigen::Matrix3d form = q * q.transpose() - p * p.transpose();
    const Eigen::Vector3d v = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(form).eigenvectors().col(0);
    return v.z() < 0 ? Eigen::Vector3d(-v) : v;
  });
  if (n <= 100)
    r.plain([](direction_inputs& in, int i) {
      return plain::calc_normale(in.plain_parallel[std::size_t(i)], in.plain_perpendicular[std::size_t(i)]);
    });
}

}  // namespace

void add_transforms() {
  for (long n : {10, 1000, 100000}) add_calc_transform(n);
  for (long n : {1000, 1000000}) add_transform(n);
  for (long n : {10, 1000}) add_calc_normale(n);
}

}  // namespace bench
