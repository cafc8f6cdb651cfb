// The builds of the kernels by their names, and TESSARN_TEST_BEST_SET=<name of a set> in the environment: test
// programs then behave as on a processor that has nothing better.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "simd/isa.h"

namespace test {

inline const char* name_of(tessarn::detail::isa set) { return tessarn::detail::set_names[static_cast<int>(set)]; }

// False for what is no name of a set.
inline bool set_of(const char* name, tessarn::detail::isa& set) {
  for (int i = 0; i < tessarn::detail::set_count; ++i)
    if (std::strcmp(name, tessarn::detail::set_names[i]) == 0) {
      set = static_cast<tessarn::detail::isa>(i);
      return true;
    }
  return false;
}

// The build that this run of the program tests; none, before one is chosen, is the best.
inline int& set_of_run() {
  static int set = -1;
  return set;
}

// For tests that take every build in turn: the one of a round, and at the end that of the run again.
inline void use_set_of_round(int round) {
  tessarn::detail::force_isa(static_cast<tessarn::detail::isa>(round % tessarn::detail::set_count));
}
inline void use_set_of_run() {
  if (set_of_run() < 0) {
    tessarn::detail::use_best_isa();
  } else {
    tessarn::detail::force_isa(static_cast<tessarn::detail::isa>(set_of_run()));
  }
}

// Takes over the limit of the environment; false if it names no set.
inline bool limit_by_environment() {
  const char* const name = std::getenv("TESSARN_TEST_BEST_SET");
  if (!name || !*name) return true;
  tessarn::detail::isa best;
  if (!set_of(name, best)) {
    std::fprintf(stderr, "TESSARN_TEST_BEST_SET=%s: no instruction set has this name\n", name);
    return false;
  }
  tessarn::detail::limit_isa(best);
  return true;
}

// Chooses a build; false, and says so, where the processor does not have it.
inline bool choose(tessarn::detail::isa wanted) {
  set_of_run() = static_cast<int>(wanted);
  if (tessarn::detail::force_isa(wanted) == wanted) return true;
  std::printf("this processor has no %s\n", name_of(wanted));
  return false;
}

}  // namespace test
