// Singular value decomposition: square matrices, and tall ones with 10 and 3 columns.
#include <gsl/gsl_linalg.h>

#include <Eigen/SVD>

#include "inputs.h"
#include "lapack.h"
#include "plain/decompose.h"

namespace bench {

namespace {

// Column-major parts, S as the values alone, V transposed or not.
struct parts {
  Eigen::MatrixXd u, v;
  Eigen::VectorXd s;
};

// Signs are free, so decompositions are compared by their singular values and by U S V'.
values values_of(const parts& p) {
  values all = bench::values_of(p.s);
  const values product = bench::values_of(Eigen::MatrixXd(p.u * p.s.asDiagonal() * p.v.transpose()));
  all.insert(all.end(), product.begin(), product.end());
  return all;
}

struct library_parts {
  real_matrix u, s, v;
};

Eigen::MatrixXd to_eigen_matrix(const real_matrix& m) {
  return to_eigen(bench::values_of(m), m.getWidth(), m.getHeight());
}
values values_of(const library_parts& p) {
  return values_of(parts{to_eigen_matrix(p.u), to_eigen_matrix(p.v), to_eigen_matrix(p.s).diagonal()});
}
values bits_of(const library_parts& p) {
  values all = bench::values_of(p.u);
  for (const real_matrix* m : {&p.s, &p.v}) {
    const values v = bench::values_of(*m);
    all.insert(all.end(), v.begin(), v.end());
  }
  return all;
}

struct plain_parts {
  plain::decomposition d;
};
[[maybe_unused]] values values_of(const plain_parts& p) {
  auto convert = [](const plain::matrix& m) { return to_eigen(m.data, m.width, m.height); };
  return values_of(parts{convert(p.d.u), convert(p.d.v), convert(p.d.s).diagonal()});
}

template <long Columns>  // 0 for a square matrix
struct matrix_inputs {
  explicit matrix_inputs(long size)
      : m(size), n(Columns == 0 ? size : Columns), rotation(rotation_for(8.0 * double(m) * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      const values rows = random_values(static_cast<std::size_t>(m * n), 3000 + static_cast<std::uint64_t>(i));
      ours.push_back(to_mat(rows, n, m));
      eigen.push_back(to_eigen(rows, n, m));
      plain.push_back(to_plain(rows, n, m));
      gsl.push_back(gsl_copy(rows, n, m));
    }
    lapack.u.resize(m, n);
    lapack.v.resize(n, n);
    lapack.s.resize(n);
    integers.resize(static_cast<std::size_t>(8 * n));
    work.resize(query());
    gsl_u.reset(gsl_matrix_alloc(std::size_t(m), std::size_t(n)));
    gsl_v.reset(gsl_matrix_alloc(std::size_t(n), std::size_t(n)));
    gsl_x.reset(gsl_matrix_alloc(std::size_t(n), std::size_t(n)));
    gsl_s.reset(gsl_vector_alloc(std::size_t(n)));
    gsl_work.reset(gsl_vector_alloc(std::size_t(n)));
  }

  std::size_t query() {
    double a = 0, b = 0;
    divide_and_conquer(nullptr, &a, -1);
    iterate(nullptr, &b, -1);
    return static_cast<std::size_t>(std::max(a, b));
  }
  void divide_and_conquer(double* a, double* scratch, int length) {
    int rows = int(m), columns = int(n), info = 0;
    const char job = 'S';
    LAPACK_dgesdd(&job, &rows, &columns, a, &rows, lapack.s.data(), lapack.u.data(), &rows, lapack.v.data(), &columns,
                  scratch, &length, integers.data(), &info);
  }
  void iterate(double* a, double* scratch, int length) {
    int rows = int(m), columns = int(n), info = 0;
    const char job = 'S';
    LAPACK_dgesvd(&job, &job, &rows, &columns, a, &rows, lapack.s.data(), lapack.u.data(), &rows, lapack.v.data(),
                  &columns, scratch, &length, &info);
  }

