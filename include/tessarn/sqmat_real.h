/// \file
/// Square matrices; tessarn/matrix.h says what holds for all matrices.
#pragma once

#include <initializer_list>

#include "tessarn/cplx.h"
#include "tessarn/detail/checked.h"
#include "tessarn/detail/matrices.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/mat.h"
#include "tessarn/scalar.h"
#include "tessarn/span.h"

class vector3d;

/// A square matrix of n x n reals. It exchanges single columns with mat<long double>. n is at most
/// 65535; more throws std::bad_alloc.
///
/// \code
/// sqmat<long double> a{{2, 1}, {1, 3}};
/// mat<long double> b{{3}, {5}};
/// a.solve(b);                                   // a x = b; b becomes x
/// assert(b.get(0, 0) > 0.79 && b.get(0, 1) > 1.39);
/// assert(a.det() == 5);
/// sqmat<long double> square = a * a;
/// assert(square.get(0, 0) == 5);
/// \endcode
template <>
class TESSARN_API sqmat<long double> {
 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own.
  sqmat(sqmat& m);
  virtual ~sqmat();
  /// Makes an n x n matrix; the entries are unspecified. n = 0 leaves it empty.
  void create(tessarn::ulong n);
  /// Copies size and entries, as they are.
  void operator=(sqmat& src);

#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, indices wrapped.
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN.
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v);
#endif
  tessarn::ulong getSize() noexcept { return size; }
  /// The entries themselves, row by row; the matrix keeps them. The pointer holds until the matrix is created, moved
  /// from, assigned another size, assigned a temporary (also of the same size), or receives a result.
  tessarn::real* getData() noexcept { return data; }
  /// Column x, wrapped, as a new matrix one wide and n high, under the quiet-NaN rule.
  mat<long double> getColumn(tessarn::ulong x);
#if !defined(TESSARN_CHECKED)
  /// Stores the first column of the argument as column x, under the quiet-NaN rule, when its height is n;
  /// otherwise does nothing.
  void setColumn(tessarn::ulong x, mat<long double> column);
#endif
  /// Makes dst the transpose, under the quiet-NaN rule; `a.transpose(a)` works too.
  void transpose(sqmat& dst);
#if !defined(TESSARN_CHECKED)
  /// this = this b, sums over k ascending from +0.0; nothing when the sizes differ. `a *= a` squares.
  void operator*=(sqmat& b);
  /// True when the sizes differ (deliberately), else when no pair of entries differs; NaN differs from
  /// nothing.
  bool operator==(sqmat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs.
  bool operator!=(sqmat& b);
#endif

  /// The determinant: 1 for n = 0, Sarrus' rule for n = 3, else elimination without pivoting, so that a
  /// zero pivot leads to infinities and NaN: the rows (0, 1), (1, 0) give NaN.
  tessarn::real det();
  /// The cofactor of column x, row y: (-1)^(x+y) times the determinant without them; 0.0 for n < 2.
  tessarn::real cof(tessarn::ulong x, tessarn::ulong y);
#if !defined(TESSARN_CHECKED)
  /// Replaces the first column of b (n rows) by the solution u of this u = b, by LU factorisation with
  /// partial pivoting; of equal pivots the upper row wins. A singular matrix (a column of candidate pivots
  /// that is exactly 0) leaves b as it is.
  void solve(mat<long double>& b);
#endif

  /// Classical Gram-Schmidt on the columns, left to right, without normalisation; zero columns are not
  /// guarded.
  void orthogonalize();
  /// Forward elimination to upper triangular form in place, without pivoting or a zero test.
  void optimize();

  /// Makes this the 4 x 4 matrix [R t; 0 0 0 1] of the rigid match of n >= 3 pairs of points and returns
  /// true; false, leaving it as it was, for null arrays, n < 3 or when no rotation comes out.
  ///
  /// R is the least-squares rotation that carries the centred b onto the centred a (for b = Q a + c it is
  /// Q transposed), while t is the mean of b - R a. To get the motion from a to b, transpose the 3 x 3
  /// block and form t' = cb - R' ca with the two centroids. W. Kabsch, A solution for the best rotation to
  /// relate two sets of vectors, 1976.
  ///
  /// Coordinates may have any finite magnitude; with an infinite one the result means nothing. For points on a line, or
  /// nearly so, the turn about it is arbitrary; for equal points the rotation is the identity.
  [[nodiscard]] bool calc_match(vector3d* a, vector3d* b, tessarn::ulong n);
  /// Makes this the 4 x 4 matrix of the affine map from a to b, four least-squares fits of n points, the
  /// last row fitting the constant 1. Four points that are not in one plane determine it.
  void calc_transform(vector3d* a, vector3d* b, tessarn::ulong n);
  /// out = the first three rows applied to (in, 1); nothing unless the size is 4. in may be out: its
  /// coordinates are read first.
  void transform(vector3d& in, vector3d& out);

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results; a move empties its source.
  /// @{
  sqmat(const sqmat& m) : sqmat(tessarn::detail::mutable_ref(m)) {}
  sqmat(sqmat&& m) noexcept : data(m.data), size(m.size) { m.forget(); }
  sqmat& operator=(const sqmat& src) {
    *this = tessarn::detail::mutable_ref(src);
    return *this;
  }
  sqmat& operator=(sqmat&& src) noexcept;
#if !defined(TESSARN_CHECKED)
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) const { return data[position(x, y)]; }
  void operator*=(const sqmat& b) { *this *= other(b); }
  bool operator==(const sqmat& b) const { return self() == other(b); }
  bool operator!=(const sqmat& b) const { return self() != other(b); }
  void solve(mat<long double>& b) const { self().solve(b); }
