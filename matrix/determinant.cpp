// The real determinant and cofactor.
#include <algorithm>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/elimination.h"
#include "matrix/kernels/kernels.h"
#include "matrix/minor.h"
#include "matrix/names.h"

namespace tessarn::detail {
namespace {

// Up to this size the elimination is done before a kernel is called.
constexpr std::size_t kernel_size = 6;
constexpr std::size_t stack_size = 16;  // up to here nothing is allocated
constexpr std::size_t stack_room = stack_size * (stack_size + 1);

// The rule of Sarrus. Both sums start from +0.0, each term one diagonal further to the right.
real sarrus(const real* a) {
  real down = 0, up = 0;
  for (int k = 0; k < 3; ++k) {
    down += a[k] * a[3 + (k + 1) % 3] * a[6 + (k + 2) % 3];
    up += a[k] * a[3 + (k + 2) % 3] * a[6 + (k + 1) % 3];
  }
  return down - up;
}

// Elimination without pivoting under the quiet-NaN rule: row r += f * row p with f = (-1 / pivot) * entry. It leaves
// the column of the pivot as it is, since nothing reads it again.
void eliminate_by_rule(real* w, std::size_t n) {
  for (std::size_t p = 0; p + 1 < n; ++p) {
    const real* upper = w + p * n;
    const real reciprocal = -1 / upper[p];
    for (std::size_t r = p + 1; r < n; ++r) {
      real* row = w + r * n;
      const real f = reciprocal * row[p];
      for (std::size_t c = p + 1; c < n; ++c) row[c] = nan_to_zero(f * upper[c] + row[c]);
    }
  }
}

// The product of the diagonal entries, from 1.0 in ascending order.
real diagonal_product(const real* w, std::size_t n) {
  real product = 1;
  for (std::size_t i = 0; i < n; ++i) product *= w[i * n + i];
  return product;
}

}  // namespace

// The kernel leaves the quiet-NaN rule out. A NaN in row r and column c reaches the last row, by the later steps of
// column c, and from there the last diagonal entry: a diagonal product that is a number was computed without any.
// Otherwise the work is done again under the rule. w holds n n reals and the workspace of the elimination.
static real determinant_in(const real* a, std::size_t n, real* w) {
  std::copy_n(a, n * n, w);
  if (n > kernel_size) {
    matrix_kernels_in_use().eliminate(as_doubles(w), n, as_doubles(w + n * n));
    const real product = diagonal_product(w, n);
    if (product == product) return product;
    std::copy_n(a, n * n, w);
  }
  eliminate_by_rule(w, n);
  return diagonal_product(w, n);
}

// product times the pivots of a small matrix, by an elimination without the quiet-NaN rule; NaN where the rule is
// needed. The recursion unrolls the steps, so that the entries stay in registers.
template <std::size_t N>
static real times_pivots(const real (&w)[N][N], real product) {
  product *= w[0][0];
  if constexpr (N > 1) {
    const real reciprocal = -1 / w[0][0];
    real rest[N - 1][N - 1];
    for (std::size_t r = 1; r < N; ++r) {
      const real f = reciprocal * w[r][0];
      for (std::size_t c = 1; c < N; ++c) rest[r - 1][c - 1] = f * w[0][c] + w[r][c];
    }
    product = times_pivots<N - 1>(rest, product);
  }
  return product;
}

template <std::size_t N>
static real small_determinant(const real* a) {
  real w[N][N];
  for (std::size_t r = 0; r < N; ++r)
    for (std::size_t c = 0; c < N; ++c) w[r][c] = a[N * r + c];
  return times_pivots<N>(w, 1);
}

// Without these three, which take the sizes as compile-time constants, sizes 4, 5 and 6 take 2.4, 1.1 and 1.5 times as
// long.
static real small_determinant(const real* a, std::size_t n) {
  return n == 4 ? small_determinant<4>(a) : n == 5 ? small_determinant<5>(a) : small_determinant<6>(a);
}

static real determinant_of_any(const real* a, std::size_t n) {
  // Up to stack_size rows the elimination takes no workspace of its own.
  const std::size_t extra = n <= stack_size ? 0 : matrix_kernels_in_use().elimination_workspace(n);
  workspace<real, stack_room, 64> w(n * n + extra);
  return determinant_in(a, n, w.data());
}

real determinant(const real* a, std::size_t n) {
  if (n == 3) return sarrus(a);
  if (n >= 4 && n <= 6) {
    const real product = small_determinant(a, n);
    if (product == product) return product;
  }
  return determinant_of_any(a, n);
}

}  // namespace tessarn::detail

using tessarn::real;
using tessarn::detail::copy_minor;
using tessarn::detail::real_sqmat;
using tessarn::detail::sign_of;
using tessarn::detail::without_quiet_nan;

real real_sqmat::det() { return tessarn::detail::determinant(data, size); }

real real_sqmat::cof(tessarn::ulong x, tessarn::ulong y) {
  if (size < 2) return 0;
  if (size == 2) return sign_of(x, y) * get(x % 2 == 0 ? 1 : 0, y % 2 == 0 ? 1 : 0);
  x %= size;
  y %= size;
  sqmat minor;
  minor.create(size - 1);
  copy_minor(data, size, y, x, minor.data, without_quiet_nan);
  return sign_of(x, y) * minor.det();
}
