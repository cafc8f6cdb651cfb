// The builds of the kernels by their names, and TESSARN_TEST_BEST_SET=baseline|avx2|avx512 of the environment: test
// programs then behave as on a processor that has nothing better.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/isa.h"

namespace test {

inline const char* name_of(tessarn::detail::isa set) {
  const char* const names[] = {"baseline", "avx2", "avx512"};
  return names[static_cast<int>(set)];
}

// False for what is no name of a set.
inline bool set_of(const char* name, tessarn::detail::isa& set) {
  using tessarn::detail::isa;
  for (const isa each : {isa::baseline, isa::avx2, isa::avx512})
    if (std::strcmp(name, name_of(each)) == 0) {
      set = each;
      return true;
    }
  return false;
}

// Takes over the limit of the environment; false if it names no set.
inline bool limit_by_environment() {
  const char* const name = std::getenv("TESSARN_TEST_BEST_SET");
  if (!name || !*name) return true;
  tessarn::detail::isa best;
  if (!set_of(name, best)) {
    std::fprintf(stderr, "TESSARN_TEST_BEST_SET=%s: baseline, avx2 or avx512 is wanted\n", name);
    return false;
  }
  tessarn::detail::limit_isa(best);
  return true;
}

// Chooses a build; false, and says so, where the processor does not have it.
inline bool choose(tessarn::detail::isa wanted) {
  if (tessarn::detail::force_isa(wanted) == wanted) return true;
  std::printf("this processor has no %s\n", name_of(wanted));
  return false;
}

}  // namespace test
