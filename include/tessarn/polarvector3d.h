/// \file
/// Space vectors in spherical form.
#pragma once

#include <initializer_list>
#include <utility>

#include "tessarn/angles.h"
#include "tessarn/detail/overloads.h"
#include "tessarn/detail/product.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/scalar.h"
#include "tessarn/vector3d.h"

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
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, polarvector3d>>
polarvector3d operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// n = 0 gives one zeroed object, to be released by `delete`; n > 0 an array of n zeroed objects, to be
/// released by `delete[]`. Throws std::bad_alloc when the size is impossible.
[[nodiscard]] TESSARN_API polarvector3d* new_polarvector3d(tessarn::ulong n);
/// Throws std::bad_array_new_length when n does not fit 32 bits, instead of cutting it.
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
