// The singular value decomposition of real matrices.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/binary_form.h"
#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/decompose.h"
#include "matrix/kernels/kernels.h"
#include "matrix/names.h"

namespace tessarn::detail {
namespace {

// Sums of squares neither overflow nor lose digits that count where the largest magnitude of a matrix is in this range.
// Outside it a copy is decomposed whose largest magnitude is 2^+-365 or a little more. That is far enough from 1 for
// the kernel to go the same way (kernels/bidiagonalise.inl: its own limits are those of sums of squares, 10^+-200), so
// that a matrix that needs no copy would have the same bits with one.
constexpr int safe_exponent = 400, scaled_exponent = 365;

// A quick test, by the sum of the squares in any order, that is true for nearly all matrices: they need no scaling.
bool is_ordinary(const real* a, std::size_t n) {
  constexpr std::size_t lanes = 8;
  real sum[lanes] = {}, total = 0;
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes)
    for (std::size_t k = 0; k < lanes; ++k) sum[k] += a[i + k] * a[i + k];
  for (; i < n; ++i) total += a[i] * a[i];
  for (const real s : sum) total += s;
  return total > static_cast<real>(1e-200) && total < static_cast<real>(1e200);
}

// The largest magnitude; infinite where there is an infinity or a NaN.
real largest_magnitude(const real* a, std::size_t n) {
  constexpr real greatest = std::numeric_limits<real>::max();
  real largest = 0;
  bool finite = true;
  for (std::size_t i = 0; i < n; ++i) {
    const real magnitude = std::fabs(a[i]);
    finite &= magnitude <= greatest;
    largest = magnitude > largest ? magnitude : largest;
  }
  return finite ? largest : std::numeric_limits<real>::infinity();
}

// The exponent of the power of two to multiply a matrix of this largest magnitude by before it is decomposed.
int scale_of(real largest) {
  if (largest == 0 || !std::isfinite(largest)) return 0;
  const int exponent = exponent_of(largest);
  if (exponent >= -safe_exponent && exponent < safe_exponent) return 0;
  return (exponent < 0 ? -scaled_exponent : scaled_exponent) - exponent;
}

// False where a small entry next to a large one loses bits.
bool scale_entries(const real* a, std::size_t n, int scale, real* scaled) {
  bool exact = true;
  for (std::size_t i = 0; i < n; ++i) {
    scaled[i] = tessarn::detail::scaled(a[i], scale);
    exact &= tessarn::detail::scaled(scaled[i], -scale) == a[i];
  }
  return exact;
}

// a may be U: it is read before anything is written.
void decompose_directly(const real* a, std::size_t rows, std::size_t columns, real* U, real* S, real* V) {
  const matrix_kernels& kernels = matrix_kernels_in_use();
  workspace<real, 1024> work(kernels.decompose_workspace(rows, columns));
  kernels.decompose(as_doubles(a), rows, columns, as_doubles(U), as_doubles(S), as_doubles(V), as_doubles(work.data()));
}

// The decomposition of the scaled entries in U.
void decompose_scaled(std::size_t rows, std::size_t columns, int scale, real* U, real* S, real* V) {
  decompose_directly(U, rows, columns, U, S, V);
  for (std::size_t i = 0; i < columns; ++i) S[i * columns + i] = tessarn::detail::scaled(S[i * columns + i], -scale);
}

// Whether the singular values differ by little, compared with the largest one; false where one is a NaN.
bool agree(const real* S, const real* T, std::size_t columns) {
  constexpr real tolerance = static_cast<real>(1e-8);
  for (std::size_t i = 0; i < columns; ++i) {
    const std::size_t k = i * columns + i;
    if (!(std::fabs(S[k] - T[k]) <= tolerance * std::fabs(T[0]))) return false;
  }
  return true;
}

}  // namespace

// Scales the matrix where its magnitudes are extreme; see safe_exponent.
void decompose(const real* a, std::size_t rows, std::size_t columns, real* U, real* S, real* V) {
  if (columns == 0) return;  // nothing to write; the kernel needs a column
  const std::size_t entries = rows * columns;
  const int scale = is_ordinary(a, entries) ? 0 : scale_of(largest_magnitude(a, entries));
  if (scale == 0) return decompose_directly(a, rows, columns, U, S, V);
  if (scale_entries(a, entries, scale, U)) return decompose_scaled(rows, columns, scale, U, S, V);
  // The entries are too far apart to be scaled exactly. Often no sweep squares the large ones, as in a diagonal matrix:
  // then the decomposition without scaling keeps the small singular values, too. It is taken where both agree.
  const real_array scaled = allocate(entries + 2 * columns * columns);
  real* const scaled_S = scaled.get() + entries;
  real* const scaled_V = scaled_S + columns * columns;
  std::copy_n(U, entries, scaled.get());
  decompose_scaled(rows, columns, scale, scaled.get(), scaled_S, scaled_V);
  decompose_directly(a, rows, columns, U, S, V);
  if (agree(S, scaled_S, columns)) return;
  std::copy_n(scaled.get(), entries, U);
  for (std::size_t i = 0; i < columns; ++i) S[i * columns + i] = scaled_S[i * columns + i];
  std::copy_n(scaled_V, columns * columns, V);
}

}  // namespace tessarn::detail

using tessarn::real;
using tessarn::detail::real_mat;

void real_mat::decompose(mat& U, mat& S, mat& V) {
  tessarn::detail::require_countable(width, height);
  tessarn::detail::require_countable(width, width);
  mat left, values, right;
  left.create(width, height);
  values.create(width, width);
  right.create(width, width);
  std::fill_n(values.data, static_cast<tessarn::ulong>(width * width), static_cast<real>(0));
  tessarn::detail::decompose(data, height, width, left.data, values.data, right.data);
  U = static_cast<mat&&>(left);
  S = static_cast<mat&&>(values);
  V = static_cast<mat&&>(right);
}
