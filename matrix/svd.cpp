// The singular value decomposition of real matrices.
#include <algorithm>

#include "core/access.h"
#include "core/storage.h"
#include "matrix/decompose.h"
#include "matrix/kernels.h"

namespace tessarn::detail {

void decompose(const real* a, std::size_t rows, std::size_t columns, real* U, real* S, real* V) {
  if (columns == 0) return;  // nothing to write; the kernel needs a column
  constexpr std::size_t stack_size = 1024;
  const matrix_kernels& kernels = matrix();
  const std::size_t size = kernels.decompose_workspace(rows, columns);
  const auto run = [&](real* workspace) {
    kernels.decompose(as_doubles(a), rows, columns, as_doubles(U), as_doubles(S), as_doubles(V), as_doubles(workspace));
  };
  if (size <= stack_size) {
    real workspace[stack_size];
    run(workspace);
  } else {
    run(allocate(size).get());
  }
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
