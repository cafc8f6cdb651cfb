/// \file
/// Dense matrices, rectangular and square, over reals and complex numbers.
///
/// Element access names the column first: get(x, y) is the entry in column x and row y. Storage is
/// row-major, entry (x, y) at index y * width + x:
///
///                 x = 0    x = 1    x = 2
///       y = 0   [ data[0]  data[1]  data[2] ]
///       y = 1   [ data[3]  data[4]  data[5] ]      width 3, height 2
///
/// Indices wrap: x = width + 1 is column 1. A matrix with a zero extent has no entries, and accessing one
/// never returns.
///
/// The quiet-NaN rule: a real matrix stores 0.0 in place of a quiet NaN, in set() and in every computed
/// entry unless said otherwise; infinities are stored as they are. Complex matrices have no such rule.
///
/// Errors are not reported. Mismatched sizes give an empty matrix or no action, as each member says; only
/// std::bad_alloc is thrown, and the matrices involved are then as they were or empty. Sums run in
/// ascending order from +0.0 and products are rounded, so results have the same bits everywhere.
/// Objects may be used from several threads at once as long as each object has one user.
///
/// Besides their results, operations work on no more memory than this, in multiples of the matrices they
/// are given, and a kilobyte: products 1, complex products 2, determinants and complex systems 2, real
/// systems 4, least squares a few rows and columns, decomposition 3 times the matrix and V, inversion of a
/// square matrix 24; calc_match() none.
#pragma once

#include "tessarn/cplx.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

/// The two instantiations are the specialisations below; `T` is `long double` (the name on every
/// platform, with tessarn::real entries) or cplx.
template <class T>
class mat;
template <class T>
class sqmat;

/// A rectangular matrix of reals. One column wide it is the library's column vector.
template <>
class TESSARN_API mat<long double> {
  using real = tessarn::real;
  using ulong = tessarn::ulong;

 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own; empty when the source has none.
  mat(mat& m);
  virtual ~mat();
  /// Copies sizes and entries, as they are; `a = a` keeps the entries.
  void operator=(mat& src);

