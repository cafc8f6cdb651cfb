/// \file
/// Rectangular matrices of reals and of complex numbers. tessarn/matrix.h says what holds for all matrices: the order
/// of the indices, wrapped indices, the quiet-NaN rule, failure, threads, the checked mode.
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
/// mat<long double> b{{1}, {2}, {3}}, x, t;
/// x.solve(a, b);                                // least squares: a x = b as well as possible
/// assert(x.getWidth() == 1 && x.getHeight() == 2);
/// a.transpose(t);                               // t receives the result
/// assert((t * a).get(0, 0) == 35);              // 1 1 + 3 3 + 5 5
/// assert((a + t).getWidth() == 0);              // the sizes differ: the empty matrix
/// assert(a == t);                               // deliberately: matrices of different sizes count as equal
/// \endcode
///
/// Operations that return a matrix return a new one. Only the receiving matrix of an operation changes.
///
/// Sizes: width * height is formed in 32 bits. Where the true product exceeds 2^32 - 1 the matrix reports sizes for
/// which it has no storage. Sums, multiples, comparisons and copies take the entries that exist; members that need the
/// others throw std::bad_array_new_length; get() and the views do not test, and must not be used there.
template <>
class TESSARN_API mat<long double> {
 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own: sizes and entries as they are, NaN included. The copy of a matrix without storage
  /// has none.
  /// Throws: std::bad_alloc.
  mat(mat& m);
  /// Releases the entries. Pointers and views to them become invalid.
  virtual ~mat();
  /// Copies sizes and entries as they are, into new storage also when the sizes agree; `a = a` keeps the entries.
  /// Throws: std::bad_alloc; this matrix is then empty.
  void operator=(mat& src);

