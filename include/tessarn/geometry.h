/// \file
/// Line segments and planes in space. Points and directions are vector3d; angles are radians.
#pragma once

#include <cmath>
#include <utility>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

class plane;

/// The straight segment between two points.
///
/// The level of a point against a plane is normal . point - normal . origin, with the normal as it is
/// stored; a level of exactly 0 counts as non-negative. There is no tolerance.
///
/// \code
/// const plane ground(vector3d(0, 0, 0), vector3d(0, 0, 1));
/// line3d segment(vector3d(0, 0, -1), vector3d(0, 0, 3));
/// vector3d x;
/// assert(segment.cut(ground, x) && x == vector3d(0, 0, 0));
/// assert(segment.cut_off(ground) && segment.start == x);
/// \endcode
///
/// Failure: no member throws, allocates or reports an error beyond its result. A level that is NaN is
/// on neither side, so a NaN or an infinity in the plane or in the segment can give true with a NaN
/// point. A plane with a zero normal has the level 0 at every finite point and cuts nothing.
///
/// Cost: a constant number of operations. Memory: 72 bytes, nothing is owned. Results have the same
/// bits on every machine.
class TESSARN_API line3d {
 public:
  vector3d start;  ///< first end point
  vector3d end;    ///< second end point

  /// Both end points (0, 0, 0).
  line3d() noexcept {}
  /// The segment from a to b, which may be equal.
  line3d(vector3d& a, vector3d& b) noexcept : start(a), end(b) {}
  /// Copies both end points.
  line3d(const line3d&) = default;
  virtual ~line3d() = default;
  /// Copies both end points.
  /// \return this object
  line3d& operator=(line3d& o) noexcept { return *this = std::as_const(o); }

  /// Finds the point where the segment crosses the plane: (end |dS| + start |dE|) / (|dS| + |dE|)
  /// with the levels dS and dE of its ends.
  /// \param pl is used by its origin and normal; its axes play no part
  /// \param x receives the point. It may be an end of the segment.
  /// \return true, or false, leaving x, when both ends are on the same side
  ///
  /// Special results: a segment that touches with one end is cut only if the other end is on the
  /// negative side; x is then that end up to rounding, since weights are multiplied by reciprocals. A
  /// segment within the plane is not cut.
  [[nodiscard]] bool cut(plane& pl, vector3d& x) noexcept;

  /// Clips the segment to the side into which the normal points: the end on the negative side is
  /// replaced by the point that cut() finds.
  /// \return true when something of the segment is on that side, also when nothing had to be clipped;
  /// false, leaving the segment, when nothing of it is there
  ///
  /// Special results: a segment that only touches the plane from below is clipped to that point, up
  /// to rounding.
  bool cut_off(plane& pl) noexcept;

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. cut_off changes the segment, so
  /// the segment itself is never constant there.
  /// @{
  line3d(const vector3d& a, const vector3d& b) noexcept : start(a), end(b) {}
  line3d& operator=(const line3d& o) noexcept {
    start = o.start;
    end = o.end;
    return *this;
  }
  [[nodiscard]] bool cut(const plane& pl, vector3d& x) const noexcept {
    return tessarn::detail::mutable_ref(*this).cut(tessarn::detail::mutable_ref(pl), x);
  }
  bool cut_off(const plane& pl) noexcept { return cut_off(tessarn::detail::mutable_ref(pl)); }
  /// @}
};

