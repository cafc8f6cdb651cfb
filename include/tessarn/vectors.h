/// \file
/// Plane, space and polar vectors, and the point list (tessarn/list.h).
///
/// Angles are radians. Lengths and angles are formed from plain sums of squares, without scaling: where a
/// squared coordinate overflows (magnitudes above about 1e154) or vanishes (below about 1e-162) lengths are
/// infinite or 0, and angles wrong or 0, without a word. Divisions by a scalar multiply by its reciprocal, except
/// where a member says that it divides.
#pragma once

#include <cmath>
#include <initializer_list>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"

class vectormat;
class polarvector3d;

/// A plane vector (x, y), used as a point and as a direction. Angles run from +x towards +y. Nothing is
/// owned. Results have the same bits everywhere.
///
/// \code
/// vector a(3, 4), b(0, 2);
/// assert(a.lenld() == 5);
/// assert(a + 2 * b == vector(3, 8));
/// assert(b.dirarc() == tessarn::half_pi);  // 90 degrees from +x
/// \endcode
class TESSARN_API vector {
 public:
  alignas(8) tessarn::real x;  ///< first coordinate
  tessarn::real y;             ///< second coordinate

  /// (0, 0).
  vector() noexcept : x(0), y(0) {}
  vector(tessarn::real first, tessarn::real second) noexcept : x(first), y(second) {}
  vector(const vector&) = default;
  virtual ~vector() = default;

  /// Copies b; returns a copy by value.
  vector operator=(vector& b) noexcept { return *this = std::as_const(b); }
  /// The centroid of a list: the coordinate sums, in order, divided by the count; NaN for an empty
  /// list. This vector holds the running sums, so it should not be a point of the list. Returns a copy.
  vector operator=(vectormat& m) noexcept;

  vector operator+(vector& b) noexcept { return {x + b.x, y + b.y}; }
  vector operator-(vector& b) noexcept { return {x - b.x, y - b.y}; }
  vector operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// Both coordinates times 1/k; k = 0 gives infinities and NaN.
  vector operator/(tessarn::real k) noexcept { return std::as_const(*this) / k; }
  /// The vector scaled to the length len, (x len) (1/L) with L = lenld(); NaN for the zero vector.
  vector resize(tessarn::real len) noexcept { return std::as_const(*this).resize(len); }

