// Product and solve of complex square matrices.
#include <gsl/gsl_linalg.h>

#include <Eigen/LU>
#include <complex>

#include "inputs.h"
#include "lapack.h"
#include "plain/det_solve.h"

namespace bench {

namespace {

using complex = std::complex<double>;
using complex_rows = Eigen::Matrix<complex, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

sqmat<cplx> to_complex_sqmat(const complex_rows& m) {
  sqmat<cplx> r;
  r.create(index(m.rows()));
  for (index y = 0; y < index(m.rows()); ++y) {
    for (index x = 0; x < index(m.rows()); ++x) r.set(x, y, {m(y, x).real(), m(y, x).imag()});
  }
  return r;
}
plain::csquare to_plain_csquare(const complex_rows& m) {
  plain::csquare r(plain::u32(m.rows()));
  for (std::size_t k = 0; k < r.data.size(); ++k) r.data[k] = {m.data()[k].real(), m.data()[k].imag()};
  return r;
}

struct complex_inputs {
  explicit complex_inputs(long size)
      : n(size),
        rotation(rotation_for(16.0 * double(n) * double(n))),
        pivots(std::size_t(n)),
        gsl_a(gsl_matrix_complex_alloc(std::size_t(n), std::size_t(n)), gsl_matrix_complex_free),
        gsl_x(gsl_vector_complex_alloc(std::size_t(n)), gsl_vector_complex_free),
        permutation(gsl_permutation_alloc(std::size_t(n)), gsl_permutation_free) {
    test::random_source r(7000);
    auto draw = [&] { return complex(r.uniform(), r.uniform()); };
    x.create(1, index(n));
    for (int i = 0; i < rotation; ++i) {
      complex_rows a(n, n);
      Eigen::VectorXcd v(n);
      for (long y = 0; y < n; ++y) {
        v(y) = draw();
        for (long c = 0; c < n; ++c) a(y, c) = draw();
        a(y, y) += std::sqrt(double(n));  // we do not exchange rows
      }
      rows.push_back(a);
      eigen.push_back(a);
      ours.push_back(to_complex_sqmat(a));
      plain.push_back(to_plain_csquare(a));
      right.push_back(v);
      mat<cplx> column;
      column.create(1, index(n));
      plain::cmatrix plain_column(1, plain::u32(n));
      for (long y = 0; y < n; ++y) {
        column.set(0, index(y), {v(y).real(), v(y).imag()});
        plain_column.data[std::size_t(y)] = {v(y).real(), v(y).imag()};
      }
      ours_right.push_back(column);
      plain_right.push_back(plain_column);
    }
  }
  std::size_t next(int i) const { return std::size_t((i + 1) % rotation); }

  long n;
  int rotation;
  std::vector<complex_rows> rows;
  std::vector<Eigen::MatrixXcd> eigen;
  std::vector<sqmat<cplx>> ours;
  std::vector<plain::csquare> plain;
  std::vector<Eigen::VectorXcd> right;
  std::vector<mat<cplx>> ours_right;
  std::vector<plain::cmatrix> plain_right;
  mat<cplx> x;
  Eigen::MatrixXcd scratch_a;
  Eigen::VectorXcd scratch_b;
  std::vector<int> pivots;
  std::unique_ptr<gsl_matrix_complex, void (*)(gsl_matrix_complex*)> gsl_a;
  std::unique_ptr<gsl_vector_complex, void (*)(gsl_vector_complex*)> gsl_x;
  std::unique_ptr<gsl_permutation, void (*)(gsl_permutation*)> permutation;
};

void add_product(long n) {
  const double m = double(n);
  const double entries = sizeof(cplx) * m * m;  // each input is an operand twice
  row<complex_inputs> r("complex product", n, {8 * m * m * m, 3 * entries, traffic::copy, 2 * entries});
  r.agree({1e-12}).note("our entries are 24 bytes");
  r.ours([](complex_inputs& in, int i) { return in.ours[std::size_t(i)] * in.ours[in.next(i)]; });
  r.peer("Eigen", "Eigen",
         [](complex_inputs& in, int i) -> Eigen::MatrixXcd { return in.eigen[std::size_t(i)] * in.eigen[in.next(i)]; });
  r.peer("LAPACK", "zgemm", [](complex_inputs& in, int i) -> Eigen::MatrixXcd {
    const int k = int(in.n);
    const complex one = 1, zero = 0;
    Eigen::MatrixXcd c(k, k);
    cblas_zgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, k, k, k, &one, in.eigen[std::size_t(i)].data(), k,
                in.eigen[in.next(i)].data(), k, &zero, c.data(), k);
    return c;
  });
  r.plain([](complex_inputs& in, int i) {
    plain::csquare c = in.plain[std::size_t(i)];
    plain::multiply(c, in.plain[in.next(i)]);
    return c;
  });
}

void add_solve(long n) {
  const double m = double(n);
  row<complex_inputs> r("complex solve", n, {8.0 / 3 * m * m * m + 8 * m * m, sizeof(cplx) * m * m});
  r.agree({1e-9});
  r.ours([](complex_inputs & in, int i) -> auto& {
    const mat<cplx>& b = in.ours_right[std::size_t(i)];
    std::copy(b.getData(), b.getData() + in.n, in.x.getData());
    in.ours[std::size_t(i)].solve(in.x);
    return in.x;
  });
  r.peer("Eigen", "Eigen LU", [](complex_inputs& in, int i) -> Eigen::MatrixXcd {
    return in.eigen[std::size_t(i)].partialPivLu().solve(in.right[std::size_t(i)]);
  });
  r.peer("LAPACK", "zgesv", [](complex_inputs& in, int i) -> Eigen::MatrixXcd {
    in.scratch_a = in.eigen[std::size_t(i)];
    in.scratch_b = in.right[std::size_t(i)];
    int k = int(in.n), one = 1, info = 0;
    LAPACK_zgesv(&k, &one, reinterpret_cast<lapack_complex_double*>(in.scratch_a.data()), &k, in.pivots.data(),
                 reinterpret_cast<lapack_complex_double*>(in.scratch_b.data()), &k, &info);
    return in.scratch_b;
  });
  r.peer("GSL", "GSL LU", [](complex_inputs& in, int i) -> values {
    const double* a = reinterpret_cast<const double*>(in.rows[std::size_t(i)].data());
    std::copy(a, a + 2 * in.n * in.n, in.gsl_a->data);
    const auto b = gsl_vector_complex_const_view_array(reinterpret_cast<const double*>(in.right[std::size_t(i)].data()),
                                                       std::size_t(in.n));
    int sign = 0;
    gsl_linalg_complex_LU_decomp(in.gsl_a.get(), in.permutation.get(), &sign);
    gsl_linalg_complex_LU_solve(in.gsl_a.get(), in.permutation.get(), &b.vector, in.gsl_x.get());
    return values(in.gsl_x->data, in.gsl_x->data + 2 * in.n);
  });
  r.plain([](complex_inputs& in, int i) {
    plain::cmatrix x = in.plain_right[std::size_t(i)];
    plain::solve(in.plain[std::size_t(i)], x);
    return x;
  });
}

}  // namespace

void add_complex() {
  add_product(4);
  add_product(16);
  add_product(64);
  add_product(256);
  add_solve(4);
  add_solve(16);
  add_solve(64);
}

}  // namespace bench