/// A plane held as a frame: the point with plane coordinates (s, t) is origin + s axis1 + t axis2. No
/// relation between the fields is enforced; members use the fields as they stand. The side into which
/// the normal points is the non-negative one.
///
/// \code
/// const vector3d cloud[] = {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};
/// const plane fitted(cloud, 4);
/// assert(fitted.normal == vector3d(0, 0, 1) && fitted.origin == vector3d(0, 0, 1));
/// assert(fitted.distance(vector3d(5, 7, 4)) == 3);
/// \endcode
///
/// Intersections use the axes or the normal, whichever the member names, so after writing to one
/// field by hand write to the others as well.
///
/// \code
/// const plane lid(vector3d(0, 0, 2), vector3d(0, 0, 1));
/// vector st;
/// assert(lid.cross(vector3d(1, 3, 1), st) == vector3d(2, 6, 2));  // on the line through (0, 0, 0)
/// assert(st == vector(2, 6));                                     // its plane coordinates
/// vector p, q;
/// const plane wall(vector3d(1, 0, 0), vector3d(1, 0, 0));
/// assert(lid.cross(wall, p, q));                                  // the line s = 1
/// assert(p == vector(1, 0) && q == vector(0, 1));
/// \endcode
///
/// Failure: only the fits allocate and can throw; the other members show a numeric failure as NaN or
/// by the result that they name.
///
/// Memory: 136 bytes, nothing is owned. Results have the same bits everywhere.
class TESSARN_API plane {
 public:
  vector3d origin;  ///< a point of the plane, where s = t = 0
  vector3d normal;  ///< unit length when built from a normal or fitted, else that of axis2 x axis1
  vector3d axis1;   ///< direction of s
  vector3d axis2;   ///< direction of t

  /// All fields (0, 0, 0).
  plane() noexcept {}
  /// The plane through p with the axes u and v, which are directions and not points. The normal is
  /// v x u, in this order, not normalised: for the axes x and y it points to -z.
  plane(vector3d& p, vector3d& u, vector3d& v) noexcept : origin(p), normal(v.cross(u)), axis1(u), axis2(v) {}

  /// The plane through p with the normal n scaled to unit length. The axes are (1, 0, 0) and
  /// (0, 1, 0) for exactly (0, 0, 1), else axis1 is horizontal, (n.y, -n.x, 0) / r with r =
  /// sqrt(n.x^2 + n.y^2), and axis2 has the direction of axis1 x normal and unit length, too.
  /// Special results: a normal straight down gives NaN axes, a zero normal a NaN normal and NaN axes.
  /// A normal straight up is scaled by the reciprocal of its length, which for some lengths is not
  /// exactly (0, 0, 1) but a unit in the last place off, as for (0, 0, 49): its axes are NaN, too.
  /// Give such a normal as (0, 0, 1).
  plane(vector3d& p, vector3d& n) noexcept;

  /// Fits the plane to a cloud of points by least squares of the distances. The normal is found by a
  /// pattern search over its x and y that starts from three extreme points and ends at steps of 1e-6;
  /// the origin is the foot of the perpendicular from (0, 0, 0); the axes are those of plane(p, n).
  /// \param pts count points, which are only read; equal points count once, and null is no points
  /// \param count the number of points at pts
  ///
  /// Orientation: the normal of four or more distinct points points to z >= 0; that of three is
  /// (p1 - p0) x (p2 - p0), whichever way it points, and one straight down gives NaN axes.
  /// Special results: all fields stay 0 for fewer than three distinct points or a null pointer.
  /// Collinear points give NaN or zero fields, and so does a NaN or an infinity in a point.
  /// Accuracy: x and y of the normal come within the last step, 0.01/2^13, of the minimum, unless the
  /// search ends before at cost 0. It cannot cross the horizon, though: where the normal is close to
  /// horizontal the search can stop at z = 0, off by far more than a step. Turn the coordinates so
  /// that such a plane lies flat.
  /// Cost: O(count) for each move of the search. Memory: a packed copy and a table to find equal
  /// points, together less than twice the size of the points; nothing is allocated for a hundred
  /// points that differ. Throws std::bad_alloc; then there is no object.
  plane(vector3d* pts, tessarn::ulong count);
  /// Copies the four fields.
  plane(const plane&) = default;
  virtual ~plane() = default;
  /// Copies the four fields.
  /// \return a copy by value
  plane operator=(plane& o) noexcept { return *this = std::as_const(o); }

