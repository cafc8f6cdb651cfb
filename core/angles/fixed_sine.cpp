// Sine and cosine in fixed-point numbers of any length.
#include "core/angles/fixed_sine.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "core/angles/tables.inl"

namespace tessarn::angles {
namespace {

// pi/4 with n words: J. Machin's 4 atan(1/5) - atan(1/239), every term is cut, which makes less than 40 n units.
fixed_point quarter_pi(std::size_t n) {
  fixed_point result(n);
  if (n <= quarter_pi_words) {
    std::copy_n(quarter_pi_bits, n, result.begin() + 1);
    return result;
  }
  const auto arc_tangent_of_inverse = [n](word q) {
    fixed_point power(n), s(n);
    power[0] = 1;
    power /= q;
    for (word k = 1; power.leading_zeros() < power.size(); k += 2) {
      fixed_point term = power;
      term /= k;
      if (k % 4 == 1)
        s += term;
      else
        s -= term;
      power /= q * q;
    }
    return s;
  };
  fixed_point a = arc_tangent_of_inverse(5);
  a += a;
  a += a;
  a -= arc_tangent_of_inverse(239);
  std::copy_n(a.begin(), n + 1, result.begin());
  return result;
}

fixed_point half_pi(std::size_t n) {
  fixed_point h = quarter_pi(n);
  h += h;
  return h;
}

fixed_point one(std::size_t n) {
  fixed_point result(n);
  result[0] = 1;
  return result;
}

// 2/pi with n words: the stored ones, or I. Newton's iteration z <- z + z (1 - z pi/2), which doubles the correct words
// each time. Its last step leaves an error of less than 50 n units. After each earlier one z is below 2/pi by much more
// than that, so that 1 - z pi/2 is never negative.
fixed_point inverse_of_half_pi(std::size_t n) {
  constexpr std::size_t stored = 2 * two_over_pi_words;
  fixed_point z(n);
  for (std::size_t k = 0; k < std::min(n, stored); ++k)
    z[k + 1] = static_cast<word>(two_over_pi_bits[1 + k / 2] >> (k % 2 == 0 ? 32 : 0));
  if (n <= stored) return z;
  const fixed_point h = half_pi(n);
  for (std::size_t correct = stored; correct < n; correct *= 2) {
    fixed_point gap = one(n);
    gap -= product(z, h);
    z += product(z, gap);
  }
  return z;
}

// |x| as significand 2^exponent.
struct integer_form {
  std::uint64_t significand;
  int exponent;
};

// A midpoint of doubles has one bit more than a double; its low part may have the other sign.
integer_form integer_form_of(exact_number x) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &x.high, sizeof bits);
  const int exponent = static_cast<int>((bits >> 52) & 0x7FF) - 1075;
  const std::uint64_t significand = (bits & 0xFFFFFFFFFFFFF) | 0x10000000000000;
  // 2^(e - 1) and 2^(e - 2) are the low parts that a midpoint can have beside a significand of weight 2^e.
  const double low = x.high < 0 ? -x.low : x.low;
  const std::uint64_t quarter_bits = static_cast<std::uint64_t>(exponent - 2 + 1023) << 52;
  double quarter;
  std::memcpy(&quarter, &quarter_bits, sizeof quarter);
  const auto quarters = low == 0 ? 0 : static_cast<std::int64_t>(low / quarter);
  return {4 * significand + static_cast<std::uint64_t>(quarters), exponent - 2};
}

// significand 2^exponent below 2^32, cut to n words behind the point.
fixed_point placed(integer_form x, std::size_t n) {
  fixed_point result(n);
  // Bit b of the significand has the weight 2^(exponent + b); word k holds the weights 2^(-32 k) to 2^(31 - 32 k).
  for (int b = 0; b < 64; ++b) {
    if (!(x.significand >> b & 1)) continue;
    const int weight = x.exponent + b;
    const int k = weight >= 0 ? 0 : (31 - weight) / 32;
    if (k <= static_cast<int>(n)) result[static_cast<std::size_t>(k)] |= word{1} << (weight + 32 * k);
  }
  return result;
}

