/// \file
/// Rectangular matrices; tessarn/matrix.h says what holds for all matrices.
#pragma once

#include <initializer_list>

#include "tessarn/cplx.h"
#include "tessarn/detail/checked.h"
#include "tessarn/detail/matrices.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/span.h"

/// A rectangular matrix of reals. One column wide it is the library's column vector.
///
/// \code
/// mat<long double> a{{1, 2}, {3, 4}, {5, 6}};   // three rows of two columns
/// assert(a.getWidth() == 2 && a.getHeight() == 3);
/// assert(a.get(1, 0) == 2);                     // the column comes first
/// mat<long double> b{{1}, {2}, {3}}, x;
/// x.solve(a, b);                                // least squares: a x = b as well as possible
/// assert(x.getHeight() == 2);
/// \endcode
template <>
class TESSARN_API mat<long double> {
 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own; empty when the source has none.
  mat(mat& m);
  virtual ~mat();
  /// Copies sizes and entries, as they are; `a = a` keeps the entries.
  void operator=(mat& src);

  /// Makes a matrix of the given numbers of columns and rows; the entries are unspecified. Their number is the
  /// product in 32 bits: if columns * rows exceeds 2^32 - 1 the matrix has a size but no valid entries.
  void create(tessarn::ulong columns, tessarn::ulong rows);
#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, indices wrapped.
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN.
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v);
#endif
  /// The entries themselves, row by row; null for a matrix that never had storage. The pointer holds until the matrix
  /// is created, assigned to (also when the sizes are the same), moved from, or receives a result.
  tessarn::real* getData() const noexcept { return data; }
  tessarn::ulong getHeight() const noexcept { return height; }
  tessarn::ulong getWidth() const noexcept { return width; }

#if !defined(TESSARN_CHECKED)
  /// Entry by entry; the empty matrix when the sizes differ.
  mat operator+(mat& b);
  mat operator-(mat& b);
  /// The product, b.width columns by height rows, each sum over k ascending from +0.0; the empty matrix
  /// unless width == b.height. Throws when the entries do not fit 32 bits.
  mat operator*(mat& b);
#endif
  /// Every entry times s.
  mat operator*(tessarn::real s);
  /// Every entry divided by s, a true division; 0 / 0 is stored as 0.0.
  mat operator/(tessarn::real s);
#if !defined(TESSARN_CHECKED)
  /// True when the sizes differ (deliberately), else when no pair of entries differs; NaN differs from
  /// nothing.
  bool operator==(mat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs.
  bool operator!=(mat& b);
#endif
  /// Makes dst the height x width transpose; values are moved as they are. `a.transpose(a)` gives
  /// zeros, since the receiving matrix is released before the source is read.
  void transpose(mat& dst);
  /// A copy of this column (width 1) divided by its length; a zero column gives a zero column, another
  /// width the empty matrix. The length is formed from plain squares: columns of magnitudes above about 1e154 become
  /// zeros, below about 1e-162 infinite.
  mat normalize();
  /// True when every entry off the main diagonal is 0 or NaN; also for rectangular matrices.
  bool isDiagonal();

#if !defined(TESSARN_CHECKED)
  /// Makes this matrix the column x (width 1, height A.width) that minimises |A x - b|, from the normal
  /// equations (A'A) x = A'b. Does nothing unless b is one column of A.height rows. When A'A is singular
  /// the result is the column A'b; compare the residuals to detect it. A and b are not changed, and either may
  /// be this object. The condition of A'A is the square of that of A: scale and centre the columns.
  void solve(mat& A, mat& b);
#endif
  /// Makes dst (height x width) the inverse: of a diagonal matrix the reciprocals, with 0 for a zero or
  /// NaN entry; of a square matrix the adjugate times the reciprocal of the determinant; of any other matrix the
  /// pseudo-inverse by decompose(), in which only a singular value of exactly 0.0 counts as zero, so that the rounded
  /// zeros of a wide or rank-deficient matrix can make it meaningless; the reciprocals of singular values below about
  /// 5.6e-309 are infinite. `a.invert(a)` gives zeros, since dst is
  /// cleared before it is read. The adjugate takes O(n^5) operations, less what its minors share; it is meant for
  /// small matrices.
  ///
  /// Entries of the inverse of a square matrix are stored as they are, infinities and NaN included: they appear when
  /// the determinant is 0, and for regular matrices that meet a zero pivot, as quarter turns and permutations do, since
  /// det() does not exchange rows. Use sqmat::solve for these, column by column of the identity.
  void invert(mat& dst);
  /// The singular value decomposition this = U S V' (G. Golub, C. Reinsch, Singular value decomposition
  /// and least squares solutions, 1970): for a matrix of m rows and n columns U is m x n, S n x n with the
  /// singular values in descending order on its diagonal, V n x n; columns of U and V are the singular
  /// vectors. A value that has not converged after 30 sweeps is left as it stands. U, S and V must be
  /// three different matrices; this one may be among them, it is read first. Entries may have any magnitude: far from 1
  /// a multiple by a power of two is decomposed. Besides the largest entry, entries more than about 300 orders of
  /// magnitude smaller may count as 0.
  void decompose(mat& U, mat& S, mat& V);

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results; a move empties its source.
  /// @{
  mat(const mat& m) : mat(tessarn::detail::mutable_ref(m)) {}
  mat(mat&& m) noexcept : data(m.data), width(m.width), height(m.height) { m.forget(); }
  mat& operator=(const mat& src) {
    *this = tessarn::detail::mutable_ref(src);
    return *this;
  }
  mat& operator=(mat&& src) noexcept;
#if !defined(TESSARN_CHECKED)
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) const { return data[position(x, y)]; }
  mat operator+(const mat& b) const { return self() + other(b); }
  mat operator-(const mat& b) const { return self() - other(b); }
  mat operator*(const mat& b) const { return self() * other(b); }
  bool operator==(const mat& b) const { return self() == other(b); }
  bool operator!=(const mat& b) const { return self() != other(b); }
  void solve(const mat& A, const mat& b) { solve(other(A), other(b)); }
