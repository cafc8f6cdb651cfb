// Random matrices, the same numbers in every library's own storage.
#pragma once

#include <gsl/gsl_cblas.h>
#include <gsl/gsl_matrix.h>
#include <gsl/gsl_vector.h>

#include <complex>
#include <memory>
#include <vector>

#include "plain/matrix.h"
#include "support.h"
#include "support/random.h"

namespace bench {

using index = tessarn::ulong;

inline values random_values(std::size_t n, std::uint64_t seed) {
  test::random_source r(seed);
  values v(n);
  for (double& e : v) e = r.uniform();
  return v;
}

inline real_matrix to_mat(const values& rows, long width, long height) {
  real_matrix m;
  m.create(static_cast<index>(width), static_cast<index>(height));
  std::copy(rows.begin(), rows.end(), m.getData());
  return m;
}
inline real_square to_sqmat(const values& rows, long n) {
  real_square m;
  m.create(static_cast<index>(n));
  std::copy(rows.begin(), rows.end(), m.getData());
  return m;
}
inline Eigen::MatrixXd to_eigen(const values& rows, long width, long height) {
  return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>(rows.data(), height,
                                                                                                  width);
}
inline plain::matrix to_plain(const values& rows, long width, long height) {
  plain::matrix m(static_cast<plain::u32>(width), static_cast<plain::u32>(height));
  m.data = rows;
  return m;
}
inline plain::square to_plain_square(const values& rows, long n) {
  plain::square m(static_cast<plain::u32>(n));
  m.data = rows;
  return m;
}
inline values transposed(const values& rows, long width, long height) {
  values t(rows.size());
  for (long y = 0; y < height; ++y) {
    for (long x = 0; x < width; ++x) {
      t[static_cast<std::size_t>(x * height + y)] = rows[static_cast<std::size_t>(y * width + x)];
    }
  }
  return t;
}

// Random points near a curve, a surface and a plane.
std::vector<plain::vec2> curve_points(long n, std::uint64_t seed);
std::vector<plain::vec3> surface_points(long n, std::uint64_t seed);
std::vector<plain::vec3> plane_points(long n, std::uint64_t seed);

// b is a turned copy of a, moved and with noise.
struct point_pairs {
  Eigen::Matrix3Xd a, b;
};
point_pairs matched_points(long n, std::uint64_t seed);

// (v - x) (2 + x^4) with its zero at v, and t^2 / 2 + t^4 / 100 with t = x - v, whose curvature has
// an extreme point there; a place a few steps before 1 to put it.
values curve_with_zero(double v);
values curve_with_bend(double v);
double before_one(double step, int i);

// Vectors and matrices of GSL with their release.
struct gsl_release {
  void operator()(gsl_matrix* m) const { gsl_matrix_free(m); }
  void operator()(gsl_vector* v) const { gsl_vector_free(v); }
};
using gsl_matrix_ptr = std::unique_ptr<gsl_matrix, gsl_release>;
using gsl_vector_ptr = std::unique_ptr<gsl_vector, gsl_release>;

inline gsl_matrix_ptr gsl_copy(const values& rows, long width, long height) {
  gsl_matrix_ptr m(gsl_matrix_alloc(static_cast<std::size_t>(height), static_cast<std::size_t>(width)));
  std::copy(rows.begin(), rows.end(), m->data);
  return m;
}

// `rotation` square matrices of size n in all forms.
struct square_inputs {
  explicit square_inputs(long size) : n(size), rotation(rotation_for(8.0 * double(size) * double(size))) {
    for (int i = 0; i < rotation; ++i) {
      rows.push_back(random_values(static_cast<std::size_t>(n * n), 1000 + static_cast<std::uint64_t>(i)));
      ours.push_back(to_sqmat(rows.back(), n));
      eigen.push_back(to_eigen(rows.back(), n, n));
      columns.push_back(transposed(rows.back(), n, n));
      plain.push_back(to_plain_square(rows.back(), n));
    }
  }
  long n;
  int rotation;
  std::vector<values> rows, columns;
  std::vector<real_square> ours;
  std::vector<Eigen::MatrixXd> eigen;
  std::vector<plain::square> plain;
};

}  // namespace bench
