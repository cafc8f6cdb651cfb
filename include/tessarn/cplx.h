/// \file
/// Complex numbers.
#pragma once

#include <cmath>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"

/// A complex number, re + i im. Any pair of reals is a valid value, NaN and infinities included.
///
/// \code
/// cplx z(3, 4);                            // 3 + 4i
/// assert(z.lenld() == 5);                  // the modulus
/// assert(z * cplx(0, 1) == cplx(-4, 3));
/// assert(cplx(0, 2).sqrt().re > 0.99);     // 1 + 1i, up to rounding
/// \endcode
///
/// Some operations differ from textbook complex arithmetic, and callers rely on it:
/// - one real argument is an angle: `cplx(2.0)` is cos 2 + i sin 2, not 2 + 0i; write
///   `cplx(2.0, 0.0)`;
/// - `!=` is true only when both parts differ, so it is not the negation of `==`;
/// - `<` and `>` compare moduli, so two different values can be neither;
/// - division by zero gives 0 and also sets the left operand to 0 unless it is constant;
/// - sqrt() is the root with non-negative imaginary part, not the principal one.
///
/// \code
/// assert(cplx(0.0) == cplx(1, 0));         // the unit number at the angle 0
/// assert(!(cplx(1, 2) != cplx(1, 3)));     // the real parts agree
/// assert(!(cplx(3, 4) < cplx(5, 0)) && !(cplx(3, 4) > cplx(5, 0)));
/// cplx a(3, 4);
/// assert(a / cplx(0, 0) == cplx(0, 0) && a == cplx(0, 0));
/// \endcode
///
/// Range: moduli are formed from plain squares. Magnitudes above about 1e154 have an infinite
/// modulus, those below about 1e-162 the modulus 0, and the angles of both are wrong.
///
/// Reproducibility: results have the same bits on every machine.
///
/// Failure and aliasing: no member throws, allocates or reports an error; a numeric failure shows as
/// NaN, as an infinity or as the fallback that the member names. An operand may be the object itself.
///
/// Cost: each member takes a constant number of operations. The constructor from an angle, phi() and
/// sqrt() are the dear ones, since they evaluate angles.
///
/// Memory: an object owns nothing. It takes 24 bytes: the pointer to its virtual table, re and im, in
/// this order.
class TESSARN_API cplx {
 public:
  alignas(8) tessarn::real re;  ///< real part
  tessarn::real im;             ///< imaginary part

  /// 0 + 0i.
  cplx() noexcept : re(0), im(0) {}
  /// real_part + i imaginary_part, both stored as they are.
  cplx(tessarn::real real_part, tessarn::real imaginary_part) noexcept : re(real_part), im(imaginary_part) {}
  /// The unit number at the angle (radians): cos angle + i sin angle. Not a real number.
  /// Implicit: a single real converts in this way wherever a cplx is expected.
  /// Special results: NaN in both parts for an infinite or NaN angle.
  cplx(tessarn::real angle) noexcept {
    const auto unit = tessarn::angles::sin_cos(angle);
    re = unit.cosine;
    im = unit.sine;
  }
  /// Copies both parts.
  cplx(const cplx&) = default;
  virtual ~cplx() = default;

  /// Copies both parts.
  /// \return this object
  cplx& operator=(cplx& b) noexcept { return *this = std::as_const(b); }

