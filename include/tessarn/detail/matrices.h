/// \file
/// Shared parts of the matrix classes: the primary templates, views of rows and columns, and initializer lists.
/// Included by tessarn/mat.h and tessarn/sqmat.h; not for programs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "tessarn/cplx.h"
#include "tessarn/scalar.h"
#include "tessarn/span.h"

namespace tessarn::detail {
/// False for every T, but known only when T is: so the assertions below fail at their use, not here.
template <class T>
inline constexpr bool is_an_entry = false;
}  // namespace tessarn::detail

/// Rectangular matrices. T is `long double` (the name on every platform; the entries are tessarn::real) or cplx: the
/// two specialisations in tessarn/mat.h are all there are.
template <class T>
class mat {
  static_assert(tessarn::detail::is_an_entry<T>,
                "matrices are mat<long double>, whose entries are 64-bit reals on every platform, or mat<cplx>");
};
/// Square matrices, with the two specialisations of tessarn/sqmat.h.
template <class T>
class sqmat {
  static_assert(tessarn::detail::is_an_entry<T>,
                "square matrices are sqmat<long double>, whose entries are 64-bit reals on every platform, or "
                "sqmat<cplx>");
};
// Declared before anything names them, so that no use can instantiate the primary templates.
template <>
class mat<long double>;
template <>
class mat<cplx>;
template <>
class sqmat<long double>;
template <>
class sqmat<cplx>;

namespace tessarn::detail {

/// Operations without a test of sizes: the documented members under other names. The checked mode calls them after its
/// own test, and operators that are templates call them because they are not members. Results, special results and
/// failures are those of the members.
struct unchecked {
  /// a + b, a - b, a b; the empty matrix when the sizes do not fit.
  TESSARN_API static mat<long double> sum(const mat<long double>& a, const mat<long double>& b);
  TESSARN_API static mat<long double> difference(const mat<long double>& a, const mat<long double>& b);
  TESSARN_API static mat<long double> product(const mat<long double>& a, const mat<long double>& b);
  /// a == b, true when the sizes differ.
  TESSARN_API static bool equal(const mat<long double>& a, const mat<long double>& b);
  /// x.solve(A, b); x stays as it is when the sizes do not fit.
  TESSARN_API static void solve(mat<long double>& x, const mat<long double>& A, const mat<long double>& b);
  /// a b as a new matrix, with the entries that `*=` gives; empty when the sizes differ.
  TESSARN_API static sqmat<long double> product(const sqmat<long double>& a, const sqmat<long double>& b);
  TESSARN_API static sqmat<cplx> product(const sqmat<cplx>& a, const sqmat<cplx>& b);
  /// a == b, true when the sizes differ.
  TESSARN_API static bool equal(const sqmat<long double>& a, const sqmat<long double>& b);
  /// a *= b; nothing when the sizes differ.
  TESSARN_API static void multiply(sqmat<long double>& a, const sqmat<long double>& b);
  TESSARN_API static void multiply(sqmat<cplx>& a, const sqmat<cplx>& b);
  /// a.setColumn(x, column); nothing when the height is another.
  TESSARN_API static void set_column(sqmat<long double>& a, ulong x, const mat<long double>& column);
  TESSARN_API static void set_column(sqmat<cplx>& a, ulong x, const mat<cplx>& column);
  /// a.solve(b), which replaces the first column of b.
  TESSARN_API static void solve(const sqmat<long double>& a, mat<long double>& b);
  TESSARN_API static void solve(const sqmat<cplx>& a, mat<cplx>& b);
};

/// Stores v under the quiet-NaN rule: 0.0 for a quiet NaN. By its bits, because a comparison would not tell a
/// signalling NaN, which is stored as it is, and because the caller's compiler may assume that there are no NaNs.
inline void store(real& entry, real v) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  constexpr std::uint64_t quiet = 0x7FF8000000000000u;
  entry = (bits & quiet) == quiet ? 0 : v;
}

/// A complex number in an initializer list: made from a cplx alone. A number would convert to the unit number at that
/// angle, which nobody means who writes {{1, 2}, {3, 4}}.
struct complex_entry {
  cplx value;
  template <class Z, class = std::enable_if_t<std::is_same_v<Z, cplx>>>
  complex_entry(const Z& z) noexcept : value(z) {}
};
/// Complex entries are stored as they are.
inline void store(cplx& entry, const complex_entry& v) noexcept { entry = v.value; }

/// The length of the longest row; 0 without rows.
template <class Rows>
inline std::size_t longest(const Rows& rows) noexcept {
  std::size_t most = 0;
  for (const auto& row : rows) most = (std::max)(most, row.size());
  return most;
}

/// Stores each row at the front of a row of `width` entries, and leaves the rest of the row as it is. No row is longer
/// than `width`.
template <class Rows, class T>
inline void store_rows(const Rows& rows, T* data, ulong width) noexcept {
  for (const auto& row : rows) {
    T* entry = data;
    for (const auto& v : row) store(*entry++, v);
    data += width;
  }
}

/// Fills the entries for which create() makes room: their number is the product in 32 bits.
inline void fill_with_zeros(real* data, ulong width, ulong height) noexcept {
  std::fill_n(data, static_cast<std::size_t>(static_cast<ulong>(width * height)), static_cast<real>(0));
}

/// Row y, wrapped, of a row-major array; empty where a size is 0, since there is no index to wrap to.
template <class T>
inline span<T> row(T* data, ulong width, ulong height, ulong y) noexcept {
  if (width == 0 || height == 0) return {};
  return {data + static_cast<std::size_t>(y % height) * width, width};
}

/// Column x, wrapped, of a row-major array, from entry to entry by `width`; empty where a size is 0.
template <class T>
inline strided_span<T> column(T* data, ulong width, ulong height, ulong x) noexcept {
  if (width == 0 || height == 0) return {};
  return {data + x % width, height, width};
}

}  // namespace tessarn::detail
