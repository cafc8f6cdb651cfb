// The choice among the builds of a table of kernels.
#pragma once

#include "simd/isa.h"

namespace tessarn::detail {

// The table of the instruction set in use, of one table a set in the order of the list.
template <class Table>
const Table& table_in_use(const Table* const (&tables)[set_count]) noexcept {
  return *tables[static_cast<int>(chosen_isa())];
}

}  // namespace tessarn::detail
