/// \file
/// Polynomials in one variable, fitted through points and analysed as curves, and polynomials in two
/// variables, fitted through space points.
#pragma once

#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

/// A polynomial p(x) = c0 + c1 x + c2 x^2 + ...; coefficient i belongs to x^i, everywhere. Leading zeros
/// are kept: the count changes only where a member says so.
///
/// Copy construction shares the coefficients: a change through one object shows in the other, and only
/// one of the two may reach destruction holding the array. copy() and assignment are deep, and end the
/// sharing when they get the other one of the two. A move empties its source, so returning by value works
/// as usual, and so does a std::vector as long as its elements are moved: push_back(std::move(p)),
/// emplace_back() and growing are safe, push_back(p) and copying the std::vector share.
///
/// Searches return -1.0 when they find nothing, which cannot be told from a result of -1.0. Results have
/// the same bits everywhere. An operation that cannot allocate throws std::bad_alloc. Fits and searches
/// work on memory for their coefficients and normal equations, whatever the number of points.
class TESSARN_API binom {
  using real = tessarn::real;
  using ulong = tessarn::ulong;
  using slong = tessarn::slong;

 public:
  /// The empty polynomial: no coefficients.
  binom() noexcept : cofcnt(0), cof(nullptr) {}
  /// Shares the coefficients of the source.
  binom(const binom&) = default;
  virtual ~binom();
  /// Releases the coefficients; the object stays usable.
  virtual void empty();

  /// Makes n zero coefficients. A negative n throws std::bad_alloc.
  void create(slong n);
  /// Changes the count to n and keeps the low coefficients; new ones are 0. A negative n throws.
  void resize(slong n);
  /// Coefficient i; 0.0 outside the range.
  real get(slong i) { return i >= 0 && i < cofcnt ? cof[i] : 0; }
  /// Stores coefficient i; nothing outside the range.
  void set(slong i, real v) {
    if (i >= 0 && i < cofcnt) cof[i] = v;
  }
  /// The number of coefficients; the degree is one less.
  ulong getcofcnt() { return static_cast<ulong>(cofcnt); }
  /// A deep copy; `p.copy(p)` changes nothing.
  void copy(binom& src);
  const binom& operator=(binom& src);

  /// p(x), with a running power and the terms added in ascending order; 0.0 for the empty polynomial.
  real func(real x);
  /// Makes d, another object, the derivative. Throws for the empty polynomial, and leaves d empty then.
  void func_1(binom& d);
  /// The sum and difference; the count becomes the larger one.
  void operator+=(binom& q);
  void operator-=(binom& q);
  /// The product; the count becomes n + nq - 1, so two empty polynomials throw. `p *= p` squares.
  void operator*=(binom& q);
  /// Every coefficient times s.
  void operator*=(real s);
  /// p(x) := p(x - x0): the graph moves by +x0 along the x axis.
  void shift_h(real x0);
  /// p(x) := p(x) + dy; an empty polynomial becomes the constant dy.
  void shift_v(real dy);
  /// p(x) := p(-x), the mirror image at the y axis.
  void mirror_h();
  /// p(x) := -p(x), the mirror image at the x axis.
  void mirror_v();

  /// Fits m coefficients through n points by least squares: sums of the correctly rounded powers of the
  /// abscissas, the accepted point k in partial sum k mod 8, and the square solver. A point whose x is -1.0 or NaN is
  /// left out. Points that do not determine the coefficients leave the right-hand side, the sums of x^i y, in them:
  /// evaluate the fit to know. Normal equations lose twice the digits that the condition of the problem costs: shift
  /// and scale the abscissas for more than a few coefficients, but not to [-1, 1], where the left end is the marker and
  /// would be left out; [-0.5, 0.5] is safe.
  void create(vector* pts, ulong n, ulong m);
  /// Fits the constant and the odd powers below m; the even powers stay 0. Every point takes part, also
  /// one with x = -1.0.
  void createtan(vector* pts, ulong n, ulong m);

