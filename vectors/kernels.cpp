#include "vectors/kernels.h"

#include "core/isa.h"

namespace tessarn::detail {

const list_kernels& list() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  switch (chosen_isa()) {
    case isa::avx512: return avx512::list_table;
    case isa::avx2: return avx2::list_table;
    default: break;
  }
#endif
  return baseline::list_table;
}

}  // namespace tessarn::detail
