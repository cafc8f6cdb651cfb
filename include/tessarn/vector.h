/// \file
/// Plane vectors. The conventions of all vectors stand in tessarn/vectors.h.
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

/// A plane vector (x, y), used as a point and as a direction. Angles run from +x towards +y, in
/// radians.
///
/// \code
/// vector a(3, 4), b(0, 2);
/// assert(a.lenld() == 5);
/// assert(a + 2 * b == vector(3, 8));
/// assert(b.dirarc() == tessarn::half_pi);  // 90 degrees from +x
/// \endcode
///
/// There are two kinds of angle: arc() is unsigned and in [0, pi], dirarc() is signed.
///
/// \code
/// const vector east(1, 0), south(0, -1);
/// assert(east.arc(south) == tessarn::half_pi);
/// assert(east.dirarc(south) == -tessarn::half_pi);
/// assert(vector(-0.2, 2.5).rx() == -1 && vector(-0.2, 2.5).ry() == 3);
/// \endcode
///
/// A class of this name stands in `std`, too: under `using namespace std` write `::vector` or
/// `tessarn::vector`.
///
/// In the point list and in curve fits an x of exactly -1.0 marks a deleted point.
///
/// Failure and aliasing: no member throws, allocates or reports an error; a numeric failure shows as
/// NaN, as an infinity or as the fallback that the member names. An operand may be the object itself,
/// unless the member says otherwise. Cost: a constant number of operations.
///
/// Memory: an object owns nothing. It takes 24 bytes: the pointer to its virtual table, x and y.
class TESSARN_API vector {
 public:
  alignas(8) tessarn::real x;  ///< first coordinate
  tessarn::real y;             ///< second coordinate

  /// (0, 0).
  vector() noexcept : x(0), y(0) {}
  /// (first, second), both stored as they are.
  vector(tessarn::real first, tessarn::real second) noexcept : x(first), y(second) {}
  /// Copies both coordinates.
  vector(const vector&) = default;
  virtual ~vector() = default;

  /// Copies b.
  /// \return a copy by value, so `(a = b).flip()` flips the copy and not a
  vector operator=(vector& b) noexcept { return *this = std::as_const(b); }

  /// The centroid of a list: the coordinate sums, in the order of the points, divided by the count.
  /// Points that are marked as deleted take part.
  /// Special results: NaN in both coordinates for an empty list.
  /// Aliasing: this vector holds the running sums. As a point of the list it would take part with the
  /// sums before it.
  /// Cost: O(count). vectormat::average() has another order of summation and may differ in the last
  /// bits.
  /// \return a copy
  vector operator=(vectormat& m) noexcept;

  /// (x + b.x, y + b.y).
  vector operator+(vector& b) noexcept { return {x + b.x, y + b.y}; }
  /// (x - b.x, y - b.y).
  vector operator-(vector& b) noexcept { return {x - b.x, y - b.y}; }
  /// (x k, y k). No test for k = 0: an infinite coordinate times 0 is NaN, unlike that of a vector3d.
  vector operator*(tessarn::real k) noexcept { return std::as_const(*this) * k; }
  /// Both coordinates times 1/k; k = 0 gives infinities and NaN.
  vector operator/(tessarn::real k) noexcept { return std::as_const(*this) / k; }

  /// The vector scaled to the length len, (x len) (1/L) with L = lenld(), multiplied in this order. A
  /// negative len turns the vector round. This vector stays as it is.
  /// Special results: NaN for the zero vector; (0, 0) where L overflows; infinities and NaN where L
  /// vanishes.
  vector resize(tessarn::real len) noexcept { return std::as_const(*this).resize(len); }

  /// Adds b, coordinate by coordinate.
  void operator+=(vector& b) noexcept { *this += std::as_const(b); }
  /// Subtracts b, coordinate by coordinate.
  void operator-=(vector& b) noexcept { *this -= std::as_const(b); }
  /// Both coordinates times k.
  void operator*=(tessarn::real k) noexcept {
    x = tessarn::detail::product(x, k);
    y = tessarn::detail::product(y, k);
  }
  /// Both coordinates times 1/k, as by `/`.
  void operator/=(tessarn::real k) noexcept { *this *= 1 / k; }

  /// True when both coordinates are equal, without a tolerance. -0.0 equals 0.0; a NaN coordinate
  /// counts as equal to anything. C++20 forms `!=` as the negation; C++17 has none.
  bool operator==(vector& b) noexcept { return std::as_const(*this) == std::as_const(b); }

