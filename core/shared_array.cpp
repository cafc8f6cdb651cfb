// The holders of shared coefficient arrays, counted in a side table.
#include "core/shared_array.h"

#include "core/side_table.h"

namespace tessarn::detail {
namespace {

constinit side_table<std::size_t> further_holders;

}  // namespace

real* share(real* array) {
  if (array != nullptr) further_holders.change(array, [](std::size_t& n) { ++n; });
  return array;
}

void leave(real* array) noexcept {
  further_holders.use(array, [](std::size_t& n) { return --n > 0; });
}

void give_up(real* array) noexcept {
  const bool held_by_others = further_holders.use(array, [](std::size_t& n) { return --n > 0; });
  if (!held_by_others) delete[] array;
}

real* held(real_array array) noexcept {
  further_holders.erase(array.get());
  return array.release();
}

}  // namespace tessarn::detail
