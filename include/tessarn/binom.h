/// \file
/// The polynomial in one variable, a part of tessarn/poly.h, which adds its operators with new results.
#pragma once

#include <initializer_list>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

/// A polynomial p(x) = c0 + c1 x + c2 x^2 + ...; coefficient i belongs to x^i, everywhere. Leading zeros are kept: the
/// count changes only where a member says so. It is fitted through plane points and analysed as the curve y = p(x).
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
/// Copy construction shares the coefficients: a change through one object shows in the other, until one of the two gets
/// coefficients of its own. The last object that holds them releases them, so objects are passed and returned by value,
/// captured and put into containers as usual; objects that share may be used by several threads as long as none changes
/// the coefficients. copy(), assignment and clone() are deep. A move empties its source and keeps the sharing. A class
/// with a polynomial among its members has copies that share, too; give it a copy constructor with clone() when that is
/// not wanted.
///
/// \code
/// binom a{1, 2};
/// binom shared(a), own = a.clone();
/// a.set(0, 5);
/// assert(shared.get(0) == 5 && own.get(0) == 1);
/// a *= a;                                       // new coefficients: a no longer shares
/// assert(shared.get(0) == 5);
/// \endcode
///
/// Members that keep the count change the coefficients where they are, so that sharing objects see it: set(), += and -=
/// of a polynomial that is not longer, the product with a number, shift_v() and the mirrors. All others that change the
/// polynomial, but a move, give it coefficients of its own.
///
/// Searches return -1.0 when they find nothing, which cannot be told from a result of -1.0. Results have the same bits
/// everywhere. Fits and searches work on memory for their coefficients and normal equations, whatever the number of
/// points; scalar() and antifunction() keep their samples.
/// Throws: an operation that cannot allocate throws std::bad_alloc, and std::bad_array_new_length, a kind of it, for
/// impossible sizes. The polynomial is then as it was, unless the member says otherwise.
class TESSARN_API binom {
 public:
  /// The empty polynomial: no coefficients, p(x) = 0.
  binom() noexcept : cofcnt(0), cof(nullptr) {}
  /// Shares the coefficients of the source; changes through one object show in the other.
  /// Cost: O(1).
  /// Throws: std::bad_alloc.
  binom(const binom& p);
  /// Releases the coefficients unless another object shares them.
  virtual ~binom();
  /// Releases the coefficients; the object is then the empty polynomial and stays usable.
  virtual void empty();

  /// Makes n zero coefficients; the old ones are not kept. n = 0 empties the polynomial.
  /// Throws: std::bad_alloc, and for a negative n always; the polynomial is then empty.
  void create(tessarn::slong n);
  /// Changes the count to n and keeps the low coefficients; new ones are 0. An equal n changes nothing.
  /// Throws: std::bad_alloc, and for a negative n always.
  void resize(tessarn::slong n);
  /// Coefficient i, that of x^i; 0.0 outside the range.
  tessarn::real get(tessarn::slong i) { return std::as_const(*this).get(i); }
  /// Stores coefficient i, NaN and infinities as they are; nothing outside the range, which does not grow.
  void set(tessarn::slong i, tessarn::real v) {
    if (i >= 0 && i < cofcnt) cof[i] = v;
  }
  /// The number of coefficients, leading zeros among them; the degree is one less.
  tessarn::ulong getcofcnt() { return static_cast<tessarn::ulong>(cofcnt); }
  /// A deep copy, after which the two share nothing; `p.copy(p)` changes nothing.
  /// Throws: std::bad_alloc; this polynomial is then empty.
  void copy(binom& src);
  /// copy(src), then this polynomial as a constant.
  const binom& operator=(binom& src);

  /// p(x), with a running power and the terms added in ascending order, not by Horner's scheme, whose bits differ; 0.0
  /// for the empty polynomial.
  /// Special results: an infinite power times a coefficient 0 is NaN, so that p(x) can be NaN for infinite or large x.
  /// Cost: O(n) for n coefficients.
  tessarn::real func(tessarn::real x);
  /// Makes d the derivative, one coefficient less: d_k = (k + 1) c_(k+1). d may be this polynomial. Throws for the
  /// empty polynomial, and leaves d empty then.
  void func_1(binom& d);
  /// The sum and difference; the count becomes the larger one. q may be this polynomial.
  void operator+=(binom& q);
  void operator-=(binom& q);
  /// The product; the count becomes n + nq - 1, so two empty polynomials throw, and an empty one with another leaves
  /// n - 1 zeros. Coefficient i + j gathers c_i q_j in the order of the coefficients of q. `p *= p` squares.
  /// Cost: O(n nq).
  void operator*=(binom& q);
  /// Every coefficient times s.
  void operator*=(tessarn::real s);
  /// p(x) := p(x - x0): the graph moves by +x0 along the x axis; shift_h(2) makes x^2 - 4 x + 4 of x^2. Expanded in
  /// powers of x - x0; for an x0 that is large beside the abscissas of interest the coefficients cancel and digits are
  /// lost.
  /// Cost: O(n^2).
  void shift_h(tessarn::real x0);
  /// p(x) := p(x) + dy; an empty polynomial becomes the constant dy.
  void shift_v(tessarn::real dy);
  /// p(x) := p(-x), the mirror image at the y axis: the odd coefficients change their signs, 0.0 to -0.0.
  void mirror_h();
  /// p(x) := -p(x), the mirror image at the x axis: every coefficient changes its sign, 0.0 to -0.0.
  void mirror_v();

