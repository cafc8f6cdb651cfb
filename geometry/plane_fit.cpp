// The plane through a cloud of points: a pattern search over two components of the unit normal.
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

#include "core/storage.h"
#include "tessarn/geometry.h"

using tessarn::real;
using tessarn::detail::real_array;

namespace {

constexpr real infinity = std::numeric_limits<real>::infinity();
constexpr real first_step = static_cast<real>(0.01);
constexpr real last_step = static_cast<real>(1e-6);

// The distinct points of the cloud, coordinate by coordinate.
struct cloud {
  real_array x, y, z;
  std::size_t n;
  vector3d point(std::size_t i) const { return {x[i], y[i], z[i]}; }
};

std::uint64_t hash_of(real x, real y, real z) noexcept {
  std::uint64_t h = 0;
  for (real v : {x, y, z}) {
    std::uint64_t bits;
    v += 0;  // -0.0 equals 0.0
    std::memcpy(&bits, &v, sizeof bits);
    h = (h ^ bits) * 0x9E3779B97F4A7C15u;
    h ^= h >> 29;
  }
  return h;
}

// Of each group of equal points the last one is kept, in order: a walk from the end that keeps what is
// not yet in an open hash table. A point with NaN equals nothing.
cloud distinct_points(const vector3d* pts, tessarn::ulong count) {
  std::size_t slots = 16;
  while (slots < 2 * static_cast<std::size_t>(count)) slots *= 2;
  std::unique_ptr<tessarn::ulong[]> table(new tessarn::ulong[slots]());  // index + 1; 0 is free
  std::unique_ptr<bool[]> kept(new bool[count]);
  std::size_t n = 0;
  for (tessarn::ulong i = count; i-- > 0;) {
    const vector3d& p = pts[i];
    std::size_t slot = hash_of(p.x, p.y, p.z) & (slots - 1);
    bool duplicate = false;
    for (; table[slot] != 0 && !duplicate; slot = (slot + 1) & (slots - 1)) {
      const vector3d& q = pts[table[slot] - 1];
      duplicate = p.x == q.x && p.y == q.y && p.z == q.z;
    }
    kept[i] = !duplicate;
    if (duplicate) continue;
    table[slot] = i + 1;
    ++n;
  }
  cloud c{tessarn::detail::allocate(n), tessarn::detail::allocate(n), tessarn::detail::allocate(n), 0};
  for (tessarn::ulong i = 0; i < count; ++i) {
    if (!kept[i]) continue;
    c.x[c.n] = pts[i].x;
    c.y[c.n] = pts[i].y;
    c.z[c.n] = pts[i].z;
    ++c.n;
  }
  return c;
}

struct candidate {
  real x, y, z;  // the unit normal
  real offset;
  real cost;
};

real height_over(const candidate& c, const cloud& points, std::size_t i) {
  return (c.y * points.y[i] + c.x * points.x[i]) + c.z * points.z[i];
}

// The mean of n . p, and the sum of (n . p - d)^2, in the order of the points from +0.0.
void evaluate(candidate& c, const cloud& points) {
  real sum = 0;
  for (std::size_t i = 0; i < points.n; ++i) sum += height_over(c, points, i);
  c.offset = sum / static_cast<real>(points.n);
  real cost = 0;
  for (std::size_t i = 0; i < points.n; ++i) {
    const real r = height_over(c, points, i) - c.offset;
    cost += r * r;
  }
  c.cost = cost == cost ? cost : infinity;
}

candidate cell_at(real x, real y, const cloud& points) {
  candidate c{x, y, 0, 0, infinity};
  const real square = x * x + y * y;
  if (square > 1) return c;
  c.z = std::sqrt(1 - x * x - y * y);
  evaluate(c, points);
  return c;
}

// The 3 x 3 cells around the current normal, cell 3 j + i at offsets (i - 1, j - 1) times the step. A move to
// a better cell keeps the cells that stay in the grid. Returns the cost of the final centre; exactly 0 ends
// the search at once. Where no cell has a finite cost the normal and the offset stay as they are.
real pattern_search(vector3d& normal, real& offset, real step, const cloud& points) {
  candidate cells[9];
  real x = normal.x;
  real y = normal.y;
  const auto cell_around = [&](int i, int j) {
    return cell_at(x + static_cast<real>(i - 1) * step, y + static_cast<real>(j - 1) * step, points);
  };
  for (int k = 0; k < 9; ++k) cells[k] = cell_around(k % 3, k / 3);
  for (;;) {
    int best = 0;
    for (int k = 1; k < 9; ++k)
      if (cells[k].cost < cells[best].cost) best = k;
    const candidate chosen = cells[best];
    if (!(chosen.cost < infinity)) return infinity;
    normal = vector3d(chosen.x, chosen.y, chosen.z);
    offset = chosen.offset;
    if (chosen.cost == 0 || best == 4) return chosen.cost;
    x = chosen.x;
    y = chosen.y;
    candidate shifted[9];
    for (int k = 0; k < 9; ++k) {
      const int i = k % 3 + best % 3 - 1;
      const int j = k / 3 + best / 3 - 1;
      const bool stays = i >= 0 && i < 3 && j >= 0 && j < 3;
      shifted[k] = stays ? cells[3 * j + i] : cell_around(k % 3, k / 3);
    }
    for (int k = 0; k < 9; ++k) cells[k] = shifted[k];
  }
}

vector3d centroid(const cloud& points) {
  vector3d sum;
  for (std::size_t i = 0; i < points.n; ++i) sum += points.point(i);
  return sum / static_cast<real>(points.n);
}

// Of all points the one with the largest value above the starting value, the first of equals; the given
// point when none is larger.
template <class Value>
vector3d extreme_point(const cloud& points, const vector3d& start, real start_value, Value value) {
  vector3d extreme = start;
  real largest = start_value;
  for (std::size_t i = 0; i < points.n; ++i) {
    const vector3d p = points.point(i);
    const real v = value(p);
    if (v > largest) {
      largest = v;
      extreme = p;
    }
  }
  return extreme;
}

// The initial guess from three extreme points of the cloud.
void guess_from_extremes(const cloud& points, vector3d& normal, real& offset) {
  const vector3d c = centroid(points);
  const vector3d e1 = extreme_point(points, c, 0, [&](const vector3d& p) { return (p - c).lenld(); });
  const vector3d e2 = extreme_point(points, e1, 0, [&](const vector3d& p) { return (p - e1).lenld(); });
  const auto distances = [&](const vector3d& p) { return (p - e1).lenld() + (p - e2).lenld(); };
  const vector3d e3 = extreme_point(points, e1, distances(e1), distances);
  normal = (e2 - e1).cross(e3 - e1);
  normal = normal / normal.lenld();
  if (!(normal.z >= 0)) normal = vector3d(-normal.x, -normal.y, -normal.z);
  offset = normal * e1;
}

}  // namespace

plane::plane(vector3d* pts, tessarn::ulong count) {
  if (count < 3 || pts == nullptr) return;
  const cloud points = distinct_points(pts, count);
  if (points.n < 3) return;
  vector3d n;
  real d = 0;
  if (points.n == 3) {
    n = (points.point(1) - points.point(0)).cross(points.point(2) - points.point(0));
    n = n / n.lenld();
    d = n * points.point(0);
  } else {
    guess_from_extremes(points, n, d);
    real step = first_step;
    do {
      if (pattern_search(n, d, step, points) == 0) break;
      step *= static_cast<real>(0.5);
    } while (step > last_step);
  }
  const real length = n.lenld();
  if (length == 0) return;
  normal = n / length;
  origin = normal * d;
  derive_axes();
}
