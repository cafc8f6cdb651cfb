// The plane through a cloud of points: a pattern search over two components of the unit normal.
#include <cmath>
#include <limits>

#include "geometry/bounds.h"
#include "geometry/cloud.h"
#include "geometry/residual_model.h"
#include "tessarn/geometry.h"

using tessarn::real;
using tessarn::detail::candidate_lanes;
using tessarn::detail::cloud;
using tessarn::detail::interval;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double first_step = 0.01;
constexpr double last_step = 1e-6;
constexpr int centre = 4;

// A candidate normal. Its cost, the sum of the squared residuals, lies in an interval; it is a single number once
// the sums have been evaluated, which also gives the offset. Infinite where there is no such normal.
struct cell {
  double x = 0, y = 0, z = 0;
  double offset = 0;
  interval cost = {infinity, infinity};
  bool evaluated = false;
};

class plane_search {
 public:
  explicit plane_search(const cloud& points)
      : points_(points), bounds_(points), model_(bounds_.form(), bounds_.usable()) {}

  // Starts from the normal n with the offset d.
  void begin(const vector3d& n, real d) {
    current_.x = static_cast<double>(n.x);
    current_.y = static_cast<double>(n.y);
    current_.z = static_cast<double>(n.z);
    current_.offset = static_cast<double>(d);
    current_.evaluated = true;
  }
  // Moves the 3 x 3 grid with the given step to ever better cells until its centre is the best one. True when the
  // cost is exactly 0. Where no cell has a finite cost the normal stays as it is.
  bool run(double step);
  // The normal and its offset, for which the sums of squares are not needed.
  vector3d result(real& offset) const;

 private:
  void move_by_model(int best, double step);
  void make_grid(cell* cells, int last_move, double step) const;
  void make_neighbours(cell* cells, double step) const;
  int best_of(cell* cells) const;
  bool cost_is_zero(cell& c) const;
  void evaluate(cell* const* cells, std::size_t count) const;

  const cloud& points_;
  const tessarn::detail::residual_bounds bounds_;
  tessarn::detail::residual_model model_;
  cell current_;
  bool bounded_ = false;  // whether the cost of the present cell is known
};

// The sums of squares are not formed for the last normal if the model or the bounds chose it: only its mean is missing.
vector3d plane_search::result(real& offset) const {
  vector3d n(current_.x, current_.y, current_.z);
  offset = current_.offset;
  if (current_.evaluated) return n;
  double x[candidate_lanes] = {current_.x}, y[candidate_lanes] = {current_.y}, z[candidate_lanes];
  double mean[candidate_lanes];
  for (double& lane : z) lane = std::sqrt(1 - current_.x * current_.x - current_.y * current_.y);
  tessarn::detail::geometry_kernels_in_use().means(points_.arrays(), x, y, z, mean);
  offset = mean[0];
  n.z = z[0];
  return n;
}

// The eight cells around the centre, with bounds of their costs; infinite where there is no such normal.
void plane_search::make_neighbours(cell* cells, double step) const {
  double x[candidate_lanes], y[candidate_lanes], z[candidate_lanes], low[candidate_lanes], high[candidate_lanes];
  bounds_(current_.x, current_.y, step, x, y, z, low, high);
  for (std::size_t i = 0; i < candidate_lanes; ++i) {
    cell& c = cells[i < std::size_t{centre} ? i : i + 1];
    c.x = x[i];
    c.y = y[i];
    c.z = z[i];
    c.cost = {low[i], high[i]};
    const bool exists = x[i] * x[i] + y[i] * y[i] <= 1 && z[i] == z[i];
    if (!exists) c.cost = {infinity, infinity};
    if (exists && !bounds_.usable()) c.cost = {0, infinity};
  }
}

// The nine cells around the present one. After a move those that were in the grid before are left out, except the new
// centre: it won over them, and they keep their order.
void plane_search::make_grid(cell* cells, int last_move, double step) const {
  if (bounded_) {
    cells[centre] = current_;
  } else {
    make_neighbours(cells, 0);
    cells[centre] = cells[0];
  }
  make_neighbours(cells, step);
  for (int k = 0; k < 9 && last_move != centre; ++k) {
    const int i = k % 3 + last_move % 3 - 1;
    const int j = k / 3 + last_move / 3 - 1;
    if (k != centre && i >= 0 && i < 3 && j >= 0 && j < 3) cells[k].cost = {infinity, infinity};
  }
}

