// Arrays of complex numbers, laid out as by the array form of new: the number of entries stands in front of them. What
// new[] and delete[] would do besides is left out: zeros that are overwritten at once, and a call of the virtual
// destructor, which does nothing, for every entry.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
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

// Constructs n entries, each with the value of make(index).
template <class Make>
void construct_entries(cplx* entries, std::size_t n, Make make) {
  const auto construct = [&](std::size_t i) {
    new (entries + i) cplx(make(i));
    // Entry by entry: a loop for each of the fields, as compilers like to have it, takes three times as long.
    std::atomic_signal_fence(std::memory_order_seq_cst);
  };
  const std::size_t fours = n - n % 4;
  for (std::size_t i = 0; i < fours; i += 4) {  // one by one the loop takes longer than its stores
    construct(i);
    construct(i + 1);
    construct(i + 2);
    construct(i + 3);
  }
  for (std::size_t i = fours; i < n; ++i) construct(i);
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

// Where the real part of the first entry is, or will be once the entry is constructed: behind the virtual table pointer,
// which is as large as a real. The imaginary part follows.
inline real* first_part(cplx* entries) noexcept { return reinterpret_cast<real*>(entries) + 1; }

// Constructs n entries around the parts that stand in their places already. Compilers see that the parts keep their
// values, and store only what stands before them.
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
