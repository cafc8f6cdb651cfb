/// \file
/// Plane, space and polar vectors, and the point list.
#pragma once

#include "tessarn/scalar.h"

class vectormat;
class polarvector3d;

/// A plane vector (x, y), used as a point and as a direction. Angles run from +x towards +y, in radians.
/// Nothing is owned. Results have the same bits everywhere, up to the C library's asin and acos in the
/// angles. Divisions by a scalar multiply by its reciprocal.
class TESSARN_API vector {
  using real = tessarn::real;

 public:
  real x;  ///< first coordinate
  real y;  ///< second coordinate

  /// (0, 0).
  vector() noexcept : x(0), y(0) {}
  vector(real first, real second) noexcept : x(first), y(second) {}
  vector(const vector&) = default;
  virtual ~vector() = default;

  /// Copies b; returns a copy by value.
  vector operator=(vector& b) noexcept {
    x = b.x;
    y = b.y;
    return *this;
  }
  /// The centroid of a list: the coordinate sums, in order, divided by the count; NaN for an empty
  /// list. This vector holds the running sums, so it should not be a point of the list. Returns a copy.
  vector operator=(vectormat& m) noexcept;

  vector operator+(vector& b) noexcept { return {x + b.x, y + b.y}; }
  vector operator-(vector& b) noexcept { return {x - b.x, y - b.y}; }
  vector operator*(real k) noexcept {
    using tessarn::detail::product;
    return {product(x, k), product(y, k)};
  }
  /// Both coordinates times 1/k; k = 0 gives infinities and NaN.
  vector operator/(real k) noexcept { return *this * (1 / k); }
  /// The vector scaled to the length len, (x len) (1/L) with L = lenld(); NaN for the zero vector.
  vector resize(real len) noexcept {
    using tessarn::detail::product;
    const real r = 1 / lenld();
    return {product(product(x, len), r), product(product(y, len), r)};
  }

  void operator+=(vector& b) noexcept {
    x += b.x;
    y += b.y;
  }
  void operator-=(vector& b) noexcept {
    x -= b.x;
    y -= b.y;
  }
  void operator*=(real k) noexcept {
    x = tessarn::detail::product(x, k);
    y = tessarn::detail::product(y, k);
  }
  void operator/=(real k) noexcept { *this *= 1 / k; }

