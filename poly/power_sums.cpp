#include "poly/power_sums.h"

#include <algorithm>
#include <cmath>

#include "core/power.h"

namespace tessarn::detail {

bool chains_are_safe(const double* x, unsigned highest) noexcept {
  const int limit = highest == 0 ? 1000 : static_cast<int>(safe_exponent_range / highest);
  return poly().in_range(x, std::ldexp(1.0, -limit), std::ldexp(1.0, limit));
}

void block_powers(const double* x, unsigned exponents, double* powers) {
  if (chains_are_safe(x, exponents)) return poly().powers(x, exponents, powers);
  for (unsigned e = 0; e < exponents; ++e)
    for (std::size_t i = 0; i < point_block; ++i)
      powers[e * point_block + i] = static_cast<double>(power(x[i], e));
}

void clear_rows(double* powers, unsigned exponents, std::size_t filled) {
  for (unsigned e = 0; filled < point_block && e < exponents; ++e)
    std::fill(powers + e * point_block + filled, powers + (e + 1) * point_block, 0.0);
}

power_sums::power_sums(unsigned exponents, unsigned ordinates)
    : exponents_(exponents),
      ordinates_(ordinates),
      sums_(allocate_zeroed((static_cast<std::size_t>(exponents) + ordinates) * partial_sums)),
      powers_(allocate(exponents * point_block)) {}

void power_sums::flush() {
  if (filled_ == 0) return;
  std::fill(x_ + filled_, x_ + point_block, 1.0);
  std::fill(y_ + filled_, y_ + point_block, 0.0);
  double* powers = as_doubles(powers_.get());
  block_powers(x_, exponents_, powers);
  clear_rows(powers, exponents_, filled_);
  kernels_.add_powers(powers, y_, exponents_, ordinates_, as_doubles(sums_.get()));
  filled_ = 0;
}

}  // namespace tessarn::detail
