/// \file
/// Line segments and planes in space.
#pragma once

#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

class plane;

/// The straight segment between two points. Nothing is owned.
///
/// The level of a point against a plane is normal . point - normal . origin, with the normal as it is
/// stored; a level of exactly 0 counts as non-negative.
class TESSARN_API line3d {
 public:
  vector3d start;  ///< first end point
  vector3d end;    ///< second end point

  /// Both end points (0, 0, 0).
  line3d() noexcept {}
  line3d(vector3d& a, vector3d& b) noexcept : start(a), end(b) {}
  line3d(const line3d&) = default;
  virtual ~line3d() = default;
  line3d& operator=(line3d& o) noexcept {
    start = o.start;
    end = o.end;
    return *this;
  }

  /// Writes the point where the segment crosses the plane into x and returns true; false, leaving x, when
  /// both ends are on the same side. A segment that touches with one end is cut only if the other end is
  /// on the negative side.
  bool cut(plane& pl, vector3d& x) noexcept;
  /// Clips the segment to the side into which the normal points. False, leaving the segment, when nothing
  /// of it is there.
  bool cut_off(plane& pl) noexcept;

  /// \name The same for constants and temporaries
  /// @{
  line3d(const vector3d& a, const vector3d& b) noexcept : start(a), end(b) {}
  line3d& operator=(const line3d& o) noexcept { return *this = tessarn::detail::mutable_ref(o); }
  bool cut(const plane& pl, vector3d& x) const noexcept {
    return tessarn::detail::mutable_ref(*this).cut(tessarn::detail::mutable_ref(pl), x);
  }
  bool cut_off(const plane& pl) noexcept { return cut_off(tessarn::detail::mutable_ref(pl)); }
  /// @}
};

/// A plane held as a frame: the point with plane coordinates (s, t) is origin + s axis1 + t axis2. Nothing
/// is owned and no relation between the fields is enforced; members use the fields as they stand. The
/// side into which the normal points is the non-negative one.
///
/// Results have the same bits everywhere, up to the C library's sin and cos in rotate().
class TESSARN_API plane {
  using real = tessarn::real;
  using ulong = tessarn::ulong;

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
  /// down gives NaN axes, a zero normal NaN throughout.
  plane(vector3d& p, vector3d& n) noexcept;
  /// Fits the plane to a cloud of points by least squares of the distances: the normal by a pattern
  /// search that starts from three extreme points and ends at steps of 1e-6, the origin the foot of the
  /// perpendicular from (0, 0, 0). All fields stay 0 for fewer than three distinct points or a null
  /// pointer; collinear points give NaN or zero fields. The normal of four or more distinct points
  /// points to z >= 0; that of three is (p1 - p0) x (p2 - p0). Equal points count once. Works on a packed
  /// copy and a table to find equal points, together less than twice the size of the points.
  plane(vector3d* pts, ulong count);
  plane(const plane&) = default;
  virtual ~plane() = default;
  /// Copies the four fields; returns a copy by value.
  plane operator=(plane& o) noexcept {
    assign(o);
    return *this;
  }

  /// Writes into n the unit vector, with a non-negative largest component, that is as parallel as possible
  /// to the npar vectors par and as perpendicular as possible to the nperp vectors perp: it minimises the
  /// sum of 1 - (n . par)^2 and of (n . perp)^2, by a grid search down to steps of 1e-6. Either array may
  /// be null; false, leaving n, when both are.
  static bool CalcNormale(vector3d& n, vector3d* par, ulong npar, vector3d* perp, ulong nperp);

  /// True when the normals are equal in every component (a NaN pair counts as equal) and the other
  /// origin lies exactly on this plane. The lengths of the normals matter, the axes do not.
  bool operator==(plane& o) noexcept;
  /// Rotates the frame, about axis2 by a, then the new axis1 by b, then the new normal by c, in radians,
  /// each clockwise seen from the tip of the axis. The origin stays.
  void rotate(real a, real b, real c) noexcept;
  /// The intersection line with the plane of o's origin and axes, in the (s, t) coordinates of this plane:
  /// a point p and a unit direction q. False, leaving both, when the axes of this plane have exactly no
  /// component along the normal of o's axes.
  bool cross(plane& o, vector& p, vector& q) noexcept;
  /// The intersection with the line through (0, 0, 0) along d, from the axes; st receives its plane
  /// coordinates. (0, 0, 0) and st (0, 0) when they are parallel.
  vector3d cross(vector3d& d, vector& st) noexcept;
  /// The same intersection from the normal; d itself when it is parallel to the plane.
  vector3d cross(vector3d& d) noexcept;

  /// \name The same for constants and temporaries
  /// @{
  plane(const vector3d& p, const vector3d& u, const vector3d& v) noexcept
      : origin(p), normal(v.cross(u)), axis1(u), axis2(v) {}
  plane(const vector3d& p, const vector3d& n) noexcept
      : plane(const_cast<vector3d&>(p), const_cast<vector3d&>(n)) {}
  template <class Points, class = tessarn::detail::if_pointer_to_const<Points, vector3d>>
  plane(Points pts, ulong count) : plane(const_cast<vector3d*>(pts), count) {}
  plane& operator=(const plane& o) noexcept {
    assign(o);
    return *this;
  }
  bool operator==(const plane& o) const noexcept { return self() == other(o); }
  bool cross(const plane& o, vector& p, vector& q) const noexcept { return self().cross(other(o), p, q); }
  vector3d cross(const vector3d& d, vector& st) const noexcept {
    return self().cross(tessarn::detail::mutable_ref(d), st);
  }
  vector3d cross(const vector3d& d) const noexcept { return self().cross(tessarn::detail::mutable_ref(d)); }
  template <class Par, class Perp,
            class = std::enable_if_t<tessarn::detail::is_pointer_to_const<Par, vector3d> ||
                                     tessarn::detail::is_pointer_to_const<Perp, vector3d>>>
  static bool CalcNormale(vector3d& n, Par par, ulong npar, Perp perp, ulong nperp) {
    return CalcNormale(n, const_cast<vector3d*>(static_cast<const vector3d*>(par)), npar,
                       const_cast<vector3d*>(static_cast<const vector3d*>(perp)), nperp);
  }
  /// @}

 private:
  plane& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static plane& other(const plane& o) noexcept { return tessarn::detail::mutable_ref(o); }
  void assign(const plane& o) noexcept {
    origin = o.origin;
    normal = o.normal;
    axis1 = o.axis1;
    axis2 = o.axis2;
  }
  void derive_axes() noexcept;
};

static_assert(sizeof(void*) != 8 || (sizeof(line3d) == 72 && sizeof(plane) == 136),
              "lines and planes are their virtual table pointer and their vectors");