  /// True when both coordinates are equal; a NaN coordinate counts as equal.
  bool operator==(vector& b) noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(x, b.x) && equal_or_unordered(y, b.y);
  }

  /// The length sqrt(x^2 + y^2), without scaling against overflow.
  real lenld() noexcept { return std::sqrt(squared_length()); }
  /// The length rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return rndu(lenld()); }
  /// The rounded coordinates: half up from 0 on, down to the floor for every negative value.
  int rx() noexcept { return rndi(x); }
  int ry() noexcept { return rndi(y); }
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  static unsigned int rndu(real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0 (-0.2 gives -1); what does not fit gives -2147483648.
  static int rndi(real v) noexcept { return tessarn::detail::round_signed(v); }

  /// The unsigned angle to the +x axis, acos(x / length), in [0, pi]; NaN for the zero vector.
  real arc() noexcept { return std::acos(x / lenld()); }
  /// The unsigned angle between the two vectors, in [0, pi]; 0 where the arc cosine is NaN, that is for
  /// a zero vector and for a cosine that rounding pushes outside [-1, 1], antiparallel ones included.
  real arc(vector& b) noexcept {
    using tessarn::detail::product;
    const real c = (product(x, b.x) + product(y, b.y)) / std::sqrt(squared_length() * b.squared_length());
    const real a = std::acos(c);
    return a != a ? 0 : a;
  }
  /// The direction angle in (-pi, pi], by the arc sine; 0 for the zero vector.
  inline real dirarc() noexcept;
  /// The signed angle from this direction to that of b, in (-pi, pi]; positive counter-clockwise.
  real dirarc(vector& b) noexcept {
    const real d = b.dirarc() - dirarc();
    if (d <= -tessarn::pi) return d + tessarn::two_pi;
    if (d > tessarn::pi) return d - tessarn::two_pi;
    return d;
  }
  /// Exchanges x and y.
  void flip() noexcept {
    const real t = x;
    x = y;
    y = t;
  }

  /// \name The same for constants and temporaries
  /// @{
  vector& operator=(const vector& b) noexcept {
    x = b.x;
    y = b.y;
    return *this;
  }
  vector operator=(const vectormat& m) noexcept { return *this = tessarn::detail::mutable_ref(m); }
  vector operator+(const vector& b) const noexcept { return {x + b.x, y + b.y}; }
  vector operator-(const vector& b) const noexcept { return {x - b.x, y - b.y}; }
  vector operator*(real k) const noexcept { return self() * k; }
  vector operator/(real k) const noexcept { return self() / k; }
  vector resize(real len) const noexcept { return self().resize(len); }
  void operator+=(const vector& b) noexcept { *this += other(b); }
  void operator-=(const vector& b) noexcept { *this -= other(b); }
  bool operator==(const vector& b) const noexcept { return self() == other(b); }
  real lenld() const noexcept { return self().lenld(); }
  tessarn::ulong lenul() const noexcept { return self().lenul(); }
  int rx() const noexcept { return rndi(x); }
  int ry() const noexcept { return rndi(y); }
  real arc() const noexcept { return self().arc(); }
  real arc(const vector& b) const noexcept { return self().arc(other(b)); }
  real dirarc() const noexcept { return self().dirarc(); }
  real dirarc(const vector& b) const noexcept { return self().dirarc(other(b)); }
  /// @}

 private:
  vector& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static vector& other(const vector& b) noexcept { return tessarn::detail::mutable_ref(b); }
  real squared_length() const noexcept {
    using tessarn::detail::product;
    return product(x, x) + product(y, y);
  }
};

inline tessarn::real vector::dirarc() noexcept {
  using namespace tessarn;
  if (y == 0) return x >= 0 ? 0 : pi;
  if (x == 0) return y >= 0 ? half_pi : -half_pi;
  real s = y / lenld();
  if (s > 1) s = 1;
  if (s < -1) s = -1;
  const real a = std::asin(s);
  if (x > 0) return a;
  return y > 0 ? pi - a : -pi - a;
}

/// A space vector (x, y, z), used as a point and as a direction. Nothing is owned. Results have the same
/// bits everywhere, up to the C library's sin, cos and acos. Divisions multiply by the reciprocal.
class TESSARN_API vector3d {
  using real = tessarn::real;

 public:
  real x;  ///< first coordinate
  real y;  ///< second coordinate
  real z;  ///< third coordinate

  /// (0, 0, 0).
  vector3d() noexcept : x(0), y(0), z(0) {}
  vector3d(real first, real second, real third) noexcept : x(first), y(second), z(third) {}
  vector3d(const vector3d&) = default;
  /// The Cartesian form of a polar vector: (cos alpha t, sin alpha t, sin beta len), t = cos beta len.
  /// Explicit, so that `vector3d v = p` has one way to go: the conversion of polarvector3d.
  inline explicit vector3d(polarvector3d& p) noexcept;
  /// The same of *p, which must not be null.
  inline explicit vector3d(polarvector3d* p) noexcept;
  virtual ~vector3d() = default;

  vector3d& operator=(vector3d& b) noexcept {
    x = b.x;
    y = b.y;
    z = b.z;
    return *this;
  }

