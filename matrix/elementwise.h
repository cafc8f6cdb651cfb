// Loops over whole arrays of reals that the matrix classes share.
#pragma once

#include <cstddef>

#include "core/nan_rule.h"
#include "tessarn/detail/rounding.h"

namespace tessarn::detail {

// The comparison of the matrix classes: false at the first pair of which one is less than the other.
inline bool entries_equal(const real* a, const real* b, std::size_t n) noexcept {
  for (std::size_t i = 0; i < n; ++i)
    if (!equal_or_unordered(a[i], b[i])) return false;
  return true;
}

// to[x][y] = from[y][x] for a matrix of the given width and height, in square blocks that stay in the cache.
template <class Move>
void transpose_entries(const real* from, std::size_t width, std::size_t height, real* to, Move move) {
  constexpr std::size_t block = 16;
  for (std::size_t y0 = 0; y0 < height; y0 += block)
    for (std::size_t x0 = 0; x0 < width; x0 += block)
      for (std::size_t x = x0; x < width && x < x0 + block; ++x)
        for (std::size_t y = y0; y < height && y < y0 + block; ++y) to[x * height + y] = move(from[y * width + x]);
}

}  // namespace tessarn::detail
