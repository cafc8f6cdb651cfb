/// \file
/// The polynomial in one variable.
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
  [[nodiscard]] tessarn::real find_zero(tessarn::real a, tessarn::real b, tessarn::real step, tessarn::real eps) const {
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
  binom antifunction(tessarn::real a, tessarn::real b, tessarn::real h) const { return self().antifunction(a, b, h); }
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