  vector3d operator+(vector3d& b) noexcept { return {x + b.x, y + b.y, z + b.z}; }
  vector3d operator-(vector3d& b) noexcept { return {x - b.x, y - b.y, z - b.z}; }
  /// The dot product, (y b.y + x b.x) + z b.z.
  real operator*(vector3d& b) noexcept {
    using tessarn::detail::product;
    return (product(y, b.y) + product(x, b.x)) + product(z, b.z);
  }
  /// Each coordinate times k; exactly (0, 0, 0) for k = 0, also for infinite and NaN coordinates.
  vector3d operator*(real k) noexcept { return k == 0 ? vector3d() : scaled(k); }
  /// Each coordinate times 1/k; k = 0 gives infinities and NaN.
  vector3d operator/(real k) noexcept { return scaled(1 / k); }
  /// The cross product, this x b.
  vector3d cross(vector3d& b) noexcept {
    using tessarn::detail::product;
    return {product(y, b.z) - product(z, b.y), product(z, b.x) - product(x, b.z),
            product(x, b.y) - product(y, b.x)};
  }
  /// The vector scaled to the length len, (x len) (1/L) and so on; NaN for the zero vector.
  vector3d resize(real len) noexcept {
    using tessarn::detail::product;
    const real r = 1 / lenld();
    return {product(product(x, len), r), product(product(y, len), r), product(product(z, len), r)};
  }
  /// The projection of v onto the line of this vector; NaN when this is the zero vector.
  vector3d projection(vector3d& v) noexcept {
    const real q = 1 / lenld();
    return *this * (((*this * v) * q) * q);
  }
  /// The azimuth decreased by a1 (clockwise seen from +z), then the elevation increased by a2, radians.
  /// NaN in x and y for a vector on the z axis.
  inline vector3d rotate(real a1, real a2) noexcept;
  /// This vector turned about the line along axis by the angle in radians, clockwise seen from the tip
  /// of the axis: a positive angle about +z takes +x towards -y. NaN for a zero axis.
  inline vector3d rotate(vector3d& axis, real angle) noexcept;

  void operator+=(vector3d& b) noexcept {
    x += b.x;
    y += b.y;
    z += b.z;
  }
  void operator-=(vector3d& b) noexcept {
    x -= b.x;
    y -= b.y;
    z -= b.z;
  }
  /// Each coordinate times k; unlike `*`, k = 0 is not special.
  void operator*=(real k) noexcept { *this = scaled(k); }
  void operator/=(real k) noexcept { *this *= 1 / k; }
  /// Replaces this vector by the cross product this x b.
  void operator*=(vector3d& b) noexcept { *this = cross(b); }

