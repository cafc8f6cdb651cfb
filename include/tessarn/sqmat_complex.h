/// \file
/// The square matrix of complex numbers, a part of tessarn/sqmat.h, which adds the product as an operator.
/// tessarn/matrix.h says what holds for all matrices: the order of the indices, wrapped indices, failure, threads, the
/// checked mode.
#pragma once

#include <initializer_list>

#include "tessarn/cplx.h"
#include "tessarn/detail/checked.h"
#include "tessarn/detail/matrices.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/mat.h"
#include "tessarn/scalar.h"
#include "tessarn/span.h"

/// A square matrix of n x n complex numbers. Degenerate input is treated differently from the real one: a zero pivot,
/// one whose squared modulus is exactly 0, is skipped, and there is no quiet-NaN rule: NaN is stored and goes on.
///
/// \code
/// sqmat<cplx> a{{cplx(0, 1), cplx(0, 0)}, {cplx(0, 0), cplx(2, 0)}};
/// assert(a.det() == cplx(0, 2));
/// assert((a * a).get(0, 0) == cplx(-1, 0));
/// mat<cplx> b{{cplx(0, 1)}, {cplx(4, 0)}};
/// a.solve(b);                                   // a x = b; b becomes x
/// assert(b.get(0, 0) == cplx(1, 0) && b.get(0, 1) == cplx(2, 0));
/// sqmat<cplx> exchange{{cplx(0, 0), cplx(1, 0)}, {cplx(1, 0), cplx(0, 0)}};
/// assert(exchange.det() == cplx(0, 0));         // not -1: a zero pivot is skipped
/// \endcode
///
/// n is at most 65535; more throws std::bad_array_new_length. Operations that need memory and cannot have it throw
/// std::bad_alloc, and leave the matrix as it was unless they say otherwise. Comparison, transposition and getData()
/// are those of the real matrix alone; row() and column() give access to the entries. Nothing pivots: a small pivot
/// costs digits.
template <>
class TESSARN_API sqmat<cplx> {
 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own, also (of length zero) for an empty source. Cost: O(n^2). Throws: std::bad_alloc.
  sqmat(sqmat& m);
  /// Releases the entries. Views to them become invalid.
  virtual ~sqmat();
  /// Makes an n x n matrix of zeros; n = 0 leaves an array of length zero.
  /// Throws: std::bad_array_new_length for n > 65535, std::bad_alloc; the matrix is then empty.
  void create(tessarn::ulong n);
  /// Copies size and entries; `a = a` changes nothing.
  /// Throws: std::bad_alloc, only where the sizes differ; this matrix is then empty.
  void operator=(sqmat& src);

#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, by value, indices wrapped. Never returns for the empty matrix.
  cplx get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped; a real v converts to the unit number at the angle v. Never
  /// returns for the empty matrix.
  void set(tessarn::ulong x, tessarn::ulong y, cplx v) { data[position(x, y)] = v; }
#endif
  /// n, the number of rows and of columns.
  tessarn::ulong getSize() noexcept { return size; }
  /// Column x, wrapped, as a new matrix one wide and n high; of the empty matrix one without entries.
  /// Throws: std::bad_alloc.
  mat<cplx> getColumn(tessarn::ulong x);
#if !defined(TESSARN_CHECKED)
  /// Stores the first column of the argument as column x, wrapped, when its height is n; otherwise does nothing. The
  /// argument may have more columns, which are not read. It is taken by value, so it may be a column of this matrix.
  void setColumn(tessarn::ulong x, mat<cplx> column);
  /// this = this b: entry (x, y) is the sum of this(k, y) b(x, k) over k ascending from 0, without conjugation, each
  /// product formed as (re re - im im, re im + im re). Nothing when the sizes differ. `a *= a` squares.
  /// Special results: a NaN, as from 0 times infinity, is stored.
  /// Cost: O(n^3), with memory for two copies.
  void operator*=(sqmat& b);
#endif

