// The point list, plainly: a std::vector of points and the stated capacity.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "poly.h"
#include "vectors.h"

namespace plain {

struct point_list {
  std::vector<vec2> points;
  std::uint32_t capacity = 0;

  std::uint32_t count() const { return static_cast<std::uint32_t>(points.size()); }
};

inline void empty(point_list& l) { l = point_list{}; }

inline void add(point_list& l, vec2 v) {
  if (l.capacity < l.count()) l.capacity = l.count();
  if (l.capacity < l.count() + 1) l.capacity += 1024;
  l.points.push_back(v);
}

inline void del(point_list& l, std::size_t i) {
  if (l.points.empty()) return;
  const std::size_t last = l.points.size() - 1;
  for (std::size_t j = i; j < last; ++j) l.points[j] = l.points[j + 1];
  l.points.pop_back();
}

inline void scale_y(point_list& l, double k) {
  for (vec2& p : l.points) p.y = p.y * k;
}

inline void flip(point_list& l) {
  for (vec2& p : l.points) std::swap(p.x, p.y);
}

inline void bubble_sort(point_list& l) {
  if (l.points.size() < 2) return;
  bool swapped = true;
  while (swapped) {
    swapped = false;
    for (std::size_t j = 0; j + 1 < l.points.size(); ++j) {
      vec2& a = l.points[j];
      vec2& b = l.points[j + 1];
      if (a.x > b.x || (a.x == b.x && a.y > b.y)) {
        std::swap(a, b);
        swapped = true;
      }
    }
  }
}

// Two partial sums a coordinate over groups of four points, then the remaining points in order.
inline vec2 average(const point_list& l) {
  const std::size_t n = l.points.size();
  const std::size_t grouped = n / 4 * 4;
  vec2 a, b;
  for (std::size_t i = 0; i < grouped; ++i) {
    vec2& s = i % 2 == 0 ? a : b;
    s.x += l.points[i].x;
    s.y += l.points[i].y;
  }
  vec2 s{a.x + b.x, a.y + b.y};
  for (std::size_t i = grouped; i < n; ++i) {
    s.x += l.points[i].x;
    s.y += l.points[i].y;
  }
  const double q = 1.0 / static_cast<double>(n);
  return {s.x * q, s.y * q};
}

inline vec2 centroid(const point_list& l) {
  vec2 s{0.0, 0.0};
  for (const vec2& p : l.points) {
    s.x += p.x;
    s.y += p.y;
  }
  const double n = static_cast<double>(l.points.size());
  return {s.x / n, s.y / n};
}

inline vec2 mean_direction(const point_list& l) {
  const poly line = fit(l.points, 2);
  const double s = line.count() < 2 ? 0.0 : line.cof[1];
  if (s != s) return {0.0, 1.0};
  return {1.0, s};
}

inline void delete_errors(point_list& l, double limit) {
  const long n = static_cast<long>(l.points.size());
  if (limit != 0) {
    for (long i = 0; i < n; ++i) {
      double sum = 0.0;
      long used = 0;
      for (long j = i - 5; j <= i + 5; ++j) {
        if (j < 0 || j >= n) continue;
        sum += l.points[static_cast<std::size_t>(j)].y;
        ++used;
      }
      const double m = sum / static_cast<double>(used);
      vec2& p = l.points[static_cast<std::size_t>(i)];
      const double d = p.y - m;
      if (d * d > limit) p.x = -1.0;
    }
  }
  std::vector<vec2> kept;
  for (const vec2& p : l.points) {
    if (p.x != -1.0) kept.push_back(p);
  }
  l.points = kept;
  l.capacity = l.count();
}

// False when there is no result (fewer than two points).
inline bool find_line(point_list& l, vec2 dir, point_list& found) {
  if (l.points.size() < 2) return false;
  found = point_list{};
  add(found, l.points[0]);
  l.points[0].x = -1.0;
  double tol = 0.2;
  for (std::size_t i = 2; i < l.points.size(); ++i) {
    const vec2 d = sub(l.points[i], found.points.back());
    const double c = (dir.x * d.x + dir.y * d.y) / std::sqrt((dir.x * dir.x + dir.y * dir.y) * (d.x * d.x + d.y * d.y));
    double a = tessarn::angles::acos(c);
    if (a != a) a = 0.0;
    if (a < tol) {
      add(found, l.points[i]);
      l.points[i].x = -1.0;
      if (found.points.size() >= 10) {
        dir = mean_direction(found);
        tol = 0.05;
      }
    }
  }
  delete_errors(l, 0.0);
  return true;
}

}  // namespace plain