  /// True when all coordinates are equal; a NaN coordinate counts as equal.
  bool operator==(vector3d& b) noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(x, b.x) && equal_or_unordered(y, b.y) && equal_or_unordered(z, b.z);
  }

  /// The length sqrt(x^2 + y^2 + z^2), without scaling against overflow.
  real lenld() noexcept { return std::sqrt(squared_length()); }
  /// The length rounded half up; 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return rndu(lenld()); }
  /// The rounded coordinates: half up from 0 on, down to the floor for every negative value.
  int rx() noexcept { return rndi(x); }
  int ry() noexcept { return rndi(y); }
  int rz() noexcept { return rndi(z); }
  /// The unsigned angle between the two vectors, in [0, pi]; 0 where the arc cosine is NaN, that is for
  /// a zero vector and for a cosine that rounding pushes outside [-1, 1].
  real arc(vector3d& b) noexcept {
    const real a = std::acos((*this * b) / std::sqrt(squared_length() * b.squared_length()));
    return a != a ? 0 : a;
  }

  /// \name The same for constants and temporaries
  /// @{
  inline explicit vector3d(const polarvector3d& p) noexcept;
  inline explicit vector3d(const polarvector3d* p) noexcept;
  vector3d& operator=(const vector3d& b) noexcept { return *this = other(b); }
  vector3d operator+(const vector3d& b) const noexcept { return self() + other(b); }
  vector3d operator-(const vector3d& b) const noexcept { return self() - other(b); }
  real operator*(const vector3d& b) const noexcept { return self() * other(b); }
  vector3d operator*(real k) const noexcept { return self() * k; }
  vector3d operator/(real k) const noexcept { return scaled(1 / k); }
  vector3d cross(const vector3d& b) const noexcept { return self().cross(other(b)); }
  vector3d resize(real len) const noexcept { return self().resize(len); }
  vector3d projection(const vector3d& v) const noexcept { return self().projection(other(v)); }
  vector3d rotate(real a1, real a2) const noexcept { return self().rotate(a1, a2); }
  vector3d rotate(const vector3d& axis, real angle) const noexcept { return self().rotate(other(axis), angle); }
  void operator+=(const vector3d& b) noexcept { *this += other(b); }
  void operator-=(const vector3d& b) noexcept { *this -= other(b); }
  void operator*=(const vector3d& b) noexcept { *this *= other(b); }
  bool operator==(const vector3d& b) const noexcept { return self() == other(b); }
  real lenld() const noexcept { return self().lenld(); }
  tessarn::ulong lenul() const noexcept { return self().lenul(); }
  int rx() const noexcept { return self().rx(); }
  int ry() const noexcept { return self().ry(); }
  int rz() const noexcept { return self().rz(); }
  real arc(const vector3d& b) const noexcept { return self().arc(other(b)); }
  /// @}

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  vector3d& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static vector3d& other(const vector3d& b) noexcept { return tessarn::detail::mutable_ref(b); }
  vector3d scaled(real k) const noexcept {
    using tessarn::detail::product;
    return {product(x, k), product(y, k), product(z, k)};
  }
  real squared_length() const noexcept {
    using tessarn::detail::product;
    return (product(x, x) + product(y, y)) + product(z, z);
  }
};

inline vector3d vector3d::rotate(real a1, real a2) noexcept {
  using tessarn::detail::product;
  const real turned_x = product(x, std::cos(a1)) + product(y, std::sin(a1));
  const real turned_y = product(y, std::cos(a1)) - product(x, std::sin(a1));
  const real rho = std::sqrt(product(turned_x, turned_x) + product(turned_y, turned_y));
  const real f = (product(rho, std::cos(a2)) - product(z, std::sin(a2))) / rho;
  return {product(turned_x, f), product(turned_y, f), product(z, std::cos(a2)) + product(rho, std::sin(a2))};
}

inline vector3d vector3d::rotate(vector3d& axis, real angle) noexcept {
  const real q = 1 / axis.lenld();
  const vector3d along = axis * (((*this * axis) * q) * q);
  const vector3d across = *this - along;
  const vector3d tangent = across.cross(axis) * (std::sin(angle) * q);
  return across * std::cos(angle) + along + tangent;
}

/// A space vector in spherical form. The angles are radians and are never normalised. Scaling and
/// turning act on the fields; sums and products go through the Cartesian form. Nothing is owned.
/// Results have the same bits everywhere, up to the C library's sin, cos, asin and acos.
class TESSARN_API polarvector3d {
  using real = tessarn::real;

 public:
  real alpha;  ///< angle in the xy plane from +x towards +y; [0, 2 pi) when computed
  real beta;   ///< elevation above the xy plane; [-pi/2, pi/2] when computed
  real len;    ///< length

  /// All fields 0.
  polarvector3d() noexcept : alpha(0), beta(0), len(0) {}
  polarvector3d(real azimuth, real elevation, real length) noexcept
      : alpha(azimuth), beta(elevation), len(length) {}
  polarvector3d(const polarvector3d&) = default;
  /// The polar form of v, careful about the axes: angles 0 for the zero vector, alpha 0 on the z axis
  /// and exact for y = 0, the cosine of alpha clamped to [-1, 1].
  inline polarvector3d(vector3d& v) noexcept;
  /// The polar form of *v, which must not be null, computed plainly: a cosine that rounding pushes
  /// past 1 gives a NaN alpha.
  inline explicit polarvector3d(vector3d* v) noexcept;
  virtual ~polarvector3d() = default;

