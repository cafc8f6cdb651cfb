// Checks of the client programs. Ordinary C++ of a caller: nothing but the library's headers.
#pragma once

#include <cstdio>

namespace check {

inline int passed = 0;
inline int failed = 0;

inline void that(bool condition, const char* file, int line, const char* text) {
  if (condition) {
    ++passed;
    return;
  }
  ++failed;
  std::printf("%s:%d: failed: %s\n", file, line, text);
}

// The exit code of the program.
inline int finish() {
  std::printf("%d checks passed, %d failed\n", passed, failed);
  return failed == 0 && passed > 0 ? 0 : 1;
}

}  // namespace check

#define CHECK(...) check::that(static_cast<bool>(__VA_ARGS__), __FILE__, __LINE__, #__VA_ARGS__)
