// Cofactors of real and complex matrices.
#include "matrix_support.h"
#include "plain/det_solve.h"

namespace {

using namespace test;

TEST(Cofactor, OfTwoByTwo) {
  real_square a = square(2, {1, 2, 3, 4});
  EXPECT_BITS(a.cof(0, 0), 4.0);
  EXPECT_BITS(a.cof(1, 0), -3.0);
  EXPECT_BITS(a.cof(0, 1), -2.0);
  EXPECT_BITS(a.cof(1, 1), 1.0);
  complex_square c = complex_rows(2, {{1, 10}, {2, 20}, {3, 30}, {4, 40}});
  EXPECT_TRUE(same(c.cof(0, 0), {4, 40}));
  EXPECT_TRUE(same(c.cof(1, 0), {-3, -30}));
  EXPECT_TRUE(same(c.cof(0, 1), {-2, -20}));
  EXPECT_TRUE(same(c.cof(1, 1), {1, 10}));
}

TEST(Cofactor, OfLessThanTwoByTwo) {
  real_square none;
  EXPECT_BITS(none.cof(0, 0), 0.0);
  EXPECT_BITS(square(1, {5}).cof(0, 0), 0.0);
  EXPECT_BITS(square(1, {5}).cof(3, 7), 0.0);
  complex_square empty;
  EXPECT_TRUE(same(empty.cof(0, 0), {1, 0}));
  EXPECT_TRUE(same(complex_rows(1, {{5, 6}}).cof(2, 0), {1, 0}));
}

// In a 2 x 2 matrix the sign comes from the indices as passed, and 2^32 is even.
TEST(Cofactor, IndicesOfTwoByTwoAreNotWrappedForTheSign) {
  real_square a = square(2, {1, 2, 3, 4});
  EXPECT_BITS(a.cof(2, 1), -2.0);
  EXPECT_BITS(a.cof(3, 3), 1.0);
  EXPECT_BITS(a.cof(5, 2), -3.0);
  const u32 last = 0xFFFFFFFFu;
  EXPECT_BITS(a.cof(last, last), 1.0);
  EXPECT_BITS(a.cof(last, 0), -3.0);
  EXPECT_BITS(a.cof(0, last), -2.0);
  complex_square c = complex_rows(2, {{1, 10}, {2, 20}, {3, 30}, {4, 40}});
  EXPECT_TRUE(same(c.cof(last, 0), {-3, -30}));
}

// In larger ones the indices wrap first: column 3 of a 3 x 3 matrix is column 0.
TEST(Cofactor, IndicesOfLargerMatricesWrapBeforeTheSign) {
  real_square a = square(3, {2, 0, 1, 1, 3, 2, 1, 1, 5});
  for (u32 x = 0; x < 3; ++x) {
    for (u32 y = 0; y < 3; ++y) {
      EXPECT_BITS(a.cof(x + 3, y), a.cof(x, y));
      EXPECT_BITS(a.cof(x, y + 6), a.cof(x, y));
    }
  }
  EXPECT_BITS(a.cof(0, 0), 13.0);
}

TEST(Cofactor, KeepsNanOfATwoByTwoEntryButNotOfAMinor) {
  EXPECT_BITS(square(2, {1, 2, 3, quiet_nan}).cof(0, 0), quiet_nan);
  EXPECT_BITS(square(3, {1, 0, 0, 0, quiet_nan, 0, 0, 0, 1}).cof(0, 0), plain::cof(
                                                                            [] {
                                                                              plain::square p(3);
                                                                              p.data = {1, 0, 0, 0, quiet_nan,
                                                                                        0, 0, 0, 1};
                                                                              return p;
                                                                            }(),
                                                                            0, 0));
}

// Both parts are multiplied by the sign, zeros too.
TEST(Cofactor, SignReachesZeros) {
  EXPECT_BITS(square(2, {1, 0.0, 3, 4}).cof(0, 1), -0.0);
  EXPECT_TRUE(same(complex_rows(2, {{1, 0}, {0, 0}, {3, 0}, {4, 0}}).cof(1, 0), {-3, -0.0}));
}

TEST_EVERY_BUILD(Cofactor, MatchesThePlainForm) {
  random_source random(61);
  for (u32 n = 0; n <= 40; ++n) {
    for (entries kind : all_entries) {
      const plain::square p = random_square(n, random, kind);
      const plain::csquare q = random_csquare(n, random, kind);
      real_square a = to_library(p);
      complex_square c = to_library(q);
      const u32 trials = n <= 5 ? n * n : 3;
      for (u32 k = 0; k < trials; ++k) {
        const u32 x = n <= 5 ? k % n : random.below(2 * n);
        const u32 y = n <= 5 ? k / n : random.below(2 * n);
        ASSERT_BITS(a.cof(x, y), plain::cof(p, x, y)) << describe(n, kind) << " " << x << " " << y;
        ASSERT_TRUE(same(c.cof(x, y), plain::cof(q, x, y))) << describe(n, kind);
      }
      EXPECT_TRUE(same(a, p)) << "the matrix is not changed";
      EXPECT_TRUE(same(c, q));
    }
  }
  for (u32 n : {64u, 65u, 130u}) {
    const plain::square p = random_square(n, random, entries::ordinary);
    EXPECT_BITS(to_library(p).cof(3, n - 2), plain::cof(p, 3, n - 2)) << n;
  }
}

}  // namespace