  /// The Cartesian form (cos alpha t, sin alpha t, sin beta len) with t = cos beta len.
  operator vector3d() noexcept { return vector3d(*this); }

  /// Copies o; returns a copy by value.
  polarvector3d operator=(polarvector3d& o) noexcept {
    alpha = o.alpha;
    beta = o.beta;
    len = o.len;
    return *this;
  }
  /// Changes nothing and returns a copy of this object: assigning a Cartesian vector has no effect.
  /// Write `p = polarvector3d(v)` to convert.
  polarvector3d operator=(vector3d&) noexcept { return *this; }
  polarvector3d operator=(vector3d*) noexcept { return *this; }

  real lenld() noexcept { return len; }
  /// The length rounded half up.
  tessarn::ulong lenul() noexcept { return rndu(len); }
  /// The rounded fields: half up from 0 on, down to the floor for every negative value.
  int ralpha() noexcept { return rndi(alpha); }
  int rbeta() noexcept { return rndi(beta); }
  int rlen() noexcept { return rndi(len); }
  /// The same direction with the length l.
  polarvector3d resize(real l) noexcept { return {alpha, beta, l}; }
  /// Both angles increased, not wrapped.
  polarvector3d rotate(real a, real b) noexcept { return {alpha + a, beta + b, len}; }
  polarvector3d operator*(real k) noexcept { return {alpha, beta, tessarn::detail::product(len, k)}; }
  /// The length divided by k, a true division.
  polarvector3d operator/(real k) noexcept { return {alpha, beta, len / k}; }
  void operator*=(real k) noexcept { len = tessarn::detail::product(len, k); }
  void operator/=(real k) noexcept { len = len / k; }
  /// These three change nothing.
  void operator+=(polarvector3d&) noexcept {}
  void operator-=(polarvector3d&) noexcept {}
  void operator*=(polarvector3d&) noexcept {}
  /// The Cartesian sum and difference, converted back with care.
  polarvector3d operator+(polarvector3d& o) noexcept { return vector3d(*this) + vector3d(o); }
  polarvector3d operator-(polarvector3d& o) noexcept { return vector3d(*this) - vector3d(o); }
  /// The dot product of the Cartesian forms.
  real operator*(polarvector3d& o) noexcept { return vector3d(*this) * vector3d(o); }
  /// The cross product this x o of the Cartesian forms, converted back with care.
  polarvector3d cross(polarvector3d& o) noexcept { return vector3d(*this).cross(vector3d(o)); }
  /// The angle between the directions in [0, pi]; 0 where the arc cosine is NaN. Lengths play no part.
  inline real arc(polarvector3d& o) noexcept;
  /// True when all fields are equal; a NaN field counts as equal.
  bool operator==(polarvector3d& o) noexcept {
    using tessarn::detail::equal_or_unordered;
    return equal_or_unordered(alpha, o.alpha) && equal_or_unordered(beta, o.beta) &&
           equal_or_unordered(len, o.len);
  }

