/// \file
/// Plane vectors.
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

/// k times a vector is the vector times k. A program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, ::vector>>
::vector operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// n = 0 gives one zeroed object, to be released by `delete`; n > 0 an array of n zeroed objects, to be
/// released by `delete[]`. Throws std::bad_alloc when the size is impossible.
[[nodiscard]] TESSARN_API ::vector* new_vector(tessarn::ulong n);
/// Throws std::bad_array_new_length when n does not fit 32 bits, instead of cutting it.
template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
[[nodiscard]] ::vector* new_vector(N n) {
  return new_vector(tessarn::detail::count(n));
}

namespace tessarn {
using ::new_vector;
using ::vector;
}  // namespace tessarn

// The kernels step through arrays by whole doubles; the first member is aligned for 32-bit x86, where a double is not.
static_assert(sizeof(::vector) == 24, "a vector is its virtual table pointer and its coordinates");
