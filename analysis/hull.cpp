#include "analysis/hull.h"

#include <limits>
#include <new>

namespace tessarn::analysis {

namespace {

constexpr int none = -1;

// The facets while the hull grows. Each point that is not yet inside waits at one facet that it is above of.
class quickhull {
 public:
  explicit quickhull(const std::vector<lattice_point>& points)
      : points_(points), count_(static_cast<int>(points.size())) {}

  convex_hull run() {
    convex_hull result;
    int corners[4] = {0, 0, 0, 0};
    result.kind = choose_corners(corners);
    if (result.kind == hull_kind::plane) result.facets.push_back({{corners[0], corners[1], corners[2]}, {0, 0, 0}});
    if (result.kind != hull_kind::body) return result;
    start(corners);
    // In the order in which they were made, so that the body grows on all sides: a side that is finished before the
    // others start has many facets that a later point sees at once.
    for (std::size_t i = 0; i < open_.size(); ++i)
      if (facets_[index(open_[i])].alive) add_point(open_[i]);
    number_facets(result.facets);
    return result;
  }

 private:
  struct facet {
    hull_facet shape;
    int waiting = none;  // the first of the points above the facet
    bool alive = true;
    int seen_by = none;  // the point from which it was last found visible
  };
  struct horizon_edge {
    int from, to, beyond;  // the facet on the other side
  };

  static std::size_t index(int i) noexcept { return static_cast<std::size_t>(i); }
  const lattice_point& point(int i) const noexcept { return points_[index(i)]; }
  difference between(int to, int from) const noexcept { return {point(to), point(from)}; }

  // Whether p is strictly above the facet, outside of the hull so far.
  bool above(const hull_facet& f, int p) const noexcept {
    return sign_of_determinant(between(f.v[1], f.v[0]), between(f.v[2], f.v[0]), between(p, f.v[0])) > 0;
  }
  double height(const hull_facet& f, int p) const noexcept {
    return estimated_determinant(between(f.v[1], f.v[0]), between(f.v[2], f.v[0]), between(p, f.v[0])).value;
  }

  hull_kind choose_corners(int (&c)[4]) const noexcept;
  void start(const int (&c)[4]);
  void add_point(int f);
  void find_horizon(int f, int p);
  void wait_at(int f, int p) {
    next_point_[index(p)] = facets_[index(f)].waiting;
    facets_[index(f)].waiting = p;
  }
  void number_facets(std::vector<hull_facet>& result) const;

