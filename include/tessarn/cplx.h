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

/// A complex number, re + i im. Any pair of reals is a valid value; nothing is owned.
///
/// \code
/// cplx z(3, 4);                            // 3 + 4i
/// assert(z.lenld() == 5);                  // the modulus
/// assert(z * cplx(0, 1) == cplx(-4, 3));
/// assert(cplx(0, 2).sqrt().re > 0.99);     // 1 + 1i, up to rounding
/// \endcode
///
/// Some operations differ from textbook complex arithmetic, and callers rely on it:
/// - one real argument is an angle: `cplx(2.0)` is cos 2 + i sin 2, not 2 + 0i; write `cplx(2.0, 0.0)`;
/// - `!=` is true only when both parts differ, so it is not the negation of `==`;
/// - `<` and `>` compare moduli, so two different values can be neither;
/// - division by zero gives 0 and also sets the left operand to 0 unless it is constant;
/// - sqrt() is the root with non-negative imaginary part, not the principal one.
///
/// Results have the same bits on every machine. Moduli are formed from plain squares: magnitudes above about 1e154
/// have an infinite modulus, those below about 1e-162 the modulus 0, and the angles of both are wrong.
class TESSARN_API cplx {
 public:
  alignas(8) tessarn::real re;  ///< real part
  tessarn::real im;             ///< imaginary part

  /// 0 + 0i.
  cplx() noexcept : re(0), im(0) {}
  /// real_part + i imaginary_part.
  cplx(tessarn::real real_part, tessarn::real imaginary_part) noexcept : re(real_part), im(imaginary_part) {}
  /// The unit number at the angle (radians): cos angle + i sin angle. Not a real number.
  cplx(tessarn::real angle) noexcept {
    const auto unit = tessarn::angles::sin_cos(angle);
    re = unit.cosine;
    im = unit.sine;
  }
  cplx(const cplx&) = default;
  virtual ~cplx() = default;

  /// Copies both parts.
  cplx& operator=(cplx& b) noexcept { return *this = std::as_const(b); }

  cplx operator+(cplx& b) noexcept { return {re + b.re, im + b.im}; }
  cplx operator-(cplx& b) noexcept { return {re - b.re, im - b.im}; }
  /// (re b.re - im b.im, re b.im + im b.re), each product rounded.
  cplx operator*(cplx& b) noexcept { return std::as_const(*this) * std::as_const(b); }
  /// Both parts times k.
  cplx operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// The quotient by the reciprocal of |b|^2. When |b|^2 is 0 or NaN the result is 0, and this object
  /// is set to 0 as well.
  cplx operator/(cplx& b) noexcept { return *this / std::as_const(b); }
  /// Both parts times 1/k; k = 0 gives infinities and NaN.
  cplx operator/(tessarn::real k) noexcept { return std::as_const(*this) / k; }

  void operator+=(cplx& b) noexcept { *this += std::as_const(b); }
  void operator-=(cplx& b) noexcept { *this -= std::as_const(b); }
  /// The complex product; `z *= z` squares z.
  void operator*=(cplx& b) noexcept { *this *= std::as_const(b); }
  void operator*=(tessarn::real k) noexcept {
    re = tessarn::detail::product(re, k);
    im = tessarn::detail::product(im, k);
  }
  /// The quotient as by `/`; 0 when |b|^2 is 0 or NaN.
  void operator/=(cplx& b) noexcept { *this /= std::as_const(b); }
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }

  /// True when both parts are equal; a NaN part counts as equal.
  bool operator==(cplx& b) noexcept { return equals(b); }
  /// True only when both parts differ: (1, 2) != (1, 3) is false. A NaN part counts as equal.
  bool operator!=(cplx& b) noexcept { return differs(b); }
  /// Smaller modulus; false for equal moduli and for NaN.
  bool operator<(cplx& b) noexcept { return std::as_const(*this) < std::as_const(b); }
  /// Larger modulus; false for equal moduli and for NaN.
  bool operator>(cplx& b) noexcept { return std::as_const(*this) > std::as_const(b); }

  /// The modulus, sqrt(re^2 + im^2), without scaling against overflow.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The modulus rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return std::as_const(*this).lenul(); }

  /// The argument in [0, 2 pi), by the arc cosine: pi on the negative real axis also for im = -0.0,
  /// 0 for zero and NaN. Just below the positive axis rounding can give 2 pi itself.
  tessarn::real phi() noexcept { return std::as_const(*this).phi(); }

  /// The square root with half of the argument phi(), so its imaginary part is never negative:
  /// the root of (0, -4) is (-sqrt 2, sqrt 2).
  cplx sqrt() noexcept { return std::as_const(*this).sqrt(); }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. `!=` stands here once for each kind of
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

  /// Both parts with the other sign.
  cplx operator-() const noexcept { return {-re, -im}; }

 protected:
  /// The magnitude rounded half up, see tessarn::detail::round_magnitude.
  static unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up from 0 on, down below 0, see tessarn::detail::round_signed.
  static int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  bool equals(const cplx& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(re, b.re) && equal_or_unordered(im, b.im);
  }
  bool differs(const cplx& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return !equal_or_unordered(re, b.re) && !equal_or_unordered(im, b.im);
  }
  tessarn::real squared_modulus() const noexcept {
    using tessarn::detail::product;
    return product(re, re) + product(im, im);
  }
  bool squared_modulus_is_zero() const noexcept { return tessarn::detail::equal_or_unordered(squared_modulus(), 0); }
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
/// The number is the angle of a unit number, as everywhere: `z == 2.0` compares with cplx(2.0). A program's own
/// function is preferred.
/// @{
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
bool operator==(K angle, Z&& z) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit == std::as_const(z);
}
template <class Z, class K, class = tessarn::detail::if_is<Z, cplx>, class = tessarn::detail::if_number<K>,
          class = void>
bool operator==(Z&& z, K angle) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit == std::as_const(z);
}
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
bool operator!=(K angle, Z&& z) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit != std::as_const(z);
}
template <class Z, class K, class = tessarn::detail::if_is<Z, cplx>, class = tessarn::detail::if_number<K>,
          class = void>
bool operator!=(Z&& z, K angle) noexcept {
  const cplx unit(static_cast<tessarn::real>(angle));
  return unit != std::as_const(z);
}
/// @}

/// Both parts times k: `2 * z` is `z * 2`.
template <class K, class Z, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<Z, cplx>>
cplx operator*(K k, const Z& z) noexcept {
  return z * static_cast<tessarn::real>(k);
}

namespace tessarn {
using ::cplx;
}

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(cplx) == 24, "a cplx is its virtual table pointer and two reals");
