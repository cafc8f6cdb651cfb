/// \file
/// The square matrix of reals, a part of tessarn/sqmat.h, which adds the product as an operator. tessarn/matrix.h says
/// what holds for all matrices: the order of the indices, wrapped indices, the quiet-NaN rule, failure, threads, the
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

class vector3d;

/// A square matrix of n x n reals. It exchanges single columns with mat<long double>.
///
/// \code
/// sqmat<long double> a{{2, 1}, {1, 3}};
/// mat<long double> b{{3}, {5}};
/// a.solve(b);                                   // a x = b; b becomes x
/// assert(b.get(0, 0) > 0.79 && b.get(0, 1) > 1.39);
/// assert(a.det() == 5);
/// sqmat<long double> square = a * a;
/// assert(square.get(0, 0) == 5);
/// sqmat<long double> singular{{1, 2}, {2, 4}};
/// mat<long double> c{{5}, {7}};
/// singular.solve(c);
/// assert(c.get(0, 0) == 5 && c.get(0, 1) == 7); // a singular matrix leaves the right-hand side as it was
/// \endcode
///
/// n is at most 65535; more throws std::bad_array_new_length. Operations that need memory and cannot have it throw
/// std::bad_alloc, and leave the matrix as it was unless they say otherwise. det(), cof() and solve() work on a copy.
///
/// The motion of a body from two sets of points:
///
/// \code
/// const vector3d from[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
/// const vector3d to[] = {{1, 2, 3}, {2, 2, 3}, {1, 3, 3}, {1, 2, 4}};   // moved by (1, 2, 3)
/// sqmat<long double> m;
/// assert(m.calc_match(from, to, 4));
/// vector3d p;
/// m.transform(vector3d(0, 0, 0), p);
/// assert((p - vector3d(1, 2, 3)).lenld() < 1e-12);
/// \endcode
template <>
class TESSARN_API sqmat<long double> {
 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own, entries as they are; none for an empty source.
  /// Cost: O(n^2).
  /// Throws: std::bad_alloc.
  sqmat(sqmat& m);
  /// Releases the entries. Pointers and views to them become invalid.
  virtual ~sqmat();
  /// Makes an n x n matrix; the entries are unspecified: store each before reading it. n = 0 leaves it empty.
  /// Throws: std::bad_array_new_length for n > 65535, std::bad_alloc; the matrix is then empty.
  void create(tessarn::ulong n);
  /// Copies size and entries, as they are. A matrix of the same size keeps its storage; `a = a` changes nothing.
  /// Throws: std::bad_alloc, only where the sizes differ; this matrix is then empty.
  void operator=(sqmat& src);

#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, indices wrapped: on a 3 x 3 matrix get(4, 7) is get(1, 1). Never returns for the
  /// empty matrix.
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN. Infinities and signalling NaNs are stored as
  /// they are. Never returns for the empty matrix.
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v);
#endif
  /// n, the number of rows and of columns.
  tessarn::ulong getSize() noexcept { return size; }
  /// The n n entries themselves, row by row, entry (x, y) at y n + x; null for the empty matrix. The matrix keeps
  /// owning them. What is written through the pointer is stored as it is, without the quiet-NaN rule. The pointer holds
  /// until the matrix is created, moved from, assigned another size, assigned a temporary (also of the same size), or
  /// receives a result.
  tessarn::real* getData() noexcept { return data; }
  /// Column x, wrapped, as a new matrix one wide and n high, under the quiet-NaN rule; of the empty matrix one without
  /// entries.
  /// Throws: std::bad_alloc.
  mat<long double> getColumn(tessarn::ulong x);
#if !defined(TESSARN_CHECKED)
  /// Stores the first column of the argument as column x, wrapped, under the quiet-NaN rule, when its height is n;
  /// otherwise does nothing. The argument may have more columns, which are not read.
  void setColumn(tessarn::ulong x, mat<long double> column);
#endif
  /// Makes dst the transpose, under the quiet-NaN rule; `a.transpose(a)` works too, unlike that of mat.
  /// Throws: std::bad_alloc; dst is then as it was.
  void transpose(sqmat& dst);
