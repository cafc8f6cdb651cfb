/// \file
/// Ranges of coordinates, lines and coefficients for the standard library's algorithms, and conversions with
/// std::complex. tessarn.h leaves this header out. The classes are containers already: point lists, rows and columns
/// have begin(), end() and size() (tessarn/list.h, tessarn/span.h). This header adds
///
/// \verbatim
///     x_of, y_of, z_of         one coordinate of all points of a list, as a range of numbers
///     rows_of, columns_of      the rows and the columns of a matrix, one after the other
///     coefficients_of          the coefficients of a polynomial, as a range of numbers
///     std_complex              a cplx as std::complex
///     cplx_with_parts          a cplx from std::complex, or from real and imaginary part
///     unit_number_at           what a plain conversion of a number to cplx makes: the unit number at that angle
/// \endverbatim
///
/// Nothing is copied: the ranges write into the object, and hold as long as the views of tessarn/span.h do. In C++20
/// all of them are views and borrowed ranges: `std::ranges::max(tessarn::y_of(list))`, `tessarn::y_of(list) |
/// std::views::reverse`. A value written through a range is stored as it is, without the rule that a matrix stores 0.0
/// in place of a quiet NaN.
///
/// Failure: none. Cost: constant for each call here and each step of an iterator.
#pragma once

#include <complex>
#include <cstddef>
#include <iterator>
#if defined(__has_include)
#if __has_include(<version>)
#include <version>
#endif
#endif
#if defined(__cpp_lib_ranges)
#include <ranges>
#endif

#include "tessarn/binom.h"
#include "tessarn/cplx.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/list.h"
#include "tessarn/mat.h"
#include "tessarn/span.h"
#include "tessarn/sqmat.h"
#include "tessarn/vectors.h"

namespace tessarn {

namespace detail {

/// The coordinate of the points at p; the reals of neighbouring points are the same number of reals apart.
template <class Number, class Point>
strided_span<Number> coordinate(Point* p, std::size_t n, Number* first) noexcept {
  return {p == nullptr ? nullptr : first, p == nullptr ? 0 : n, sizeof(Point) / sizeof(real)};
}

/// The number type of a coordinate of the points of a container: const where the points are.
template <class Points>
using coordinate_of =
    std::conditional_t<std::is_const_v<std::remove_pointer_t<decltype(std::declval<Points&>().data())>>, const real,
                       real>;

/// Lines of a matrix, each a view of its entries; `Get` makes line i.
template <class Line, class Matrix, Line (*Get)(Matrix&, ulong)>
class lines_of {
 public:
  /// Makes the views as it goes, so it hands them out by value.
  class iterator {
   public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag;  // of older rules, which want references
    using value_type = Line;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Line;

    iterator() noexcept = default;
    iterator(Matrix* m, ulong i) noexcept : m_(m), i_(i) {}
    Line operator*() const { return Get(*m_, i_); }
    iterator& operator++() noexcept {
      ++i_;
      return *this;
    }
    iterator operator++(int) noexcept {
      const iterator before = *this;
      ++i_;
      return before;
    }
    friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.i_ == b.i_; }
    friend bool operator!=(const iterator& a, const iterator& b) noexcept { return a.i_ != b.i_; }

   private:
    Matrix* m_ = nullptr;
    ulong i_ = 0;
  };

  lines_of() noexcept = default;
  lines_of(Matrix& m, ulong size) noexcept : m_(&m), size_(size) {}
  iterator begin() const noexcept { return {m_, 0}; }
  iterator end() const noexcept { return {m_, size_}; }
  std::size_t size() const noexcept { return size_; }
  Line operator[](std::size_t i) const { return Get(*m_, static_cast<ulong>(i)); }

 private:
  Matrix* m_ = nullptr;
  ulong size_ = 0;
};

template <class Matrix>
auto matrix_row(Matrix& m, ulong i) {
  return m.row(i);
}
template <class Matrix>
auto matrix_column(Matrix& m, ulong i) {
  return m.column(i);
}
template <class Matrix>
using row_type = decltype(std::declval<Matrix&>().row(0));
template <class Matrix>
using column_type = decltype(std::declval<Matrix&>().column(0));

}  // namespace detail

