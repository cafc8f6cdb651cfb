// Matrices with no column or no row, beside a large other extent: every operation ends, touches
// nothing that is not its own, and gives the sizes that the matrix form gives. Written for the
// memory checkers as much as for its expectations.
#include "svd_support.h"

#include <tessarn/vectors.h>

namespace {

using namespace test;

constexpr u32 large[] = {1, 2, 3, 7, 100, 700, 1100};

void expect_sizes(const real_matrix& m, u32 width, u32 height) {
  EXPECT_EQ(m.getWidth(), width);
  EXPECT_EQ(m.getHeight(), height);
}

TEST_EVERY_BUILD(ZeroExtent, Decompose) {
  for (u32 n : large) {
    const parts none = decomposed(plain::matrix(0, n));
    test::expect_sizes(none, 0, n);
    if (n > 700) continue;
    const parts wide = decomposed(plain::matrix(n, 0));
    test::expect_sizes(wide, n, 0);
    for (u32 y = 0; y < n; ++y)
      for (u32 x = 0; x < n; ++x) {
        ASSERT_BITS(wide.s.get(x, y), 0.0);
        ASSERT_BITS(wide.v.get(x, y), x == y ? 1.0 : 0.0);
      }
  }
}

TEST_EVERY_BUILD(ZeroExtent, Products) {
  for (u32 n : large) {
    real_matrix none = rows(0, n, {}), flat = rows(n, 0, {});
    real_matrix outer = none * flat;  // sums of no terms
    expect_sizes(outer, n, n);
    for (std::size_t i = 0; i < std::size_t{n} * n; ++i) ASSERT_BITS(outer.getData()[i], 0.0);
    expect_sizes(flat * none, 0, 0);
    real_matrix square = rows(n, n, {});
    std::fill_n(square.getData(), std::size_t{n} * n, 1.0);
    expect_sizes(square * none, 0, n);
    expect_sizes(flat * square, n, 0);
    expect_sizes(none * none, 0, 0);
  }
}

TEST(ZeroExtent, Elementwise) {
  for (u32 n : large) {
    for (bool flat : {false, true}) {
      const u32 w = flat ? n : 0, h = flat ? 0 : n;
      real_matrix a = rows(w, h, {}), b = rows(w, h, {}), t;
      expect_sizes(a + b, w, h);
      expect_sizes(a - b, w, h);
      expect_sizes(a * 2.0, w, h);
      expect_sizes(a / 2.0, w, h);
      a.transpose(t);
      expect_sizes(t, h, w);
      t.transpose(t);
      expect_sizes(t, w, h);
      EXPECT_TRUE(a == b);
      EXPECT_FALSE(a != b);
      EXPECT_TRUE(a.isDiagonal());
      real_matrix copy(a), assigned;
      expect_sizes(copy, w, h);
      assigned = a;
      expect_sizes(assigned, w, h);
      expect_sizes(a.normalize(), w == 1 ? w : 0, 0);
      complex_matrix c, d;
      c.create(w, h);
      d = c;
      EXPECT_EQ(d.getWidth(), w);
      EXPECT_EQ(d.getHeight(), h);
      const complex_matrix e(c);
      EXPECT_EQ(e.getHeight(), h);
    }
  }
}

TEST_EVERY_BUILD(ZeroExtent, LeastSquaresAndInverses) {
  for (u32 n : large) {
    real_matrix none = rows(0, n, {}), flat = rows(n, 0, {}), ordinates = rows(1, n, {}), empty = rows(1, 0, {}), x, i;
    std::fill_n(ordinates.getData(), n, 1.0);
    x.solve(none, ordinates);  // no unknowns
    expect_sizes(x, 1, 0);
    x.solve(flat, empty);  // no equations: a singular system whose right-hand side is 0
    expect_sizes(x, 1, n);
    for (u32 k = 0; k < n; ++k) ASSERT_BITS(x.get(0, k), 0.0);
    none.invert(i);
    expect_sizes(i, n, 0);
    flat.invert(i);
    expect_sizes(i, 0, n);
    none.invert(none);
    expect_sizes(none, n, 0);
  }
}

TEST_EVERY_BUILD(ZeroExtent, SquareMatrices) {
  for (u32 n : large) {
    real_square none, m;
    m.create(n);
    std::fill_n(m.getData(), std::size_t{n} * n, 1.0);
    real_matrix wide = rows(n, 0, {}), tall = rows(0, n, {});
    none.solve(wide);
    none.solve(tall);
    m.solve(wide);
    m.solve(tall);
    expect_sizes(wide, n, 0);
    expect_sizes(tall, 0, n);
    m.setColumn(0, wide);
    m.setColumn(0, tall);
    none.setColumn(0, tall);
    expect_sizes(none.getColumn(5), 1, 0);
    none *= m;
    m *= none;
    EXPECT_EQ((m * none).getSize(), 0u);
    EXPECT_EQ(m.get(0, 0), 1.0);
    none.transpose(none);
    none.orthogonalize();
    none.optimize();
    EXPECT_EQ(none.det(), 1.0);
    EXPECT_EQ(none.cof(3, 4), 0.0);
    complex_square no_entries, c;
    c.create(n);
    complex_matrix no_rows, no_columns;
    no_rows.create(n, 0);
    no_columns.create(0, n);
    no_entries.solve(no_columns);
    c.solve(no_rows);
    c.solve(no_columns);
    c.setColumn(0, no_rows);
    c.setColumn(0, no_columns);
    EXPECT_EQ(no_entries.getColumn(5).getHeight(), 0u);
    no_entries *= c;
    c *= no_entries;
    EXPECT_EQ((c * no_entries).getSize(), 0u);
    no_entries.orthogonalize();
    no_entries.optimize();
    EXPECT_EQ(no_entries.det().re, 1.0);
    EXPECT_EQ(no_entries.cof(3, 4).re, 1.0);
  }
}

TEST_EVERY_BUILD(ZeroExtent, PointSets) {
  std::vector<vector3d> a(1100);
  real_square m = square(1, {5});
  for (tessarn::ulong n : {0u, 1u, 2u}) EXPECT_FALSE(m.calc_match(a.data(), a.data(), n));
  EXPECT_EQ(m.getSize(), 1u);
  ASSERT_TRUE(m.calc_match(a.data(), a.data(), 1100));  // all the same point
  m.calc_transform(a.data(), a.data(), 0);
  for (u32 i = 0; i < 16; ++i) EXPECT_BITS(m.getData()[i], 0.0);
  m.transform(a.data(), a.data(), 0);
}

}  // namespace
