/// \file
/// Complex numbers.
#pragma once

#include "tessarn/scalar.h"

/// A complex number, re + i im. Any pair of reals is a valid value; nothing is owned.
///
/// Some operations differ from textbook complex arithmetic, and callers rely on it:
/// - one real argument is an angle: `cplx(2.0)` is cos 2 + i sin 2, not 2 + 0i;
/// - `!=` is true only when both parts differ, so it is not the negation of `==`;
/// - `<` and `>` compare moduli, so two different values can be neither;
/// - division by zero gives 0 and also sets the left operand to 0;
/// - sqrt() is the root with non-negative imaginary part, not the principal one.
///
/// Results are exact in their bits on every machine, up to the C library's sin, cos and acos in the
/// angle constructor, phi() and sqrt().
class TESSARN_API cplx {
  using real = tessarn::real;

 public:
  real re;  ///< real part
  real im;  ///< imaginary part

  /// 0 + 0i.
  cplx() noexcept : re(0), im(0) {}
  /// real + i imag.
  cplx(real real_part, real imaginary_part) noexcept : re(real_part), im(imaginary_part) {}
  /// The unit number at the angle (radians): cos angle + i sin angle. Not a real number.
  cplx(real angle) noexcept : re(std::cos(angle)), im(std::sin(angle)) {}
  cplx(const cplx&) = default;
  virtual ~cplx() = default;

  /// Copies both parts.
  cplx& operator=(cplx& b) noexcept {
    re = b.re;
    im = b.im;
    return *this;
  }

  cplx operator+(cplx& b) noexcept { return {re + b.re, im + b.im}; }
  cplx operator-(cplx& b) noexcept { return {re - b.re, im - b.im}; }
  /// (re b.re - im b.im, re b.im + im b.re), each product rounded.
  cplx operator*(cplx& b) noexcept {
    using tessarn::detail::product;
    return {product(re, b.re) - product(im, b.im), product(re, b.im) + product(im, b.re)};
  }
  /// Both parts times k.
  cplx operator*(real k) noexcept {
    using tessarn::detail::product;
    return {product(re, k), product(im, k)};
  }
  /// The quotient by the reciprocal of |b|^2. When |b|^2 is 0 or NaN the result is 0, and this object
  /// is set to 0 as well.
  cplx operator/(cplx& b) noexcept {
    if (b.squared_modulus_is_zero()) {
      re = im = 0;
      return {};
    }
    return quotient(b);
  }
  /// Both parts times 1/k; k = 0 gives infinities and NaN.
  cplx operator/(real k) noexcept {
    return *this * (1 / k);
  }

  void operator+=(cplx& b) noexcept {
    re += b.re;
    im += b.im;
  }
  void operator-=(cplx& b) noexcept {
    re -= b.re;
    im -= b.im;
  }
  /// The complex product; `z *= z` squares z.
  void operator*=(cplx& b) noexcept {
    const cplx p = *this * b;
    re = p.re;
    im = p.im;
  }
  void operator*=(real k) noexcept {
    re = tessarn::detail::product(re, k);
    im = tessarn::detail::product(im, k);
  }
  /// The quotient as by `/`; 0 when |b|^2 is 0 or NaN.
  void operator/=(cplx& b) noexcept {
    const cplx q = *this / b;
    re = q.re;
    im = q.im;
  }
  void operator/=(real k) noexcept { *this *= 1 / k; }

