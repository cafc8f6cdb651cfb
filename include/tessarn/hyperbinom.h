/// \file
/// The polynomial in two variables, a part of tessarn/poly.h, which adds its operators with new results.
#pragma once

#include <initializer_list>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

/// A polynomial in two variables, p(x, y) = sum of c(i, j) x^i y^j over 0 <= i, j < g with the grade g: g g terms, up
/// to the total degree 2 g - 2. It is fitted through space points as the surface z = p(x, y).
/// The table stands row by row, c(i, j) at g j + i: the first g entries are the pure powers of x.
///
/// \code
/// hyperbinom p{{1, 2}, {3, 4}};                 // 1 + 2 x + 3 y + 4 x y
/// assert(p(1, 1) == 10 && p.get(1, 0) == 2);
/// const vector3d cloud[] = {{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {1, 1, 10}};
/// hyperbinom fitted;
/// fitted.create(cloud, 4, 2);                   // the grade 2: four coefficients
/// assert(fitted(0.5, 0.5) > 4.4999 && fitted(0.5, 0.5) < 4.5001);
/// p += hyperbinom{{0, 0, 0}};                   // the grade grows to 3, which keeps the pure powers of x alone
/// assert(p.get(1, 0) == 2 && p.get(0, 1) == 0);
/// \endcode
///
/// Copies share and moves empty as those of binom; copy(), assignment and clone() are deep. Members that keep the grade
/// change the table where it is, so that sharing objects see it; all others that change the polynomial give it a table
/// of its own. Results have the same bits everywhere.
/// Throws: an operation that cannot allocate throws std::bad_alloc, and std::bad_array_new_length, a kind of it, for
/// impossible sizes. The polynomial is then as it was, unless the member says otherwise.
class TESSARN_API hyperbinom {
 public:
  /// The empty polynomial: grade 0, no table, p(x, y) = 0.
  hyperbinom() noexcept : grade(0), cof(nullptr) {}
  /// Shares the table of the source; changes through one object show in the other. Cost: O(1). Throws: std::bad_alloc.
  hyperbinom(const hyperbinom& p);
  /// Releases the table unless another object shares it.
  virtual ~hyperbinom();
  /// Releases the table; the object is then the empty polynomial and stays usable.
  virtual void empty();

  /// Makes a table of g g zeros; the old one is not kept. A negative grade is kept, with a table that no index reaches.
  /// Throws: std::bad_array_new_length when g g exceeds the signed 32-bit range, std::bad_alloc; the polynomial is then
  /// empty.
  void create(tessarn::slong g);
  /// Changes the grade to g and keeps the pure powers of x only (deliberately): every term with a power of y is
  /// dropped, also when the grade grows. The old pure-x entries land flat on the first entries, as far as the new table
  /// reaches; where the grade shrinks they run over into the next rows: from 3 to 2, c(2, 0) becomes c(0, 1). An equal
  /// g changes nothing.
  void resize(tessarn::slong g);
  /// c(i, j), the coefficient of x^i y^j, the power of x first; 0.0 outside the range.
  tessarn::real get(tessarn::slong i, tessarn::slong j) { return std::as_const(*this).get(i, j); }
  /// Stores c(i, j), NaN and infinities as they are; nothing outside the range, which does not grow.
  void set(tessarn::slong i, tessarn::slong j, tessarn::real v) {
    if (inside(i, j)) cof[grade * j + i] = v;
  }
  /// The grade: the number of powers of each variable, one more than the highest.
  tessarn::ulong getgrade() { return static_cast<tessarn::ulong>(grade); }
  /// A deep copy, after which the two share nothing; `p.copy(p)` changes nothing.
  /// Throws: std::bad_alloc; this polynomial is then empty.
  void copy(hyperbinom& src);
  /// copy(src), then this polynomial as a constant.
  const hyperbinom& operator=(hyperbinom& src);

