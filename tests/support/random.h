// Reproducible random input: the generator is xoshiro256** (D. Blackman, S. Vigna, 2018), seeded by
// splitmix64. The standard distributions differ between platforms, so none is used.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace test {

class random_source {
 public:
  explicit random_source(std::uint64_t seed) {
    for (auto& word : state_) {
      seed += 0x9E3779B97F4A7C15u;
      std::uint64_t z = seed;
      z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
      z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
      word = z ^ (z >> 31);
    }
  }

  std::uint64_t next() {
    const std::uint64_t result = rotl(state_[1] * 5, 7) * 9;
    const std::uint64_t t = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= t;
    state_[3] = rotl(state_[3], 45);
    return result;
  }

  // An integer in [0, bound).
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>((next() >> 32) % bound); }

  // Uniform in [lo, hi).
  double uniform(double lo = -1.0, double hi = 1.0) {
    return lo + (hi - lo) * (static_cast<double>(next() >> 11) * 0x1p-53);
  }

  // A sum of twelve uniforms: near enough to a normal deviate, and the same everywhere.
  double normal() {
    double s = -6.0;
    for (int i = 0; i < 12; ++i) s += uniform(0.0, 1.0);
    return s;
  }

  // Values that break careless code: signed zeros, ones, small integers, subnormals, the largest
  // and smallest numbers, infinities, NaN, and ordinary numbers of very different size.
  double hostile() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    switch (below(16)) {
      case 0: return 0.0;
      case 1: return -0.0;
      case 2: return 1.0;
      case 3: return -1.0;
      case 4: return static_cast<double>(below(9)) - 4.0;
      case 5: return std::numeric_limits<double>::denorm_min() * static_cast<double>(below(5));
      case 6: return std::numeric_limits<double>::min() * uniform();
      case 7: return std::numeric_limits<double>::max() * uniform();
      case 8: return inf;
      case 9: return -inf;
      case 10: return std::numeric_limits<double>::quiet_NaN();
      case 11: return std::ldexp(uniform(), static_cast<int>(below(2000)) - 1000);
      case 12: return std::ldexp(uniform(), static_cast<int>(below(80)) - 40);
      default: return uniform(-10.0, 10.0);
    }
  }

  // As hostile(), without infinities and NaN.
  double hostile_finite() {
    for (;;) {
      const double v = hostile();
      if (std::isfinite(v)) return v;
    }
  }

 private:
  static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  std::uint64_t state_[4];
};

}  // namespace test
