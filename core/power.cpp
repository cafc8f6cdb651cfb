// Correctly rounded integer powers: a chain of products where the powers stay in the safe range, else square and
// multiply with the exponent kept apart.
#include "core/power_chain.h"

#include <cmath>
#include <limits>

#include "core/binary_form.h"

namespace tessarn::detail {
namespace {

// A double-double times a power of two, whose exponent is an integer of its own: for powers near overflow and
// underflow.
struct scaled_double_double {
  double_double value;
  std::int64_t exponent;
};

// The value with |high| in [1/2, 1).
scaled_double_double normalised(double_double v, std::int64_t exponent) noexcept {
  const int shift = exponent_of(v.high) + 1;
  return {{scaled(v.high, -shift), scaled(v.low, -shift)}, exponent + shift};
}

// The product of two double-doubles, all four products of their parts included.
scaled_double_double multiplied(const scaled_double_double& a, const scaled_double_double& b) noexcept {
  const double_double p = exact_product(a.value.high, b.value.high, split(b.value.high));
  const real cross = a.value.high * b.value.low + a.value.low * b.value.high;
  const real t = p.low + (cross + a.value.low * b.value.low);
  const real high = p.high + t;
  return normalised({high, t - (high - p.high)}, a.exponent + b.exponent);
}

// Rounds 2^exponent (high + low), |high| in [1/2, 1), to nearest even. Below the normal range fewer bits
// are left: the integer significand is cut there, and low breaks what looks like a tie.
real rounded(const scaled_double_double& v) noexcept {
  constexpr int least_exponent = -1074;
  if (v.exponent > 1100) return std::copysign(std::numeric_limits<real>::infinity(), v.value.high);
  if (v.exponent < -1200) return std::copysign(static_cast<real>(0), v.value.high);
  const int exponent = static_cast<int>(v.exponent);
  const int cut = least_exponent - (exponent - 53);
  if (cut <= 0) return scaled(v.value.high, exponent);
  if (cut > 54) return std::copysign(static_cast<real>(0), v.value.high);
  const auto significand = static_cast<std::uint64_t>(std::fabs(v.value.high) * power_of_two(53));
  const std::uint64_t half = std::uint64_t{1} << (cut - 1);
  const std::uint64_t rest = significand & (2 * half - 1);
  std::uint64_t kept = cut < 64 ? significand >> cut : 0;
  const real low = v.value.high < 0 ? -v.value.low : v.value.low;
  const bool above = rest > half || (rest == half && low > 0);
  const bool tie = rest == half && low == 0;
  if (above || (tie && (kept & 1))) ++kept;
  return std::copysign(scaled(static_cast<real>(kept), least_exponent), v.value.high);
}

// Squares and multiplies along the bits of k: for every finite x other than 0 and every k.
scaled_double_double power_by_squaring(real x, unsigned k) noexcept {
  scaled_double_double base = normalised({x, 0}, 0);
  scaled_double_double result = normalised({1, 0}, 0);
  for (;;) {
    if (k & 1) result = multiplied(result, base);
    k >>= 1;
    if (k == 0) return result;
    base = multiplied(base, base);
  }
}

// 1 / a: the quotient of the high parts, and what it leaves of 1 over the high part.
scaled_double_double inverse(const scaled_double_double& a) noexcept {
  const real q = 1 / a.value.high;
  const double_double p = exact_product(a.value.high, q, split(q));
  const real rest = ((1 - p.high) - p.low) - q * a.value.low;
  const real t = rest / a.value.high;
  const real high = q + t;
  return normalised({high, t - (high - q)}, -a.exponent);
}

}  // namespace

// The chain takes k - 1 short steps, squaring 2 log2 k long ones: up to 64 the chain is used.
real power(real x, unsigned k) noexcept {
  if (k == 0) return 1;
  if (k == 1) return x;
  if (x == 0 || !std::isfinite(x)) {
    if (x != x) return x;
    return k % 2 == 1 ? x : std::fabs(x);
  }
  if (k > 64 || !chain_is_safe(x, k)) return rounded(power_by_squaring(x, k));
  const double_double parts = split(x);
  double_double w{x, 0};
  for (unsigned i = 2; i <= k; ++i) w = next_power(w, x, parts);
  return w.high;
}

real inverse_power(real x, unsigned k) noexcept {
  if (k == 0) return 1;
  if (x == 0 || !std::isfinite(x)) return 1 / power(x, k);
  return rounded(inverse(power_by_squaring(x, k)));
}

}  // namespace tessarn::detail
