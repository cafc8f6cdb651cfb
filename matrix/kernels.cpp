#include "matrix/kernels.h"

#include "core/isa.h"

namespace tessarn::detail {

const matrix_kernels& matrix() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  switch (chosen_isa()) {
    case isa::avx512: return avx512::matrix_table;
    case isa::avx2: return avx2::matrix_table;
    default: break;
  }
#endif
  return baseline::matrix_table;
}

}  // namespace tessarn::detail
