// Short names of the matrices in the library's own sources, and how many entries one has.
#pragma once

#include <cstddef>

#include "tessarn/matrix.h"

namespace tessarn::detail {

using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

// The entries that storage is allocated for: a product of 32 bits, which wraps where the documented sizes do.
inline std::size_t entry_count(ulong width, ulong height) noexcept { return static_cast<ulong>(width * height); }

}  // namespace tessarn::detail
