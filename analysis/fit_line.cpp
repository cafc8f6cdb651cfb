// Lines in space by least squares of orthogonal distances.
#include "analysis/round_fit.h"

namespace tessarn {

using namespace analysis;

namespace {

// The direction of the longest axis; its component of largest magnitude is made positive.
void choose_direction(const eigen_system<3>& axes, doubled (&u)[3]) noexcept {
  std::size_t largest = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    u[k] = axes.vectors[2][k];
    if (magnitude(u[k]) > magnitude(u[largest])) largest = k;
  }
  if (u[largest].high > 0) return;
  for (doubled& component : u) component = -component;
}

// The distances from the line through the centroid: the lengths of the points' parts along the two other axes.
detail::residual_range distances_from(shape_data& data, const eigen_system<3>& axes, double* to, double* squares) {
  detail::number_pair across[2][3], offsets[2];
  for (std::size_t r = 0; r < 2; ++r) {
    doubled offset = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      across[r][k] = pair_of(axes.vectors[r][k]);
      offset += axes.vectors[r][k] * data.rest()[k];
    }
    offsets[r] = pair_of(offset);
  }
  detail::residual_range all{};
  data.for_each([&](const detail::local_columns& c, const double* w, std::size_t i, std::size_t count) {
    const detail::residual_output out{to + i, scale_of(data.exponent()), 0, w};
    include(all, detail::shape_kernels_in_use().line_residuals(c, across, offsets, count, out, squares), i);
  });
  return all;
}

}  // namespace

// Small turns of the line move a point by the angle times its place along the line, so that both angles have the
// variance s^2 / (largest eigenvalue), and the centroid across the line s^2 / (sum of w^2).
line_fit fit_line(space_points points, const shape_options& options) {
  line_fit f;
  shape_data data({{points.x, points.y, points.z}, 3, options}, 2, 2);
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = 4;
  if (f.state != status::ok) return f;
  const eigen_system<3> axes = extents(data).axes;
  // Standard deviations along the two longest axes.
  const doubled longest = square_root(axes.values[2] / data.total_weight());
  const doubled second = square_root(axes.values[1] / data.total_weight());
  if (!((longest - second).high > data.hidden())) {
    f.state = status::not_determined;
    return f;
  }
  doubled u[3];
  choose_direction(axes, u);
  f.point = vector3d(data.original(0, 0.0), data.original(1, 0.0), data.original(2, 0.0));
  f.direction = vector3d(u[0].high, u[1].high, u[2].high);
  const doubled deviation =
      judge(data, 2, f, [&](double* to, double* squares) { return distances_from(data, axes, to, squares); });
  f.peak_to_valley = 2 * f.largest_residual;
  f.reciprocal_condition = ((longest - second) / longest).high;
  double point_errors[3], direction_errors[3];
  for (std::size_t k = 0; k < 3; ++k) {
    const doubled a = u[(k + 1) % 3], b = u[(k + 2) % 3], across = a * a + b * b;
    point_errors[k] = length_error(data, deviation, across / data.total_weight());
    direction_errors[k] = plain_error(deviation, across / axes.values[2]);
  }
  f.point_errors = vector3d(point_errors[0], point_errors[1], point_errors[2]);
  f.direction_errors = vector3d(direction_errors[0], direction_errors[1], direction_errors[2]);
  return f;
}

}  // namespace tessarn
