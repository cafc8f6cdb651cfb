// The convex hull of points in space, exactly: every decision is the sign of an exact determinant.
#pragma once

#include <cstddef>
#include <vector>

#include "analysis/orientation.h"

namespace tessarn::analysis {

// Three points that are not on one line, against the clock seen from outside; next[i] is the facet beyond the edge from
// v[i] to v[i + 1].
struct hull_facet {
  int v[3];
  int next[3];
};

// How much room the points take.
enum class hull_kind { point, line, plane, body };

// The hull of points that differ from each other. Of a body the boundary is triangulated; facets may lie in one plane,
// and a corner of a facet may lie inside an edge or a face of the hull. Of points in a plane there is one facet, any
// three points that span it; of others none.
struct convex_hull {
  hull_kind kind = hull_kind::point;
  std::vector<hull_facet> facets;
};

// Quickhull (C. Barber, D. Dobkin, H. Huhdanpaa, The quickhull algorithm for convex hulls, 1996). A facet counts as
// visible from a point that is strictly above it, so that points in the plane of a facet need no perturbation: the
// point is above another facet, or belongs to the hull. Cost: O(n log n) on average.
convex_hull hull_of(const std::vector<lattice_point>& points);

}  // namespace tessarn::analysis