  /// The first four derivatives at x: the sum over i of (x^(i-k) F(i)) c_i in ascending order, with the
  /// correctly rounded power and F(i) = i (i-1) ... in 32-bit integers; 0.0 where the count is at most k.
  real func_1(real x);
  real func_2(real x);
  real func_3(real x);
  real func_4(real x);
  /// The signed curvature p'' / (1 + p'^2)^(3/2), positive where the curve bends to the left.
  real arc(real x);
  /// The derivative of the curvature with respect to x.
  real arc_1(real x);
  /// The vector from the curve point (x, p(x)) to its centre of curvature; its length is the radius.
  /// Infinite or NaN where p'' is 0.
  vector normale(real x);
  /// A zero of p in [a, b]: the midpoint of the bracket that a scan with |step|, refined a hundredfold at
  /// every sign change until the step is below eps, encloses; or the grid point where p is exactly 0. The
  /// result is within half of the last step used, which is below 100 eps. -1.0 when nothing is found,
  /// when a > b, or when a step no longer moves x.
  real find_zero(real a, real b, real step, real eps);
  /// The first extreme point of the curvature in [a, b), by the same scheme on arc_1; step is not made
  /// positive: below eps it gives (a + b) / 2 at once.
  real find_extrpoint_arc(real a, real b, real step, real eps);
  /// Of the extreme points of the curvature from a on the one of largest |arc|, the first of equals.
  real find_high_hpoint_arc(real a, real b, real step, real eps);
  /// The mean of p(x) / q(x) over x = a, a + h, ... up to b; samples where q is 0 or NaN, and the sample at
  /// exactly -1.0, are left out; 0.0 when none is left.
  real scalar(binom& q, real a, real b, real h);
  /// The inverse function x = g(y) with as many coefficients, fitted through the samples (p(x), x) at
  /// x = a, a + h, ... up to b; samples with p(x) = -1.0 are left out.
  binom antifunction(real a, real b, real h);

  /// \name The same for constants and temporaries
  /// @{
  binom(binom&& p) noexcept : cofcnt(p.cofcnt), cof(p.cof) { p.forget(); }
  const binom& operator=(const binom& src) { return *this = other(src); }
  const binom& operator=(binom&& src) noexcept;
  real get(slong i) const { return self().get(i); }
  ulong getcofcnt() const { return self().getcofcnt(); }
  void copy(const binom& src) { copy(other(src)); }
  real func(real x) const { return self().func(x); }
  void func_1(binom& d) const { self().func_1(d); }
  void operator+=(const binom& q) { *this += other(q); }
  void operator-=(const binom& q) { *this -= other(q); }
  void operator*=(const binom& q) { *this *= other(q); }
  template <class Points, class = tessarn::detail::if_pointer_to_const<Points, vector>>
  void create(Points pts, ulong n, ulong m) { create(const_cast<vector*>(pts), n, m); }
  template <class Points, class = tessarn::detail::if_pointer_to_const<Points, vector>>
  void createtan(Points pts, ulong n, ulong m) { createtan(const_cast<vector*>(pts), n, m); }
  real func_1(real x) const { return self().func_1(x); }
  real func_2(real x) const { return self().func_2(x); }
  real func_3(real x) const { return self().func_3(x); }
  real func_4(real x) const { return self().func_4(x); }
  real arc(real x) const { return self().arc(x); }
  real arc_1(real x) const { return self().arc_1(x); }
  vector normale(real x) const { return self().normale(x); }
  real find_zero(real a, real b, real step, real eps) const { return self().find_zero(a, b, step, eps); }
  real find_extrpoint_arc(real a, real b, real step, real eps) const {
    return self().find_extrpoint_arc(a, b, step, eps);
  }
  real find_high_hpoint_arc(real a, real b, real step, real eps) const {
    return self().find_high_hpoint_arc(a, b, step, eps);
  }
  real scalar(const binom& q, real a, real b, real h) const { return self().scalar(other(q), a, b, h); }
  binom antifunction(real a, real b, real h) const { return self().antifunction(a, b, h); }
  /// @}

  /// \name Over arrays of n abscissas
  /// The values of the members above at x[0 .. n-1], with the same bits, written to y; y may be x.
  /// @{
  void func(const real* x, real* y, ulong n) const;
  void func_1(const real* x, real* y, ulong n) const;
  void func_2(const real* x, real* y, ulong n) const;
  void func_3(const real* x, real* y, ulong n) const;
  void func_4(const real* x, real* y, ulong n) const;
  void arc(const real* x, real* y, ulong n) const;
  void arc_1(const real* x, real* y, ulong n) const;
  /// @}

 protected:
  slong cofcnt;
  real* cof;

 private:
  binom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static binom& other(const binom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  void forget() noexcept {
    cofcnt = 0;
    cof = nullptr;
  }
  friend struct tessarn::detail::access;
};

/// A polynomial in two variables, p(x, y) = sum of c(i, j) x^i y^j over 0 <= i, j < g with the grade g.
/// The table stands row by row, c(i, j) at g j + i: the first g entries are the pure powers of x.
///
/// Copies share and moves empty as those of binom. Results have the same bits everywhere.
class TESSARN_API hyperbinom {
  using real = tessarn::real;
  using ulong = tessarn::ulong;
  using slong = tessarn::slong;

