/// \file
/// Line segments and planes in space.
#pragma once

#include <cmath>
#include <utility>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

class plane;

/// The straight segment between two points. Nothing is owned.
///
/// The level of a point against a plane is normal . point - normal . origin, with the normal as it is
/// stored; a level of exactly 0 counts as non-negative.
///
/// \code
/// const plane ground(vector3d(0, 0, 0), vector3d(0, 0, 1));
/// line3d segment(vector3d(0, 0, -1), vector3d(0, 0, 3));
/// vector3d x;
/// assert(segment.cut(ground, x) && x == vector3d(0, 0, 0));
/// assert(segment.cut_off(ground) && segment.start == x);
/// \endcode
class TESSARN_API line3d {
 public:
  vector3d start;  ///< first end point
  vector3d end;    ///< second end point

  /// Both end points (0, 0, 0).
  line3d() noexcept {}
  line3d(vector3d& a, vector3d& b) noexcept : start(a), end(b) {}
  line3d(const line3d&) = default;
  virtual ~line3d() = default;
  line3d& operator=(line3d& o) noexcept { return *this = std::as_const(o); }

  /// Writes the point where the segment crosses the plane into x and returns true; false, leaving x, when
  /// both ends are on the same side. A segment that touches with one end is cut only if the other end is
  /// on the negative side; x is then that end up to rounding, since weights are multiplied by reciprocals. x may be
  /// an end of the segment.
  [[nodiscard]] bool cut(plane& pl, vector3d& x) noexcept;
  /// Clips the segment to the side into which the normal points. False, leaving the segment, when nothing
  /// of it is there.
  bool cut_off(plane& pl) noexcept;

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results.
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

/// A plane held as a frame: the point with plane coordinates (s, t) is origin + s axis1 + t axis2. Nothing
/// is owned and no relation between the fields is enforced; members use the fields as they stand. The
/// side into which the normal points is the non-negative one.
///
/// \code
/// const vector3d cloud[] = {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};
/// const plane fitted(cloud, 4);
/// assert(fitted.normal == vector3d(0, 0, 1) && fitted.origin == vector3d(0, 0, 1));
/// assert(fitted.distance(vector3d(5, 7, 4)) == 3);
/// \endcode
///
/// Results have the same bits everywhere.
class TESSARN_API plane {
 public:
  vector3d origin;  ///< a point of the plane, where s = t = 0
  vector3d normal;  ///< of unit length when built from a normal or fitted
  vector3d axis1;   ///< direction of s
  vector3d axis2;   ///< direction of t

  /// All fields (0, 0, 0).
  plane() noexcept {}
  /// The plane through p with the axes u and v; the normal is v x u, in this order, not normalised.
  plane(vector3d& p, vector3d& u, vector3d& v) noexcept : origin(p), normal(v.cross(u)), axis1(u), axis2(v) {}
  /// The plane through p with the normal n scaled to unit length. The axes are (1, 0, 0) and (0, 1, 0)
  /// for exactly (0, 0, 1), else axis1 is horizontal and axis2 along axis1 x normal. A normal straight
  /// down gives NaN axes, a zero normal NaN throughout. A normal straight up is scaled by the reciprocal of its length,
  /// which for some lengths is not exactly (0, 0, 1) but a unit in the last place off, as for (0, 0, 49): its axes are
  /// NaN, too. Give such a normal as (0, 0, 1).
  plane(vector3d& p, vector3d& n) noexcept;
  /// Fits the plane to a cloud of points by least squares of the distances: the normal by a pattern
  /// search that starts from three extreme points and ends at steps of 1e-6, the origin the foot of the
  /// perpendicular from (0, 0, 0). All fields stay 0 for fewer than three distinct points or a null
  /// pointer; collinear points give NaN or zero fields. The normal of four or more distinct points
  /// points to z >= 0; that of three is (p1 - p0) x (p2 - p0). Equal points count once. Works on a packed
  /// copy and a table to find equal points, together less than twice the size of the points.
  plane(vector3d* pts, tessarn::ulong count);
  plane(const plane&) = default;
  virtual ~plane() = default;
  /// Copies the four fields; returns a copy by value.
  plane operator=(plane& o) noexcept { return *this = std::as_const(o); }

  /// Writes into n the unit vector that is as parallel as possible
  /// to the npar vectors par and as perpendicular as possible to the nperp vectors perp: it minimises the
  /// sum of 1 - (n . par)^2 and of (n . perp)^2, by a grid search down to steps of 1e-6. The component that
  /// the search computes from the other two is not negative: z, unless x or y is the largest after the first search.
  /// Either array may be null; false, leaving n, when both are.
  [[nodiscard]] static bool CalcNormale(vector3d& n, vector3d* par, tessarn::ulong npar, vector3d* perp,
                                        tessarn::ulong nperp);

  /// True when the normals are equal in every component (a NaN pair counts as equal) and the other
  /// origin lies exactly on this plane. The lengths of the normals matter, the axes do not. A plane with a NaN in its
  /// normal or origin is not equal to itself, since its level is NaN and not 0.
  bool operator==(plane& o) noexcept;
  /// Rotates the frame, about axis2 by a, then the new axis1 by b, then the new normal by c, in radians,
  /// each clockwise seen from the tip of the axis. The origin stays.
  void rotate(tessarn::real a, tessarn::real b, tessarn::real c) noexcept;
  /// The intersection line with the plane of o's origin and axes, in the (s, t) coordinates of this plane:
  /// a point p and a unit direction q. False, leaving both, when the axes of this plane have exactly no
  /// component along the normal of o's axes.
  [[nodiscard]] bool cross(plane& o, ::vector& p, ::vector& q) noexcept;
  /// The intersection with the line through (0, 0, 0) along d, from the axes; st receives its plane
  /// coordinates. (0, 0, 0) and st (0, 0) when they are parallel.
  vector3d cross(vector3d& d, ::vector& st) noexcept;
  /// The same intersection from the normal; d itself when it is parallel to the plane.
  vector3d cross(vector3d& d) noexcept;

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. `==` stands here once for each kind of operand:
  /// otherwise C++20 may choose the reversed comparison, which asks the other plane's normal.
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
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do not fit 32.
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
  /// @{
  /// The fit through a container of points: anything with data() and size(), such as std::vector<vector3d>.
  template <class Points, class = tessarn::detail::if_container<Points, vector3d>>
  explicit plane(const Points& pts) : plane(pts.data(), pts.size()) {}
  /// The signed distance of p, positive on the side into which the normal points: normal . (p - origin), divided by the
  /// length of the normal. NaN for a zero normal.
  tessarn::real distance(const vector3d& p) const noexcept { return normal * (p - origin) / normal.lenld(); }
  /// @}

 private:
  plane& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static plane& other(const plane& o) noexcept { return tessarn::detail::mutable_ref(o); }
  void derive_axes() noexcept;
};

namespace tessarn {
using ::line3d;
using ::plane;
}  // namespace tessarn

static_assert(sizeof(line3d) == 72 && sizeof(plane) == 136,
              "lines and planes are their virtual table pointer and their vectors");