  /// True when both parts are equal; a NaN part counts as equal.
  bool operator==(cplx& b) noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(re, b.re) && equal_or_unordered(im, b.im);
  }
  /// True only when both parts differ: (1, 2) != (1, 3) is false. A NaN part counts as equal.
  bool operator!=(cplx& b) noexcept {
    using tessarn::detail::equal_or_unordered;
    return !equal_or_unordered(re, b.re) && !equal_or_unordered(im, b.im);
  }
  /// Smaller modulus; false for equal moduli and for NaN.
  bool operator<(cplx& b) noexcept { return lenld() < b.lenld(); }
  /// Larger modulus; false for equal moduli and for NaN.
  bool operator>(cplx& b) noexcept { return lenld() > b.lenld(); }

  /// The modulus, sqrt(re^2 + im^2), without scaling against overflow.
  real lenld() noexcept { return std::sqrt(squared_modulus()); }
  /// The modulus rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return rndu(lenld()); }

  /// The argument in [0, 2 pi), by the arc cosine: pi on the negative real axis also for im = -0.0,
  /// 0 for zero and NaN. Just below the positive axis rounding can give 2 pi itself.
  real phi() noexcept {
    const real r = lenld();
    if (tessarn::detail::equal_or_unordered(r, 0)) return 0;
    return argument(r, -(re / r));
  }

  /// The square root with half of the argument phi(), so its imaginary part is never negative:
  /// the root of (0, -4) is (-sqrt 2, sqrt 2).
  inline cplx sqrt() noexcept;

  /// \name The same for constants and temporaries
  /// @{
  cplx& operator=(const cplx& b) noexcept { return *this = tessarn::detail::mutable_ref(b); }
  cplx operator+(const cplx& b) const noexcept { return {re + b.re, im + b.im}; }
  cplx operator-(const cplx& b) const noexcept { return {re - b.re, im - b.im}; }
  cplx operator*(const cplx& b) const noexcept { return self() * other(b); }
  cplx operator*(real k) const noexcept { return self() * k; }
  cplx operator/(const cplx& b) const noexcept { return b.squared_modulus_is_zero() ? cplx() : quotient(b); }
  cplx operator/(const cplx& b) noexcept { return *this / other(b); }
  cplx operator/(real k) const noexcept { return self() / k; }
  void operator+=(const cplx& b) noexcept { *this += other(b); }
  void operator-=(const cplx& b) noexcept { *this -= other(b); }
  void operator*=(const cplx& b) noexcept { *this *= other(b); }
  void operator/=(const cplx& b) noexcept { *this /= other(b); }
  bool operator==(const cplx& b) const noexcept { return self() == other(b); }
  bool operator!=(const cplx& b) const noexcept { return self() != other(b); }
  bool operator<(const cplx& b) const noexcept { return self() < other(b); }
  bool operator>(const cplx& b) const noexcept { return self() > other(b); }
  real lenld() const noexcept { return self().lenld(); }
  tessarn::ulong lenul() const noexcept { return self().lenul(); }
  real phi() const noexcept { return self().phi(); }
  cplx sqrt() const noexcept { return self().sqrt(); }
  /// @}

 protected:
  /// The magnitude rounded half up, see tessarn::detail::round_magnitude.
  static unsigned int rndu(real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up from 0 on, down below 0, see tessarn::detail::round_signed.
  static int rndi(real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  cplx& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static cplx& other(const cplx& b) noexcept { return tessarn::detail::mutable_ref(b); }

  real squared_modulus() const noexcept {
    using tessarn::detail::product;
    return product(re, re) + product(im, im);
  }
  bool squared_modulus_is_zero() const noexcept {
    return tessarn::detail::equal_or_unordered(squared_modulus(), 0);
  }
  cplx quotient(const cplx& b) const noexcept {
    using tessarn::detail::product;
    const real k = 1 / b.squared_modulus();
    return {product(product(re, b.re) + product(im, b.im), k),
            product(product(im, b.re) - product(re, b.im), k)};
  }
  // The argument for the modulus r > 0; left_cosine is the cosine of the angle to the negative axis,
  // which phi() and sqrt() round differently.
  real argument(real r, real left_cosine) const noexcept {
    using namespace tessarn;
    if (re >= 0) {
      const real a = std::acos(re / r);
      return im >= 0 ? a : two_pi - a;
    }
    const real a = std::acos(left_cosine);
    return im >= 0 ? pi - a : pi + a;
  }
};

inline cplx cplx::sqrt() noexcept {
  using tessarn::detail::product;
  const real r = lenld();
  const real s = std::sqrt(r);
  const real a = tessarn::detail::equal_or_unordered(r, 0) ? 0 : argument(r, (-1 / r) * re);
  const real h = product(a, static_cast<real>(0.5));
  const real h2 = h + tessarn::pi;
  const real t = product(std::cos(h2) * s, std::sin(h2));
  if (product(t, t) - r == re && product(s + s, t) == im) return {t, s};
  return {product(s, std::cos(h)), product(s, std::sin(h))};
}

static_assert(sizeof(void*) != 8 || sizeof(cplx) == 24, "a cplx is its virtual table pointer and two reals");
