/// \file
/// Square matrices of reals (tessarn/sqmat_real.h) and of complex numbers (tessarn/sqmat_complex.h), and their product
/// as an operator. tessarn/matrix.h says what holds for all matrices.
///
/// How the two classes differ where input is degenerate, deliberately:
///
/// \verbatim
///                                    reals                              complex numbers
///     det() of 3 x 3                 rule of Sarrus                     elimination
///     zero pivot in det(), optimize  infinities, and NaN stored as 0    the rows below stay as they are
///     cof() for n < 2                0                                  1
///     solve()                        partial pivoting                   no pivoting
///     solve() of a singular matrix   the right-hand side stays          a zero component, never noticed
///     create(n)                      entries unspecified                zeros
/// \endverbatim
///
/// \code
/// const sqmat<long double> quarter{{0, -1}, {1, 0}};   // a turn by 90 degrees
/// const sqmat<long double> half = quarter * quarter;
/// assert(half.get(0, 0) == -1 && half.get(1, 1) == -1);
/// assert((quarter * sqmat<long double>(3)).getSize() == 0);   // the sizes differ: the empty matrix
/// \endcode
#pragma once

#include "tessarn/cplx.h"
#include "tessarn/detail/checked.h"
#include "tessarn/detail/matrices.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/sqmat_complex.h"
#include "tessarn/sqmat_real.h"

/// \name The product of square matrices
/// a b as a new matrix, with the entries that `*=` gives, without the copy that `c = a; c *= b` makes; empty when the
/// sizes differ (`*=` leaves its matrix alone then). Templates over the types of their operands, so that a program's
/// own function for square matrices, or its own template, is preferred. With TESSARN_CHECKED a program that multiplies
/// different sizes stops.
/// Throws: std::bad_alloc. Cost: O(n^3).
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

// The class stands in the global namespace; this is a second name.
namespace tessarn {
using ::sqmat;
}

// The layout on which callers of the compiled module rely.
static_assert(sizeof(void*) != 8 || (sizeof(sqmat<long double>) == 24 && sizeof(sqmat<cplx>) == 24),
              "a square matrix is its virtual table pointer, the entries and the size");