  void operator+=(vector& b) noexcept { *this += std::as_const(b); }
  void operator-=(vector& b) noexcept { *this -= std::as_const(b); }
  void operator*=(tessarn::real k) noexcept {
    x = tessarn::detail::product(x, k);
    y = tessarn::detail::product(y, k);
  }
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }

  /// True when both coordinates are equal; a NaN coordinate counts as equal.
  bool operator==(vector& b) noexcept { return std::as_const(*this) == std::as_const(b); }

  /// The length sqrt(x^2 + y^2), without scaling against overflow.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The length rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return std::as_const(*this).lenul(); }
  /// The rounded coordinates: half up from 0 on, down to the floor for every negative value.
  int rx() noexcept { return rndi(x); }
  int ry() noexcept { return rndi(y); }
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  static unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0 (-0.2 gives -1); what does not fit gives -2147483648.
  static int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

  /// The unsigned angle to the +x axis, acos(x / length), in [0, pi]; NaN for the zero vector.
  tessarn::real arc() noexcept { return std::as_const(*this).arc(); }
  /// The unsigned angle between the two vectors, in [0, pi]; 0 where the arc cosine is NaN, that is for
  /// a zero vector and for a cosine that rounding pushes outside [-1, 1], antiparallel vectors included.
  tessarn::real arc(vector& b) noexcept { return std::as_const(*this).arc(std::as_const(b)); }
  /// The direction angle in (-pi, pi], by the arc sine; 0 for the zero vector.
  tessarn::real dirarc() noexcept { return std::as_const(*this).dirarc(); }
  /// The signed angle from this direction to that of b, in (-pi, pi]; positive counter-clockwise.
  tessarn::real dirarc(vector& b) noexcept { return std::as_const(*this).dirarc(std::as_const(b)); }
  /// Exchanges x and y.
  void flip() noexcept {
    const tessarn::real t = x;
    x = y;
    y = t;
  }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results.
  /// @{
  vector& operator=(const vector& b) noexcept {
    x = b.x;
    y = b.y;
    return *this;
  }
  template <class List, class = tessarn::detail::if_is<List, vectormat>>
  vector operator=(const List& m) noexcept {
    return *this = tessarn::detail::mutable_ref(m);
  }
  vector operator+(const vector& b) const noexcept { return {x + b.x, y + b.y}; }
  vector operator-(const vector& b) const noexcept { return {x - b.x, y - b.y}; }
  vector operator*(tessarn::real k) const noexcept {
    using tessarn::detail::product;
    return {product(x, k), product(y, k)};
  }
  vector operator/(tessarn::real k) const noexcept { return *this * (1 / k); }
  vector resize(tessarn::real len) const noexcept {
    using tessarn::detail::product;
    const tessarn::real r = 1 / lenld();
    return {product(product(x, len), r), product(product(y, len), r)};
  }
  void operator+=(const vector& b) noexcept {
    x += b.x;
    y += b.y;
  }
  void operator-=(const vector& b) noexcept {
    x -= b.x;
    y -= b.y;
  }
  bool operator==(const vector& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(x, b.x) && equal_or_unordered(y, b.y);
  }
  tessarn::real lenld() const noexcept { return std::sqrt(squared_length()); }
  tessarn::ulong lenul() const noexcept { return rndu(lenld()); }
  int rx() const noexcept { return rndi(x); }
  int ry() const noexcept { return rndi(y); }
  tessarn::real arc() const noexcept { return tessarn::angles::acos(x / lenld()); }
  tessarn::real arc(const vector& b) const noexcept {
    using tessarn::detail::product;
    const tessarn::real c = (product(x, b.x) + product(y, b.y)) / std::sqrt(squared_length() * b.squared_length());
    const tessarn::real a = tessarn::angles::acos(c);
    return a != a ? 0 : a;
  }
  tessarn::real dirarc() const noexcept {
    using namespace tessarn;
    if (y == 0) return x >= 0 ? 0 : pi;
    if (x == 0) return y >= 0 ? half_pi : -half_pi;
    tessarn::real s = y / lenld();
    if (s > 1) s = 1;
    if (s < -1) s = -1;
    const tessarn::real a = tessarn::angles::asin(s);
    if (x > 0) return a;
    return y > 0 ? pi - a : -pi - a;
  }
  tessarn::real dirarc(const vector& b) const noexcept {
    const tessarn::real d = b.dirarc() - dirarc();
    if (d <= -tessarn::pi) return d + tessarn::two_pi;
    if (d > tessarn::pi) return d - tessarn::two_pi;
    return d;
  }
  /// @}

  /// `v = {}` makes v (0, 0).
  vector& operator=(std::initializer_list<tessarn::detail::no_value>) noexcept { return *this = vector(); }
  /// Both coordinates with the other sign.
  vector operator-() const noexcept { return {-x, -y}; }

 private:
  tessarn::real squared_length() const noexcept {
    using tessarn::detail::product;
    return product(x, x) + product(y, y);
  }
};

/// A space vector (x, y, z), used as a point and as a direction. Nothing is owned. Results have the same
/// bits everywhere.
///
/// \code
/// vector3d a(1, 0, 0), b(0, 1, 0);
/// assert(a * b == 0);                          // the dot product
/// assert(a.cross(b) == vector3d(0, 0, 1));
/// assert(vector3d(0, 0, 5).projection(vector3d(1, 2, 3)).z > 2.99);
/// assert(vector3d(1, 1e300, 3) * 0.0 == vector3d());
/// \endcode
class TESSARN_API vector3d {
 public:
  alignas(8) tessarn::real x;  ///< first coordinate
  tessarn::real y;             ///< second coordinate
  tessarn::real z;             ///< third coordinate

