/// \file
/// Numbers in binary files, of either byte order. A part of tessarn/files.h.
#pragma once

#include "tessarn/files/state.h"

namespace tessarn::files::detail {

/// The kinds of numbers in .npy and .ply files.
struct number_type {
  char kind = 'f';       // f floating point, i and u integers, b truth values
  std::size_t size = 8;  // in bytes
};

/// The bytes of an unsigned integer in the given order.
inline std::uint64_t bits_of(const char* p, std::size_t size, bool big_endian) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < size; ++i)
    bits = bits << 8 | static_cast<unsigned char>(p[big_endian ? i : size - 1 - i]);
  return bits;
}

/// The number at p; false for an integer that no double equals.
inline bool binary_number(const char* p, const number_type& t, bool big_endian, double& value) {
  const std::uint64_t bits = bits_of(p, t.size, big_endian);
  if (t.kind == 'f' && t.size == 4) {
    const auto half = static_cast<std::uint32_t>(bits);
    float v;
    std::memcpy(&v, &half, sizeof v);
    value = v;
    return true;
  }
  if (t.kind == 'f') {
    std::memcpy(&value, &bits, sizeof value);
    return true;
  }
  const std::uint64_t sign = std::uint64_t{1} << (8 * t.size - 1);
  const bool negative = t.kind == 'i' && (bits & sign) != 0;
  // The magnitude; the bits above those of a small integer are those of its sign.
  const std::uint64_t magnitude = negative ? (sign << 1) - bits : bits;
  value = static_cast<double>(magnitude);
  if (value >= 18446744073709551616.0 || static_cast<std::uint64_t>(value) != magnitude) return false;
  if (negative) value = -value;
  return true;
}

/// Appends the 8 bytes of a double, or the 4 of a float, the lowest first.
template <class Number>
void append_binary(std::string& out, Number v) {
  std::uint64_t bits = 0;
  if constexpr (sizeof(Number) == 4) {
    std::uint32_t half;
    std::memcpy(&half, &v, sizeof half);
    bits = half;
  } else {
    std::memcpy(&bits, &v, sizeof bits);
  }
  for (std::size_t i = 0; i < sizeof(Number); ++i) out += static_cast<char>(bits >> (8 * i) & 0xFF);
}

}  // namespace tessarn::files::detail