#endif
  tessarn::ulong getSize() const noexcept { return size; }
  const tessarn::real* getData() const noexcept { return data; }
  mat<long double> getColumn(tessarn::ulong x) const { return self().getColumn(x); }
  void transpose(sqmat& dst) const { self().transpose(dst); }
  tessarn::real det() const { return self().det(); }
  tessarn::real cof(tessarn::ulong x, tessarn::ulong y) const { return self().cof(x, y); }
  template <class = void>
  [[nodiscard]] bool calc_match(const vector3d* a, const vector3d* b, tessarn::ulong n) {
    return calc_match(tessarn::detail::mutable_pointer(a), tessarn::detail::mutable_pointer(b), n);
  }
  template <class = void>
  void calc_transform(const vector3d* a, const vector3d* b, tessarn::ulong n) {
    calc_transform(tessarn::detail::mutable_pointer(a), tessarn::detail::mutable_pointer(b), n);
  }
  void transform(const vector3d& in, vector3d& out) const { self().transform(tessarn::detail::mutable_ref(in), out); }
  /// @}

  /// \name Additions
  /// @{
  /// A matrix of n x n zeros. A count that does not fit throws std::bad_array_new_length.
  template <class N, class = tessarn::detail::if_counts<N>>
  explicit sqmat(N n) : sqmat() {
    create(tessarn::detail::count(n));
    tessarn::detail::fill_with_zeros(data, size, size);
  }
  /// A matrix from its rows. The number of rows and the longest row decide the size; what is missing is 0. A quiet NaN
  /// is stored as 0.0, as by set().
  sqmat(std::initializer_list<std::initializer_list<tessarn::real>> rows)
      : sqmat((std::max)(tessarn::detail::longest(rows), rows.size())) {
    tessarn::detail::store_rows(rows, data, size);
  }
  /// Counts of 64 bits: std::bad_array_new_length for those that do not fit 32 bits.
  template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
  void create(N n) {
    create(tessarn::detail::count(n));
  }
  template <class A, class B, class N,
            class = std::enable_if_t<std::is_convertible_v<A, const vector3d*> &&
                                     std::is_convertible_v<B, const vector3d*> && tessarn::detail::is_wide<N>>>
  [[nodiscard]] bool calc_match(A a, B b, N n) {
    return calc_match(tessarn::detail::mutable_pointer<vector3d>(a), tessarn::detail::mutable_pointer<vector3d>(b),
                      tessarn::detail::count(n));
  }
  template <class A, class B, class N,
            class = std::enable_if_t<std::is_convertible_v<A, const vector3d*> &&
                                     std::is_convertible_v<B, const vector3d*> && tessarn::detail::is_wide<N>>>
  void calc_transform(A a, B b, N n) {
    calc_transform(tessarn::detail::mutable_pointer<vector3d>(a), tessarn::detail::mutable_pointer<vector3d>(b),
                   tessarn::detail::count(n));
  }
  /// The points of two containers, pair by pair. Containers of different sizes give false, leaving the matrix as it
  /// was.
  template <class A, class B, class = tessarn::detail::if_container<A, vector3d>,
            class = tessarn::detail::if_container<B, vector3d>>
  [[nodiscard]] bool calc_match(const A& a, const B& b) {
    return a.size() == b.size() && calc_match(a.data(), b.data(), tessarn::detail::count(a.size()));
  }
  /// The points of two containers, pair by pair. Containers of different sizes leave the matrix as it was.
  template <class A, class B, class = tessarn::detail::if_container<A, vector3d>,
            class = tessarn::detail::if_container<B, vector3d>>
  void calc_transform(const A& a, const B& b) {
    if (a.size() == b.size()) calc_transform(a.data(), b.data(), tessarn::detail::count(a.size()));
  }
  /// transform() for n points; in may be out.
  void transform(const vector3d* in, vector3d* out, tessarn::ulong n) const;
  /// Row y, wrapped, and column x, wrapped; empty for the empty matrix. What is written through a view is stored as it
  /// is, like what is written through getData().
  tessarn::span<tessarn::real> row(tessarn::ulong y) { return tessarn::detail::row(data, size, size, y); }
  tessarn::span<const tessarn::real> row(tessarn::ulong y) const {
    return tessarn::detail::row<const tessarn::real>(data, size, size, y);
  }
  tessarn::strided_span<tessarn::real> column(tessarn::ulong x) { return tessarn::detail::column(data, size, size, x); }
  tessarn::strided_span<const tessarn::real> column(tessarn::ulong x) const {
    return tessarn::detail::column<const tessarn::real>(data, size, size, x);
  }
  /// @}

