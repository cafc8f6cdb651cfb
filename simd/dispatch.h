// The choice among the builds of a table of kernels.
#pragma once

#include "simd/isa.h"

namespace tessarn::detail {

// The table of the instruction set in use; tables has one for each set, in the order of TESSARN_FOR_EACH_SET.
template <class Table>
const Table& table_in_use(const Table* const (&tables)[set_count]) noexcept {
  return *tables[static_cast<int>(chosen_isa())];
}

}  // namespace tessarn::detail
