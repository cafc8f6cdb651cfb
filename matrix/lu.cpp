// The real square solver: LU factorisation with partial pivoting.
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/access.h"
#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/elementwise.h"
#include "matrix/elimination.h"
#include "matrix/kernels.h"

namespace tessarn::detail {
namespace {

constexpr std::size_t kernel_size = 8;  // from here on a kernel factorises
constexpr std::size_t stack_size = 16;  // up to here nothing is allocated

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
      const real multiplier = computed(row[k] / upper[k]);
      row[k] = multiplier;
      for (std::size_t c = k + 1; c < n; ++c) row[c] = computed(row[c] - multiplier * upper[c]);
    }
  }
  return true;
}

// The same without the rule, for sizes at which a call of the kernel does not pay.
bool factorise_small(real* w, std::size_t n, std::uint32_t* order) {
  for (std::size_t i = 0; i < n; ++i) order[i] = static_cast<std::uint32_t>(i);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t p = pivot_row(w, n, k);
    if (p == n) return false;
    real* upper = w + k * n;
    if (p != k) {
      std::swap(order[k], order[p]);
      for (std::size_t c = 0; c < n; ++c) std::swap(upper[c], w[p * n + c]);
    }
    for (std::size_t r = k + 1; r < n; ++r) {
      real* row = w + r * n;
      const real multiplier = row[k] = row[k] / upper[k];
      for (std::size_t c = k + 1; c < n; ++c) row[c] -= multiplier * upper[c];
    }
  }
  return true;
}

// The same under the rule. A NaN that appears in an entry stays in the entries that depend on it, so a result
// without NaN is the result under the rule, and otherwise the work is done again.
bool factorise(const real* a, std::size_t n, real* w, std::uint32_t* order, real* workspace) {
  std::copy_n(a, n * n, w);
  const bool regular = n < kernel_size ? factorise_small(w, n, order)
                                       : matrix().factorise(as_doubles(w), n, order, as_doubles(workspace));
  if (!has_nan(w, n * n)) return regular;
  std::copy_n(a, n * n, w);
  return factorise_by_rule(w, n, order);
}

// v = L^-1 P b: each sum ascending from +0.0, those of four rows side by side.
void substitute_forward(const real* w, std::size_t n, const std::uint32_t* order, column_view<real> b, real* v) {
  constexpr std::size_t group = 4;
  for (std::size_t first = 0; first < n; first += group) {
    const std::size_t rows = std::min(group, n - first);
    real s[group] = {};
    if (rows == group)
      for (std::size_t j = 0; j < first; ++j)
        for (std::size_t k = 0; k < group; ++k) s[k] += w[(first + k) * n + j] * v[j];
    for (std::size_t k = 0; k < rows; ++k) {
      const std::size_t i = first + k;
      for (std::size_t j = rows == group ? first : 0; j < i; ++j) s[k] += w[i * n + j] * v[j];
      v[i] = computed(b[order[i]] - s[k]);
    }
  }
}

// w holds n n reals, n more for the intermediate column and the workspace of the elimination, order n integers.
bool solve_in(const real* a, std::size_t n, column_view<real> b, real* w, std::uint32_t* order) {
  real* v = w + n * n;
  if (!factorise(a, n, w, order, v + n)) return false;
  substitute_forward(w, n, order, b, v);
  for (std::size_t i = n; i-- > 0;) {
    real s = 0;
    for (std::size_t j = i + 1; j < n; ++j) s += w[i * n + j] * b[j];
    b[i] = computed((v[i] - s) / w[i * n + i]);
  }
  return true;
}

}  // namespace

bool solve_lu(const real* a, std::size_t n, column_view<real> b) {
  if (n <= stack_size) {
    real w[stack_size * (stack_size + 1)];
    std::uint32_t order[stack_size];
    return solve_in(a, n, b, w, order);
  }
  const real_array w = allocate(n * n + n + matrix().elimination_workspace(n));
  const permutation order(new std::uint32_t[n]);
  return solve_in(a, n, b, w.get(), order.get());
}

}  // namespace tessarn::detail

using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

void real_sqmat::solve(real_mat& b) {
  if (size == 0 || b.getWidth() == 0 || b.getHeight() == 0) return;
  tessarn::detail::solve_lu(data, size, {b.getData(), b.getHeight(), b.getWidth()});
}
