// Arrays of complex numbers, laid out as by the array form of new: the number of entries is stored in front of them.
// Two things that new[] and delete[] would do besides are left out: zeros that are overwritten at once, and a call of
// the virtual destructor, which does nothing, for every entry.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>

#include "simd/unroll.h"
#include "tessarn/cplx.h"

namespace tessarn::detail {

constexpr std::size_t entries_offset = sizeof(std::size_t) > alignof(cplx) ? sizeof(std::size_t) : alignof(cplx);

// Room for n entries, not yet constructed.
inline cplx* allocate_entries(std::size_t n) {
  if (n > (static_cast<std::size_t>(-1) - entries_offset) / sizeof(cplx)) throw std::bad_array_new_length();
  char* block = static_cast<char*>(::operator new[](entries_offset + n * sizeof(cplx)));
  cplx* entries = reinterpret_cast<cplx*>(block + entries_offset);
  new (reinterpret_cast<std::size_t*>(entries) - 1) std::size_t(n);
  return entries;
}

// Constructs n entries, each with the value of make(index). The fence makes the compiler write entry by entry:
// otherwise it writes field by field, in three loops over the array, and copies of 5 x 5 matrices take 1.4 times as
// long, those of 16 x 16 ones 1.9 times. Not unrolled, the loop takes up to 1.3 times as long.
template <class Make>
void construct_entries(cplx* entries, std::size_t n, Make make) {
  TESSARN_UNROLL_LONG
  for (std::size_t i = 0; i < n; ++i) {
    new (entries + i) cplx(make(i));
    std::atomic_signal_fence(std::memory_order_seq_cst);
  }
}

inline cplx* zero_entries(std::size_t n) {
  cplx* entries = allocate_entries(n);
  construct_entries(entries, n, [](std::size_t) { return cplx(); });
  return entries;
}

inline cplx* copied_entries(const cplx* source, std::size_t n) {
  cplx* entries = allocate_entries(n);
  construct_entries(entries, n, [source](std::size_t i) -> const cplx& { return source[i]; });
  return entries;
}

// Where the real part of the first entry is, or will be once the entry is constructed: behind the virtual table
// pointer, which is as large as a real. The imaginary part follows.
inline real* first_part(cplx* entries) noexcept { return reinterpret_cast<real*>(entries) + 1; }

// Constructs n entries whose real and imaginary parts are in their places already. Compilers see that the parts keep
// their values, and store the virtual table pointers alone.
inline void construct_around_parts(cplx* entries, std::size_t n) noexcept {
  construct_entries(entries, n, [entries](std::size_t i) {
    const real* parts = first_part(entries + i);
    return cplx(parts[0], parts[1]);
  });
}

inline void release_entries(cplx* entries) noexcept {
  if (entries != nullptr) ::operator delete[](reinterpret_cast<char*>(entries) - entries_offset);
}

struct entries_release {
  void operator()(cplx* entries) const noexcept { release_entries(entries); }
};
using entries_owner = std::unique_ptr<cplx[], entries_release>;

}  // namespace tessarn::detail
