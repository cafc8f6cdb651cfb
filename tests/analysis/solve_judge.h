// Judges of square systems: every claim of a result against exact rational arithmetic.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "rational.h"

namespace test {

using real_matrix = mat<long double>;

inline rational_matrix exact(tessarn::matrix_view m) {
  rational_matrix r(m.rows(), std::vector<rational>(m.columns()));
  for (std::size_t i = 0; i < m.rows(); ++i)
    for (std::size_t j = 0; j < m.columns(); ++j) r[i][j] = rational(static_cast<double>(m(i, j)));
  return r;
}

inline rational_matrix identity(std::size_t n) {
  rational_matrix r(n, std::vector<rational>(n));
  for (std::size_t i = 0; i < n; ++i) r[i][i] = 1;
  return r;
}

// Checks every claim about a square system; returns whether the solution was proved.
inline bool check_square(const real_matrix& a, const real_matrix& b) {
  const std::size_t n = a.getHeight();
  rational_matrix x = exact(b), inverse = identity(n);
  rational det;
  const bool regular = eliminate(exact(a), x, det);
  eliminate(exact(a), inverse, det);
  const tessarn::determinant_value d = tessarn::determinant(a);
  EXPECT_TRUE(d.state == tessarn::status::out_of_range || within(det, d.value, d.error))
      << det.get_d() << ' ' << d.value << ' ' << d.error;
  EXPECT_TRUE(regular || std::fabs(d.value) <= d.error);
  const tessarn::linear_solution s = tessarn::solve(a, b);
  const tessarn::inverse_matrix inv = tessarn::inverse(a);
  EXPECT_TRUE(regular || s.state != tessarn::status::ok);
  EXPECT_TRUE(regular || inv.state != tessarn::status::ok);
  if (!regular) return false;
  if (s.state == tessarn::status::ok) {
    for (std::size_t i = 0; i < n; ++i) {
      EXPECT_LT(s.error.getData()[i], std::numeric_limits<double>::infinity());
      EXPECT_TRUE(within(x[i][0], s.x.getData()[i], s.error.getData()[i]))
          << x[i][0].get_d() << ' ' << s.x.getData()[i] << ' ' << s.error.getData()[i];
    }
  }
  for (std::size_t i = 0; inv.state == tessarn::status::ok && i < n * n; ++i)
    EXPECT_TRUE(within(inverse[i / n][i % n], inv.inverse.getData()[i], inv.error.getData()[i]));
  return s.state == tessarn::status::ok && inv.state == tessarn::status::ok;
}

}  // namespace test

#endif
