// How often a test over random input runs.
#pragma once

#include <cstdlib>

namespace test {

// As often as usual, or as the environment says.
inline int rounds(int usual) {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : usual;
}

}  // namespace test
