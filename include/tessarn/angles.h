/// \file
/// Sine, cosine and their inverses, correctly rounded: of all doubles the one that is nearest to the
/// exact value.
///
/// The C library's functions differ from one system to another in the last bit; these do not, and the
/// classes of the library call no others. Angles are radians.
///
/// \code
/// assert(tessarn::angles::sin(tessarn::half_pi) == 1);
/// assert(tessarn::angles::acos(-1) == tessarn::pi);
/// const auto [sine, cosine] = tessarn::angles::sin_cos(1e22);
/// assert(sine == tessarn::angles::sin(1e22) && cosine == tessarn::angles::cos(1e22));
/// \endcode
///
/// Arguments are doubles and so are exact: the sine of tessarn::pi is 1.2e-16, since that constant is
/// not pi.
///
/// Cost: about that of the C library's functions; less for angles above 1e5. Nothing is allocated.
/// Round-to-nearest is required, as everywhere in the library; in another mode the results are not
/// correctly rounded.
///
/// Source: two phases after A. Ziv, Fast evaluation of elementary mathematical functions with
/// correctly rounded last bit, 1991; large angles are reduced after M. Payne and R. Hanek, Radian
/// reduction for trigonometric functions, 1983. Bounds and proofs: docs/angles.md.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn::angles {

/// The sine of an angle of any size, in [-1, 1].
/// Special results: x itself for zeros, with its sign; NaN for infinities and NaN.
TESSARN_API real sin(real x) noexcept;
/// The cosine of an angle of any size, in [-1, 1]. Never 0, since no double is an odd multiple of
/// pi/2.
/// Special results: 1 for zeros; NaN for infinities and NaN.
TESSARN_API real cos(real x) noexcept;
/// The arc sine in [-pi/2, pi/2].
/// Special results: x itself for zeros, with its sign; NaN outside [-1, 1] and for NaN. Nothing is
/// clamped: a sine that rounding has pushed past 1 gives NaN.
TESSARN_API real asin(real x) noexcept;

/// The arc cosine in [0, pi].
/// Special results: +0 for 1; NaN outside [-1, 1] and for NaN.
/// Accuracy: near 1 the cosine of an angle holds half of its digits, whatever function computes the
/// angle: angles below about 1e-8 have the cosine 1.
TESSARN_API real acos(real x) noexcept;

/// The sine and the cosine of one angle; unpack it by `const auto [sine, cosine]`.
struct sine_and_cosine {
  real sine;
  real cosine;
};
/// sin(x) and cos(x), with the bits that the two functions give and one reduction of the angle for
/// both.
TESSARN_API sine_and_cosine sin_cos(real x) noexcept;

}  // namespace tessarn::angles
