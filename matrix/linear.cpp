// Least squares through the normal equations, and inversion.
#include <algorithm>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/adjugate.h"
#include "matrix/kernels/kernels.h"
#include "matrix/linear_system.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::as_doubles;
using tessarn::detail::nan_to_zero;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;
using tessarn::detail::without_quiet_nan;

namespace {

// By the adjugate, which takes numbers only: quiet NaNs are replaced in a copy first.
void invert_square(const real_mat& a, real_mat& dst) {
  const std::size_t n = a.getWidth();
  const real* m = a.getData();
  real_array numbers;
  if (tessarn::detail::has_nan(m, n * n)) {
    numbers = tessarn::detail::allocate(n * n);
    std::transform(m, m + n * n, numbers.get(), without_quiet_nan);
    m = numbers.get();
  }
  tessarn::detail::invert_by_adjugate(m, n, dst.getData());
}

// The reciprocals of the diagonal, 0 for an entry that is 0 or NaN, into the zeroed dst.
void invert_diagonal(const real_mat& a, real_mat& dst) {
  const tessarn::ulong n = std::min(a.getWidth(), a.getHeight());
  for (tessarn::ulong k = 0; k < n; ++k) {
    const real d = a.getData()[static_cast<std::size_t>(k) * a.getWidth() + k];
    if (tessarn::detail::equal_or_unordered(d, 0)) continue;
    dst.getData()[static_cast<std::size_t>(k) * dst.getWidth() + k] = nan_to_zero(1 / d);
  }
}

// The pseudo-inverse V S^-1 U' of a rectangular matrix.
void pseudo_invert(real_mat& a, real_mat& dst) {
  real_mat u, s, v, reciprocals, ut;
  a.decompose(u, s, v);
  s.invert(reciprocals);
  u.transpose(ut);
  dst = (v * reciprocals) * ut;
}

}  // namespace

// Least squares by the normal equations, whose sums a kernel forms without the quiet-NaN rule: a NaN stays in every sum
// that it enters, so the rule is applied to the sums. The result is built apart, since this may be A or b.
void real_mat::solve(mat& A, mat& b) {
  const std::size_t m = A.height;
  const std::size_t n = A.width;
  if (b.height != m || b.width != 1) return;
  tessarn::detail::require_countable(A.width, A.height);
  mat g;
  g.create(1, A.width);
  tessarn::detail::linear_system normal(A.width);
  const tessarn::detail::matrix_kernels& kernels = tessarn::detail::matrix_kernels_in_use();
  using tessarn::detail::allocate, tessarn::detail::checked_product, tessarn::detail::checked_sum;
  const std::size_t stride = kernels.normal_stride(n);
  const real_array sums = allocate(checked_sum(checked_product(n, stride), kernels.normal_workspace(n)));
  kernels.normal_equations(as_doubles(A.data), as_doubles(b.data), m, n, as_doubles(sums.get()),
                           as_doubles(sums.get() + n * stride));
  for (std::size_t c = 0; c < n; ++c) {
    std::transform(&sums[c * stride], &sums[c * stride + n], normal.row(c), nan_to_zero);
    normal.right()[c] = nan_to_zero(sums[c * stride + n]);
  }
  normal.solve();
  std::copy_n(normal.right(), n, g.data);
  *this = static_cast<mat&&>(g);
}

// Diagonal matrices of any shape by reciprocals, other square ones by the adjugate, the rest by the pseudo-inverse.
void real_mat::invert(mat& dst) {
  mat inverse;
  inverse.create(height, width);
  std::fill_n(inverse.data, static_cast<tessarn::ulong>(height * width), static_cast<real>(0));
  if (&dst == this) {  // dst is cleared before this is read: the inverse of zeros, which are zeros
  } else if (isDiagonal()) {
    invert_diagonal(*this, inverse);
  } else if (width == height) {
    invert_square(*this, inverse);
  } else {
    pseudo_invert(*this, inverse);
  }
  dst = static_cast<mat&&>(inverse);
}
