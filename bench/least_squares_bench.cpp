// Over-determined systems with four unknowns, and the rigid match of two point sets.
#include <gsl/gsl_multifit.h>

#include <Eigen/Dense>
#include <Eigen/Geometry>

#include "inputs.h"
#include "lapack.h"
#include "plain/linear.h"
#include "plain/match.h"

namespace bench {

namespace {

constexpr long unknowns = 4;

struct tall_inputs {
  explicit tall_inputs(long size)
      : m(size),
        rotation(rotation_for(8.0 * double(m * unknowns))),
        work(4096),
        gsl_x(gsl_vector_alloc(unknowns)),
        gsl_covariance(gsl_matrix_alloc(unknowns, unknowns)),
        gsl_work(gsl_multifit_linear_alloc(std::size_t(m), unknowns), gsl_multifit_linear_free) {
    for (int i = 0; i < rotation; ++i) {
      const auto seed = static_cast<std::uint64_t>(i);
      const values a = random_values(std::size_t(m * unknowns), 4000 + seed);
      const values b = random_values(std::size_t(m), 5000 + seed);
      ours_a.push_back(to_mat(a, unknowns, m));
      ours_b.push_back(to_mat(b, 1, m));
      eigen_a.push_back(to_eigen(a, unknowns, m));
      eigen_b.push_back(Eigen::Map<const Eigen::VectorXd>(b.data(), m));
      plain_a.push_back(to_plain(a, unknowns, m));
      plain_b.push_back(to_plain(b, 1, m));
      gsl_a.push_back(gsl_copy(a, unknowns, m));
      gsl_b.push_back(gsl_copy(b, 1, m));
    }
  }
  long m;
  int rotation;
  std::vector<real_matrix> ours_a, ours_b;
  std::vector<Eigen::MatrixXd> eigen_a;
  std::vector<Eigen::VectorXd> eigen_b;
  std::vector<plain::matrix> plain_a, plain_b;
  std::vector<gsl_matrix_ptr> gsl_a, gsl_b;
  real_matrix x;
  plain::matrix plain_x;
  Eigen::MatrixXd scratch_a;
  Eigen::VectorXd scratch_b;
  values work;
  gsl_vector_ptr gsl_x;
  gsl_matrix_ptr gsl_covariance;
  std::unique_ptr<gsl_multifit_linear_workspace, void (*)(gsl_multifit_linear_workspace*)> gsl_work;
};

void add_system(long m) {
  const double rows = double(m), n = unknowns;
  row<tall_inputs> r("least squares, 4 columns", m, {rows * (n * (n + 1) + 2 * n), 8 * rows * (n + 1), traffic::read});
  r.agree({1e-10});
  r.ours([](tall_inputs & in, int i) -> auto& {
    in.x.solve(in.ours_a[std::size_t(i)], in.ours_b[std::size_t(i)]);
    return in.x;
  });
  r.peer("Eigen", "Eigen normal equations", [](tall_inputs& in, int i) -> Eigen::VectorXd {
    const Eigen::MatrixXd& a = in.eigen_a[std::size_t(i)];
    return (a.transpose() * a).ldlt().solve(a.transpose() * in.eigen_b[std::size_t(i)]);
  });
  r.peer("Eigen", "Eigen QR", [](tall_inputs& in, int i) -> Eigen::VectorXd {
    return in.eigen_a[std::size_t(i)].householderQr().solve(in.eigen_b[std::size_t(i)]);
  });
  r.peer(
      "LAPACK", "dsyrk, dposv", [](tall_inputs & in, int i) -> auto& {
        const Eigen::MatrixXd& a = in.eigen_a[std::size_t(i)];
        int n = unknowns, one = 1, rows = int(in.m), info = 0;
        double normal[unknowns * unknowns];
        in.scratch_b.resize(unknowns);
        cblas_dsyrk(CblasColMajor, CblasUpper, CblasTrans, n, rows, 1.0, a.data(), rows, 0.0, normal, n);
        cblas_dgemv(CblasColMajor, CblasTrans, rows, n, 1.0, a.data(), rows, in.eigen_b[std::size_t(i)].data(), 1, 0.0,
                    in.scratch_b.data(), 1);
        LAPACK_dposv("U", &n, &one, normal, &n, in.scratch_b.data(), &n, &info);
        return in.scratch_b;
      });
  r.peer("LAPACK", "dgels", [](tall_inputs& in, int i) -> Eigen::VectorXd {
    in.scratch_a = in.eigen_a[std::size_t(i)];
    in.scratch_b = in.eigen_b[std::size_t(i)];
    int n = unknowns, one = 1, rows = int(in.m), info = 0, length = int(in.work.size());
    LAPACK_dgels("N", &rows, &n, &one, in.scratch_a.data(), &rows, in.scratch_b.data(), &rows, in.work.data(), &length,
                 &info);
    return in.scratch_b.head(unknowns);
  });
  r.peer(
      "GSL", "gsl_multifit", [](tall_inputs & in, int i) -> auto& {
        double residual = 0;
        const gsl_vector_const_view b = gsl_matrix_const_column(in.gsl_b[std::size_t(i)].get(), 0);
        gsl_multifit_linear(in.gsl_a[std::size_t(i)].get(), &b.vector, in.gsl_x.get(), in.gsl_covariance.get(),
                            &residual, in.gsl_work.get());
        return *in.gsl_x;
      });
  r.plain([](tall_inputs & in, int i) -> auto& {
    plain::least_squares(in.plain_x, in.plain_a[std::size_t(i)], in.plain_b[std::size_t(i)]);
    return in.plain_x;
  });
}

struct match_inputs {
  explicit match_inputs(long size) : n(size), rotation(rotation_for(64.0 * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      const auto [p, q] = matched_points(n, 6000 + std::uint64_t(i));
      auto points = [this](const Eigen::Matrix3Xd& m) {
        std::vector<vector3d> v;
        for (long k = 0; k < n; ++k) v.emplace_back(m(0, k), m(1, k), m(2, k));
        return v;
      };
      auto plain_points = [this](const Eigen::Matrix3Xd& m) {
        std::vector<plain::point3> v;
        for (long k = 0; k < n; ++k) v.push_back({m(0, k), m(1, k), m(2, k)});
        return v;
      };
      a.push_back(points(p));
      b.push_back(points(q));
      plain_a.push_back(plain_points(p));
      plain_b.push_back(plain_points(q));
      eigen_a.push_back(p);
      eigen_b.push_back(q);
    }
  }
  long n;
  int rotation;
  std::vector<std::vector<vector3d>> a, b;
  std::vector<std::vector<plain::point3>> plain_a, plain_b;
  std::vector<Eigen::Matrix3Xd> eigen_a, eigen_b;
  real_square transform;
  plain::square plain_transform;
};

// The two libraries define the translation differently; the rotation is what both compute.
struct rotation_of_library {
  const real_square* t;
};
values values_of(const rotation_of_library& r) {
  values v;
  for (index y = 0; y < 3; ++y) {
    for (index x = 0; x < 3; ++x) v.push_back(r.t->get(x, y));
  }
  return v;
}

void add_match(long n) {
  row<match_inputs> r("calc_match", n, {51.0 * double(n), 64.0 * double(n), traffic::read});
  r.agree({1e-9, false});
  r.ours([](match_inputs& in, int i) {
    (void)in.transform.calc_match(in.a[std::size_t(i)].data(), in.b[std::size_t(i)].data(), index(in.n));
    return rotation_of_library{&in.transform};
  });
  r.peer("Eigen", "Eigen umeyama", [](match_inputs& in, int i) -> Eigen::Matrix3d {
    return Eigen::umeyama(in.eigen_b[std::size_t(i)], in.eigen_a[std::size_t(i)], false).topLeftCorner<3, 3>();
  });
  r.plain([](match_inputs& in, int i) -> values {
    plain::calc_match(in.plain_transform, in.plain_a[std::size_t(i)].data(), in.plain_b[std::size_t(i)].data(),
                      plain::u32(in.n));
    values v;
    for (plain::u32 y = 0; y < 3; ++y) {
      for (plain::u32 x = 0; x < 3; ++x) v.push_back(in.plain_transform.get(x, y));
    }
    return v;
  });
}

}  // namespace

void add_least_squares() {
  add_system(100);
  add_system(1000);
  add_system(100000);
  add_match(10);
  add_match(1000);
  add_match(100000);
}

}  // namespace bench
