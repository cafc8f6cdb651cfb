#include "analysis/round_fit.h"

namespace tessarn::analysis {

namespace {

// Below this the unknowns lose more digits than doubled precision has beyond those of a double.
constexpr double least_condition = 0x1p-30;

// A shape with A > 0, so that distances are positive outside.
round_shape<doubled> curved_outwards(round_shape<doubled> m) noexcept {
  if (m.a().high < 0)
    for (std::size_t k = 0; k < m.parts(); ++k) m.v[k] = -m.v[k];
  return m;
}

// Whether two shapes are others by more than searches that end at one minimum differ. The axes have no sign, and with
// an axis B is compared as a vector of space.
bool differ(const round_shape<double>& m, const round_shape<double>& n) noexcept {
  constexpr double much = 0x1p-7;
  const double sign = (m.a() < 0) == (n.a() < 0) ? 1 : -1;
  double b[3] = {}, largest = std::max(std::fabs(m.a()), std::fabs(n.a())), cosine = m.has_axis ? 0 : 1;
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t i = 0; i < m.dimension; ++i) {
      if (m.has_axis)
        b[k] += m.b()[i] * m.axes[i][k] - sign * n.b()[i] * n.axes[i][k];
      else if (i == k)
        b[k] = m.b()[i] - sign * n.b()[i];
    }
    if (m.has_axis) cosine += m.axes[2][k] * n.axes[2][k];
  }
  const double apart = std::max({std::fabs(b[0]), std::fabs(b[1]), std::fabs(b[2])});
  return std::fabs(cosine) < 1 - much * much || std::fabs(m.a() - sign * n.a()) > much * largest ||
         apart > much * std::max(largest, 1.0);
}

// The axes alone, to place points across them.
round_shape<double> flat(round_shape<double> m) noexcept {
  for (double& part : m.v) part = 0;
  return m;
}

// Where A is negative the shape is turned inside out, see above: distances change their sign, and with them their
// derivatives for turns of the axis, while those for A, B and D, which change their signs too, stay.
normal_equations equations_of(const round_result<doubled>& found) {
  const bool turned = found.shape.a().high < 0;
  const std::size_t first_turn = found.shape.dimension + 1;
  return normal_equations(found.shape.unknowns(), [&](std::size_t r, std::size_t c) {
    const doubled v = found.normal[entry_at(r, c)];
    return turned && r >= first_turn && c < first_turn ? -v : v;
  });
}

// A shape about a centre, given relative to the centroid, with the square of its radius.
bool about(const round_shape<double>& m, const double* centre, double radius_square,
           round_shape<double>& start) noexcept {
  const placed_point<double> c = place(flat(m), centre);
  start = m;
  start.v[0] = 1;
  for (std::size_t k = 0; k < m.dimension; ++k) start.v[k + 1] = -2 * c.q[k];
  start.v[m.dimension + 1] = c.square - radius_square;
  return normalise(start);
}

}  // namespace

// No point is farther along an axis than rounding hides only where their mean square is not larger than that; then each
// point is asked.
extents::extents(shape_data& data) {
  doubled covariance[3][3];
  data.covariance(covariance);
  axes = eigen_of_symmetric(covariance);
  const double hidden = data.hidden();
  for (std::size_t k = 0; k < 3; ++k) {
    const doubled* a = axes.vectors[k];
    double largest = 0;
    if ((axes.values[k] / data.total_weight()).high > 4 * hidden * hidden) {
      ++rank;
      continue;
    }
    data.for_each([&](const detail::local_columns& c, const double*, std::size_t, std::size_t count) {
      numbers<double> along(count);
      detail::number_pair direction[3];
      doubled offset = 0.0;
      for (std::size_t i = 0; i < 3; ++i) {
        direction[i] = pair_of(a[i]);
        offset += a[i] * data.rest()[i];
      }
      kernel_sums<1> squares;
      const detail::residual_output out{along.data(), scale_of(0), 0, nullptr};
      largest = std::max(largest, detail::shape_kernels_in_use()
                                      .plane_residuals(c, direction, pair_of(offset), count, out, squares.partial)
                                      .largest);
    });
    rank += largest > hidden ? 1 : 0;
  }
}

status check_rank(int rank, int needed) noexcept {
  if (rank >= needed) return status::ok;
  return rank == 2 ? status::coplanar : rank == 1 ? status::collinear : status::too_few_distinct;
}

// With z = |q|^2 and its mean, and Z = (z - mean) / (2 sqrt(mean)), the algebraic sum is that of (A' Z + B q)^2 with
// A' = 2 sqrt(mean) A, to be stationary under |B|^2 + A'^2 = 1, which is the condition |B|^2 - 4 A D = 1 for D = -mean
// A. The points are given relative to their centroid, so that the means of q are 0.
algebraic_starts::algebraic_starts(const shape_data& data, const round_shape<double>& m) noexcept {
  const std::size_t n = m.dimension;
  const detail::round_numbers axes = kernel_numbers(flat(m));
  constexpr std::size_t lanes = detail::shape_partial_sums;
  double sums[10 * lanes] = {};
  detail::shape_kernels_in_use().square_sums(data.centred(), axes, sums);
  mean_square_ = partial_sum(sums + lanes) / partial_sum(sums);
  if (!(mean_square_ > 0)) return;
  std::fill_n(sums, 2 * lanes, 0.0);
  detail::shape_kernels_in_use().algebraic_sums(data.centred(), axes, mean_square_, 0.5 / std::sqrt(mean_square_),
                                                sums);
  double three[3][3] = {}, four[4][4] = {};
  const double* next = sums;
  for (std::size_t r = 0; r <= n; ++r)
    for (std::size_t c = r; c <= n; ++c, next += lanes) {
      four[r][c] = partial_sum(next);
      if (r < 3 && c < 3) three[r][c] = four[r][c];
    }
  if (n == 2)
    of_three_ = eigen_of_symmetric(three);
  else
    of_four_ = eigen_of_symmetric(four);
}