/// \name Coordinates
/// One coordinate of every point of a container with data() and size(): vectormat, std::vector, std::array, span. The
/// numbers of constant points can only be read.
///
/// \code
/// vectormat list{{0, 4}, {1, 9}, {2, 2}};
/// const auto y = tessarn::y_of(list);
/// assert(*std::max_element(y.begin(), y.end()) == 9);
/// for (tessarn::real& v : y) v /= 2;       // into the list
/// assert(list[0] == vector(0, 2));
/// \endcode
/// @{
template <class Points>
strided_span<detail::coordinate_of<Points>> x_of(Points& points) noexcept {
  using number = detail::coordinate_of<Points>;
  return detail::coordinate<number>(points.data(), points.size(), points.size() > 0 ? &points.data()->x : nullptr);
}
template <class Points>
strided_span<detail::coordinate_of<Points>> y_of(Points& points) noexcept {
  using number = detail::coordinate_of<Points>;
  return detail::coordinate<number>(points.data(), points.size(), points.size() > 0 ? &points.data()->y : nullptr);
}
/// Of points of space alone.
template <class Points>
strided_span<detail::coordinate_of<Points>> z_of(Points& points) noexcept {
  using number = detail::coordinate_of<Points>;
  return detail::coordinate<number>(points.data(), points.size(), points.size() > 0 ? &points.data()->z : nullptr);
}
/// @}

/// \name Rows and columns
/// All rows, or all columns, of a matrix of any kind, each as the view that row() or column() gives.
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// tessarn::real largest = 0;
/// for (const auto row : tessarn::rows_of(m))
///   largest = std::max(largest, std::accumulate(row.begin(), row.end(), tessarn::real{0}));
/// assert(largest == 15);
/// assert(tessarn::columns_of(m).size() == 3 && tessarn::columns_of(m)[2][1] == 6);
/// \endcode
/// @{
template <class Matrix>
auto rows_of(Matrix& m) noexcept {
  return detail::lines_of<detail::row_type<Matrix>, Matrix, &detail::matrix_row<Matrix>>(
      m, m.row(0).empty() ? 0 : static_cast<ulong>(m.column(0).size()));
}
template <class Matrix>
auto columns_of(Matrix& m) noexcept {
  return detail::lines_of<detail::column_type<Matrix>, Matrix, &detail::matrix_column<Matrix>>(
      m, static_cast<ulong>(m.row(0).size()));
}
/// @}

/// The coefficients of a polynomial, the constant first. Polynomials that share them see what is written.
///
/// \code
/// binom p{1, -2, 3};
/// for (tessarn::real& c : tessarn::coefficients_of(p)) c = std::fabs(c);
/// assert(p(1) == 6);
/// \endcode
/// @{
inline span<real> coefficients_of(binom& p) noexcept { return {p.data(), p.size()}; }
inline span<const real> coefficients_of(const binom& p) noexcept { return {p.data(), p.size()}; }
/// @}

/// \name Complex numbers
/// There is no plain conversion between cplx and std::complex, since `cplx z = 2.0` has another meaning than
/// `std::complex<double> z = 2.0`: it is the unit number at the angle 2. The names below say which of the two is meant.
///
/// \code
/// assert(tessarn::std_complex(cplx(1, 2)) == std::complex<tessarn::real>(1, 2));
/// assert(tessarn::cplx_with_parts(std::complex<tessarn::real>(2)) == cplx(2, 0));
/// assert(tessarn::cplx_with_parts(2) == cplx(2, 0));
/// assert(tessarn::unit_number_at(tessarn::pi).re == -1);     // and not 3.14
/// \endcode
/// @{
/// The number with the parts of z.
inline std::complex<real> std_complex(const cplx& z) noexcept { return {z.re, z.im}; }
/// The number with the parts of z; a real z becomes a real number.
inline cplx cplx_with_parts(const std::complex<real>& z) noexcept { return {z.real(), z.imag()}; }
/// re + i im.
inline cplx cplx_with_parts(real re, real im = 0) noexcept { return {re, im}; }
/// cos angle + i sin angle: what `cplx z = angle` makes.
inline cplx unit_number_at(real angle) noexcept { return cplx(angle); }
/// @}

}  // namespace tessarn

#if defined(__cpp_lib_ranges)
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<tessarn::span<T>> = true;
template <class T>
inline constexpr bool std::ranges::enable_view<tessarn::span<T>> = true;
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<tessarn::strided_span<T>> = true;
template <class T>
inline constexpr bool std::ranges::enable_view<tessarn::strided_span<T>> = true;
template <class Line, class Matrix, Line (*Get)(Matrix&, tessarn::ulong)>
inline constexpr bool std::ranges::enable_borrowed_range<tessarn::detail::lines_of<Line, Matrix, Get>> = true;
template <class Line, class Matrix, Line (*Get)(Matrix&, tessarn::ulong)>
inline constexpr bool std::ranges::enable_view<tessarn::detail::lines_of<Line, Matrix, Get>> = true;
#endif
