// The routines of LAPACK, called directly: column-major storage, work arrays of the queried size.
#pragma once

#include <lapack.h>

#include <vector>

namespace bench {

// The optimal length that a work query left in its first element.
inline int queried(double length) { return static_cast<int>(length); }

// Solves A x = b; both are overwritten.
inline void lapack_solve(int n, double* a, int* pivots, double* b) {
  int one = 1, info = 0;
  LAPACK_dgesv(&n, &one, a, &n, pivots, b, &n, &info);
}

// Factorises A = P L U in place.
inline void lapack_factorise(int n, double* a, int* pivots) {
  int info = 0;
  LAPACK_dgetrf(&n, &n, a, &n, pivots, &info);
}

}  // namespace bench