  /// (0, 0, 0).
  vector3d() noexcept : x(0), y(0), z(0) {}
  vector3d(tessarn::real first, tessarn::real second, tessarn::real third) noexcept : x(first), y(second), z(third) {}
  vector3d(const vector3d&) = default;
  /// The Cartesian form of a polar vector: (cos alpha t, sin alpha t, sin beta len), t = cos beta len.
  /// Explicit, so that `vector3d v = p` has one way to go: the conversion of polarvector3d.
  inline explicit vector3d(polarvector3d& p) noexcept;
  /// The Cartesian form of *p, which must not be null.
  inline explicit vector3d(polarvector3d* p) noexcept;
  virtual ~vector3d() = default;

  vector3d& operator=(vector3d& b) noexcept { return *this = std::as_const(b); }

  vector3d operator+(vector3d& b) noexcept { return {x + b.x, y + b.y, z + b.z}; }
  vector3d operator-(vector3d& b) noexcept { return {x - b.x, y - b.y, z - b.z}; }
  /// The dot product, (y b.y + x b.x) + z b.z.
  tessarn::real operator*(vector3d& b) noexcept { return std::as_const(*this) * std::as_const(b); }
  /// Each coordinate times k; exactly (0, 0, 0) for k = 0, also for infinite and NaN coordinates.
  vector3d operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// Each coordinate times 1/k; k = 0 gives infinities and NaN.
  vector3d operator/(tessarn::real k) noexcept { return scaled(1 / k); }
  /// The cross product, this x b.
  vector3d cross(vector3d& b) noexcept { return std::as_const(*this).cross(std::as_const(b)); }
  /// The vector scaled to the length len, (x len) (1/L) and so on; NaN for the zero vector.
  vector3d resize(tessarn::real len) noexcept { return std::as_const(*this).resize(len); }
  /// The projection of v onto the line of this vector, with the reciprocal of the length multiplied in twice;
  /// NaN when this is the zero vector.
  vector3d projection(vector3d& v) noexcept { return std::as_const(*this).projection(std::as_const(v)); }
  /// The azimuth decreased by a1 (clockwise seen from +z), then the elevation increased by a2, radians.
  /// NaN in x and y for a vector on the z axis.
  vector3d rotate(tessarn::real a1, tessarn::real a2) noexcept { return std::as_const(*this).rotate(a1, a2); }
  /// This vector turned about the line along axis by the angle in radians, clockwise seen from the tip
  /// of the axis: a positive angle about +z takes +x towards -y. NaN for a zero axis.
  vector3d rotate(vector3d& axis, tessarn::real angle) noexcept {
    return std::as_const(*this).rotate(std::as_const(axis), angle);
  }

