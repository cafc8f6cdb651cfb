// The general matrix: storage, element access, copies, arithmetic, comparison, transpose.
#include <type_traits>
#include <utility>

#include "matrix_support.h"

// A death test starts its own program again, which an emulator's program cannot.
#if !defined(_WIN32) && !defined(TESTS_EMULATED)
#include <sys/time.h>

#include <csignal>
#endif

namespace {

using namespace test;

// Reaches the protected fields.
struct real_probe : real_matrix {
  std::ptrdiff_t offset_of_data() { return offset(&data); }
  std::ptrdiff_t offset_of_width() { return offset(&width); }
  std::ptrdiff_t offset_of_height() { return offset(&height); }
  template <class F>
  std::ptrdiff_t offset(F* field) {
    return reinterpret_cast<char*>(field) - reinterpret_cast<char*>(this);
  }
};

TEST(Mat, FieldsStandInTheStatedOrderAfterTheVirtualTable) {
  real_probe p;
  EXPECT_EQ(p.offset_of_data(), static_cast<std::ptrdiff_t>(sizeof(void*)));
  EXPECT_EQ(p.offset_of_width(), static_cast<std::ptrdiff_t>(2 * sizeof(void*)));
  EXPECT_EQ(p.offset_of_height(), static_cast<std::ptrdiff_t>(2 * sizeof(void*) + 4));
  EXPECT_EQ(sizeof(real_matrix), 2 * sizeof(void*) + 8);
  EXPECT_EQ(sizeof(complex_matrix), sizeof(real_matrix));
  EXPECT_TRUE(std::has_virtual_destructor_v<real_matrix>);
  EXPECT_TRUE(std::has_virtual_destructor_v<complex_matrix>);
}

TEST(Mat, IsEmptyByDefault) {
  const real_matrix a;
  EXPECT_EQ(a.getData(), nullptr);
  EXPECT_EQ(a.getWidth(), 0u);
  EXPECT_EQ(a.getHeight(), 0u);
  const complex_matrix c;
  EXPECT_EQ(c.getData(), nullptr);
  EXPECT_EQ(c.getWidth(), 0u);
  EXPECT_EQ(c.getHeight(), 0u);
}

TEST(Mat, CreateTakesWidthFirst) {
  real_matrix a;
  a.create(3, 2);
  EXPECT_EQ(a.getWidth(), 3u);
  EXPECT_EQ(a.getHeight(), 2u);
  ASSERT_NE(a.getData(), nullptr);
  a.create(1, 4);
  EXPECT_EQ(a.getWidth(), 1u);
  EXPECT_EQ(a.getHeight(), 4u);
}

TEST(Mat, CreateOfComplexEntriesGivesZeros) {
  complex_matrix a;
  a.create(3, 2);
  EXPECT_EQ(a.getWidth(), 3u);
  EXPECT_EQ(a.getHeight(), 2u);
  for (u32 y = 0; y < 2; ++y) {
    for (u32 x = 0; x < 3; ++x) EXPECT_TRUE(same(a.get(x, y), {0.0, 0.0}));
  }
  a.set(1, 1, cplx(4.0, 5.0));
  a.create(3, 2);
  EXPECT_TRUE(same(a.get(1, 1), {0.0, 0.0}));
}

TEST(Mat, CreateWithAZeroExtentOwnsABlockWithoutEntries) {
  real_matrix a;
  a.create(0, 5);
  EXPECT_NE(a.getData(), nullptr);
  EXPECT_EQ(a.getWidth(), 0u);
  EXPECT_EQ(a.getHeight(), 5u);
  a.create(5, 0);
  EXPECT_NE(a.getData(), nullptr);
  EXPECT_EQ(a.getWidth(), 5u);
  EXPECT_EQ(a.getHeight(), 0u);
  complex_matrix c;
  c.create(0, 0);
  EXPECT_NE(c.getData(), nullptr);
  EXPECT_EQ(c.getWidth(), 0u);
}

// The number of entries is formed in 32 bits: 65536 x 65536 entries are none.
TEST(Mat, CreateCountsEntriesIn32Bits) {
  real_matrix a;
  a.create(65536, 65536);
  EXPECT_NE(a.getData(), nullptr);
  EXPECT_EQ(a.getWidth(), 65536u);
  EXPECT_EQ(a.getHeight(), 65536u);
  real_matrix copy(a);
  EXPECT_EQ(copy.getWidth(), 65536u);
  real_matrix b;
  b = a;
  EXPECT_EQ(b.getHeight(), 65536u);
}

TEST(Mat, StoresRowByRow) {
  real_matrix a;
  a.create(3, 2);
  for (u32 y = 0; y < 2; ++y) {
    for (u32 x = 0; x < 3; ++x) a.set(x, y, 10.0 * y + x);
  }
  EXPECT_TRUE(same(a, to_plain(rows(3, 2, {0, 1, 2, 10, 11, 12}))));
  EXPECT_BITS(a.get(2, 1), 12.0);
  complex_matrix c;
  c.create(3, 2);
  c.set(2, 1, cplx(7.0, 8.0));
  EXPECT_BITS(c.getData()[5].re, 7.0);
  EXPECT_BITS(c.getData()[5].im, 8.0);
}

TEST(Mat, IndicesWrapAround) {
  real_matrix a = rows(3, 2, {0, 1, 2, 10, 11, 12});
  EXPECT_BITS(a.get(3, 0), 0.0);
  EXPECT_BITS(a.get(4, 0), 1.0);
  EXPECT_BITS(a.get(0, 5), 10.0);
  EXPECT_BITS(a.get(1000001, 1000001), 10.0 + 1000001 % 3);
  a.set(5, 3, 99.0);
  EXPECT_BITS(a.get(2, 1), 99.0);
  complex_matrix c;
  c.create(3, 2);
  c.set(7, 4, cplx(1.0, 2.0));
  EXPECT_TRUE(same(c.get(1, 0), {1.0, 2.0}));
  EXPECT_TRUE(same(c.get(4, 2), {1.0, 2.0}));
}

#if !defined(_WIN32) && !defined(TESTS_EMULATED)
void end_soon() {
  itimerval t = {};
  t.it_value.tv_usec = 60000;
  std::signal(SIGALRM, SIG_DFL);
  setitimer(ITIMER_REAL, &t, nullptr);
}

TEST(MatDeathTest, AccessWithAZeroExtentDoesNotReturn) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        real_matrix a;
        end_soon();
        (void)a.get(0, 0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        real_matrix a;
        a.create(0, 3);
        end_soon();
        a.set(1, 1, 2.0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        real_matrix a;
        a.create(3, 0);
        end_soon();
        (void)a.get(1, 1);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        complex_matrix a;
        end_soon();
        (void)a.get(0, 0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        complex_matrix a;
        a.create(2, 0);
        end_soon();
        a.set(0, 0, cplx(1.0, 1.0));
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        real_square a;
        end_soon();
        (void)a.get(0, 0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        real_square a;
        end_soon();
        a.set(0, 0, 1.0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
  EXPECT_EXIT(
      {
        complex_square a;
        end_soon();
        (void)a.get(3, 0);
      },
      ::testing::KilledBySignal(SIGALRM), "");
}
#endif

TEST(Mat, SetStoresZeroForAQuietNan) {
  real_matrix a = rows(1, 1, {5.0});
  a.set(0, 0, quiet_nan);
  EXPECT_BITS(a.get(0, 0), 0.0);
  a.set(0, 0, -quiet_nan);
  EXPECT_BITS(a.get(0, 0), 0.0);
  a.set(0, 0, inf);
  EXPECT_BITS(a.get(0, 0), inf);
  a.set(0, 0, -inf);
  EXPECT_BITS(a.get(0, 0), -inf);
  a.set(0, 0, -0.0);
  EXPECT_BITS(a.get(0, 0), -0.0);
  a.set(0, 0, signalling_nan());
  EXPECT_EQ(bits_of(a.getData()[0]), bits_of(signalling_nan()));
}

TEST(Mat, ComplexSetKeepsNan) {
  complex_matrix a;
  a.create(1, 1);
  a.set(0, 0, cplx(quiet_nan, inf));
  EXPECT_TRUE(same(a.get(0, 0), {quiet_nan, inf}));
}

TEST(Mat, CopyOwnsItsEntries) {
  real_matrix a = rows(2, 2, {1, quiet_nan, -0.0, inf});
  real_matrix b(a);
  EXPECT_TRUE(same(b, to_plain(a)));
  EXPECT_NE(a.getData(), b.getData());
  b.set(0, 0, 9.0);
  EXPECT_BITS(a.get(0, 0), 1.0);

  complex_matrix c;
  c.create(2, 1);
  c.set(1, 0, cplx(quiet_nan, 3.0));
  complex_matrix d(c);
  EXPECT_TRUE(same(d.get(1, 0), {quiet_nan, 3.0}));
  EXPECT_NE(c.getData(), d.getData());
}

TEST(Mat, CopyOfAnEmptyMatrix) {
  real_matrix a;
  real_matrix b(a);
  EXPECT_EQ(b.getData(), nullptr);
  a.create(0, 0);
  real_matrix c(a);
  EXPECT_NE(c.getData(), nullptr);
  EXPECT_NE(c.getData(), a.getData());
  EXPECT_EQ(c.getWidth(), 0u);
  EXPECT_EQ(c.getHeight(), 0u);

  complex_matrix d;
  complex_matrix e(d);
  EXPECT_EQ(e.getData(), nullptr);
  d.create(0, 0);
  complex_matrix f(d);
  EXPECT_NE(f.getData(), nullptr);
}

TEST(Mat, AssignmentReplacesSizesAndEntries) {
  real_matrix a = rows(2, 3, {1, 2, 3, quiet_nan, 5, 6});
  real_matrix b = rows(1, 1, {7});
  b = a;
  EXPECT_TRUE(same(b, to_plain(a)));
  EXPECT_NE(a.getData(), b.getData());
  real_matrix none;
  b = none;
  EXPECT_NE(b.getData(), nullptr);
  EXPECT_EQ(b.getWidth(), 0u);
  EXPECT_EQ(b.getHeight(), 0u);
  EXPECT_TRUE((std::is_void_v<decltype(std::declval<real_matrix&>() = std::declval<real_matrix&>())>));

  complex_matrix c;
  c.create(2, 1);
  c.set(1, 0, cplx(quiet_nan, 3.0));
  complex_matrix d;
  d.create(5, 5);
  d = c;
  EXPECT_EQ(d.getWidth(), 2u);
  EXPECT_EQ(d.getHeight(), 1u);
  EXPECT_TRUE(same(d.get(1, 0), {quiet_nan, 3.0}));
  complex_matrix nothing;
  d = nothing;
  EXPECT_NE(d.getData(), nullptr);
  EXPECT_EQ(d.getWidth(), 0u);
}

TEST(Mat, AssignmentToItselfKeepsTheEntries) {
  real_matrix a = rows(2, 2, {1, 2, 3, 4});
  const plain::matrix before = to_plain(a);
  real_matrix& same_object = a;
  a = same_object;
  EXPECT_TRUE(same(a, before));
  complex_matrix c;
  c.create(1, 1);
  c.set(0, 0, cplx(3.0, 4.0));
  complex_matrix& same_complex = c;
  c = same_complex;
  EXPECT_TRUE(same(c.get(0, 0), {3.0, 4.0}));
}

TEST(Mat, MovesEmptyTheirSource) {
  real_matrix a = rows(2, 1, {1, 2});
  real_matrix b(std::move(a));
  EXPECT_TRUE(same(b, to_plain(rows(2, 1, {1, 2}))));
  EXPECT_EQ(a.getData(), nullptr);
  EXPECT_EQ(a.getWidth(), 0u);
  real_matrix c = rows(1, 1, {9});
  c = std::move(b);
  EXPECT_TRUE(same(c, to_plain(rows(2, 1, {1, 2}))));
  EXPECT_EQ(b.getData(), nullptr);
  EXPECT_EQ(b.getHeight(), 0u);
  real_matrix d = rows(1, 2, {3, 4});
  std::swap(c, d);
  EXPECT_TRUE(same(c, to_plain(rows(1, 2, {3, 4}))));
  EXPECT_TRUE(same(d, to_plain(rows(2, 1, {1, 2}))));

  complex_matrix e = complex_column({{1, 2}});
  complex_matrix f(std::move(e));
  EXPECT_EQ(e.getData(), nullptr);
  EXPECT_TRUE(same(f.get(0, 0), {1, 2}));
  e = std::move(f);
  EXPECT_EQ(f.getWidth(), 0u);
  EXPECT_TRUE(same(e.get(0, 0), {1, 2}));
}

TEST(Mat, LivesInAStandardVector) {
  std::vector<real_matrix> list;
  for (u32 n = 1; n < 20; ++n) {
    list.push_back(to_library(plain::matrix(n, 2)));
    list.back().set(0, 0, n);
  }
  list.erase(list.begin());
  for (u32 n = 2; n < 20; ++n) {
    EXPECT_EQ(list[n - 2].getWidth(), n);
    EXPECT_BITS(list[n - 2].get(0, 0), n);
  }
}

TEST(Mat, WorksWithConstantsAndTemporaries) {
  const real_matrix a = rows(2, 2, {1, 2, 3, 4});
  const real_matrix b = rows(2, 2, {5, 6, 7, 8});
  real_matrix r;
  r = a + b * 2.0;
  EXPECT_TRUE(same(r, to_plain(rows(2, 2, {11, 14, 17, 20}))));
  r = (a - b) * (a + b) / 4.0;
  EXPECT_TRUE(same(r, to_plain(rows(2, 2, {-16, -20, -16, -20}))));
  EXPECT_TRUE(a == a + rows(2, 2, {0, 0, 0, 0}));
  EXPECT_TRUE(a != b);
  EXPECT_BITS(a.get(1, 0), 2.0);
  EXPECT_FALSE(a.isDiagonal());
  real_matrix t;
  a.transpose(t);
  EXPECT_TRUE(same(t, to_plain(rows(2, 2, {1, 3, 2, 4}))));
  const real_matrix c(a);
  EXPECT_TRUE(same(c, to_plain(a)));
  const real_matrix column_of_two = column({3, 4});
  EXPECT_EQ(column_of_two.normalize().getHeight(), 2u);
}

// ---------------------------------------------------------------- arithmetic

TEST(Mat, SumAndDifferenceOfDifferentSizesAreEmpty) {
  real_matrix a = rows(2, 1, {1, 2});
  real_matrix b = rows(1, 2, {1, 2});
  real_matrix c = rows(2, 2, {1, 2, 3, 4});
  for (real_matrix* other : {&b, &c}) {
    const real_matrix s = a + *other;
    EXPECT_EQ(s.getData(), nullptr);
    EXPECT_EQ(s.getWidth(), 0u);
    EXPECT_EQ(s.getHeight(), 0u);
    const real_matrix d = a - *other;
    EXPECT_EQ(d.getData(), nullptr);
    EXPECT_EQ(d.getWidth(), 0u);
  }
}

TEST(Mat, ShapesOfProducts) {
  real_matrix a = rows(3, 2, {1, 2, 3, 4, 5, 6});
  real_matrix b = rows(2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_TRUE(same(a * b, to_plain(rows(2, 2, {22, 28, 49, 64}))));
  EXPECT_TRUE(same(b * a, to_plain(rows(3, 3, {9, 12, 15, 19, 26, 33, 29, 40, 51}))));
  real_matrix c = rows(1, 2, {1, 2});
  const real_matrix none = a * c;
  EXPECT_EQ(none.getData(), nullptr);
  EXPECT_EQ(none.getWidth(), 0u);
  EXPECT_EQ(none.getHeight(), 0u);
}

TEST(Mat, ProductOverNothingIsZero) {
  real_matrix a;
  a.create(0, 3);
  real_matrix b;
  b.create(2, 0);
  EXPECT_TRUE(same(a * b, plain::matrix(2, 3)));
  EXPECT_EQ((b * a).getWidth(), 0u);
}

TEST(Mat, QuotientByZero) {
  real_matrix a = rows(2, 2, {0, 1, -2, -0.0});
  EXPECT_TRUE(same(a / 0.0, to_plain(rows(2, 2, {0, inf, -inf, 0}))));
  EXPECT_TRUE(same(a * inf, to_plain(rows(2, 2, {0, inf, -inf, 0}))));
}

TEST(Mat, NanResultsAreStoredAsZero) {
  real_matrix a = rows(1, 1, {inf});
  real_matrix b = rows(1, 1, {-inf});
  EXPECT_TRUE(same(a + b, plain::matrix(1, 1)));
  EXPECT_TRUE(same(a - a, plain::matrix(1, 1)));
  EXPECT_TRUE(same(rows(2, 1, {inf, inf}) * rows(1, 2, {1, -1}), plain::matrix(1, 1)));
  real_matrix c = rows(1, 1, {signalling_nan()});
  EXPECT_TRUE(same(c * 1.0, plain::matrix(1, 1)));
}

TEST_EVERY_BUILD(Mat, ArithmeticMatchesThePlainForm) {
  random_source random(31);
  const u32 shapes[][2] = {{0, 0}, {0, 3},   {4, 0},   {1, 1},  {1, 7},   {7, 1},   {2, 3},  {8, 8},
                           {5, 9}, {16, 15}, {33, 17}, {64, 3}, {65, 65}, {3, 130}, {129, 2}};
  for (const auto& shape : shapes) {
    for (entries kind : all_entries) {
      SCOPED_TRACE(describe(shape[0] * 1000 + shape[1], kind));
      const plain::matrix p = random_matrix(shape[0], shape[1], random, kind);
      const plain::matrix q = random_matrix(shape[0], shape[1], random, kind);
      real_matrix a = to_library(p);
      real_matrix b = to_library(q);
      EXPECT_TRUE(same(a + b, plain::sum(p, q)));
      EXPECT_TRUE(same(a - b, plain::difference(p, q)));
      for (double s : {0.0, -0.0, 1.0, 3.0, -0.1, inf, quiet_nan, draw(random, kind)}) {
        EXPECT_TRUE(same(a * s, plain::scaled(p, s)));
        EXPECT_TRUE(same(a / s, plain::divided(p, s))) << hex(s);
      }
      real_matrix t = rows(1, 1, {4});
      a.transpose(t);
      EXPECT_TRUE(same(t, plain::transposed(p)));
      EXPECT_EQ(a == b, plain::equal(p, q));
      EXPECT_EQ(a != b, plain::unequal(p, q));
      EXPECT_EQ(a == a, true);
      EXPECT_EQ(a != a, false);
      EXPECT_EQ(a.isDiagonal(), plain::is_diagonal(p));
      EXPECT_TRUE(same(a, p)) << "operands are not modified";
      EXPECT_TRUE(same(b, q));
    }
  }
}

TEST(Mat, OperandsMayBeTheSameObject) {
  random_source random(32);
  for (u32 n : {1u, 2u, 5u, 16u, 33u}) {
    const plain::matrix p = random_matrix(n, n, random, entries::ordinary);
    real_matrix a = to_library(p);
    EXPECT_TRUE(same(a + a, plain::sum(p, p)));
    EXPECT_TRUE(same(a - a, plain::difference(p, p)));
    EXPECT_TRUE(same(a * a, plain::product(p, p)));
    a = a * a;
    EXPECT_TRUE(same(a, plain::product(p, p)));
  }
}

TEST_EVERY_BUILD(Mat, ProductMatchesThePlainFormForEverySize) {
  random_source random(33);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 40 && kind != entries::ordinary && kind != entries::hostile) continue;
      SCOPED_TRACE(describe(n, kind));
      const u32 rows_of_a = n > 40 ? 1 + random.below(70) : random.below(20);
      const u32 columns_of_b = n > 40 ? 1 + random.below(70) : random.below(20);
      const plain::matrix p = random_matrix(n, rows_of_a, random, kind);
      const plain::matrix q = random_matrix(columns_of_b, n, random, kind);
      EXPECT_TRUE(same(to_library(p) * to_library(q), plain::product(p, q)));
      const plain::matrix s = random_matrix(columns_of_b, rows_of_a, random, kind);
      const plain::matrix t = random_matrix(n, columns_of_b, random, kind);
      EXPECT_TRUE(same(to_library(t) * to_library(s), plain::product(t, s)));
    }
  }
}

// Sizes around those at which the product packs its operands, splits its sums, or changes its tile.
TEST_EVERY_BUILD(Mat, LargeProductsMatchThePlainForm) {
  random_source random(34);
  const u32 shapes[][3] = {{200, 200, 200}, {97, 255, 17}, {96, 256, 24}, {98, 257, 25}, {3, 513, 26},
                           {195, 300, 3},   {1, 97, 1},    {5, 600, 100}, {97, 1, 101},  {0, 300, 5},
                           {5, 300, 0},     {120, 0, 130}, {101, 97, 7},  {7, 96, 97},   {193, 270, 49}};
  for (const auto& shape : shapes) {
    for (entries kind : {entries::ordinary, entries::finite, entries::with_nan}) {
      const plain::matrix p = random_matrix(shape[1], shape[0], random, kind);
      const plain::matrix q = random_matrix(shape[2], shape[1], random, entries::ordinary);
      EXPECT_TRUE(same(to_library(p) * to_library(q), plain::product(p, q)))
          << shape[0] << " " << shape[1] << " " << shape[2];
    }
  }
}

// ---------------------------------------------------------------- comparison

TEST(Mat, DifferentSizesCompareEqual) {
  real_matrix a = rows(2, 3, {1, 2, 3, 4, 5, 6});
  real_matrix b = rows(3, 2, {9, 9, 9, 9, 9, 9});
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  real_matrix none;
  EXPECT_TRUE(a == none);
  EXPECT_FALSE(a != none);
  EXPECT_TRUE(none == none);
}

TEST(Mat, ComparisonIsExactAndNanCountsAsEqual) {
  real_matrix a = rows(2, 1, {1.0, 0.0});
  real_matrix b = rows(2, 1, {1.0, -0.0});
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  real_matrix c = rows(2, 1, {1.0 + 0x1p-52, 0.0});
  EXPECT_FALSE(a == c);
  EXPECT_TRUE(a != c);
  real_matrix d = rows(2, 1, {quiet_nan, 0.0});
  EXPECT_TRUE(a == d);
  EXPECT_TRUE(d == a);
  EXPECT_FALSE(a != d);
  real_matrix e = rows(2, 1, {quiet_nan, 5e-324});
  EXPECT_FALSE(a == e);
  EXPECT_TRUE(a != e);
}

// ---------------------------------------------------------------- transpose, normalize, isDiagonal

TEST(Mat, TransposeMovesValuesUnchanged) {
  real_matrix a = rows(3, 2, {1, quiet_nan, 3, -0.0, inf, 6});
  real_matrix t = rows(1, 1, {7});
  a.transpose(t);
  EXPECT_TRUE(same(t, to_plain(rows(2, 3, {1, -0.0, quiet_nan, inf, 3, 6}))));
  real_matrix none;
  none.transpose(t);
  EXPECT_EQ(t.getWidth(), 0u);
  EXPECT_EQ(t.getHeight(), 0u);
}

TEST(Mat, TransposeIntoItselfGivesZerosOfTheSwappedSizes) {
  real_matrix a = rows(3, 2, {1, 2, 3, 4, 5, 6});
  a.transpose(a);
  EXPECT_TRUE(same(a, plain::matrix(2, 3)));
}

TEST(Mat, NormalizeOfColumns) {
  real_matrix a = column({3, 4});
  const real_matrix n = a.normalize();
  EXPECT_NEAR(n.getData()[0], 0.6, 1e-15);
  EXPECT_NEAR(n.getData()[1], 0.8, 1e-15);
  EXPECT_TRUE(same(a, to_plain(column({3, 4}))));
  const real_matrix wide = rows(2, 1, {3, 4}).normalize();
  EXPECT_EQ(wide.getData(), nullptr);
  EXPECT_EQ(wide.getWidth(), 0u);
  EXPECT_TRUE(same(column({0, 0, 0}).normalize(), plain::matrix(1, 3)));
  real_matrix none;
  EXPECT_EQ(none.normalize().getWidth(), 0u);
  real_matrix no_rows;
  no_rows.create(1, 0);
  EXPECT_EQ(no_rows.normalize().getWidth(), 1u);
  EXPECT_EQ(no_rows.normalize().getHeight(), 0u);
}

TEST_EVERY_BUILD(Mat, NormalizeMatchesThePlainForm) {
  random_source random(35);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      const plain::matrix p = random_matrix(1, n, random, kind);
      EXPECT_TRUE(same(to_library(p).normalize(), plain::normalized(p))) << describe(n, kind);
    }
  }
}

TEST(Mat, IsDiagonal) {
  EXPECT_TRUE(rows(3, 2, {1, 0, 0, 0, 2, 0}).isDiagonal());
  EXPECT_TRUE(rows(2, 3, {1, 0, 0, 2, 0, 0}).isDiagonal());
  EXPECT_TRUE(rows(2, 2, {0, -0.0, quiet_nan, 0}).isDiagonal());
  EXPECT_TRUE(rows(2, 2, {quiet_nan, 0, 0, inf}).isDiagonal());
  EXPECT_FALSE(rows(2, 2, {1, 5e-324, 0, 1}).isDiagonal());
  EXPECT_FALSE(rows(2, 3, {1, 0, 0, 2, 0, -1}).isDiagonal());
  EXPECT_FALSE(rows(2, 2, {1, 0, inf, 1}).isDiagonal());
  EXPECT_TRUE(real_matrix().isDiagonal());
}

}  // namespace
