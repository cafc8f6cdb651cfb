// The inverse of a square matrix by its adjugate: the kernel without the quiet-NaN rule first, the plain way if it
// meets a NaN.
#include "matrix/adjugate.h"

#include "core/nan_rule.h"
#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/elimination.h"
#include "matrix/kernels/kernels.h"
#include "matrix/minor.h"

namespace tessarn::detail {
namespace {

const auto unchanged = [](real v) { return v; };

// The determinant of the minor without row j and column i, by an elimination of its own.
real minor_from_scratch(const real* m, std::size_t n, std::size_t j, std::size_t i) {
  const real_array minor = allocate((n - 1) * (n - 1));
  copy_minor(m, n, j, i, minor.get(), unchanged);
  return determinant(minor.get(), n - 1);
}

constexpr std::size_t stack_size = 1280;  // up to so many reals the workspace of the kernel is on the stack

// The kernel shares elimination steps between minors, and leaves the quiet-NaN rule out. A NaN in a shared step reaches
// the minors that use it, and the determinant: those that are NaN are computed again, each by itself and under the
// rule.
void invert_shared(const real* m, std::size_t n, real* dst) {
  const matrix_kernels& kernels = matrix_kernels_in_use();
  workspace<real, stack_size, 64> work(kernels.adjugate_workspace(n));
  real whole = kernels.adjugate(as_doubles(m), n, as_doubles(dst), as_doubles(work.data()));
  if (whole != whole) whole = determinant(m, n);
  if (has_nan(dst, n * n)) {
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) {
        real& entry = dst[i * n + j];
        if (entry != entry) entry = minor_from_scratch(m, n, j, i) * sign_of(i, j);
      }
  }
  const real q = 1 / whole;
  for (std::size_t i = 0; i < n * n; ++i) dst[i] *= q;
}

// The determinant of the minor without row j and column i of a matrix of two to four rows. For three rows it is written
// out: the elimination of a 2 x 2 matrix, whose result the quiet-NaN rule sees once.
real small_minor(const real* m, std::size_t n, std::size_t j, std::size_t i) {
  if (n == 2) return m[(1 - j) * 2 + (1 - i)];
  if (n == 3) {
    const real* upper = m + (j == 0 ? 3 : 0);
    const real* lower = m + (j == 2 ? 3 : 6);
    const std::size_t a = i == 0 ? 1 : 0;
    const std::size_t b = i == 2 ? 1 : 2;
    const real f = (-1 / upper[a]) * lower[a];
    const real eliminated = f * upper[b] + lower[b];
    return upper[a] * nan_to_zero(eliminated);
  }
  real rest[9];
  copy_minor(m, n, j, i, rest, unchanged);
  return determinant(rest, 3);
}

}  // namespace

void invert_by_adjugate(const real* m, std::size_t n, real* dst) {
  if (n > 4) return invert_shared(m, n, dst);
  const real q = 1 / determinant(m, n);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j) dst[i * n + j] = small_minor(m, n, j, i) * sign_of(i, j) * q;
}

}  // namespace tessarn::detail
