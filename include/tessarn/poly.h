/// \file
/// Polynomials in one variable, fitted through points and analysed as curves, and polynomials in two
/// variables, fitted through space points.
#pragma once

#include <initializer_list>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

/// A polynomial p(x) = c0 + c1 x + c2 x^2 + ...; coefficient i belongs to x^i, everywhere. Leading zeros
/// are kept: the count changes only where a member says so.
///
/// \code
/// const vector points[] = {{0, 1}, {1, 3}, {2, 7}, {3, 13}};   // on 1 + x + x^2
/// binom p;
/// p.create(points, 4, 3);                       // three coefficients through four points
/// assert(p(4) > 20.999 && p(4) < 21.001);
/// binom line{-1.5, 1};                          // x - 1.5
/// assert(line.find_zero(0, 3, 0.5, 1e-9) == 1.5);
/// assert((line * line).get(0) == 2.25);
/// \endcode
///
/// Copy construction shares the coefficients: a change through one object shows in the other, until one of
/// the two gets coefficients of its own. The last object that holds them releases them, so objects are passed
/// and returned by value, captured and put into containers as usual; objects that share may be used by
/// several threads as long as none changes the coefficients. copy(), assignment and clone() are deep. A move
/// empties its source and keeps the sharing. A class with a polynomial among its members has copies that share, too;
/// give it a copy constructor with clone() when that is not wanted.
///
/// Searches return -1.0 when they find nothing, which cannot be told from a result of -1.0. Results have
/// the same bits everywhere. An operation that cannot allocate throws std::bad_alloc. Fits and searches
/// work on memory for their coefficients and normal equations, whatever the number of points.
class TESSARN_API binom {
 public:
  /// The empty polynomial: no coefficients.
  binom() noexcept : cofcnt(0), cof(nullptr) {}
  /// Shares the coefficients of the source.
  binom(const binom& p);
  virtual ~binom();
  /// Releases the coefficients; the object stays usable.
  virtual void empty();

  /// Makes n zero coefficients. A negative n throws std::bad_alloc.
  void create(tessarn::slong n);
  /// Changes the count to n and keeps the low coefficients; new ones are 0. A negative n throws.
  void resize(tessarn::slong n);
  /// Coefficient i; 0.0 outside the range.
  tessarn::real get(tessarn::slong i) { return std::as_const(*this).get(i); }
  /// Stores coefficient i; nothing outside the range.
  void set(tessarn::slong i, tessarn::real v) {
    if (i >= 0 && i < cofcnt) cof[i] = v;
  }
  /// The number of coefficients; the degree is one less.
  tessarn::ulong getcofcnt() { return static_cast<tessarn::ulong>(cofcnt); }
  /// A deep copy; `p.copy(p)` changes nothing.
  void copy(binom& src);
  const binom& operator=(binom& src);

  /// p(x), with a running power and the terms added in ascending order; 0.0 for the empty polynomial.
  tessarn::real func(tessarn::real x);
  /// Makes d, another object, the derivative. Throws for the empty polynomial, and leaves d empty then.
  void func_1(binom& d);
  /// The sum and difference; the count becomes the larger one.
  void operator+=(binom& q);
  void operator-=(binom& q);
  /// The product; the count becomes n + nq - 1, so two empty polynomials throw. `p *= p` squares.
  void operator*=(binom& q);
  /// Every coefficient times s.
  void operator*=(tessarn::real s);
  /// p(x) := p(x - x0): the graph moves by +x0 along the x axis.
  void shift_h(tessarn::real x0);
  /// p(x) := p(x) + dy; an empty polynomial becomes the constant dy.
  void shift_v(tessarn::real dy);
  /// p(x) := p(-x), the mirror image at the y axis.
  void mirror_h();
  /// p(x) := -p(x), the mirror image at the x axis.
  void mirror_v();

  /// Fits m coefficients through n points by least squares: sums of the correctly rounded powers of the
  /// abscissas, the accepted point k in partial sum k mod 8, and the square solver. A point whose x is -1.0 or NaN is
  /// left out; a NaN y takes part, and the sums that it makes NaN count as 0. Points that do not determine the
  /// coefficients leave the right-hand side, the sums of x^i y, in them: compare the residuals to detect it. Normal
  /// equations lose twice the digits that the condition of the problem costs: shift and scale the abscissas for more
  /// than a few coefficients, but not to [-1, 1], where the left end is the marker and would be left out; [-0.5, 0.5]
  /// is safe.
  void create(::vector* pts, tessarn::ulong n, tessarn::ulong m);
  /// Fits the constant and the odd powers below m; the even powers stay 0. Every point takes part, also
  /// one with x = -1.0.
  void createtan(::vector* pts, tessarn::ulong n, tessarn::ulong m);

