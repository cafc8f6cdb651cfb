// The points of a fit as the kernels take them: checked, scaled, in arrays of their own.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"
#include "analysis/kernels/kernels.h"
#include "tessarn/fit.h"

namespace tessarn::analysis {

// The abscissas become t = (x - centre) 2^-scale, exactly, as doubled numbers; ordinates and weights are multiplied by
// powers of two so that the largest is between 1 and 2.
class fit_data {
 public:
  // Reads the points; state() tells what is wrong with them. `unknowns` points with different abscissas are needed; x = 0
  // does not count where `zero_counts` is false, nor -x besides x where `mirrored` is true.
  fit_data(plane_points points, const fit_options& options, std::size_t unknowns, bool zero_counts, bool mirrored);

  status state() const noexcept { return state_; }
  // Chooses the centre, in the middle of the abscissas or 0, and the scale, and forms the columns.
  void prepare(bool centred);

  detail::fit_columns columns() const noexcept;
  double* residuals() noexcept { return array(5); }
  std::size_t used() const noexcept { return used_; }
  std::size_t left_out() const noexcept { return given_ - used_; }
  double centre() const noexcept { return centre_; }
  int x_exponent() const noexcept { return x_exponent_; }
  int y_exponent() const noexcept { return y_exponent_; }
  int weight_exponent() const noexcept { return weight_exponent_; }
  // The caller's number of the point that was used as number i.
  std::size_t number(std::size_t i) const noexcept { return left_out() == 0 ? i : numbers_[i]; }

 private:
  double* array(std::size_t i) noexcept { return arrays_.data() + i * padded_; }
  const double* array(std::size_t i) const noexcept { return arrays_.data() + i * padded_; }
  void read(plane_points points, const fit_options& options);
  bool has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const;

  status state_ = status::ok;
  std::size_t given_, padded_, used_ = 0;
  numbers<double> arrays_;  // t or x, the low part of t, y, the squares of the weights and their low parts, residuals
  numbers<std::size_t> numbers_;
  double lowest_ = 0, highest_ = 0, largest_y_ = 0, largest_weight_ = 0, smallest_weight_ = 0;
  double centre_ = 0;
  int x_exponent_ = 0, y_exponent_ = 0, weight_exponent_ = 0;
};

// The partial sums of a kernel, added as a balanced tree.
doubled total(const double* partial_sums) noexcept;

}  // namespace tessarn::analysis