  void operator+=(vector3d& b) noexcept { *this += std::as_const(b); }
  void operator-=(vector3d& b) noexcept { *this -= std::as_const(b); }
  /// Each coordinate times k; unlike `*`, k = 0 is not special.
  void operator*=(tessarn::real k) noexcept { *this = scaled(k); }
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }
  /// Replaces this vector by the cross product this x b.
  void operator*=(vector3d& b) noexcept { *this = std::as_const(*this).cross(std::as_const(b)); }

  /// True when all coordinates are equal; a NaN coordinate counts as equal.
  bool operator==(vector3d& b) noexcept { return std::as_const(*this) == std::as_const(b); }

  /// The length sqrt(x^2 + y^2 + z^2), without scaling against overflow.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The length rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return rndu(lenld()); }
  /// The rounded coordinates: half up from 0 on, down to the floor for every negative value.
  int rx() noexcept { return std::as_const(*this).rx(); }
  int ry() noexcept { return std::as_const(*this).ry(); }
  int rz() noexcept { return std::as_const(*this).rz(); }
  /// The unsigned angle between the two vectors, in [0, pi]; 0 where the arc cosine is NaN, that is for
  /// a zero vector and for a cosine that rounding pushes outside [-1, 1].
  tessarn::real arc(vector3d& b) noexcept { return std::as_const(*this).arc(std::as_const(b)); }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results.
  /// @{
  inline explicit vector3d(const polarvector3d& p) noexcept;
  inline explicit vector3d(const polarvector3d* p) noexcept;
  vector3d& operator=(const vector3d& b) noexcept {
    x = b.x;
    y = b.y;
    z = b.z;
    return *this;
  }
  vector3d operator+(const vector3d& b) const noexcept { return {x + b.x, y + b.y, z + b.z}; }
  vector3d operator-(const vector3d& b) const noexcept { return {x - b.x, y - b.y, z - b.z}; }
  tessarn::real operator*(const vector3d& b) const noexcept {
    using tessarn::detail::product;
    return (product(y, b.y) + product(x, b.x)) + product(z, b.z);
  }
  vector3d operator*(tessarn::real k) const noexcept { return k == 0 ? vector3d() : scaled(k); }
  vector3d operator/(tessarn::real k) const noexcept { return scaled(1 / k); }
  vector3d cross(const vector3d& b) const noexcept {
    using tessarn::detail::product;
    return {product(y, b.z) - product(z, b.y), product(z, b.x) - product(x, b.z), product(x, b.y) - product(y, b.x)};
  }
  vector3d resize(tessarn::real len) const noexcept {
    using tessarn::detail::product;
    const tessarn::real r = 1 / lenld();
    return {product(product(x, len), r), product(product(y, len), r), product(product(z, len), r)};
  }
  vector3d projection(const vector3d& v) const noexcept {
    const tessarn::real q = 1 / lenld();
    return *this * (((*this * v) * q) * q);
  }
  vector3d rotate(tessarn::real a1, tessarn::real a2) const noexcept {
    using tessarn::detail::product;
    const auto [s1, c1] = tessarn::angles::sin_cos(a1);
    const auto [s2, c2] = tessarn::angles::sin_cos(a2);
    const tessarn::real turned_x = product(x, c1) + product(y, s1);
    const tessarn::real turned_y = product(y, c1) - product(x, s1);
    const tessarn::real rho = std::sqrt(product(turned_x, turned_x) + product(turned_y, turned_y));
    const tessarn::real f = (product(rho, c2) - product(z, s2)) / rho;
    return {product(turned_x, f), product(turned_y, f), product(z, c2) + product(rho, s2)};
  }
  vector3d rotate(const vector3d& axis, tessarn::real angle) const noexcept {
    const tessarn::real q = 1 / axis.lenld();
    const vector3d along = axis * (((*this * axis) * q) * q);
    const vector3d across = *this - along;
    const auto turn = tessarn::angles::sin_cos(angle);
    const vector3d tangent = across.cross(axis) * (turn.sine * q);
    return across * turn.cosine + along + tangent;
  }
  void operator+=(const vector3d& b) noexcept {
    x += b.x;
    y += b.y;
    z += b.z;
  }
  void operator-=(const vector3d& b) noexcept {
    x -= b.x;
    y -= b.y;
    z -= b.z;
  }
  void operator*=(const vector3d& b) noexcept { *this = std::as_const(*this).cross(b); }
  bool operator==(const vector3d& b) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(x, b.x) && equal_or_unordered(y, b.y) && equal_or_unordered(z, b.z);
  }
  tessarn::real lenld() const noexcept { return std::sqrt(squared_length()); }
  tessarn::ulong lenul() const noexcept { return tessarn::detail::round_magnitude(lenld()); }
  int rx() const noexcept { return tessarn::detail::round_signed(x); }
  int ry() const noexcept { return tessarn::detail::round_signed(y); }
  int rz() const noexcept { return tessarn::detail::round_signed(z); }
  tessarn::real arc(const vector3d& b) const noexcept {
    const tessarn::real a = tessarn::angles::acos((*this * b) / std::sqrt(squared_length() * b.squared_length()));
    return a != a ? 0 : a;
  }
  /// @}

  /// Compares with the Cartesian form of p.
  inline bool operator==(const polarvector3d& p) const noexcept;
  /// All coordinates with the other sign.
  vector3d operator-() const noexcept { return {-x, -y, -z}; }

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  vector3d scaled(tessarn::real k) const noexcept {
    using tessarn::detail::product;
    return {product(x, k), product(y, k), product(z, k)};
  }
  tessarn::real squared_length() const noexcept {
    using tessarn::detail::product;
    return (product(x, x) + product(y, y)) + product(z, z);
  }
};