  const std::vector<lattice_point>& points_;
  int count_;
  std::vector<facet> facets_;
  std::vector<int> open_;        // facets at which points waited, in the order in which they were made
  std::vector<int> next_point_;  // that waits at the same facet
  std::vector<int> starting_;    // for each point the new facet whose first edge starts there
  std::vector<int> visible_;
  std::vector<horizon_edge> horizon_;
};

// The first point, the last one, the one that is farthest from their line, and the one that is farthest from the plane
// of these three. Distances are estimated; where the farthest is not off the line or the plane, the exact tests ask
// every point.
hull_kind quickhull::choose_corners(int (&c)[4]) const noexcept {
  if (count_ < 2) return hull_kind::point;
  c[0] = 0;
  c[1] = count_ - 1;
  const difference u = between(c[1], c[0]);
  double farthest = -1;
  for (int i = 1; i < count_ - 1; ++i) {
    const difference v = between(i, 0);
    double square = 0;
    for (int k = 0; k < 3; ++k) {
      const int a = (k + 1) % 3, b = (k + 2) % 3;
      const double w = u.c[a].high * v.c[b].high - u.c[b].high * v.c[a].high;
      square += w * w;
    }
    if (!(square > farthest)) continue;
    farthest = square;
    c[2] = i;
  }
  for (int i = 0; i < count_ && !independent(u, between(c[2], 0)); ++i) c[2] = i;
  const difference v = between(c[2], 0);
  if (!independent(u, v)) return hull_kind::line;
  farthest = -1;
  for (int i = 0; i < count_; ++i) {
    const double h = magnitude(estimated_determinant(u, v, between(i, 0)).value);
    if (!(h > farthest)) continue;
    farthest = h;
    c[3] = i;
  }
  for (int i = 0; i < count_ && sign_of_determinant(u, v, between(c[3], 0)) == 0; ++i) c[3] = i;
  return sign_of_determinant(u, v, between(c[3], 0)) == 0 ? hull_kind::plane : hull_kind::body;
}

// The tetrahedron, and the points outside of it.
void quickhull::start(const int (&c)[4]) {
  const bool turned = sign_of_determinant(between(c[1], c[0]), between(c[2], c[0]), between(c[3], c[0])) > 0;
  const int a = c[0], b = turned ? c[2] : c[1], d = turned ? c[1] : c[2], top = c[3];
  // a, b, d run against the clock seen from the side where the top is not.
  facets_.resize(4);
  facets_[0].shape = {{a, b, d}, {1, 2, 3}};
  facets_[1].shape = {{b, a, top}, {0, 3, 2}};
  facets_[2].shape = {{d, b, top}, {0, 1, 3}};
  facets_[3].shape = {{a, d, top}, {0, 2, 1}};
  next_point_.assign(points_.size(), none);
  starting_.assign(points_.size(), none);
  for (int p = count_; p-- > 0;) {
    if (p == a || p == b || p == d || p == top) continue;
    for (int f = 0; f < 4; ++f) {
      if (!above(facets_[index(f)].shape, p)) continue;
      wait_at(f, p);
      break;
    }
  }
  for (int f = 0; f < 4; ++f)
    if (facets_[index(f)].waiting != none) open_.push_back(f);
}

// The facets that p sees, which are connected, and the edges between them and the others.
void quickhull::find_horizon(int f, int p) {
  visible_.assign(1, f);
  horizon_.clear();
  facets_[index(f)].seen_by = p;
  for (std::size_t i = 0; i < visible_.size(); ++i) {
    const hull_facet shape = facets_[index(visible_[i])].shape;
    for (int k = 0; k < 3; ++k) {
      facet& g = facets_[index(shape.next[k])];
      if (g.seen_by == p) continue;
      if (above(g.shape, p)) {
        g.seen_by = p;
        visible_.push_back(shape.next[k]);
      } else {
        horizon_.push_back({shape.v[k], shape.v[(k + 1) % 3], shape.next[k]});
      }
    }
  }
}

// Adds the point that is highest above the facet: the facets that it sees are replaced by those between it and the
// horizon, and the points that waited there look for a new one.
void quickhull::add_point(int f) {
  int p = facets_[index(f)].waiting;
  double highest = height(facets_[index(f)].shape, p);
  for (int i = next_point_[index(p)]; i != none; i = next_point_[index(i)]) {
    const double h = height(facets_[index(f)].shape, i);
    if (!(h > highest)) continue;
    highest = h;
    p = i;
  }
  find_horizon(f, p);
  if (facets_.size() + horizon_.size() > index(std::numeric_limits<int>::max())) throw std::bad_alloc();
  const int first = static_cast<int>(facets_.size());
  for (const horizon_edge& e : horizon_) {
    const int made = static_cast<int>(facets_.size());
    facets_.emplace_back();
    facets_.back().shape = {{e.from, e.to, p}, {e.beyond, none, none}};
    starting_[index(e.from)] = made;
    hull_facet& g = facets_[index(e.beyond)].shape;
    for (int k = 0; k < 3; ++k)
      if (g.v[k] == e.to && g.v[(k + 1) % 3] == e.from) g.next[k] = made;
  }
  const int end = static_cast<int>(facets_.size());
  for (int i = first; i < end; ++i) {
    const int follower = starting_[index(facets_[index(i)].shape.v[1])];
    facets_[index(i)].shape.next[1] = follower;
    facets_[index(follower)].shape.next[2] = i;
  }
  for (const int old : visible_) {
    facets_[index(old)].alive = false;
    for (int i = facets_[index(old)].waiting, next; i != none; i = next) {
      next = next_point_[index(i)];
      for (int g = first; g < end; ++g) {
        if (!above(facets_[index(g)].shape, i)) continue;
        wait_at(g, i);
        break;
      }
    }
  }
  for (int i = first; i < end; ++i)
    if (facets_[index(i)].waiting != none) open_.push_back(i);
}

// The facets that are left, numbered anew.
void quickhull::number_facets(std::vector<hull_facet>& result) const {
  std::vector<int> numbers(facets_.size(), none);
  int count = 0;
  for (std::size_t i = 0; i < facets_.size(); ++i)
    if (facets_[i].alive) numbers[i] = count++;
  result.reserve(index(count));
  for (const facet& f : facets_) {
    if (!f.alive) continue;
    result.push_back(f.shape);
    for (int& n : result.back().next) n = numbers[index(n)];
  }
}

}  // namespace

convex_hull hull_of(const std::vector<lattice_point>& points) { return quickhull(points).run(); }

}  // namespace tessarn::analysis
