// The points of a fit as the kernels take them: checked and scaled, block by block.
#pragma once

#include <cstddef>
#include <limits>

#include "analysis/doubled_matrix.h"
#include "analysis/kernels/kernels.h"
#include "tessarn/fit.h"

namespace tessarn::analysis {

// The columns of the caller. A fit of a curve has no second abscissas.
struct fit_input {
  column_view x, second, y, weights;
  bool two, leave_out;
};

// One abscissa: its range, and what t = (x - centre) 2^-exponent is made of.
struct fit_abscissa {
  double lowest = 0, highest = 0, centre = 0;
  int exponent = 0;

  void include(double x, bool first) noexcept {
    if (first) lowest = highest = x;
    lowest = x < lowest ? x : lowest;
    highest = x > highest ? x : highest;
  }
  // The centre is in the middle or 0, and the scale the least power of two that no distance from it exceeds, so that
  // |t| <= 1; false when there is no such power of two.
  bool choose(bool centred) noexcept;
};

// One column of a block: the caller's own numbers where they are neighbours and fill the block up, else a copy.
struct fit_block_column {
  static constexpr std::size_t capacity = 256;  // a multiple of fit_partial_sums

  alignas(64) double copy[capacity];  // no vector lies across two cache lines
  const double* at = copy;

  fit_block_column() noexcept {}
  fit_block_column(const fit_block_column&) = delete;
};

// A block of points, as the caller gave their numbers.
struct fit_block {
  static constexpr std::size_t capacity = fit_block_column::capacity;

  fit_block_column x, y, weights, second;
  alignas(64) double residuals[capacity];
  std::size_t used = 0;           // without those that fill up the last partial sums
  std::size_t first = 0;          // the number of the first point
  std::size_t numbers[capacity];  // what the caller calls the points, where some are left out
  bool weighted = false, some_left_out = false;

  std::size_t number(std::size_t k) const noexcept { return some_left_out ? numbers[k] : first + k; }
  std::size_t padded() const noexcept {
    return (used + detail::fit_partial_sums - 1) / detail::fit_partial_sums * detail::fit_partial_sums;
  }
  // The number of the first residual of the largest magnitude, if that is above a limit, else `used`. `expected` is
  // that magnitude, unless a point that fills up has a larger one.
  std::size_t largest_residual(double expected, double limit) const noexcept;
  detail::fit_columns columns(const detail::fit_scales& scales) const noexcept {
    return {x.at, y.at, weights.at, second.at, padded(), used, weighted, &scales};
  }
};

class fit_data {
 public:
  // Looks at the points; state() tells what is wrong with them. `unknowns` points with different abscissas are needed;
  // x = 0 does not count where `zero_counts` is false, nor -x besides x where `mirrored` is true.
  fit_data(const fit_input& input, std::size_t unknowns, bool zero_counts, bool mirrored);

  status state() const noexcept { return state_; }
  // Chooses centres and scales.
  void prepare(bool centred);
  // Fills the block with the points from number i on, and sets i behind the last of them; false when there are none
  // left. The kernels scale them: abscissas become t = (x - centre) 2^-exponent, exactly, ordinates and weights are
  // multiplied by powers of two so that the largest is between 1 and 2.
  bool next(std::size_t& i, fit_block& block) const noexcept;
  const detail::fit_scales& scales() const noexcept { return scales_; }

  std::size_t used() const noexcept { return used_; }
  bool weighted() const noexcept { return weighted_; }
  std::size_t left_out() const noexcept { return in_.x.size() - used_; }
  const fit_abscissa& x() const noexcept { return x_; }
  const fit_abscissa& second() const noexcept { return second_; }
  int y_exponent() const noexcept { return y_exponent_; }
  int weight_exponent() const noexcept { return weight_exponent_; }

