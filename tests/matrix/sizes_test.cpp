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
