#include "poly/power_sums.h"

#include <algorithm>
#include <utility>

#include "core/power.h"

namespace tessarn::detail {

bool chains_are_safe(const double* x, unsigned count) noexcept {
  if (count <= 3) return true;  // a square needs no chain
  const int limit = static_cast<int>(safe_exponent_range / count);
  return poly().in_range(x, power_of_two(1023 - limit), power_of_two(1023 + limit));
}

void block_powers(unsigned exponents, double* powers) {
  const double* x = powers + point_block;
  if (exponents < 3) return;
  if (chains_are_safe(x, exponents)) return poly().powers(exponents, powers);
  for (unsigned e = 2; e < exponents; ++e)
    for (std::size_t i = 0; i < point_block; ++i)
      powers[e * point_block + i] = static_cast<double>(power(x[i], e));
}

power_sums::power_sums(unsigned exponents, unsigned ordinates)
    : exponents_(exponents),
      ordinates_(ordinates),
      length_((static_cast<std::size_t>(exponents) + ordinates) * partial_sums),
      storage_(allocate(2 * length_ + exponents * point_block)),
      sums_(as_doubles(storage_.get())),
      next_(sums_ + length_) {
  std::fill_n(sums_, length_, 0.0);
}

// The quick sums are made beside the present ones, which are still there when they do not do.
void power_sums::flush() {
  if (filled_ == 0) return;
  std::fill(x_ + filled_, x_ + point_block, 0.0);
  std::fill(y_ + filled_, y_ + point_block, 0.0);
  if (chains_are_safe(x_, exponents_) && kernels_.add_quick_powers(x_, y_, exponents_, ordinates_, sums_, next_)) {
    std::copy_n(sums_, partial_sums, next_);
    next_[0] += static_cast<double>(filled_);
    std::swap(sums_, next_);
  } else {
    double* powers = as_doubles(storage_.get()) + 2 * length_;
    std::fill_n(powers, filled_, 1.0);
    std::fill(powers + filled_, powers + point_block, 0.0);
    if (exponents_ > 1) std::copy_n(x_, point_block, powers + point_block);
    block_powers(exponents_, powers);
    kernels_.add_powers(powers, y_, exponents_, ordinates_, sums_);
  }
  filled_ = 0;
}

}  // namespace tessarn::detail
