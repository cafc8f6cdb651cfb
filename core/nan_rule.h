// The quiet-NaN rule of the real matrices and of the fits.
#pragma once

#include <cstddef>
#include <cstring>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// By its bits, because a signalling NaN is stored as it is.
inline bool is_quiet_nan(real v) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  constexpr std::uint64_t quiet = 0x7FF8000000000000u;
  return (bits & quiet) == quiet;
}

// For values that may come from a caller.
inline real without_quiet_nan(real v) noexcept { return is_quiet_nan(v) ? 0 : v; }

// For the result of an arithmetic operation, whose NaN is always quiet: one comparison, which vectorises.
inline real computed(real v) noexcept { return v == v ? v : 0; }

// Whether there is any NaN among n values. They are counted, since a loop to a fixed end vectorises.
inline bool has_nan(const real* v, std::size_t n) noexcept {
  std::size_t count = 0;
  for (std::size_t i = 0; i < n; ++i) count += v[i] != v[i] ? 1 : 0;
  return count != 0;
}

}  // namespace tessarn::detail
