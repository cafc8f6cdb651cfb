// Systems, inverses, determinants and least squares with proved bounds, judged by exact rational arithmetic.
#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "../support/random.h"
#include "rational.h"
#include "rounds.h"
#include "solve_judge.h"

namespace {

using tessarn::status;
using test::random_source;
using real_matrix = mat<long double>;

constexpr double infinite = std::numeric_limits<double>::infinity();

int rounds() { return test::rounds(10000); }

real_matrix hilbert(tessarn::ulong n) {
  real_matrix m(n, n);
  for (tessarn::ulong r = 0; r < n; ++r)
    for (tessarn::ulong c = 0; c < n; ++c) m.set(c, r, 1.0 / (r + c + 1));
  return m;
}

TEST(Status, EachHasItsOwnSentence) {
  std::vector<std::string> seen;
  for (int i = 0; i <= static_cast<int>(status::other_rounding); ++i) {
    const std::string sentence = tessarn::to_string(static_cast<status>(i));
    EXPECT_EQ(sentence.back(), '.');
    for (const std::string& other : seen) EXPECT_NE(sentence, other);
    seen.push_back(sentence);
  }
  EXPECT_STREQ(tessarn::to_string(static_cast<status>(999)), "This is no status.");
}

TEST(Views, ReadWhatTheCallerHas) {
  const tessarn::real plain[] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(tessarn::column_view(plain, 6)[5], 6);
  EXPECT_EQ(tessarn::column_view(plain, 3, 2 * sizeof(tessarn::real))[2], 5);
  const std::vector<tessarn::real> grown(plain, plain + 6);
  EXPECT_EQ(tessarn::column_view(grown).size(), 6u);
  const real_matrix m{{1, 2}, {3, 4}, {5, 6}};
  EXPECT_EQ(tessarn::column_view(m.column(1))[2], 6);
  EXPECT_EQ(tessarn::column_view(m)[1], 3);  // the first column
  EXPECT_EQ(tessarn::matrix_view(m)(2, 1), 6);
  const std::array<vector, 2> flat{{{1, 2}, {3, 4}}};
  EXPECT_EQ(tessarn::plane_points(flat).y[1], 4);
  EXPECT_EQ(tessarn::plane_points(nullptr, 0).size(), 0u);
  const std::vector<vector3d> space{{1, 2, 3}, {4, 5, 6}};
  EXPECT_EQ(tessarn::space_points(space).z[1], 6);
  sqmat<cplx> s;
  s.create(2);
  s.set(1, 0, cplx(2, 7));
  EXPECT_EQ(tessarn::complex_view(s)(0, 1).im, 7);
}

TEST(Solve, StatusesOneByOne) {
  const real_matrix good{{2, 1}, {1, 3}}, b{{3}, {5}}, none, wide(3, 2), tall(1, 3);
  EXPECT_EQ(tessarn::solve(good, b).state, status::ok);
  EXPECT_EQ(tessarn::solve(none, none).state, status::no_unknowns);
  EXPECT_EQ(tessarn::solve(wide, b).state, status::sizes_differ);
  EXPECT_EQ(tessarn::solve(good, tall).state, status::sizes_differ);
  for (const double bad : {infinite, -infinite, std::nan("")}) {
    real_matrix m = good, v = b;
    m.getData()[2] = bad;
    v.getData()[1] = bad;
    EXPECT_EQ(tessarn::solve(m, b).state, status::not_finite);
    EXPECT_EQ(tessarn::solve(good, v).state, status::not_finite);
    EXPECT_EQ(tessarn::inverse(m).state, status::not_finite);
    EXPECT_EQ(tessarn::determinant(m).state, status::not_finite);
    EXPECT_EQ(tessarn::least_squares(m, b).state, status::not_finite);
    EXPECT_EQ(tessarn::least_squares(good, v).state, status::not_finite);
  }
  const real_matrix singular{{1, 2}, {2, 4}};
  EXPECT_EQ(tessarn::solve(singular, b).state, status::singular);
  EXPECT_EQ(tessarn::solve(singular, b).x.getHeight(), 0u);
  EXPECT_EQ(tessarn::inverse(singular).state, status::singular);
  EXPECT_EQ(tessarn::solve(real_matrix{{1e-300}}, real_matrix{{1e300}}).state, status::out_of_range);
  EXPECT_EQ(tessarn::inverse(real_matrix{{1e-310}}).state, status::out_of_range);
  EXPECT_EQ(tessarn::inverse(none).state, status::no_unknowns);
  EXPECT_EQ(tessarn::inverse(wide).state, status::sizes_differ);
  EXPECT_EQ(tessarn::determinant(wide).state, status::sizes_differ);
  EXPECT_EQ(tessarn::determinant(none).value, 1);
  EXPECT_EQ(tessarn::determinant(real_matrix{{1e300, 0}, {0, 1e300}}).state, status::out_of_range);
  EXPECT_EQ(tessarn::least_squares(none, none).state, status::no_unknowns);
  EXPECT_EQ(tessarn::least_squares(good, tall).state, status::sizes_differ);
  EXPECT_EQ(tessarn::least_squares(wide, real_matrix{{0}, {0}}).state, status::rank_deficient);
}

// A regular triangular matrix whose inverse has entries of 2^298, beyond what doubled precision tells from a singular
// one.
TEST(Solve, NearlySingularIsSaid) {
  real_matrix w(300, 300);
  for (tessarn::ulong r = 0; r < 300; ++r)
    for (tessarn::ulong c = r; c < 300; ++c) w.set(c, r, c == r ? 1 : -1);
  real_matrix b(1, 300);
  b.set(0, 299, 1);
  const tessarn::linear_solution s = tessarn::solve(w, b);
  EXPECT_EQ(s.state, status::nearly_singular);
  ASSERT_EQ(s.error.getHeight(), 300u);
  for (int i = 0; i < 300; ++i) EXPECT_EQ(s.error.getData()[i], infinite);
  // A matrix of which double precision hardly tells that it is regular.
  const double e = 0x1p-52;
  const real_matrix near{{1, 1, 1}, {1, 1 + e, 1}, {1 + e, 1 + 2 * e, 1 + e}};
  const tessarn::linear_solution t = tessarn::solve(near, real_matrix{{1}, {2}, {3}});
  EXPECT_LT(t.reciprocal_condition, 1e-14);
}

#if defined(TESTS_HAVE_GMP)

using test::rational;
using test::rational_matrix;
using test::within;

using test::check_square;
using test::exact;
using test::identity;

// Where a pivot vanishes the determinant may be another number below the range of a real: the bound is not 0.
TEST(Solve, BoundsDoNotVanish) {
  const real_matrix a{{1, 1}, {1, 1 + 0x1p-52}}, tiny{{0x1p-600, 0x1p-600}, {0x1p-600, 0x1p-600}};
  EXPECT_EQ(tessarn::determinant(a).value, 0x1p-52);
  EXPECT_EQ(tessarn::determinant(tiny).value, 0);
  EXPECT_GT(tessarn::determinant(tiny).error, 0);
  EXPECT_EQ(tessarn::determinant(real_matrix{{1, 2}, {0, 0}}).error, 0);  // a row of zeros is exact
}

// The condition grows from 1 to 1e16; up to 5e11 the bound is half a unit in the last place.
TEST(Solve, HilbertMatrices) {
  for (tessarn::ulong n = 1; n <= 12; ++n) {
    const real_matrix h = hilbert(n);
    real_matrix b(1, n);
    for (tessarn::ulong i = 0; i < n; ++i) b.set(0, i, i % 3 + 1.0);
    EXPECT_TRUE(check_square(h, b)) << n;
    const tessarn::linear_solution s = tessarn::solve(h, b);
    const tessarn::determinant_value d = tessarn::determinant(h);
    for (tessarn::ulong i = 0; i < n; ++i)
      EXPECT_LE(s.error.get(0, i), std::fabs(s.x.get(0, i)) * (n <= 9 ? 0x1.01p-53 : 1e-11)) << n;
    EXPECT_LT(d.error, std::fabs(d.value) * (n <= 9 ? 0x1.01p-52 : 1e-10)) << n;
  }
}

TEST(Solve, VandermondeMatrices) {
  for (tessarn::ulong n = 2; n <= 14; ++n) {
    real_matrix v(n, n), b(1, n);
    for (tessarn::ulong r = 0; r < n; ++r) {
      double p = 1;
      for (tessarn::ulong c = 0; c < n; ++c, p *= r + 1.0) v.set(c, r, p);
      b.set(0, r, r % 2 ? -1.0 : 2.0);
    }
    EXPECT_TRUE(check_square(v, b)) << n;
  }
}

// Entries of one kind: ordinary, of very different sizes, small integers, or with rows that nearly depend on each
// other.
double draw(random_source& random, int kind) {
  switch (kind) {
    case 0: return random.uniform();
    case 1: return random.hostile_finite();
    case 2: return static_cast<double>(random.below(5)) - 2;
    case 3: return std::ldexp(random.uniform(), static_cast<int>(random.below(120)) - 60);
    default: return 1 + 0x1p-40 * random.uniform();
  }
}

TEST(Solve, ManyBoundsHold) {
  random_source random(1601);
  int proved = 0;
  const int count = rounds();
  for (int i = 0; i < count && !HasFailure(); ++i) {
    const tessarn::ulong n = 1 + random.below(5);
    const int kind = i % 5;
    real_matrix a(n, n), b(1, n);
    for (tessarn::ulong k = 0; k < n * n; ++k) a.getData()[k] = draw(random, kind);
    for (tessarn::ulong k = 0; k < n; ++k) b.getData()[k] = draw(random, kind);
    if (kind == 4 && n > 1)
      for (tessarn::ulong c = 0; c < n; ++c) a.set(c, n - 1, a.get(c, 0) + a.get(c, n - 1) * 0x1p-45);
    proved += check_square(a, b);
  }
  EXPECT_GT(proved, count / 2);
}

bool check_complex(random_source& random, int kind) {
  const tessarn::ulong n = 1 + random.below(4);
  mat<cplx> a, b;
  a.create(n, n);
  b.create(1, n);
  rational_matrix parts(2 * n, std::vector<rational>(2 * n)), right(2 * n, std::vector<rational>(1));
  for (tessarn::ulong r = 0; r < n; ++r) {
    for (tessarn::ulong c = 0; c < n; ++c) {
      const cplx v(draw(random, kind), draw(random, kind));
      a.set(c, r, v);
      parts[r][c] = parts[n + r][n + c] = rational(v.re);
      parts[n + r][c] = rational(v.im);
      parts[r][n + c] = -rational(v.im);
    }
    const cplx v(draw(random, kind), draw(random, kind));
    b.set(0, r, v);
    right[r][0] = rational(v.re);
    right[n + r][0] = rational(v.im);
  }
  rational det;
  rational_matrix inverse = identity(2 * n);
  const bool regular = test::eliminate(parts, right, det);
  test::eliminate(parts, inverse, det);
  const tessarn::complex_solution s = tessarn::solve(a, b);
  const tessarn::complex_inverse_matrix inv = tessarn::inverse(a);
  if (s.state != status::ok || inv.state != status::ok) return false;
  EXPECT_TRUE(regular);
  for (tessarn::ulong r = 0; r < n; ++r) {
    EXPECT_TRUE(within(right[r][0], s.x.get(0, r).re, s.error.get(0, r)));
    EXPECT_TRUE(within(right[n + r][0], s.x.get(0, r).im, s.error.get(0, r)));
    for (tessarn::ulong c = 0; c < n; ++c) {
      EXPECT_TRUE(within(inverse[r][c], inv.inverse.get(c, r).re, inv.error.get(c, r)));
      EXPECT_TRUE(within(inverse[n + r][c], inv.inverse.get(c, r).im, inv.error.get(c, r)));
    }
  }
  return true;
}

TEST(Solve, ManyComplexBoundsHold) {
  random_source random(1602);
  int proved = 0;
  const int count = rounds() / 10;
  for (int i = 0; i < count && !HasFailure(); ++i) proved += check_complex(random, i % 4);
  EXPECT_GT(proved, count / 2);
}

// A zero pivot, which the classic complex solve does not exchange.
TEST(Solve, ComplexSystemsExchangeRows) {
  mat<cplx> a, b;
  a.create(2, 2);
  b.create(1, 2);
  a.set(1, 0, cplx(0, 1));
  a.set(0, 1, cplx(1, 0));
  b.set(0, 0, cplx(2, 0));
  b.set(0, 1, cplx(3, 4));
  const tessarn::complex_solution s = tessarn::solve(a, b);
  ASSERT_EQ(s.state, status::ok);
  EXPECT_EQ(s.x.get(0, 0).re, 3);
  EXPECT_EQ(s.x.get(0, 0).im, 4);
  EXPECT_EQ(s.x.get(0, 1).im, -2);
  EXPECT_EQ(tessarn::solve(a, a).state, status::sizes_differ);
  a.set(1, 0, cplx(std::nan(""), 0));
  EXPECT_EQ(tessarn::solve(a, b).state, status::not_finite);
  EXPECT_EQ(tessarn::inverse(a).state, status::not_finite);
}

// Checks the least-squares solution against the exact normal equations.
bool check_least_squares(const real_matrix& a, const real_matrix& b) {
  const std::size_t m = a.getHeight(), n = a.getWidth();
  const rational_matrix rows = exact(a), right = exact(b);
  rational_matrix normal(n, std::vector<rational>(n)), x(n, std::vector<rational>(1));
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t k = 0; k < m; ++k) {
      x[i][0] += rows[k][i] * right[k][0];
      for (std::size_t j = 0; j < n; ++j) normal[i][j] += rows[k][i] * rows[k][j];
    }
  rational det;
  const bool regular = test::eliminate(normal, x, det);
  const tessarn::linear_solution s = tessarn::least_squares(a, b);
  if (s.state != status::ok) return false;
  EXPECT_TRUE(regular);
  EXPECT_EQ(s.rank, n);
  for (std::size_t i = 0; i < n; ++i) {
    EXPECT_LT(s.error.getData()[i], infinite);
    EXPECT_TRUE(within(x[i][0], s.x.getData()[i], s.error.getData()[i]))
        << x[i][0].get_d() << ' ' << s.x.getData()[i] << ' ' << s.error.getData()[i];
  }
  return true;
}