/// A space vector in spherical form. The angles are never normalised. Scaling and turning act on the
/// fields; sums and products go through the Cartesian form. Nothing is owned. Results have the same bits
/// everywhere.
///
/// \code
/// polarvector3d p(0.5, 0.25, 2);           // azimuth, elevation, length
/// assert((p * 3).len == 6);
/// assert(p.rotate(1, 0).alpha == 1.5);
/// assert(polarvector3d(vector3d(0, -1, 0)).alpha == tessarn::pi + tessarn::half_pi);
/// p = vector3d(1, 2, 3);                   // changes nothing, see operator=
/// assert(p.len == 2);
/// \endcode
class TESSARN_API polarvector3d {
 public:
  alignas(8) tessarn::real alpha;  ///< angle in the xy plane from +x towards +y; [0, 2 pi) when computed
  tessarn::real beta;              ///< elevation above the xy plane; [-pi/2, pi/2] when computed
  tessarn::real len;               ///< length

  /// All fields 0.
  polarvector3d() noexcept : alpha(0), beta(0), len(0) {}
  polarvector3d(tessarn::real azimuth, tessarn::real elevation, tessarn::real length) noexcept
      : alpha(azimuth), beta(elevation), len(length) {}
  polarvector3d(const polarvector3d&) = default;
  /// The polar form of v, careful about the axes: angles 0 for the zero vector, alpha 0 on the z axis
  /// and exact for y = 0, the cosine of alpha clamped to [-1, 1].
  polarvector3d(vector3d& v) noexcept : polarvector3d(std::as_const(v)) {}
  /// The polar form of *v, which must not be null, computed plainly: a cosine that rounding pushes
  /// past 1 gives a NaN alpha.
  explicit polarvector3d(vector3d* v) noexcept : polarvector3d(const_cast<const vector3d*>(v)) {}
  virtual ~polarvector3d() = default;

  /// The Cartesian form (cos alpha t, sin alpha t, sin beta len) with t = cos beta len.
  operator vector3d() noexcept { return vector3d(std::as_const(*this)); }

  /// Copies o; returns a copy by value.
  polarvector3d operator=(polarvector3d& o) noexcept { return *this = std::as_const(o); }
  /// Changes nothing and returns a copy of this object: assigning a Cartesian vector has no effect.
  /// Write `p = polarvector3d(v)` to convert.
  polarvector3d operator=(vector3d&) noexcept { return *this; }
  polarvector3d operator=(vector3d*) noexcept { return *this; }

