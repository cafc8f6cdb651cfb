// The square real solve: LU factorisation with partial pivoting.
#include "matrix_support.h"
#include "plain/det_solve.h"

namespace {

using namespace test;

TEST(Solve, PivotsAroundAZero) {
  real_square a = square(2, {0, 1, 1, 0});
  real_matrix b = column({5, 7});
  a.solve(b);
  EXPECT_TRUE(same(b, to_plain(column({7, 5}))));
  EXPECT_BITS(a.get(0, 0), 0.0);
  EXPECT_BITS(a.get(1, 0), 1.0);
}

TEST(Solve, SingularSystemLeavesTheRightHandSide) {
  real_square zero = square(2, {0, 0, 0, 0});
  real_matrix b = column({5, quiet_nan});
  zero.solve(b);
  EXPECT_TRUE(same(b, to_plain(column({5, quiet_nan}))));
  real_square proportional = square(3, {1, 2, 3, 2, 4, 6, 1, 1, 1});
  real_matrix c = column({1, 2, 3});
  proportional.solve(c);
  EXPECT_TRUE(same(c, to_plain(column({1, 2, 3}))));
  real_square nothing_but_nan = square(1, {quiet_nan});
  real_matrix d = column({4});
  nothing_but_nan.solve(d);
  EXPECT_TRUE(same(d, to_plain(column({4}))));
}

TEST(Solve, EmptySystemDoesNothing) {
  real_square none;
  real_matrix b = column({5, 7});
  none.solve(b);
  EXPECT_TRUE(same(b, to_plain(column({5, 7}))));
  real_matrix empty;
  none.solve(empty);
  EXPECT_EQ(empty.getWidth(), 0u);
}

TEST(Solve, RightHandSideWithoutEntriesIsLeftAlone) {
  real_square a = square(2, {2, 0, 0, 4});
  for (const auto& sizes : {std::pair<u32, u32>{0, 0}, {0, 2}, {1, 0}}) {
    real_matrix b;
    b.create(sizes.first, sizes.second);
    a.solve(b);
    EXPECT_EQ(b.getWidth(), sizes.first);
    EXPECT_EQ(b.getHeight(), sizes.second);
  }
}

TEST(Solve, OneEquation) {
  real_matrix b = column({6});
  square(1, {4}).solve(b);
  EXPECT_BITS(b.get(0, 0), 1.5);
}

// With equal candidates the upper row is the pivot. 1 + 2^-53 rounds to 1, so the two choices of
// the pivot row give different multipliers, and with them different solutions.
TEST(Solve, TiesKeepTheUpperRow) {
  random_source random(71);
  u32 shows = 0;
  for (u32 k = 0; k < 200; ++k) {
    const double a = random.uniform(), b = random.uniform(), c = random.uniform();
    const double d = random.uniform(), e = random.uniform(), f = random.uniform();
    plain::square p(3);
    p.data = {0.5 * a, b, c, 3.0, d, e, -3.0, f, a};
    plain::square exchanged = p;
    for (u32 x = 0; x < 3; ++x) {
      exchanged.put(x, 1, p.get(x, 2));
      exchanged.put(x, 2, p.get(x, 1));
    }
    plain::matrix rhs(1, 3);
    rhs.data = {1.0, 0.3, 0.7};
    plain::matrix rhs_exchanged(1, 3);
    rhs_exchanged.data = {1.0, 0.7, 0.3};
    real_matrix x = to_library(rhs);
    to_library(p).solve(x);
    plain::matrix want = rhs;
    plain::solve(p, want);
    ASSERT_TRUE(same(x, want));
    plain::solve(exchanged, rhs_exchanged);
    if (!same(x, rhs_exchanged)) ++shows;
  }
  EXPECT_GT(shows, 0u) << "the inputs cannot tell the two choices apart";
}

TEST(Solve, OtherColumnsOfTheRightHandSideAreNotTouched) {
  real_square a = square(2, {2, 0, 0, 4});
  real_matrix b = rows(3, 2, {2, quiet_nan, -1, 8, inf, -2});
  a.solve(b);
  EXPECT_TRUE(same(b, to_plain(rows(3, 2, {1, quiet_nan, -1, 2, inf, -2}))));
}

// A right-hand side of another height is addressed modulo its height, or only in its upper part.
TEST(Solve, HeightsOfTheRightHandSideWrap) {
  random_source random(72);
  for (u32 n : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 16u, 19u}) {
    for (u32 h = 1; h <= 21; ++h) {
      const plain::square p = random_square(n, random, entries::ordinary);
      plain::matrix b = random_matrix(2, h, random, entries::ordinary);
      real_matrix x = to_library(b);
      to_library(p).solve(x);
      plain::solve(p, b);
      ASSERT_TRUE(same(x, b)) << n << " " << h;
    }
  }
}

TEST_EVERY_BUILD(Solve, MatchesThePlainForm) {
  random_source random(73);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      for (u32 k = 0; k < (n < 8 ? 200u : n <= 40 ? 4u : 1u); ++k) {
        const plain::square p = random_square(n, random, kind);
        plain::matrix b = random_matrix(1, n, random, kind);
        real_square a = to_library(p);
        real_matrix x = to_library(b);
        a.solve(x);
        plain::solve(p, b);
        ASSERT_TRUE(same(x, b)) << describe(n, kind);
        ASSERT_TRUE(same(a, p)) << describe(n, kind) << ": the matrix changed";
      }
    }
  }
}

// Infinities and NaN in one place only: the rule for NaN decides at a single store.
TEST_EVERY_BUILD(Solve, SingleHostileEntryMatchesThePlainForm) {
  random_source random(74);
  for (u32 n : {2u, 3u, 4u, 5u, 8u, 9u, 17u, 33u, 64u, 170u}) {
    for (u32 k = 0; k < 100; ++k) {
      plain::square p = random_square(n, random, entries::small_integers);
      plain::matrix b = random_matrix(1, n, random, entries::small_integers);
      const double odd[] = {quiet_nan, signalling_nan(), inf, -inf, 1e300, 5e-324, -0.0};
      p.put(random.below(n), random.below(n), odd[random.below(7)]);
      if (random.below(2)) b.put(0, random.below(n), odd[random.below(7)]);
      real_matrix x = to_library(b);
      to_library(p).solve(x);
      plain::solve(p, b);
      ASSERT_TRUE(same(x, b)) << n;
    }
  }
}

TEST(Solve, SolvesRegularSystemsWithinRounding) {
  random_source random(75);
  for (u32 n : {1u, 2u, 5u, 20u, 60u}) {
    plain::square p = random_square(n, random, entries::ordinary);
    for (u32 i = 0; i < n; ++i) p.put(i, i, p.get(i, i) + 4.0 * n);
    plain::matrix truth = random_matrix(1, n, random, entries::ordinary);
    real_matrix b = to_library(plain::matrix(1, n));
    for (u32 y = 0; y < n; ++y) {
      double s = 0.0;
      for (u32 x = 0; x < n; ++x) s += p.get(x, y) * truth.get(0, x);
      b.set(0, y, s);
    }
    to_library(p).solve(b);
    for (u32 y = 0; y < n; ++y) EXPECT_NEAR(b.get(0, y), truth.get(0, y), 1e-12);
  }
}

}  // namespace
