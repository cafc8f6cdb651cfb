// Square matrices whose entries 32 bits cannot count: everything that would make one fails in the allocator, also
// where the count would wrap to 0.
#include <gtest/gtest.h>
#include <tessarn/tessarn.h>

#include <algorithm>
#include <new>
#include <vector>

namespace {

constexpr tessarn::ulong too_large = 65536;

mat<long double> ones(tessarn::ulong width, tessarn::ulong height) {
  mat<long double> m;
  m.create(width, height);
  std::fill_n(m.getData(), static_cast<std::size_t>(width) * height, 1.0);
  return m;
}

TEST(Sizes, SquareMatrices) {
  sqmat<long double> s;
  s.create(2);
  EXPECT_THROW(s.create(too_large), std::bad_alloc);
  EXPECT_EQ(s.getSize(), 0u);
  EXPECT_EQ(s.getData(), nullptr);
  sqmat<cplx> c;
  c.create(2);
  EXPECT_THROW(c.create(too_large), std::bad_alloc);
  EXPECT_EQ(c.getSize(), 0u);
}

TEST(Sizes, ResultsOfMatrices) {
  mat<long double> column = ones(1, too_large), row = ones(too_large, 1);
  EXPECT_THROW(column * row, std::bad_alloc);
  EXPECT_EQ((row * column).get(0, 0), 65536.0);
  mat<long double> u = ones(1, 1), s, v, b = ones(1, 1);
  EXPECT_THROW(row.decompose(u, s, v), std::bad_alloc);
  EXPECT_THROW(row.invert(s), std::bad_alloc);
  EXPECT_THROW(s.solve(row, b), std::bad_alloc);
  EXPECT_EQ(u.get(0, 0), 1.0);
  EXPECT_EQ(s.getData(), nullptr);
}

// Their own create makes a small array of them.
template <class Matrix>
Matrix wrapped() {
  Matrix m;
  m.create(too_large, too_large + 1);
  return m;
}

TEST(Sizes, MatricesWhoseCountWraps) {
  using real_matrix = mat<long double>;
  auto w = wrapped<real_matrix>();
  std::fill_n(w.getData(), too_large, 1.0);
  w.set(7, 0, 5);
  EXPECT_EQ(w.get(7, 0), 5.0);
  EXPECT_THROW(w.set(0, 1, 5), std::bad_alloc);
  EXPECT_THROW(w.set(too_large - 1, too_large, 5), std::bad_alloc);
  real_matrix u, s, v, row = ones(too_large + 1, 1), column = ones(1, too_large), b = ones(1, too_large + 1);
  EXPECT_THROW(w.transpose(s), std::bad_alloc);
  EXPECT_THROW(w.isDiagonal(), std::bad_alloc);
  EXPECT_THROW(w * column, std::bad_alloc);
  EXPECT_THROW(row * w, std::bad_alloc);
  EXPECT_THROW(w.decompose(u, s, v), std::bad_alloc);
  EXPECT_THROW(w.invert(s), std::bad_alloc);
  EXPECT_THROW(s.solve(w, b), std::bad_alloc);
  sqmat<long double> a;
  a.create(5);
  std::fill_n(a.getData(), 25, 1.0);
  for (tessarn::ulong k = 0; k < 5; ++k) a.set(k, k, 2);
  EXPECT_THROW(a.solve(w), std::bad_alloc);
  real_matrix w3;
  w3.create(2147483648u / 256, 512);  // 2^32 entries, of which there are none
  sqmat<long double> a512;
  a512.create(512);
  EXPECT_THROW(a512.setColumn(0, w3), std::bad_alloc);
  a.setColumn(0, w);  // another height: nothing
  sqmat<cplx> c;
  c.create(5);
  for (tessarn::ulong k = 0; k < 5; ++k) c.set(k, k, cplx(2, 0));
  auto cw = wrapped<mat<cplx>>();
  EXPECT_THROW(c.solve(cw), std::bad_alloc);
  // Operations that read only the entries that exist work as always.
  EXPECT_EQ((w + w).get(7, 0), 10.0);
  EXPECT_EQ((w * 2).get(7, 0), 10.0);
  EXPECT_TRUE(w == w);
  real_matrix copied(w);
  EXPECT_EQ(copied.get(7, 0), 5.0);
}

// The sizes fail before a point is read: there is one.
TEST(Sizes, Transformations) {
  vector3d a(1, 2, 3), b(4, 5, 6);
  sqmat<long double> t;
  t.create(1);
  t.set(0, 0, 7);
  for (tessarn::ulong n : {1073741824u, 1073741825u, 2147483648u, 4294967295u})
    EXPECT_THROW(t.calc_transform(&a, &b, n), std::bad_array_new_length) << n;
  EXPECT_EQ(t.get(0, 0), 7.0);
}

TEST(Sizes, Fits) {
  std::vector<vector> points{{0, 1}, {1, 2}};
  binom p;
  EXPECT_THROW(p.create(points.data(), 2, too_large), std::bad_alloc);
  EXPECT_THROW(p.createtan(points.data(), 2, 2 * too_large), std::bad_alloc);
  std::vector<vector3d> space{{0, 1, 2}, {1, 2, 3}};
  hyperbinom q;
  for (const tessarn::ulong grade : {256u, 257u, 46340u, 46341u, 65537u})
    EXPECT_THROW(q.create(space.data(), 2, grade), std::bad_alloc);
}

}  // namespace
