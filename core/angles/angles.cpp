// Correctly rounded sine, cosine, arc sine and arc cosine: a quick phase, and where its bound leaves two candidates,
// the accurate phase that decides between them. The method, the bounds and their proofs: docs/angles.md.
#include "tessarn/angles.h"

#include <cmath>
#include <limits>

#include "core/angles/decision.h"
#include "core/angles/quick.h"

namespace tessarn::angles {
namespace {

// Below this magnitude sine and arc sine round to x, from which they differ by less than x^3/5, and cosine rounds to 1.
constexpr double tiny = 0x1p-27;

// Where the rest of an angle next to a multiple of pi is smaller than this, its relative error needs more bits of pi.
constexpr double least_rest = 0x1p-16;

// x reduced, for a sine where turn is 0 and for a cosine where it is 256, a quarter turn.
inline reduced reduce(double x, unsigned turn) noexcept {
  if (std::fabs(x) <= 0x1p20) {
    const quotient q = nearest_quotient(x);
    const reduced r{rest_after(x, q.k), q.place + turn};
    const bool cancels = (r.place & 511) == 0 && std::fabs(r.rest.high) < least_rest && q.k != 0;
    if (!cancels) [[likely]]
      return r;
  }
  reduced r = reduce_by_bits(x);
  r.place += turn;
  return r;
}

// The sine of a reduced angle to about 66 bits, rounded.
inline rounding quick(const reduced& r) noexcept {
  const quick_sine s = (r.place & 511) == 0 ? short_sine(r) : sine_at(r);
  const rounding y = rounded(s.magnitude, quick_error);
  return {s.sign * y.least, s.sign * y.greatest};
}

inline bool is_finite(double magnitude) noexcept { return magnitude <= std::numeric_limits<double>::max(); }

// sin x where turn is 0 and cos x where it is 256, for every x. Kept out of the common path, which it would only
// lengthen.
[[gnu::noinline]] double sine_of_any(double x, unsigned turn) noexcept {
  const double magnitude = std::fabs(x);
  if (magnitude < tiny) return turn == 0 ? x : 1;
  if (!is_finite(magnitude)) return x - x;
  const rounding y = quick(reduce(x, turn));
  return y.decided() ? y.least : decide(turn == 0 ? function::sine : function::cosine, x, y.least, y.greatest);
}

// The common path of both: angles up to 48 with a rest that does not cancel and a result that the quick phase decides.
inline double sine(double x, unsigned turn) noexcept {
  const double magnitude = std::fabs(x);
  if (magnitude >= tiny && magnitude <= short_angle) [[likely]] {
    const quotient q = nearest_quotient(x);
    const reduced r{rest_of_short_angle(x, q.k), q.place + turn};
    if ((r.place & 511) != 0) [[likely]] {
      const quick_sine s = sine_at(r);
      const rounding y = rounded(s.magnitude, quick_error);
      if (y.decided()) [[likely]]
        return s.sign * y.least;
    }
  }
  return sine_of_any(x, turn);
}

// The table and its series go to here. Nearer to 1 the series needs more terms than the root of half_arc_cosine()
// costs.
constexpr double series_end = 0.75;

// 1 - 2 sin^2(a/2) = cos a: for |x| > 3/4 the arc cosine of |x| is 2 asin(sqrt((1 - |x|) / 2)), and the square root has
// the low part (t - h^2) / (2 h).
inline two_part half_arc_cosine(double magnitude) noexcept {
  const double t = 0.5 * (1 - magnitude);
  const double h = std::sqrt(t);
  const double shifted = h * 0x1.0000002p27;
  const double h1 = shifted - (shifted - h), h2 = h - h1;
  const double rest = ((t - h1 * h1) - 2 * (h1 * h2)) - h2 * h2;
  return quick_arc_sine({h, rest / (2 * h)});
}

inline two_part difference(double high, double low, two_part v) noexcept {
  const two_part s = ordered_sum(high, -v.high);
  return {s.high, s.low + (low - v.low)};
}

inline double arc_sine(double x) noexcept {
  const double magnitude = std::fabs(x);
  two_part v;
  if (magnitude <= series_end) {
    if (magnitude < tiny) return x;
    v = quick_arc_sine({magnitude, 0});
  } else {
    if (!(magnitude < 1)) return magnitude == 1 ? std::copysign(half_pi_high, x) : (x - x) / (x - x);
    v = difference(half_pi_high, half_pi_low, times(2.0, half_arc_cosine(magnitude)));
  }
  const rounding y = rounded(times(sign_of(x), v), quick_error);
  return y.decided() ? y.least : decide_inverse(function::sine, x, y.least, y.greatest);
}

inline double arc_cosine(double x) noexcept {
  const double magnitude = std::fabs(x);
  two_part v;
  if (magnitude <= series_end) {
    v = difference(half_pi_high, half_pi_low, times(sign_of(x), quick_arc_sine({magnitude, 0})));
  } else {
    if (!(magnitude < 1)) return magnitude != 1 ? (x - x) / (x - x) : x > 0 ? 0 : 2 * half_pi_high;
    static constexpr double start[2][2] = {{0, 0}, {2 * half_pi_high, 2 * half_pi_low}};
    const double* from = start[std::signbit(x)];
    v = difference(from[0], from[1], times(-2 * sign_of(x), half_arc_cosine(magnitude)));
  }
  const rounding y = rounded(v, quick_error);
  return y.decided() ? y.least : decide_inverse(function::cosine, x, y.least, y.greatest);
}

}  // namespace

real sin(real x) noexcept { return sine(static_cast<double>(x), 0); }
real cos(real x) noexcept { return sine(static_cast<double>(x), 256); }
real asin(real x) noexcept { return arc_sine(static_cast<double>(x)); }
real acos(real x) noexcept { return arc_cosine(static_cast<double>(x)); }

sine_and_cosine sin_cos(real angle) noexcept {
  const auto x = static_cast<double>(angle);
  const double magnitude = std::fabs(x);
  if (magnitude < tiny || !is_finite(magnitude)) return {sine(x, 0), sine(x, 256)};
  reduced r = reduce(x, 0);
  const bool next_to_half_turn = ((r.place + 256) & 511) == 0;
  const rounding s = quick(r);
  r = next_to_half_turn ? reduce(x, 256) : reduced{r.rest, r.place + 256};
  const rounding c = quick(r);
  return {s.decided() ? s.least : decide(function::sine, x, s.least, s.greatest),
          c.decided() ? c.least : decide(function::cosine, x, c.least, c.greatest)};
}

}  // namespace tessarn::angles
