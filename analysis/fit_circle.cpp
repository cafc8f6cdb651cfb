// Circles in the plane and spheres by least squares of orthogonal distances.
#include "analysis/round_fit.h"

namespace tessarn {

using namespace analysis;

namespace {

// The centre with its errors and the radius, as both fits give them.
struct centre_and_radius {
  double centre[3] = {}, centre_errors[3] = {};
  double radius = 0, radius_error = 0;
};

// In steps: the lowest of the sums from all starts in double precision, its refinement, and the results in the caller's
// units. On failure the status and the counts alone are told.
void fit(shape_data&& data, int dimension, ulong most_steps, shape_fit& f, centre_and_radius& r) {
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = static_cast<ulong>(dimension) + 1;
  if (f.state != status::ok) return;
  data.copy();
  const extents e(data);
  f.state = check_rank(e.rank, dimension);
  if (f.state != status::ok) return;
  round_shape<double> start{};
  start.dimension = data.dimension();
  lowest_result lowest;
  search_all(data, start, e.axes, most_steps, lowest);
  const round_result<doubled> found = refine_lowest(data, start, lowest, most_steps);
  f.steps = found.steps;
  const round_solution s(data, found);
  f.state = lowest.tied && found.converged ? status::not_determined : s.state();
  if (f.state != status::ok) return;
  r.radius = length(data, s.radius());
  for (std::size_t k = 0; k < data.dimension(); ++k) r.centre[k] = data.original(k, s.centre(k));
  for (const double v : {r.radius, r.centre[0], r.centre[1], r.centre[2]})
    if (!is_finite(v)) f.state = status::out_of_range;
  if (f.state != status::ok) return;
  f.reciprocal_condition = s.equations().reciprocal_condition();
  const doubled deviation =
      judge(data, 1, f, [&](double* to, double* squares) { return s.distances(data, to, squares); });
  const auto error = [&](auto&& change) { return length_error(data, deviation, s.equations().form(change)); };
  r.radius_error = error([&](std::size_t i) { return s.radius_change(i); });
  for (std::size_t k = 0; k < data.dimension(); ++k)
    r.centre_errors[k] = error([&](std::size_t i) { return s.centre_change(k, i); });
}

}  // namespace

circle_fit fit_circle(plane_points points, const shape_options& options) {
  circle_fit f;
  centre_and_radius r;
  fit(shape_data({{points.x, points.y, {}}, 2, options}, 3, 3), 2, options.most_steps, f, r);
  if (f.state != status::ok) return f;
  f.centre = vector(r.centre[0], r.centre[1]);
  f.radius = r.radius;
  f.centre_errors = vector(r.centre_errors[0], r.centre_errors[1]);
  f.radius_error = r.radius_error;
  return f;
}

sphere_fit fit_sphere(space_points points, const shape_options& options) {
  sphere_fit f;
  centre_and_radius r;
  fit(shape_data({{points.x, points.y, points.z}, 3, options}, 4, 4), 3, options.most_steps, f, r);
  if (f.state != status::ok) return f;
  f.centre = vector3d(r.centre[0], r.centre[1], r.centre[2]);
  f.radius = r.radius;
  f.centre_errors = vector3d(r.centre_errors[0], r.centre_errors[1], r.centre_errors[2]);
  f.radius_error = r.radius_error;
  return f;
}

}  // namespace tessarn
