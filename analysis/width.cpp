#include "analysis/width.h"

#include <algorithm>
#include <limits>

namespace tessarn::analysis {

namespace {

constexpr int none = -1;

std::size_t index(int i) noexcept { return static_cast<std::size_t>(i); }

class width_search {
 public:
  width_search(const std::vector<lattice_point>& points, const polytope& body)
      : points_(points), body_(body), opposite_(body.faces.size(), none) {
    best_.width = std::numeric_limits<double>::infinity();
  }

  width_of_body run() {
    list_edges();
    find_opposite_corners();
    for (int f = 0; f < static_cast<int>(body_.faces.size()); ++f) try_face(f);
    for (int c = 0; c < static_cast<int>(body_.corners.size()); ++c)
      for (int k = body_.first[index(c)]; k < body_.first[index(c) + 1]; ++k)
        if (c < body_.edges[index(k)].to) try_edge(c, body_.edges[index(k)]);
    return best_;
  }

 private:
  // u x v is the normal, apart the difference of a point of the upper plane and one of the lower plane.
  struct candidate {
    difference u, v, apart;
    int touching[4], above;
  };

  const lattice_point& point(int p) const noexcept { return points_[index(p)]; }
  const lattice_point& corner(int c) const noexcept { return point(body_.corners[index(c)]); }
  difference step(int to, int from) const noexcept { return {corner(to), corner(from)}; }
  difference side(int face, int k) const noexcept {
    const hull_facet& f = body_.faces[index(face)];
    return {point(f.v[k]), point(f.v[0])};
  }
  // Whether corner a lies deeper below the face than corner b: -1, 0 or 1.
  int deeper(int face, int a, int b) const noexcept {
    return sign_of_determinant(side(face, 1), side(face, 2), step(b, a));
  }

  int edges_of(int face) const noexcept { return first_[index(face) + 1] - first_[index(face)]; }

  void list_edges();
  void find_opposite_corners();
  void try_edge(int from, const polytope_edge& e);
  int follow(int from, const polytope_edge& e, bool try_pairs);
  // When the turning plane touches a corner: a / b as below.
  struct meeting {
    int corner;
    double earliest, latest;
  };
  meeting estimated_meeting(int x, const difference& d, const polytope_edge& e, const estimate& b) const noexcept;
  int first_edge(int v, const polytope_edge& e);
  void keep_first_touched(int v, const polytope_edge& e) noexcept;
  void try_face(int f);
  void try_edges(int a, int b, int c, int d);
  void consider(const candidate& c);
  bool holds_body(const candidate& c) const noexcept;