  /// Writes into n the unit vector that is as parallel as possible to the npar vectors par and as
  /// perpendicular as possible to the nperp vectors perp: it minimises the sum of 1 - (n . par)^2 and
  /// of (n . perp)^2, by a grid search down to steps of 1e-6.
  /// \param n receives the vector; it may be one of the given ones
  /// \param par directions, normally of unit length: a longer one weighs more, and past length 1 its
  /// cost is negative
  /// \param npar the number of vectors at par
  /// \param perp directions that weigh by the squares of their lengths
  /// \param nperp the number of vectors at perp
  /// \return false, leaving n, when both pointers are null; else true, whatever the counts
  ///
  /// Either pointer may be null, or its count 0: that set plays no part. Without any direction n is
  /// some unit vector.
  /// Sign: n and -n are equally good. The component that the search computes from the other two is
  /// not negative: z, unless x or y is the largest after the first search.
  /// Special results: (0, 0, 1) where a NaN leaves no candidate with a finite cost.
  /// Accuracy: steps of 1e-6 in the two components that the last search varies.
  /// Cost: O(npar + nperp) for each move of the search. Memory: a packed copy of both sets. Throws
  /// std::bad_alloc; n is then as it was.
  [[nodiscard]] static bool CalcNormale(vector3d& n, vector3d* par, tessarn::ulong npar, vector3d* perp,
                                        tessarn::ulong nperp);

  /// True when the normals are equal in every component (a NaN pair counts as equal) and the other
  /// origin lies exactly on this plane: (o.origin - origin) . normal is 0. The lengths of the normals
  /// matter, the axes do not.
  /// Special results: a plane with a NaN in its normal or origin is not equal to itself, since its
  /// level is NaN and not 0. Without a tolerance, planes that were computed in two ways are seldom
  /// equal: compare normals and distance().
  bool operator==(plane& o) noexcept;

  /// Rotates the frame, about axis2 by a, then the new axis1 by b, then the new normal by c, in
  /// radians, each clockwise seen from the tip of the axis. The origin stays. Lengths stay up to
  /// rounding, so many small rotations drift.
  /// Special results: NaN where an axis or the normal that is turned about is zero, even for angles
  /// of 0.
  void rotate(tessarn::real a, tessarn::real b, tessarn::real c) noexcept;

  /// The intersection line with another plane, in the (s, t) coordinates of this plane.
  /// \param o is used by its origin and axes; its normal is not read
  /// \param p receives a point of the line: the one with s = 0, or with t = 0 where the line has one
  /// s throughout
  /// \param q receives its direction, of unit length in (s, t)
  /// \return false, leaving both, when the axes of this plane have exactly no component along the
  /// normal of o's axes. Planes that are parallel up to rounding give true and a far point.
  ///
  /// Special results: true and NaN when o's axes are parallel or zero.
  [[nodiscard]] bool cross(plane& o, ::vector& p, ::vector& q) noexcept;

  /// The intersection with the line through (0, 0, 0) along d (not through the origin of the plane),
  /// by Cramer's rule on origin + s axis1 + t axis2 = lambda d. The normal is not used.
  /// \param d of any length
  /// \param st receives the plane coordinates (s, t)
  /// \return the point lambda d in space, also where lambda is negative
  ///
  /// Special results: (0, 0, 0) and st (0, 0) when they are parallel. A plane through (0, 0, 0) gives
  /// that point, too; `axis1 * axis2.cross(d) == 0` tells which it is.
  vector3d cross(vector3d& d, ::vector& st) noexcept;