  /// Fits m coefficients through n points by least squares: minimises the sum of (p(x) - y)^2. A point whose x is -1.0
  /// or NaN is left out; a NaN y takes part, and the sums that it makes NaN count as 0. m = 0 empties the polynomial;
  /// m = 1 gives the mean of the ordinates. Infinite coordinates make the result meaningless.
  ///
  /// Method: sums of the correctly rounded powers of the abscissas, the accepted point k in partial sum k mod 8, and
  /// the square solver. Normal equations lose twice the digits that the condition of the problem costs: shift and scale
  /// the abscissas for more than a few coefficients, but not to [-1, 1], where the left end is the marker and would be
  /// left out; [-0.5, 0.5] is safe.
  /// Failure: points that do not determine the coefficients, such as fewer distinct abscissas than coefficients, leave
  /// the right-hand side, the sums of x^i y, in them. This is not reported: compare the residuals, or use
  /// tessarn/fit.h. Without a point all coefficients are 0.
  /// Throws: std::bad_array_new_length for m > 65535, the polynomial as it was; std::bad_alloc, the polynomial empty or
  /// with m zeros.
  /// Cost: O(n m + m^3), and memory for m m numbers, whatever n is.
  void create(::vector* pts, tessarn::ulong n, tessarn::ulong m);
  /// Fits the constant and the odd powers below m, as for a curve like a tangent, symmetric about the point (0, c0);
  /// the even powers stay 0: m = 4 fits 1, x and x^3, m = 5 no more. Every point takes part, also one with x = -1.0;
  /// sums that a NaN makes NaN count as 0. Failure and cost are those of create().
  void createtan(::vector* pts, tessarn::ulong n, tessarn::ulong m);