  /// The determinant by elimination without row exchange for every n (there is no rule of Sarrus), 1 for n = 0. A zero
  /// pivot is not guarded by an exchange but leaves the rows below it as they are: the rows (0, 1), (1, 0) give 0, not
  /// -1.
  /// Special results: a NaN among the entries goes on into the result, unless it stands below a zero pivot. A pivot
  /// that is NaN is not zero.
  /// Cost: O(n^3), on a copy.
  cplx det();
  /// The cofactor of column x, row y, indices wrapped: (-1)^(x+y) times the determinant without them; 1 + 0i for n < 2
  /// (the real one gives 0). For n = 2 it is the entry in the other column and the other row, with its sign.
  /// Cost: that of det() for n - 1.
  cplx cof(tessarn::ulong x, tessarn::ulong y);
#if !defined(TESSARN_CHECKED)
  /// Replaces the first column of b (n rows) by the solution u of this u = b, by elimination without pivoting.
  /// Failure: a singular matrix is not noticed. A zero diagonal of the eliminated matrix gives a zero component, so b
  /// is always rewritten: diag(2, 0) with the right-hand side (4, 9) gives (2, 0). A regular matrix that meets a zero
  /// pivot gives a wrong result: compare the residuals.
  /// Special results: a b without entries, or n = 0, is left alone. Row indices into b wrap: rows from n on are not
  /// read, and with fewer than n rows equations share entries, so that the result means nothing. Other columns of b are
  /// left alone.
  /// Accuracy: a pivot that is small beside the entries below it costs digits. tessarn/solve.h solves complex systems
  /// with pivoting, and with a status.
  /// Cost: O(n^3), on a copy.
  void solve(mat<cplx>& b);
#endif

  /// Classical Gram-Schmidt on the columns, left to right, in place and without scaling, with the plain product sum a_k
  /// b_k, not conjugated: the columns become orthogonal for this product, not for the Hermitian one. A column whose
  /// square is 0, such as (1, i), is skipped, which the real class does not do: it stays, and later columns keep their
  /// parts along it. The first column keeps its values, and n < 2 changes nothing.
  /// Cost: O(n^3), with memory for a copy.
  void orthogonalize();
  /// Forward elimination in place without pivoting; a zero pivot leaves its rows unchanged. det() is the product of the
  /// diagonal that this leaves, in ascending order. n < 2 changes nothing.
  /// Cost: O(n^3), on a copy.
  void optimize();

  /// \name For constants and temporaries
  /// The members above for const objects and operands, with their results and failures. Assignments return this matrix.
  /// A move allocates nothing and empties its source.
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
  /// @{
  /// A matrix of n x n zeros.
  /// Throws: std::bad_array_new_length for n > 65535, std::bad_alloc.
  template <class N, class = tessarn::detail::if_counts<N>>
  explicit sqmat(N n) : sqmat() {
    create(tessarn::detail::count(n));
  }
  /// A matrix from its rows. The number of rows and the longest row decide the size; what is missing is 0. The rows
  /// hold cplx objects, never numbers, which would be angles.
  sqmat(std::initializer_list<std::initializer_list<tessarn::detail::complex_entry>> rows)
      : sqmat((std::max)(tessarn::detail::longest(rows), rows.size())) {
    tessarn::detail::store_rows(rows, data, size);
  }
  /// create() with a count of 64 bits.
  /// Throws: std::bad_array_new_length for those that do not fit 32 bits, and leaves the matrix as it was.
  template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
  void create(N n) {
    create(tessarn::detail::count(n));
  }
  /// Row y, wrapped, and column x, wrapped, as views through which the entries can be changed; empty for the empty
  /// matrix. A view holds until the matrix is created, moved from, assigned another size or a temporary, or receives a
  /// result.
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
  /// With TESSARN_CHECKED these take the places of the members of their names, and stop the program at a wrong index or
  /// wrong sizes with the file and the line of the call.
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
  /// After the virtual table pointer, in this order: the binary layout of the class. The matrix owns the entries, an
  /// array as by new[].
  cplx* data;
  tessarn::ulong size;

 private:
  // The compiled members are declared with non-const references, also where they change nothing.
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  // Indices wrap only where they must, which spares the usual access two divisions.
  std::size_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= size) x = tessarn::detail::wrap(x, size);
    if (y >= size) y = tessarn::detail::wrap(y, size);
    return static_cast<std::size_t>(y) * size + x;
  }
  // Makes the matrix empty without releasing the entries, which have another owner now or none.
  void forget() noexcept {
    data = nullptr;
    size = 0;
  }
  // Deletes the entries and makes the matrix empty.
  void release() noexcept;
  friend struct tessarn::detail::unchecked;
};
