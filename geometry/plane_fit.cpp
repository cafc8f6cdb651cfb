// The plane through a cloud of points: a pattern search over two components of the unit normal.
#include <cmath>
#include <limits>

#include "geometry/bounds.h"
#include "geometry/cloud.h"
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
  plane_search(const cloud& points, const vector3d& centroid) : points_(points), bounds_(points, centroid) {}

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
  vector3d normal() const { return {current_.x, current_.y, current_.z}; }
  real offset() const;

 private:
  void begin_grid(cell* cells, double step) const;
  void complete(cell* cells, const bool* known, double step) const;
  void shift(cell* cells, int best, double step) const;
  int best_of(cell* cells) const;
  bool cost_is_zero(cell& c) const;
  void evaluate(cell* const* cells, std::size_t count) const;
  void evaluate_one(cell& c) const {
    cell* one = &c;
    if (!c.evaluated) evaluate(&one, 1);
  }

  const cloud& points_;
  const tessarn::detail::residual_bounds bounds_;
  cell current_;
  bool searched_ = false;
};

// The sums of squares are not needed for it.
real plane_search::offset() const {
  if (current_.evaluated) return current_.offset;
  double x[candidate_lanes] = {current_.x}, y[candidate_lanes] = {current_.y}, z[candidate_lanes] = {current_.z};
  double mean[candidate_lanes];
  tessarn::detail::geometry().means(points_.arrays(), x, y, z, mean);
  return mean[0];
}

// Fills those cells around the centre that are not known.
void plane_search::complete(cell* cells, const bool* known, double step) const {
  double x[candidate_lanes], y[candidate_lanes], z[candidate_lanes], low[candidate_lanes], high[candidate_lanes];
  bounds_(current_.x, current_.y, step, x, y, z, low, high);
  for (std::size_t i = 0; i < candidate_lanes; ++i) {
    const std::size_t k = i < std::size_t{centre} ? i : i + 1;
    if (known[k]) continue;
    cell& c = cells[k];
    c.x = x[i];
    c.y = y[i];
    c.z = z[i];
    c.cost = {low[i], high[i]};
    c.evaluated = false;
    const bool exists = x[i] * x[i] + y[i] * y[i] <= 1 && z[i] == z[i];
    if (!exists) c.cost = {infinity, infinity};
    if (exists && !bounds_.usable()) evaluate_one(c);
  }
}

// The centre is the present cell, once there is one of the search's own.
void plane_search::begin_grid(cell* cells, double step) const {
  constexpr bool none[9] = {}, all_but_first[9] = {false, true, true, true, true, true, true, true, true};
  if (!searched_) complete(cells, all_but_first, 0);  // the centre in place of its neighbour
  cells[centre] = searched_ ? current_ : cells[0];
  complete(cells, none, step);
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
  tessarn::detail::geometry().residuals(points_.arrays(), x, y, z, offset, cost);
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
  evaluate_one(c);
  return c.cost.low == 0;
}

// The grid around the new centre; cells that stay in it keep what is known of them.
void plane_search::shift(cell* cells, int best, double step) const {
  cell shifted[9];
  bool known[9];
  for (int k = 0; k < 9; ++k) {
    const int i = k % 3 + best % 3 - 1;
    const int j = k / 3 + best / 3 - 1;
    known[k] = i >= 0 && i < 3 && j >= 0 && j < 3;
    if (known[k]) shifted[k] = cells[3 * j + i];
  }
  complete(shifted, known, step);
  for (int k = 0; k < 9; ++k) cells[k] = shifted[k];
}

bool plane_search::run(double step) {
  cell cells[9];
  begin_grid(cells, step);
  for (;;) {
    const int best = best_of(cells);
    if (best < 0 || !(cells[best].cost.low < infinity)) return false;
    const bool perfect = cost_is_zero(cells[best]);
    current_ = cells[best];
    searched_ = true;
    if (perfect || best == centre) return perfect;
    shift(cells, best, step);
  }
}

// The normal of the plane through three extreme points of the cloud, and its offset.
vector3d normal_through_extremes(const cloud& points, const vector3d& centroid, real& offset) {
  const vector3d e1 = points.farthest_from(centroid);
  const vector3d e2 = points.farthest_from(e1);
  const vector3d e3 = points.farthest_from(e1, e2);
  vector3d n = (e2 - e1).cross(e3 - e1);
  n = n / n.lenld();
  if (!(n.z >= 0)) n = vector3d(-n.x, -n.y, -n.z);
  offset = n * e1;
  return n;
}

vector3d normal_through_three(const cloud& points, real& offset) {
  const vector3d n = (points.point(1) - points.point(0)).cross(points.point(2) - points.point(0));
  const vector3d unit = n / n.lenld();
  offset = unit * points.point(0);
  return unit;
}

vector3d refined_normal(const cloud& points, real& offset) {
  const vector3d centroid = points.centroid();
  plane_search search(points, centroid);
  const vector3d guess = normal_through_extremes(points, centroid, offset);
  search.begin(guess, offset);
  double step = first_step;
  do {
    if (search.run(step)) break;
    step *= 0.5;
  } while (step > last_step);
  offset = search.offset();
  return search.normal();
}

}  // namespace

plane::plane(vector3d* pts, ulong count) {
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