  /// (re + b.re, im + b.im).
  cplx operator+(cplx& b) noexcept { return {re + b.re, im + b.im}; }
  /// (re - b.re, im - b.im).
  cplx operator-(cplx& b) noexcept { return {re - b.re, im - b.im}; }
  /// (re b.re - im b.im, re b.im + im b.re), each product rounded before the sum.
  /// Special results: there is no special case for infinities or zeros, so an infinite part gives NaN
  /// where it meets a zero: (inf, 0) (0, 1) is (NaN, inf).
  cplx operator*(cplx& b) noexcept { return std::as_const(*this) * std::as_const(b); }
  /// Both parts times k, which is a real factor here and not an angle. No test for k = 0.
  cplx operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }

  /// The quotient ((re b.re + im b.im) k, (im b.re - re b.im) k) with k = 1/d and d = b.re^2 +
  /// b.im^2.
  /// Special results: when d is 0 or NaN the result is 0, and this object is set to 0 as well. d is 0
  /// also for |b| below about 1e-162. For |b| up to about 7e-155 k is infinite, and so are the parts,
  /// or NaN. For |b| above about 1e154 d is infinite and k = 0: parts are 0, or NaN where a product
  /// overflows.
  cplx operator/(cplx& b) noexcept { return *this / std::as_const(b); }
  /// Both parts times 1/k. No test for k = 0, which gives infinities and NaN, as any |k| below about
  /// 5.6e-309 does.
  cplx operator/(tessarn::real k) noexcept { return std::as_const(*this) / k; }

  /// Adds b, part by part.
  void operator+=(cplx& b) noexcept { *this += std::as_const(b); }
  /// Subtracts b, part by part.
  void operator-=(cplx& b) noexcept { *this -= std::as_const(b); }
  /// The complex product as by `*`; `z *= z` squares z.
  void operator*=(cplx& b) noexcept { *this *= std::as_const(b); }
  /// Both parts times k.
  void operator*=(tessarn::real k) noexcept {
    re = tessarn::detail::product(re, k);
    im = tessarn::detail::product(im, k);
  }
  /// The quotient as by `/`; 0 when |b|^2 is 0 or NaN. `z /= z` divides by the z from before.
  void operator/=(cplx& b) noexcept { *this /= std::as_const(b); }
  /// Both parts times 1/k, as by `/`.
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }

  /// True when both parts are equal, without a tolerance. -0.0 equals 0.0; a NaN part counts as equal
  /// to anything.
  bool operator==(cplx& b) noexcept { return equals(b); }
  /// True only when both parts differ: (1, 2) != (1, 3) is false. A NaN part counts as equal.
  /// To ask whether two values differ, write `!(a == b)`.
  bool operator!=(cplx& b) noexcept { return differs(b); }
  /// True when the modulus is smaller; false for equal moduli and where a modulus is NaN.
  /// Arguments play no part: -4 < 5i is true. Two values whose moduli overflow are not ordered.
  bool operator<(cplx& b) noexcept { return std::as_const(*this) < std::as_const(b); }
  /// True when the modulus is larger; false for equal moduli and where a modulus is NaN.
  bool operator>(cplx& b) noexcept { return std::as_const(*this) > std::as_const(b); }

  /// The modulus, sqrt(re^2 + im^2), without scaling against overflow.
  /// Special results: NaN when a part is NaN, also when the other one is infinite.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The modulus rounded to an integer, half up: 0.5 gives 1.
  /// Special results: 2^31 when the rounded modulus is 2^31 or more, infinite or NaN.
  tessarn::ulong lenul() noexcept { return std::as_const(*this).lenul(); }

  /// The argument in [0, 2 pi), in radians from the positive real axis, by the arc cosine of re/|z|,
  /// or of -re/|z| when re < 0.
  /// Special results: pi on the negative real axis, also for im = -0.0; 0 for zero and where the
  /// modulus is NaN; NaN for an infinite re; pi/2 or 3 pi/2 where the modulus overflows and re is
  /// finite. Just below the positive axis rounding can give 2 pi itself.
  /// Accuracy: the arc cosine loses digits next to the real axis: angles to it below about 1.5e-8
  /// come out as 0 (or 2 pi, or pi).
  tessarn::real phi() noexcept { return std::as_const(*this).phi(); }

  /// The square root with half of the argument phi(), so its imaginary part is never negative: the
  /// root of (0, -4) is (-sqrt 2, sqrt 2), where the principal root is (sqrt 2, -sqrt 2).
  /// Special results: 0 for zero; NaN where a part is NaN or re is infinite; infinite parts where the
  /// modulus overflows. The root of a negative real has a real part of about 6e-17 times the modulus
  /// of the root, since pi/2 is rounded.
  cplx sqrt() noexcept { return std::as_const(*this).sqrt(); }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. The one exception is division: a
  /// constant left operand stays as it is where b is zero. `!=` stands here once for each kind of
  /// operand: otherwise C++20 may choose a reversed `==` and negate it.
  /// @{
  cplx& operator=(const cplx& b) noexcept {
    re = b.re;
    im = b.im;
    return *this;
  }
  cplx operator+(const cplx& b) const noexcept { return {re + b.re, im + b.im}; }
  cplx operator-(const cplx& b) const noexcept { return {re - b.re, im - b.im}; }
  cplx operator*(const cplx& b) const noexcept {
    using tessarn::detail::product;
    return {product(re, b.re) - product(im, b.im), product(re, b.im) + product(im, b.re)};
  }
  cplx operator*(tessarn::real k) const noexcept {
    using tessarn::detail::product;
    return {product(re, k), product(im, k)};
  }
  cplx operator/(const cplx& b) const noexcept { return b.squared_modulus_is_zero() ? cplx() : quotient(b); }
  cplx operator/(const cplx& b) noexcept {
    if (!b.squared_modulus_is_zero()) return quotient(b);
    re = im = 0;
    return {};
  }
  cplx operator/(tessarn::real k) const noexcept { return *this * (1 / k); }
  void operator+=(const cplx& b) noexcept {
    re += b.re;
    im += b.im;
  }
  void operator-=(const cplx& b) noexcept {
    re -= b.re;
    im -= b.im;
  }
  void operator*=(const cplx& b) noexcept { *this = std::as_const(*this) * b; }
  void operator/=(const cplx& b) noexcept { *this = std::as_const(*this) / b; }
  bool operator==(const cplx& b) const noexcept { return equals(b); }
  bool operator!=(const cplx& b) const noexcept { return differs(b); }
  bool operator!=(cplx& b) const noexcept { return differs(b); }
  bool operator!=(cplx&& b) const noexcept { return differs(b); }
  bool operator!=(const cplx& b) noexcept { return differs(b); }
  bool operator!=(cplx&& b) noexcept { return differs(b); }
  bool operator<(const cplx& b) const noexcept { return lenld() < b.lenld(); }
  bool operator>(const cplx& b) const noexcept { return lenld() > b.lenld(); }
  tessarn::real lenld() const noexcept { return std::sqrt(squared_modulus()); }
  tessarn::ulong lenul() const noexcept { return rndu(lenld()); }
  tessarn::real phi() const noexcept {
    const tessarn::real r = lenld();
    if (tessarn::detail::equal_or_unordered(r, 0)) return 0;
    return argument(r, -(re / r));
  }
  cplx sqrt() const noexcept {
    using tessarn::detail::product;
    const tessarn::real r = lenld();
    const tessarn::real s = std::sqrt(r);
    const tessarn::real a = tessarn::detail::equal_or_unordered(r, 0) ? 0 : argument(r, (-1 / r) * re);
    const tessarn::real h = product(a, static_cast<tessarn::real>(0.5));
    const tessarn::real h2 = h + tessarn::pi;
    const auto turned = tessarn::angles::sin_cos(h2);
    const tessarn::real t = product(turned.cosine * s, turned.sine);
    if (product(t, t) - r == re && product(s + s, t) == im) return {t, s};
    const auto half = tessarn::angles::sin_cos(h);
    return {product(s, half.cosine), product(s, half.sine)};
  }
  /// @}

  /// Both parts with the other sign; a zero changes its sign, too.
  cplx operator-() const noexcept { return {-re, -im}; }

 protected:
  /// The magnitude rounded half up, see tessarn::detail::round_magnitude.
  static unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up from 0 on, down below 0, see tessarn::detail::round_signed.
  static int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  // Part by part, with a NaN part counted as equal: a hand-written test, so that no compiler setting
  // decides.
  bool equals(const cplx& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(re, b.re) && equal_or_unordered(im, b.im);
  }
  // Not the negation of equals(): both parts have to differ.
  bool differs(const cplx& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return !equal_or_unordered(re, b.re) && !equal_or_unordered(im, b.im);
  }
  // Rounds each square before the sum, in every caller's build.
  tessarn::real squared_modulus() const noexcept {
    using tessarn::detail::product;
    return product(re, re) + product(im, im);
  }
  // True for NaN as well: division counts both as zero.
  bool squared_modulus_is_zero() const noexcept { return tessarn::detail::equal_or_unordered(squared_modulus(), 0); }
  // The quotient for a squared modulus that is neither 0 nor NaN, by one reciprocal instead of two
  // divisions.
  cplx quotient(const cplx& b) const noexcept {
    using tessarn::detail::product;
    const tessarn::real k = 1 / b.squared_modulus();
    return {product(product(re, b.re) + product(im, b.im), k), product(product(im, b.re) - product(re, b.im), k)};
  }
  // The argument for the modulus r > 0; left_cosine is the cosine of the angle to the negative axis,
  // which phi() and sqrt() round differently.
  tessarn::real argument(tessarn::real r, tessarn::real left_cosine) const noexcept {
    using namespace tessarn;
    if (re >= 0) {
      const tessarn::real a = tessarn::angles::acos(re / r);
      return im >= 0 ? a : two_pi - a;
    }
    const tessarn::real a = tessarn::angles::acos(left_cosine);
    return im >= 0 ? pi - a : pi + a;
  }
};