  /// The first four derivatives at x: the sum over i of (x^(i-k) F(i)) c_i in ascending order, with the correctly
  /// rounded power and F(i) = i (i-1) ... in 32-bit integers, which wrap for thousands of coefficients; 0.0 where the
  /// count is at most k.
  /// Special results: x^0 is 1 also for NaN and infinities, so that the k-th derivative of k + 1 coefficients is the
  /// same number for every x.
  /// Cost: O(n).
  tessarn::real func_1(tessarn::real x);
  tessarn::real func_2(tessarn::real x);
  tessarn::real func_3(tessarn::real x);
  tessarn::real func_4(tessarn::real x);
  /// The signed curvature p'' / (1 + p'^2)^(3/2), positive where the curve bends to the left (p'' > 0); 0 on a straight
  /// line. The dimension is 1 / length, with x and y in one unit. 1 + p'^2 is not scaled: where it overflows the result
  /// is 0 or NaN.
  tessarn::real arc(tessarn::real x);
  /// The derivative of the curvature with respect to x: (p''' (1 + p'^2)^(3/2) - 3 p' p''^2
  /// (1 + p'^2)^(1/2)) / (1 + p'^2)^3, the denominator multiplied out. Zero where the curvature has an extreme point.
  /// The sixth power of p' overflows from about 2e51 on: the result is then 0 or NaN.
  tessarn::real arc_1(tessarn::real x);
  /// The vector from the curve point (x, p(x)) to its centre of curvature, (-p' s / p'', s / p'') with s = 1 + p'^2;
  /// its length is the radius of curvature. Infinite or NaN where p'' is 0.
  ::vector normale(tessarn::real x);
  /// A zero of p in [a, b], the first that the scan x = a, a + |step|, ... to b meets: a grid point where p is exactly
  /// 0, or the midpoint of a bracket. At every change of sign the scan starts again in the bracket with a hundredth of
  /// the step, until the step is below eps.
  ///
  /// \return a grid point with p = 0, at once; else the midpoint, within half of the last step used, which is below 100
  /// eps. Where the numbers about the zero are not so fine, or eps is not positive or NaN, the midpoint of the last
  /// bracket that a step could enclose. (a + b) / 2 at once where |step| < eps. -1.0 when nothing is found, when a > b,
  /// or when the first step does not move x. For x - 1.3, find_zero(0, 3, 0.5, 1e-6) gives 1.300025: 100 eps is the
  /// accuracy to ask for.
  ///
  /// Special results: two zeros between neighbouring grid points, and zeros without a change of sign between grid
  /// points, are missed. The last bracket may reach beyond b by less than a step. An infinite b is allowed: beyond a
  /// bound of the roots the scan ends. The empty polynomial gives a.
  /// Cost: O(n) for each sample: (b - a) / |step| of them, and about 100 for each refinement.
  /// Source: M. Fujiwara, Ueber die obere Schranke des absoluten Betrages der Wurzeln einer algebraischen Gleichung,
  /// 1916 (the bound).
  [[nodiscard]] tessarn::real find_zero(tessarn::real a, tessarn::real b, tessarn::real step, tessarn::real eps);
  /// The first extreme point of the curvature in [a, b), by the scheme of find_zero() on arc_1, with three differences:
  /// step is not made positive: below eps, negative steps included, it gives (a + b) / 2 at once; b takes no part, so
  /// that a >= b gives -1.0; a NaN eps gives the midpoint of the first bracket.
  /// Special results: on a straight line arc_1 is 0 everywhere, and the result is a. -1.0 when nothing is found.
  [[nodiscard]] tessarn::real find_extrpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                 tessarn::real eps);
  /// Of the extreme points of the curvature from a on the one of largest |arc|, the first of equals; -1.0 when there is
  /// none. Extreme points closer than a step can be missed. Behind one that a sample hits exactly the search goes on
  /// one step further.
  /// Cost: that of one find_extrpoint_arc() over [a, b] and its refinements for each extreme point.
  [[nodiscard]] tessarn::real find_high_hpoint_arc(tessarn::real a, tessarn::real b, tessarn::real step,
                                                   tessarn::real eps);
  /// The mean of p(x) / q(x) over x = a, a + h, ... up to b; samples where q is 0 or NaN, and the sample at exactly
  /// -1.0, are left out; 0.0 when none is left. q may be this polynomial.
  /// Special results: a NaN ratio, from a NaN p(x), makes the mean 0. The samples are (b - a) / h + 1 in 32 bits,
  /// truncated; h = 0 and NaN mean none.
  /// Throws: std::bad_array_new_length when h leads away from b, that is when (b - a) / h is -2 or less;
  /// std::bad_alloc.
  /// Cost: O(n + nq) and 24 bytes of memory for each sample.
  tessarn::real scalar(binom& q, tessarn::real a, tessarn::real b, tessarn::real h);
  /// The inverse function x = g(y) with as many coefficients, fitted through the samples (p(x), x) at x = a, a + h, ...
  /// up to b; samples with p(x) = -1.0 or NaN are left out. An inverse exists only where p rises or falls throughout:
  /// on both sides of an extreme point the fit is one through both branches.
  /// Special results: too few samples give the sums that create() leaves; h = 0 and NaN mean no samples, and zeros.
  /// Throws: as scalar().
  /// Cost: that of the samples and of create() over them, and 24 bytes for each.
  binom antifunction(tessarn::real a, tessarn::real b, tessarn::real h);

  /// \name For constants and temporaries
  /// The members above for const objects and operands, with their results and failures. Assignments return this
  /// polynomial. A move allocates nothing and empties its source.
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
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do not fit 32; the
  /// polynomial is then as it was.
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
  /// The fits through any container with data() and size(): std::vector<vector>, std::array, std::span, vectormat. An
  /// empty container gives m zeros.
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
  /// The values of the members above at x[0 .. n-1], with the same bits, written to y; y may be x, but must not overlap
  /// it otherwise.
  /// Cost: O(n) for each coefficient. Derivatives and curvatures need memory for up to three numbers a coefficient.
  /// Throws: std::bad_alloc; y is then as it was. func() allocates nothing.
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
  /// The polynomial with these coefficients, the constant first: binom{3} is the constant 3, not three coefficients.
  binom(std::initializer_list<tessarn::real> coefficients) : binom() {
    create(static_cast<tessarn::slong>(tessarn::detail::count(coefficients.size())));
    tessarn::slong i = 0;
    for (const tessarn::real c : coefficients) cof[i++] = c;
  }
  /// A polynomial with the same coefficients, its own. Cost: O(n).
  [[nodiscard]] binom clone() const;
  /// p(x), as func(). func_1(x) is the value of the derivative, func_1(d) makes it a polynomial.
  tessarn::real operator()(tessarn::real x) const { return func(x); }
  /// -p, with coefficients of its own: every sign is turned, as by mirror_v().
  binom operator-() const {
    binom p = clone();
    p.mirror_v();
    return p;
  }
  /// The coefficients, the constant first; null for the empty polynomial. The pointer holds while an object holds these
  /// coefficients.
  tessarn::real* data() noexcept { return cof; }
  const tessarn::real* data() const noexcept { return cof; }
  /// The number of coefficients, getcofcnt() under the name that containers give it.
  tessarn::ulong size() const noexcept { return getcofcnt(); }
  /// @}

 protected:
  /// After the virtual table pointer, in this order: the binary layout of the class. How many objects share the array
  /// is counted in a table of the library; derived classes leave the pointer to the members.
  tessarn::slong cofcnt;
  tessarn::real* cof;

 private:
  // The compiled members are declared with non-const references, also where they change nothing.
  binom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static binom& other(const binom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  // Makes the polynomial empty without releasing the coefficients, which have another holder now.
  void forget() noexcept {
    cofcnt = 0;
    cof = nullptr;
  }
};
