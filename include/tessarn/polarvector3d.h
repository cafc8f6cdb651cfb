/// \file
/// Space vectors in spherical form. The conventions of all vectors stand in tessarn/vectors.h.
#pragma once

#include <initializer_list>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"
#include "tessarn/vector3d.h"

/// A space vector in spherical form: an azimuth, an elevation above the xy plane
/// (not an angle from the pole), and a length.
///
/// \code
/// polarvector3d p(0.5, 0.25, 2);           // azimuth, elevation, length
/// assert((p * 3).len == 6);
/// assert(p.rotate(1, 0).alpha == 1.5);
/// assert(polarvector3d(vector3d(0, -1, 0)).alpha == tessarn::pi + tessarn::half_pi);
/// p = vector3d(1, 2, 3);                   // changes nothing, see operator=
/// assert(p.len == 2);
/// \endcode
///
/// The Cartesian form is x = cos alpha (cos beta len), y = sin alpha (cos beta len), z = sin beta
/// len. Angles are radians and never normalised, and the length may be negative: the members compute
/// with the fields as they stand. Scaling and turning act on the fields; sums and products go through
/// the Cartesian form and round more.
///
/// \code
/// polarvector3d q(0, 0, 1);
/// q += polarvector3d(0, 0, 1);             // changes nothing, as -= and *= with a polar vector
/// assert(q.len == 1);
/// q = q + polarvector3d(0, 0, 1);          // the sum
/// assert(q.len == 2);
/// \endcode
///
/// Failure and aliasing: no member throws, allocates or reports an error; a numeric failure shows as
/// NaN, as an infinity or as the fallback that the member names. An operand may be the object itself.
/// Cost: a constant number of operations; those that go through the Cartesian form evaluate up to
/// seven angles.
///
/// Memory: an object owns nothing. It takes 32 bytes: the pointer to its virtual table, alpha, beta
/// and len.
class TESSARN_API polarvector3d {
 public:
  alignas(8) tessarn::real alpha;  ///< angle in the xy plane from +x towards +y; [0, 2 pi) when computed
  tessarn::real beta;              ///< elevation above the xy plane; [-pi/2, pi/2] when computed
  tessarn::real len;               ///< length

  /// All fields 0.
  polarvector3d() noexcept : alpha(0), beta(0), len(0) {}
  /// Stores the three as they are; angles in radians.
  polarvector3d(tessarn::real azimuth, tessarn::real elevation, tessarn::real length) noexcept
      : alpha(azimuth), beta(elevation), len(length) {}
  /// Copies the three fields.
  polarvector3d(const polarvector3d&) = default;

  /// The polar form of v, careful about the axes. len is v.lenld() and beta is asin(z (1/len)). alpha
  /// is 0 or pi for y = 0, 0 where beta is pi/2 or -pi/2, and else acos of (x / cos beta) (1/len),
  /// clamped to [-1, 1], and taken from 2 pi for y < 0.
  /// Special results: all fields 0 for the zero vector, and for one whose squared length vanishes.
  /// NaN in len and beta for a NaN coordinate. For y < 0 next to the +x axis alpha can round to 2 pi
  /// itself.
  /// Accuracy: elevations next to the poles lose digits. On the z axis, where z (1/len) can round to
  /// a number below 1, beta is then about 1.5e-8 short of pi/2, as for (0, 0, 49).
  polarvector3d(vector3d& v) noexcept : polarvector3d(std::as_const(v)) {}

  /// The polar form of *v, computed plainly: beta is asin(z / len), and alpha acos of x /
  /// (cos beta len), without a clamp and without a case for y = 0. It can differ from the careful
  /// form in the last bits, and a cosine that rounding pushes past 1 gives a NaN alpha. v must not be
  /// null.
  explicit polarvector3d(vector3d* v) noexcept : polarvector3d(const_cast<const vector3d*>(v)) {}
  virtual ~polarvector3d() = default;

  /// The Cartesian form (cos alpha t, sin alpha t, sin beta len) with t = cos beta len.
  /// Special results: NaN for infinite and NaN angles.
  operator vector3d() noexcept { return vector3d(std::as_const(*this)); }

  /// Copies o.
  /// \return a copy by value
  polarvector3d operator=(polarvector3d& o) noexcept { return *this = std::as_const(o); }
  /// Changes nothing and returns a copy of this object: assigning a Cartesian vector has no effect.
  /// Write `p = polarvector3d(v)` to convert.
  polarvector3d operator=(vector3d&) noexcept { return *this; }
  /// Changes nothing either; the pointer is not read.
  polarvector3d operator=(vector3d*) noexcept { return *this; }

