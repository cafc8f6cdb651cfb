// Sums of powers over points, in eight partial sums each: as many points as possible straight through the kernels, the
// rest through a block.
#include "poly/power_sums.h"

#include <algorithm>
#include <limits>

#include "core/binary_form.h"
#include "core/nan_rule.h"
#include "core/power_chain.h"

namespace tessarn::detail {

// Abscissas between 2^-limit and 2^limit have safe powers below count.
bool chains_are_safe(const double* x, unsigned count) noexcept {
  if (count <= 3) return true;  // a square is rounded once, without a chain
  const int limit = static_cast<int>(safe_exponent_range / count);
  return poly_kernels_in_use().in_range(x, power_of_two(-limit), power_of_two(limit));
}

// Row by row in lanes where all abscissas are in the safe range, else number by number.
void block_powers(unsigned exponents, double* powers) {
  const double* x = powers + point_block;
  if (exponents < 3) return;
  if (chains_are_safe(x, exponents)) return poly_kernels_in_use().powers(exponents, powers);
  for (unsigned e = 2; e < exponents; ++e)
    for (std::size_t i = 0; i < point_block; ++i) powers[e * point_block + i] = static_cast<double>(power(x[i], e));
}

power_sums::power_sums(unsigned exponents)
    : exponents_(exponents),
      length_(checked_product(checked_sum(std::size_t{exponents}, exponents - exponents / 2), partial_sums)),
      room_(length_),
      sums_(room_.data()) {
  std::fill_n(sums_, length_, 0.0);
}

// As many points as possible without moving them. Where the kernels stop, the next point_block points are copied one by
// one, which leaves the marked ones out; then the kernels try again. Points that wait must be added before later ones,
// so that each meets the partial sum of its number.
void power_sums::add(const vector* points, std::size_t n, real marker) {
  static_assert(sizeof(vector) == 3 * sizeof(double), "three doubles a point, as the kernel takes them");
  for (std::size_t i = 0; i < n;) {
    if (waiting_ == 0) {
      const std::size_t added =
          add_at_once(reinterpret_cast<const double*>(points + i), n - i, static_cast<double>(marker));
      i += added;
      if (added > 0) continue;
    }
    for (const std::size_t end = std::min(n, i + point_block); i < end; ++i) add(points[i], marker);
  }
  flush();
}

void power_sums::close() {
  // Sum k is stored where the partial sums of an earlier one were.
  for (std::size_t k = 1; k < length_ / partial_sums; ++k) sums_[k] = nan_to_zero(tree_sum(sums_ + k * partial_sums));
  sums_[0] = static_cast<double>(count_);
}

// Adds some of the next points without moving them, and returns how many, maybe 0: those that the kernel adds, then the
// block of points where it stopped, if none of them is marked.
std::size_t power_sums::add_at_once(const double* points, std::size_t n, double marker) {
  std::size_t added = add_by_kernel(points, n, marker);
  if (n - added >= point_block && add_block(points + 3 * added, point_block, marker)) added += point_block;
  count_ += added;
  return added;
}

// As many points as the kernel adds. Abscissas such as years have powers in doubt in nearly every block, where a kernel
// that adds nothing takes a third of the time: once it has added nothing, it is not asked for the next few blocks.
std::size_t power_sums::add_by_kernel(const double* points, std::size_t n, double marker) {
  constexpr unsigned rest = 7;
  if (blocks_without_kernel_ > 0) {
    --blocks_without_kernel_;
    return 0;
  }
  const std::size_t added = kernels_.add_plane_points(points, n, marker, exponents_, sums_);
  if (added == 0) blocks_without_kernel_ = rest;
  return added;
}

// Copies a point behind those that wait, and counts it if it takes part. A marked point is overwritten by the next one,
// which needs no jump.
void power_sums::add(const vector& point, real marker) {
  block_[3 * waiting_] = 0;
  block_[3 * waiting_ + 1] = static_cast<double>(point.x);
  block_[3 * waiting_ + 2] = static_cast<double>(point.y);
  waiting_ += (marker != marker) | ((point.x != marker) & (point.x == point.x));
  if (waiting_ == point_block) flush();
}

// Adds the points that wait. None of them is marked; a marker that is NaN excludes no point.
void power_sums::flush() {
  if (waiting_ == 0) return;
  constexpr double no_marker = std::numeric_limits<double>::quiet_NaN();
  const std::size_t added = add_by_kernel(block_, waiting_, no_marker);
  if (added < waiting_) {
    // The kernel did not take all. Those left go through a block, filled up with zeros, which change no sum.
    std::fill(std::copy(block_ + 3 * added, block_ + 3 * waiting_, block_), block_ + 3 * point_block, 0.0);
    add_block(block_, (waiting_ - added + partial_sums - 1) / partial_sums * partial_sums, no_marker);
  }
  count_ += waiting_;
  waiting_ = 0;
}

// Adds the first n points of a block: unpacks them, forms their powers row by row, adds the rows. False, and nothing is
// added, where a point is marked.
bool power_sums::add_block(const double* points, std::size_t n, double marker) {
  if (!powers_) {
    const std::size_t rows = checked_sum(static_cast<std::size_t>(exponents_), 1);
    powers_ = allocate(checked_sum(cache_line, checked_product(rows, point_block)));
  }
  double* powers = as_doubles(whole_cache_line(powers_.get()));
  alignas(64) double y[point_block];
  const bool unmarked = kernels_.unpack_plane(points, marker, powers + point_block, y);
  if (!unmarked && marker == marker) return false;
  std::fill_n(powers, point_block, 1.0);
  block_powers(exponents_, powers);
  kernels_.add_powers(powers, y, n, exponents_, sums_);
  return true;
}

}  // namespace tessarn::detail