bool algebraic_starts::get(std::size_t which, round_shape<double>& m) const noexcept {
  if (!(mean_square_ > 0) || which > m.dimension) return false;
  const double* v = m.dimension == 2 ? of_three_.vectors[which] : of_four_.vectors[which];
  m.v[0] = v[0] * 0.5 / std::sqrt(mean_square_);
  for (std::size_t k = 1; k <= m.dimension; ++k) m.v[k] = v[k];
  m.v[m.dimension + 1] = -mean_square_ * m.v[0];
  return normalise(m);
}

void lowest_result::take(const shape_data& data, const round_result<double>& found) noexcept {
  const double weight = data.total_weight().high, rounding = result.squares * 0x1p-30 + weight * 0x1p-85;
  if (any && !(found.squares < result.squares - rounding)) {
    tied = tied || (found.squares <= result.squares + rounding && differ(found.shape, result.shape));
    return;
  }
  result = found;
  any = true;
  tied = false;
}

void search_all(const shape_data& data, const round_shape<double>& m, const eigen_system<3>& axes, ulong most_steps,
                lowest_result& lowest) noexcept {
  constexpr double large = 0x1p-12;
  const algebraic_starts starts(data, m);
  const double weight = data.total_weight().high, extent = starts.mean_square();
  round_shape<double> start = m;
  for (std::size_t k = 0; starts.get(k, start); ++k) {
    const round_result<double> found = search(data, start, most_steps);
    lowest.take(data, found);
    if (k == 0 && found.squares <= large * weight * extent) return;
  }
  for (std::size_t k = 0; k < 3; ++k)
    for (const double away : {-2.0, -0.7, 0.7, 2.0}) {
      double centre[3];
      for (std::size_t i = 0; i < 3; ++i) centre[i] = away * std::sqrt(extent) * axes.vectors[k][i].high;
      if (about(m, centre, extent * (1 + away * away), start)) lowest.take(data, search(data, start, most_steps));
    }
}

round_result<doubled> refine_lowest(const shape_data& data, const round_shape<double>& m, const lowest_result& lowest,
                                    ulong most_steps) noexcept {
  const round_result<doubled> found = refine(data, lowest.result, most_steps);
  if (found.determined) return found;
  const algebraic_starts starts(data, m);
  round_result<double> start;
  start.shape = m;
  for (std::size_t k = 0; starts.get(k, start.shape); ++k) {
    const round_result<doubled> other = refine(data, start, most_steps);
    if (other.converged && other.determined && other.squares <= found.squares) return other;
  }
  return found;
}

round_solution::round_solution(const shape_data& data, const round_result<doubled>& found)
    : shape_(curved_outwards(found.shape)),
      tangents_(found.at),
      equations_(equations_of(found)),
      radius_(doubled(0.5) / shape_.a()),
      state_(judge(data, found)) {}

// The arc or cap of the shape over the points is as high as half of the curvature times the square of their largest
// distance from the centroid; where rounding hides it, the shape is a line or plane.
status round_solution::judge(const shape_data& data, const round_result<doubled>& found) const noexcept {
  round_shape<double> axes{};
  axes.dimension = shape_.dimension;
  axes.has_axis = shape_.has_axis;
  for (std::size_t r = 0; r < 3; ++r)
    for (std::size_t k = 0; k < 3; ++k) axes.axes[r][k] = shape_.axes[r][k].high;
  double sums[2 * detail::shape_partial_sums] = {};
  const double farthest = detail::shape_kernels_in_use().square_sums(data.centred(), kernel_numbers(axes), sums);
  if (!found.converged && found.determined) return status::not_converged;
  if (!(shape_.a().high * farthest > data.hidden())) return status::not_determined;
  const bool told = found.determined && equations_.regular() && equations_.reciprocal_condition() >= least_condition;
  return told ? status::ok : status::not_determined;
}

detail::residual_range round_solution::distances(const shape_data& data, double* to, double* squares) const noexcept {
  const detail::residual_output out{to, scale_of(data.exponent()), 0, data.weights()};
  return detail::shape_kernels_in_use().round_residuals(data.centred(), kernel_numbers(shape_, tangents_), out,
                                                        squares);
}

// The centre is -B / (2 A), and the radius 1 / (2 A).
doubled round_solution::centre_change(std::size_t k, std::size_t i) const noexcept {
  if (i > shape_.dimension) return 0.0;
  return -(tangents_.component(i, k + 1) - shape_.b()[k] * tangents_.curvature[i] * (radius_ + radius_)) * radius_;
}

doubled round_solution::radius_change(std::size_t i) const noexcept {
  if (i > shape_.dimension) return 0.0;
  return -tangents_.curvature[i] * (radius_ + radius_) * radius_;
}

}  // namespace tessarn::analysis