#if !defined(TESSARN_CHECKED)
  /// this = this b: entry (x, y) is the sum of this(k, y) b(x, k) over k ascending from +0.0, and 0.0 where that is a
  /// NaN. Nothing when the sizes differ. `a *= a` squares.
  /// Cost: O(n^3), with memory for the result and a copy.
  void operator*=(sqmat& b);
  /// True when the sizes differ (deliberately), else when no pair of entries differs. No tolerance: -0.0 equals 0.0,
  /// NaN differs from nothing.
  bool operator==(sqmat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs: the opposite of ==.
  bool operator!=(sqmat& b);
#endif

  /// The determinant: 1 for n = 0, Sarrus' rule for n = 3, else the product of the pivots of an elimination without row
  /// exchange, ascending from 1.0, entries that become NaN counting as 0.
  /// Special results: a zero pivot leads to infinities and NaN even for a regular matrix: the rows (0, 1), (1, 0) give
  /// NaN, not -1. A matrix of zeros gives 0. tessarn/solve.h has determinants with a status.
  /// Cost: O(n^3), on a copy.
  tessarn::real det();
  /// The cofactor of column x, row y: (-1)^(x+y) times the determinant of the matrix without them; 0.0 for n < 2. For
  /// rows (1, 2), (3, 4) cof(1, 0) is -3: the column comes first.
  /// Special results: indices wrap first: on a 3 x 3 matrix cof(3, 0) is cof(0, 0).
  /// Cost: that of det() for n - 1.
  tessarn::real cof(tessarn::ulong x, tessarn::ulong y);
#if !defined(TESSARN_CHECKED)
  /// Replaces the first column of b (n rows) by the solution u of this u = b, by LU factorisation with partial
  /// pivoting: the pivot is the largest magnitude in the column, of equal ones the upper. Other columns of b are left
  /// alone. Sums ascend from +0.0; a value that becomes NaN counts as 0.
  /// Failure: a singular matrix (a column of candidate pivots that is exactly 0) leaves b as it is, which is not
  /// reported: compare the residuals. A matrix that is singular but for rounding gives large, meaningless numbers.
  /// Special results: a b without entries, or n = 0, is left alone. Row indices into b wrap: rows from n on are not
  /// read, and with fewer than n rows equations share entries, so that the result means nothing.
  /// Cost: O(n^3), on a copy.
  /// Source: G. Golub, C. Van Loan, Matrix Computations, 1983 (Gaussian elimination with partial pivoting).
  void solve(mat<long double>& b);
#endif

  /// Classical Gram-Schmidt on the columns, left to right, in place: column j becomes a_j - sum over i < j of (q_i
  /// a_j / q_i q_i) q_i with the columns q_i already done. The columns are not scaled to the length 1, and the first
  /// keeps its values.
  /// Special results: a zero column is not guarded: the quotient 0 / 0 makes all later columns zeros. So does a column
  /// that depends exactly on earlier ones; where rounding hides that, its direction is arbitrary. n < 2 changes
  /// nothing.
  /// Accuracy: the loss of orthogonality grows with the square of the condition number.
  /// Cost: O(n^3), with memory for a copy.
  /// Source: L. Giraud, J. Langou, M. Rozloznik, J. van den Eshof, Rounding error analysis of the classical
  /// Gram-Schmidt orthogonalization process, 2005 (the accuracy).
  void orthogonalize();
  /// Forward elimination to upper triangular form in place, without pivoting or a zero test: row r loses f times row p
  /// with f = entry (p, r) / entry (p, p). What is left below the diagonal is zero within rounding; it is not set to 0.
  /// The product of the diagonal is the determinant if no pivot was 0; det() rounds differently.
  /// Special results: a zero pivot gives infinite factors, and NaN counts as 0: the rows (0, 1), (1, 0) become (0, 1),
  /// (0, -infinity). n < 2 changes nothing.
  /// Cost: O(n^3), no memory.
  void optimize();

  /// Makes this the 4 x 4 matrix [R t; 0 0 0 1] of the rigid match of n >= 3 pairs of points.
  /// \return true; false, leaving the matrix as it was, for null arrays, n < 3 or when no rotation comes out: when the
  /// determinant of R is neither 1 nor -1 within 0.001.
  ///
  /// R is the least-squares rotation that carries the centred b onto the centred a (for b = Q a + c it is Q
  /// transposed), while t is the mean of b - R a. transform() therefore takes a to b only where R is its own inverse,
  /// as for a pure shift. To get the motion from a to b, transpose the 3 x 3 block and form t' = cb - R' ca with the
  /// two centroids, as examples/align.cpp does.
  ///
  /// A reflection is corrected by the sign of the third singular vector: mirrored points give the best proper rotation.
  ///
  /// Special results: NaN coordinates count as 0. Coordinates may have any finite magnitude; with an infinite one the
  /// result means nothing. For points on a line, or nearly so, the turn about it is arbitrary; for equal points the
  /// rotation is the identity.
  /// Cost: O(n); memory for the result only.
  /// Source: W. Kabsch, A solution for the best rotation to relate two sets of vectors, 1976.
  [[nodiscard]] bool calc_match(vector3d* a, vector3d* b, tessarn::ulong n);
  /// Makes this the 4 x 4 matrix of the affine map from a to b, by four least-squares fits of n points: rows 0 to 2 fit
  /// x, y and z of b by (x, y, z, 1) of a, and the last row the constant 1, so that it is (0, 0, 0, 1) within rounding.
  /// Four points that are not in one plane determine it. NaN coordinates count as 0.
  /// Failure: with fewer points, or points in one plane, the rows hold the sums that mat::solve leaves for a singular
  /// system, which is not reported; n = 0 gives zeros.
  /// Throws: std::bad_array_new_length where 4 n does not fit 32 bits, std::bad_alloc; the matrix is then as it was.
  /// Cost: O(n), with memory for 5 n reals.
  void calc_transform(vector3d* a, vector3d* b, tessarn::ulong n);
  /// out = the first three rows applied to (in, 1), each coordinate (m1 y + m0 x) + (m2 z + m3) in this grouping, with
  /// the entries m0 to m3 of its row; the last row is not used. Nothing unless the size is 4. in may be out: its
  /// coordinates are read first.
  void transform(vector3d& in, vector3d& out);

  /// \name For constants and temporaries
  /// The members above for const objects and operands, with their results and failures. Assignments return this matrix.
  /// A move allocates nothing and empties its source. getData() of a const matrix gives entries to read.
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
  /// A matrix of n x n zeros.
  /// Throws: std::bad_array_new_length for n > 65535, std::bad_alloc.
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
  /// Counts of 64 bits: std::bad_array_new_length for those that do not fit 32 bits, and nothing is changed then.
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
  /// The points of two containers, pair by pair. Containers of different sizes leave the matrix as it was, without a
  /// word.
  template <class A, class B, class = tessarn::detail::if_container<A, vector3d>,
            class = tessarn::detail::if_container<B, vector3d>>
  void calc_transform(const A& a, const B& b) {
    if (a.size() == b.size()) calc_transform(a.data(), b.data(), tessarn::detail::count(a.size()));
  }
  /// transform() for n points, with the bits of single calls; in may be out. Nothing unless the size is 4. Cost: O(n).
  void transform(const vector3d* in, vector3d* out, tessarn::ulong n) const;
  /// Row y, wrapped, and column x, wrapped, as views; empty for the empty matrix. What is written through a view is
  /// stored as it is, like what is written through getData(). A view holds as long as the pointer of getData().
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
  /// With TESSARN_CHECKED these take the places of the members of their names. They have the documented results, but a
  /// program that gives them a wrong index or wrong sizes prints the file and the line of the call and stops.
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
  /// After the virtual table pointer, in this order: the binary layout of the class. The matrix owns the entries.
  tessarn::real* data;
  tessarn::ulong size;

 private:
  // The compiled members are declared with non-const references, also where they change nothing.
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static sqmat& other(const sqmat& m) noexcept { return tessarn::detail::mutable_ref(m); }
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