/// \name Comparison with a real number
/// The number is the angle of a unit number, as everywhere: `z == 2.0` compares with cplx(2.0). To
/// compare with a real value write `z == cplx(2.0, 0.0)`. NaN parts count as equal, and `!=` asks for
/// both parts to differ, as between two complex numbers.
/// The operators are templates so that a program's own function is preferred. Cost: one sine and one
/// cosine.
/// @{
/// The angle on the left.
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
bool operator==(K angle, Z&& z) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit == std::as_const(z);
}
/// The angle on the right.
template <class Z, class K, class = tessarn::detail::if_is<Z, cplx>, class = tessarn::detail::if_number<K>,
          class = void>
bool operator==(Z&& z, K angle) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit == std::as_const(z);
}
/// True only when both parts differ from those of the unit number.
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
bool operator!=(K angle, Z&& z) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit != std::as_const(z);
}
/// The angle on the right.
template <class Z, class K, class = tessarn::detail::if_is<Z, cplx>, class = tessarn::detail::if_number<K>,
          class = void>
bool operator!=(Z&& z, K angle) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit != std::as_const(z);
}
/// @}

/// Both parts times k: `2 * z` is `z * 2`. k is a real factor here and not an angle.
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
cplx operator*(K k, const Z& z) noexcept {
  return z * static_cast<tessarn::real>(k);
}

namespace tessarn {
using ::cplx;
}

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(cplx) == 24, "a cplx is its virtual table pointer and two reals");
