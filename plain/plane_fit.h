// The fit of a plane to points and the estimation of a normal, plainly.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "geometry.h"

namespace plain {

inline double mean_offset(vec3 n, const std::vector<vec3>& pts) {
  if (pts.empty()) return 0.0;
  double s = 0.0;
  for (const vec3& p : pts) s += dot(n, p);
  return s / static_cast<double>(pts.size());
}

inline double residual_sum(vec3 n, double d, const std::vector<vec3>& pts) {
  double s = 0.0;
  for (const vec3& p : pts) {
    const double r = dot(n, p) - d;
    s += r * r;
  }
  return s;
}

inline double distance(vec3 a, vec3 b) {
  const vec3 d = sub(a, b);
  return std::sqrt((d.y * d.y + d.x * d.x) + d.z * d.z);
}

// Each point of which no equal one follows.
inline std::vector<vec3> distinct_points(const std::vector<vec3>& pts) {
  std::vector<vec3> kept;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    bool repeated = false;
    for (std::size_t j = i + 1; j < pts.size(); ++j) {
      if (pts[i].x == pts[j].x && pts[i].y == pts[j].y && pts[i].z == pts[j].z) repeated = true;
    }
    if (!repeated) kept.push_back(pts[i]);
  }
  return kept;
}

struct fit_cell {
  vec3 n;
  double d = 0.0;
  double cost = 0.0;
};

inline fit_cell evaluate_cell(double x, double y, const std::vector<vec3>& pts) {
  fit_cell cell;
  cell.n = {x, y, 0.0};
  cell.cost = std::numeric_limits<double>::infinity();
  if (x * x + y * y > 1) return cell;
  cell.n.z = std::sqrt(1.0 - x * x - y * y);
  cell.d = mean_offset(cell.n, pts);
  const double cost = residual_sum(cell.n, cell.d, pts);
  if (cost == cost) cell.cost = cost;
  return cell;
}

// One pattern search with step h; returns the best cost, 0 for a perfect fit, infinity (with n and
// d as they were) when no cell has a finite cost.
inline double pattern_search(double h, vec3& n, double& d, const std::vector<vec3>& pts) {
  fit_cell grid[3][3];  // [j][i]
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i < 3; ++i) {
      grid[j][i] = evaluate_cell(n.x + (i - 1) * h, n.y + (j - 1) * h, pts);
    }
  }
  for (;;) {
    double best = std::numeric_limits<double>::infinity();
    int bi = -1;
    int bj = -1;
    for (int j = 0; j < 3; ++j) {
      for (int i = 0; i < 3; ++i) {
        if (grid[j][i].cost < best) {
          best = grid[j][i].cost;
          bi = i;
          bj = j;
        }
      }
    }
    if (bi < 0) return best;
    n = grid[bj][bi].n;
    d = grid[bj][bi].d;
    if (best == 0) return 0.0;
    if (bi == 1 && bj == 1) return best;
    fit_cell moved[3][3];
    for (int j = 0; j < 3; ++j) {
      for (int i = 0; i < 3; ++i) {
        const int oi = i + bi - 1;
        const int oj = j + bj - 1;
        if (oi >= 0 && oi < 3 && oj >= 0 && oj < 3) {
          moved[j][i] = grid[oj][oi];
        } else {
          moved[j][i] = evaluate_cell(n.x + (i - 1) * h, n.y + (j - 1) * h, pts);
        }
      }
    }
    for (int j = 0; j < 3; ++j) {
      for (int i = 0; i < 3; ++i) grid[j][i] = moved[j][i];
    }
  }
}

inline vec3 unit(vec3 v) { return times(v, 1.0 / length(v)); }

