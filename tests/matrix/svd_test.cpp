// The singular value decomposition: shapes, orthogonality, order, signs, and input it cannot
// handle.
#if defined(TESTS_HAVE_LAPACKE)
#include <lapacke.h>
#endif

#include <algorithm>
#include <chrono>

#include "plain/decompose.h"
#include "svd_support.h"

namespace {

using namespace test;

plain::matrix diagonal(std::initializer_list<double> values) {
  const u32 n = static_cast<u32>(values.size());
  plain::matrix m(n, n);
  u32 i = 0;
  for (double v : values) {
    m.put(i, i, v);
    ++i;
  }
  return m;
}

void expect_equal_values(const real_matrix& got, std::initializer_list<double> want) {
  std::size_t i = 0;
  for (double v : want) {
    EXPECT_EQ(got.getData()[i], v) << "entry " << i;
    ++i;
  }
}

// ---------------------------------------------------------------- examples

TEST(Decompose, OrderedDiagonalGivesMinusTheIdentity) {
  const parts p = decomposed(diagonal({3, 1}));
  expect_equal_values(p.s, {3, 0, 0, 1});
  expect_equal_values(p.u, {-1, 0, 0, -1});
  expect_equal_values(p.v, {-1, 0, 0, -1});
}

// Each of the two columns is negated once on its way.
TEST(Decompose, SortNegatesTheColumnsItMoves) {
  const parts p = decomposed(diagonal({1, 3}));
  expect_equal_values(p.s, {3, 0, 0, 1});
  expect_equal_values(p.u, {0, 1, 1, 0});
  expect_equal_values(p.v, {0, 1, 1, 0});
}

// diag(-2, 4): the first value comes out as 2 with U = -1 and V = 1 before the sort.
TEST(Decompose, NegativeEntriesGivePositiveValues) {
  const parts p = decomposed(diagonal({-2, 4}));
  expect_equal_values(p.s, {4, 0, 0, 2});
  expect_equal_values(p.u, {0, 1, 1, 0});
  expect_equal_values(p.v, {0, -1, 1, 0});
}

TEST(Decompose, SizesOfTallWideAndEmptyMatrices) {
  expect_sizes(decomposed(plain::matrix(2, 3)), 2, 3);
  expect_sizes(decomposed(plain::matrix(3, 2)), 3, 2);
  expect_sizes(decomposed(plain::matrix(0, 0)), 0, 0);
  expect_sizes(decomposed(plain::matrix(0, 4)), 0, 4);
  const parts p = decomposed(plain::matrix(3, 0));
  expect_sizes(p, 3, 0);
  expect_equal_values(p.s, {0, 0, 0, 0, 0, 0, 0, 0, 0});
  expect_equal_values(p.v, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  real_matrix none, u, s, v;
  none.decompose(u, s, v);
  EXPECT_EQ(u.getWidth(), 0u);
}

TEST(Decompose, ZeroMatrixGivesIdentities) {
  for (u32 w = 1; w <= 5; ++w) {
    for (u32 h = 1; h <= 5; ++h) {
      const parts p = decomposed(plain::matrix(w, h));
      for (u32 y = 0; y < h; ++y) {
        for (u32 x = 0; x < w; ++x) EXPECT_EQ(p.u.get(x, y), x == y ? 1.0 : 0.0);
      }
      for (u32 y = 0; y < w; ++y) {
        for (u32 x = 0; x < w; ++x) {
          EXPECT_EQ(p.v.get(x, y), x == y ? 1.0 : 0.0);
          EXPECT_EQ(p.s.get(x, y), 0.0);
        }
      }
    }
  }
}

TEST(Decompose, WideMatrixHasAZeroSingularValue) {
  plain::matrix a(3, 2);
  a.data = {1, 2, 3, 4, 5, 7};
  const parts p = decomposed(a);
  EXPECT_LE(p.s.get(2, 2), 1e-14);
  EXPECT_GT(p.s.get(1, 1), 0.1);
}

TEST(Decompose, SingleRowsAndColumns) {
  random_source random(101);
  for (u32 n : {1u, 2u, 3u, 7u, 40u, 200u}) {
    expect_valid(random_matrix(n, 1, random, entries::ordinary), "one row");
    expect_valid(random_matrix(1, n, random, entries::ordinary), "one column");
  }
  const parts p = decomposed([] {
    plain::matrix a(1, 2);
    a.data = {3, 4};
    return a;
  }());
  EXPECT_NEAR(p.s.get(0, 0), 5.0, 1e-14);
}

// ---------------------------------------------------------------- the sort

// Powers of two on the diagonal make every step before the sort exact and free of sweeps, so that
// the order and the signs show the moves of the sort alone.
TEST(Decompose, OrderAndSignsAreThoseOfTheSort) {
  random_source random(102);
  for (u32 n = 1; n <= 60; ++n) {
    for (u32 k = 0; k < 8; ++k) {
      plain::matrix a(n, n + (k == 7 ? 3 : 0));
      const u32 range = k < 4 ? 60 : 4;
      for (u32 i = 0; i < n; ++i) {
        if (k == 5 && random.below(4) == 0) continue;
        const double v = std::ldexp(1.0, static_cast<int>(random.below(range)));
        a.put(i, i, k % 2 && random.below(2) ? -v : v);
      }
      const plain::decomposition want = plain::decompose(a);
      const parts got = decomposed(a);
      for (std::size_t i = 0; i < want.u.data.size(); ++i) {
        ASSERT_EQ(got.u.getData()[i], want.u.data[i]) << n << " U " << place(i, n);
      }
      for (std::size_t i = 0; i < want.v.data.size(); ++i) {
        ASSERT_EQ(got.v.getData()[i], want.v.data[i]) << n << " V " << place(i, n);
        ASSERT_EQ(got.s.getData()[i], want.s.data[i]) << n << " S " << place(i, n);
      }
    }
  }
}

// ---------------------------------------------------------------- properties

TEST_EVERY_BUILD(Decompose, RandomMatricesOfEveryShape) {
  random_source random(103);
  for (u32 w = 1; w <= 14; ++w) {
    for (u32 h = 1; h <= 14; ++h) {
      expect_valid(random_matrix(w, h, random, entries::ordinary), "ordinary");
      expect_valid(random_matrix(w, h, random, entries::sparse), "sparse");
      expect_valid(random_matrix(w, h, random, entries::small_integers), "small integers");
      expect_valid(random_matrix(w, h, random, entries::proportional), "proportional columns");
    }
  }
  for (u32 n : {31u, 32u, 33u, 64u, 65u}) {
    expect_valid(random_matrix(n, n, random, entries::ordinary), "square");
    expect_valid(random_matrix(n, n + 20, random, entries::sparse), "tall");
    expect_valid(random_matrix(n, n - 20, random, entries::ordinary), "wide");
  }
  expect_valid(random_matrix(130, 130, random, entries::ordinary), "square");
}

TEST_EVERY_BUILD(Decompose, VeryTallAndVeryWide) {
  random_source random(104);
  expect_valid(random_matrix(3, 2000, random, entries::ordinary), "tall");
  expect_valid(random_matrix(200, 3, random, entries::ordinary), "wide");
  expect_valid(random_matrix(520, 6, random, entries::ordinary), "wide");
}

TEST(Decompose, RankDeficientMatrices) {
  random_source random(105);
  for (u32 n : {2u, 3u, 5u, 9u, 20u}) {
    for (u32 rank = 1; rank < n; rank += 1 + rank / 2) {
      const plain::matrix a = plain::product(random_matrix(rank, n + 2, random, entries::ordinary),
                                             random_matrix(n, rank, random, entries::ordinary));
      expect_valid(a, "of low rank");
      const parts p = decomposed(a);
      for (u32 i = rank; i < n; ++i) EXPECT_LE(p.s.get(i, i), 1e-13 * p.s.get(0, 0));
      EXPECT_GT(p.s.get(rank - 1, rank - 1), 1e-9 * p.s.get(0, 0));
    }
  }
  plain::matrix ones(6, 6);
  for (double& v : ones.data) v = 1.0;
  expect_valid(ones, "all ones");
  EXPECT_NEAR(decomposed(ones).s.get(0, 0), 6.0, 1e-14);
}

TEST(Decompose, RepeatedSingularValues) {
  random_source random(106);
  for (u32 n : {2u, 3u, 4u, 8u, 17u}) {
    // The reflection 1 - 2 v v' / v'v has n singular values of 1.
    const plain::matrix v = random_matrix(1, n, random, entries::ordinary);
    double q = 0.0;
    for (double e : v.data) q += e * e;
    plain::matrix a(n, n);
    for (u32 y = 0; y < n; ++y) {
      for (u32 x = 0; x < n; ++x) a.put(x, y, (x == y) - 2.0 * v.get(0, x) * v.get(0, y) / q);
    }
    expect_valid(a, "reflection");
    const parts p = decomposed(a);
    for (u32 i = 0; i < n; ++i) EXPECT_NEAR(p.s.get(i, i), 1.0, 1e-13);
    plain::matrix twice(n, 2 * n);
    for (u32 i = 0; i < n; ++i) {
      twice.put(i, i, 3.0);
      twice.put(i, n + i, 4.0);
    }
    expect_valid(twice, "two stacked multiples of the identity");
    EXPECT_NEAR(decomposed(twice).s.get(n - 1, n - 1), 5.0, 1e-13);
  }
}

TEST(Decompose, ScaledMatrices) {
  random_source random(107);
  for (double scale : {1e-140, 1e-100, 1e-20, 1e20, 1e100, 1e140}) {
    for (u32 n : {1u, 2u, 5u, 12u}) {
      plain::matrix a = random_matrix(n, n + 1, random, entries::ordinary);
      for (double& v : a.data) v *= scale;
      expect_valid(a, "scaled");
    }
  }
}

TEST(Decompose, GradedMatrices) {
  plain::matrix d(9, 9);
  for (u32 i = 0; i < 9; ++i) d.put(i, i, std::pow(10.0, -300.0 + 75.0 * i));
  const parts p = decomposed(d);
  for (u32 i = 0; i < 9; ++i) {
    EXPECT_NEAR(p.s.get(i, i) / d.get(8 - i, 8 - i), 1.0, 1e-14) << i;
    EXPECT_NEAR(std::fabs(p.u.get(i, 8 - i)), 1.0, 1e-14);
  }
  random_source random(108);
  for (double step : {1e-1, 1e-5, 1e-15, 1e5, 1e15}) {
    for (u32 n : {3u, 6u, 9u}) {
      plain::matrix by_column = random_matrix(n, n, random, entries::ordinary);
      plain::matrix by_row = by_column;
      for (u32 y = 0; y < n; ++y) {
        for (u32 x = 0; x < n; ++x) {
          by_column.put(x, y, by_column.get(x, y) * std::pow(step, x));
          by_row.put(x, y, by_row.get(x, y) * std::pow(step, y));
        }
      }
      expect_valid(by_column, "graded columns");
      expect_valid(by_row, "graded rows");
    }
  }
}

TEST(Decompose, SingularValuesAgreeWithThePlainForm) {
  random_source random(109);
  for (u32 k = 0; k < 300; ++k) {
    const plain::matrix a = random_matrix(1 + random.below(9), 1 + random.below(9), random, entries::ordinary);
    const plain::decomposition want = plain::decompose(a);
    const parts got = decomposed(a);
    for (u32 i = 0; i < a.width; ++i) {
      ASSERT_NEAR(got.s.get(i, i), want.s.get(i, i), 1e-13 * want.s.get(0, 0));
    }
  }
}

// The columns of U and V where the singular values lie apart. A rounding can take or save a sweep, and with it the
// signs of a pair.
TEST_EVERY_BUILD(Decompose, VectorsAgreeWithThePlainForm) {
  random_source random(115);
  u32 compared = 0;
  for (u32 k = 0; k < 600; ++k) {
    const u32 w = k % 4 == 0 ? 3 : 1 + random.below(12);
    const u32 h = k % 4 == 0 ? 3 : w + random.below(k % 3 == 0 ? 60 : 5);
    const plain::matrix a = random_matrix(w, h, random, entries::ordinary);
    const plain::decomposition want = plain::decompose(a);
    double gap = want.s.get(w - 1, w - 1);
    for (u32 i = 1; i < w; ++i) gap = std::min(gap, want.s.get(i - 1, i - 1) - want.s.get(i, i));
    if (gap < 1e-3 * want.s.get(0, 0)) continue;
    ++compared;
    const parts got = decomposed(a);
    for (u32 x = 0; x < w; ++x) {
      double along = 0.0;
      for (u32 y = 0; y < w; ++y) along += got.v.get(x, y) * want.v.get(x, y);
      const double sign = along < 0.0 ? -1.0 : 1.0;
      for (u32 y = 0; y < h; ++y) ASSERT_NEAR(got.u.get(x, y), sign * want.u.get(x, y), 1e-10) << w << " x " << h;
      for (u32 y = 0; y < w; ++y) ASSERT_NEAR(got.v.get(x, y), sign * want.v.get(x, y), 1e-10) << w << " x " << h;
    }
  }
  EXPECT_GT(compared, 300u);
}

int exponent_of_largest(const plain::matrix& a) {
  double largest = 0.0;
  for (double v : a.data) largest = std::max(largest, v == v ? std::fabs(v) : inf);
  return largest > 0.0 && largest < inf ? std::ilogb(largest) : 0;
}

plain::decomposition decompose_scaled(plain::matrix a, int scale) {
  for (double& v : a.data) v = std::ldexp(v, scale);
  plain::decomposition d = plain::decompose(a);
  for (double& v : d.s.data) v = std::ldexp(v, -scale);
  return d;
}

// Far from 1 these are the bits of a multiple by a power of two, unless small entries beside large ones need none.
plain::decomposition wanted_bits(const plain::matrix& a, const parts& got) {
  const int exponent = exponent_of_largest(a);
  if (exponent >= -400 && exponent < 400) return plain::decompose(a);
  const plain::decomposition scaled = decompose_scaled(a, (exponent < 0 ? -365 : 365) - exponent);
  return same(got.u, scaled.u) && same(got.s, scaled.s) && same(got.v, scaled.v) ? scaled : plain::decompose(a);
}

void expect_bits_of_the_plain_form(const plain::matrix& a, const char* what) {
  const parts got = decomposed(a);
  const plain::decomposition want = wanted_bits(a, got);
  ASSERT_TRUE(same(got.u, want.u)) << "U of " << a.width << " x " << a.height << ", " << what;
  ASSERT_TRUE(same(got.s, want.s)) << "S of " << a.width << " x " << a.height << ", " << what;
  ASSERT_TRUE(same(got.v, want.v)) << "V of " << a.width << " x " << a.height << ", " << what;
}

// Zeros and equal values in every place of the smallest sizes.
TEST_EVERY_BUILD(Decompose, SmallMatricesOfSmallIntegers) {
  for (u32 n : {2u, 3u}) {
    const u32 count = n == 2 ? 81 : 19683;
    for (u32 code = 0; code < count; code += n == 2 ? 1 : 7) {
      plain::matrix a(n, n);
      u32 rest = code;
      for (double& v : a.data) {
        v = static_cast<double>(rest % 3) - 1.0;
        rest /= 3;
      }
      expect_valid(a, "of -1, 0 and 1");
      expect_bits_of_the_plain_form(a, "of -1, 0 and 1");
    }
  }
}

// 3 x 3 matrices, and one or two columns.
plain::matrix small_matrix(u32 k, random_source& random, entries kind) {
  if (k % 2 == 0) return random_matrix(3, 3, random, kind);
  return random_matrix(1 + random.below(2), random.below(k % 16 == 1 ? 40 : 5), random, kind);
}

TEST_EVERY_BUILD(Decompose, SmallMatricesHaveTheBitsOfThePlainForm) {
  random_source random(117);
  for (u32 k = 0; k < 3000; ++k) {
    for (entries kind : all_entries) expect_bits_of_the_plain_form(small_matrix(k, random, kind), "random");
    plain::matrix a = small_matrix(k, random, entries::ordinary);
    for (double& v : a.data) v = std::ldexp(v, static_cast<int>(random.below(2098)) - 1074);
    expect_bits_of_the_plain_form(a, "of every magnitude");
    a = small_matrix(k, random, entries::sparse);
    for (double& v : a.data) v = std::ldexp(v, static_cast<int>(random.below(60)) - 1074);
    expect_bits_of_the_plain_form(a, "subnormal");
    a = small_matrix(k, random, entries::sparse);
    for (double& v : a.data) v = std::ldexp(v, 1022 - static_cast<int>(random.below(12)));
    expect_bits_of_the_plain_form(a, "huge");
    a = small_matrix(k, random, entries::small_integers);
    for (double& v : a.data) v = random.below(9) ? v : random.below(2) ? inf : -inf;
    expect_bits_of_the_plain_form(a, "with infinities");
    a = small_matrix(k, random, entries::ordinary);
    const u32 at = random.below(a.width);
    for (u32 y = 0; y < a.height; ++y) a.put(at, y, random.below(2) ? 0.0 : -0.0);
    expect_bits_of_the_plain_form(a, "with a column of zeros");
    a = small_matrix(k, random, entries::ordinary);
    for (u32 x = 0; x < a.width && a.height > 0; ++x) a.put(x, k % a.height, random.below(2) ? 0.0 : -0.0);
    expect_bits_of_the_plain_form(a, "with a row of zeros");
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// Columns and rows whose squares vanish or overflow, between ordinary ones.
TEST_EVERY_BUILD(Decompose, TinyAndHugeColumnsAndRows) {
  random_source random(116);
  for (double odd : {0.0, 1e-99, 1e-120, 1e-170, 1e-300}) {
    for (u32 n : {2u, 3u, 4u, 9u}) {
      for (u32 h : {n, n + 1, 3 * n}) {
        for (u32 at = 0; at < n; ++at) {
          plain::matrix by_column = random_matrix(n, h, random, entries::ordinary);
          plain::matrix by_row = by_column;
          for (u32 y = 0; y < h; ++y) by_column.put(at, y, by_column.get(at, y) * odd);
          for (u32 x = 0; x < n; ++x) by_row.put(x, at, by_row.get(x, at) * odd);
          expect_valid(by_column, "with a tiny column");
          expect_valid(by_row, "with a tiny row");
        }
      }
    }
  }
  // Householder's squares would overflow; those of the sweeps, of the bidiagonal form, do not.
  for (double scale : {1e152, 1e-145}) {
    for (u32 h : {3u, 7u, 40u}) {
      plain::matrix a = random_matrix(3, h, random, entries::ordinary);
      for (double& v : a.data) v *= scale;
      expect_valid(a, "huge or tiny");
    }
  }
}

#if defined(TESTS_HAVE_LAPACKE)
TEST(Decompose, SingularValuesAgreeWithLapack) {
  random_source random(110);
  for (u32 k = 0; k < 10000; ++k) {
    const u32 limit = k % 100 == 0 ? 40 : 12;
    const u32 w = 1 + random.below(limit), h = 1 + random.below(limit);
    const entries kind = k % 3 == 0 ? entries::small_integers : k % 3 == 1 ? entries::ordinary : entries::proportional;
    const plain::matrix a = random_matrix(w, h, random, kind);
    const parts p = decomposed(a);
    std::vector<double> copy = a.data, values(std::min(w, h)), work(std::min(w, h));
    ASSERT_EQ(
        LAPACKE_dgesvd(LAPACK_ROW_MAJOR, 'N', 'N', static_cast<lapack_int>(h), static_cast<lapack_int>(w), copy.data(),
                       static_cast<lapack_int>(w), values.data(), nullptr, 1, nullptr, 1, work.data()),
        0);
    const double tolerance = 40.0 * epsilon * std::max(values[0], 1e-300) * std::max(w, h);
    for (u32 i = 0; i < w; ++i) {
      const double want = i < values.size() ? values[i] : 0.0;
      ASSERT_NEAR(p.s.get(i, i), want, tolerance) << w << " x " << h << ", value " << i;
    }
  }
}
#endif

// ---------------------------------------------------------------- what it cannot handle

TEST(Decompose, EndsOnNanAndInfinity) {
  random_source random(111);
  const auto start = std::chrono::steady_clock::now();
  for (u32 w = 1; w <= 12; ++w) {
    for (u32 h = 1; h <= 12; ++h) {
      for (double odd : {quiet_nan, -quiet_nan, inf, -inf, 1.7e308, 5e-324}) {
        plain::matrix a = random_matrix(w, h, random, entries::ordinary);
        a.put(random.below(w), random.below(h), odd);
        expect_sizes(decomposed(a), w, h);
      }
      for (entries kind : {entries::hostile, entries::finite, entries::with_nan}) {
        expect_sizes(decomposed(random_matrix(w, h, random, kind)), w, h);
      }
    }
  }
  for (double all : {quiet_nan, inf, -inf, 1.7e308, 5e-324}) {
    plain::matrix a(40, 50);
    for (double& v : a.data) v = all;
    expect_sizes(decomposed(a), 40, 50);
  }
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  EXPECT_LT(passed.count(), 30.0);
}

TEST(Decompose, OffDiagonalOfSIsZeroEvenForNan) {
  plain::matrix a(3, 3);
  for (double& v : a.data) v = quiet_nan;
  const parts p = decomposed(a);
  for (u32 y = 0; y < 3; ++y) {
    for (u32 x = 0; x < 3; ++x) {
      EXPECT_TRUE(x == y || p.s.get(x, y) == 0.0);
    }
  }
}

// ---------------------------------------------------------------- aliasing

TEST(Decompose, MayReceiveAResultInTheMatrixItself) {
  random_source random(112);
  const plain::matrix a = random_matrix(3, 5, random, entries::ordinary);
  parts want = decomposed(a);
  real_matrix u, s, v;
  real_matrix m = to_library(a);
  m.decompose(m, s, v);
  EXPECT_TRUE(same(m, to_plain(want.u)));
  EXPECT_TRUE(same(s, to_plain(want.s)));
  EXPECT_TRUE(same(v, to_plain(want.v)));
  m = to_library(a);
  m.decompose(u, m, v);
  EXPECT_TRUE(same(u, to_plain(want.u)));
  EXPECT_TRUE(same(m, to_plain(want.s)));
  m = to_library(a);
  m.decompose(u, s, m);
  EXPECT_TRUE(same(u, to_plain(want.u)));
  EXPECT_TRUE(same(m, to_plain(want.v)));
}

TEST(Decompose, RepeatsItsBits) {
  random_source random(113);
  const plain::matrix a = random_matrix(9, 11, random, entries::ordinary);
  const parts first = decomposed(a);
  const parts second = decomposed(a);
  EXPECT_TRUE(same(second.u, to_plain(first.u)));
  EXPECT_TRUE(same(second.s, to_plain(first.s)));
  EXPECT_TRUE(same(second.v, to_plain(first.v)));
}

TEST(Decompose, EveryBuildGivesTheSameBits) {
  random_source random(114);
  const entries kinds[] = {entries::ordinary, entries::sparse, entries::hostile, entries::with_nan, entries::finite};
  std::vector<plain::matrix> all;
  for (u32 k = 0; k < 150; ++k)
    all.push_back(random_matrix(1 + random.below(k < 130 ? 20 : 90), 1 + random.below(90), random, kinds[k % 5]));
  for (u32 k = 0; k < 50; ++k) all.push_back(random_matrix(3, 3, random, kinds[k % 5]));
  all.push_back(random_matrix(3, 1000, random, entries::ordinary));
  all.push_back(random_matrix(520, 9, random, entries::ordinary));
  for (const plain::matrix& a : all) {
    const parts want = [&] {
      const chosen_build build(isa{});
      return decomposed(a);
    }();
    for (int set = 1; set < tessarn::detail::set_count; ++set) {
      const chosen_build build(static_cast<isa>(set));
      const parts got = decomposed(a);
      ASSERT_TRUE(same(got.u, to_plain(want.u)));
      ASSERT_TRUE(same(got.s, to_plain(want.s)));
      ASSERT_TRUE(same(got.v, to_plain(want.v)));
    }
  }
}

}  // namespace
