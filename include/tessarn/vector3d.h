/// \file
/// Space vectors.
#pragma once

#include <cmath>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"

class polarvector3d;

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

/// k times a vector is the vector times k. A program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, vector3d>>
vector3d operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// n = 0 gives one zeroed object, to be released by `delete`; n > 0 an array of n zeroed objects, to be
/// released by `delete[]`. Throws std::bad_alloc when the size is impossible.
[[nodiscard]] TESSARN_API vector3d* new_vector3d(tessarn::ulong n);
/// Throws std::bad_array_new_length when n does not fit 32 bits, instead of cutting it.
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
