// Eigenvalues and eigenvectors of small symmetric matrices in doubled precision.
#pragma once

#include "analysis/doubled.h"

namespace tessarn::analysis {

// The eigenvalues, ascending; equal ones stand in the order of their columns. vectors[k] has the length 1, belongs to
// values[k], and has the sign with which the rotations left it.
template <int N, class T = doubled>
struct eigen_system {
  T values[N];
  T vectors[N][N];
};

// The eigenvalues and eigenvectors of a symmetric matrix, of which the lower triangle is not read, by the cyclic method
// of Jacobi with the formulas of H. Rutishauser, The Jacobi method for real symmetric matrices, 1966.
//
// With e = 2^-98 and the largest entry m in magnitude: each value is off by at most e m; each vector by an angle of at
// most e m / (the distance to the next value); the vectors are orthogonal to each other to within e. For a matrix of
// numbers that are all finite, whatever their sizes; the loops end for others, too. Cost: some 1000 operations of
// doubled precision for three rows.
//
// In double precision, which is a tenth of the cost, e is 2^-47.
template <int N, class T>
eigen_system<N, T> eigen_of_symmetric(const T (&matrix)[N][N]) noexcept;

extern template eigen_system<3, double> eigen_of_symmetric(const double (&)[3][3]) noexcept;
extern template eigen_system<4, double> eigen_of_symmetric(const double (&)[4][4]) noexcept;
extern template eigen_system<3> eigen_of_symmetric(const doubled (&)[3][3]) noexcept;
extern template eigen_system<4> eigen_of_symmetric(const doubled (&)[4][4]) noexcept;

}  // namespace tessarn::analysis
