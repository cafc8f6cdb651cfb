// Arrays of complex numbers, laid out as by the array form of new: the number of entries stands in front of them. What
// new[] and delete[] would do besides is left out: zeros that are overwritten at once, and a call of the virtual
// destructor, which does nothing, for every entry.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

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

// n entries, each with the value of make(index).
template <class Make>
cplx* construct_entries(std::size_t n, Make make) {
  cplx* entries = allocate_entries(n);
  const auto construct = [&](std::size_t i) {
    new (entries + i) cplx(make(i));
    // Entry by entry: a loop for each of the fields, as compilers like to have it, takes three times as long.
    std::atomic_signal_fence(std::memory_order_seq_cst);
  };
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {  // otherwise the loop takes longer than its stores
    construct(i);
    construct(i + 1);
    construct(i + 2);
    construct(i + 3);
  }
  for (; i < n; ++i) construct(i);
  return entries;
}

inline cplx* zero_entries(std::size_t n) {
  return construct_entries(n, [](std::size_t) { return cplx(); });
}

inline cplx* copied_entries(const cplx* source, std::size_t n) {
  return construct_entries(n, [source](std::size_t i) -> const cplx& { return source[i]; });
}

inline void release_entries(cplx* entries) noexcept {
  if (entries != nullptr) ::operator delete[](reinterpret_cast<char*>(entries) - entries_offset);
}

}  // namespace tessarn::detail