  /// \name The same for constants and temporaries
  /// @{
  polarvector3d(const vector3d& v) noexcept : polarvector3d(const_cast<vector3d&>(v)) {}
  explicit polarvector3d(const vector3d* v) noexcept : polarvector3d(const_cast<vector3d*>(v)) {}
  operator vector3d() const noexcept { return vector3d(*this); }
  polarvector3d& operator=(const polarvector3d& o) noexcept {
    alpha = o.alpha;
    beta = o.beta;
    len = o.len;
    return *this;
  }
  polarvector3d operator=(const vector3d&) noexcept { return *this; }
  polarvector3d operator=(const vector3d*) noexcept { return *this; }
  real lenld() const noexcept { return len; }
  tessarn::ulong lenul() const noexcept { return self().lenul(); }
  int ralpha() const noexcept { return self().ralpha(); }
  int rbeta() const noexcept { return self().rbeta(); }
  int rlen() const noexcept { return self().rlen(); }
  polarvector3d resize(real l) const noexcept { return {alpha, beta, l}; }
  polarvector3d rotate(real a, real b) const noexcept { return self().rotate(a, b); }
  polarvector3d operator*(real k) const noexcept { return self() * k; }
  polarvector3d operator/(real k) const noexcept { return self() / k; }
  void operator+=(const polarvector3d&) noexcept {}
  void operator-=(const polarvector3d&) noexcept {}
  void operator*=(const polarvector3d&) noexcept {}
  polarvector3d operator+(const polarvector3d& o) const noexcept { return self() + other(o); }
  polarvector3d operator-(const polarvector3d& o) const noexcept { return self() - other(o); }
  real operator*(const polarvector3d& o) const noexcept { return self() * other(o); }
  polarvector3d cross(const polarvector3d& o) const noexcept { return self().cross(other(o)); }
  real arc(const polarvector3d& o) const noexcept { return self().arc(other(o)); }
  bool operator==(const polarvector3d& o) const noexcept { return self() == other(o); }
  /// @}

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  polarvector3d& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static polarvector3d& other(const polarvector3d& o) noexcept { return tessarn::detail::mutable_ref(o); }
};

inline vector3d::vector3d(const polarvector3d& p) noexcept {
  using tessarn::detail::product;
  const real t = std::cos(p.beta) * p.len;
  x = product(std::cos(p.alpha), t);
  y = product(std::sin(p.alpha), t);
  z = product(std::sin(p.beta), p.len);
}
inline vector3d::vector3d(const polarvector3d* p) noexcept : vector3d(*p) {}
inline vector3d::vector3d(polarvector3d& p) noexcept : vector3d(static_cast<const polarvector3d&>(p)) {}
inline vector3d::vector3d(polarvector3d* p) noexcept : vector3d(static_cast<const polarvector3d&>(*p)) {}

inline polarvector3d::polarvector3d(vector3d& v) noexcept : alpha(0), beta(0), len(v.lenld()) {
  using namespace tessarn;
  if (len == 0) return;
  const real q = 1 / len;
  beta = std::asin(v.z * q);
  if (v.y == 0) {
    alpha = v.x < 0 ? pi : 0;
  } else if (!(beta >= half_pi || beta <= -half_pi)) {
    real c = (v.x / std::cos(beta)) * q;
    if (c > 1) c = 1;
    if (c < -1) c = -1;
    const real a = std::acos(c);
    alpha = v.y >= 0 ? a : two_pi - a;
  }
}

inline polarvector3d::polarvector3d(vector3d* v) noexcept : alpha(0), beta(0), len(v->lenld()) {
  using namespace tessarn;
  if (len == 0) return;
  beta = std::asin(v->z / len);
  if (beta == half_pi || beta == -half_pi) return;
  const real a = std::acos(v->x / (std::cos(beta) * len));
  alpha = v->y < 0 ? two_pi - a : a;
}

inline tessarn::real polarvector3d::arc(polarvector3d& o) noexcept {
  using tessarn::detail::product;
  const real c = product(std::sin(beta), std::sin(o.beta)) +
                 product(std::cos(beta) * std::cos(o.beta), std::cos(alpha - o.alpha));
  const real a = std::acos(c);
  return a != a ? 0 : a;
}

/// A growable list of plane points with averaging, sorting and the removal of outliers.
///
/// A point whose x is exactly -1.0 is marked as deleted: DeleteErrors removes it, fits leave it out.
/// Copies are deep; a move empties its source. In sort, DeleteErrors and findline comparisons with NaN
/// are ordinary comparisons, so a NaN x is not the marker. Indices are 0 to count - 1 and not checked.
/// An operation that cannot allocate throws std::bad_alloc and leaves the list as it was.
class TESSARN_API vectormat {
  using real = tessarn::real;
  using ulong = tessarn::ulong;

