// Counts beyond 32 bits in files: a processor of 32 bits cannot hold them and refuses them as numbers.
#pragma once

#include <cstddef>

namespace tests {

// What is said on a processor of 64 bits, or on one of 32.
inline const char* by_size(const char* with_64_bits, const char* with_32_bits) {
  return sizeof(std::size_t) == 8 ? with_64_bits : with_32_bits;
}

}  // namespace tests
