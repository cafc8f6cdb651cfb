// The accurate phase.
#include "core/angles/decision.h"

#include <algorithm>

namespace tessarn::angles {

int sign_of_difference(function f, exact_number angle, exact_number threshold, int words) {
  const auto n = static_cast<std::size_t>(words);
  auto [value, negative] = value_at(f, angle, n);
  const bool threshold_negative = threshold.high < 0;
  if (negative != threshold_negative) return negative ? -1 : 1;
  fixed_point other = placed(threshold, n);
  const bool larger = !std::lexicographical_compare(value.begin(), value.end(), other.begin(), other.end());
  if (!larger) std::swap_ranges(value.begin(), value.end(), other.begin());
  value -= other;
  // All errors together are below a unit of the last word but one (docs/angles.md).
  if (value.leading_zeros() >= n) return 0;
  return larger != negative ? 1 : -1;
}

int sign_of_difference(function f, exact_number angle, exact_number threshold) {
  for (int words = 6;; words *= 2)
    if (const int sign = sign_of_difference(f, angle, threshold, words); sign != 0) return sign;
}

namespace {

exact_number midpoint(double a, double b) noexcept { return {a, 0.5 * (b - a)}; }

}  // namespace

double decide(function f, double x, double a, double b) noexcept {
  const bool greater = sign_of_difference(f, {x, 0}, midpoint(a, b)) > 0;
  return greater == (a > b) ? a : b;
}

double decide_inverse(function f, double x, double a, double b) noexcept {
  const bool greater = (sign_of_difference(f, midpoint(a, b), {x, 0}) < 0) != (f == function::cosine);
  return greater == (a > b) ? a : b;
}

}  // namespace tessarn::angles
