// The LU factorisation of a square matrix in double precision with both factors and their inverses, for proofs.
#pragma once

#include <cstddef>

namespace tessarn::detail {

// From one row of these matrices to the next, at least n; a multiple of 8.
std::size_t factors_stride(std::size_t n);

// P A = L U with partial pivoting, in place: the multipliers below the diagonal of w, whose rows have zeros behind them
// and are factors_stride(n) apart, and order[i], the row of A that became row i. False when a column of candidate
// pivots is 0 or holds a NaN. No NaN becomes 0. w begins at a whole cache line.
bool factorise(double* w, std::size_t n, std::size_t* order);

// The transposed inverses of the two factors, row by row as w, with zeros beside the triangles. The factors are finite.
void invert_factors(const double* w, std::size_t n, double* lower, double* upper);

// product = lower upper, of these transposed inverses: its row i is row order[i] of the transposed inverse of A.
void multiply_inverses(const double* lower, const double* upper, std::size_t n, double* product);

// c += a b, and c -= a' b.
void add_product(const double* a, const double* b, std::size_t n, double* c);
void subtract_transposed_product(const double* a, const double* b, std::size_t n, double* c);

}  // namespace tessarn::detail
