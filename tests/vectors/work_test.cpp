// How much work the list hands on to the fits, counted in points: this program's kernels of the polynomials count what
// they are given.
#include <gtest/gtest.h>
#include <tessarn/poly.h>
#include <tessarn/vectors.h>

#include <cstdlib>
#include <memory>

#include "core/isa.h"
#include "poly/kernels.h"

namespace {

using tessarn::detail::poly_kernels;

std::size_t points_given = 0;

const poly_kernels& chosen() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  using tessarn::detail::isa;
  switch (tessarn::detail::chosen_isa()) {
    case isa::avx512: return tessarn::detail::avx512::poly_table;
    case isa::avx2: return tessarn::detail::avx2::poly_table;
    default: break;
  }
#endif
  return tessarn::detail::baseline::poly_table;
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
const poly_kernels& tessarn::detail::poly() noexcept {
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
