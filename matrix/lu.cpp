// The real square solver: LU factorisation with partial pivoting.
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/elimination.h"
#include "matrix/kernels/kernels.h"
#include "matrix/names.h"
#include "matrix/small_solve.h"

namespace tessarn::detail {
namespace {

constexpr std::size_t stack_size = 1024;  // reals; larger systems allocate their workspace

using permutation = std::unique_ptr<std::uint32_t[]>;

// The row of the largest magnitude in column k from row k on, the upper one of equals; n when all are 0. A NaN
// is never larger.
std::size_t pivot_row(const real* w, std::size_t n, std::size_t k) {
  real best = 0;
  std::size_t row = n;
  for (std::size_t r = k; r < n; ++r) {
    const real magnitude = std::fabs(w[r * n + k]);
    if (magnitude > best) {
      best = magnitude;
      row = r;
    }
  }
  return row;
}

void exchange_rows(real* a, real* b, std::size_t n) {
  for (std::size_t c = 0; c < n; ++c) {
    const real t = without_quiet_nan(a[c]);
    a[c] = without_quiet_nan(b[c]);
    b[c] = t;
  }
}

// Factorises w in place, the multipliers below the diagonal, under the NaN rule. False when it is singular.
bool factorise_by_rule(real* w, std::size_t n, std::uint32_t* order) {
  for (std::size_t i = 0; i < n; ++i) order[i] = static_cast<std::uint32_t>(i);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t p = pivot_row(w, n, k);
    if (p == n) return false;
    std::swap(order[k], order[p]);
    exchange_rows(w + k * n, w + p * n, n);
    const real* upper = w + k * n;
    for (std::size_t r = k + 1; r < n; ++r) {
      real* row = w + r * n;
      const real multiplier = nan_to_zero(row[k] / upper[k]);
      row[k] = multiplier;
      for (std::size_t c = k + 1; c < n; ++c) row[c] = nan_to_zero(row[c] - multiplier * upper[c]);
    }
  }
  return true;
}

// v = L^-1 P b from the factorised w, each sum ascending from +0.0.
void substitute_forward(const real* w, std::size_t n, const std::uint32_t* order, column_view<real> b, real* v) {
  for (std::size_t i = 0; i < n; ++i) {
    real s = 0;
    for (std::size_t j = 0; j < i; ++j) s += w[i * n + j] * v[j];
    v[i] = nan_to_zero(b[order[i]] - s);
  }
}

// b = U^-1 v, the rows of w stride apart.
void substitute_back(const real* w, std::size_t n, std::size_t stride, const real* v, column_view<real> b) {
  for (std::size_t i = n; i-- > 0;) {
    real s = 0;
    for (std::size_t j = i + 1; j < n; ++j) s += w[i * stride + j] * b[j];
    b[i] = nan_to_zero((v[i] - s) / w[i * stride + i]);
  }
}

// The whole solution under the quiet-NaN rule, step by step. False when a column of candidate pivots is exactly 0.
bool solve_by_rule(const real* a, std::size_t n, column_view<real> b) {
  const real_array w = allocate(n * (n + 1));
  const permutation order(new std::uint32_t[n]);
  std::copy_n(a, n * n, w.get());
  if (!factorise_by_rule(w.get(), n, order.get())) return false;
  real* v = w.get() + n * n;
  substitute_forward(w.get(), n, order.get(), b, v);
  substitute_back(w.get(), n, n, v, b);
  return true;
}

// The kernel factorises a padded copy without the quiet-NaN rule; where it meets a NaN, or a singular matrix,
// everything is done again under the rule. room begins at a whole cache line and holds the copy in rows of stride, a
// column and the workspace of the kernel.
bool solve_by_kernel(const real* a, std::size_t n, column_view<real> b, real* room, std::size_t stride) {
  real* v = room + n * stride;
  for (std::size_t r = 0; r < n; ++r) {
    std::copy_n(a + r * n, n, room + r * stride);
    std::fill_n(room + r * stride + n, stride - n, static_cast<real>(0));
    v[r] = b[r];
  }
  if (!matrix_kernels_in_use().factorise(as_doubles(room), n, as_doubles(v), as_doubles(v + stride)))
    return solve_by_rule(a, n, b);
  substitute_back(room, n, stride, v, b);
  return true;
}

}  // namespace

bool solve_lu(const real* a, std::size_t n, column_view<real> b) {
  using solver = bool (*)(const real*, column_view<real>);
  static constexpr solver small[] = {
      nullptr,           register_solve<1>, register_solve<2>, register_solve<3>, register_solve<4>, register_solve<5>,
      register_solve<6>, register_solve<7>, register_solve<8>, pointer_solve<9>,  pointer_solve<10>, pointer_solve<11>,
      pointer_solve<12>, pointer_solve<13>, pointer_solve<14>, pointer_solve<15>, pointer_solve<16>};
  // Where b has fewer than n rows, equations share an entry of b: the solution would overwrite entries that it still
  // needs.
  if (n < sizeof small / sizeof *small) return (n <= b.height && small[n](a, b)) || solve_by_rule(a, n, b);
  const std::size_t stride = matrix_kernels_in_use().lu_stride(n);
  workspace<real, stack_size, 64> room((n + 1) * stride + matrix_kernels_in_use().lu_workspace(n));
  return solve_by_kernel(a, n, b, room.data(), stride);
}

}  // namespace tessarn::detail

using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

void real_sqmat::solve(real_mat& b) {
  if (size == 0 || b.getWidth() == 0 || b.getHeight() == 0) return;
  tessarn::detail::require_countable(b.getWidth(), b.getHeight());
  tessarn::detail::solve_lu(data, size, {b.getData(), b.getHeight(), b.getWidth()});
}
