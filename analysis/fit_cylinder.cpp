// Cylinders by least squares of orthogonal distances.
#include "analysis/round_fit.h"

namespace tessarn {

using namespace analysis;

namespace {

// The starts with the lowest sums, ascending.
struct best_starts {
  static constexpr std::size_t capacity = 64;

  round_shape<double> shapes[capacity];
  double squares[capacity];
  std::size_t count = 0, wanted;

  // The sum of few points can have many minima; many points have a clear one, and each search takes longer.
  explicit best_starts(std::size_t points) noexcept
      : wanted(std::max(std::size_t{12}, std::min(capacity, 6000 / points))) {}

  void insert(const round_shape<double>& m, double sum) noexcept {
    if (!(sum >= 0) || (count == wanted && !(sum < squares[count - 1]))) return;
    std::size_t at = count < wanted ? count++ : count - 1;
    for (; at > 0 && sum < squares[at - 1]; --at) {
      shapes[at] = shapes[at - 1];
      squares[at] = squares[at - 1];
    }
    shapes[at] = m;
    squares[at] = sum;
  }
};

// A cylinder whose axis has a direction that is given by whole numbers along the axes of the covariance.
round_shape<double> directed(const eigen_system<3>& axes, const int (&along)[3]) noexcept {
  round_shape<double> m{};
  m.dimension = 2;
  m.has_axis = true;
  std::size_t smallest = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t i = 0; i < 3; ++i) m.axes[2][k] += along[i] * axes.vectors[i][k].high;
    if (std::fabs(m.axes[2][k]) < std::fabs(m.axes[2][smallest])) smallest = k;
  }
  m.axes[1][smallest] = 1;
  make_orthogonal(m.axes);
  return m;
}

// Looks at directions all over the half sphere (D. Eberly, Fitting 3D data with a cylinder, 2003), those of the axes
// of the covariance among them: the vectors of whole numbers up to 2 without a common divisor. For each direction the
// algebraic circles across it are the starts.
void look_around(const shape_data& data, const eigen_system<3>& axes, best_starts& best) noexcept {
  for (int i = 0; i <= 2; ++i)
    for (int j = i == 0 ? 0 : -2; j <= 2; ++j)
      for (int k = i == 0 && j == 0 ? 1 : -2; k <= 2; ++k) {
        if (i % 2 == 0 && j % 2 == 0 && k % 2 == 0) continue;
        round_shape<double> m = directed(axes, {i, j, k});
        const algebraic_starts starts(data, m);
        for (std::size_t which = 0; starts.get(which, m); ++which) best.insert(m, squares_of(data, m));
      }
}

// The results in the caller's units.
void store(const shape_data& data, const round_solution& s, cylinder_fit& f) {
  const round_shape<doubled>& m = s.shape();
  const doubled* u = m.axes[2];
  std::size_t largest = 0;
  for (std::size_t k = 1; k < 3; ++k)
    if (magnitude(u[k]) > magnitude(u[largest])) largest = k;
  const doubled sign = u[largest].high < 0 ? -1.0 : 1.0;
  const double radius = length(data, s.radius());
  double point[3], direction[3];
  for (std::size_t k = 0; k < 3; ++k) {
    point[k] = data.original(k, s.centre(0) * m.axes[0][k] + s.centre(1) * m.axes[1][k]);
    direction[k] = (sign * u[k]).high;
    if (!is_finite(point[k]) || !is_finite(radius)) f.state = status::out_of_range;
  }
  if (f.state != status::ok) return;
  f.radius = radius;
  f.point = vector3d(point[0], point[1], point[2]);
  f.direction = vector3d(direction[0], direction[1], direction[2]);
  f.reciprocal_condition = s.equations().reciprocal_condition();
  const doubled deviation =
      judge(data, 1, f, [&](double* to, double* squares) { return s.distances(data, to, squares); });
  f.radius_error = length_error(data, deviation, s.equations().form([&](std::size_t i) { return s.radius_change(i); }));
  // The unknowns from number 3 on turn the axis: u by one of the directions across it, and these by minus u.
  for (std::size_t k = 0; k < 3; ++k) {
    const auto turned = [&](std::size_t i) { return i < 3 ? doubled(0.0) : m.axes[i - 3][k]; };
    const auto moved = [&](std::size_t i) {
      if (i >= 3) return -s.centre(i - 3) * u[k];
      return s.centre_change(0, i) * m.axes[0][k] + s.centre_change(1, i) * m.axes[1][k];
    };
    direction[k] = plain_error(deviation, s.equations().form(turned));
    point[k] = length_error(data, deviation, s.equations().form(moved));
  }
  f.point_errors = vector3d(point[0], point[1], point[2]);
  f.direction_errors = vector3d(direction[0], direction[1], direction[2]);
}

}  // namespace

// In steps: directions all over the sphere, the search from the best of them in double precision, the refinement of the
// lowest sum, and the results in the caller's units.
cylinder_fit fit_cylinder(space_points points, const shape_options& options) {
  cylinder_fit f;
  shape_data data({{points.x, points.y, points.z}, 3, options}, 6, 6);
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = 5;
  if (f.state != status::ok) return f;
  data.copy();
  const extents e(data);
  f.state = check_rank(e.rank, 3);
  if (f.state != status::ok) return f;
  best_starts best(data.used());
  look_around(data, e.axes, best);
  lowest_result lowest;
  for (std::size_t k = 0; k < best.count; ++k) lowest.take(data, search(data, best.shapes[k], options.most_steps));
  const round_result<doubled> found = refine(data, lowest.result, options.most_steps);
  f.steps = found.steps;
  const round_solution s(data, found);
  f.state = lowest.tied && found.converged ? status::not_determined : s.state();
  if (f.state == status::ok) store(data, s, f);
  return f;
}

}  // namespace tessarn
