// Inverse of a square matrix.
#include <gsl/gsl_linalg.h>

#include <Eigen/LU>

#include "inputs.h"
#include "lapack.h"
#include "plain/linear.h"

namespace bench {

namespace {

struct invert_inputs : square_inputs {
  explicit invert_inputs(long size)
      : square_inputs(size),
        inverse(static_cast<std::size_t>(n * n)),
        lapack_work(static_cast<std::size_t>(n * 64)),
        pivots(static_cast<std::size_t>(n)),
        gsl_a(gsl_matrix_alloc(static_cast<std::size_t>(n), static_cast<std::size_t>(n))),
        gsl_inverse(gsl_matrix_alloc(static_cast<std::size_t>(n), static_cast<std::size_t>(n))),
        permutation(gsl_permutation_alloc(static_cast<std::size_t>(n)), gsl_permutation_free) {
    for (int i = 0; i < rotation; ++i) {
      matrices.push_back(to_mat(rows[std::size_t(i)], n, n));
      plain_matrices.push_back(to_plain(rows[std::size_t(i)], n, n));
    }
  }
  std::vector<real_matrix> matrices;
  std::vector<plain::matrix> plain_matrices;
  real_matrix result;
  values inverse, lapack_work;
  std::vector<int> pivots;
  gsl_matrix_ptr gsl_a, gsl_inverse;
  std::unique_ptr<gsl_permutation, void (*)(gsl_permutation*)> permutation;
};

double minor_operations(double n) {
  double sum = 0;
  for (double k = 1; k < n; ++k) sum += k * (2 * k + 1);
  return sum;
}

// The determinants of all n^2 minors, with the leading steps that several minors have in common
// counted once: the minors without column x go the same way until row y is reached, and conversely.
double adjugate_operations(long n) {
  double sum = minor_operations(double(n));
  for (long x = 0; x < n; ++x) {
    sum += 2 * minor_operations(double(n - x));
    for (long y = 0; y < n; ++y) sum += minor_operations(double(n - 1 - std::max(x, y))) + 2;
  }
  return sum;
}

}  // namespace

void add_inversions() {
  for (long n : {2, 3, 4, 6, 8, 16, 32, 64}) {
    row<invert_inputs> r("invert", n, {adjugate_operations(n), 16.0 * double(n) * double(n)});
    r.agree({1e-5});
    if (n >= 16) r.note("adjugate formula, O(n^5)");
    r.ours([](invert_inputs & in, int i) -> auto& {
      in.matrices[std::size_t(i)].invert(in.result);
      return in.result;
    });
    r.peer("Eigen", "Eigen LU",
           [](invert_inputs& in, int i) -> Eigen::MatrixXd { return in.eigen[std::size_t(i)].inverse(); });
    // The inverse of the transpose is the transpose of the inverse: rows can be handed over as
    // columns.
    r.peer(
        "LAPACK", "dgetri", [](invert_inputs & in, int i) -> auto& {
          std::copy(in.rows[std::size_t(i)].begin(), in.rows[std::size_t(i)].end(), in.inverse.begin());
          int k = static_cast<int>(in.n), length = static_cast<int>(in.lapack_work.size()), info = 0;
          lapack_factorise(k, in.inverse.data(), in.pivots.data());
          LAPACK_dgetri(&k, in.inverse.data(), &k, in.pivots.data(), in.lapack_work.data(), &length, &info);
          return in.inverse;
        });
    r.peer(
        "GSL", "GSL LU", [](invert_inputs & in, int i) -> auto& {
          std::copy(in.rows[std::size_t(i)].begin(), in.rows[std::size_t(i)].end(), in.gsl_a->data);
          int sign = 0;
          gsl_linalg_LU_decomp(in.gsl_a.get(), in.permutation.get(), &sign);
          gsl_linalg_LU_invert(in.gsl_a.get(), in.permutation.get(), in.gsl_inverse.get());
          return *in.gsl_inverse;
        });
    r.plain([](invert_inputs& in, int i) { return plain::inverse(in.plain_matrices[std::size_t(i)]); });
  }
}

}  // namespace bench
