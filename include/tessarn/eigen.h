/// \file
/// Maps of the library's objects as objects of Eigen, and copies from and to Eigen, for programs that use both;
/// tessarn.h leaves it out. Eigen 3.3 or later is included from where the compiler finds it.
///
/// \verbatim
///     eigen_map(m)            mat<long double>, sqmat<long double>: rows x columns, no copy
///     eigen_map(points)       lists of vector: n x 2, of vector3d: n x 3, no copy
///     eigen_map(v)            one vector3d: a column of 3, no copy
///     eigen_map(p)            the coefficients of a binom, the constant first, no copy
///     eigen_real_parts(m), eigen_imaginary_parts(m)   of complex matrices, no copy
///     to_eigen(m)             complex matrices, as Eigen's own
///     from_eigen<T>(e)        a mat, sqmat, binom or std::vector of points
/// \endverbatim
///
/// Index order: Eigen's m(row, column) is get(column, row) here. Lists of points have a point a row.
///
/// A map writes into the object, and holds as long as the views of tessarn/span.h do. Complex entries take 24 bytes
/// here, with a pointer to their virtual table in front, which Eigen cannot take for std::complex; their parts can be
/// mapped, or the matrix copied. Entries are taken as they are, a NaN too.
///
/// Cost: constant for maps; O(number of entries) for copies, with the memory of the result. A vector3d is 32 bytes
/// long, of which 24 are coordinates: Eigen goes through a map of points with a stride, which it cannot load as
/// packets. Where a cloud is gone through many times, a copy is faster: `Eigen::MatrixX3d c =
/// tessarn::eigen_map(points);`.
///
/// Eigen's results are not promised to have the same bits everywhere: it uses fused multiply-add and the order of sums
/// that suits a machine.
#pragma once

#include <Eigen/Core>
#include <algorithm>
#include <complex>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "tessarn/binom.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/list.h"
#include "tessarn/mat.h"
#include "tessarn/sqmat.h"
#include "tessarn/vectors.h"

