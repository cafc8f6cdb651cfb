// Arrays of reals. Owning temporaries are std::unique_ptr, so every exit releases them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "tessarn/scalar.h"

namespace tessarn::detail {

using real_array = std::unique_ptr<real[]>;

// The sizes of storage are products and sums of counts. Where one does not fit, the request fails as an impossible one
// does in the allocator.
inline std::size_t checked_product(std::size_t a, std::size_t b) {
  if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) throw std::bad_array_new_length();
  return a * b;
}
template <class... More>
std::size_t checked_product(std::size_t a, std::size_t b, More... more) {
  return checked_product(checked_product(a, b), static_cast<std::size_t>(more)...);
}
inline std::size_t checked_sum(std::size_t a, std::size_t b) {
  if (a > std::numeric_limits<std::size_t>::max() - b) throw std::bad_array_new_length();
  return a + b;
}
template <class... More>
std::size_t checked_sum(std::size_t a, std::size_t b, More... more) {
  return checked_sum(checked_sum(a, b), static_cast<std::size_t>(more)...);
}

// A count in the 32 bits of the classes; a larger one fails as an impossible size does.
inline ulong checked_count(std::size_t n) {
  if (n > std::numeric_limits<ulong>::max()) throw std::bad_array_new_length();
  return static_cast<ulong>(n);
}

// A matrix that is computed, or read row by row, must have as many entries as 32 bits count: otherwise its count would
// wrap to a small number, and so would its storage. Impossible sizes fail as they do in the allocator.
inline void require_countable(ulong columns, ulong rows) {
  if (static_cast<std::uint64_t>(columns) * rows > std::numeric_limits<ulong>::max()) throw std::bad_array_new_length();
}

// n entries, not initialised.
inline real_array allocate(std::size_t n) { return real_array(new real[n]); }

// n zeros.
inline real_array allocate_zeroed(std::size_t n) { return real_array(new real[n]()); }

// A count that may be negative: such a request saturates to the largest size and fails in the allocator.
inline real_array allocate_counted(std::int64_t n) {
  return allocate_zeroed(n < 0 ? static_cast<std::size_t>(-1) : static_cast<std::size_t>(n));
}

// The first multiple of 64 bytes among the eight reals from p on.
inline real* whole_cache_line(real* p) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(p);
  return p + (64 - address % 64) % 64 / sizeof(real);
}

// Reals as the doubles that kernels take. Where real is long double it has the same 64-bit format under another name.
inline double* as_doubles(real* p) noexcept { return reinterpret_cast<double*>(p); }
inline const double* as_doubles(const real* p) noexcept { return reinterpret_cast<const double*>(p); }

}  // namespace tessarn::detail