  /// The length sqrt(x^2 + y^2), without scaling against overflow.
  /// Special results: NaN when a coordinate is NaN, also when the other one is infinite.
  tessarn::real lenld() noexcept { return std::as_const(*this).lenld(); }
  /// The length rounded to an integer, half up: that of (0.3, 0.4) is 1.
  /// Special results: 2^31 when the rounded length is 2^31 or more, infinite or NaN.
  tessarn::ulong lenul() noexcept { return std::as_const(*this).lenul(); }
  /// x rounded as by rndi(): half up from 0 on, down to the floor for every negative value.
  /// Special results: -2147483648 for NaN and for what does not fit 32 bits.
  int rx() noexcept { return rndi(x); }
  /// y rounded in this way.
  int ry() noexcept { return rndi(y); }
  /// The magnitude rounded half up: 2.5 and -2.5 give 3.
  /// Special results: 2^31 for NaN and for all results from 2^31 on, although larger ones would fit.
  static unsigned int rndu(tessarn::real v) noexcept { return tessarn::detail::round_magnitude(v); }
  /// v rounded half up for v >= 0, and down to its floor for v < 0: 2.5 gives 3, -0.2 gives -1, -2.5
  /// gives -3.
  /// Special results: -2147483648 for NaN and for what does not fit.
  static int rndi(tessarn::real v) noexcept { return tessarn::detail::round_signed(v); }

  /// The unsigned angle to the +x axis, acos(x / length), in [0, pi].
  /// Special results: NaN for the zero vector and for a NaN; there is no fallback to 0 as in
  /// arc(vector&).
  /// Accuracy: angles to the x axis below about 1.5e-8 come out as 0 or pi; dirarc() keeps them.
  tessarn::real arc() noexcept { return std::as_const(*this).arc(); }

  /// The unsigned angle between the two vectors, in [0, pi]: acos of (x b.x + y b.y) / sqrt(L^2 M^2),
  /// where L and M are the two lengths.
  /// Special results: 0 where the arc cosine is NaN, that is for a zero vector, for a NaN, and for a
  /// cosine that rounding pushes outside [-1, 1]. The last case includes antiparallel vectors, whose
  /// angle is pi: an angle of 0 does not prove that two vectors point the same way. pi/2 where L M is
  /// above about 1e154 (0 where the dot product overflows, too), 0 where it is below about 1e-162.
  /// Accuracy: angles below about 1.5e-8 come out as 0; `a.dirarc(b)` keeps them.
  tessarn::real arc(vector& b) noexcept { return std::as_const(*this).arc(std::as_const(b)); }

  /// The direction angle in (-pi, pi] from the +x axis, positive towards +y: asin(y / length), placed
  /// in the quadrant of the vector.
  /// Special results: 0 for the zero vector, with any signs of its zeros; pi on the negative x axis,
  /// also for y = -0.0. Just below that axis rounding gives -pi itself. NaN for an infinite y unless
  /// x is 0, and for a NaN coordinate; (NaN, 0) gives pi, though, and (0, NaN) -pi/2.
  /// Accuracy: the arc sine loses digits next to the y axis, where the last 1.5e-8 come out as pi/2.
  tessarn::real dirarc() noexcept { return std::as_const(*this).dirarc(); }

  /// The signed angle from this direction to that of b, in (-pi, pi], positive counter-clockwise: the
  /// difference b.dirarc() - dirarc(), with 2 pi added when it is -pi or less, and subtracted when it
  /// is above pi.
  /// Special results: the zero vector has the direction 0, so it gives the direction of the other
  /// one.
  tessarn::real dirarc(vector& b) noexcept { return std::as_const(*this).dirarc(std::as_const(b)); }
  /// Exchanges x and y: the mirror image at the line y = x.
  void flip() noexcept {
    const tessarn::real t = x;
    x = y;
    y = t;
  }

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. Assignment from a constant returns
  /// a reference to this vector, as generic code expects it.
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

/// k times a vector is the vector times k. k may be of any integer or floating-point type.
/// The operator is a template so that a program's own operator is preferred.
template <class K, class V, class = tessarn::detail::if_number<K>, class = tessarn::detail::if_is<V, ::vector>>
::vector operator*(K k, const V& v) noexcept {
  return v * static_cast<tessarn::real>(k);
}

/// Zeroed vectors for the caller to own. n = 0 gives one object, which `delete` releases; n > 0 gives
/// an array of n objects, which `delete[]` releases. The two must not be mixed up.
///
///     vector* one = new_vector(0);   delete one;
///     vector* many = new_vector(9);  delete[] many;
///
/// \param n the number of objects; 0 does not mean an empty array
///
/// Throws: std::bad_alloc when there is no memory, and std::bad_array_new_length when the size is
/// impossible.
/// Memory: the caller may release it on the other side of the Windows module's boundary.
/// Cost: O(n).
[[nodiscard]] TESSARN_API ::vector* new_vector(tessarn::ulong n);
/// For counts of 64 bits. Throws std::bad_array_new_length when n does not fit 32 bits, instead of
/// cutting it; a negative n does not fit.
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
