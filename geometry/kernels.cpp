#include "geometry/kernels.h"

#include "core/isa.h"

namespace tessarn::detail {

const geometry_kernels& geometry() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  switch (chosen_isa()) {
    case isa::avx512: return avx512::geometry_table;
    case isa::avx2: return avx2::geometry_table;
    default: break;
  }
#endif
  return baseline::geometry_table;
}

}  // namespace tessarn::detail