  /// The field len, also when it is negative.
  tessarn::real lenld() noexcept { return len; }
  /// The magnitude of len rounded half up: -2.5 gives 3.
  /// Special results: 2^31 when it does not fit or is NaN.
  tessarn::ulong lenul() noexcept { return rndu(len); }
  /// alpha, in whole radians, rounded half up from 0 on, and down to the floor for every negative
  /// value.
  /// Special results: -2147483648 for NaN and for what does not fit 32 bits.
  int ralpha() noexcept { return rndi(alpha); }
  /// beta rounded in this way.
  int rbeta() noexcept { return rndi(beta); }
  /// len rounded in this way: for a negative length it differs from lenul() in more than the sign.
  int rlen() noexcept { return rndi(len); }
  /// The direction of this vector with the length l, (alpha, beta, l). Exact: nothing is computed, so
  /// the zero vector keeps its angles.
  polarvector3d resize(tessarn::real l) noexcept { return {alpha, beta, l}; }
  /// Both angles increased, (alpha + a, beta + b, len), not wrapped: an elevation above pi/2 stays as
  /// it is. A positive a turns counter-clockwise seen from +z, against vector3d::rotate.
  polarvector3d rotate(tessarn::real a, tessarn::real b) noexcept { return {alpha + a, beta + b, len}; }
  /// The length times k; angles stay, also for a negative k.
  polarvector3d operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// The length divided by k, a true division; k = 0 gives an infinite or NaN length.
  polarvector3d operator/(tessarn::real k) noexcept { return {alpha, beta, len / k}; }
  /// The length times k.
  void operator*=(tessarn::real k) noexcept { len = tessarn::detail::product(len, k); }
  /// The length divided by k, a true division.
  void operator/=(tessarn::real k) noexcept { len = len / k; }
  /// Changes nothing; callers rely on it. Write `p = p + o` for the sum.
  void operator+=(polarvector3d&) noexcept {}
  /// Changes nothing. Write `p = p - o`.
  void operator-=(polarvector3d&) noexcept {}
  /// Changes nothing. Write `p = p.cross(o)` for the cross product.
  void operator*=(polarvector3d&) noexcept {}
  /// The sum of the Cartesian forms, converted back with care, so its angles are in their intervals.
  polarvector3d operator+(polarvector3d& o) noexcept { return std::as_const(*this) + std::as_const(o); }
  /// The difference of the Cartesian forms, converted back with care.
  polarvector3d operator-(polarvector3d& o) noexcept { return std::as_const(*this) - std::as_const(o); }
  /// The dot product of the Cartesian forms.
  tessarn::real operator*(polarvector3d& o) noexcept { return std::as_const(*this) * std::as_const(o); }
  /// The cross product this x o of the Cartesian forms, converted back with care.
  polarvector3d cross(polarvector3d& o) noexcept { return std::as_const(*this).cross(std::as_const(o)); }

  /// The angle between the directions in [0, pi]: acos of sin beta sin o.beta + cos beta cos o.beta
  /// cos(alpha - o.alpha). Lengths play no part, not even their signs.
  /// Special results: 0 where the arc cosine is NaN, for NaN and infinite angles and for a cosine
  /// that rounding pushes outside [-1, 1].
  tessarn::real arc(polarvector3d& o) noexcept { return std::as_const(*this).arc(std::as_const(o)); }
  /// True when all fields are equal, without a tolerance; a NaN field counts as equal to anything.
  /// Two forms of one vector, such as angles that differ by 2 pi, are not equal.
  bool operator==(polarvector3d& o) noexcept { return std::as_const(*this) == std::as_const(o); }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. Assigning a constant Cartesian
  /// vector changes nothing either.
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

  /// Compares with the polar form of v (the careful one), without a tolerance for the rounding of the
  /// conversion.
  bool operator==(const vector3d& v) const noexcept { return *this == polarvector3d(v); }
  /// `p = {}` makes all fields 0.
  polarvector3d& operator=(std::initializer_list<tessarn::detail::no_value>) noexcept {
    return *this = polarvector3d();
  }
  /// The opposite Cartesian vector, converted back with care: the length is not negative and the
  /// angles are in their intervals, unlike those of p * -1.
  polarvector3d operator-() const noexcept { return -vector3d(*this); }

 protected:
  /// The magnitude rounded half up; results from 2^31 on, and NaN, give 2^31.
  unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// Half up for v >= 0, down for v < 0; what does not fit gives -2147483648.
  int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }
};

// The members of vector3d that need the fields of a polar vector.
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

/// k times a vector is the vector times k. k may be of any integer or floating-point type. The
/// operator is a template so that a program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, polarvector3d>>
polarvector3d operator*(K k, const V& v) noexcept {
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
[[nodiscard]] TESSARN_API polarvector3d* new_polarvector3d(tessarn::ulong n);
/// For counts of 64 bits. Throws std::bad_array_new_length when n does not fit 32 bits, instead of
/// cutting it; a negative n does not fit.
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] polarvector3d* new_polarvector3d(N n) {
  return new_polarvector3d(tessarn::detail::count(n));
}

namespace tessarn {
using ::new_polarvector3d;
using ::polarvector3d;
}  // namespace tessarn

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(polarvector3d) == 32, "a polar vector is its virtual table pointer and its fields");
