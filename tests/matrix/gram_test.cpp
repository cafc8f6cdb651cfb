// Orthogonalisation of columns and elimination in place.
#include "plain/gram.h"

#include "matrix_support.h"

namespace {

using namespace test;

plain::square plain_square(u32 n, std::initializer_list<double> values) {
  plain::square p(n);
  p.data = values;
  return p;
}

TEST(Orthogonalize, LeavesSmallMatricesAlone) {
  real_square none;
  none.orthogonalize();
  EXPECT_EQ(none.getSize(), 0u);
  real_square one = square(1, {quiet_nan});
  one.orthogonalize();
  EXPECT_BITS(one.get(0, 0), quiet_nan);
  complex_square empty;
  empty.orthogonalize();
  EXPECT_EQ(empty.getSize(), 0u);
  complex_square single = complex_rows(1, {{3, 4}});
  single.orthogonalize();
  EXPECT_TRUE(same(single.get(0, 0), {3, 4}));
}

TEST(Orthogonalize, Examples) {
  real_square a = square(2, {1, 1, 0, 1});
  a.orthogonalize();
  EXPECT_TRUE(same(a, plain_square(2, {1, 0, 0, 1})));
  real_square b = square(2, {2, 3, 0, 4});
  b.orthogonalize();
  EXPECT_TRUE(same(b, plain_square(2, {2, 0, 0, 4})));
}

TEST(Orthogonalize, ZeroColumnIsNotGuarded) {
  // num and den are 0, their quotient is NaN, and the rule for NaN turns the column into zeros.
  real_square a = square(2, {0, 1, 0, 2});
  a.orthogonalize();
  EXPECT_TRUE(same(a, plain_square(2, {0, 0, 0, 0})));
  complex_square c = complex_rows(2, {{0, 0}, {1, 2}, {0, 0}, {3, 4}});
  c.orthogonalize();
  EXPECT_TRUE(same(c.get(1, 0), {1, 2}));
  EXPECT_TRUE(same(c.get(1, 1), {3, 4}));
}

// The product is not conjugated: the column (1, i) is orthogonal to itself and projects nothing.
TEST(Orthogonalize, ComplexProductIsBilinear) {
  complex_square c = complex_rows(2, {{1, 0}, {5, 0}, {0, 1}, {7, 0}});
  c.orthogonalize();
  EXPECT_TRUE(same(c.get(1, 0), {5, 0}));
  EXPECT_TRUE(same(c.get(1, 1), {7, 0}));
}

TEST_EVERY_BUILD(Orthogonalize, MatchesThePlainForm) {
  random_source random(91);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 66 && kind != entries::ordinary) continue;
      for (u32 k = 0; k < (n < 8 ? 100u : n <= 20 ? 4u : 1u); ++k) {
        plain::square p = random_square(n, random, kind);
        real_square a = to_library(p);
        a.orthogonalize();
        plain::orthogonalize(p);
        ASSERT_TRUE(same(a, p)) << describe(n, kind);
        if (n > 66) continue;
        plain::csquare q = random_csquare(n, random, kind);
        complex_square c = to_library(q);
        c.orthogonalize();
        plain::orthogonalize(q);
        ASSERT_TRUE(same(c, q)) << describe(n, kind);
      }
    }
  }
}

TEST_EVERY_BUILD(Orthogonalize, SelfOrthogonalColumnsMatchThePlainForm) {
  random_source random(92);
  for (u32 n = 2; n <= 10; ++n) {
    for (u32 k = 0; k < 60; ++k) {
      plain::csquare q = random_csquare(n, random, entries::sparse);
      const u32 i = random.below(n);
      const double size[] = {0.0, -0.0, 1e-170, 1.0};
      const double v = size[random.below(4)];
      for (u32 y = 0; y < n; ++y) q.set(i, y, {0.0, -0.0});
      q.set(i, 0, {v, 0.0});
      q.set(i, 1, {0.0, -v});
      complex_square c = to_library(q);
      c.orthogonalize();
      plain::orthogonalize(q);
      ASSERT_TRUE(same(c, q)) << n;
    }
  }
}

TEST(Orthogonalize, ColumnsComeOutOrthogonal) {
  random_source random(93);
  for (u32 n : {2u, 5u, 12u}) {
    plain::square p = random_square(n, random, entries::ordinary);
    for (u32 i = 0; i < n; ++i) p.put(i, i, p.get(i, i) + 3.0 * n);
    real_square a = to_library(p);
    a.orthogonalize();
    for (u32 y = 0; y < n; ++y) EXPECT_BITS(a.get(0, y), p.get(0, y));
    for (u32 i = 0; i < n; ++i) {
      for (u32 j = 0; j < i; ++j) {
        double s = 0.0;
        for (u32 y = 0; y < n; ++y) s += a.get(i, y) * a.get(j, y);
        EXPECT_NEAR(s, 0.0, 1e-11);
      }
    }
  }
}

TEST(Optimize, LeavesSmallMatricesAlone) {
  real_square none;
  none.optimize();
  EXPECT_EQ(none.getSize(), 0u);
  real_square one = square(1, {quiet_nan});
  one.optimize();
  EXPECT_BITS(one.get(0, 0), quiet_nan);
  complex_square single = complex_rows(1, {{quiet_nan, 4}});
  single.optimize();
  EXPECT_TRUE(same(single.get(0, 0), {quiet_nan, 4}));
  complex_square empty;
  empty.optimize();
  EXPECT_EQ(empty.getSize(), 0u);
}

TEST(Optimize, Examples) {
  real_square a = square(2, {2, 1, 4, 5});
  a.optimize();
  EXPECT_TRUE(same(a, plain_square(2, {2, 1, 0, 3})));
  real_square b = square(2, {0, 1, 1, 0});
  b.optimize();
  EXPECT_TRUE(same(b, plain_square(2, {0, 1, 0, -inf})));
  complex_square c = complex_rows(2, {{0, 0}, {1, 0}, {1, 0}, {0, 0}});
  c.optimize();
  EXPECT_TRUE(same(c.get(0, 0), {0, 0}));
  EXPECT_TRUE(same(c.get(1, 0), {1, 0}));
  EXPECT_TRUE(same(c.get(0, 1), {1, 0}));
  EXPECT_TRUE(same(c.get(1, 1), {0, 0}));
}

TEST_EVERY_BUILD(Optimize, MatchesThePlainForm) {
  random_source random(94);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      for (u32 k = 0; k < (n < 8 ? 100u : n <= 20 ? 4u : 1u); ++k) {
        plain::square p = random_square(n, random, kind);
        real_square a = to_library(p);
        a.optimize();
        plain::optimize(p);
        ASSERT_TRUE(same(a, p)) << describe(n, kind);
        if (n > 66 && kind != entries::hostile) continue;
        plain::csquare q = random_csquare(n, random, kind);
        complex_square c = to_library(q);
        c.optimize();
        plain::optimize(q);
        ASSERT_TRUE(same(c, q)) << describe(n, kind);
      }
    }
  }
}

TEST(Optimize, ProductOfTheDiagonalIsTheDeterminant) {
  random_source random(95);
  for (u32 n : {2u, 4u, 7u}) {
    plain::square p = random_square(n, random, entries::ordinary);
    for (u32 i = 0; i < n; ++i) p.put(i, i, p.get(i, i) + 10.0);
    real_square a = to_library(p);
    const double before = a.det();
    a.optimize();
    double product = 1.0;
    for (u32 i = 0; i < n; ++i) product *= a.get(i, i);
    EXPECT_NEAR(product / before, 1.0, 1e-13);
  }
}

}  // namespace
