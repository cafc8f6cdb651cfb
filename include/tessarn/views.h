/// \file
/// The arguments of the second layer: views of numbers, points and matrices that the caller owns.
///
/// A view is a pointer, a count and a distance. It is made from what the caller has: a pointer and a count, a container
/// with data() and size(), a column of a matrix, one coordinate of an array of points. Nothing is copied, and nothing
/// is changed; a view holds as long as the storage it was made from.
#pragma once

#include <cstddef>
#include <cstring>

#include "tessarn/detail/overloads.h"
#include "tessarn/mat.h"
#include "tessarn/span.h"
#include "tessarn/sqmat.h"
#include "tessarn/vectors.h"

namespace tessarn {

/// `size()` numbers at equal distances, which are counted in bytes.
///
/// \code
/// const tessarn::real numbers[] = {1, 2, 3};
/// const tessarn::column_view all(numbers, 3);
/// assert(all.size() == 3 && all[2] == 3);
/// mat<long double> m{{1, 2}, {3, 4}};
/// assert(tessarn::column_view(m.column(1))[1] == 4);
/// \endcode
class column_view {
 public:
  column_view() noexcept = default;
  /// `size` neighbouring numbers.
  column_view(const real* first, std::size_t size) noexcept : column_view(first, size, sizeof(real)) {}
  /// `size` numbers, each so many bytes behind the one before.
  column_view(const real* first, std::size_t size, std::size_t bytes) noexcept
      : first_(reinterpret_cast<const unsigned char*>(first)), size_(size), bytes_(bytes) {}
  /// A column of a matrix.
  template <class T, class = std::enable_if_t<std::is_same_v<std::remove_cv_t<T>, real>>>
  column_view(strided_span<T> s) noexcept : column_view(s.data(), s.size(), s.stride() * sizeof(real)) {}
  /// The first column of a matrix, as right-hand sides are stored; none for a matrix without columns.
  column_view(const mat<long double>& m) noexcept
      : column_view(m.getData(), m.getWidth() == 0 ? 0 : m.getHeight(), m.getWidth() * sizeof(real)) {}
  /// Any container of reals with data() and size().
  template <class Numbers, class = detail::if_container<Numbers, real>>
  column_view(const Numbers& numbers) noexcept : column_view(numbers.data(), numbers.size()) {}

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  /// The bytes of the first number, which need not be aligned.
  const unsigned char* address() const noexcept { return first_; }
  /// The bytes from one number to the next.
  std::size_t bytes() const noexcept { return bytes_; }
  /// Number i; i must be below size().
  real operator[](std::size_t i) const noexcept {
    real v;
    std::memcpy(&v, first_ + i * bytes_, sizeof v);
    return v;
  }

 private:
  const unsigned char* first_ = nullptr;
  std::size_t size_ = 0;
  std::size_t bytes_ = sizeof(real);
};

/// Points of the plane, as two columns.
///
/// \code
/// const vector points[] = {{0, 1}, {1, 3}};
/// const tessarn::plane_points view(points, 2);
/// assert(view.size() == 2 && view.y[1] == 3);
/// \endcode
class plane_points {
 public:
  column_view x;  ///< the abscissas
  column_view y;  ///< the ordinates

  plane_points(column_view abscissas, column_view ordinates) noexcept : x(abscissas), y(ordinates) {}
  plane_points(const ::vector* points, std::size_t size) noexcept {
    if (size == 0) return;
    x = column_view(&points->x, size, sizeof(::vector));
    y = column_view(&points->y, size, sizeof(::vector));
  }
  /// Any container of points with data() and size(), a vectormat among them.
  template <class Points, class = detail::if_container<Points, ::vector>>
  plane_points(const Points& points) noexcept : plane_points(points.data(), points.size()) {}

  std::size_t size() const noexcept { return x.size(); }
};

/// Points of space, as three columns.
///
/// \code
/// const vector3d points[] = {{0, 1, 2}, {1, 3, 5}};
/// const tessarn::space_points view(points, 2);
/// assert(view.size() == 2 && view.z[1] == 5);
/// \endcode
class space_points {
 public:
  column_view x;  ///< the first coordinates
  column_view y;  ///< the second coordinates
  column_view z;  ///< the third coordinates

  space_points(column_view first, column_view second, column_view third) noexcept : x(first), y(second), z(third) {}
  space_points(const vector3d* points, std::size_t size) noexcept {
    if (size == 0) return;
    x = column_view(&points->x, size, sizeof(vector3d));
    y = column_view(&points->y, size, sizeof(vector3d));
    z = column_view(&points->z, size, sizeof(vector3d));
  }
  /// Any container of points with data() and size().
  template <class Points, class = detail::if_container<Points, vector3d>>
  space_points(const Points& points) noexcept : space_points(points.data(), points.size()) {}

  std::size_t size() const noexcept { return x.size(); }
};

/// A matrix of reals, row by row.
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// const tessarn::matrix_view view = m;
/// assert(view.rows() == 2 && view.columns() == 3 && view(1, 2) == 6);  // the row comes first, as in formulas
/// \endcode
class matrix_view {
 public:
  matrix_view(const mat<long double>& m) noexcept : matrix_view(m.getData(), m.getHeight(), m.getWidth()) {}
  matrix_view(const sqmat<long double>& m) noexcept : matrix_view(m.getData(), m.getSize(), m.getSize()) {}
  /// Rows of neighbouring entries, each row directly behind the one before.
  matrix_view(const real* first, std::size_t rows, std::size_t columns) noexcept
      : matrix_view(first, rows, columns, columns) {}
  /// Rows of neighbouring entries, which begin so many entries apart.
  matrix_view(const real* first, std::size_t rows, std::size_t columns, std::size_t stride) noexcept
      : first_(first), rows_(rows), columns_(columns), stride_(stride) {}

  std::size_t rows() const noexcept { return rows_; }
  std::size_t columns() const noexcept { return columns_; }
  /// The entry in a row and a column, both below their numbers.
  real operator()(std::size_t row, std::size_t column) const noexcept { return first_[row * stride_ + column]; }
  /// The first entry.
  const real* data() const noexcept { return first_; }
  /// The entries from one row to the next.
  std::size_t stride() const noexcept { return stride_; }

 private:
  const real* first_;
  std::size_t rows_;
  std::size_t columns_;
  std::size_t stride_;
};

/// A matrix of complex numbers, row by row.
///
/// \code
/// mat<cplx> m;
/// m.create(1, 2);
/// m.set(0, 1, cplx(3, 4));
/// assert(tessarn::complex_view(m)(1, 0).im == 4);
/// \endcode
class complex_view {
 public:
  complex_view(const mat<cplx>& m) noexcept : complex_view(m.getData(), m.getHeight(), m.getWidth()) {}
  complex_view(const sqmat<cplx>& m) noexcept
      : complex_view(m.getSize() == 0 ? nullptr : m.row(0).data(), m.getSize(), m.getSize()) {}
  /// Rows of neighbouring entries, each row directly behind the one before.
  complex_view(const cplx* first, std::size_t rows, std::size_t columns) noexcept
      : first_(first), rows_(rows), columns_(columns) {}

  std::size_t rows() const noexcept { return rows_; }
  std::size_t columns() const noexcept { return columns_; }
  /// The entry in a row and a column, both below their numbers.
  const cplx& operator()(std::size_t row, std::size_t column) const noexcept { return first_[row * columns_ + column]; }

 private:
  const cplx* first_;
  std::size_t rows_;
  std::size_t columns_;
};

}  // namespace tessarn
