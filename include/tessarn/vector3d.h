/// \file
/// Space vectors. The conventions of all vectors stand in tessarn/vectors.h.
#pragma once

#include <cmath>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"

class polarvector3d;

/// A space vector (x, y, z), used as a point and as a direction.
///
/// \code
/// vector3d a(1, 0, 0), b(0, 1, 0);
/// assert(a * b == 0);                          // the dot product
/// assert(a.cross(b) == vector3d(0, 0, 1));
/// assert(vector3d(0, 0, 5).projection(vector3d(1, 2, 3)).z > 2.99);
/// assert(vector3d(1, 1e300, 3) * 0.0 == vector3d());
/// \endcode
///
/// The axes form a right-handed frame. Rotations turn clockwise for whoever looks from the tip of the
/// axis towards the origin, against the usual convention:
///
/// \code
/// const vector3d up(0, 0, 2);                  // an axis of any length but 0
/// const vector3d turned = vector3d(1, 0, 0).rotate(up, tessarn::half_pi);
/// assert(turned.y == -1);                      // +x goes to -y
/// \endcode
///
/// Between two vectors `a * b` is the dot product, but `a *= b` makes a the cross product a x b. With
/// a scalar both scale.
///
/// Failure and aliasing: no member throws, allocates or reports an error; a numeric failure shows as
/// NaN, as an infinity or as the fallback that the member names. An operand may be the object itself.
/// Cost: a constant number of operations.
///
/// Memory: an object owns nothing. It takes 32 bytes: the pointer to its virtual table, x, y and z.
class TESSARN_API vector3d {
 public:
  alignas(8) tessarn::real x;  ///< first coordinate
  tessarn::real y;             ///< second coordinate
  tessarn::real z;             ///< third coordinate

  /// (0, 0, 0).
  vector3d() noexcept : x(0), y(0), z(0) {}
  /// (first, second, third), stored as they are.
  vector3d(tessarn::real first, tessarn::real second, tessarn::real third) noexcept : x(first), y(second), z(third) {}
  /// Copies the coordinates.
  vector3d(const vector3d&) = default;

  /// The Cartesian form of a polar vector: (cos alpha t, sin alpha t, sin beta len), t = cos beta
  /// len.
  /// Explicit, so that `vector3d v = p` has one way to go: the conversion of polarvector3d.
  /// Special results: NaN for infinite and NaN angles.
  inline explicit vector3d(polarvector3d& p) noexcept;
  /// The Cartesian form of *p, with the result of the constructor above. p must not be null.
  inline explicit vector3d(polarvector3d* p) noexcept;
  virtual ~vector3d() = default;

  /// Copies the coordinates.
  /// \return this object
  vector3d& operator=(vector3d& b) noexcept { return *this = std::as_const(b); }

  /// (x + b.x, y + b.y, z + b.z).
  vector3d operator+(vector3d& b) noexcept { return {x + b.x, y + b.y, z + b.z}; }
  /// (x - b.x, y - b.y, z - b.z).
  vector3d operator-(vector3d& b) noexcept { return {x - b.x, y - b.y, z - b.z}; }
  /// The dot product, (y b.y + x b.x) + z b.z, summed in this order.
  tessarn::real operator*(vector3d& b) noexcept { return std::as_const(*this) * std::as_const(b); }
  /// Each coordinate times k.
  /// Special results: exactly (0, 0, 0) for k = 0 or -0.0, also for infinite and NaN coordinates.
  /// `*=` has no such test.
  vector3d operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// Each coordinate times 1/k; k = 0 gives infinities and NaN.
  vector3d operator/(tessarn::real k) noexcept { return scaled(1 / k); }
  /// The cross product, this x b: (y b.z - z b.y, z b.x - x b.z, x b.y - y b.x).
  /// Exactly (0, 0, 0) for a finite vector and itself, unless a product overflows.
  vector3d cross(vector3d& b) noexcept { return std::as_const(*this).cross(std::as_const(b)); }
  /// The vector scaled to the length len: (x len) (1/L) with L = lenld(), y and z likewise. A
  /// negative len turns the vector round. This vector stays as it is.
  /// Special results: NaN for the zero vector; (0, 0, 0) where L overflows.
  vector3d resize(tessarn::real len) noexcept { return std::as_const(*this).resize(len); }

  /// The projection of v onto the line of this vector: this vector times k = ((this . v) q) q with q
  /// = 1 / lenld(). It is v that is projected, and this vector that gives the line.
  /// Special results: exactly (0, 0, 0) where k is 0, as for perpendicular vectors; NaN when this is
  /// the zero vector.
  vector3d projection(vector3d& v) noexcept { return std::as_const(*this).projection(std::as_const(v)); }

  /// The azimuth decreased by a1 (clockwise seen from +z), then the elevation increased by a2, both
  /// in radians. The length stays, up to rounding, and this vector as well. With r the distance from
  /// the z axis after the first step, r becomes r cos a2 - z sin a2, and z becomes z cos a2 + r sin
  /// a2; past the pole the vector comes down on the other side.
  ///
  ///     vector3d(1, 0, 0).rotate(0, half_pi)     // (0, 0, 1), up to rounding
  ///
  /// Special results: NaN in x and y for a vector on the z axis, which has no azimuth.
  vector3d rotate(tessarn::real a1, tessarn::real a2) noexcept { return std::as_const(*this).rotate(a1, a2); }