// The remainder of |angle| modulo pi/2, in [0, pi/4], and how it stands to the angle.
struct remainder {
  fixed_point value;
  bool negative;
  int quadrant;
};

remainder reduced(integer_form angle, std::size_t n) {
  const int size = 64 - std::countl_zero(angle.significand) + angle.exponent;
  if (size < 0) return {placed(angle, n), false, 0};  // below 1/2
  // angle (2/pi) modulo 4: bits of 2/pi of the weights from 2^(1 - exponent) on.
  const int first = angle.exponent - 2;
  const int words_before = first >= 0 ? first / 32 : -((31 - first) / 32);
  const int shift = first - 32 * words_before;
  const std::size_t count = n + 3;
  const fixed_point bits = inverse_of_half_pi(static_cast<std::size_t>(std::max(words_before, 0)) + count + 1);
  const auto stored = [&](int k) { return k < 0 ? word{0} : bits[static_cast<std::size_t>(k) + 1]; };
  // The window begins with the first bit wanted; it is multiplied by the significand in two words.
  fixed_point p(count + 1);
  const word m[2] = {static_cast<word>(angle.significand >> 32), static_cast<word>(angle.significand)};
  for (std::size_t i = count; i-- > 0;) {
    const int k = words_before + static_cast<int>(i);
    const word w = shift == 0 ? stored(k) : stored(k) << shift | stored(k + 1) >> (32 - shift);
    std::uint64_t carry = 0;
    for (std::size_t j = 2; j-- > 0; carry >>= 32)
      p[i + j + 1] = static_cast<word>(carry += std::uint64_t{w} * m[j] + p[i + j + 1]);
    p[i] = static_cast<word>(carry);
  }
  // p[0] and p[1] are multiples of 4. The two leading bits of p[2] are the quadrant, the others the fraction.
  const int quadrant = static_cast<int>(p[2] >> 30);
  fixed_point fraction(n);
  for (std::size_t k = 0; k < n; ++k) fraction[k + 1] = p[k + 2] << 2 | p[k + 3] >> 30;
  const bool negative = (fraction[1] >> 31) != 0;
  if (negative) {
    fixed_point rest = one(n);
    rest -= fraction;
    fraction = rest;
  }
  return {product(fraction, half_pi(n)), negative, (quadrant + negative) & 3};
}

// B. Taylor's series of sine or cosine, for r in [0, pi/4 + 2^-10]; every term is cut, so that the error is below two
// units a term.
fixed_point series(const fixed_point& r, bool of_sine) {
  const fixed_point square = product(r, r);
  fixed_point term = of_sine ? r : one(r.size() - 1);
  fixed_point s = term;
  bool minus = true;
  for (word k = of_sine ? 2 : 1; term.leading_zeros() < term.size(); k += 2, minus = !minus) {
    term = product(term, square);
    term /= k * (k + 1);
    if (minus)
      s -= term;
    else
      s += term;
  }
  return s;
}

}  // namespace

fixed_point placed(exact_number x, std::size_t n) { return placed(integer_form_of(x), n); }

signed_fixed_point value_at(function f, exact_number angle, std::size_t n) {
  const remainder r = reduced(integer_form_of(angle), n);
  // The sine of |angle| is that of the quadrant; cosine is even, sine odd.
  const bool of_sine = (f == function::sine) == (r.quadrant % 2 == 0);
  bool negative = f == function::sine ? r.quadrant >= 2 : r.quadrant == 1 || r.quadrant == 2;
  if (of_sine && r.negative) negative = !negative;
  if (f == function::sine && angle.high < 0) negative = !negative;
  return {series(r.value, of_sine), negative};
}

}  // namespace tessarn::angles