// The sums themselves, for up to candidate_lanes cells in one pass over the points.
void plane_search::evaluate(cell* const* cells, std::size_t count) const {
  double x[candidate_lanes] = {}, y[candidate_lanes] = {}, z[candidate_lanes] = {};
  double offset[candidate_lanes], cost[candidate_lanes];
  for (std::size_t i = 0; i < count; ++i) {
    x[i] = cells[i]->x;
    y[i] = cells[i]->y;
    z[i] = cells[i]->z;
  }
  tessarn::detail::geometry_kernels_in_use().residuals(points_.arrays(), x, y, z, offset, cost);
  for (std::size_t i = 0; i < count; ++i) {
    const double sum = cost[i] == cost[i] ? cost[i] : infinity;
    cells[i]->offset = offset[i];
    cells[i]->cost = {sum, sum};
    cells[i]->evaluated = true;
  }
}

// The cell of the smallest cost, the first of equals. The bounds leave those cells whose cost may be the smallest;
// when more than one is left, their sums decide.
int plane_search::best_of(cell* cells) const {
  double least_high = infinity;
  for (int k = 0; k < 9; ++k)
    if (cells[k].cost.high < least_high) least_high = cells[k].cost.high;
  int best = -1;
  cell* open[9];
  std::size_t count = 0, left = 0;
  for (int k = 0; k < 9; ++k) {
    if (!(cells[k].cost.low <= least_high)) continue;
    if (best < 0) best = k;
    ++left;
    if (!cells[k].evaluated && cells[k].cost.low < infinity) open[count++] = &cells[k];
  }
  if (left <= 1) return best;
  for (std::size_t i = 0; i < count; i += candidate_lanes)
    evaluate(open + i, count - i < candidate_lanes ? count - i : candidate_lanes);
  for (int k = best + 1; k < 9; ++k)
    if (cells[k].cost.low <= least_high && cells[k].cost.low < cells[best].cost.low) best = k;
  return best;
}

bool plane_search::cost_is_zero(cell& c) const {
  if (c.cost.low > 0) return false;
  cell* one = &c;
  if (!c.evaluated) evaluate(&one, 1);
  return c.cost.low == 0;
}

// The coordinates have the bits that make_neighbours gives them; z is computed when it is needed.
void plane_search::move_by_model(int best, double step) {
  if (best == centre && bounded_) return;
  const int row = best / 3, column = best % 3;
  current_.x = (current_.x + 0.0) + (column - 1) * step;
  current_.y = (current_.y + 0.0) + (row - 1) * step;
  current_.evaluated = false;
  bounded_ = false;
}

// Each round takes the cheapest means that decides: the quadratic model, or else a grid whose cells have bounds, and
// sums where the bounds overlap (best_of).
bool plane_search::run(double step) {
  for (int last_move = centre;;) {
    int best = model_.best(current_.x, current_.y, step);
    bool perfect = false;
    if (best != tessarn::detail::residual_model::undecided) {
      move_by_model(best, step);
    } else {
      cell cells[9];
      make_grid(cells, last_move, step);
      best = best_of(cells);
      if (best < 0 || !(cells[best].cost.low < infinity)) return false;
      perfect = cost_is_zero(cells[best]);
      current_ = cells[best];
      bounded_ = true;
    }
    if (perfect || best == centre) return perfect;
    last_move = best;
  }
}

// The normal of the plane through three extreme points of the cloud, and its offset.
vector3d normal_through_extremes(const cloud& points, real& offset) {
  const vector3d e1 = points.farthest_from(points.centroid());
  const vector3d e2 = points.farthest_from(e1);
  const vector3d e3 = points.farthest_from(e1, e2);
  vector3d n = (e2 - e1).cross(e3 - e1);
  n = n / n.lenld();
  if (!(n.z >= 0)) n = vector3d(-n.x, -n.y, -n.z);
  offset = n * e1;
  return n;
}

// The normal of the plane through the first three points, and its offset.
vector3d normal_through_three(const cloud& points, real& offset) {
  const vector3d n = (points.point(1) - points.point(0)).cross(points.point(2) - points.point(0));
  const vector3d unit = n / n.lenld();
  offset = unit * points.point(0);
  return unit;
}

// The search itself: from the normal through three extreme points, with ever smaller steps.
vector3d refined_normal(const cloud& points, real& offset) {
  plane_search search(points);
  const vector3d guess = normal_through_extremes(points, offset);
  search.begin(guess, offset);
  double step = first_step;
  do {
    if (search.run(step)) break;
    step *= 0.5;
  } while (step > last_step);
  return search.result(offset);
}

}  // namespace

plane::plane(vector3d* pts, tessarn::ulong count) {
  if (count < 3 || pts == nullptr) return;
  const cloud points(pts, count);
  if (points.size() < 3) return;
  real d = 0;
  const vector3d n = points.size() == 3 ? normal_through_three(points, d) : refined_normal(points, d);
  const real length = n.lenld();
  if (length == 0) return;
  normal = n / length;
  origin = normal * d;
  derive_axes();
}
