// Least squares through the normal equations, and inversion.
#include "plain/linear.h"

#include "matrix_support.h"

namespace {

using namespace test;

// ---------------------------------------------------------------- least squares

TEST(LeastSquares, IdenticalColumnsLeaveTheRightHandSideOfTheNormalEquations) {
  real_matrix a = rows(2, 3, {1, 1, 2, 2, 3, 3});
  real_matrix b = column({1, 1, 1});
  real_matrix x;
  x.solve(a, b);
  EXPECT_TRUE(same(x, to_plain(column({6, 6}))));
}

TEST(LeastSquares, MoreUnknownsThanEquations) {
  real_matrix x;
  x.solve(rows(3, 1, {1, 2, 3}), column({5}));
  EXPECT_TRUE(same(x, to_plain(column({5, 10, 15}))));
}

TEST(LeastSquares, SizesMustAgree) {
  real_matrix a = rows(2, 3, {1, 0, 0, 1, 1, 1});
  real_matrix b = column({1, 2, 3});
  real_matrix x;
  x.solve(a, b);
  EXPECT_EQ(x.getWidth(), 1u);
  EXPECT_EQ(x.getHeight(), 2u);
  real_matrix kept = rows(2, 1, {7, 8});
  kept.solve(a, column({1, 2}));
  EXPECT_TRUE(same(kept, to_plain(rows(2, 1, {7, 8}))));
  kept.solve(a, rows(2, 3, {1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(same(kept, to_plain(rows(2, 1, {7, 8}))));
  kept.solve(a, real_matrix());
  EXPECT_TRUE(same(kept, to_plain(rows(2, 1, {7, 8}))));
}

TEST(LeastSquares, LineThroughThreePoints) {
  real_matrix a = rows(2, 3, {1, 0, 1, 1, 1, 2});
  real_matrix b = column({1, 3, 5});
  real_matrix x = rows(3, 1, {9, 9, 9});
  x.solve(a, b);
  ASSERT_EQ(x.getWidth(), 1u);
  ASSERT_EQ(x.getHeight(), 2u);
  EXPECT_NEAR(x.get(0, 0), 1.0, 1e-14);
  EXPECT_NEAR(x.get(0, 1), 2.0, 1e-14);
  EXPECT_TRUE(same(a, to_plain(rows(2, 3, {1, 0, 1, 1, 1, 2}))));
  EXPECT_TRUE(same(b, to_plain(column({1, 3, 5}))));
}

TEST(LeastSquares, WithoutUnknownsOrEquations) {
  real_matrix no_unknowns;
  no_unknowns.create(0, 3);
  real_matrix x = rows(1, 1, {4});
  x.solve(no_unknowns, column({1, 2, 3}));
  EXPECT_EQ(x.getWidth(), 1u);
  EXPECT_EQ(x.getHeight(), 0u);
  real_matrix no_equations;
  no_equations.create(2, 0);
  real_matrix nothing;
  nothing.create(1, 0);
  x.solve(no_equations, nothing);
  EXPECT_TRUE(same(x, plain::matrix(1, 2)));
}

TEST_EVERY_BUILD(LeastSquares, MatchesThePlainForm) {
  random_source random(121);
  for (u32 n : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 13u, 16u, 17u, 33u, 65u}) {
    for (u32 m : {0u, 1u, 2u, 3u, 4u, 7u, 8u, 15u, 16u, 33u, 63u, 64u, 65u, 127u, 128u, 129u, 200u}) {
      if (n > 17 && m > 40 && m % 64 != 1) continue;
      for (entries kind : all_entries) {
        const plain::matrix a = random_matrix(n, m, random, kind);
        const plain::matrix b = random_matrix(1, m, random, kind);
        plain::matrix want;
        plain::least_squares(want, a, b);
        real_matrix x;
        x.solve(to_library(a), to_library(b));
        ASSERT_TRUE(same(x, want)) << describe(n, kind) << ", " << m << " equations";
      }
    }
  }
}

TEST_EVERY_BUILD(LeastSquares, TallSystemsMatchThePlainForm) {
  random_source random(122);
  const plain::matrix a = random_matrix(5, 3000, random, entries::ordinary);
  const plain::matrix b = random_matrix(1, 3000, random, entries::ordinary);
  plain::matrix want;
  plain::least_squares(want, a, b);
  real_matrix x;
  x.solve(to_library(a), to_library(b));
  EXPECT_TRUE(same(x, want));
}

TEST(LeastSquares, ResultMayBeAnArgument) {
  random_source random(123);
  for (u32 n : {1u, 2u, 5u}) {
    const plain::matrix a = random_matrix(n, n + 3, random, entries::ordinary);
    const plain::matrix b = random_matrix(1, n + 3, random, entries::ordinary);
    plain::matrix want;
    plain::least_squares(want, a, b);
    real_matrix x = to_library(a);
    x.solve(x, to_library(b));
    EXPECT_TRUE(same(x, want));
    x = to_library(b);
    x.solve(to_library(a), x);
    EXPECT_TRUE(same(x, want));
  }
  const plain::matrix one = random_matrix(1, 4, random, entries::ordinary);
  plain::matrix want;
  plain::least_squares(want, one, one);
  real_matrix x = to_library(one);
  x.solve(x, x);
  EXPECT_TRUE(same(x, want));
  EXPECT_NEAR(x.get(0, 0), 1.0, 1e-15);
}

// ---------------------------------------------------------------- inversion

real_matrix inverse(const real_matrix& a) {
  real_matrix r = rows(2, 1, {8, 9});
  a.invert(r);
  return r;
}

TEST(Invert, TwoByTwo) {
  const real_matrix a = rows(2, 2, {4, 7, 2, 6});
  const real_matrix r = inverse(a);
  const double want[] = {0.6, -0.7, -0.2, 0.4};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(r.getData()[i], want[i], 2e-16);
  // A cofactor times the rounded reciprocal of the determinant, 0.1.
  EXPECT_TRUE(same(r, to_plain(rows(2, 2, {6 * 0.1, -7 * 0.1, -2 * 0.1, 4 * 0.1}))));
  EXPECT_TRUE(same(a, to_plain(rows(2, 2, {4, 7, 2, 6}))));
}

TEST(Invert, DiagonalMatrices) {
  EXPECT_TRUE(
      same(inverse(rows(3, 3, {2, 0, 0, 0, 0, 0, 0, 0, 4})), to_plain(rows(3, 3, {0.5, 0, 0, 0, 0, 0, 0, 0, 0.25}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {8})), to_plain(rows(1, 1, {0.125}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {0})), to_plain(rows(1, 1, {0}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {-0.0})), to_plain(rows(1, 1, {0}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {quiet_nan})), to_plain(rows(1, 1, {0}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {-inf})), to_plain(rows(1, 1, {-0.0}))));
  EXPECT_TRUE(same(inverse(rows(1, 1, {5e-324})), to_plain(rows(1, 1, {inf}))));
  EXPECT_TRUE(same(inverse(rows(2, 2, {2, quiet_nan, -0.0, 4})), to_plain(rows(2, 2, {0.5, 0, 0, 0.25}))));
}

TEST(Invert, RectangularDiagonalMatrices) {
  EXPECT_TRUE(same(inverse(rows(3, 2, {2, 0, 0, 0, 4, 0})), to_plain(rows(2, 3, {0.5, 0, 0, 0.25, 0, 0}))));
  EXPECT_TRUE(same(inverse(rows(2, 3, {2, 0, 0, 4, 0, 0})), to_plain(rows(3, 2, {0.5, 0, 0, 0, 0.25, 0}))));
}

TEST(Invert, SingularSquareMatrixIsNotAPseudoInverse) {
  const real_matrix r = inverse(rows(2, 2, {1, 2, 2, 4}));
  EXPECT_TRUE(same(r, to_plain(rows(2, 2, {inf, -inf, -inf, inf}))));
  // 0 times infinity is stored as it comes: this path has no rule for NaN.
  EXPECT_TRUE(same(inverse(rows(2, 2, {0, 1, 0, 0})), plain::inverse(to_plain(rows(2, 2, {0, 1, 0, 0})))));
  EXPECT_BITS(inverse(rows(2, 2, {0, 1, 0, 0})).get(0, 0), quiet_nan);
}

TEST(Invert, EmptyMatrices) {
  real_matrix none;
  const real_matrix r = inverse(none);
  EXPECT_EQ(r.getWidth(), 0u);
  EXPECT_EQ(r.getHeight(), 0u);
  none.create(0, 0);
  EXPECT_EQ(inverse(none).getWidth(), 0u);
  none.create(0, 3);
  EXPECT_EQ(inverse(none).getWidth(), 3u);
  EXPECT_EQ(inverse(none).getHeight(), 0u);
}

TEST(Invert, IntoItselfGivesZeros) {
  real_matrix a = rows(2, 2, {4, 7, 2, 6});
  a.invert(a);
  EXPECT_TRUE(same(a, plain::matrix(2, 2)));
  real_matrix b = rows(3, 2, {2, 0, 1, 0, 4, 0});
  b.invert(b);
  EXPECT_TRUE(same(b, plain::matrix(2, 3)));
}

TEST_EVERY_BUILD(Invert, SquareMatricesMatchThePlainForm) {
  random_source random(124);
  for (u32 n = 2; n <= 40; ++n) {
    for (entries kind : all_entries) {
      if (n > 16 && static_cast<u32>(kind) != n % 7) continue;
      if (n > 24 && n % 8 > 1) continue;
      for (u32 k = 0; k < (n < 7 ? 60u : 1u); ++k) {
        const plain::matrix a = random_matrix(n, n, random, kind);
        const real_matrix got = inverse(to_library(a));
        ASSERT_TRUE(same(got, plain::inverse(a))) << describe(n, kind);
      }
    }
  }
}

// A zero, an infinity or a tie in one place sends single minors, not all, through odd arithmetic.
TEST_EVERY_BUILD(Invert, SingleOddEntriesMatchThePlainForm) {
  random_source random(125);
  for (u32 n = 2; n <= 12; ++n) {
    for (u32 k = 0; k < 60; ++k) {
      plain::matrix a = random_matrix(n, n, random, k % 2 ? entries::ordinary : entries::small_integers);
      const double odd[] = {quiet_nan, signalling_nan(), inf, -inf, 1e300, 5e-324, -0.0, 0.0};
      const u32 count = 1 + random.below(3);
      for (u32 i = 0; i < count; ++i) a.put(random.below(n), random.below(n), odd[random.below(8)]);
      ASSERT_TRUE(same(inverse(to_library(a)), plain::inverse(a))) << n;
    }
  }
}

// The plain form is O(n^5): above 40, sampled entries only.
TEST_EVERY_BUILD(Invert, LargeMatricesMatchThePlainFormInSampledEntries) {
  random_source random(126);
  for (u32 n : {64u, 65u, 100u}) {
    const plain::matrix a = random_matrix(n, n, random, n == 65 ? entries::sparse : entries::ordinary);
    const real_matrix got = inverse(to_library(a));
    plain::square m(n);
    for (std::size_t i = 0; i < a.data.size(); ++i) m.data[i] = plain::stored(a.data[i]);
    const double q = 1.0 / plain::det(m);
    for (u32 k = 0; k < 40; ++k) {
      const u32 i = k == 0 ? 0 : k == 1 ? n - 1 : random.below(n);
      const u32 j = k == 0 ? 0 : k == 1 ? n - 1 : random.below(n);
      const double t = plain::det(plain::minor_of(m, i, j)) * plain::sign_of_power(i + j);
      ASSERT_BITS(got.get(j, i), t * q) << n << " " << i << " " << j;
    }
  }
}

TEST(Invert, InvertsWithinRounding) {
  random_source random(127);
  for (u32 n : {2u, 3u, 4u, 8u}) {
    plain::matrix a = random_matrix(n, n, random, entries::ordinary);
    for (u32 i = 0; i < n; ++i) a.put(i, i, a.get(i, i) + 4.0 * n);
    const plain::matrix e = plain::product(a, to_plain(inverse(to_library(a))));
    for (u32 y = 0; y < n; ++y) {
      for (u32 x = 0; x < n; ++x) EXPECT_NEAR(e.get(x, y), x == y ? 1.0 : 0.0, 1e-13);
    }
  }
}

// ---------------------------------------------------------------- pseudo-inverse

TEST(Invert, PseudoInverseOfTallMatricesOfFullRank) {
  random_source random(128);
  for (u32 w = 1; w <= 8; ++w) {
    for (u32 h = w + 1; h <= 14; h += 3) {
      plain::matrix a = random_matrix(w, h, random, entries::ordinary);
      for (u32 i = 0; i < w; ++i) a.put(i, i, a.get(i, i) + 10.0);
      const real_matrix p = inverse(to_library(a));
      ASSERT_EQ(p.getWidth(), h);
      ASSERT_EQ(p.getHeight(), w);
      const plain::matrix e = plain::product(to_plain(p), a);
      for (u32 y = 0; y < w; ++y) {
        for (u32 x = 0; x < w; ++x) ASSERT_NEAR(e.get(x, y), x == y ? 1.0 : 0.0, 1e-12);
      }
      // The projection A P is symmetric.
      const plain::matrix q = plain::product(a, to_plain(p));
      for (u32 y = 0; y < h; ++y) {
        for (u32 x = 0; x < y; ++x) ASSERT_NEAR(q.get(x, y), q.get(y, x), 1e-12);
      }
    }
  }
}

// The result is (V S+) U' with the products of the matrix class, whatever the decomposition gives:
// also for wide and rank-deficient matrices, whose rounded zeros are inverted like any other value.
TEST(Invert, PseudoInverseIsFormedFromTheDecomposition) {
  random_source random(129);
  for (u32 w = 1; w <= 9; ++w) {
    for (u32 h = 1; h <= 9; ++h) {
      if (w == h) continue;
      for (entries kind : all_entries) {
        const plain::matrix a = random_matrix(w, h, random, kind);
        const real_matrix got = inverse(to_library(a));
        if (plain::is_diagonal(a)) {
          ASSERT_TRUE(same(got, plain::inverse_of_diagonal(a)));
          continue;
        }
        real_matrix u, s, v;
        to_library(a).decompose(u, s, v);
        const plain::matrix want = plain::product(plain::product(to_plain(v), plain::inverse_of_diagonal(to_plain(s))),
                                                  plain::transposed(to_plain(u)));
        ASSERT_TRUE(same(got, want)) << describe(w * 100 + h, kind);
      }
    }
  }
}

}  // namespace
