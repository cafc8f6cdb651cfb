// A convex body by its true corners, edges and faces.
#pragma once

#include <vector>

#include "analysis/hull.h"

namespace tessarn::analysis {

// An edge as seen from its start: `left` and `right` are the faces beside it, seen from outside.
struct polytope_edge {
  int to, left, right;
};

// The corners are numbered anew; edges[first[c]] to edges[first[c + 1] - 1] start at corner c. Facets in one plane are
// one face, given by three of its points; points inside faces and edges are left out.
struct polytope {
  std::vector<int> corners;  // the points
  std::vector<int> first;
  std::vector<polytope_edge> edges;
  std::vector<hull_facet> faces;
};

// O(n) exact tests for n facets.
polytope polytope_of(const std::vector<lattice_point>& points, const std::vector<hull_facet>& facets);

}  // namespace tessarn::analysis
