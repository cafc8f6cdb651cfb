// Segments cut and clipped by planes.
#include <cmath>

#include "tessarn/geometry.h"

using tessarn::real;

namespace {

// The levels of the two end points against the plane; 0 counts as non-negative.
struct levels {
  real start, end;
  bool both_non_negative() const { return start >= 0 && end >= 0; }
  bool both_negative() const { return start < 0 && end < 0; }
};

levels levels_of(const line3d& l, const plane& pl) {
  const real c = pl.normal * pl.origin;
  return {pl.normal * l.start - c, pl.normal * l.end - c};
}

// The point where the linearly interpolated level is 0. A level of 0 takes the other end point out.
vector3d crossing(const line3d& l, const levels& level) {
  const real at_start = std::fabs(level.start);
  const real at_end = std::fabs(level.end);
  return (l.end * at_start + l.start * at_end) / (at_start + at_end);
}

}  // namespace

bool line3d::cut(plane& pl, vector3d& x) noexcept {
  const levels level = levels_of(*this, pl);
  if (level.both_non_negative() || level.both_negative()) return false;
  x = crossing(*this, level);
  return true;
}

bool line3d::cut_off(plane& pl) noexcept {
  const levels level = levels_of(*this, pl);
  if (level.both_non_negative()) return true;
  if (level.both_negative()) return false;
  const vector3d x = crossing(*this, level);
  (level.start >= 0 ? end : start) = x;
  return true;
}
