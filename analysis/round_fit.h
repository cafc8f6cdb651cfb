// Steps that the fits of circle, sphere and cylinder share: starts, choice of the lowest sum, standard errors.
#pragma once

#include "analysis/eigen3.h"
#include "analysis/normal_equations.h"
#include "analysis/round_search.h"

namespace tessarn::analysis {

// The axes of the covariance of the points, the shortest first, and along how many of them the points extend farther
// than rounding hides.
struct extents {
  eigen_system<3> axes;
  int rank = 0;

  explicit extents(shape_data& data);
};

// `collinear` or `coplanar` when the points extend in fewer directions than `needed`.
status check_rank(int rank, int needed) noexcept;

// The stationary shapes of Taubin's algebraic fit, one more than q has dimensions: `m` brings dimension and axes, and
// comes back as the start `which`, the one with the lowest algebraic sum first.
class algebraic_starts {
 public:
  algebraic_starts(const shape_data& data, const round_shape<double>& m) noexcept;
  // False when there is no such start.
  bool get(std::size_t which, round_shape<double>& m) const noexcept;
  // The mean of |q|^2.
  double mean_square() const noexcept { return mean_square_; }

 private:
  double mean_square_ = 0;
  eigen_system<3, double> of_three_;
  eigen_system<4, double> of_four_;
};

// The lowest sum found so far.
struct lowest_result {
  round_result<double> result;
  bool any = false;
  bool tied = false;  // another shape has this sum, too

  // Takes what was found if its sum is lower by more than rounding makes it.
  void take(const shape_data& data, const round_result<double>& found) noexcept;
};

// Searches from the best algebraic start. Where the residuals there are large, beyond 1/64 of the extent of the points,
// the sum may have several minima, and the other algebraic starts and shapes about centres on both sides of the
// centroid are searched, too.
void search_all(const shape_data& data, const round_shape<double>& m, const eigen_system<3>& axes, ulong most_steps,
                lowest_result& lowest) noexcept;

// The refinement of the lowest sum. Where it ends at a saddle, whose curvature double precision did not see, the
// algebraic starts are refined as they are, and the first that leads to a minimum is the result.
round_result<doubled> refine_lowest(const shape_data& data, const round_shape<double>& m, const lowest_result& lowest,
                                    ulong most_steps) noexcept;

// A refined shape with A > 0, and the covariance of its unknowns.
class round_solution {
 public:
  round_solution(const shape_data& data, const round_result<doubled>& found);

  // `ok`, or the reason why no shape was found.
  status state() const noexcept { return state_; }
  const round_shape<doubled>& shape() const noexcept { return shape_; }
  const normal_equations& equations() const noexcept { return equations_; }
  // Stores the distances of the points, adds their squares with the weights, and gives their range.
  detail::residual_range distances(const shape_data& data, double* to, double* squares) const noexcept;
  // Coordinate k of the centre in the coordinates of q, the radius, and how they change with unknown i.
  doubled centre(std::size_t k) const noexcept { return -shape_.b()[k] * radius_; }
  doubled radius() const noexcept { return radius_; }
  doubled centre_change(std::size_t k, std::size_t i) const noexcept;
  doubled radius_change(std::size_t i) const noexcept;

 private:
  status judge(const shape_data& data, const round_result<doubled>& found) const noexcept;

  round_shape<doubled> shape_;
  tangents<doubled> tangents_;
  normal_equations equations_;
  doubled radius_;
  status state_;
};

}  // namespace tessarn::analysis
