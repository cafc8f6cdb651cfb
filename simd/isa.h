// The choice of instruction set: kernels are compiled several times from one source, and one build is
// chosen once per process. All builds of a kernel give the same bits.
#pragma once

#include <atomic>

#include "simd/sets.h"

namespace tessarn::detail {

#define TESSARN_ENUMERATOR(set) set,
enum class isa : int { TESSARN_FOR_EACH_SET(TESSARN_ENUMERATOR) };
#undef TESSARN_ENUMERATOR

#define TESSARN_NAME(set) #set,
inline constexpr const char* set_names[] = {TESSARN_FOR_EACH_SET(TESSARN_NAME)};
#undef TESSARN_NAME

inline constexpr int set_count = static_cast<int>(sizeof set_names / sizeof *set_names);

// The best instruction set that the processor and the operating system support, or the limit of a test below it.
isa best_isa() noexcept;

// For tests: from now on behaves as on a processor that has nothing better than the given set.
void limit_isa(isa best) noexcept;

// For tests: uses the given set from now on, or the best one if the processor does not have it; returns
// the set in use.
isa force_isa(isa wanted) noexcept;

// Uses the best set from now on, and returns it.
isa use_best_isa() noexcept;

// The choice, -1 before it is made. Constant-initialised, so there is neither start-up code nor a lock: threads that
// meet here for the first time all store the same value.
extern std::atomic<int> g_chosen_isa;

// The instruction set in use: the best one, unless a test chose another.
inline isa chosen_isa() noexcept {
  const int chosen = g_chosen_isa.load(std::memory_order_relaxed);
  return chosen >= 0 ? static_cast<isa>(chosen) : use_best_isa();
}

}  // namespace tessarn::detail