namespace tessarn {

/// A real matrix of Eigen with the layout of mat and sqmat: row by row.
using eigen_matrix = Eigen::Matrix<real, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

namespace detail {

using eigen_index = Eigen::Index;

/// Matrix with const where Number has it.
template <class Number, class Matrix>
using like = std::conditional_t<std::is_const_v<Number>, const Matrix, Matrix>;

template <class Number>
using matrix_map = Eigen::Map<like<Number, eigen_matrix>>;

template <class Number>
using column_map = Eigen::Map<like<Number, Eigen::Matrix<real, Eigen::Dynamic, 1>>>;

/// n rows of `Columns` numbers; a point of the library is `Reals` numbers long.
template <class Number, int Columns, int Reals>
using points_map = Eigen::Map<like<Number, Eigen::Matrix<real, Eigen::Dynamic, Columns, Eigen::RowMajor>>, 0,
                              Eigen::OuterStride<Reals>>;

template <class Number>
using parts_map = Eigen::Map<like<Number, eigen_matrix>, 0, Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>>;

template <class Points>
using point_of = std::remove_pointer_t<decltype(std::declval<Points&>().data())>;

template <class Points>
using points_map_of =
    std::conditional_t<std::is_same_v<std::remove_cv_t<point_of<Points>>, ::vector>,
                       points_map<std::conditional_t<std::is_const_v<point_of<Points>>, const real, real>, 2, 3>,
                       points_map<std::conditional_t<std::is_const_v<point_of<Points>>, const real, real>, 3, 4>>;

template <class Point>
using if_point = std::enable_if_t<std::is_same_v<std::remove_cv_t<Point>, ::vector> ||
                                  std::is_same_v<std::remove_cv_t<Point>, vector3d>>;

/// The parts of complex entries, which begin at `first` and are three numbers apart.
template <class Number>
parts_map<Number> map_parts(Number* first, ulong rows, ulong columns) {
  constexpr eigen_index step = sizeof(cplx) / sizeof(real);
  return {first, static_cast<eigen_index>(rows), static_cast<eigen_index>(columns),
          Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>(step * static_cast<eigen_index>(columns), step)};
}

}  // namespace detail

/// \name Maps, without a copy
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// auto e = tessarn::eigen_map(m);
/// assert(e.rows() == 2 && e.cols() == 3 && e(0, 2) == 3);
/// e.row(0) *= 2;                                // writes into the matrix
/// assert(m.get(2, 0) == 6);
/// std::vector<vector3d> cloud = {{0, 0, 1}, {2, 4, 3}};
/// assert(tessarn::eigen_map(cloud).colwise().mean()(1) == 2);
/// const binom p{1, 2, 3};
/// assert(tessarn::eigen_map(p).sum() == 6);
/// \endcode
/// @{
inline detail::matrix_map<real> eigen_map(mat<long double>& m) {
  return {m.getData(), static_cast<Eigen::Index>(m.getHeight()), static_cast<Eigen::Index>(m.getWidth())};
}
inline detail::matrix_map<const real> eigen_map(const mat<long double>& m) {
  return {m.getData(), static_cast<Eigen::Index>(m.getHeight()), static_cast<Eigen::Index>(m.getWidth())};
}
inline detail::matrix_map<real> eigen_map(sqmat<long double>& m) {
  return {m.getData(), static_cast<Eigen::Index>(m.getSize()), static_cast<Eigen::Index>(m.getSize())};
}
inline detail::matrix_map<const real> eigen_map(const sqmat<long double>& m) {
  return {m.getData(), static_cast<Eigen::Index>(m.getSize()), static_cast<Eigen::Index>(m.getSize())};
}
inline detail::column_map<real> eigen_map(binom& p) { return {p.data(), static_cast<Eigen::Index>(p.size())}; }
inline detail::column_map<const real> eigen_map(const binom& p) {
  return {p.data(), static_cast<Eigen::Index>(p.size())};
}
inline Eigen::Map<Eigen::Matrix<real, 3, 1>> eigen_map(vector3d& v) {
  return Eigen::Map<Eigen::Matrix<real, 3, 1>>(&v.x);
}
inline Eigen::Map<const Eigen::Matrix<real, 3, 1>> eigen_map(const vector3d& v) {
  return Eigen::Map<const Eigen::Matrix<real, 3, 1>>(&v.x);
}
/// Points in any container with data() and size(), vectormat among them; constant points can only be read.
template <class Points, class = detail::if_point<detail::point_of<Points>>>
detail::points_map_of<Points> eigen_map(Points& points) {
  const auto n = static_cast<Eigen::Index>(points.size());
  return {n > 0 ? &points.data()->x : nullptr, n, detail::points_map_of<Points>::ColsAtCompileTime};
}
/// The real parts of the entries of a complex matrix.
inline detail::parts_map<real> eigen_real_parts(mat<cplx>& m) {
  return detail::map_parts(m.getData() ? &m.getData()->re : nullptr, m.getHeight(), m.getWidth());
}
/// The imaginary parts of the entries of a complex matrix.
inline detail::parts_map<real> eigen_imaginary_parts(mat<cplx>& m) {
  return detail::map_parts(m.getData() ? &m.getData()->im : nullptr, m.getHeight(), m.getWidth());
}
inline detail::parts_map<real> eigen_real_parts(sqmat<cplx>& m) {
  return detail::map_parts(m.getSize() > 0 ? &m.row(0)[0].re : nullptr, m.getSize(), m.getSize());
}
inline detail::parts_map<real> eigen_imaginary_parts(sqmat<cplx>& m) {
  return detail::map_parts(m.getSize() > 0 ? &m.row(0)[0].im : nullptr, m.getSize(), m.getSize());
}
/// @}

/// \name Copies to Eigen
/// Real objects are copied by assigning their map: `Eigen::MatrixXd e = tessarn::eigen_map(m);`.
/// @{
inline Eigen::Matrix<std::complex<real>, Eigen::Dynamic, Eigen::Dynamic> to_eigen(const mat<cplx>& m) {
  Eigen::Matrix<std::complex<real>, Eigen::Dynamic, Eigen::Dynamic> e(m.getHeight(), m.getWidth());
  for (ulong y = 0; y < m.getHeight(); ++y)
    for (ulong x = 0; x < m.getWidth(); ++x) e(y, x) = {m.get(x, y).re, m.get(x, y).im};
  return e;
}
inline Eigen::Matrix<std::complex<real>, Eigen::Dynamic, Eigen::Dynamic> to_eigen(const sqmat<cplx>& m) {
  Eigen::Matrix<std::complex<real>, Eigen::Dynamic, Eigen::Dynamic> e(m.getSize(), m.getSize());
  for (ulong y = 0; y < m.getSize(); ++y)
    for (ulong x = 0; x < m.getSize(); ++x) e(y, x) = {m.get(x, y).re, m.get(x, y).im};
  return e;
}
/// @}

namespace detail {

// How each class takes the entries of a matrix of Eigen.
inline cplx entry(const std::complex<real>& z) { return {z.real(), z.imag()}; }

template <class E>
void take(mat<long double>& m, const E& e) {
  m.create(e.cols(), e.rows());
  eigen_map(m) = e;
}
template <class E>
void take(sqmat<long double>& m, const E& e) {
  eigen_assert(e.rows() == e.cols() && "a square matrix");
  m.create((std::max)(e.rows(), e.cols()));
  eigen_map(m).topLeftCorner(e.rows(), e.cols()) = e;
}
template <class E>
void take(mat<cplx>& m, const E& e) {
  m.create(e.cols(), e.rows());
  for (eigen_index y = 0; y < e.rows(); ++y)
    for (eigen_index x = 0; x < e.cols(); ++x) m.getData()[y * e.cols() + x] = entry(e(y, x));
}
template <class E>
void take(sqmat<cplx>& m, const E& e) {
  eigen_assert(e.rows() == e.cols() && "a square matrix");
  m.create((std::max)(e.rows(), e.cols()));
  for (eigen_index y = 0; y < e.rows(); ++y)
    for (eigen_index x = 0; x < e.cols(); ++x)
      m.row(static_cast<ulong>(y))[static_cast<std::size_t>(x)] = entry(e(y, x));
}
template <class E>
void take(binom& p, const E& e) {
  p.create(static_cast<slong>(count(e.size())));
  for (eigen_index i = 0; i < e.size(); ++i) p.data()[i] = e(i);
}
template <class E>
void take(std::vector<::vector>& points, const E& e) {
  eigen_assert(e.cols() == 2 && "a point a row");
  points.clear();
  for (eigen_index i = 0; i < e.rows(); ++i) points.emplace_back(e(i, 0), e(i, 1));
}
template <class E>
void take(std::vector<vector3d>& points, const E& e) {
  eigen_assert(e.cols() == 3 && "a point a row");
  points.clear();
  for (eigen_index i = 0; i < e.rows(); ++i) points.emplace_back(e(i, 0), e(i, 1), e(i, 2));
}

}  // namespace detail

/// A copy of a matrix, a column or an expression of Eigen as an object of the library.
/// \tparam T mat<long double>, sqmat<long double>, mat<cplx>, sqmat<cplx>; binom, from a column of coefficients;
/// std::vector<vector> or std::vector<vector3d>, from a point a row
///
/// \code
/// Eigen::Matrix<tessarn::real, 2, 2> e;
/// e << 1, 2, 3, 4;
/// const auto m = tessarn::from_eigen<mat<long double>>(e.transpose());
/// assert(m.get(1, 0) == 3);
/// const Eigen::Matrix<tessarn::real, 3, 1> c(1, 0, 2);
/// assert(tessarn::from_eigen<binom>(c)(3) == 19);
/// \endcode
///
/// Special results: a matrix that is not square makes a sqmat with zeros for what is missing; Eigen's assertions, where
/// they are on, stop the program instead.
/// Throws: std::bad_array_new_length for counts that do not fit 32 bits, std::bad_alloc.
template <class T, class Derived>
[[nodiscard]] T from_eigen(const Eigen::MatrixBase<Derived>& e) {
  T result;
  detail::take(result, e.eval());
  return result;
}

}  // namespace tessarn