  /// This vector turned about the line through the origin along axis, by the angle in radians,
  /// clockwise seen from the tip of the axis: a positive angle about +z takes +x towards -y. The axis
  /// may have any length but 0. This vector stays as it is.
  /// With c the part along the axis and u the rest, the result is u cos angle + c + (u x axis)
  /// (sin angle / |axis|).
  /// Special results: NaN for a zero axis and for an infinite angle.
  vector3d rotate(vector3d& axis, tessarn::real angle) noexcept {
    return std::as_const(*this).rotate(std::as_const(axis), angle);
  }

  /// Adds b, coordinate by coordinate.
  void operator+=(vector3d& b) noexcept { *this += std::as_const(b); }
  /// Subtracts b, coordinate by coordinate.
  void operator-=(vector3d& b) noexcept { *this -= std::as_const(b); }
  /// Each coordinate times k. Unlike in `*`, k = 0 is not special: infinite coordinates become NaN.
  void operator*=(tessarn::real k) noexcept { *this = scaled(k); }
  /// Each coordinate times 1/k, as by `/`.
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }
  /// Replaces this vector by the cross product this x b, not by the dot product.
  void operator*=(vector3d& b) noexcept { *this = std::as_const(*this).cross(std::as_const(b)); }

  /// True when all coordinates are equal, without a tolerance. -0.0 equals 0.0; a NaN coordinate
  /// counts as equal to anything. C++20 forms `!=` as the negation; C++17 has none.
  bool operator==(vector3d& b) noexcept { return std::as_const(*this) == std::as_const(b); }

  /// The length sqrt(x^2 + y^2 + z^2), without scaling against overflow.
  /// Special results: NaN when a coordinate is NaN, also when another one is infinite.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The length rounded to an integer, half up.
  /// Special results: 2^31 when the rounded length is 2^31 or more, infinite or NaN.
  tessarn::ulong lenul() noexcept { return rndu(lenld()); }
  /// x rounded half up from 0 on, and down to the floor for every negative value: -0.2 gives -1.
  /// Special results: -2147483648 for NaN and for what does not fit 32 bits.
  int rx() noexcept { return std::as_const(*this).rx(); }
  /// y rounded in this way.
  int ry() noexcept { return std::as_const(*this).ry(); }
  /// z rounded in this way.
  int rz() noexcept { return std::as_const(*this).rz(); }

  /// The unsigned angle between the two vectors, in [0, pi]: acos of (this . b) / sqrt(L^2 M^2),
  /// where L and M are the two lengths.
  /// Special results: 0 where the arc cosine is NaN, that is for a zero vector, for a NaN, and for a
  /// cosine that rounding pushes outside [-1, 1]. The last case includes antiparallel vectors, whose
  /// angle is pi. pi/2 where L M is above about 1e154 (0 where the dot product overflows, too), 0
  /// where it is below about 1e-162.
  /// Accuracy: angles below about 1.5e-8 come out as 0.
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

  /// Compares with the Cartesian form of p, without a tolerance for the rounding of the conversion.
  inline bool operator==(const polarvector3d& p) const noexcept;
  /// All coordinates with the other sign.
  vector3d operator-() const noexcept { return {-x, -y, -z}; }

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

 private:
  // Multiplies without the test for k = 0 that `*` has.
  vector3d scaled(tessarn::real k) const noexcept {
    using tessarn::detail::product;
    return {product(x, k), product(y, k), product(z, k)};
  }
  // Rounds each square before the sum, in every caller's build.
  tessarn::real squared_length() const noexcept {
    using tessarn::detail::product;
    return (product(x, x) + product(y, y)) + product(z, z);
  }
};

/// k times a vector is the vector times k: exactly (0, 0, 0) for k = 0. k may be of any integer or
/// floating-point type. The operator is a template so that a program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, vector3d>>
vector3d operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// Zeroed vectors for the caller to own. n = 0 gives one object, which `delete` releases; n > 0 gives
/// an array of n objects, which `delete[]` releases. The two must not be mixed up.
/// \param n the number of objects; 0 does not mean an empty array
///
/// Throws: std::bad_alloc when there is no memory, and std::bad_array_new_length when the size is
/// impossible.
/// Memory: the caller may release it on the other side of the Windows module's boundary.
/// Cost: O(n).
[[nodiscard]] TESSARN_API vector3d* new_vector3d(tessarn::ulong n);
/// For counts of 64 bits. Throws std::bad_array_new_length when n does not fit 32 bits, instead of
/// cutting it; a negative n does not fit.
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] vector3d* new_vector3d(N n) {
  return new_vector3d(tessarn::detail::count(n));
}

namespace tessarn {
using ::new_vector3d;
using ::vector3d;
}  // namespace tessarn

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(vector3d) == 32, "a vector is its virtual table pointer and its coordinates");

// The members that take polar vectors are defined there.
#include "tessarn/polarvector3d.h"