  const std::vector<lattice_point>& points_;
  const polytope& body_;
  std::vector<int> first_, start_, edge_;  // of each face: its edges, with their starts and numbers
  std::vector<int> opposite_;              // for each face the corner that is farthest below it
  std::vector<int> crossed_;               // ends of the edges over which the opposite corner moves, next to each other
  std::vector<meeting> near_;              // the neighbours of a corner
  width_of_body best_;
};

// The edges of each face, by their starts and their numbers.
void width_search::list_edges() {
  first_.assign(body_.faces.size() + 1, 0);
  for (const polytope_edge& e : body_.edges) ++first_[index(e.left) + 1];
  for (std::size_t f = 0; f < body_.faces.size(); ++f) first_[f + 1] += first_[f];
  start_.resize(body_.edges.size());
  edge_.resize(body_.edges.size());
  std::vector<int> place(first_.begin(), first_.end() - 1);
  for (int c = 0; c < static_cast<int>(body_.corners.size()); ++c)
    for (int k = body_.first[index(c)]; k < body_.first[index(c) + 1]; ++k) {
      const std::size_t at = index(place[index(body_.edges[index(k)].left)]++);
      start_[at] = c;
      edge_[at] = k;
    }
}

// For the face with the fewest edges all corners are asked; from there the faces are reached over edges. Faces with
// many edges wait until no other is left: from a face that is parallel to the one opposite to it, the corner would go
// round that face edge by edge.
void width_search::find_opposite_corners() {
  int smallest = 0;
  for (int f = 1; f < static_cast<int>(body_.faces.size()); ++f)
    if (edges_of(f) < edges_of(smallest)) smallest = f;
  int deepest = 0;
  for (int c = 1; c < static_cast<int>(body_.corners.size()); ++c)
    if (deeper(smallest, c, deepest) > 0) deepest = c;
  opposite_[index(smallest)] = deepest;
  std::vector<int> small(1, smallest), large;
  while (!small.empty() || !large.empty()) {
    std::vector<int>& from = small.empty() ? large : small;
    const int f = from.back();
    from.pop_back();
    for (int k = first_[index(f)]; k < first_[index(f) + 1]; ++k) {
      const polytope_edge& e = body_.edges[index(edge_[index(k)])];
      if (opposite_[index(e.right)] != none) continue;
      opposite_[index(e.right)] = follow(start_[index(k)], e, false);
      (edges_of(e.right) <= 8 ? small : large).push_back(e.right);
    }
  }
}

// All pairs with the edge: from the face with fewer edges to the other one, for the reason above.
void width_search::try_edge(int from, const polytope_edge& e) {
  if (edges_of(e.left) <= edges_of(e.right))
    follow(from, e, true);
  else
    follow(e.to, {from, e.right, e.left}, true);
}

// The supporting plane turns about the edge from its left face to its right one, and the plane opposite to it turns
// with it: from the corner opposite to the left face to one opposite to the right face. Each step goes to a corner
// deeper below the right face, so the steps end.
int width_search::follow(int from, const polytope_edge& e, bool try_pairs) {
  int v = opposite_[index(e.left)];
  for (;;) {
    if (v == opposite_[index(e.right)]) return v;  // spares a look at all edges of a corner with many of them
    const int next = first_edge(v, e);
    if (next == none) return v;
    for (std::size_t i = 0; try_pairs && i < crossed_.size(); ++i) try_edges(from, e.to, v, crossed_[i]);
    v = next;
  }
}

// Bounds of the time at which the turning plane touches a neighbour, in double precision, where b > 0 is known. Where
// corners are touched nearly at once a may be above 0: the time is then before the beginning, and has no lower bound.
width_search::meeting width_search::estimated_meeting(int x, const difference& d, const polytope_edge& e,
                                                      const estimate& b) const noexcept {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  const estimate a = estimated_determinant(side(e.left, 1), side(e.left, 2), d);
  const double low = -a.value - a.error, high = std::max(-a.value + a.error, 0.0);
  return {x, low > 0 ? low / (b.value + b.error) * (1 - 0x1p-48) : -infinite,
          b.value > b.error ? high / (b.value - b.error) * (1 + 0x1p-48) : infinite};
}

// The neighbour of corner v that the turning plane touches first. For a neighbour x the heights h of x above v, of both
// faces, are a <= 0 and b > 0, and the plane touches x when the right face has the part a / (a - b). Neighbours that
// are touched within 2^-50 of the same time are all kept in crossed_. Those of which estimates tell that they are
// touched later than another by more than that need no more digits.
int width_search::first_edge(int v, const polytope_edge& e) {
  near_.clear();
  double soonest = std::numeric_limits<double>::infinity();
  const difference right[2] = {side(e.right, 1), side(e.right, 2)};
  for (int k = body_.first[index(v)]; k < body_.first[index(v) + 1]; ++k) {
    const int x = body_.edges[index(k)].to;
    const difference d = step(v, x);  // turned round: below is positive
    const estimate b = estimated_determinant(right[0], right[1], d);
    if (magnitude(b.value) > b.error ? b.value < 0 : sign_of_determinant(right[0], right[1], d) <= 0) continue;
    near_.push_back(estimated_meeting(x, d, e, b));
    soonest = std::min(soonest, near_.back().latest);
  }
  crossed_.clear();
  for (const meeting& m : near_)
    if (!(m.earliest > soonest * (1 + 0x1p-49))) crossed_.push_back(m.corner);
  if (crossed_.size() > 1) keep_first_touched(v, e);
  return crossed_.empty() ? none : crossed_[0];
}

void width_search::keep_first_touched(int v, const polytope_edge& e) noexcept {
  std::size_t kept = 0;
  doubled least = 0.0;
  for (const int x : crossed_) {
    const difference d = step(v, x);
    const doubled a = determinant_for_comparison(side(e.left, 1), side(e.left, 2), d);
    const doubled b = determinant_for_comparison(side(e.right, 1), side(e.right, 2), d);
    const doubled part = -a / b;
    if (kept > 0 && part.high > least.high * (1 + 0x1p-50)) continue;
    if (kept > 0 && part.high < least.high * (1 - 0x1p-50)) kept = 0;
    if (kept == 0) least = part;
    crossed_[kept++] = x;
  }
  crossed_.resize(kept);
}

void width_search::try_face(int f) {
  const hull_facet& shape = body_.faces[index(f)];
  const int below = body_.corners[index(opposite_[index(f)])];
  candidate c{
      side(f, 1), side(f, 2), {point(shape.v[0]), point(below)}, {shape.v[0], shape.v[1], shape.v[2], below}, 3};
  consider(c);
}

// The edges a b, about which the plane turns, and c d, over which the opposite corner moves from c to d. By these
// directions the normal points to a b.
void width_search::try_edges(int a, int b, int c, int d) {
  const auto p = [&](int i) noexcept { return body_.corners[index(i)]; };
  consider({step(b, a), step(d, c), step(a, c), {p(a), p(b), p(c), p(d)}, 2});
}

double estimated_length(const difference& d) noexcept {
  double sum = 0;
  for (const doubled& v : d.c) sum += v.high * v.high;
  return std::sqrt(sum);
}

// A lower bound of the width, in double precision.
double least_width(const difference& u, const difference& v, const difference& apart) noexcept {
  const estimate h = estimated_determinant(u, v, apart);
  double square = 0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    const double n = u.c[i].high * v.c[j].high - u.c[j].high * v.c[i].high;
    square += n * n;
  }
  if (!(square > 0x1p-900)) return 0;  // products that became subnormal have lost digits
  const double height = magnitude(h.value) - h.error;
  const double length = std::sqrt(square) + 0x1p-49 * estimated_length(u) * estimated_length(v);
  return height > 0 && length > 0 ? height / length * (1 - 0x1p-48) : 0;
}

// The candidate becomes the best one when its planes are closer than those of the best so far, and hold the body.
void width_search::consider(const candidate& c) {
  if (least_width(c.u, c.v, c.apart) > best_.width.high) return;
  const doubled height = rounded_determinant(c.u, c.v, c.apart);
  if (!(height.high > 0)) return;  // parallel edges: a face beside one of them is as good
  direction n = rounded_cross_product(c.u, c.v);
  const int e = exponent_of(std::max({magnitude(n.c[0]), magnitude(n.c[1]), magnitude(n.c[2])}));
  for (doubled& v : n.c) v = scaled(v, -e);
  const doubled length = square_root(n.c[0] * n.c[0] + n.c[1] * n.c[1] + n.c[2] * n.c[2]);
  const doubled width = scaled(height, -e) / length;
  if (is_finite(best_.width.high) && !((best_.width - width).high > 0x1p-90 * best_.width.high)) return;
  if (!holds_body(c)) return;
  best_.width = width;
  for (int k = 0; k < 3; ++k) best_.normal[k] = n.c[k] / length;
  for (int k = 0; k < 4; ++k) best_.touching[k] = c.touching[k];
  best_.above = c.above;
}

// For a face that is known. For two edges all corners are asked, exactly.
bool width_search::holds_body(const candidate& c) const noexcept {
  if (c.above != 2) return true;
  const lattice_point &upper = point(c.touching[0]), &lower = point(c.touching[2]);
  for (const int p : body_.corners)
    if (sign_of_determinant(c.u, c.v, {point(p), upper}) > 0 || sign_of_determinant(c.u, c.v, {point(p), lower}) < 0)
      return false;
  return true;
}

}  // namespace

width_of_body width_of(const std::vector<lattice_point>& points, const polytope& body) {
  return width_search(points, body).run();
}

}  // namespace tessarn::analysis
