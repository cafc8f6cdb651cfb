// Short names of the matrices in the library's own sources.
#pragma once

#include "tessarn/matrix.h"

namespace tessarn::detail {

using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

}  // namespace tessarn::detail