  /// The first four derivatives at x: the sum over i of (x^(i-k) F(i)) c_i in ascending order, with the
  /// correctly rounded power and F(i) = i (i-1) ... in 32-bit integers; 0.0 where the count is at most k.
  tessarn::real func_1(tessarn::real x);
  tessarn::real func_2(tessarn::real x);
  tessarn::real func_3(tessarn::real x);
  tessarn::real func_4(tessarn::real x);
  /// The signed curvature p'' / (1 + p'^2)^(3/2), positive where the curve bends to the left.
  tessarn::real arc(tessarn::real x);
  /// The derivative of the curvature with respect to x.
  tessarn::real arc_1(tessarn::real x);
  /// The vector from the curve point (x, p(x)) to its centre of curvature; its length is the radius.
  /// Infinite or NaN where p'' is 0.
  ::vector normale(tessarn::real x);
  /// A zero of p in [a, b]: the midpoint of the bracket that a scan with |step|, refined a hundredfold at
  /// every sign change until the step is below eps, encloses; or the grid point where p is exactly 0. The
  /// result is within half of the last step used, which is below 100 eps. Where the numbers about the zero are
  /// not so fine, or eps is 0 or NaN, it is the midpoint of the last bracket that a step could enclose. -1.0 when
  /// nothing is found, when a > b, or when the first step does not move x.
  [[nodiscard]] tessarn::real find_zero(tessarn::real a, tessarn::real b, tessarn::real step, tessarn::real eps);
  /// The first extreme point of the curvature in [a, b), by the same scheme on arc_1; step is not made
  /// positive: below eps it gives (a + b) / 2 at once. A NaN eps gives the midpoint of the first bracket.
  [[nodiscard]] tessarn::real find_extrpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                 tessarn::real eps);
  /// Of the extreme points of the curvature from a on the one of largest |arc|, the first of equals. Extreme
  /// points closer than a step can be missed. Behind one that a sample hits exactly the search goes on one step
  /// further.
  [[nodiscard]] tessarn::real find_high_hpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                   tessarn::real eps);
  /// The mean of p(x) / q(x) over x = a, a + h, ... up to b; samples where q is 0 or NaN, and the sample at
  /// exactly -1.0, are left out; 0.0 when none is left. Throws std::bad_alloc when h leads from b to a.
  tessarn::real scalar(binom& q, tessarn::real a, tessarn::real b, tessarn::real h);
  /// The inverse function x = g(y) with as many coefficients, fitted through the samples (p(x), x) at
  /// x = a, a + h, ... up to b; samples with p(x) = -1.0 are left out. Throws std::bad_alloc when h leads from b
  /// to a.
  binom antifunction(tessarn::real a, tessarn::real b, tessarn::real h);

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results; a move empties its source.
  /// @{
  binom(binom&& p) noexcept : cofcnt(p.cofcnt), cof(p.cof) { p.forget(); }
  binom& operator=(const binom& src) {
    copy(src);
    return *this;
  }
  binom& operator=(binom&& src) noexcept;
  tessarn::real get(tessarn::slong i) const { return i >= 0 && i < cofcnt ? cof[i] : 0; }
  tessarn::ulong getcofcnt() const { return static_cast<tessarn::ulong>(cofcnt); }
  void copy(const binom& src) { copy(other(src)); }
  tessarn::real func(tessarn::real x) const { return self().func(x); }
  void func_1(binom& d) const { self().func_1(d); }
  void operator+=(const binom& q) { *this += other(q); }
  void operator-=(const binom& q) { *this -= other(q); }
  void operator*=(const binom& q) { *this *= other(q); }
  tessarn::real func_1(tessarn::real x) const { return self().func_1(x); }
  tessarn::real func_2(tessarn::real x) const { return self().func_2(x); }
  tessarn::real func_3(tessarn::real x) const { return self().func_3(x); }
  tessarn::real func_4(tessarn::real x) const { return self().func_4(x); }
  tessarn::real arc(tessarn::real x) const { return self().arc(x); }
  tessarn::real arc_1(tessarn::real x) const { return self().arc_1(x); }
  ::vector normale(tessarn::real x) const { return self().normale(x); }
  [[nodiscard]] tessarn::real find_zero(tessarn::real a, tessarn::real b, tessarn::real step,
                                        tessarn::real eps) const {
    return self().find_zero(a, b, step, eps);
  }
  [[nodiscard]] tessarn::real find_extrpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                 tessarn::real eps) const {
    return self().find_extrpoint_arc(a, b, step, eps);
  }
  [[nodiscard]] tessarn::real find_high_hpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                   tessarn::real eps) const {
    return self().find_high_hpoint_arc(a, b, step, eps);
  }
  tessarn::real scalar(const binom& q, tessarn::real a, tessarn::real b, tessarn::real h) const {
    return self().scalar(other(q), a, b, h);
  }
  binom antifunction(tessarn::real a, tessarn::real b, tessarn::real h) const {
    return self().antifunction(a, b, h);
  }
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do not fit 32.
  template <class Points, class N, class M, class = tessarn::detail::if_adapted_pointer<Points, ::vector, N, M>>
  void create(Points pts, N n, M m) {
    using namespace tessarn::detail;
    create(mutable_pointer<::vector>(pts), tessarn::detail::count(n), tessarn::detail::count(m));
  }
  template <class Points, class N, class M, class = tessarn::detail::if_adapted_pointer<Points, ::vector, N, M>>
  void createtan(Points pts, N n, M m) {
    using namespace tessarn::detail;
    createtan(mutable_pointer<::vector>(pts), tessarn::detail::count(n), tessarn::detail::count(m));
  }
  /// @}

  /// \name Containers of points
  /// Any container with data() and size(): std::vector<vector>, std::array, std::span, vectormat.
  /// @{
  template <class Points, class M, class = tessarn::detail::if_container<Points, ::vector>>
  void create(const Points& pts, M m) {
    create(tessarn::detail::mutable_pointer<::vector>(pts.data()), tessarn::detail::count(pts.size()),
           tessarn::detail::count(m));
  }
  template <class Points, class M, class = tessarn::detail::if_container<Points, ::vector>>
  void createtan(const Points& pts, M m) {
    createtan(tessarn::detail::mutable_pointer<::vector>(pts.data()), tessarn::detail::count(pts.size()),
              tessarn::detail::count(m));
  }
  /// @}

  /// \name Over arrays of n abscissas
  /// The values of the members above at x[0 .. n-1], with the same bits, written to y; y may be x.
  /// @{
  void func(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void func_1(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void func_2(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void func_3(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void func_4(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void arc(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  void arc_1(const tessarn::real* x, tessarn::real* y, tessarn::ulong n) const;
  /// @}

  /// \name Additions
  /// @{
  /// The polynomial with these coefficients, the constant first.
  binom(std::initializer_list<tessarn::real> coefficients) : binom() {
    create(static_cast<tessarn::slong>(tessarn::detail::count(coefficients.size())));
    tessarn::slong i = 0;
    for (const tessarn::real c : coefficients) cof[i++] = c;
  }
  /// A polynomial with the same coefficients, its own.
  [[nodiscard]] binom clone() const;
  /// p(x), as func().
  tessarn::real operator()(tessarn::real x) const { return func(x); }
  /// -p, with coefficients of its own: every sign is turned, as by mirror_v().
  binom operator-() const {
    binom p = clone();
    p.mirror_v();
    return p;
  }
  /// The coefficients, the constant first; null for the empty polynomial.
  tessarn::real* data() noexcept { return cof; }
  const tessarn::real* data() const noexcept { return cof; }
  /// The number of coefficients, getcofcnt() under the name that containers give it.
  tessarn::ulong size() const noexcept { return getcofcnt(); }
  /// @}

 protected:
  tessarn::slong cofcnt;
  tessarn::real* cof;

 private:
  binom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static binom& other(const binom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  void forget() noexcept {
    cofcnt = 0;
    cof = nullptr;
  }
};

/// A polynomial in two variables, p(x, y) = sum of c(i, j) x^i y^j over 0 <= i, j < g with the grade g.
/// The table stands row by row, c(i, j) at g j + i: the first g entries are the pure powers of x.
///
/// \code
/// hyperbinom p{{1, 2}, {3, 4}};                 // 1 + 2 x + 3 y + 4 x y
/// assert(p(1, 1) == 10 && p.get(1, 0) == 2);
/// const vector3d cloud[] = {{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {1, 1, 10}};
/// hyperbinom fitted;
/// fitted.create(cloud, 4, 2);                   // the grade 2: four coefficients
/// assert(fitted(0.5, 0.5) > 4.4999 && fitted(0.5, 0.5) < 4.5001);
/// \endcode
///
/// Copies share and moves empty as those of binom. Results have the same bits everywhere.
class TESSARN_API hyperbinom {
 public:
  /// The empty polynomial: grade 0, no table.
  hyperbinom() noexcept : grade(0), cof(nullptr) {}
  /// Shares the table of the source.
  hyperbinom(const hyperbinom& p);
  virtual ~hyperbinom();
  /// Releases the table; the object stays usable.
  virtual void empty();

  /// Makes a table of g g zeros. A negative grade is kept, with a table that no index reaches. Throws
  /// std::bad_alloc when g g exceeds the signed 32-bit range.
  void create(tessarn::slong g);
  /// Changes the grade to g and keeps the pure powers of x only: every term with a power of y is dropped.
  /// The old pure-x entries land flat on the first entries, as far as the new table reaches.
  void resize(tessarn::slong g);
  /// c(i, j), the coefficient of x^i y^j; 0.0 outside the range.
  tessarn::real get(tessarn::slong i, tessarn::slong j) { return std::as_const(*this).get(i, j); }
  /// Stores c(i, j); nothing outside the range.
  void set(tessarn::slong i, tessarn::slong j, tessarn::real v) {
    if (inside(i, j)) cof[grade * j + i] = v;
  }
  tessarn::ulong getgrade() { return static_cast<tessarn::ulong>(grade); }
  /// A deep copy; `p.copy(p)` changes nothing.
  void copy(hyperbinom& src);
  const hyperbinom& operator=(hyperbinom& src);

  /// p(x, y) by running products, row by row, powers of x ascending; 0.0 for a grade below 1.
  tessarn::real func(tessarn::real x, tessarn::real y);
  /// The sum and difference. When q has the larger grade this polynomial first loses its terms with a
  /// power of y, as resize() says.
  void operator+=(hyperbinom& q);
  void operator-=(hyperbinom& q);
  /// The product, of grade g + gq - 1. `p *= p` squares.
  void operator*=(hyperbinom& q);
  /// Every coefficient times s.
  void operator*=(tessarn::real s);

  /// Fits the g g coefficients of a surface through n points by least squares: sums of products of
  /// correctly rounded powers, point k in partial sum k mod 8, and the square solver. Every point takes part.
  /// Points that do not determine the coefficients leave the right-hand side in them.
  void create(vector3d* pts, tessarn::ulong n, tessarn::ulong g);
  /// The fit with a weight for each point: minimises the sum of (w (p(x, y) - z))^2.
  void create(vector3d* pts, tessarn::real* w, tessarn::ulong n, tessarn::ulong g);

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results; a move empties its source.
  /// @{
  hyperbinom(hyperbinom&& p) noexcept : grade(p.grade), cof(p.cof) { p.forget(); }
  hyperbinom& operator=(const hyperbinom& src) {
    copy(src);
    return *this;
  }
  hyperbinom& operator=(hyperbinom&& src) noexcept;
  tessarn::real get(tessarn::slong i, tessarn::slong j) const { return inside(i, j) ? cof[grade * j + i] : 0; }
  tessarn::ulong getgrade() const { return static_cast<tessarn::ulong>(grade); }
  void copy(const hyperbinom& src) { copy(other(src)); }
  tessarn::real func(tessarn::real x, tessarn::real y) const { return self().func(x, y); }
  void operator+=(const hyperbinom& q) { *this += other(q); }
  void operator-=(const hyperbinom& q) { *this -= other(q); }
  void operator*=(const hyperbinom& q) { *this *= other(q); }
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do not fit 32.
  template <class Points, class N, class G, class = tessarn::detail::if_adapted_pointer<Points, vector3d, N, G>>
  void create(Points pts, N n, G g) {
    create(tessarn::detail::mutable_pointer<vector3d>(pts), tessarn::detail::count(n), tessarn::detail::count(g));
  }
  template <class = void>
  void create(const vector3d* pts, const tessarn::real* w, tessarn::ulong n, tessarn::ulong g) {
    create(tessarn::detail::mutable_pointer(pts), tessarn::detail::mutable_pointer(w), n, g);
  }
  template <class Points, class Weights, class N, class G,
            class = std::enable_if_t<std::is_convertible_v<Points, const vector3d*> &&
                                     std::is_convertible_v<Weights, const tessarn::real*> &&
                                     (tessarn::detail::is_wide<N> || tessarn::detail::is_wide<G>)>>
  void create(Points pts, Weights w, N n, G g) {
    create(tessarn::detail::mutable_pointer<vector3d>(pts), tessarn::detail::mutable_pointer<tessarn::real>(w),
           tessarn::detail::count(n), tessarn::detail::count(g));
  }
  /// @}

  /// The fit through a container of points: anything with data() and size().
  template <class Points, class G, class = tessarn::detail::if_container<Points, vector3d>>
  void create(const Points& pts, G g) {
    create(tessarn::detail::mutable_pointer<vector3d>(pts.data()), tessarn::detail::count(pts.size()),
           tessarn::detail::count(g));
  }

  /// func() at the n points (x[k], y[k]), with the same bits, written to z; z may be x or y.
  void func(const tessarn::real* x, const tessarn::real* y, tessarn::real* z, tessarn::ulong n) const;

  /// \name Additions
  /// @{
  /// The polynomial with these rows: row j holds the coefficients of y^j, the power 0 of x first. The number of rows and
  /// the longest row decide the grade; what is missing is 0.
  hyperbinom(std::initializer_list<std::initializer_list<tessarn::real>> rows) : hyperbinom() {
    std::size_t g = rows.size();
    for (const auto& row : rows) g = row.size() > g ? row.size() : g;
    create(static_cast<tessarn::slong>(tessarn::detail::count(g)));
    tessarn::slong j = 0;
    for (const auto& row : rows) {
      tessarn::slong i = 0;
      for (const tessarn::real c : row) set(i++, j, c);
      ++j;
    }
  }
  /// A polynomial with the same table, its own.
  [[nodiscard]] hyperbinom clone() const;
  /// p(x, y), as func().
  tessarn::real operator()(tessarn::real x, tessarn::real y) const { return func(x, y); }
  /// -p, with a table of its own: every coefficient times -1.
  hyperbinom operator-() const {
    hyperbinom p = clone();
    p *= static_cast<tessarn::real>(-1);
    return p;
  }
  /// @}

 protected:
  tessarn::slong grade;
  tessarn::real* cof;

  /// The value x^(k mod g) y^(k div g) of the basis function of table entry k, correctly rounded powers
  /// for exponents from 0 on; the grade must not be 0.
  tessarn::real getvec(tessarn::slong k, tessarn::real x, tessarn::real y);

 private:
  hyperbinom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static hyperbinom& other(const hyperbinom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  bool inside(tessarn::slong i, tessarn::slong j) const noexcept {
    return i >= 0 && i < grade && j >= 0 && j < grade;
  }
  void forget() noexcept {
    grade = 0;
    cof = nullptr;
  }
};

namespace tessarn::detail {

/// The kind of polynomial that both P and Q are or derive from.
template <class P, class Q>
using if_polynomials =
    std::enable_if_t<(std::is_base_of_v<binom, P> && std::is_base_of_v<binom, Q>) ||
                         (std::is_base_of_v<hyperbinom, P> && std::is_base_of_v<hyperbinom, Q>),
                     std::conditional_t<std::is_base_of_v<binom, P>, binom, hyperbinom>>;
template <class P>
using if_polynomial = if_polynomials<P, P>;

}  // namespace tessarn::detail

/// \name Sums, products and multiples as new polynomials
/// With the results of `+=`, `-=` and `*=` on a deep copy of the left operand. A program's own operators are preferred.
/// @{
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator+(const P& p, const Q& q) {
  auto r = p.clone();
  r += q;
  return r;
}
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator-(const P& p, const Q& q) {
  auto r = p.clone();
  r -= q;
  return r;
}
template <class P, class Q>
tessarn::detail::if_polynomials<P, Q> operator*(const P& p, const Q& q) {
  auto r = p.clone();
  r *= q;
  return r;
}
template <class K, class P, class = tessarn::detail::if_number<K>>
tessarn::detail::if_polynomial<P> operator*(K k, const P& p) {
  auto r = p.clone();
  r *= static_cast<tessarn::real>(k);
  return r;
}
template <class P, class K, class = tessarn::detail::if_number<K>, class = void>
tessarn::detail::if_polynomial<P> operator*(const P& p, K k) {
  return k * p;
}
/// @}

namespace tessarn {
using ::binom;
using ::hyperbinom;
}  // namespace tessarn

static_assert(sizeof(void*) != 8 || (sizeof(binom) == 24 && sizeof(hyperbinom) == 24),
              "a polynomial is its virtual table pointer, the count and the coefficients");
