#include "poly/kernels.h"

#include "core/isa.h"

namespace tessarn::detail {

const poly_kernels& poly() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  switch (chosen_isa()) {
    case isa::avx512: return avx512::poly_table;
    case isa::avx2: return avx2::poly_table;
    default: break;
  }
#endif
  return baseline::poly_table;
}

}  // namespace tessarn::detail