#if defined(TESSARN_CHECKED)
  /// \name The checked mode
  /// @{
  template <class = void>
  tessarn::real get(tessarn::ulong x, tessarn::ulong y TESSARN_WHERE) const {
    where.require(x < size && y < size, "sqmat::get: the column or the row is beyond the size");
    return data[position(x, y)];
  }
  template <class = void>
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v TESSARN_WHERE) {
    where.require(x < size && y < size, "sqmat::set: the column or the row is beyond the size");
    tessarn::detail::store(data[position(x, y)], v);
  }
  template <class = void>
  void setColumn(tessarn::ulong x, const mat<long double>& column TESSARN_WHERE) {
    where.require(x < size && column.getHeight() == size,
                  "sqmat::setColumn: the index is beyond the size or the heights differ");
    tessarn::detail::unchecked::set_column(*this, x, column);
  }
  template <class = void>
  void operator*=(tessarn::detail::operand<sqmat> b) {
    b.where.require(size == b.value.size, "sqmat *= sqmat: the sizes differ");
    tessarn::detail::unchecked::multiply(*this, b.value);
  }
  template <class = void>
  bool operator==(tessarn::detail::operand<sqmat> b) const {
    b.where.require(size == b.value.size, "sqmat == sqmat: the sizes differ");
    return tessarn::detail::unchecked::equal(*this, b.value);
  }
  template <class = void>
  bool operator!=(tessarn::detail::operand<sqmat> b) const {
    b.where.require(size == b.value.size, "sqmat != sqmat: the sizes differ");
    return !tessarn::detail::unchecked::equal(*this, b.value);
  }
  template <class = void>
  void solve(mat<long double>& b TESSARN_WHERE) const {
    where.require(b.getHeight() == size && (size == 0 || b.getWidth() > 0),
                  "sqmat::solve: the right-hand side has another height");
    tessarn::detail::unchecked::solve(*this, b);
  }
  /// @}
#endif

 protected:
  tessarn::real* data;
  tessarn::ulong size;

 private:
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static sqmat& other(const sqmat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  std::size_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= size) x = tessarn::detail::wrap(x, size);
    if (y >= size) y = tessarn::detail::wrap(y, size);
    return static_cast<std::size_t>(y) * size + x;
  }
  void forget() noexcept {
    data = nullptr;
    size = 0;
  }
  void release() noexcept;
  friend struct tessarn::detail::unchecked;
};