  /// The intersection with the line through (0, 0, 0) along d, from the normal: d (normal . origin) /
  /// (normal . d). The axes are not used, and the length of the normal does not matter, up to
  /// rounding.
  /// Special results: d itself when it is parallel to the plane, that is when normal . d is exactly
  /// 0.
  vector3d cross(vector3d& d) noexcept;

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. `==` stands here once for each
  /// kind of operand: otherwise C++20 may choose the reversed comparison, which asks the other
  /// plane's normal.
  /// @{
  plane(const vector3d& p, const vector3d& u, const vector3d& v) noexcept
      : origin(p), normal(v.cross(u)), axis1(u), axis2(v) {}
  plane(const vector3d& p, const vector3d& n) noexcept
      : plane(tessarn::detail::mutable_ref(p), tessarn::detail::mutable_ref(n)) {}
  plane& operator=(const plane& o) noexcept {
    origin = o.origin;
    normal = o.normal;
    axis1 = o.axis1;
    axis2 = o.axis2;
    return *this;
  }
  bool operator==(const plane& o) const noexcept { return self() == other(o); }
  bool operator==(plane& o) const noexcept { return self() == o; }
  bool operator==(plane&& o) const noexcept { return self() == other(o); }
  bool operator==(const plane& o) noexcept { return *this == other(o); }
  bool operator==(plane&& o) noexcept { return *this == other(o); }
  [[nodiscard]] bool cross(const plane& o, ::vector& p, ::vector& q) const noexcept {
    return self().cross(other(o), p, q);
  }
  vector3d cross(const vector3d& d, ::vector& st) const noexcept {
    return self().cross(tessarn::detail::mutable_ref(d), st);
  }
  vector3d cross(const vector3d& d) const noexcept { return self().cross(tessarn::detail::mutable_ref(d)); }
  template <class = void>
  [[nodiscard]] static bool CalcNormale(vector3d& n, const vector3d* par, tessarn::ulong npar, const vector3d* perp,
                                        tessarn::ulong nperp) {
    return CalcNormale(n, tessarn::detail::mutable_pointer(par), npar, tessarn::detail::mutable_pointer(perp), nperp);
  }
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do
  /// not fit 32.
  template <class Points, class N, class = tessarn::detail::if_adapted_pointer<Points, vector3d, N>>
  plane(Points pts, N count) : plane(tessarn::detail::mutable_pointer<vector3d>(pts), tessarn::detail::count(count)) {}
  template <class Par, class N, class Perp, class M,
            class = std::enable_if_t<std::is_convertible_v<Par, const vector3d*> &&
                                     std::is_convertible_v<Perp, const vector3d*> &&
                                     (tessarn::detail::is_wide<N> || tessarn::detail::is_wide<M>)>>
  [[nodiscard]] static bool CalcNormale(vector3d& n, Par par, N npar, Perp perp, M nperp) {
    return CalcNormale(n, tessarn::detail::mutable_pointer<vector3d>(par), tessarn::detail::count(npar),
                       tessarn::detail::mutable_pointer<vector3d>(perp), tessarn::detail::count(nperp));
  }
  /// @}

  /// \name Additions
  /// Members for convenience; their results are made of those of the members above.
  /// @{
  /// The fit through a container of points: anything with data() and size(), such as
  /// std::vector<vector3d>.
  /// Throws std::bad_array_new_length for more than 2^32 - 1 points.
  template <class Points, class = tessarn::detail::if_container<Points, vector3d>>
  explicit plane(const Points& pts) : plane(pts.data(), pts.size()) {}
  /// The signed distance of p, positive on the side into which the normal points: normal .
  /// (p - origin), divided by the length of the normal, in the units of p.
  /// Special results: NaN for a zero normal.
  tessarn::real distance(const vector3d& p) const noexcept { return normal * (p - origin) / normal.lenld(); }
  /// @}

 private:
  // The compiled members are declared without const, but those that are called here change nothing.
  plane& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static plane& other(const plane& o) noexcept { return tessarn::detail::mutable_ref(o); }
  // Sets axis1 and axis2 from the normal, which is of unit length.
  void derive_axes() noexcept;
};

namespace tessarn {
using ::line3d;
using ::plane;
}  // namespace tessarn

static_assert(sizeof(line3d) == 72 && sizeof(plane) == 136,
              "lines and planes are their virtual table pointer and their vectors");
