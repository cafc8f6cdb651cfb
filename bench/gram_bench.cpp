// Square matrices: orthogonal columns, elimination in place, one cofactor, and the complex determinant.
#include <gsl/gsl_linalg.h>

#include <Eigen/LU>
#include <Eigen/QR>
#include <complex>

#include "inputs.h"
#include "lapack.h"
#include "plain/gram.h"

namespace bench {

namespace {

using complex = std::complex<double>;
using complex_rows = Eigen::Matrix<complex, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using real_rows = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// The operations work in place, so each call starts from a copy.
struct gram_inputs : square_inputs {
  explicit gram_inputs(long size)
      : square_inputs(size), pivots(std::size_t(n)), tau(std::size_t(n)), lapack_work(std::size_t(64 * n)) {
    for (int i = 0; i < rotation; ++i) {
      values& v = rows[std::size_t(i)];
      for (long k = 0; k < n; ++k) v[std::size_t(k * n + k)] += 3;  // no rows are exchanged
      ours[std::size_t(i)] = to_sqmat(v, n);
      eigen[std::size_t(i)] = to_eigen(v, n, n);
      columns[std::size_t(i)] = transposed(v, n, n);
      plain[std::size_t(i)] = to_plain_square(v, n);
    }
  }
  std::vector<int> pivots;
  values tau, lapack_work, work_a;
  real_square result;
};

// Columns of an orthogonal matrix, each as long as the part of our column that is orthogonal to those before.
template <class Triangle>
Eigen::MatrixXd scaled(Eigen::MatrixXd q, const Triangle& r) {
  for (Eigen::Index k = 0; k < q.cols(); ++k) q.col(k) *= r(k, k);
  return q;
}

void add_orthogonalize(long n) {
  const double m = double(n);
  // For each pair of columns two sums of products, of which the squares need one a column, and one update.
  row<gram_inputs> r("orthogonalize", n, {2 * m * m * (m - 1) + 2 * m * m, 16 * m * m});
  r.agree({1e-9}).note("the peers give unit columns by reflections");
  r.ours([](gram_inputs & in, int i) -> auto& {
    in.result = in.ours[std::size_t(i)];
    in.result.orthogonalize();
    return in.result;
  });
  r.peer("Eigen", "Eigen Householder", [](gram_inputs& in, int i) {
    const Eigen::HouseholderQR<Eigen::MatrixXd> qr(in.eigen[std::size_t(i)]);
    return scaled(qr.householderQ(), qr.matrixQR());
  });
  r.peer("LAPACK", "dgeqrf, dorgqr", [](gram_inputs& in, int i) {
    Eigen::MatrixXd a = in.eigen[std::size_t(i)];
    int k = int(in.n), length = int(in.lapack_work.size()), info = 0;
    LAPACK_dgeqrf(&k, &k, a.data(), &k, in.tau.data(), in.lapack_work.data(), &length, &info);
    const Eigen::VectorXd diagonal = a.diagonal();
    LAPACK_dorgqr(&k, &k, &k, a.data(), &k, in.tau.data(), in.lapack_work.data(), &length, &info);
    for (Eigen::Index c = 0; c < a.cols(); ++c) a.col(c) *= diagonal(c);
    return a;
  });
  r.plain([](gram_inputs& in, int i) {
    plain::square a = in.plain[std::size_t(i)];
    plain::orthogonalize(a);
    return a;
  });
}

void add_optimize(long n) {
  const double m = double(n);
  row<gram_inputs> r("optimize", n, {2.0 / 3.0 * m * (m - 1) * (m + 1), 16 * m * m});
  r.agree({1e-9});
  r.ours([](gram_inputs & in, int i) -> auto& {
    in.result = in.ours[std::size_t(i)];
    in.result.optimize();
    return in.result;
  });
  // Below the diagonal rounding errors are left instead of 0. The peer eliminates with the same factors and leaves the
  // same rounding errors, so whole matrices are compared.
  r.peer("Eigen", "Eigen, rank-one updates", [](gram_inputs& in, int i) {
    real_rows a = in.eigen[std::size_t(i)];
    for (long k = 0; k + 1 < in.n; ++k) {
      const long left = in.n - k - 1;
      const Eigen::VectorXd factors = a.col(k).tail(left) / a(k, k);
      a.bottomRightCorner(left, left + 1).noalias() -= factors * a.row(k).tail(left + 1);
    }
    return a;
  });
  r.plain([](gram_inputs& in, int i) {
    plain::square a = in.plain[std::size_t(i)];
    plain::optimize(a);
    return a;
  });
}

void add_cof(long n) {
  const double m = double(n - 1);
  row<gram_inputs> r("cof", n, {n == 4 ? 17 : 2.0 / 3.0 * m * (m - 1) * (m + 1), 8 * m * m, traffic::read});
  r.agree({1e-8});
  r.ours([](gram_inputs& in, int i) { return in.ours[std::size_t(i)].cof(1, 2); });
  r.peer("Eigen", "Eigen LU", [](gram_inputs& in, int i) {
    const Eigen::MatrixXd& a = in.eigen[std::size_t(i)];
    const long left = in.n - 3, below = in.n - 2;
    Eigen::MatrixXd rest(in.n - 1, in.n - 1);
    rest.topLeftCorner(2, 1) = a.topLeftCorner(2, 1);
    rest.topRightCorner(2, below) = a.topRightCorner(2, below);
    rest.bottomLeftCorner(left, 1) = a.bottomLeftCorner(left, 1);
    rest.bottomRightCorner(left, below) = a.bottomRightCorner(left, below);
    return -rest.determinant();
  });
  r.plain([](gram_inputs& in, int i) { return plain::cof(in.plain[std::size_t(i)], 1, 2); });
}

struct complex_det_inputs {
  explicit complex_det_inputs(long size)
      : n(size),
        rotation(rotation_for(16.0 * double(n) * double(n))),
        pivots(std::size_t(n)),
        gsl_a(gsl_matrix_complex_alloc(std::size_t(n), std::size_t(n)), gsl_matrix_complex_free),
        permutation(gsl_permutation_alloc(std::size_t(n)), gsl_permutation_free) {
    test::random_source r(7100);
    for (int i = 0; i < rotation; ++i) {
      complex_rows a(n, n);
      sqmat<cplx> ours_a;
      ours_a.create(index(n));
      plain::csquare plain_a{plain::u32(n)};
      for (long y = 0; y < n; ++y) {
        for (long x = 0; x < n; ++x) {
          const double re = r.uniform() / double(n) + (x == y), im = r.uniform() / double(n);
          a(y, x) = complex(re, im);
          ours_a.set(index(x), index(y), {re, im});
          plain_a.data[std::size_t(y * n + x)] = {re, im};
        }
      }
      rows.push_back(a);
      eigen.push_back(a);
      ours.push_back(ours_a);
      plain.push_back(plain_a);
    }
  }
  long n;
  int rotation;
  std::vector<complex_rows> rows;
  std::vector<Eigen::MatrixXcd> eigen;
  std::vector<sqmat<cplx>> ours;
  std::vector<plain::csquare> plain;
  Eigen::MatrixXcd scratch;
  std::vector<int> pivots;
  std::unique_ptr<gsl_matrix_complex, void (*)(gsl_matrix_complex*)> gsl_a;
  std::unique_ptr<gsl_permutation, void (*)(gsl_permutation*)> permutation;
};

values parts(complex z) { return {z.real(), z.imag()}; }

void add_complex_det(long n) {
  const double m = double(n);
  row<complex_det_inputs> r("complex det", n, {8.0 / 3 * m * m * m, sizeof(cplx) * m * m, traffic::read});
  r.agree({1e-9});
  r.ours([](complex_det_inputs& in, int i) {
    const cplx d = in.ours[std::size_t(i)].det();
    return values{d.re, d.im};
  });
  r.peer("Eigen", "Eigen LU",
         [](complex_det_inputs& in, int i) { return parts(in.eigen[std::size_t(i)].determinant()); });
  r.peer("LAPACK", "zgetrf", [](complex_det_inputs& in, int i) {
    in.scratch = in.eigen[std::size_t(i)];
    int k = int(in.n), info = 0;
    LAPACK_zgetrf(&k, &k, reinterpret_cast<lapack_complex_double*>(in.scratch.data()), &k, in.pivots.data(), &info);
    complex d = 1;
    for (long j = 0; j < in.n; ++j) d *= in.pivots[std::size_t(j)] == j + 1 ? in.scratch(j, j) : -in.scratch(j, j);
    return parts(d);
  });
  r.peer("GSL", "GSL LU", [](complex_det_inputs& in, int i) {
    const double* a = reinterpret_cast<const double*>(in.rows[std::size_t(i)].data());
    std::copy(a, a + 2 * in.n * in.n, in.gsl_a->data);
    int sign = 0;
    gsl_linalg_complex_LU_decomp(in.gsl_a.get(), in.permutation.get(), &sign);
    const gsl_complex d = gsl_linalg_complex_LU_det(in.gsl_a.get(), sign);
    return values{GSL_REAL(d), GSL_IMAG(d)};
  });
  r.plain([](complex_det_inputs& in, int i) {
    const plain::cnum d = plain::det(in.plain[std::size_t(i)]);
    return values{d.re, d.im};
  });
}

}  // namespace

void add_gram() {
  for (long n : {4, 16, 64, 256}) add_orthogonalize(n);
  for (long n : {4, 16, 64, 256}) add_optimize(n);
  for (long n : {4, 8, 32}) add_cof(n);
  for (long n : {4, 16, 64}) add_complex_det(n);
}

}  // namespace bench
