// The quiet-NaN rule of the real matrices and of the fits: a quiet NaN is stored as 0.
#pragma once

#include <cstddef>
#include <cstring>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// Whether v is a quiet NaN, by its bits: a comparison does not tell it from a signalling one, which is stored as it is.
inline bool is_quiet_nan(real v) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  constexpr std::uint64_t quiet = 0x7FF8000000000000u;
  return (bits & quiet) == quiet;
}

// The rule for values that may come from a caller.
inline real without_quiet_nan(real v) noexcept { return is_quiet_nan(v) ? 0 : v; }

// The rule for the result of an arithmetic operation, whose NaN is always quiet: one comparison, which vectorises.
inline real nan_to_zero(real v) noexcept { return v == v ? v : 0; }

// Whether there is any NaN among n values. They are counted, since a loop to a fixed end vectorises.
inline bool has_nan(const real* v, std::size_t n) noexcept {
  std::size_t count = 0;
  for (std::size_t i = 0; i < n; ++i) count += v[i] != v[i] ? 1 : 0;
  return count != 0;
}

}  // namespace tessarn::detail
