// The square matrix: storage, element access, columns, transpose, products, comparison.
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "matrix_support.h"

namespace {

using namespace test;

struct real_probe : real_square {
  std::ptrdiff_t offset_of_data() { return reinterpret_cast<char*>(&data) - reinterpret_cast<char*>(this); }
  std::ptrdiff_t offset_of_size() { return reinterpret_cast<char*>(&size) - reinterpret_cast<char*>(this); }
};

struct complex_probe : complex_square {
  const cplx* entries() const { return data; }
};

TEST(Sqmat, FieldsStandInTheStatedOrderAfterTheVirtualTable) {
  real_probe p;
  EXPECT_EQ(p.offset_of_data(), static_cast<std::ptrdiff_t>(sizeof(void*)));
  EXPECT_EQ(p.offset_of_size(), static_cast<std::ptrdiff_t>(2 * sizeof(void*)));
  EXPECT_TRUE(std::has_virtual_destructor_v<real_square>);
  EXPECT_TRUE(std::has_virtual_destructor_v<complex_square>);
  EXPECT_EQ(sizeof(real_square), 3 * sizeof(void*));
  EXPECT_EQ(sizeof(complex_square), 3 * sizeof(void*));
}

TEST(Sqmat, IsEmptyByDefault) {
  real_square a;
  EXPECT_EQ(a.getData(), nullptr);
  EXPECT_EQ(a.getSize(), 0u);
  complex_probe c;
  EXPECT_EQ(c.getSize(), 0u);
  EXPECT_EQ(c.entries(), nullptr);
}

TEST(Sqmat, Create) {
  real_square a;
  a.create(3);
  EXPECT_EQ(a.getSize(), 3u);
  ASSERT_NE(a.getData(), nullptr);
  a.create(0);
  EXPECT_EQ(a.getSize(), 0u);
  EXPECT_EQ(a.getData(), nullptr);

  complex_probe c;
  c.create(2);
  EXPECT_EQ(c.getSize(), 2u);
  for (u32 i = 0; i < 4; ++i) EXPECT_TRUE(same(c.get(i % 2, i / 2), {0.0, 0.0}));
  c.create(0);
  EXPECT_EQ(c.getSize(), 0u);
  EXPECT_NE(c.entries(), nullptr);
}

// As new cplx[n] would have made them: whole objects, their number in front.
TEST_EVERY_BUILD(Sqmat, ComplexEntriesAreAnArrayOfObjects) {
  for (u32 n : {1u, 2u, 3u, 4u, 5u, 17u}) {
    complex_probe a, product;
    a.create(n);
    complex_probe b(a);
    static_cast<complex_square&>(product) = a * b;
    for (const complex_probe* m : {&a, &b, &product}) {
      EXPECT_EQ(reinterpret_cast<const std::size_t*>(m->entries())[-1], n * n);
      for (u32 i = 0; i < n * n; ++i) {
        const cplx& entry = m->entries()[i];
        EXPECT_EQ(typeid(entry), typeid(cplx));
      }
    }
  }
}

TEST(Sqmat, IndicesWrapAround) {
  real_square a = square(3, {0, 1, 2, 3, 4, 5, 6, 7, 8});
  a.set(4, 7, 42.0);
  EXPECT_BITS(a.get(1, 1), 42.0);
  EXPECT_BITS(a.getData()[4], 42.0);
  EXPECT_BITS(a.get(4, 7), 42.0);
  EXPECT_BITS(a.get(2, 0), 2.0);
  EXPECT_BITS(a.get(0, 2), 6.0);
  complex_square c;
  c.create(3);
  c.set(4, 7, cplx(1.0, 2.0));
  EXPECT_TRUE(same(c.get(1, 1), {1.0, 2.0}));
}

TEST(Sqmat, SetStoresZeroForAQuietNan) {
  real_square a = square(1, {5});
  a.set(0, 0, quiet_nan);
  EXPECT_BITS(a.get(0, 0), 0.0);
  a.set(0, 0, inf);
  EXPECT_BITS(a.get(0, 0), inf);
  a.set(0, 0, signalling_nan());
  EXPECT_EQ(bits_of(a.getData()[0]), bits_of(signalling_nan()));
  complex_square c;
  c.create(1);
  c.set(0, 0, cplx(quiet_nan, -inf));
  EXPECT_TRUE(same(c.get(0, 0), {quiet_nan, -inf}));
}

TEST(Sqmat, CopyOwnsItsEntries) {
  real_square a = square(2, {1, quiet_nan, 3, 4});
  real_square b(a);
  EXPECT_NE(a.getData(), b.getData());
  b.set(0, 0, 9.0);
  EXPECT_BITS(a.get(0, 0), 1.0);
  EXPECT_BITS(b.get(1, 0), quiet_nan);
  EXPECT_EQ(b.getSize(), 2u);

  real_square none;
  real_square copy(none);
  EXPECT_EQ(copy.getData(), nullptr);
  EXPECT_EQ(copy.getSize(), 0u);

  complex_probe c;
  complex_probe d(c);
  EXPECT_EQ(d.getSize(), 0u);
  EXPECT_NE(d.entries(), nullptr);
  complex_square e = complex_rows(1, {{quiet_nan, 2}});
  complex_square f(e);
  EXPECT_TRUE(same(f.get(0, 0), {quiet_nan, 2}));
}

TEST(Sqmat, Assignment) {
  real_square a = square(2, {1, quiet_nan, 3, signalling_nan()});
  real_square b = square(1, {7});
  b = a;
  EXPECT_EQ(b.getSize(), 2u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(bits_of(b.getData()[i]), bits_of(a.getData()[i]));
  EXPECT_NE(b.getData(), a.getData());
  const auto* storage = b.getData();
  real_square c = square(2, {5, 6, 7, 8});
  b = c;
  EXPECT_EQ(b.getData(), storage) << "equal sizes keep the storage";
  EXPECT_BITS(b.get(1, 1), 8.0);
  real_square& itself = b;
  b = itself;
  EXPECT_BITS(b.get(0, 1), 7.0);
  real_square none;
  b = none;
  EXPECT_EQ(b.getSize(), 0u);
  EXPECT_EQ(b.getData(), nullptr);
  EXPECT_TRUE((std::is_void_v<decltype(std::declval<real_square&>() = std::declval<real_square&>())>));

  complex_probe d;
  complex_square e = complex_rows(2, {{1, 2}, {quiet_nan, 4}, {5, 6}, {7, 8}});
  static_cast<complex_square&>(d) = e;
  EXPECT_EQ(d.getSize(), 2u);
  EXPECT_TRUE(same(d.get(1, 0), {quiet_nan, 4}));
  complex_square& same_complex = e;
  e = same_complex;
  EXPECT_TRUE(same(e.get(1, 1), {7, 8}));
  complex_square empty;
  static_cast<complex_square&>(d) = empty;
  EXPECT_EQ(d.getSize(), 0u);
}

TEST(Sqmat, MovesEmptyTheirSource) {
  real_square a = square(2, {1, 2, 3, 4});
  real_square b(std::move(a));
  EXPECT_EQ(a.getSize(), 0u);
  EXPECT_EQ(a.getData(), nullptr);
  EXPECT_BITS(b.get(1, 1), 4.0);
  real_square c = square(1, {9});
  c = std::move(b);
  EXPECT_EQ(b.getSize(), 0u);
  EXPECT_BITS(c.get(0, 1), 3.0);
  std::swap(b, c);
  EXPECT_EQ(c.getSize(), 0u);
  EXPECT_EQ(b.getSize(), 2u);
  complex_square d = complex_rows(1, {{1, 2}});
  complex_square e(std::move(d));
  EXPECT_EQ(d.getSize(), 0u);
  d = std::move(e);
  EXPECT_EQ(e.getSize(), 0u);
  EXPECT_TRUE(same(d.get(0, 0), {1, 2}));
  std::vector<real_square> list;
  for (u32 n = 1; n < 10; ++n) list.push_back(to_library(plain::square(n)));
  EXPECT_EQ(list[6].getSize(), 7u);
}

TEST(Sqmat, GetColumn) {
  real_square a = square(2, {1, 2, 3, 4});
  EXPECT_TRUE(same(a.getColumn(1), to_plain(column({2, 4}))));
  EXPECT_TRUE(same(a.getColumn(2), to_plain(column({1, 3}))));
  real_square b = square(2, {quiet_nan, 2, signalling_nan(), 4});
  const real_matrix c = b.getColumn(0);
  EXPECT_BITS(c.getData()[0], 0.0);
  EXPECT_EQ(bits_of(c.getData()[1]), bits_of(signalling_nan()));
  complex_square d = complex_rows(2, {{1, 2}, {quiet_nan, 4}, {5, 6}, {7, 8}});
  complex_matrix e = d.getColumn(1);
  EXPECT_EQ(e.getWidth(), 1u);
  EXPECT_EQ(e.getHeight(), 2u);
  EXPECT_TRUE(same(e.get(0, 0), {quiet_nan, 4}));
  EXPECT_TRUE(same(e.get(0, 1), {7, 8}));
}

TEST(Sqmat, GetColumnOfAnEmptyMatrix) {
  real_square none;
  const real_matrix c = none.getColumn(0);
  EXPECT_EQ(c.getWidth(), 1u);
  EXPECT_EQ(c.getHeight(), 0u);
  complex_square empty;
  EXPECT_EQ(empty.getColumn(3).getWidth(), 1u);
  EXPECT_EQ(empty.getColumn(3).getHeight(), 0u);
}

TEST(Sqmat, SetColumn) {
  real_square a = square(2, {1, 2, 3, 4});
  a.setColumn(1, column({7, quiet_nan}));
  EXPECT_BITS(a.get(0, 0), 1.0);
  EXPECT_BITS(a.get(0, 1), 3.0);
  EXPECT_BITS(a.get(1, 0), 7.0);
  EXPECT_BITS(a.get(1, 1), 0.0);
  a.setColumn(2, column({8, 9}));
  EXPECT_BITS(a.get(0, 0), 8.0);
  EXPECT_BITS(a.get(0, 1), 9.0);
  a.setColumn(0, rows(3, 2, {1, 50, 51, 2, 52, 53}));
  EXPECT_BITS(a.get(0, 0), 1.0);
  EXPECT_BITS(a.get(0, 1), 2.0);
  a.setColumn(0, column({5, 5, 5}));
  a.setColumn(0, column({5}));
  a.setColumn(0, real_matrix());
  EXPECT_BITS(a.get(0, 0), 1.0);
  EXPECT_BITS(a.get(0, 1), 2.0);
  real_square none;
  none.setColumn(0, real_matrix());
  none.setColumn(0, column({1}));
  EXPECT_EQ(none.getSize(), 0u);
}

TEST(Sqmat, SetColumnLeavesTheArgumentAlone) {
  real_square a = square(2, {1, 2, 3, 4});
  real_matrix c = column({5, 6});
  a.setColumn(0, c);
  EXPECT_TRUE(same(c, to_plain(column({5, 6}))));
  EXPECT_BITS(a.get(0, 1), 6.0);
}

TEST(Sqmat, SetColumnOfComplexEntries) {
  complex_square a;
  a.create(2);
  a.setColumn(3, complex_column({{quiet_nan, 1}, {2, 3}}));
  EXPECT_TRUE(same(a.get(1, 0), {quiet_nan, 1}));
  EXPECT_TRUE(same(a.get(1, 1), {2, 3}));
  EXPECT_TRUE(same(a.get(0, 1), {0, 0}));
  a.setColumn(0, complex_column({{9, 9}}));
  EXPECT_TRUE(same(a.get(0, 0), {0, 0}));
  complex_square none;
  none.setColumn(0, complex_column({{9, 9}}));
  EXPECT_EQ(none.getSize(), 0u);
}

TEST(Sqmat, TransposeAppliesTheRuleForNan) {
  real_square a = square(2, {1, quiet_nan, signalling_nan(), 4});
  real_square t = square(1, {7});
  a.transpose(t);
  EXPECT_EQ(t.getSize(), 2u);
  EXPECT_BITS(t.get(0, 1), 0.0);
  EXPECT_EQ(bits_of(t.getData()[1]), bits_of(signalling_nan()));
  EXPECT_BITS(t.get(1, 1), 4.0);
  EXPECT_BITS(a.getData()[1], quiet_nan);
  real_square none;
  none.transpose(t);
  EXPECT_EQ(t.getSize(), 0u);
  EXPECT_EQ(t.getData(), nullptr);
}

TEST(Sqmat, TransposeIntoItself) {
  random_source random(40);
  for (u32 n : {0u, 1u, 2u, 3u, 8u, 17u, 40u, 65u}) {
    const plain::square p = random_square(n, random, entries::with_nan);
    real_square a = to_library(p);
    a.transpose(a);
    EXPECT_TRUE(same(a, plain::transposed(p))) << n;
  }
}

TEST(Sqmat, ProductInPlace) {
  real_square a = square(2, {1, 2, 3, 4});
  real_square b = square(2, {0, 1, 1, 0});
  a *= b;
  plain::square want(2);
  want.data = {2, 1, 4, 3};
  EXPECT_TRUE(same(a, want));
  a *= a;
  want.data = {8, 5, 20, 13};
  EXPECT_TRUE(same(a, want));
  real_square other = square(3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  a *= other;
  EXPECT_TRUE(same(a, want));
  real_square none;
  a *= none;
  EXPECT_TRUE(same(a, want));
  none *= none;
  EXPECT_EQ(none.getSize(), 0u);
  complex_square c = complex_rows(1, {{1, 2}});
  complex_square d = complex_rows(2, {{1, 2}, {0, 0}, {0, 0}, {1, 2}});
  c *= d;
  EXPECT_TRUE(same(c.get(0, 0), {1, 2}));
  c *= c;
  EXPECT_TRUE(same(c.get(0, 0), {-3, 4}));
}

TEST(Sqmat, ProductAsANewMatrix) {
  const real_square a = square(2, {1, 2, 3, 4});
  const real_square b = square(2, {0, 1, 1, 0});
  plain::square want(2);
  want.data = {2, 1, 4, 3};
  EXPECT_TRUE(same(a * b, want));
  want.data = {3, 4, 1, 2};
  EXPECT_TRUE(same(b * a, want));
  want.data = {7, 10, 15, 22};
  EXPECT_TRUE(same(a * a, want));
  EXPECT_EQ((a * square(3, {1, 2, 3, 4, 5, 6, 7, 8, 9})).getSize(), 0u);
  EXPECT_EQ((a * real_square()).getSize(), 0u);
  EXPECT_EQ((real_square() * real_square()).getSize(), 0u);
  real_square c = a;
  c = c * c * b;  // temporaries, and a result that replaces an operand
  want.data = {10, 7, 22, 15};
  EXPECT_TRUE(same(c, want));
}

TEST(Sqmat, ComplexProductAsANewMatrix) {
  const complex_square a = complex_rows(2, {{1, 1}, {2, 0}, {0, -1}, {3, 2}});
  const complex_square b = complex_rows(2, {{0, 1}, {1, 0}, {2, 0}, {0, -2}});
  const complex_square c = a * b;
  ASSERT_EQ(c.getSize(), 2u);
  EXPECT_TRUE(same(c.get(0, 0), {3, 1}));
  EXPECT_TRUE(same(c.get(1, 0), {1, -3}));
  EXPECT_TRUE(same(c.get(0, 1), {7, 4}));
  EXPECT_TRUE(same(c.get(1, 1), {4, -7}));
  EXPECT_EQ((a * complex_rows(1, {{1, 2}})).getSize(), 0u);
  EXPECT_EQ((a * complex_square()).getSize(), 0u);
  EXPECT_EQ((complex_square() * complex_square()).getSize(), 0u);
  complex_square d = complex_rows(1, {{1, 2}});
  d = d * d;
  EXPECT_TRUE(same(d.get(0, 0), {-3, 4}));
}

TEST(Sqmat, Comparison) {
  real_square a = square(2, {1, 2, 3, 4});
  real_square b = square(3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  real_square none, nothing;
  EXPECT_TRUE(none == nothing);
  EXPECT_FALSE(none != nothing);
  EXPECT_TRUE(none == a);
  real_square c = square(2, {1, 2, 3, 4.0 + 0x1p-50});
  EXPECT_FALSE(a == c);
  EXPECT_TRUE(a != c);
  real_square d = square(2, {1, quiet_nan, 3, 4});
  EXPECT_TRUE(a == d);
  EXPECT_FALSE(a != d);
  real_square e = square(2, {quiet_nan, 2, 3, 5});
  EXPECT_FALSE(a == e);
  EXPECT_TRUE(a != e);
  real_square z = square(1, {0.0});
  real_square mz = square(1, {-0.0});
  EXPECT_TRUE(z == mz);
}

TEST(Sqmat, WorksWithConstantsAndTemporaries) {
  const real_square a = square(2, {1, 2, 3, 4});
  const real_square copy(a);
  EXPECT_TRUE(a == copy);
  EXPECT_FALSE(a != copy);
  EXPECT_BITS(a.get(1, 0), 2.0);
  EXPECT_EQ(a.getSize(), 2u);
  EXPECT_BITS(a.det(), -2.0);
  EXPECT_BITS(a.cof(0, 0), 4.0);
  real_square b;
  b = a;
  b *= a;
  EXPECT_BITS(b.get(0, 0), 7.0);
  b *= square(2, {1, 0, 0, 1});
  EXPECT_BITS(b.get(0, 0), 7.0);
  EXPECT_EQ(a.getColumn(0).getHeight(), 2u);
  a.transpose(b);
  EXPECT_BITS(b.get(0, 1), 2.0);
  const complex_square c = complex_rows(1, {{1, 2}});
  EXPECT_TRUE(same(c.get(0, 0), {1, 2}));
  EXPECT_TRUE(same(c.det(), {1, 2}));
}

TEST_EVERY_BUILD(Sqmat, OperationsMatchThePlainForm) {
  random_source random(41);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 66 && kind != entries::with_nan) continue;
      SCOPED_TRACE(describe(n, kind));
      plain::square p = random_square(n, random, kind);
      const plain::square q = random_square(n, random, kind);
      real_square a = to_library(p);
      real_square b = to_library(q);
      EXPECT_EQ(a == b, plain::equal(p, q));
      EXPECT_EQ(a != b, plain::unequal(p, q));
      real_square t;
      a.transpose(t);
      EXPECT_TRUE(same(t, plain::transposed(p)));
      const u32 x = random.below(3 * n + 1);
      EXPECT_TRUE(same(a.getColumn(x), plain::column_of(p, x)));
      const plain::matrix c = random_matrix(1 + random.below(2), n, random, kind);
      a.setColumn(x, to_library(c));
      plain::set_column(p, x, c);
      EXPECT_TRUE(same(a, p));
      const real_square product = a * b;
      a *= b;
      plain::multiply(p, q);
      EXPECT_TRUE(same(a, p));
      EXPECT_TRUE(same(product, p));
      EXPECT_TRUE(same(b, q));
      if (n <= 40) {
        a *= a;
        plain::multiply(p, plain::square(p));
        EXPECT_TRUE(same(a, p));
      }
    }
  }
}

TEST_EVERY_BUILD(Sqmat, ComplexOperationsMatchThePlainForm) {
  random_source random(42);
  for (u32 n : all_sizes()) {
    for (entries kind : all_entries) {
      if (n > 40 && kind != entries::hostile) continue;
      SCOPED_TRACE(describe(n, kind));
      plain::csquare p = random_csquare(n, random, kind);
      const plain::csquare q = random_csquare(n, random, kind);
      complex_square a = to_library(p);
      complex_square b = to_library(q);
      const u32 x = random.below(3 * n + 1);
      complex_matrix got = a.getColumn(x);
      EXPECT_TRUE(same(got, plain::column_of(p, x)));
      const plain::cmatrix c = random_cmatrix(1 + random.below(2), n, random, kind);
      a.setColumn(x, to_library(c));
      plain::set_column(p, x, c);
      EXPECT_TRUE(same(a, p));
      const complex_square product = a * b;
      a *= b;
      plain::multiply(p, q);
      EXPECT_TRUE(same(a, p));
      EXPECT_TRUE(same(product, p));
      EXPECT_TRUE(same(b, q));
      if (n <= 70) {
        const complex_square squared = a * a;
        a *= a;
        plain::multiply(p, plain::csquare(p));
        EXPECT_TRUE(same(a, p));
        EXPECT_TRUE(same(squared, p));
      }
    }
  }
}

}  // namespace