  /// p(x, y) by running products: the terms (y^j x^i) c(i, j) are added row by row, powers of x ascending; 0.0 for a
  /// grade below 1.
  /// Cost: O(g^2).
  tessarn::real func(tessarn::real x, tessarn::real y);
  /// The sum and difference; the grade becomes the larger one. When q has the larger grade this polynomial first loses
  /// its terms with a power of y, as resize() says. q may be this polynomial.
  void operator+=(hyperbinom& q);
  void operator-=(hyperbinom& q);
  /// The product, of grade g + gq - 1; a factor of grade 0 leaves a table of zeros, and two of them the grade -1. `p *=
  /// p` squares.
  /// Cost: O(g^2 gq^2).
  void operator*=(hyperbinom& q);
  /// Every coefficient times s.
  void operator*=(tessarn::real s);

  /// Fits the g g coefficients of a surface through n points by least squares: minimises the sum of (p(x, y) - z)^2.
  /// Every point takes part: there is no marker, unlike binom::create. Sums that a NaN makes NaN count as 0.
  ///
  /// Method: sums of products of correctly rounded powers, point k in partial sum k mod 8, and the square solver.
  /// Normal equations lose twice the digits that the condition of the problem costs: shift and scale x and y.
  /// Failure: points that do not determine the coefficients, such as fewer than g g or all on a line, leave the
  /// right-hand side, the sums of y^j x^i z, in them. This is not reported: compare the residuals, or use
  /// tessarn/fit.h.
  /// Throws: std::bad_array_new_length for grades from 256 on, the polynomial as it was; std::bad_alloc, the polynomial
  /// empty or with zeros.
  /// Cost: O(n g^2 + g^6), and memory for g^4 numbers, whatever n is: grades are meant to stay small.
  void create(vector3d* pts, tessarn::ulong n, tessarn::ulong g);
  /// The fit with a weight for each point, w[k] for pts[k]: minimises the sum of (w (p(x, y) - z))^2. Weights act on
  /// residuals, not on their squares: a point of weight 2 counts as four. The sign does not matter, and a weight of 0
  /// leaves a finite point out.
  void create(vector3d* pts, tessarn::real* w, tessarn::ulong n, tessarn::ulong g);

  /// \name For constants and temporaries
  /// The members above for const objects and operands, with their results and failures. Assignments return this
  /// polynomial. A move allocates nothing and empties its source.
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
  /// Pointers to constants, and counts of 64 bits, which throw std::bad_array_new_length when they do not fit 32; the
  /// polynomial is then as it was.
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

  /// The fit through a container of points: anything with data() and size(), such as std::vector<vector3d>. An empty
  /// container gives g g zeros.
  template <class Points, class G, class = tessarn::detail::if_container<Points, vector3d>>
  void create(const Points& pts, G g) {
    create(tessarn::detail::mutable_pointer<vector3d>(pts.data()), tessarn::detail::count(pts.size()),
           tessarn::detail::count(g));
  }

  /// func() at the n points (x[k], y[k]), with the same bits, written to z; z may be x or y, but must not overlap them
  /// otherwise. Allocates nothing.
  void func(const tessarn::real* x, const tessarn::real* y, tessarn::real* z, tessarn::ulong n) const;

  /// \name Additions
  /// @{
  /// The polynomial with these rows: row j holds the coefficients of y^j, the power 0 of x first. The number of rows
  /// and the longest row decide the grade; what is missing is 0.
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
  /// A polynomial with the same table, its own. Cost: O(g^2).
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
  /// After the virtual table pointer, in this order: the binary layout of the class. How many objects share the table
  /// is counted in the library; derived classes leave the pointer to the members.
  tessarn::slong grade;
  tessarn::real* cof;

  /// The value x^(k mod g) y^(k div g) of the basis function of table entry k, correctly rounded powers for exponents
  /// from 0 on; the grade must not be 0, by which k would be divided.
  tessarn::real getvec(tessarn::slong k, tessarn::real x, tessarn::real y);

 private:
  // The compiled members are declared with non-const references, also where they change nothing.
  hyperbinom& self() const noexcept { return tessarn::detail::mutable_ref(*this); }
  static hyperbinom& other(const hyperbinom& p) noexcept { return tessarn::detail::mutable_ref(p); }
  // Whether the table has c(i, j).
  bool inside(tessarn::slong i, tessarn::slong j) const noexcept { return i >= 0 && i < grade && j >= 0 && j < grade; }
  // Makes the polynomial empty without releasing the table, which has another holder now.
  void forget() noexcept {
    grade = 0;
    cof = nullptr;
  }
};
