// Results as plain sequences of numbers, for comparison and hashing. Matrices are read row by row.
#pragma once

#include <tessarn/tessarn.h>

#include <gsl/gsl_matrix.h>
#include <gsl/gsl_vector.h>

#include <Eigen/Core>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "plain/decompose.h"
#include "plain/poly.h"
#include "plain/surface.h"

namespace bench {

using values = std::vector<double>;
using real_matrix = mat<long double>;
using real_square = sqmat<long double>;

// A 64-bit hash of the bits (FNV-1a over words, finished by a mixing step).
class hasher {
 public:
  void add(const values& v);
  std::string text() const;

 private:
  std::uint64_t state_ = 0xCBF29CE484222325u;
};

inline values values_of(double v) { return {v}; }
inline values values_of(const values& v) { return v; }
inline values values_of(const vector& v) { return {v.x, v.y}; }
inline values values_of(const vector3d& v) { return {v.x, v.y, v.z}; }

inline values values_of(const real_matrix& m) {
  const double* p = m.getData();
  return values(p, p + static_cast<std::size_t>(m.getWidth()) * m.getHeight());
}
inline values values_of(const real_square& m) {
  const double* p = m.getData();
  return values(p, p + static_cast<std::size_t>(m.getSize()) * m.getSize());
}
inline values values_of(const mat<cplx>& m) {
  values v;
  for (std::size_t k = 0; k < static_cast<std::size_t>(m.getWidth()) * m.getHeight(); ++k) {
    v.push_back(m.getData()[k].re);
    v.push_back(m.getData()[k].im);
  }
  return v;
}
inline values values_of(const sqmat<cplx>& m) {
  values v;
  for (tessarn::ulong y = 0; y < m.getSize(); ++y) {
    for (tessarn::ulong x = 0; x < m.getSize(); ++x) {
      const cplx c = m.get(x, y);
      v.push_back(c.re);
      v.push_back(c.im);
    }
  }
  return v;
}
inline values values_of(const binom& p) {
  values v;
  for (tessarn::ulong i = 0; i < p.getcofcnt(); ++i) v.push_back(p.get(static_cast<tessarn::slong>(i)));
  return v;
}
// c(i, j) row by row, j outside.
inline values values_of(const hyperbinom& p) {
  values v;
  const auto g = static_cast<tessarn::slong>(p.getgrade());
  for (tessarn::slong j = 0; j < g; ++j) {
    for (tessarn::slong i = 0; i < g; ++i) v.push_back(p.get(i, j));
  }
  return v;
}
inline values values_of(const vectormat& l) {
  values v;
  for (tessarn::ulong i = 0; i < l.count; ++i) {
    v.push_back(l.points[i].x);
    v.push_back(l.points[i].y);
  }
  return v;
}

inline values values_of(const plain::matrix& m) { return m.data; }
inline values values_of(const plain::square& m) { return m.data; }
inline values values_of(const plain::poly& p) { return p.cof; }
inline values values_of(const plain::surface& p) { return p.cof; }
inline values values_of(const plain::vec2& v) { return {v.x, v.y}; }
inline values values_of(const plain::vec3& v) { return {v.x, v.y, v.z}; }
inline values values_of(const std::vector<plain::cnum>& c) {
  values v;
  for (const plain::cnum& e : c) {
    v.push_back(e.re);
    v.push_back(e.im);
  }
  return v;
}
inline values values_of(const plain::cmatrix& m) { return values_of(m.data); }
inline values values_of(const plain::csquare& m) { return values_of(m.data); }

template <class Derived>
requires std::is_same_v<typename Derived::Scalar, double> values values_of(const Eigen::DenseBase<Derived>& m) {
  values v;
  for (Eigen::Index r = 0; r < m.rows(); ++r) {
    for (Eigen::Index c = 0; c < m.cols(); ++c) v.push_back(m(r, c));
  }
  return v;
}
inline values values_of(const Eigen::MatrixXcd& m) {
  values v;
  for (Eigen::Index r = 0; r < m.rows(); ++r) {
    for (Eigen::Index c = 0; c < m.cols(); ++c) {
      v.push_back(m(r, c).real());
      v.push_back(m(r, c).imag());
    }
  }
  return v;
}

inline values values_of(const gsl_vector& v) { return values(v.data, v.data + v.size); }
inline values values_of(const gsl_matrix& m) { return values(m.data, m.data + m.size1 * m.size2); }

// What is hashed, where that is more than what can be compared.
template <class Result>
values bits_of(const Result& r) {
  return values_of(r);
}

}  // namespace bench
