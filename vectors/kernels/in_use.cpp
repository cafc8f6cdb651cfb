// The build of the kernels that is in use.
#include "simd/dispatch.h"
#include "vectors/kernels/kernels.h"

namespace tessarn::detail {

const list_kernels& list_kernels_in_use() noexcept {
#define TESSARN_TABLE_OF(set) &set::list_table,
  static constexpr const list_kernels* builds[] = {TESSARN_FOR_EACH_SET(TESSARN_TABLE_OF)};
#undef TESSARN_TABLE_OF
  return table_in_use(builds);
}

}  // namespace tessarn::detail
