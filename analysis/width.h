// The width of a convex body: the smallest distance of two parallel planes that hold it.
#pragma once

#include <vector>

#include "analysis/polytope.h"

namespace tessarn::analysis {

// The two planes. Points touching[0] to touching[above - 1] are on the upper one, where the normal points, and the
// others on the lower one: three and one, one and three, or two and two.
struct width_of_body {
  doubled width;      // within 2^-94 of itself
  doubled normal[3];  // of length 1
  int touching[4];
  int above;
};

// The width is reached at a face and a corner, or at two edges, that lie on parallel supporting planes (M. Houle,
// G. Toussaint, Computing the width of a set, 1988). All such pairs are found by following, for every edge, the corner
// that is farthest on the other side while the plane turns from one face beside the edge to the other. Which corners
// and edges these are is decided exactly. Of pairs whose widths agree within 2^-90 the first one found is taken: faces
// by their numbers, then edges.
//
// Cost: O(pairs * edges at a corner) on average; there are O(n) pairs for bodies that are about as round on both sides,
// and O(n^2) in the worst case.
width_of_body width_of(const std::vector<lattice_point>& points, const polytope& body);

}  // namespace tessarn::analysis
