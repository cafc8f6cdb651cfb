// The points of a fit as the kernels take them: checked and scaled, block by block.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"
#include "analysis/kernels/kernels.h"
#include "tessarn/fit.h"

namespace tessarn::analysis {

// The largest and the smallest numbers of one coordinate.
struct coordinate_range {
  double lowest = 0, highest = 0;
};

// A block of points. Abscissas are t = (x - centre) 2^-scale, exactly, as doubled numbers; ordinates and weights are
// multiplied by powers of two so that the largest is between 1 and 2; the weights are squared.
struct fit_block {
  static constexpr std::size_t capacity = 128;  // a multiple of fit_partial_sums

  double high[capacity], low[capacity], y[capacity], weight_high[capacity], weight_low[capacity];
  double residuals[capacity];
  std::size_t numbers[capacity];  // what the caller calls the points
  std::size_t used = 0;           // without those that fill up the last partial sums

  detail::fit_columns columns() const noexcept {
    const std::size_t size = (used + detail::fit_partial_sums - 1) / detail::fit_partial_sums * detail::fit_partial_sums;
    return {high, low, y, weight_high, weight_low, size};
  }
};

class fit_data {
 public:
  // Looks at the points; state() tells what is wrong with them. `unknowns` points with different abscissas are needed; x = 0
  // does not count where `zero_counts` is false, nor -x besides x where `mirrored` is true.
  fit_data(const plane_points& points, const fit_options& options, std::size_t unknowns, bool zero_counts, bool mirrored);

  status state() const noexcept { return state_; }
  // Chooses the centre, in the middle of the abscissas or 0, and the scales.
  void prepare(bool centred);
  // Fills the block with the points from number i on, and sets i behind the last of them; false when there are none left.
  bool next(std::size_t& i, fit_block& block) const noexcept;

  std::size_t used() const noexcept { return used_; }
  std::size_t left_out() const noexcept { return points_.size() - used_; }
  double centre() const noexcept { return centre_; }
  int x_exponent() const noexcept { return x_exponent_; }
  int y_exponent() const noexcept { return y_exponent_; }
  int weight_exponent() const noexcept { return weight_exponent_; }

 private:
  double weight(std::size_t i) const noexcept { return weighted_ ? static_cast<double>(weights_[i]) : 1.0; }
  bool counts(double x, double y, double w) const noexcept { return w != 0 && is_finite(x) && is_finite(y) && is_finite(w); }
  void look(bool leave_out);
  bool has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const;

  plane_points points_;
  column_view weights_;
  bool weighted_;
  status state_ = status::ok;
  std::size_t used_ = 0;
  coordinate_range x_;
  double largest_y_ = 0, largest_weight_ = 0, smallest_weight_ = 0;
  double centre_ = 0;
  int x_exponent_ = 0, y_exponent_ = 0, weight_exponent_ = 0;
};

// The partial sums of a kernel, added as a balanced tree.
doubled total(const double* partial_sums) noexcept;

}  // namespace tessarn::analysis
