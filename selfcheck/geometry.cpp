// The self-check of the point list, of lines and planes.
#include <memory>

#include "selfcheck/members.h"

namespace tessarn::detail {
namespace {

// Points along a line with noise, one in eight anywhere.
vectormat list(inputs& in, ulong n) {
  vectormat points;
  for (ulong i = 0; i < n; ++i) {
    const real noise = in.fraction();
    const real x = static_cast<real>(static_cast<double>(i));
    points.add(in.below(8) == 0 ? in.plane_vector() : ::vector(x, x / 2 + noise));
  }
  return points;
}

plane any_plane(inputs& in) {
  plane p;
  p.origin = in.space_vector();
  p.normal = in.space_vector();
  p.axis1 = in.space_vector();
  p.axis2 = in.space_vector();
  return p;
}

constexpr ulong most_points = 40;

// Points near a plane, some of them twice.
void cloud(inputs& in, vector3d (&points)[most_points]) {
  const real slope_x = in.integer();
  const real slope_y = in.integer();
  for (ulong i = 0; i < most_points; ++i) {
    const vector3d p = in.space_vector();
    const real z = product(slope_x, p.x) + product(slope_y, p.y);
    points[i] = i > 0 && in.below(8) == 0 ? points[i - 1] : vector3d(p.x, p.y, z + in.fraction());
  }
}

#define ANY TESSARN_MEMBER_HOSTILE
#define ORDINARY TESSARN_MEMBER_ORDINARY

constexpr selfcheck_member lists[] = {
    ANY("vectormat::add, append, del", 4, vectormat a = list(in, 9); const vectormat b = list(in, 5); a.append(b);
        a.del(in.below(9)); out.put(a)),
    ANY("vectormat::flip, scaling", 4, vectormat a = list(in, 9); a.flip(); a *= in.number(); out.put(a)),
    ANY("vectormat::sort", 4, vectormat a = list(in, 40); a.sort(); out.put(a)),
    ANY("vectormat::average, avdir", 4, const vectormat a = list(in, 30); out.put(a.average()); out.put(a.avdir())),
    ANY("vectormat::DeleteErrors", 4, vectormat a = list(in, 40); a.DeleteErrors(in.fraction() * 4); out.put(a)),
    ANY("vectormat::findline", 4, vectormat a = list(in, 30); const ::vector direction(1, in.fraction());
        const std::unique_ptr<vectormat> chain(a.findline(direction)); out.put(chain != nullptr);
        if (chain) out.put(*chain); out.put(a)),
    ANY("vector = vectormat", 4, const vectormat a = list(in, 20); ::vector centre; centre = a; out.put(centre)),
};

constexpr selfcheck_member planes[] = {
    ANY("line3d::cut", 8, const vector3d start = in.space_vector(); const line3d a(start, in.space_vector());
        const plane b = any_plane(in); vector3d x; out.put(a.cut(b, x)); out.put(x)),
    ANY("line3d::cut_off", 8, const vector3d start = in.space_vector(); line3d a(start, in.space_vector());
        const plane b = any_plane(in); out.put(a.cut_off(b)); out.put(a)),
    ANY("plane of vectors", 8, const vector3d p = in.space_vector(); const vector3d u = in.space_vector();
        out.put(plane(p, u)); out.put(plane(p, u, in.space_vector()))),
    ANY("plane::distance", 8, const plane a = any_plane(in); out.put(a.distance(in.space_vector()))),
    ANY("plane comparison", 8, const plane a = any_plane(in); out.put(a == any_plane(in)); out.put(a == a)),
    ANY("plane::cross(plane)", 8, const plane a = any_plane(in); const plane b = any_plane(in); ::vector p; ::vector q;
        out.put(a.cross(b, p, q)); out.put(p); out.put(q)),
    ANY("plane::cross(direction)", 8, const plane a = any_plane(in); const vector3d d = in.space_vector(); ::vector st;
        out.put(a.cross(d, st)); out.put(st); out.put(a.cross(d))),
    ANY("plane::rotate", 8, plane a = any_plane(in); const real alpha = in.number(); const real beta = in.number();
        a.rotate(alpha, beta, in.number()); out.put(a)),
    ORDINARY("plane(points)", 2, vector3d points[most_points]; cloud(in, points); out.put(plane(points, most_points))),
    ORDINARY("plane::CalcNormale", 2, vector3d parallel[4]; vector3d perpendicular[3]; in.fill(parallel);
             in.fill(perpendicular); vector3d normal;
             out.put(plane::CalcNormale(normal, parallel, 4, perpendicular, 3)); out.put(normal)),
};

}  // namespace

constinit const selfcheck_family selfcheck_lists = family_of(lists);
constinit const selfcheck_family selfcheck_geometry = family_of(planes);

}  // namespace tessarn::detail
