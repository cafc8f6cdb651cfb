// Arithmetic on contiguous columns for the decomposition. The order inside its sums is free; the one chosen
// here holds in every build: eight partial sums, entry k in sum k mod 8, added as a balanced tree.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

inline constexpr std::size_t lanes = 8;

inline real tree_sum(const real* s) noexcept {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

inline real dot(const real* a, const real* b, std::size_t n) noexcept {
  real s[lanes] = {};
  std::size_t k = 0;
  for (; k + lanes <= n; k += lanes)
    for (std::size_t i = 0; i < lanes; ++i) s[i] += a[k + i] * b[k + i];
  for (std::size_t i = 0; k + i < n; ++i) s[i] += a[k + i] * b[k + i];
  return tree_sum(s);
}

inline real sum_of_magnitudes(const real* a, std::size_t n) noexcept {
  real s[lanes] = {};
  std::size_t k = 0;
  for (; k + lanes <= n; k += lanes)
    for (std::size_t i = 0; i < lanes; ++i) s[i] += std::fabs(a[k + i]);
  for (std::size_t i = 0; k + i < n; ++i) s[i] += std::fabs(a[k + i]);
  return tree_sum(s);
}

// a += f b.
inline void add_scaled(real* a, real f, const real* b, std::size_t n) noexcept {
  for (std::size_t k = 0; k < n; ++k) a[k] += f * b[k];
}

// (y, z) = (y c + z s, z c - y s).
inline void rotate(real* y, real* z, real c, real s, std::size_t n) noexcept {
  for (std::size_t k = 0; k < n; ++k) {
    const real u = y[k];
    const real v = z[k];
    y[k] = u * c + v * s;
    z[k] = v * c - u * s;
  }
}

}  // namespace tessarn::detail
