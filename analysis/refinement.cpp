// From an isolating interval to neighbouring doubles, by exact signs.
#include "analysis/refinement.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "analysis/doubled.h"

namespace tessarn::analysis {

namespace {

// Doubles that are not negative, numbered in their order; infinity comes after the largest.
std::uint64_t number_of(double v) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  return bits;
}
double double_of(std::uint64_t number) noexcept {
  double v;
  std::memcpy(&v, &number, sizeof v);
  return v;
}

}  // namespace

refinement::refinement(const polynomial& p) : p_(p), rounded_(p.size()) {
  std::size_t bits = 0;
  for (const integer& c : p) bits = std::max(bits, c.bits());
  for (std::size_t k = 0; k < p.size(); ++k) rounded_[k] = rounded(p[k], -static_cast<long long>(bits));
}

// Newton's method inside the bracket, which is halved where Newton's step leaves it; at most 60 steps.
double refinement::guess(double low, double high, int sign_low) const noexcept {
  if (!is_finite(high)) return low;
  double x = low + (high - low) / 2;
  for (int i = 0; i < 60; ++i) {
    double value = 0, slope = 0;
    for (std::size_t k = rounded_.size(); k-- > 0;) {
      slope = slope * x + value;
      value = value * x + rounded_[k];
    }
    if (value == 0) return x;
    if ((value > 0) == (sign_low > 0))
      low = x;
    else
      high = x;
    double next = x - value / slope;
    if (!(next > low && next < high)) next = low + (high - low) / 2;
    if (next == x || next == low || next == high) return next;
    x = next;
  }
  return x;
}

// Steps of growing size from the guess to the other side of the zero, and halves of what is then left.
void refinement::narrow(isolated_zero& z, int sign_low) const {
  std::uint64_t below = number_of(z.lower), above = number_of(z.upper);
  std::uint64_t at = number_of(guess(z.lower, z.upper, sign_low)), step = 1;
  bool both = false, up = true;  // whether the guess has been enclosed; the direction of the steps
  for (bool first = true; above - below > 1; first = false) {
    at = std::min(std::max(at, below + 1), above - 1);
    const int s = sign_at(p_, dyadic(double_of(at)));
    if (s == 0) {
      z.lower = z.upper = double_of(at);
      z.low = z.high = dyadic(z.lower);
      z.exact = true;
      return;
    }
    const bool zero_above = s == sign_low;
    (zero_above ? below : above) = at;
    if (first) up = zero_above;
    both = both || up != zero_above;
    if (both) {
      at = below + (above - below) / 2;
      continue;
    }
    at = up ? (above - at > step ? at + step : above - 1) : (at - below > step ? at - step : below + 1);
    if (step < std::uint64_t{1} << 60) step *= 4;
  }
  z.lower = double_of(below);
  z.upper = double_of(above);
}

void refinement::operator()(isolated_zero& z) const {
  z.lower = double_below(z.low);
  z.upper = double_above(z.high);
  z.nearest = z.lower;
  if (z.exact && z.lower == z.upper) return;
  const int sign_low = z.exact ? 0 : sign_after(p_, z.low);
  if (!z.exact && number_of(z.upper) - number_of(z.lower) > 1) {
    narrow(z, sign_low);
    z.nearest = z.lower;
    if (z.exact) return;
    // The isolating interval becomes as narrow as that of the doubles, if it is wider.
    if (compare(dyadic(z.lower), z.low) > 0) z.low = dyadic(z.lower);
    if (is_finite(z.upper) && compare(dyadic(z.upper), z.high) < 0) z.high = dyadic(z.upper);
  }
  if (!is_finite(z.upper)) return;
  const dyadic half = middle(dyadic(z.lower), dyadic(z.upper));
  int side = z.exact ? compare(z.low, half) : compare(z.high, half) <= 0 ? -1 : compare(z.low, half) >= 0 ? 1 : 0;
  if (!z.exact && side == 0) {
    const int s = sign_at(p_, half);
    side = s == 0 ? 0 : s == sign_low ? 1 : -1;
  }
  if (side > 0 || (side == 0 && number_of(z.upper) % 2 == 0)) z.nearest = z.upper;
}

}  // namespace tessarn::analysis
