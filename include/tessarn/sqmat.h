/// \file
/// Square matrices; tessarn/matrix.h says what holds for all matrices.
#pragma once

#include "tessarn/cplx.h"
#include "tessarn/detail/checked.h"
#include "tessarn/detail/matrices.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/sqmat_complex.h"
#include "tessarn/sqmat_real.h"

/// \name The product of square matrices
/// a b as a new matrix, with the entries that `*=` gives, without the copy that `c = a; c *= b` makes; empty when the
/// sizes differ. Templates over the types of their operands, so that a program's own function for square matrices, or
/// its own template, is preferred.
/// @{
#if !defined(TESSARN_CHECKED)
template <class A, class B, class = tessarn::detail::if_is<A, sqmat<long double>>,
          class = tessarn::detail::if_is<B, sqmat<long double>>>
sqmat<long double> operator*(const A& a, const B& b) {
  return tessarn::detail::unchecked::product(a, b);
}
template <class A, class B, class = tessarn::detail::if_is<A, sqmat<cplx>>,
          class = tessarn::detail::if_is<B, sqmat<cplx>>>
sqmat<cplx> operator*(const A& a, const B& b) {
  return tessarn::detail::unchecked::product(a, b);
}
#else
template <class A, class = tessarn::detail::if_is<A, sqmat<long double>>>
sqmat<long double> operator*(const A& a, tessarn::detail::operand<sqmat<long double>> b) {
  b.where.require(a.getSize() == b.value.getSize(), "sqmat * sqmat: the sizes differ");
  return tessarn::detail::unchecked::product(a, b.value);
}
template <class A, class = tessarn::detail::if_is<A, sqmat<cplx>>>
sqmat<cplx> operator*(const A& a, tessarn::detail::operand<sqmat<cplx>> b) {
  b.where.require(a.getSize() == b.value.getSize(), "sqmat * sqmat: the sizes differ");
  return tessarn::detail::unchecked::product(a, b.value);
}
#endif
/// @}

namespace tessarn {
using ::sqmat;
}

static_assert(sizeof(void*) != 8 || (sizeof(sqmat<long double>) == 24 && sizeof(sqmat<cplx>) == 24),
              "a square matrix is its virtual table pointer, the entries and the size");
