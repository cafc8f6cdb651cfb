// How much work the list hands on to the fits, counted in points: this program's kernels of the polynomials count what
// they are given.
#include <gtest/gtest.h>
#include <tessarn/poly.h>
#include <tessarn/vectors.h>

#include <cstdlib>
#include <memory>

#include "poly/kernels/kernels.h"
#include "simd/dispatch.h"

namespace {

using tessarn::detail::poly_kernels;

std::size_t points_given = 0;

const poly_kernels& chosen() noexcept {
#define TESSARN_TABLE_OF(set) &tessarn::detail::set::poly_table,
  static constexpr const poly_kernels* builds[] = {TESSARN_FOR_EACH_SET(TESSARN_TABLE_OF)};
#undef TESSARN_TABLE_OF
  return tessarn::detail::table_in_use(builds);
}

std::size_t add_plane_points(const double* points, std::size_t n, double marker, unsigned exponents, double* sums) {
  points_given += n;
  return chosen().add_plane_points(points, n, marker, exponents, sums);
}

bool unpack_plane(const double* points, double marker, double* x, double* y) {
  points_given += tessarn::detail::point_block;
  return chosen().unpack_plane(points, marker, x, y);
}

}  // namespace

// In place of the library's own.
const poly_kernels& tessarn::detail::poly_kernels_in_use() noexcept {
  static poly_kernels counting;
  counting = chosen();
  counting.add_plane_points = add_plane_points;
  counting.unpack_plane = unpack_plane;
  return counting;
}

namespace {

std::size_t work_of_findline(tessarn::ulong n) {
  vectormat l;
  for (tessarn::ulong i = 0; i < n; ++i) {
    const auto x = static_cast<tessarn::real>(i);
    l.add(vector(x, x / 4 + (i % 5 == 0 ? 1e-3 : 0)));
  }
  points_given = 0;
  const std::unique_ptr<vectormat> chain(l.findline(vector(4, 1)));
  EXPECT_EQ(chain->count, n - 1);
  return points_given;
}

TEST(Work, TheKernelsOfThisProgramCount) {
  vectormat l;
  for (int i = 0; i < 100; ++i) l.add(vector(i, i));
  points_given = 0;
  l.avdir();
  EXPECT_GE(points_given, 100u);
}

TEST(Work, ChainsAreNotFittedAnewForEveryPoint) {
  for (tessarn::ulong n : {500u, 1000u, 2000u}) EXPECT_LE(work_of_findline(n), 4 * n);
}

}  // namespace
