/// \file
/// Polynomials: in one variable (tessarn/binom.h), fitted through points and analysed as curves, and in two variables
/// (tessarn/hyperbinom.h), fitted through space points as surfaces. This header adds the operators that make new
/// polynomials.
///
/// \code
/// const binom p{1, 2}, q{0, 0, 3};              // 1 + 2 x and 3 x^2
/// assert((p + q)(2) == 17 && (p + q).size() == 3);
/// assert((p * q)(2) == 60 && (p * q).size() == 4);
/// assert((2 * p)(1) == 6);                      // p itself is not changed
/// const hyperbinom x{{0, 1}}, y{{0}, {1}};
/// assert((x * y)(3, 4) == 12);
/// \endcode
///
/// Fits go through normal equations and searches scan with a step; neither reports failure. tessarn/fit.h has fits that
/// tell what they are worth, tessarn/curve.h finds every zero, extreme point and inflection without a step.
#pragma once

#include "tessarn/binom.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/hyperbinom.h"
#include "tessarn/scalar.h"

namespace tessarn::detail {

/// The kind of polynomial that both P and Q are or derive from. There is none for a mixture of the two kinds: such
/// operators do not exist.
template <class P, class Q>
using if_polynomials = std::enable_if_t<(std::is_base_of_v<binom, P> && std::is_base_of_v<binom, Q>) ||
                                            (std::is_base_of_v<hyperbinom, P> && std::is_base_of_v<hyperbinom, Q>),
                                        std::conditional_t<std::is_base_of_v<binom, P>, binom, hyperbinom>>;
/// The kind of polynomial that P is or derives from.
template <class P>
using if_polynomial = if_polynomials<P, P>;

}  // namespace tessarn::detail

/// \name Sums, products and multiples as new polynomials
/// With the results of `+=`, `-=` and `*=` on a deep copy of the left operand, from which nothing is shared: a + b + c
/// makes two polynomials on its way. A program's own operators are preferred. Objects of derived classes count as the
/// polynomials that they contain.
/// Throws: std::bad_alloc.
/// @{
/// The sum, with the count or grade of the longer operand. hyperbinom: where q has the larger grade, the terms of p
/// with a power of y are lost, as in `p += q`, so that p + q and q + p can differ.
/// Cost: O(n) for n coefficients.
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator+(const P& p, const Q& q) {
  auto r = p.clone();
  r += q;
  return r;
}
/// The difference, with the count or grade of the longer operand, under the rule of the sum. Leading zeros are kept:
/// p - p has as many coefficients as p, all 0 or, where p has infinities and NaN, NaN.
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator-(const P& p, const Q& q) {
  auto r = p.clone();
  r -= q;
  return r;
}
/// The product, with n + nq - 1 coefficients or the grade g + gq - 1. Throws for two empty binom.
/// Cost: O(n nq) for n and nq coefficients.
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator*(const P& p, const Q& q) {
  auto r = p.clone();
  r *= q;
  return r;
}
/// Every coefficient times k, an integer or a floating-point number, which becomes a real first: integers beyond 2^53
/// are rounded.
template <class K, class P, class = tessarn::detail::if_number<K>>
tessarn::detail::if_polynomial<P> operator*(K k, const P& p) {
  auto r = p.clone();
  r *= static_cast<tessarn::real>(k);
  return r;
}
/// The product with the number on the right: p * k is k * p.
template <class P, class K, class = tessarn::detail::if_number<K>, class = void>
tessarn::detail::if_polynomial<P> operator*(const P& p, K k) {
  return k * p;
}
/// @}

/// The classes stand in the global namespace; these are second names.
namespace tessarn {
using ::binom;
using ::hyperbinom;
}  // namespace tessarn

// The layout on which callers of the compiled module rely.
static_assert(sizeof(void*) != 8 || (sizeof(binom) == 24 && sizeof(hyperbinom) == 24),
              "a polynomial is its virtual table pointer, the count and the coefficients");