#endif
  mat operator*(tessarn::real s) const { return self() * s; }
  mat operator/(tessarn::real s) const { return self() / s; }
  void transpose(mat& dst) const { self().transpose(dst); }
  mat normalize() const { return self().normalize(); }
  bool isDiagonal() const { return self().isDiagonal(); }
  void invert(mat& dst) const { self().invert(dst); }
  void decompose(mat& U, mat& S, mat& V) const { self().decompose(U, S, V); }
  /// @}

  /// \name Additions
  /// @{
  /// A matrix of zeros. Counts that do not fit 32 bits throw std::bad_array_new_length.
  template <class C, class R, class = tessarn::detail::if_counts<C, R>>
  mat(C columns, R rows) : mat() {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
    tessarn::detail::fill_with_zeros(data, width, height);
  }
  /// A matrix from its rows; the longest row is its width, and shorter ones are filled with zeros. A quiet NaN is
  /// stored as 0.0, as by set().
  mat(std::initializer_list<std::initializer_list<tessarn::real>> rows)
      : mat(tessarn::detail::longest(rows), rows.size()) {
    tessarn::detail::store_rows(rows, data, width);
  }
  /// create() with counts of 64 bits, which throws std::bad_array_new_length for those that do not fit 32 bits.
  template <class C, class R, class = std::enable_if_t<tessarn::detail::is_wide<C> || tessarn::detail::is_wide<R>>>
  void create(C columns, R rows) {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  /// Row y, wrapped, and column x, wrapped; empty for a matrix without entries. What is written through a view is
  /// stored as it is, like what is written through getData(). A view holds as long as the pointer of getData().
  tessarn::span<tessarn::real> row(tessarn::ulong y) { return tessarn::detail::row(data, width, height, y); }
  tessarn::span<const tessarn::real> row(tessarn::ulong y) const {
    return tessarn::detail::row<const tessarn::real>(data, width, height, y);
  }
  tessarn::strided_span<tessarn::real> column(tessarn::ulong x) {
    return tessarn::detail::column(data, width, height, x);
  }
  tessarn::strided_span<const tessarn::real> column(tessarn::ulong x) const {
    return tessarn::detail::column<const tessarn::real>(data, width, height, x);
  }
  /// @}

#if defined(TESSARN_CHECKED)
  /// \name The checked mode
  /// @{
  template <class = void>
  tessarn::real get(tessarn::ulong x, tessarn::ulong y TESSARN_WHERE) const {
    where.require(x < width && y < height, "mat::get: the column or the row is beyond the size");
    return data[position(x, y)];
  }
  template <class = void>
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v TESSARN_WHERE) {
    where.require(x < width && y < height, "mat::set: the column or the row is beyond the size");
    tessarn::detail::store(data[position(x, y)], v);
  }
  template <class = void>
  mat operator+(tessarn::detail::operand<mat> b) const {
    b.where.require(same_size(b.value), "mat + mat: the sizes differ");
    return tessarn::detail::unchecked::sum(*this, b.value);
  }
  template <class = void>
  mat operator-(tessarn::detail::operand<mat> b) const {
    b.where.require(same_size(b.value), "mat - mat: the sizes differ");
    return tessarn::detail::unchecked::difference(*this, b.value);
  }
  template <class = void>
  mat operator*(tessarn::detail::operand<mat> b) const {
    b.where.require(width == b.value.height, "mat * mat: the left width is not the right height");
    return tessarn::detail::unchecked::product(*this, b.value);
  }
  template <class = void>
  bool operator==(tessarn::detail::operand<mat> b) const {
    b.where.require(same_size(b.value), "mat == mat: the sizes differ");
    return tessarn::detail::unchecked::equal(*this, b.value);
  }
  template <class = void>
  bool operator!=(tessarn::detail::operand<mat> b) const {
    b.where.require(same_size(b.value), "mat != mat: the sizes differ");
    return !tessarn::detail::unchecked::equal(*this, b.value);
  }
  template <class = void>
  void solve(const mat& A, const mat& b TESSARN_WHERE) {
    where.require(b.width == 1 && b.height == A.height,
                  "mat::solve: the right-hand side is not one column as high as A");
    tessarn::detail::unchecked::solve(*this, A, b);
  }
  /// @}
