// Solve of a square system and the determinant.
#include <gsl/gsl_linalg.h>

#include <Eigen/LU>

#include "inputs.h"
#include "lapack.h"
#include "plain/det_solve.h"

namespace bench {

namespace {

// Systems with one right-hand side. Every call starts from the untouched A and b.
struct system_inputs : square_inputs {
  explicit system_inputs(long size)
      : square_inputs(size),
        x(to_mat(values(static_cast<std::size_t>(n)), 1, n)),
        plain_x(1, static_cast<plain::u32>(n)),
        work_a(static_cast<std::size_t>(n * n)),
        work_b(static_cast<std::size_t>(n)),
        pivots(static_cast<std::size_t>(n)),
        gsl_a(gsl_matrix_alloc(static_cast<std::size_t>(n), static_cast<std::size_t>(n))),
        gsl_x(gsl_vector_alloc(static_cast<std::size_t>(n))),
        permutation(gsl_permutation_alloc(static_cast<std::size_t>(n)), gsl_permutation_free) {
    for (int i = 0; i < rotation; ++i) {
      b.push_back(random_values(static_cast<std::size_t>(n), 2000 + static_cast<std::uint64_t>(i)));
      eigen_b.push_back(Eigen::Map<Eigen::VectorXd>(b.back().data(), n));
    }
  }
  void take_for_lapack(int i) {
    const values& c = columns[std::size_t(i)];
    std::copy(c.begin(), c.end(), work_a.begin());
    std::copy(b[std::size_t(i)].begin(), b[std::size_t(i)].end(), work_b.begin());
  }
  void take_for_gsl(int i) {
    const values& a = rows[std::size_t(i)];
    std::copy(a.begin(), a.end(), gsl_a->data);
  }

  std::vector<values> b;
  std::vector<Eigen::VectorXd> eigen_b;
  real_matrix x;
  plain::matrix plain_x;
  values work_a, work_b;
  std::vector<int> pivots;
  gsl_matrix_ptr gsl_a;
  gsl_vector_ptr gsl_x;
  std::unique_ptr<gsl_permutation, void (*)(gsl_permutation*)> permutation;
};

// Divisions, multiplications and additions of the elimination of an n x n matrix.
double elimination_operations(double n) { return 2.0 / 3.0 * n * (n - 1) * (n + 1) - n * (n - 1) / 2; }

void add_solve(long n) {
  const double m = double(n);
  row<system_inputs> r("solve", n, {elimination_operations(m) + 2 * m * m, 8 * m * m + 16 * m});
  r.agree({1e-7});
  r.ours([](system_inputs & in, int i) -> auto& {
    std::copy(in.b[std::size_t(i)].begin(), in.b[std::size_t(i)].end(), in.x.getData());
    in.ours[std::size_t(i)].solve(in.x);
    return in.x;
  });
  r.peer("Eigen", "Eigen LU", [](system_inputs& in, int i) -> Eigen::VectorXd {
    return in.eigen[std::size_t(i)].partialPivLu().solve(in.eigen_b[std::size_t(i)]);
  });
  r.peer(
      "LAPACK", "dgesv", [](system_inputs & in, int i) -> auto& {
        in.take_for_lapack(i);
        lapack_solve(static_cast<int>(in.n), in.work_a.data(), in.pivots.data(), in.work_b.data());
        return in.work_b;
      });
  r.peer(
      "GSL", "GSL LU", [](system_inputs & in, int i) -> auto& {
        in.take_for_gsl(i);
        int sign = 0;
        const gsl_vector_const_view b = gsl_vector_const_view_array(in.b[std::size_t(i)].data(), in.gsl_x->size);
        gsl_linalg_LU_decomp(in.gsl_a.get(), in.permutation.get(), &sign);
        gsl_linalg_LU_solve(in.gsl_a.get(), in.permutation.get(), &b.vector, in.gsl_x.get());
        return *in.gsl_x;
      });
  r.plain([](system_inputs & in, int i) -> auto& {
    in.plain_x.data = in.b[std::size_t(i)];
    plain::solve(in.plain[std::size_t(i)], in.plain_x);
    return in.plain_x;
  });
}

void add_det(long n) {
  const double m = double(n);
  row<system_inputs> r("det", n, {n == 3 ? 17 : elimination_operations(m) + m, 8 * m * m, traffic::read});
  r.agree({1e-6});
  r.ours([](system_inputs& in, int i) { return in.ours[std::size_t(i)].det(); });
  r.peer("Eigen", "Eigen LU", [](system_inputs& in, int i) { return in.eigen[std::size_t(i)].determinant(); });
  r.peer("LAPACK", "dgetrf", [](system_inputs& in, int i) {
    in.take_for_lapack(i);
    lapack_factorise(static_cast<int>(in.n), in.work_a.data(), in.pivots.data());
    double d = 1;
    for (long k = 0; k < in.n; ++k) {
      const double u = in.work_a[std::size_t(k * in.n + k)];
      d *= in.pivots[std::size_t(k)] == k + 1 ? u : -u;
    }
    return d;
  });
  r.peer("GSL", "GSL LU", [](system_inputs& in, int i) {
    in.take_for_gsl(i);
    int sign = 0;
    gsl_linalg_LU_decomp(in.gsl_a.get(), in.permutation.get(), &sign);
    return gsl_linalg_LU_det(in.gsl_a.get(), sign);
  });
  r.plain([](system_inputs& in, int i) { return plain::det(in.plain[std::size_t(i)]); });
}

}  // namespace

void add_solves() {
  for (long n : {3, 4, 8, 16, 32, 64, 128, 256, 512}) add_solve(n);
  for (long n : {3, 4, 8, 16, 32, 64, 256}) add_det(n);
}

}  // namespace bench