 public:
  vector* points;  ///< the storage, an array of `capacity` points; null when nothing was ever added
  ulong count;     ///< the number of points in use
  ulong capacity;  ///< the number of points allocated

  /// An empty list.
  vectormat() noexcept : points(nullptr), count(0), capacity(0) {}
  /// A deep copy with the same capacity.
  vectormat(const vectormat& o);
  /// A deep copy with the same capacity; `a = a` changes nothing.
  vectormat& operator=(const vectormat& o);
  virtual ~vectormat();
  /// Releases the storage; the list stays usable.
  virtual void empty();

  /// Appends a copy of v, which may be a point of this list. A full list grows by 1024 points.
  void add(vector& v);
  void operator+=(vector& v);
  /// Removes point i; the later points move down and the vacated slot becomes (0, 0). An index at or
  /// beyond the last point removes the last one; an empty list stays as it is. O(count - i).
  void del(ulong i);
  void operator-=(ulong i);
  /// Multiplies the y of every point by k; x is left as it is.
  void operator*=(real k);
  /// Exchanges x and y of every point.
  void flip();
  /// Sorts ascending by x, ties by y, with the result of a bubble sort for every input, also with NaN.
  /// O(count log count) where no coordinate is NaN, else quadratic.
  void sort();
  /// The mean point; NaN for an empty list. Each coordinate is summed in two partial sums, even and odd
  /// indices of the first 4 floor(count/4) points, which are added before the rest follows in order.
  vector average();
  /// The direction (1, s) of the straight line fitted through the unmarked points, not normalised;
  /// (0, 1) when s is NaN. The points of a vertical line leave what the solver leaves.
  vector avdir();
  /// Marks every point whose y differs from the mean of its neighbourhood (up to 5 points on either
  /// side, itself included) by more than sqrt(limit), unless limit is 0; then removes all marked
  /// points and shrinks the storage to the exact number. A negative limit removes every point.
  void DeleteErrors(real limit);
  /// Extracts the chain of points that follows the direction dir, starting at point 0, into a new list
  /// that the caller owns (delete it), and removes them from this one. A point joins when its direction
  /// from the last point of the chain is within 0.2 radians of dir; from 10 points on dir is the
  /// chain's avdir() and the tolerance 0.05. Point 1 is never examined. Null for fewer than two points.
  vectormat* findline(vector dir);

  /// \name The same for constants and temporaries
  /// @{
  vectormat(vectormat&& o) noexcept : points(o.points), count(o.count), capacity(o.capacity) { o.forget(); }
  vectormat& operator=(vectormat&& o) noexcept;
  void add(const vector& v) { add(tessarn::detail::mutable_ref(v)); }
  void operator+=(const vector& v) { add(tessarn::detail::mutable_ref(v)); }
  vector average() const { return tessarn::detail::mutable_ref(*this).average(); }
  vector avdir() const { return tessarn::detail::mutable_ref(*this).avdir(); }
  /// @}

 private:
  void forget() noexcept {
    points = nullptr;
    count = capacity = 0;
  }
};

/// n = 0 gives one zeroed object, to be released by `delete`; n > 0 an array of n zeroed objects, to be
/// released by `delete[]`. Throws std::bad_alloc when the size is impossible.
TESSARN_API vector* new_vector(tessarn::ulong n);
TESSARN_API vector3d* new_vector3d(tessarn::ulong n);
TESSARN_API polarvector3d* new_polarvector3d(tessarn::ulong n);

static_assert(sizeof(void*) != 8 || (sizeof(vector) == 24 && sizeof(vector3d) == 32 &&
                                     sizeof(polarvector3d) == 32 && sizeof(vectormat) == 24),
              "a vector is its virtual table pointer and its coordinates");