TEST(LeastSquares, ManyBoundsHold) {
  random_source random(1603);
  int proved = 0;
  const int count = rounds();
  for (int i = 0; i < count && !HasFailure(); ++i) {
    const tessarn::ulong n = 1 + random.below(4), m = n + random.below(4);
    const int kind = i % 5;
    real_matrix a(n, m), b(1, m);
    for (tessarn::ulong k = 0; k < n * m; ++k) a.getData()[k] = draw(random, kind);
    for (tessarn::ulong k = 0; k < m; ++k) b.getData()[k] = draw(random, kind);
    proved += check_least_squares(a, b);
  }
  EXPECT_GT(proved, count / 2);
}

#endif

TEST(LeastSquares, RankIsTold) {
  real_matrix a(4, 6), b(1, 6);
  random_source random(1604);
  for (tessarn::ulong r = 0; r < 6; ++r) {
    for (tessarn::ulong c = 0; c < 2; ++c) a.set(c, r, random.uniform());
    a.set(2, r, a.get(0, r));
    a.set(3, r, 0);
    b.set(0, r, random.uniform());
  }
  const tessarn::linear_solution s = tessarn::least_squares(a, b);
  EXPECT_EQ(s.state, status::rank_deficient);
  EXPECT_EQ(s.rank, 2u);
  EXPECT_EQ(s.x.get(0, 3), 0);
  EXPECT_EQ(s.error.get(0, 1), infinite);
  // The residual is that of the two columns alone.
  real_matrix two(2, 6);
  for (tessarn::ulong r = 0; r < 6; ++r)
    for (tessarn::ulong c = 0; c < 2; ++c) two.set(c, r, a.get(c, r));
  const tessarn::linear_solution t = tessarn::least_squares(two, b);
  EXPECT_EQ(t.state, status::ok);
  EXPECT_NEAR(s.residual, t.residual, 1e-15);
  EXPECT_EQ(tessarn::least_squares(real_matrix(2, 3), real_matrix(1, 3)).rank, 0u);
  // A column that depends on the others but for the rounding of its entries.
  for (tessarn::ulong r = 0; r < 6; ++r) a.set(2, r, 0.1 * a.get(0, r) + 0.7 * a.get(1, r));
  EXPECT_EQ(tessarn::least_squares(a, b).rank, 2u);
  for (tessarn::ulong r = 0; r < 6; ++r) a.set(2, r, a.get(0, r) + 1e-9 * r * r);
  EXPECT_EQ(tessarn::least_squares(a, b).rank, 3u);
}

}  // namespace