 public:
  /// The empty polynomial: grade 0, no table.
  hyperbinom() noexcept : grade(0), cof(nullptr) {}
  /// Shares the table of the source.
  hyperbinom(const hyperbinom&) = default;
  virtual ~hyperbinom();
  /// Releases the table; the object stays usable.
  virtual void empty();

  /// Makes a table of g g zeros. A negative grade is kept, with a table that no index reaches. Throws
  /// std::bad_alloc when g g exceeds the signed 32-bit range.
  void create(slong g);
  /// Changes the grade to g and keeps the pure powers of x only: every term with a power of y is dropped.
  /// The old pure-x entries land flat on the first entries, as far as the new table reaches.
  void resize(slong g);
  /// c(i, j), the coefficient of x^i y^j; 0.0 outside the range.
  real get(slong i, slong j) { return inside(i, j) ? cof[grade * j + i] : 0; }
  /// Stores c(i, j); nothing outside the range.
  void set(slong i, slong j, real v) {
    if (inside(i, j)) cof[grade * j + i] = v;
  }
  ulong getgrade() { return static_cast<ulong>(grade); }
  /// A deep copy; `p.copy(p)` changes nothing.
  void copy(hyperbinom& src);
  const hyperbinom& operator=(hyperbinom& src);

  /// p(x, y) by running products, row by row, powers of x ascending; 0.0 for a grade below 1.
  real func(real x, real y);
  /// The sum and difference. When q has the larger grade this polynomial first loses its terms with a
  /// power of y, as resize() says.
  void operator+=(hyperbinom& q);
  void operator-=(hyperbinom& q);
  /// The product, of grade g + gq - 1. `p *= p` squares.
  void operator*=(hyperbinom& q);
  /// Every coefficient times s.
  void operator*=(real s);

  /// Fits the g g coefficients of a surface through n points by least squares: sums of products of
  /// correctly rounded powers, point k in partial sum k mod 8, and the square solver. Every point takes part.
  /// Points that do not determine the coefficients leave the right-hand side in them.
  void create(vector3d* pts, ulong n, ulong g);
  /// The same with weights: minimises the sum of (w (p(x, y) - z))^2.
  void create(vector3d* pts, real* w, ulong n, ulong g);

  /// \name The same for constants and temporaries
  /// @{
  hyperbinom(hyperbinom&& p) noexcept : grade(p.grade), cof(p.cof) { p.forget(); }
  const hyperbinom& operator=(const hyperbinom& src) { return *this = other(src); }
  const hyperbinom& operator=(hyperbinom&& src) noexcept;
  real get(slong i, slong j) const { return self().get(i, j); }
  ulong getgrade() const { return self().getgrade(); }
  void copy(const hyperbinom& src) { copy(other(src)); }
  real func(real x, real y) const { return self().func(x, y); }
  void operator+=(const hyperbinom& q) { *this += other(q); }
  void operator-=(const hyperbinom& q) { *this -= other(q); }
  void operator*=(const hyperbinom& q) { *this *= other(q); }
  template <class Points, class = tessarn::detail::if_pointer_to_const<Points, vector3d>>
  void create(Points pts, ulong n, ulong g) { create(const_cast<vector3d*>(pts), n, g); }
  void create(const vector3d* pts, const real* w, ulong n, ulong g) {
    create(const_cast<vector3d*>(pts), const_cast<real*>(w), n, g);
  }
  /// @}

  /// func() at the n points (x[k], y[k]), with the same bits, written to z; z may be x or y.
  void func(const real* x, const real* y, real* z, ulong n) const;

 protected:
  slong grade;
  real* cof;

  /// The value x^(k mod g) y^(k div g) of the basis function of table entry k, correctly rounded powers
  /// for exponents from 0 on; the grade must not be 0.
  real getvec(slong k, real x, real y);

 private:
  hyperbinom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static hyperbinom& other(const hyperbinom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  bool inside(slong i, slong j) const noexcept { return i >= 0 && i < grade && j >= 0 && j < grade; }
  void forget() noexcept {
    grade = 0;
    cof = nullptr;
  }
  friend struct tessarn::detail::access;
};

static_assert(sizeof(void*) != 8 || (sizeof(binom) == 24 && sizeof(hyperbinom) == 24),
              "a polynomial is its virtual table pointer, the count and the coefficients");
