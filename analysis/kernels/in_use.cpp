// The builds of the kernels that are in use.
#include "analysis/kernels/kernels.h"
#include "analysis/kernels/shape_kernels.h"
#include "analysis/kernels/systems.h"
#include "simd/dispatch.h"

namespace tessarn::detail {

const fit_kernels& fit_kernels_in_use() noexcept {
#define TESSARN_TABLE_OF(set) &set::fit_table,
  static constexpr const fit_kernels* builds[] = {TESSARN_FOR_EACH_SET(TESSARN_TABLE_OF)};
#undef TESSARN_TABLE_OF
  return table_in_use(builds);
}

const shape_kernels& shape_kernels_in_use() noexcept {
#define TESSARN_TABLE_OF(set) &set::shape_table,
  static constexpr const shape_kernels* builds[] = {TESSARN_FOR_EACH_SET(TESSARN_TABLE_OF)};
#undef TESSARN_TABLE_OF
  return table_in_use(builds);
}

const system_kernels& system_kernels_in_use() noexcept {
#define TESSARN_TABLE_OF(set) &set::system_table,
  static constexpr const system_kernels* builds[] = {TESSARN_FOR_EACH_SET(TESSARN_TABLE_OF)};
#undef TESSARN_TABLE_OF
  return table_in_use(builds);
}

}  // namespace tessarn::detail
