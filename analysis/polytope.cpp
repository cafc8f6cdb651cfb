#include "analysis/polytope.h"

namespace tessarn::analysis {

namespace {

constexpr int none = -1;

std::size_t index(int i) noexcept { return static_cast<std::size_t>(i); }

// Whether the facet beyond edge k lies in the same plane.
bool flat(const std::vector<lattice_point>& points, const std::vector<hull_facet>& facets, const hull_facet& f, int k) {
  const hull_facet& g = facets[index(f.next[k])];
  const int from = f.v[(k + 1) % 3];
  int corner = 0;  // of g, opposite to the edge
  while (g.v[(corner + 1) % 3] != from) ++corner;
  const lattice_point& a = points[index(f.v[0])];
  return sign_of_determinant({points[index(f.v[1])], a}, {points[index(f.v[2])], a}, {points[index(g.v[corner])], a}) ==
         0;
}

// The edges between facets of different planes, from every point on.
struct ridges {
  std::vector<int> first;  // for each point
  std::vector<polytope_edge> edges;

  int count(int p) const noexcept { return first[index(p) + 1] - first[index(p)]; }
};

// Numbers the faces: each is found from its first facet on.
std::vector<int> number_faces(const std::vector<hull_facet>& facets, const std::vector<char>& is_flat,
                              std::vector<hull_facet>& faces) {
  std::vector<int> face(facets.size(), none), stack;
  for (std::size_t i = 0; i < facets.size(); ++i) {
    if (face[i] != none) continue;
    const int number = static_cast<int>(faces.size());
    faces.push_back(facets[i]);
    face[i] = number;
    stack.assign(1, static_cast<int>(i));
    while (!stack.empty()) {
      const std::size_t f = index(stack.back());
      stack.pop_back();
      for (std::size_t k = 0; k < 3; ++k) {
        const int next = facets[f].next[k];
        if (!is_flat[3 * f + k] || face[index(next)] != none) continue;
        face[index(next)] = number;
        stack.push_back(next);
      }
    }
  }
  return face;
}

ridges find_ridges(std::size_t points, const std::vector<hull_facet>& facets, const std::vector<char>& is_flat,
                   const std::vector<int>& face) {
  ridges r;
  r.first.assign(points + 1, 0);
  for (std::size_t i = 0; i < facets.size(); ++i)
    for (std::size_t k = 0; k < 3; ++k)
      if (!is_flat[3 * i + k]) ++r.first[index(facets[i].v[k]) + 1];
  for (std::size_t p = 0; p < points; ++p) r.first[p + 1] += r.first[p];
  r.edges.resize(index(r.first[points]));
  std::vector<int> place(r.first.begin(), r.first.end() - 1);
  for (std::size_t i = 0; i < facets.size(); ++i)
    for (std::size_t k = 0; k < 3; ++k) {
      if (is_flat[3 * i + k]) continue;
      const int from = facets[i].v[k], to = facets[i].v[(k + 1) % 3];
      r.edges[index(place[index(from)]++)] = {to, face[i], face[index(facets[i].next[k])]};
    }
  return r;
}

// The end of the edge, behind all points inside of it: these have two ridges, one of which leads back.
int end_of(const ridges& r, int from, int to) noexcept {
  while (r.count(to) == 2) {
    const polytope_edge* e = &r.edges[index(r.first[index(to)])];
    const int next = e[0].to == from ? e[1].to : e[0].to;
    from = to;
    to = next;
  }
  return to;
}

}  // namespace

polytope polytope_of(const std::vector<lattice_point>& points, const std::vector<hull_facet>& facets) {
  polytope p;
  std::vector<char> is_flat(3 * facets.size());
  for (std::size_t i = 0; i < facets.size(); ++i)
    for (int k = 0; k < 3; ++k) is_flat[3 * i + index(k)] = flat(points, facets, facets[i], k) ? 1 : 0;
  const std::vector<int> face = number_faces(facets, is_flat, p.faces);
  const ridges r = find_ridges(points.size(), facets, is_flat, face);
  std::vector<int> number(points.size(), none);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (r.count(static_cast<int>(i)) < 3) continue;
    number[i] = static_cast<int>(p.corners.size());
    p.corners.push_back(static_cast<int>(i));
  }
  p.first.push_back(0);
  for (const int c : p.corners) {
    for (int k = r.first[index(c)]; k < r.first[index(c) + 1]; ++k) {
      const polytope_edge& e = r.edges[index(k)];
      p.edges.push_back({number[index(end_of(r, c, e.to))], e.left, e.right});
    }
    p.first.push_back(static_cast<int>(p.edges.size()));
  }
  return p;
}

}  // namespace tessarn::analysis