  tessarn::real lenld() noexcept { return len; }
  /// The length rounded half up.
  tessarn::ulong lenul() noexcept { return rndu(len); }
  /// The rounded fields: half up from 0 on, down to the floor for every negative value.
  int ralpha() noexcept { return rndi(alpha); }
  int rbeta() noexcept { return rndi(beta); }
  int rlen() noexcept { return rndi(len); }
  /// The same direction with the length l.
  polarvector3d resize(tessarn::real l) noexcept { return {alpha, beta, l}; }
  /// Both angles increased, not wrapped.
  polarvector3d rotate(tessarn::real a, tessarn::real b) noexcept { return {alpha + a, beta + b, len}; }
  polarvector3d operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// The length divided by k, a true division.
  polarvector3d operator/(tessarn::real k) noexcept { return {alpha, beta, len / k}; }
  void operator*=(tessarn::real k) noexcept { len = tessarn::detail::product(len, k); }
  /// The length divided by k, a true division.
  void operator/=(tessarn::real k) noexcept { len = len / k; }
  /// These three change nothing.
  void operator+=(polarvector3d&) noexcept {}
  void operator-=(polarvector3d&) noexcept {}
  void operator*=(polarvector3d&) noexcept {}
  /// The Cartesian sum and difference, converted back with care.
  polarvector3d operator+(polarvector3d& o) noexcept { return std::as_const(*this) + std::as_const(o); }
  polarvector3d operator-(polarvector3d& o) noexcept { return std::as_const(*this) - std::as_const(o); }
  /// The dot product of the Cartesian forms.
  tessarn::real operator*(polarvector3d& o) noexcept { return std::as_const(*this) * std::as_const(o); }
  /// The cross product this x o of the Cartesian forms, converted back with care.
  polarvector3d cross(polarvector3d& o) noexcept { return std::as_const(*this).cross(std::as_const(o)); }
  /// The angle between the directions in [0, pi]; 0 where the arc cosine is NaN. Lengths play no part.
  tessarn::real arc(polarvector3d& o) noexcept { return std::as_const(*this).arc(std::as_const(o)); }
  /// True when all fields are equal; a NaN field counts as equal.
  bool operator==(polarvector3d& o) noexcept { return std::as_const(*this) == std::as_const(o); }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results.
  /// @{
  polarvector3d(const vector3d& v) noexcept : alpha(0), beta(0), len(v.lenld()) {
    using namespace tessarn;
    if (len == 0) return;
    const tessarn::real q = 1 / len;
    beta = tessarn::angles::asin(v.z * q);
    if (v.y == 0) {
      alpha = v.x < 0 ? pi : 0;
    } else if (!(beta >= half_pi || beta <= -half_pi)) {
      tessarn::real c = (v.x / tessarn::angles::cos(beta)) * q;
      if (c > 1) c = 1;
      if (c < -1) c = -1;
      const tessarn::real a = tessarn::angles::acos(c);
      alpha = v.y >= 0 ? a : two_pi - a;
    }
  }
  explicit polarvector3d(const vector3d* v) noexcept : alpha(0), beta(0), len(v->lenld()) {
    using namespace tessarn;
    if (len == 0) return;
    beta = tessarn::angles::asin(v->z / len);
    if (beta == half_pi || beta == -half_pi) return;
    const tessarn::real a = tessarn::angles::acos(v->x / (tessarn::angles::cos(beta) * len));
    alpha = v->y < 0 ? two_pi - a : a;
  }
  operator vector3d() const noexcept { return vector3d(*this); }
  polarvector3d& operator=(const polarvector3d& o) noexcept {
    alpha = o.alpha;
    beta = o.beta;
    len = o.len;
    return *this;
  }
  template <class V, class = tessarn::detail::if_is<V, vector3d>>
  polarvector3d operator=(const V&) noexcept {
    return *this;
  }
  polarvector3d operator=(const vector3d*) noexcept { return *this; }
  tessarn::real lenld() const noexcept { return len; }
  tessarn::ulong lenul() const noexcept { return tessarn::detail::round_magnitude(len); }
  int ralpha() const noexcept { return tessarn::detail::round_signed(alpha); }
  int rbeta() const noexcept { return tessarn::detail::round_signed(beta); }
  int rlen() const noexcept { return tessarn::detail::round_signed(len); }
  polarvector3d resize(tessarn::real l) const noexcept { return {alpha, beta, l}; }
  polarvector3d rotate(tessarn::real a, tessarn::real b) const noexcept { return {alpha + a, beta + b, len}; }
  polarvector3d operator*(tessarn::real k) const noexcept { return {alpha, beta, tessarn::detail::product(len, k)}; }
  polarvector3d operator/(tessarn::real k) const noexcept { return {alpha, beta, len / k}; }
  void operator+=(const polarvector3d&) noexcept {}
  void operator-=(const polarvector3d&) noexcept {}
  void operator*=(const polarvector3d&) noexcept {}
  polarvector3d operator+(const polarvector3d& o) const noexcept { return vector3d(*this) + vector3d(o); }
  polarvector3d operator-(const polarvector3d& o) const noexcept { return vector3d(*this) - vector3d(o); }
  tessarn::real operator*(const polarvector3d& o) const noexcept { return vector3d(*this) * vector3d(o); }
  polarvector3d cross(const polarvector3d& o) const noexcept { return vector3d(*this).cross(vector3d(o)); }
  tessarn::real arc(const polarvector3d& o) const noexcept {
    using tessarn::detail::product;
    const auto here = tessarn::angles::sin_cos(beta), there = tessarn::angles::sin_cos(o.beta);
    const tessarn::real c =
        product(here.sine, there.sine) + product(here.cosine * there.cosine, tessarn::angles::cos(alpha - o.alpha));
    const tessarn::real a = tessarn::angles::acos(c);
    return a != a ? 0 : a;
  }
  bool operator==(const polarvector3d& o) const noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(alpha, o.alpha) && equal_or_unordered(beta, o.beta) && equal_or_unordered(len, o.len);
  }
  /// @}

  /// Compares with the polar form of v.
  bool operator==(const vector3d& v) const noexcept { return *this == polarvector3d(v); }
  /// `p = {}` makes all fields 0.
  polarvector3d& operator=(std::initializer_list<tessarn::detail::no_value>) noexcept {
    return *this = polarvector3d();
  }
  /// The opposite Cartesian vector, converted back with care: angles stay in their intervals.
  polarvector3d operator-() const noexcept { return -vector3d(*this); }

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }
};

