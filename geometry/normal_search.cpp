// The unit vector that is as parallel as possible to one set of directions and as perpendicular as possible to
// another: a grid search over two of its components.
#include <cmath>
#include <limits>

#include "core/storage.h"
#include "geometry/bounds.h"
#include "geometry/kernels/kernels.h"
#include "tessarn/geometry.h"

using tessarn::real;
using tessarn::detail::candidate_lanes;
using tessarn::detail::interval;
using tessarn::detail::point_arrays;
using tessarn::detail::real_array;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double last_step = 1e-6;
// Sets with fewer directions than this are summed rather than bounded: eight sums take one short pass.
constexpr std::size_t bounded_size = 64;

// A set of directions, coordinate by coordinate.
class direction_set {
 public:
  direction_set(const vector3d* v, std::size_t n)
      : n_(v ? n : 0), coordinates_(tessarn::detail::allocate(3 * n_ + candidate_lanes)) {
    for (std::size_t i = 0; i < n_; ++i) {
      coordinates_[i] = v[i].x;
      coordinates_[n_ + i] = v[i].y;
      coordinates_[2 * n_ + i] = v[i].z;
    }
  }
  point_arrays arrays() const {
    const double* x = tessarn::detail::as_doubles(coordinates_.get());
    return {x, x + n_, x + 2 * n_, n_};
  }

 private:
  std::size_t n_;
  real_array coordinates_;
};

struct candidate {
  double x, y, z;
  interval cost;
  bool evaluated;
};

// The cost of a unit vector: the sum of 1 - (v . par)^2, then of (v . perp)^2, in order from +0.0.
class cost_function {
 public:
  cost_function(const point_arrays& par, const point_arrays& perp)
      : par_(par), perp_(perp), bounds_(par, perp), bounded_(bounds_.usable() && par.n + perp.n >= bounded_size) {}

  // Bounds the costs of count candidates, or evaluates them where that is as good.
  void prepare(candidate* const* candidates, std::size_t count) const {
    if (!bounded_) return evaluate(candidates, count);
    for (std::size_t i = 0; i < count; ++i) {
      candidate& c = *candidates[i];
      c.cost = c.z == c.z && c.x == c.x && c.y == c.y ? bounds_(c.x, c.y, c.z) : interval{infinity, infinity};
      c.evaluated = false;
    }
  }
  void evaluate(candidate* const* candidates, std::size_t count) const {
    for (std::size_t first = 0; first < count; first += candidate_lanes)
      evaluate_lanes(candidates + first, count - first < candidate_lanes ? count - first : candidate_lanes);
  }

 private:
  // Up to candidate_lanes candidates in one pass over each set; a cost that is not a number counts as infinite.
  void evaluate_lanes(candidate* const* candidates, std::size_t count) const {
    double x[candidate_lanes] = {}, y[candidate_lanes] = {}, z[candidate_lanes] = {}, cost[candidate_lanes] = {};
    for (std::size_t i = 0; i < count; ++i) {
      x[i] = candidates[i]->x;
      y[i] = candidates[i]->y;
      z[i] = candidates[i]->z;
    }
    tessarn::detail::geometry_kernels_in_use().add_sines(par_, x, y, z, cost);
    tessarn::detail::geometry_kernels_in_use().add_cosines(perp_, x, y, z, cost);
    for (std::size_t i = 0; i < count; ++i) {
      const double sum = cost[i] == cost[i] ? cost[i] : infinity;
      candidates[i]->cost = {sum, sum};
      candidates[i]->evaluated = true;
    }
  }

  const point_arrays par_, perp_;
  const tessarn::detail::direction_bounds bounds_;
  const bool bounded_;
};

// The third component of a unit vector; NaN outside the unit circle.
double dependent(double inner, double outer) { return std::sqrt(1 - inner * inner - outer * outer); }

// The candidates of one round: the best so far, which wins ties, and the feasible cells in their order.
struct round {
  candidate cells[10];
  int i[10], j[10];
  std::size_t count = 0;

  void add(const candidate& c, int inner, int outer) {
    cells[count] = c;
    i[count] = inner;
    j[count] = outer;
    ++count;
  }

  // The first of the smallest costs. Bounds that overlap are replaced by the sums.
  std::size_t best(const cost_function& cost) {
    double least_high = infinity;
    for (std::size_t k = 0; k < count; ++k) {
      const double high = cells[k].cost.high;
      if (high < least_high) least_high = high;  // a NaN is passed over
    }
    candidate* open[10];
    std::size_t opened = 0, left = 0, first = 0;
    for (std::size_t k = count; k-- > 0;) {
      if (!(cells[k].cost.low <= least_high)) continue;
      first = k;
      ++left;
      if (!cells[k].evaluated && cells[k].cost.low < infinity) open[opened++] = &cells[k];
    }
    if (left <= 1) return first;
    cost.evaluate(open, opened);
    for (std::size_t k = first + 1; k < count; ++k)
      if (cells[k].cost.low <= least_high && cells[k].cost.low < cells[first].cost.low) first = k;
    return first;
  }
};

// Moves (outer, inner) over the 3 x 3 grid of its neighbours to ever smaller costs, halving the step where none is
// smaller. make(outer, inner) builds the candidate; cells outside the unit circle are skipped. The centre of a later
// round is the best so far itself.
template <class Make>
void grid_search(double& outer, double& inner, const cost_function& cost, Make make) {
  candidate best = {0, 0, 0, {infinity, infinity}, true};
  bool first_round = true;
  for (double step = 1; step > last_step;) {
    round r;
    r.add(best, 0, 0);
    candidate* added[9];
    for (int j = -1; j <= 1; ++j)
      for (int i = -1; i <= 1; ++i) {
        const double a = outer + j * step;
        const double b = inner + i * step;
        if (b * b + a * a > 1 || (i == 0 && j == 0 && !first_round)) continue;
        added[r.count - 1] = &r.cells[r.count];
        r.add(make(a, b), i, j);
      }
    cost.prepare(added, r.count - 1);
    const std::size_t k = r.best(cost);
    best = r.cells[k];
    outer += r.j[k] * step;
    inner += r.i[k] * step;
    if (r.i[k] == 0 && r.j[k] == 0) step *= 0.5;
    first_round = false;
  }
}

}  // namespace

// Searches the upper hemisphere over (y, x) first. Where x or y is the largest component, the grid is coarse in it: the
// search goes on over the two others, and that component follows from them.
bool plane::CalcNormale(vector3d& n, vector3d* par, tessarn::ulong npar, vector3d* perp, tessarn::ulong nperp) {
  if (par == nullptr && perp == nullptr) return false;
  const direction_set along(par, npar), across(perp, nperp);
  const cost_function cost(along.arrays(), across.arrays());
  double x = 0, y = 0;
  grid_search(y, x, cost, [](double a, double b) { return candidate{b, a, dependent(b, a), {}, false}; });
  double z = dependent(x, y);
  if (!(z >= std::fabs(x) && z >= std::fabs(y))) {
    if (std::fabs(x) > std::fabs(y)) {
      grid_search(y, z, cost, [](double a, double b) { return candidate{dependent(a, b), a, b, {}, false}; });
      x = dependent(y, z);
    } else {
      grid_search(x, z, cost, [](double a, double b) { return candidate{a, dependent(a, b), b, {}, false}; });
      y = dependent(x, z);
    }
  }
  n = vector3d(x, y, z);
  return true;
}