inline void initial_guess(const std::vector<vec3>& pts, vec3& n, double& d) {
  vec3 sum;
  for (const vec3& p : pts) sum = add(sum, p);
  const vec3 c = times(sum, 1.0 / static_cast<double>(pts.size()));
  vec3 e1 = c;
  double far = 0.0;
  for (const vec3& p : pts) {
    if (distance(p, c) > far) {
      far = distance(p, c);
      e1 = p;
    }
  }
  vec3 e2 = e1;
  far = 0.0;
  for (const vec3& p : pts) {
    if (distance(p, e1) > far) {
      far = distance(p, e1);
      e2 = p;
    }
  }
  vec3 e3 = e1;
  far = distance(e3, e1) + distance(e3, e2);
  for (const vec3& p : pts) {
    const double s = distance(p, e1) + distance(p, e2);
    if (s > far) {
      far = s;
      e3 = p;
    }
  }
  n = unit(cross(sub(e2, e1), sub(e3, e1)));
  if (!(n.z >= 0)) n = {-n.x, -n.y, -n.z};
  d = dot(n, e1);
}

inline plane fit_plane(const std::vector<vec3>& points) {
  plane pl;
  if (points.size() < 3) return pl;
  const std::vector<vec3> pts = distinct_points(points);
  if (pts.size() < 3) return pl;
  vec3 n;
  double d = 0.0;
  if (pts.size() == 3) {
    n = unit(cross(sub(pts[1], pts[0]), sub(pts[2], pts[0])));
    d = dot(n, pts[0]);
  } else {
    initial_guess(pts, n, d);
    double h = 0.01;
    do {
      if (pattern_search(h, n, d, pts) == 0) break;
      h = h * 0.5;
    } while (h > 1e-6);
  }
  const double len = length(n);
  if (len == 0) return pl;
  pl.normal = times(n, 1.0 / len);
  pl.origin = mul(pl.normal, d);
  derive_axes(pl);
  return pl;
}

// ---------------------------------------------------------------------------- normal estimation

inline double normal_cost(vec3 v, const std::vector<vec3>& par, const std::vector<vec3>& perp) {
  double s = 0.0;
  for (const vec3& p : par) {
    const double c = dot(v, p);
    s += 1.0 - c * c;
  }
  for (const vec3& p : perp) {
    const double r = dot(v, p);
    s += r * r;
  }
  return s;
}

// Moves (a, b), the inner and the outer free component; make(a, b, c) orders the three.
template <class Make>
void normal_search(double& a, double& b, const std::vector<vec3>& par, const std::vector<vec3>& perp, Make make) {
  double h = 1.0;
  double best = std::numeric_limits<double>::infinity();
  do {
    int ba = 0;
    int bb = 0;
    double na = a;
    double nb = b;
    for (int j = -1; j <= 1; ++j) {
      for (int i = -1; i <= 1; ++i) {
        const double ca = a + i * h;
        const double cb = b + j * h;
        const vec3 v = make(ca, cb);
        if (v.x == 2.0) continue;
        const double cost = normal_cost(v, par, perp);
        if (cost < best) {
          best = cost;
          ba = i;
          bb = j;
          na = ca;
          nb = cb;
        }
      }
    }
    a = na;
    b = nb;
    if (ba == 0 && bb == 0) h = h * 0.5;
  } while (h > 1e-6);
}

inline double dependent(double p, double q) { return std::sqrt(1.0 - p * p - q * q); }
inline bool infeasible(double p, double q) { return p * p + q * q > 1; }

// Null arrays are empty vectors here; the case of two null pointers is the caller's.
inline vec3 calc_normale(const std::vector<vec3>& par, const std::vector<vec3>& perp) {
  const vec3 skipped{2.0, 2.0, 2.0};
  double x = 0.0;
  double y = 0.0;
  normal_search(x, y, par, perp, [&](double cx, double cy) {
    return infeasible(cx, cy) ? skipped : vec3{cx, cy, dependent(cx, cy)};
  });
  double z = dependent(x, y);
  if (z >= absolute(x) && z >= absolute(y)) return {x, y, z};
  if (absolute(x) > absolute(y)) {
    normal_search(z, y, par, perp, [&](double cz, double cy) {
      return infeasible(cy, cz) ? skipped : vec3{dependent(cy, cz), cy, cz};
    });
    return {dependent(y, z), y, z};
  }
  normal_search(z, x, par, perp, [&](double cz, double cx) {
    return infeasible(cx, cz) ? skipped : vec3{cx, dependent(cx, cz), cz};
  });
  return {x, dependent(x, z), z};
}

}  // namespace plain
