// Determinants of real and complex matrices.
#include "matrix_support.h"
#include "plain/det_solve.h"

namespace {

using namespace test;

TEST(Det, OfTheEmptyMatrixIsOne) {
  real_square none;
  EXPECT_BITS(none.det(), 1.0);
  complex_square empty;
  EXPECT_TRUE(same(empty.det(), {1.0, 0.0}));
  empty.create(0);
  EXPECT_TRUE(same(empty.det(), {1.0, 0.0}));
}

TEST(Det, OfOneEntryIsTheEntry) {
  EXPECT_BITS(square(1, {-7.5}).det(), -7.5);
  EXPECT_BITS(square(1, {-0.0}).det(), -0.0);
  EXPECT_BITS(square(1, {inf}).det(), inf);
  EXPECT_BITS(square(1, {quiet_nan}).det(), quiet_nan);
  EXPECT_TRUE(same(complex_rows(1, {{2, -3}}).det(), {2, -3}));
}

TEST(Det, SingularExampleBySarrusAndByElimination) {
  EXPECT_BITS(square(3, {2, 0, 1, 1, 3, 2, 1, 1, 1}).det(), 0.0);
  EXPECT_BITS(square(4, {2, 0, 1, 0, 1, 3, 2, 0, 1, 1, 1, 0, 0, 0, 0, 1}).det(), 0.0);
}

TEST(Det, ZeroPivotIsNotExchanged) {
  EXPECT_BITS(square(2, {0, 1, 1, 0}).det(), quiet_nan);
  EXPECT_TRUE(same(complex_rows(2, {{0, 0}, {1, 0}, {1, 0}, {0, 0}}).det(), {0.0, 0.0}));
}

TEST(Det, ZeroPivotDoesNotMatterToSarrus) {
  EXPECT_BITS(square(3, {0, 1, 0, 1, 0, 0, 0, 0, 1}).det(), -1.0);
  // Complex matrices have no such path: the zero pivot leaves the rows as they are.
  EXPECT_TRUE(same(complex_rows(3, {{0, 0}, {1, 0}, {0, 0}, {1, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {1, 0}}).det(),
                   {0.0, 0.0}));
}

// Both sums start from +0.0, so a determinant of negative zeros is +0.0 and not -0.0.
TEST(Det, SarrusStartsFromPositiveZero) {
  EXPECT_BITS(square(3, {-0.0, 0, 0, 0, 0, 0, 0, 0, 0}).det(), 0.0);
  EXPECT_BITS(square(3, {1, 0, 0, 0, 1, 0, 0, 0, -0.0}).det(), 0.0);
  EXPECT_BITS(square(3, {0, 1, 0, 0, 0, -0.0, 1, 0, 0}).det(), 0.0);
}

TEST(Det, SarrusKeepsNan) {
  EXPECT_BITS(square(3, {quiet_nan, 0, 0, 0, 1, 0, 0, 0, 1}).det(), quiet_nan);
  EXPECT_BITS(square(3, {inf, 0, 0, 0, 1, 0, 0, 0, 1}).det(), quiet_nan);
}

TEST(Det, DoesNotChangeTheMatrix) {
  random_source random(51);
  for (u32 n : {2u, 3u, 4u, 9u}) {
    const plain::square p = random_square(n, random, entries::ordinary);
    real_square a = to_library(p);
    (void)a.det();
    EXPECT_TRUE(same(a, p));
    const plain::csquare q = random_csquare(n, random, entries::ordinary);
    complex_square c = to_library(q);
    (void)c.det();
    EXPECT_TRUE(same(c, q));
  }
}

TEST_EVERY_BUILD(Det, MatchesThePlainForm) {
  random_source random(52);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      for (u32 k = 0; k < (n < 8 ? 200u : n <= 40 ? 4u : 1u); ++k) {
        const plain::square p = random_square(n, random, kind);
        ASSERT_BITS(to_library(p).det(), plain::det(p)) << describe(n, kind);
      }
    }
  }
}

TEST_EVERY_BUILD(Det, ComplexMatchesThePlainForm) {
  random_source random(53);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 66 && kind != entries::hostile && kind != entries::ordinary) continue;
      for (u32 k = 0; k < (n < 8 ? 200u : n <= 40 ? 4u : 1u); ++k) {
        const plain::csquare p = random_csquare(n, random, kind);
        ASSERT_TRUE(same(to_library(p).det(), plain::det(p))) << describe(n, kind);
      }
    }
  }
}

// A pivot so small that its square vanishes counts as zero, although it is not.
TEST(Det, ComplexPivotWhoseSquareUnderflowsCountsAsZero) {
  const plain::csquare p = [] {
    plain::csquare m(2);
    m.data = {{1e-200, 0}, {1, 0}, {1e-200, 0}, {3, 0}};
    return m;
  }();
  EXPECT_TRUE(same(to_library(p).det(), {3e-200, 0.0}));
  EXPECT_TRUE(same(to_library(p).det(), plain::det(p)));
}

// Triangular matrices with many zero pivots: the plain arithmetic decides every sign of zero.
TEST_EVERY_BUILD(Det, ZeroPivotsMatchThePlainForm) {
  random_source random(54);
  for (u32 n = 2; n <= 12; ++n) {
    for (u32 k = 0; k < 60; ++k) {
      plain::square p = random_square(n, random, entries::sparse);
      plain::csquare q = random_csquare(n, random, entries::sparse);
      const u32 i = random.below(n);
      p.put(i, i, random.below(2) ? 0.0 : -0.0);
      q.set(i, i, {random.below(2) ? 0.0 : -0.0, random.below(2) ? 0.0 : -0.0});
      ASSERT_BITS(to_library(p).det(), plain::det(p)) << n;
      ASSERT_TRUE(same(to_library(q).det(), plain::det(q))) << n;
    }
  }
}

}  // namespace