#endif

 protected:
  tessarn::real* data;
  tessarn::ulong width;
  tessarn::ulong height;

 private:
  mat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static mat& other(const mat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  bool same_size(const mat& b) const noexcept { return width == b.width && height == b.height; }
  // With 64 bits: sizes whose count wraps have places that 32 bits do not hold.
  std::uint64_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::uint64_t>(y) * width + x;
  }
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  void release() noexcept;
};

/// A rectangular matrix of complex numbers: storage, access, copies.
///
/// \code
/// mat<cplx> a{{cplx(1, 2), cplx(0, 1)}};        // one row of two columns
/// a.set(0, 0, cplx(5, 0));
/// assert(a.get(0, 0) == cplx(5, 0));
/// \endcode
template <>
class TESSARN_API mat<cplx> {
 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own; empty when the source has none.
  mat(mat& m);
  virtual ~mat();
  /// Copies sizes and entries; `a = a` keeps the entries.
  void operator=(mat& src);

  /// Makes a matrix of zeros. The number of entries is the product in 32 bits, as for reals.
  void create(tessarn::ulong columns, tessarn::ulong rows);
#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, by value, indices wrapped.
  cplx get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped.
  void set(tessarn::ulong x, tessarn::ulong y, cplx v) { data[position(x, y)] = v; }
#endif
  /// The entries themselves, row by row; null for a matrix that never had storage. The pointer holds as for reals.
  cplx* getData() const noexcept { return data; }
  tessarn::ulong getHeight() const noexcept { return height; }
  tessarn::ulong getWidth() const noexcept { return width; }

  /// \name For constants and temporaries
  /// @{
  mat(const mat& m) : mat(tessarn::detail::mutable_ref(m)) {}
  mat(mat&& m) noexcept : data(m.data), width(m.width), height(m.height) { m.forget(); }
  mat& operator=(const mat& src) {
    *this = tessarn::detail::mutable_ref(src);
    return *this;
  }
  mat& operator=(mat&& src) noexcept;
#if !defined(TESSARN_CHECKED)
  cplx get(tessarn::ulong x, tessarn::ulong y) const { return data[position(x, y)]; }
#endif
  /// @}

  /// \name Additions
  /// As for reals; the rows of an initializer list hold cplx objects, never numbers, which would be angles.
  /// @{
  template <class C, class R, class = tessarn::detail::if_counts<C, R>>
  mat(C columns, R rows) : mat() {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  mat(std::initializer_list<std::initializer_list<tessarn::detail::complex_entry>> rows)
      : mat(tessarn::detail::longest(rows), rows.size()) {
    tessarn::detail::store_rows(rows, data, width);
  }
  template <class C, class R, class = std::enable_if_t<tessarn::detail::is_wide<C> || tessarn::detail::is_wide<R>>>
  void create(C columns, R rows) {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  tessarn::span<cplx> row(tessarn::ulong y) { return tessarn::detail::row(data, width, height, y); }
  tessarn::span<const cplx> row(tessarn::ulong y) const {
    return tessarn::detail::row<const cplx>(data, width, height, y);
  }
  tessarn::strided_span<cplx> column(tessarn::ulong x) { return tessarn::detail::column(data, width, height, x); }
  tessarn::strided_span<const cplx> column(tessarn::ulong x) const {
    return tessarn::detail::column<const cplx>(data, width, height, x);
  }
  /// @}

#if defined(TESSARN_CHECKED)
  /// \name The checked mode
  /// @{
  template <class = void>
  cplx get(tessarn::ulong x, tessarn::ulong y TESSARN_WHERE) const {
    where.require(x < width && y < height, "mat::get: the column or the row is beyond the size");
    return data[position(x, y)];
  }
  template <class = void>
  void set(tessarn::ulong x, tessarn::ulong y, cplx v TESSARN_WHERE) {
    where.require(x < width && y < height, "mat::set: the column or the row is beyond the size");
    data[position(x, y)] = v;
  }
  /// @}
#endif

 protected:
  cplx* data;
  tessarn::ulong width;
  tessarn::ulong height;

 private:
  std::size_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::size_t>(y) * width + x;
  }
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  void release() noexcept;
};

/// Every entry times k: `k * m` is `m * k`.
template <class K, class M, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<M, mat<long double>>>
mat<long double> operator*(K k, const M& m) {
  return m * static_cast<tessarn::real>(k);
}

namespace tessarn {
using ::mat;
}

static_assert(sizeof(void*) != 8 || (sizeof(mat<long double>) == 24 && sizeof(mat<cplx>) == 24),
              "a matrix is its virtual table pointer, the entries and the sizes");