 private:
  double weight(std::size_t i) const noexcept { return weighted_ ? static_cast<double>(in_.weights[i]) : 1.0; }
  double second_at(std::size_t i) const noexcept { return in_.two ? static_cast<double>(in_.second[i]) : 0.0; }
  bool finite(std::size_t i) const noexcept {
    return is_finite(in_.x[i]) && is_finite(in_.y[i]) && is_finite(second_at(i)) && is_finite(weight(i));
  }
  bool look_at_all() noexcept;
  void look_at_each();
  bool has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const;
  void copy(std::size_t i, std::size_t count, fit_block& block) const noexcept;
  void select(std::size_t& i, fit_block& block) const noexcept;

  fit_input in_;
  bool weighted_;
  status state_ = status::ok;
  std::size_t used_ = 0;
  fit_abscissa x_, second_;
  double largest_y_ = 0, largest_weight_ = 0, smallest_weight_ = 0;
  int y_exponent_ = 0, weight_exponent_ = 0;
  detail::fit_scales scales_ = {};
};

// The partial sums of a kernel, added as a balanced tree of halves.
doubled total(const double* partial_sums) noexcept;

// The sums that a kernel makes over all blocks. `kernel(block, columns, sums)` adds a block to the partial sums.
template <class Kernel>
numbers<doubled> sum_blocks(const fit_data& data, std::size_t count, Kernel&& kernel) {
  numbers<double, 4096> sums(detail::checked_product(2 * detail::fit_partial_sums, count));  // of 11 coefficients
  fit_block block;
  for (std::size_t i = 0; data.next(i, block);) kernel(block, block.columns(data.scales()), sums.data());
  numbers<doubled> totals(count);
  for (std::size_t k = 0; k < count; ++k) totals[k] = total(sums.data() + 2 * detail::fit_partial_sums * k);
  return totals;
}

// As sum_blocks, for moments: sum 0 is that of the weights.
template <class Kernel>
numbers<doubled> sum_moments(const fit_data& data, std::size_t count, Kernel&& kernel) {
  numbers<doubled> totals = sum_blocks(data, count, kernel);
  if (!data.weighted()) totals[0] = static_cast<double>(data.used());
  return totals;
}

// How far a fit is from its points.
struct fit_quality {
  double largest_residual = 0;
  std::size_t largest_at = 0;
  double r_squared = 1;
  double residual_deviation = 0;
  double scaled_deviation = 0;  // in the units of the blocks; infinite where there are no more points than unknowns
};

// `kernel(columns, residuals, sums)` forms the residuals of a block, adds their squares, and those of y - mean, to two
// sums, and gives the largest magnitude.
template <class Kernel>
fit_quality judge(const fit_data& data, std::size_t unknowns, Kernel&& kernel) {
  fit_quality q;
  double largest = -1;
  const auto residuals = [&](fit_block& block, const detail::fit_columns& columns, double* sums) {
    const double of_block = kernel(columns, block.residuals, sums);
    if (!(of_block > largest)) return;
    const std::size_t k = block.largest_residual(of_block, largest);
    if (k == block.used) return;
    largest = std::fabs(block.residuals[k]);
    q.largest_residual = scaled(block.residuals[k], data.y_exponent());
    q.largest_at = block.number(k);
  };
  const numbers<doubled> squares = sum_blocks(data, 2, residuals);
  if (squares[1].high > 0) q.r_squared = (doubled(1.0) - squares[0] / squares[1]).high;
  const double freedom = static_cast<double>(data.used() - unknowns);
  q.scaled_deviation = freedom == 0 ? std::numeric_limits<double>::infinity() : std::sqrt(squares[0].high / freedom);
  q.residual_deviation = scaled(q.scaled_deviation, data.y_exponent() + data.weight_exponent());
  return q;
}

// The powers of t = x 2^-e - c in powers of x 2^-e, for exponents below m: entry (k, j) is the coefficient of (x
// 2^-e)^j in t^k.
doubled_matrix expansion(std::size_t m, const fit_abscissa& x);

}  // namespace tessarn::analysis
