#include "poly/power_sums.h"

#include <algorithm>

#include "core/power.h"

namespace tessarn::detail {

void block_powers(const double* x, unsigned exponents, double* powers) {
  bool safe = true;
  for (std::size_t i = 0; i < point_block; ++i) safe &= chain_is_safe(x[i], exponents);
  if (safe) return poly().powers(x, exponents, powers);
  for (unsigned e = 0; e < exponents; ++e)
    for (std::size_t i = 0; i < point_block; ++i)
      powers[e * point_block + i] = static_cast<double>(power(x[i], e));
}

power_sums::power_sums(unsigned exponents, unsigned ordinates)
    : exponents_(exponents),
      ordinates_(ordinates),
      sums_(allocate_zeroed(static_cast<std::size_t>(exponents) + ordinates)),
      powers_(allocate(exponents * point_block)) {}

void power_sums::flush() {
  if (filled_ == 0) return;
  std::fill(x_ + filled_, x_ + point_block, 1.0);
  block_powers(x_, exponents_, as_doubles(powers_.get()));
  double* sums = as_doubles(sums_.get());
  kernels_.add_powers(as_doubles(powers_.get()), y_, filled_, exponents_, ordinates_, sums, sums + exponents_);
  filled_ = 0;
}

}  // namespace tessarn::detail