  long m, n;
  int rotation;
  std::vector<real_matrix> ours;
  std::vector<Eigen::MatrixXd> eigen;
  std::vector<plain::matrix> plain;
  std::vector<gsl_matrix_ptr> gsl;
  library_parts result;
  Eigen::MatrixXd scratch_a;
  parts lapack;  // its v is V'
  values work;
  std::vector<int> integers;
  gsl_matrix_ptr gsl_u, gsl_v, gsl_x;
  gsl_vector_ptr gsl_s, gsl_work;
};

// LAPACK gives V', GSL its own types: adapters for the comparison.
struct lapack_parts {
  parts* p;
};
values values_of(const lapack_parts& l) { return values_of(parts{l.p->u, l.p->v.transpose(), l.p->s}); }
struct gsl_parts {
  gsl_matrix *u, *v;
  gsl_vector* s;
};
values values_of(const gsl_parts& g) {
  auto convert = [](const gsl_matrix* m) { return to_eigen(bench::values_of(*m), long(m->size2), long(m->size1)); };
  const values s = bench::values_of(*g.s);
  return values_of(parts{convert(g.u), convert(g.v), Eigen::Map<const Eigen::VectorXd>(s.data(), long(s.size()))});
}

template <long Columns>
void add(const std::string& operation, long m) {
  using inputs = matrix_inputs<Columns>;
  const double rows = double(m), columns = Columns == 0 ? rows : double(Columns);
  // Golub and Van Loan, Matrix Computations, for U (m x n), S and V by the Golub-Reinsch algorithm.
  row<inputs> r(operation, m,
                {14 * rows * columns * columns + 8 * columns * columns * columns,
                 8 * (2 * rows * columns + 2 * columns * columns)});
  r.agree({1e-10, false});
  r.ours([](inputs & in, int i) -> auto& {
    in.ours[std::size_t(i)].decompose(in.result.u, in.result.s, in.result.v);
    return in.result;
  });
  r.peer("Eigen", "Eigen BDC", [](inputs& in, int i) {
    const Eigen::BDCSVD<Eigen::MatrixXd> d(in.eigen[std::size_t(i)], Eigen::ComputeThinU | Eigen::ComputeThinV);
    return parts{d.matrixU(), d.matrixV(), d.singularValues()};
  });
  if (columns <= 64) {
    r.peer("Eigen", "Eigen Jacobi", [](inputs& in, int i) {
      const Eigen::JacobiSVD<Eigen::MatrixXd> d(in.eigen[std::size_t(i)], Eigen::ComputeThinU | Eigen::ComputeThinV);
      return parts{d.matrixU(), d.matrixV(), d.singularValues()};
    });
  }
  r.peer("LAPACK", "dgesdd", [](inputs& in, int i) {
    in.scratch_a = in.eigen[std::size_t(i)];
    in.divide_and_conquer(in.scratch_a.data(), in.work.data(), int(in.work.size()));
    return lapack_parts{&in.lapack};
  });
  r.peer("LAPACK", "dgesvd", [](inputs& in, int i) {
    in.scratch_a = in.eigen[std::size_t(i)];
    in.iterate(in.scratch_a.data(), in.work.data(), int(in.work.size()));
    return lapack_parts{&in.lapack};
  });
  if (columns <= 64) {
    r.peer("GSL", "GSL", [](inputs& in, int i) {
      gsl_matrix_memcpy(in.gsl_u.get(), in.gsl[std::size_t(i)].get());
      gsl_linalg_SV_decomp_mod(in.gsl_u.get(), in.gsl_x.get(), in.gsl_v.get(), in.gsl_s.get(), in.gsl_work.get());
      return gsl_parts{in.gsl_u.get(), in.gsl_v.get(), in.gsl_s.get()};
    });
  }
  r.plain([](inputs& in, int i) { return plain_parts{plain::decompose(in.plain[std::size_t(i)])}; });
}

}  // namespace

void add_decompositions() {
  for (long n : {3, 8, 16, 32, 64, 128, 256}) add<0>("decompose", n);
  add<10>("decompose, 10 columns", 50);
  add<10>("decompose, 10 columns", 500);
  add<3>("decompose, 3 columns", 50);
  add<3>("decompose, 3 columns", 5000);
}

}  // namespace bench
