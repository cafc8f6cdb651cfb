// What the tests of the singular value decomposition share.
#pragma once

#include <algorithm>
#include <cmath>
#include <string>

#include "matrix_support.h"

namespace test {

inline constexpr double epsilon = 0x1p-52;

struct parts {
  real_matrix u, s, v;
};

inline parts decomposed(const plain::matrix& a) {
  real_matrix m = to_library(a);
  parts p{rows(1, 1, {7}), rows(2, 1, {7, 7}), real_matrix()};
  m.decompose(p.u, p.s, p.v);
  EXPECT_TRUE(same(m, a)) << "the matrix itself is only read";
  return p;
}

inline void expect_sizes(const parts& p, u32 width, u32 height) {
  ASSERT_EQ(p.u.getWidth(), width);
  ASSERT_EQ(p.u.getHeight(), height);
  ASSERT_EQ(p.s.getWidth(), width);
  ASSERT_EQ(p.s.getHeight(), width);
  ASSERT_EQ(p.v.getWidth(), width);
  ASSERT_EQ(p.v.getHeight(), width);
}

// The largest deviation of the inner products of the columns (or rows) from those of unit vectors.
inline double columns_off(const real_matrix& q) {
  double worst = 0.0;
  const u32 w = static_cast<u32>(q.getWidth()), h = static_cast<u32>(q.getHeight());
  for (u32 i = 0; i < w; ++i) {
    for (u32 j = 0; j <= i; ++j) {
      double s = i == j ? -1.0 : 0.0;
      for (u32 y = 0; y < h; ++y) s += q.get(i, y) * q.get(j, y);
      worst = std::max(worst, std::fabs(s));
    }
  }
  return worst;
}

inline double rows_off(const real_matrix& q) {
  real_matrix t;
  q.transpose(t);
  return columns_off(t);
}

// Sizes, an exactly diagonal S in non-increasing order without negative values, orthonormal
// factors, and the product, all within rounding of the largest singular value.
inline void expect_valid(const plain::matrix& a, const char* what) {
  SCOPED_TRACE(std::string(what) + ", width " + std::to_string(a.width) + ", height " + std::to_string(a.height));
  const parts p = decomposed(a);
  const u32 n = a.width, m = a.height;
  expect_sizes(p, n, m);
  if (n == 0) return;
  for (u32 y = 0; y < n; ++y) {
    for (u32 x = 0; x < n; ++x) {
      if (x == y) continue;
      ASSERT_BITS(p.s.get(x, y), 0.0);
    }
  }
  for (u32 i = 0; i < n; ++i) {
    ASSERT_GE(p.s.get(i, i), 0.0);
    if (i == 0) continue;
    ASSERT_GE(p.s.get(i - 1, i - 1), p.s.get(i, i));
  }
  const double tolerance = 20.0 * epsilon * (10.0 + std::max(m, n));
  ASSERT_LE(columns_off(p.v), tolerance);
  ASSERT_LE(m >= n ? columns_off(p.u) : rows_off(p.u), tolerance);
  const double largest = p.s.get(0, 0);
  for (u32 y = 0; y < m; ++y) {
    for (u32 x = 0; x < n; ++x) {
      double s = 0.0;
      for (u32 k = 0; k < n; ++k) s += p.u.get(k, y) * p.s.get(k, k) * p.v.get(k, x);
      ASSERT_LE(std::fabs(s - a.get(x, y)), tolerance * largest) << x << " " << y;
    }
  }
}

}  // namespace test
