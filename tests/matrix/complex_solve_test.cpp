// The square complex solve: elimination without pivoting, and the division by zero that gives zero.
#include "matrix_support.h"
#include "plain/det_solve.h"

namespace {

using namespace test;

TEST(ComplexSolve, ZeroDiagonalGivesAZeroComponent) {
  complex_square a = complex_rows(2, {{2, 0}, {0, 0}, {0, 0}, {0, 0}});
  complex_matrix b = complex_column({{4, 0}, {9, 0}});
  a.solve(b);
  EXPECT_TRUE(same(b.get(0, 0), {2, 0}));
  EXPECT_TRUE(same(b.get(0, 1), {0, 0}));
}

TEST(ComplexSolve, ZeroMatrixGivesZero) {
  complex_square a;
  a.create(3);
  complex_matrix b = complex_column({{4, 1}, {9, 2}, {1, 1}});
  a.solve(b);
  for (u32 i = 0; i < 3; ++i) EXPECT_TRUE(same(b.get(0, i), {0, 0}));
}

TEST(ComplexSolve, KnownSystem) {
  // (1 + i) u = 2i has the solution 1 + i.
  complex_matrix b = complex_column({{0, 2}});
  complex_rows(1, {{1, 1}}).solve(b);
  EXPECT_TRUE(same(b.get(0, 0), {1, 1}));
  // Zero pivot: nothing is exchanged, unlike the real solve.
  complex_matrix c = complex_column({{5, 0}, {7, 0}});
  complex_rows(2, {{0, 0}, {1, 0}, {1, 0}, {0, 0}}).solve(c);
  EXPECT_TRUE(same(c.get(0, 0), {0, 0}));
  EXPECT_TRUE(same(c.get(0, 1), {0, 0}));
}

TEST(ComplexSolve, EmptySystemDoesNothing) {
  complex_square none;
  complex_matrix b = complex_column({{5, 6}});
  none.solve(b);
  EXPECT_TRUE(same(b.get(0, 0), {5, 6}));
  complex_matrix empty;
  none.solve(empty);
  EXPECT_EQ(empty.getWidth(), 0u);
}

TEST(ComplexSolve, RightHandSideWithoutEntriesIsLeftAlone) {
  complex_square a = complex_rows(1, {{2, 0}});
  complex_matrix b;
  a.solve(b);
  EXPECT_EQ(b.getWidth(), 0u);
  b.create(0, 1);
  a.solve(b);
  EXPECT_EQ(b.getHeight(), 1u);
}

// The back substitution divides by the squared modulus; one reciprocal would round differently.
TEST(ComplexSolve, DividesTwice) {
  random_source random(81);
  u32 shows = 0;
  for (u32 k = 0; k < 100; ++k) {
    const plain::cnum d{random.uniform(), random.uniform()};
    const plain::cnum t{random.uniform(), random.uniform()};
    complex_matrix b = complex_column({t});
    complex_rows(1, {d}).solve(b);
    const double q = d.re * d.re + d.im * d.im;
    ASSERT_TRUE(same(b.get(0, 0), {(d.im * t.im + d.re * t.re) / q, (d.re * t.im - d.im * t.re) / q}));
    if (!same_bits(b.get(0, 0).re, (d.im * t.im + d.re * t.re) * (1.0 / q))) ++shows;
  }
  EXPECT_GT(shows, 0u);
}

TEST(ComplexSolve, HeightsAndWidthsOfTheRightHandSide) {
  random_source random(82);
  for (u32 n = 1; n <= 7; ++n) {
    for (u32 h = 1; h <= 9; ++h) {
      const plain::csquare p = random_csquare(n, random, entries::ordinary);
      plain::cmatrix b = random_cmatrix(2, h, random, entries::ordinary);
      complex_matrix x = to_library(b);
      to_library(p).solve(x);
      plain::solve(p, b);
      ASSERT_TRUE(same(x, b)) << n << " " << h;
    }
  }
}

TEST_EVERY_BUILD(ComplexSolve, MatchesThePlainForm) {
  random_source random(83);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 66 && kind != entries::hostile && kind != entries::ordinary) continue;
      for (u32 k = 0; k < (n < 8 ? 200u : n <= 40 ? 3u : 1u); ++k) {
        const plain::csquare p = random_csquare(n, random, kind);
        plain::cmatrix b = random_cmatrix(1, n, random, kind);
        complex_square a = to_library(p);
        complex_matrix x = to_library(b);
        a.solve(x);
        plain::solve(p, b);
        ASSERT_TRUE(same(x, b)) << describe(n, kind);
        ASSERT_TRUE(same(a, p)) << describe(n, kind) << ": the matrix changed";
      }
    }
  }
}

TEST_EVERY_BUILD(ComplexSolve, ZeroPivotsMatchThePlainForm) {
  random_source random(84);
  for (u32 n = 2; n <= 12; ++n) {
    for (u32 k = 0; k < 60; ++k) {
      plain::csquare p = random_csquare(n, random, entries::sparse);
      plain::cmatrix b = random_cmatrix(1, n, random, k % 2 ? entries::sparse : entries::hostile);
      const u32 i = random.below(n);
      const double zero[] = {0.0, -0.0, 1e-200, -1e-200};
      p.set(i, i, {zero[random.below(4)], zero[random.below(4)]});
      complex_matrix x = to_library(b);
      to_library(p).solve(x);
      plain::solve(p, b);
      ASSERT_TRUE(same(x, b)) << n;
    }
  }
}

}  // namespace
