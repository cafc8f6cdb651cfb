// The library's objects under the algorithms and ranges of the standard library.
#include <tessarn/std.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace {

TEST(Standard, CoordinatesAreRanges) {
  vectormat list{{3, 9}, {1, 8}, {2, 7}};
  auto x = tessarn::x_of(list);
  std::sort(x.begin(), x.end());
  EXPECT_TRUE(list[0] == vector(1, 9));
  EXPECT_TRUE(list[2] == vector(3, 7));
  EXPECT_EQ(x.end() - x.begin(), 3);
  EXPECT_EQ(*(x.begin() + 2), 3);
  EXPECT_EQ(x.begin()[1], 2);
  EXPECT_EQ(*--x.end(), 3);
  const std::vector<vector3d> cloud = {{1, 2, 3}, {4, 5, 6}};
  const auto z = tessarn::z_of(cloud);
  static_assert(std::is_same_v<decltype(z[0]), const tessarn::real&>);
  EXPECT_EQ(std::accumulate(z.begin(), z.end(), 0.0), 9);
  EXPECT_TRUE(tessarn::y_of(vectormat() = vectormat{}).empty());
}

TEST(Standard, RowsAndColumnsFollowEachOther) {
  mat<long double> m{{1, 2, 3}, {4, 5, 6}};
  std::vector<double> sums;
  for (const auto row : tessarn::rows_of(m)) sums.push_back(std::accumulate(row.begin(), row.end(), 0.0));
  for (const auto column : tessarn::columns_of(m)) sums.push_back(std::accumulate(column.begin(), column.end(), 0.0));
  EXPECT_EQ(sums, (std::vector<double>{6, 15, 5, 7, 9}));
  for (const auto row : tessarn::rows_of(m)) row[0] = 0;
  EXPECT_EQ(m.get(0, 1), 0);
  const mat<long double> none;
  EXPECT_EQ(tessarn::rows_of(none).size() + tessarn::columns_of(none).size(), 0u);
  const sqmat<cplx> c{{cplx(1, 2)}};
  EXPECT_EQ((*tessarn::rows_of(c).begin())[0].im, 2);
}

TEST(Standard, CoefficientsOfPolynomials) {
  binom p{1, 2, 3};
  binom shared(p);
  std::reverse(tessarn::coefficients_of(p).begin(), tessarn::coefficients_of(p).end());
  EXPECT_EQ(shared.get(0), 3);
  EXPECT_TRUE(tessarn::coefficients_of(binom()).empty());
}

TEST(Standard, ComplexNumbersByName) {
  EXPECT_EQ(tessarn::std_complex(cplx(1, -2)), (std::complex<tessarn::real>(1, -2)));
  EXPECT_TRUE(tessarn::cplx_with_parts(2) == cplx(2, 0));
  EXPECT_TRUE(tessarn::unit_number_at(2) == cplx(2));
  EXPECT_FALSE(tessarn::unit_number_at(2) == cplx(2, 0));
}

#if defined(__cpp_lib_ranges)
TEST(Standard, ViewsAreViews) {
  using tessarn::real;
  static_assert(std::ranges::view<tessarn::span<real>> && std::ranges::contiguous_range<tessarn::span<real>>);
  static_assert(std::ranges::view<tessarn::strided_span<real>> &&
                std::ranges::random_access_range<tessarn::strided_span<real>>);
  static_assert(std::ranges::borrowed_range<tessarn::strided_span<const real>>);
  mat<long double> m{{3, 1}, {1, 2}};
  static_assert(std::ranges::view<decltype(tessarn::rows_of(m))> &&
                std::ranges::forward_range<decltype(tessarn::rows_of(m))>);
  const std::array<vector, 3> points{vector(0, 5), vector(1, 7), vector(2, 6)};
  EXPECT_EQ(std::ranges::max(tessarn::y_of(points)), 7);
  std::vector<double> backwards;
  for (const real v : tessarn::y_of(points) | std::views::reverse) backwards.push_back(v);
  EXPECT_EQ(backwards, (std::vector<double>{6, 7, 5}));
  std::vector<double> firsts;
  for (const real v : tessarn::rows_of(m) | std::views::transform([](auto row) { return row[0]; })) firsts.push_back(v);
  EXPECT_EQ(firsts, (std::vector<double>{3, 1}));
}
#endif

}  // namespace