  /// Makes a width x height matrix; the entries are unspecified. Their number is the product in 32 bits: the
  /// entries of a matrix whose product does not fit do not exist, and no operation may read them.
  void create(ulong columns, ulong rows);
  /// The entry in column x, row y, indices wrapped.
  real get(ulong x, ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN.
  void set(ulong x, ulong y, real v);
  /// The entries themselves, row by row; null for a matrix that never had storage. The pointer holds
  /// until the matrix is created, assigned to, or receives a result.
  real* getData() const noexcept { return data; }
  ulong getHeight() const noexcept { return height; }
  ulong getWidth() const noexcept { return width; }

  /// Entry by entry; the empty matrix when the sizes differ.
  mat operator+(mat& b);
  mat operator-(mat& b);
  /// The product, b.width columns by height rows, each sum over k ascending from +0.0; the empty matrix
  /// unless width == b.height. Throws when the entries do not fit 32 bits.
  mat operator*(mat& b);
  /// Every entry times s.
  mat operator*(real s);
  /// Every entry divided by s, a true division; 0 / 0 is stored as 0.0.
  mat operator/(real s);
  /// True when the sizes differ (deliberately), else when no pair of entries differs; NaN differs from
  /// nothing.
  bool operator==(mat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs.
  bool operator!=(mat& b);
  /// Makes dst the height x width transpose; values are moved as they are. `a.transpose(a)` gives
  /// zeros, since the receiving matrix is released before the source is read.
  void transpose(mat& dst);
  /// A copy of this column (width 1) divided by its length; a zero column gives a zero column, another
  /// width the empty matrix.
  mat normalize();
  /// True when every entry off the main diagonal is 0 or NaN; also for rectangular matrices.
  bool isDiagonal();

  /// Makes this matrix the column x (width 1, height A.width) that minimises |A x - b|, from the normal
  /// equations (A'A) x = A'b. Does nothing unless b is one column of A.height rows. When A'A is singular
  /// the result is the column A'b; evaluate the residual to know. A and b are not changed, and either may
  /// be this object. The condition of A'A is the square of that of A: scale and centre the columns.
  void solve(mat& A, mat& b);
  /// Makes dst (height x width) the inverse: of a diagonal matrix the reciprocals, with 0 for a zero or
  /// NaN entry; of a square matrix the adjugate times the reciprocal of the determinant, infinite or NaN
  /// when that is 0; of any other matrix the pseudo-inverse by decompose(), in which only a singular
  /// value of exactly 0.0 counts as zero, so that the rounded zeros of a wide or rank-deficient matrix
  /// can make it meaningless. `a.invert(a)` gives zeros, since dst is cleared before it is read. The
  /// adjugate takes O(n^5) operations, less what its minors share; it is meant for small matrices.
  void invert(mat& dst);
  /// The singular value decomposition this = U S V' (G. Golub, C. Reinsch, Singular value decomposition
  /// and least squares solutions, 1970): for a matrix of m rows and n columns U is m x n, S n x n with the
  /// singular values in descending order on its diagonal, V n x n; columns of U and V are the singular
  /// vectors. A value that has not converged after 30 sweeps is left as it stands. U, S and V must be
  /// three different matrices; this one may be among them, it is read first.
  void decompose(mat& U, mat& S, mat& V);

  /// \name The same for constants and temporaries
  /// @{
  mat(const mat& m) : mat(tessarn::detail::mutable_ref(m)) {}
  mat(mat&& m) noexcept : data(m.data), width(m.width), height(m.height) { m.forget(); }
  void operator=(const mat& src) { *this = other(src); }
  void operator=(mat&& src) noexcept;
  real get(ulong x, ulong y) const { return data[position(x, y)]; }
  mat operator+(const mat& b) const { return self() + other(b); }
  mat operator-(const mat& b) const { return self() - other(b); }
  mat operator*(const mat& b) const { return self() * other(b); }
  mat operator*(real s) const { return self() * s; }
  mat operator/(real s) const { return self() / s; }
  bool operator==(const mat& b) const { return self() == other(b); }
  bool operator!=(const mat& b) const { return self() != other(b); }
  void transpose(mat& dst) const { self().transpose(dst); }
  mat normalize() const { return self().normalize(); }
  bool isDiagonal() const { return self().isDiagonal(); }
  void solve(const mat& A, const mat& b) { solve(other(A), other(b)); }
  void invert(mat& dst) const { self().invert(dst); }
  void decompose(mat& U, mat& S, mat& V) const { self().decompose(U, S, V); }
  /// @}

 protected:
  real* data;
  ulong width;
  ulong height;

 private:
  mat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static mat& other(const mat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  std::size_t position(ulong x, ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::size_t>(y) * width + x;
  }
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  void release() noexcept;
  friend struct tessarn::detail::access;
};

/// A rectangular matrix of complex numbers: storage, access, copies.
template <>
class TESSARN_API mat<cplx> {
  using ulong = tessarn::ulong;

 public:
  /// The empty matrix: no storage, both sizes 0.
  mat() noexcept : data(nullptr), width(0), height(0) {}
  /// A copy with storage of its own; empty when the source has none.
  mat(mat& m);
  virtual ~mat();
  /// Copies sizes and entries; `a = a` keeps the entries.
  void operator=(mat& src);

  /// Makes a width x height matrix of zeros. Their number is the product in 32 bits, as for reals.
  void create(ulong columns, ulong rows);
  /// The entry in column x, row y, by value, indices wrapped.
  cplx get(ulong x, ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped.
  void set(ulong x, ulong y, cplx v) { data[position(x, y)] = v; }
  /// The entries themselves, row by row; null for a matrix that never had storage.
  cplx* getData() const noexcept { return data; }
  ulong getHeight() const noexcept { return height; }
  ulong getWidth() const noexcept { return width; }

  /// \name The same for constants and temporaries
  /// @{
  mat(const mat& m) : mat(tessarn::detail::mutable_ref(m)) {}
  mat(mat&& m) noexcept : data(m.data), width(m.width), height(m.height) { m.forget(); }
  void operator=(const mat& src) { *this = tessarn::detail::mutable_ref(src); }
  void operator=(mat&& src) noexcept;
  cplx get(ulong x, ulong y) const { return data[position(x, y)]; }
  /// @}

 protected:
  cplx* data;
  ulong width;
  ulong height;

 private:
  std::size_t position(ulong x, ulong y) const {
    if (x >= width) x = tessarn::detail::wrap(x, width);
    if (y >= height) y = tessarn::detail::wrap(y, height);
    return static_cast<std::size_t>(y) * width + x;
  }
  void forget() noexcept {
    data = nullptr;
    width = height = 0;
  }
  void release() noexcept;
  friend struct tessarn::detail::access;
};

/// A square matrix of n x n reals. It exchanges single columns with mat<long double>. n is at most
/// 65535; more throws std::bad_alloc.
template <>
class TESSARN_API sqmat<long double> {
  using real = tessarn::real;
  using ulong = tessarn::ulong;

 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own.
  sqmat(sqmat& m);
  virtual ~sqmat();
  /// Makes an n x n matrix; the entries are unspecified. n = 0 leaves it empty.
  void create(ulong n);
  /// Copies size and entries, as they are.
  void operator=(sqmat& src);

  /// The entry in column x, row y, indices wrapped.
  real get(ulong x, ulong y) { return data[position(x, y)]; }
  /// Stores v in column x, row y, indices wrapped; 0.0 for a quiet NaN.
  void set(ulong x, ulong y, real v);
  ulong getSize() noexcept { return size; }
  /// The entries themselves, row by row; the matrix keeps them.
  real* getData() noexcept { return data; }
  /// Column x, wrapped, as a new matrix one wide and n high, under the quiet-NaN rule.
  mat<long double> getColumn(ulong x);
  /// Stores the first column of the argument as column x, under the quiet-NaN rule, when its height is n;
  /// otherwise does nothing.
  void setColumn(ulong x, mat<long double> column);
  /// Makes dst the transpose, under the quiet-NaN rule; `a.transpose(a)` works too.
  void transpose(sqmat& dst);
  /// this = this b, sums over k ascending from +0.0; nothing when the sizes differ. `a *= a` squares.
  void operator*=(sqmat& b);
  /// True when the sizes differ (deliberately), else when no pair of entries differs; NaN differs from
  /// nothing.
  bool operator==(sqmat& b);
  /// False when the sizes differ (deliberately), else true when some pair of entries differs.
  bool operator!=(sqmat& b);

  /// The determinant: 1 for n = 0, Sarrus' rule for n = 3, else elimination without pivoting, so that a
  /// zero pivot leads to infinities and NaN: the rows (0, 1), (1, 0) give NaN.
  real det();
  /// The cofactor of column x, row y: (-1)^(x+y) times the determinant without them; 0.0 for n < 2.
  real cof(ulong x, ulong y);
  /// Replaces the first column of b (n rows) by the solution u of this u = b, by LU factorisation with
  /// partial pivoting; of equal pivots the upper row wins. A singular matrix (a column of candidate pivots
  /// that is exactly 0) leaves b as it is.
  void solve(mat<long double>& b);

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
  bool calc_match(vector3d* a, vector3d* b, ulong n);
  /// Makes this the 4 x 4 matrix of the affine map from a to b, four least-squares fits of n points, the
  /// last row fitting the constant 1. Four points that are not in one plane determine it.
  void calc_transform(vector3d* a, vector3d* b, ulong n);
  /// out = the first three rows applied to (in, 1); nothing unless the size is 4. in may be out: its
  /// coordinates are read first.
  void transform(vector3d& in, vector3d& out);

  /// \name The same for constants and temporaries
  /// @{
  sqmat(const sqmat& m) : sqmat(other(m)) {}
  sqmat(sqmat&& m) noexcept : data(m.data), size(m.size) { m.forget(); }
  void operator=(const sqmat& src) { *this = other(src); }
  void operator=(sqmat&& src) noexcept;
  real get(ulong x, ulong y) const { return data[position(x, y)]; }
  ulong getSize() const noexcept { return size; }
  const real* getData() const noexcept { return data; }
  mat<long double> getColumn(ulong x) const { return self().getColumn(x); }
  void transpose(sqmat& dst) const { self().transpose(dst); }
  void operator*=(const sqmat& b) { *this *= other(b); }
  bool operator==(const sqmat& b) const { return self() == other(b); }
  bool operator!=(const sqmat& b) const { return self() != other(b); }
  real det() const { return self().det(); }
  real cof(ulong x, ulong y) const { return self().cof(x, y); }
  void solve(mat<long double>& b) const { self().solve(b); }
  template <class A, class B,
            class = std::enable_if_t<tessarn::detail::is_pointer_to_const<A, vector3d> ||
                                     tessarn::detail::is_pointer_to_const<B, vector3d>>>
  bool calc_match(A a, B b, ulong n) {
    return calc_match(const_cast<vector3d*>(static_cast<const vector3d*>(a)),
                      const_cast<vector3d*>(static_cast<const vector3d*>(b)), n);
  }
  template <class A, class B,
            class = std::enable_if_t<tessarn::detail::is_pointer_to_const<A, vector3d> ||
                                     tessarn::detail::is_pointer_to_const<B, vector3d>>>
  void calc_transform(A a, B b, ulong n) {
    calc_transform(const_cast<vector3d*>(static_cast<const vector3d*>(a)),
                   const_cast<vector3d*>(static_cast<const vector3d*>(b)), n);
  }
  void transform(const vector3d& in, vector3d& out) const {
    self().transform(tessarn::detail::mutable_ref(in), out);
  }
  /// @}

  /// transform() for n points; in may be out.
  void transform(const vector3d* in, vector3d* out, ulong n) const;
  /// this b as a new matrix, with the entries that `*=` gives; empty when the sizes differ.
  sqmat operator*(const sqmat& b) const;

 protected:
  real* data;
  ulong size;

 private:
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static sqmat& other(const sqmat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  std::size_t position(ulong x, ulong y) const {
    if (x >= size) x = tessarn::detail::wrap(x, size);
    if (y >= size) y = tessarn::detail::wrap(y, size);
    return static_cast<std::size_t>(y) * size + x;
  }
  void forget() noexcept {
    data = nullptr;
    size = 0;
  }
  void release() noexcept;
  friend struct tessarn::detail::access;
};

/// A square matrix of n x n complex numbers. Degenerate input is treated differently from the real one:
/// a zero pivot is skipped, and there is no quiet-NaN rule. n is at most 65535; more throws std::bad_alloc.
template <>
class TESSARN_API sqmat<cplx> {
  using ulong = tessarn::ulong;

 public:
  /// The empty matrix: no storage, size 0.
  sqmat() noexcept : data(nullptr), size(0) {}
  /// A copy with storage of its own, also (of length zero) for an empty source.
  sqmat(sqmat& m);
  virtual ~sqmat();
  /// Makes an n x n matrix of zeros; n = 0 leaves an array of length zero.
  void create(ulong n);
  /// Copies size and entries.
  void operator=(sqmat& src);

  /// The entry in column x, row y, by value, indices wrapped.
  cplx get(ulong x, ulong y) { return data[position(x, y)]; }
  /// Stores v as it is in column x, row y, indices wrapped.
  void set(ulong x, ulong y, cplx v) { data[position(x, y)] = v; }
  ulong getSize() noexcept { return size; }
  /// Column x, wrapped, as a new matrix one wide and n high.
  mat<cplx> getColumn(ulong x);
  /// Stores the first column of the argument as column x when its height is n; otherwise does nothing.
  void setColumn(ulong x, mat<cplx> column);
  /// this = this b, sums over k ascending from 0; nothing when the sizes differ. `a *= a` squares.
  void operator*=(sqmat& b);

  /// The determinant by elimination for every n, 1 for n = 0; the factor of a zero pivot is 0.
  cplx det();
  /// The cofactor of column x, row y; 1 + 0i for n < 2 (the real one gives 0).
  cplx cof(ulong x, ulong y);
  /// Replaces the first column of b (n rows) by the solution, by elimination without pivoting; a zero
  /// diagonal gives a zero component, so b is always rewritten.
  void solve(mat<cplx>& b);

  /// Classical Gram-Schmidt on the columns with the plain product sum a_k b_k, not conjugated; a column
  /// whose square is 0 is passed over.
  void orthogonalize();
  /// Forward elimination in place without pivoting; a zero pivot leaves its rows unchanged.
  void optimize();

  /// \name The same for constants and temporaries
  /// @{
  sqmat(const sqmat& m) : sqmat(other(m)) {}
  sqmat(sqmat&& m) noexcept : data(m.data), size(m.size) { m.forget(); }
  void operator=(const sqmat& src) { *this = other(src); }
  void operator=(sqmat&& src) noexcept;
  cplx get(ulong x, ulong y) const { return data[position(x, y)]; }
  ulong getSize() const noexcept { return size; }
  mat<cplx> getColumn(ulong x) const { return self().getColumn(x); }
  void operator*=(const sqmat& b) { *this *= other(b); }
  cplx det() const { return self().det(); }
  cplx cof(ulong x, ulong y) const { return self().cof(x, y); }
  void solve(mat<cplx>& b) const { self().solve(b); }
  /// @}

  /// this b as a new matrix, with the entries that `*=` gives; empty when the sizes differ. It spares the copy that
  /// `c = a; c *= b` makes.
  sqmat operator*(const sqmat& b) const;

 protected:
  cplx* data;
  ulong size;

 private:
  sqmat& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static sqmat& other(const sqmat& m) noexcept { return tessarn::detail::mutable_ref(m); }
  std::size_t position(ulong x, ulong y) const {
    if (x >= size) x = tessarn::detail::wrap(x, size);
    if (y >= size) y = tessarn::detail::wrap(y, size);
    return static_cast<std::size_t>(y) * size + x;
  }
  void forget() noexcept {
    data = nullptr;
    size = 0;
  }
  void release() noexcept;
  friend struct tessarn::detail::access;
};

static_assert(sizeof(void*) != 8 || (sizeof(mat<long double>) == 24 && sizeof(mat<cplx>) == 24 &&
                                     sizeof(sqmat<long double>) == 24 && sizeof(sqmat<cplx>) == 24),
              "a matrix is its virtual table pointer, the entries and the sizes");
