// Comparison of floating-point results by their bits, and the printing that goes with it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace test {

inline std::uint64_t bits_of(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

inline double from_bits(std::uint64_t b) {
  double v;
  std::memcpy(&v, &b, sizeof v);
  return v;
}

// Any NaN equals any NaN; +0 and -0 differ.
inline bool same_bits(double a, double b) {
  if (a != a || b != b) return a != a && b != b;
  return bits_of(a) == bits_of(b);
}

inline std::string hex(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%a (%.17g)", v, v);
  return text;
}

// The distance in units in the last place; 0 for equal bits and for two NaNs.
inline std::uint64_t ulp_distance(double a, double b) {
  if (same_bits(a, b)) return 0;
  if (a != a || b != b) return ~std::uint64_t{0};
  auto key = [](double v) {
    const std::uint64_t u = bits_of(v);
    return (u >> 63) ? -static_cast<std::int64_t>(u & ~(std::uint64_t{1} << 63)) : static_cast<std::int64_t>(u);
  };
  const std::int64_t ka = key(a);
  const std::int64_t kb = key(b);
  return ka > kb ? static_cast<std::uint64_t>(ka) - static_cast<std::uint64_t>(kb)
                 : static_cast<std::uint64_t>(kb) - static_cast<std::uint64_t>(ka);
}

inline ::testing::AssertionResult bits_equal(const char* ea, const char* eb, double a, double b) {
  if (same_bits(a, b)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << ea << " = " << hex(a) << "\n" << eb << " = " << hex(b) << "\nthe bits differ";
}

}  // namespace test

#define EXPECT_BITS(a, b) EXPECT_PRED_FORMAT2(::test::bits_equal, a, b)
#define ASSERT_BITS(a, b) ASSERT_PRED_FORMAT2(::test::bits_equal, a, b)