inline vector3d::vector3d(const polarvector3d& p) noexcept {
  using tessarn::detail::product;
  const auto longitude = tessarn::angles::sin_cos(p.alpha), latitude = tessarn::angles::sin_cos(p.beta);
  const tessarn::real t = latitude.cosine * p.len;
  x = product(longitude.cosine, t);
  y = product(longitude.sine, t);
  z = product(latitude.sine, p.len);
}
inline vector3d::vector3d(const polarvector3d* p) noexcept : vector3d(*p) {}
inline vector3d::vector3d(polarvector3d& p) noexcept : vector3d(std::as_const(p)) {}
inline vector3d::vector3d(polarvector3d* p) noexcept : vector3d(std::as_const(*p)) {}
inline bool vector3d::operator==(const polarvector3d& p) const noexcept { return *this == vector3d(p); }

/// k times a vector is the vector times k. A program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, ::vector>>
::vector operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, vector3d>>
vector3d operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, polarvector3d>>
polarvector3d operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// n = 0 gives one zeroed object, to be released by `delete`; n > 0 an array of n zeroed objects, to be
/// released by `delete[]`. Throws std::bad_alloc when the size is impossible.
[[nodiscard]] TESSARN_API ::vector* new_vector(tessarn::ulong n);
[[nodiscard]] TESSARN_API vector3d* new_vector3d(tessarn::ulong n);
[[nodiscard]] TESSARN_API polarvector3d* new_polarvector3d(tessarn::ulong n);

/// \name Counts of 64 bits
/// Throw std::bad_array_new_length when n does not fit 32 bits, instead of cutting it.
/// @{
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] ::vector* new_vector(N n) {
  return new_vector(tessarn::detail::count(n));
}
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] vector3d* new_vector3d(N n) {
  return new_vector3d(tessarn::detail::count(n));
}
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] polarvector3d* new_polarvector3d(N n) {
  return new_polarvector3d(tessarn::detail::count(n));
}
/// @}

namespace tessarn {
using ::new_polarvector3d;
using ::new_vector;
using ::new_vector3d;
using ::polarvector3d;
using ::vector;
using ::vector3d;
}  // namespace tessarn

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(::vector) == 24 && sizeof(vector3d) == 32 && sizeof(polarvector3d) == 32,
              "a vector is its virtual table pointer and its coordinates");

// The point list belongs to this family; its header is a file of its own for length alone.
#include "tessarn/list.h"