  /// Makes a matrix of the given numbers of columns and rows: create(2, 3) has three rows of two. The old entries are
  /// released, and the new ones unspecified: store each before reading it. A size of 0 makes a matrix without entries.
  /// Special results: where columns * rows exceeds 2^32 - 1 the matrix has its sizes but no valid entries.
  /// Throws: std::bad_alloc; the matrix is then empty.
  void create(tessarn::ulong columns, tessarn::ulong rows);
#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, indices wrapped: on a matrix three wide get(3, 0) is get(0, 0). Never returns where
  /// a size is 0.
  tessarn::real get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN. Infinities and signalling NaNs are stored as
  /// they are. Never returns where a size is 0.
  /// Throws: std::bad_array_new_length for a place that a matrix too large for 32 bits does not have.
  void set(tessarn::ulong x, tessarn::ulong y, tessarn::real v);
#endif
  /// The entries themselves, width * height of them row by row: entry (x, y) at y * width + x. Null for a matrix that
  /// never had storage. What is written through the pointer is stored as it is, without the quiet-NaN rule. The pointer
  /// holds until the matrix is created, assigned to (also when the sizes are equal), moved from, or receives a result.
  tessarn::real* getData() const noexcept { return data; }
  /// The number of rows.
  tessarn::ulong getHeight() const noexcept { return height; }
  /// The number of columns.
  tessarn::ulong getWidth() const noexcept { return width; }

#if !defined(TESSARN_CHECKED)
  /// The sum, entry by entry; the empty matrix when the widths or the heights differ. b may be this matrix.
  /// Special results: infinity plus minus infinity is stored as 0.0, and so is a sum with a NaN.
  /// Throws: std::bad_alloc. Cost: O(width * height), as of the other operations entry by entry.
  mat operator+(mat& b);
  /// The difference, entry by entry; the empty matrix when the widths or the heights differ. Infinity minus infinity is
  /// stored as 0.0.
  mat operator-(mat& b);
  /// The matrix product: b.width columns by height rows, entry (c, r) the sum of this(k, r) b(c, k) over k ascending
  /// from +0.0. The empty matrix unless width == b.height. b may be this matrix.
  /// Special results: a sum that is a NaN, as from 0 times infinity, is stored as 0.0. Where width and b.height are 0
  /// all entries are 0.
  /// Throws: std::bad_array_new_length when the entries do not fit 32 bits, std::bad_alloc.
  /// Cost: O(height * width * b.width); larger products need up to the memory of the operands besides.
  mat operator*(mat& b);
#endif
  /// Every entry times s. 0 times infinity is stored as 0.0; a NaN s gives zeros.
  mat operator*(tessarn::real s);
  /// Every entry divided by s, a true division and not a product with 1 / s.
  /// Special results: s = 0 gives 0.0 for zeros and infinities for the rest; a NaN s gives zeros.
  mat operator/(tessarn::real s);
#if !defined(TESSARN_CHECKED)
  /// True when the sizes differ (deliberately), else when no pair of entries differs; compare the sizes, too, where
  /// they can differ. No tolerance: -0.0 equals 0.0, NaN differs from nothing.
  bool operator==(mat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs: the opposite of ==.
  bool operator!=(mat& b);
#endif
  /// Makes dst the height x width transpose: dst(y, x) = this(x, y), values moved as they are, a NaN too.
  /// `a.transpose(a)` gives zeros of the exchanged sizes, since the receiving matrix is released before the source is
  /// read.
  /// Throws: std::bad_alloc; dst is then empty or as it was.
  void transpose(mat& dst);
  /// A copy of this column (width 1) divided by its length, sqrt(sum of squares): (3, 4) gives (0.6, 0.8). Another
  /// width gives the empty matrix.
  /// Special results: a zero column gives a zero column. The squares are not scaled: a column with a magnitude above
  /// about 1e154, an infinity or a NaN becomes zeros; one with all magnitudes below about 1e-162 gets infinities.
  mat normalize();
  /// True when every entry off the main diagonal, which starts at (0, 0), is 0 or NaN, without a tolerance; also for
  /// rectangular matrices, and for those without entries.
  bool isDiagonal();

#if !defined(TESSARN_CHECKED)
  /// Makes this matrix the column x (width 1, height A.width) that minimises |A x - b|, from the normal equations (A'A)
  /// x = A'b: sums over the rows ascending from +0.0, NaN sums stored as 0.0, and sqmat::solve. Does nothing unless b
  /// is one column of A.height rows. A and b are not changed, and either may be this object.
  ///
  /// Failure: when the elimination of A'A finds it singular, as for equal columns or fewer rows than columns, the
  /// result is the column A'b. This is not reported, and rounding can hide it: compare the residuals |A x - b|.
  /// tessarn/solve.h has solvers with a status. The condition of A'A is the square of that of A: scale and centre the
  /// columns.
  /// Throws: std::bad_array_new_length for more than 65535 columns, std::bad_alloc; this matrix is then as it was.
  /// Cost: O(A.height n^2 + n^3) for n columns, and memory for the normal equations and a few rows.
  void solve(mat& A, mat& b);
#endif
  /// Makes dst (height columns, width rows) the inverse, in one of three ways:
  ///   - A diagonal matrix of any shape: the reciprocals of the diagonal, with 0 for a zero or NaN entry: diag(2, 0, 4)
  ///     gives diag(0.5, 0, 0.25). Reciprocals of magnitudes below about 5.6e-309 are infinite, also those of singular
  ///     values.
  ///   - Another square matrix: the adjugate times the reciprocal of det(), quiet NaNs read as 0.
  ///   - Any other: the pseudo-inverse V S^-1 U' by decompose(), in which only a singular value of exactly 0.0 counts
  ///     as zero. The rounded zeros of a wide or rank-deficient matrix can therefore make it meaningless.
  ///
  /// Special results: entries of the inverse of a square matrix are stored as they are, infinities and NaN included.
  /// They appear when the determinant is 0, and for regular matrices that meet a zero pivot, as quarter turns and
  /// permutations do, since det() does not exchange rows. Use sqmat::solve for these, column by column of the identity.
  /// `a.invert(a)` gives zeros, since dst is cleared before the matrix is read.
  /// Throws: std::bad_alloc; dst is then as it was.
  /// Cost: the adjugate takes O(n^5) operations, less what its minors share, and the most memory of all members
  /// (tessarn/matrix.h): it is meant for small matrices. The other ways cost what isDiagonal() or decompose() and two
  /// products do.
  /// Source: R. Penrose, A generalized inverse for matrices, 1955 (the pseudo-inverse).
  void invert(mat& dst);
  /// The singular value decomposition this = U S V'. For m rows and n columns U has m rows of n, S and V are n x n. S
  /// has the singular values in descending order on its diagonal and zeros elsewhere; the columns of U and V are the
  /// singular vectors. The three old contents are released. U, S and V must be three different matrices; this one may
  /// be among them, it is read first.
  ///
  /// Special results: signs belong to pairs of columns and are those of the sweeps: diag(3, 1) comes out with U and V
  /// minus the identity. A zero matrix gives S = 0, V the identity and ones on the diagonal of U. With m < n the last
  /// n - m singular values are zero within rounding. The sweeps end with NaN and infinite entries, too; the result
  /// means nothing then.
  /// Failure: a value that has not converged after 30 sweeps is left as it stands, maybe negative; this is not
  /// reported.
  /// Range: entries may have any magnitude, since far from 1 a multiple by a power of two is decomposed. Besides the
  /// largest entry, entries more than about 300 orders of magnitude smaller may count as 0.
  /// Throws: std::bad_array_new_length where n n or m n does not fit 32 bits, std::bad_alloc; U, S and V are then as
  /// they were.
  /// Cost: O((m + n) n^2), with memory for three copies of the matrix and of V; for magnitudes far from 1 once more.
  /// Source: G. Golub, C. Reinsch, Singular value decomposition and least squares solutions, 1970.
  void decompose(mat& U, mat& S, mat& V);

  /// \name For constants and temporaries
  /// The members above for const objects and operands, with their results and failures. Assignments return this matrix.
  /// Moves allocate nothing and empty their source.
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
  /// A matrix of zeros, columns first: `mat<long double>(2, 3)` has three rows of two.
  /// Throws: std::bad_array_new_length for counts that do not fit 32 bits, std::bad_alloc.
  template <class C, class R, class = tessarn::detail::if_counts<C, R>>
  mat(C columns, R rows) : mat() {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
    tessarn::detail::fill_with_zeros(data, width, height);
  }
  /// A matrix from its rows; the longest row is its width, and shorter ones are filled with zeros. A quiet NaN is
  /// stored as 0.0, as by set(). Each row has braces of its own: {{1, 2}} is one row, {{1}, {2}} a column, and {1, 2}
  /// gives the sizes.
  mat(std::initializer_list<std::initializer_list<tessarn::real>> rows)
      : mat(tessarn::detail::longest(rows), rows.size()) {
    tessarn::detail::store_rows(rows, data, width);
  }
  /// create() with counts of 64 bits.
  /// Throws: std::bad_array_new_length for those that do not fit 32 bits, and leaves the matrix as it was.
  template <class C, class R, class = std::enable_if_t<tessarn::detail::is_wide<C> || tessarn::detail::is_wide<R>>>
  void create(C columns, R rows) {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  /// Row y, wrapped, and column x, wrapped, as views; empty for a matrix without entries. What is written through a
  /// view is stored as it is, like what is written through getData(). A view holds as long as the pointer of getData().
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
  /// With TESSARN_CHECKED these take the places of the members of their names. They have the documented results, but a
  /// program that gives them a wrong index or wrong sizes prints the file and the line of the call and stops.
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
  /// After the virtual table pointer, in this order: the binary layout of the class. The matrix owns the entries.
  tessarn::real* data;
  tessarn::ulong width;
  tessarn::ulong height;

 private:
  // The compiled members are declared with non-const references, also where they change nothing.
  mat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static mat& other(const mat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  // The sizes agree, as sums and comparisons need.
  bool same_size(const mat& b) const noexcept { return width == b.width && height == b.height; }
  // With 64 bits: sizes whose count wraps have places that 32 bits do not hold.
  // Indices wrap only where they must, which spares the usual access two divisions.
  std::uint64_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::uint64_t>(y) * width + x;
  }
  // Makes the matrix empty without releasing the entries, which have another owner now or none.
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  // Deletes the entries and makes the matrix empty.
  void release() noexcept;
};

/// A rectangular matrix of complex numbers: storage, access, copies. Arithmetic is that of sqmat<cplx>, which exchanges
/// columns with this class. Values are stored as they are, NaN included.
///
/// \code
/// mat<cplx> a{{cplx(1, 2), cplx(0, 1)}};        // one row of two columns
/// a.set(0, 0, cplx(5, 0));
/// assert(a.get(0, 0) == cplx(5, 0));
/// assert(a.getWidth() == 2 && a.getHeight() == 1);
/// mat<cplx> zeros(2, 3);
/// assert(zeros.get(1, 2) == cplx(0, 0));
/// \endcode
template <>
class TESSARN_API mat<cplx> {
 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own; the copy of a matrix without storage has none. Throws: std::bad_alloc.
  mat(mat& m);
  /// Releases the entries. Pointers and views to them become invalid.
  virtual ~mat();
  /// Copies sizes and entries into new storage; `a = a` keeps the entries.
  /// Throws: std::bad_alloc; this matrix is then empty.
  void operator=(mat& src);

  /// Makes a matrix of zeros, columns first. The number of entries is the product in 32 bits: where columns * rows
  /// exceeds 2^32 - 1 the matrix has its sizes but not their entries, and must not be accessed.
  /// Throws: std::bad_alloc; the matrix is then empty.
  void create(tessarn::ulong columns, tessarn::ulong rows);
#if !defined(TESSARN_CHECKED)
  /// The entry in column x, row y, by value, indices wrapped. Never returns where a size is 0.
  cplx get(tessarn::ulong x, tessarn::ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped; a real v converts to the unit number at the angle v. Never
  /// returns where a size is 0.
  void set(tessarn::ulong x, tessarn::ulong y, cplx v) { data[position(x, y)] = v; }
#endif
  /// The entries themselves, row by row, entry (x, y) at y * width + x; null for a matrix that never had storage. The
  /// pointer holds until the matrix is created, assigned to, moved from, or receives a result.
  cplx* getData() const noexcept { return data; }
  /// The number of rows.
  tessarn::ulong getHeight() const noexcept { return height; }
  /// The number of columns.
  tessarn::ulong getWidth() const noexcept { return width; }

  /// \name For constants and temporaries
  /// The members above for const objects and operands. Assignments return this matrix. Moves allocate nothing and empty
  /// their source.
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
  /// @{
  /// A matrix of zeros, columns first.
  /// Throws: std::bad_array_new_length for counts that do not fit 32 bits, std::bad_alloc.
  template <class C, class R, class = tessarn::detail::if_counts<C, R>>
  mat(C columns, R rows) : mat() {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  /// A matrix from its rows; the longest row is its width, and shorter ones are filled with zeros. The rows hold cplx
  /// objects, never numbers, which would be angles.
  mat(std::initializer_list<std::initializer_list<tessarn::detail::complex_entry>> rows)
      : mat(tessarn::detail::longest(rows), rows.size()) {
    tessarn::detail::store_rows(rows, data, width);
  }
  /// create() with counts of 64 bits.
  /// Throws: std::bad_array_new_length for those that do not fit 32 bits, and leaves the matrix as it was.
  template <class C, class R, class = std::enable_if_t<tessarn::detail::is_wide<C> || tessarn::detail::is_wide<R>>>
  void create(C columns, R rows) {
    create(tessarn::detail::count(columns), tessarn::detail::count(rows));
  }
  /// Row y, wrapped, and column x, wrapped, as views; empty for a matrix without entries. A view holds as long as the
  /// pointer of getData().
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
  /// With TESSARN_CHECKED these take the places of the members of their names, and stop the program at an index beyond
  /// the size.
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
  /// After the virtual table pointer, in this order: the binary layout of the class. The matrix owns the entries, an
  /// array as by new[].
  cplx* data;
  tessarn::ulong width;
  tessarn::ulong height;

 private:
  // Indices wrap only where they must, which spares the usual access two divisions.
  std::size_t position(tessarn::ulong x, tessarn::ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::size_t>(y) * width + x;
  }
  // Makes the matrix empty without releasing the entries, which have another owner now or none.
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  // Deletes the entries and makes the matrix empty.
  void release() noexcept;
};

/// The product with the number on the left: `k * m` is `m * k`, for any integer or floating-point k, which becomes a
/// real first: integers beyond 2^53 are rounded.
template <class K, class M, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<M, mat<long double>>>
mat<long double> operator*(K k, const M& m) {
  return m * static_cast<tessarn::real>(k);
}

// The class stands in the global namespace; this is a second name.
namespace tessarn {
using ::mat;
}

// The layout on which callers of the compiled module rely.
static_assert(sizeof(void*) != 8 || (sizeof(mat<long double>) == 24 && sizeof(mat<cplx>) == 24),
              "a matrix is its virtual table pointer, the entries and the sizes");
