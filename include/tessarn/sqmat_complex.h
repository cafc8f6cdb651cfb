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

/// A square matrix of n x n complex numbers. Degenerate input is treated differently from the real one:
/// a zero pivot is skipped, and there is no quiet-NaN rule. n is at most 65535; more throws std::bad_alloc.
///
/// \code
/// sqmat<cplx> a{{cplx(0, 1), cplx(0, 0)}, {cplx(0, 0), cplx(2, 0)}};
/// assert(a.det() == cplx(0, 2));
/// assert((a * a).get(0, 0) == cplx(-1, 0));
/// \endcode
template <>
class TESSARN_API sqmat<cplx> {
 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own, also (of length zero) for an empty source.
  sqmat(sqmat& m);
  virtual ~sqmat();
  /// Makes an n x n matrix of zeros; n = 0 leaves an array of length zero.
  void create(tessarn::ulong n);
  /// Copies size and entries.
  void operator=(sqmat& src);

#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, by value, indices wrapped.
  cplx get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped.
  void set(tessarn::ulong x, tessarn::ulong y, cplx v) { data[position(x, y)] = v; }
#endif
  tessarn::ulong getSize() noexcept { return size; }
  /// Column x, wrapped, as a new matrix one wide and n high.
  mat<cplx> getColumn(tessarn::ulong x);
#if !defined(TESSARN_CHECKED)
  /// Stores the first column of the argument as column x when its height is n; otherwise does nothing.
  void setColumn(tessarn::ulong x, mat<cplx> column);
  /// this = this b, sums over k ascending from 0; nothing when the sizes differ. `a *= a` squares.
  void operator*=(sqmat& b);
#endif

  /// The determinant by elimination for every n, 1 for n = 0; the factor of a zero pivot is 0.
  cplx det();
  /// The cofactor of column x, row y; 1 + 0i for n < 2 (the real one gives 0).
  cplx cof(tessarn::ulong x, tessarn::ulong y);
#if !defined(TESSARN_CHECKED)
  /// Replaces the first column of b (n rows) by the solution, by elimination without pivoting; a zero
  /// diagonal gives a zero component, so b is always rewritten.
  void solve(mat<cplx>& b);
#endif

  /// Classical Gram-Schmidt on the columns with the plain product sum a_k b_k, not conjugated; a column
  /// whose square is 0 is skipped.
  void orthogonalize();
  /// Forward elimination in place without pivoting; a zero pivot leaves its rows unchanged.
  void optimize();

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
  cplx get(tessarn::ulong x, tessarn::ulong y) const { return data[position(x, y)]; }
  void operator*=(const sqmat& b) { *this *= tessarn::detail::mutable_ref(b); }
  void solve(mat<cplx>& b) const { self().solve(b); }
#endif
  tessarn::ulong getSize() const noexcept { return size; }
  mat<cplx> getColumn(tessarn::ulong x) const { return self().getColumn(x); }
  cplx det() const { return self().det(); }
  cplx cof(tessarn::ulong x, tessarn::ulong y) const { return self().cof(x, y); }
  /// @}

  /// \name Additions
  /// As for reals; the rows of an initializer list hold cplx objects, never numbers, which would be angles.
  /// @{
  template <class N, class = tessarn::detail::if_counts<N>>
  explicit sqmat(N n) : sqmat() {
    create(tessarn::detail::count(n));
  }
  sqmat(std::initializer_list<std::initializer_list<tessarn::detail::complex_entry>> rows)
      : sqmat((std::max)(tessarn::detail::longest(rows), rows.size())) {
    tessarn::detail::store_rows(rows, data, size);
  }
  template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
  void create(N n) {
    create(tessarn::detail::count(n));
  }
  tessarn::span<cplx> row(tessarn::ulong y) { return tessarn::detail::row(data, size, size, y); }
  tessarn::span<const cplx> row(tessarn::ulong y) const {
    return tessarn::detail::row<const cplx>(data, size, size, y);
  }
  tessarn::strided_span<cplx> column(tessarn::ulong x) { return tessarn::detail::column(data, size, size, x); }
  tessarn::strided_span<const cplx> column(tessarn::ulong x) const {
    return tessarn::detail::column<const cplx>(data, size, size, x);
  }
  /// @}

#if defined(TESSARN_CHECKED)
  /// \name The checked mode
  /// @{
  template <class = void>
  cplx get(tessarn::ulong x, tessarn::ulong y TESSARN_WHERE) const {
    where.require(x < size && y < size, "sqmat::get: the column or the row is beyond the size");
    return data[position(x, y)];
  }
  template <class = void>
  void set(tessarn::ulong x, tessarn::ulong y, cplx v TESSARN_WHERE) {
    where.require(x < size && y < size, "sqmat::set: the column or the row is beyond the size");
    data[position(x, y)] = v;
  }
  template <class = void>
  void setColumn(tessarn::ulong x, const mat<cplx>& column TESSARN_WHERE) {
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
  void solve(mat<cplx>& b TESSARN_WHERE) const {
    where.require(b.getHeight() == size && (size == 0 || b.getWidth() > 0),
                  "sqmat::solve: the right-hand side has another height");
    tessarn::detail::unchecked::solve(*this, b);
  }
  /// @}
#endif

 protected:
  cplx* data;
  tessarn::ulong size;

 private:
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
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
