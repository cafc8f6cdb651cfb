/// \file
/// Polynomials in one variable, fitted through points and analysed as curves, and polynomials in two
/// variables, fitted through space points.
#pragma once

#include "tessarn/binom.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/hyperbinom.h"
#include "tessarn/scalar.h"

namespace tessarn::detail {

/// The kind of polynomial that both P and Q are or derive from.
template <class P, class Q>
using if_polynomials = std::enable_if_t<(std::is_base_of_v<binom, P> && std::is_base_of_v<binom, Q>) ||
                                            (std::is_base_of_v<hyperbinom, P> && std::is_base_of_v<hyperbinom, Q>),
                                        std::conditional_t<std::is_base_of_v<binom, P>, binom, hyperbinom>>;
template <class P>
using if_polynomial = if_polynomials<P, P>;

}  // namespace tessarn::detail

/// \name Sums, products and multiples as new polynomials
/// With the results of `+=`, `-=` and `*=` on a deep copy of the left operand. A program's own operators are preferred.
/// @{
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator+(const P& p, const Q& q) {
  auto r = p.clone();
  r += q;
  return r;
}
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator-(const P& p, const Q& q) {
  auto r = p.clone();
  r -= q;
  return r;
}
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator*(const P& p, const Q& q) {
  auto r = p.clone();
  r *= q;
  return r;
}
template <class K, class P, class = tessarn::detail::if_number<K>>
tessarn::detail::if_polynomial<P> operator*(K k, const P& p) {
  auto r = p.clone();
  r *= static_cast<tessarn::real>(k);
  return r;
}
template <class P, class K, class = tessarn::detail::if_number<K>, class = void>
tessarn::detail::if_polynomial<P> operator*(const P& p, K k) {
  return k * p;
}
/// @}

namespace tessarn {
using ::binom;
using ::hyperbinom;
}  // namespace tessarn

static_assert(sizeof(void*) != 8 || (sizeof(binom) == 24 && sizeof(hyperbinom) == 24),
              "a polynomial is its virtual table pointer, the count and the coefficients");
