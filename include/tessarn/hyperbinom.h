/// \file
/// The polynomial in two variables.
#pragma once

#include <initializer_list>

#include "tessarn/detail/overloads.h"
#include "tessarn/scalar.h"
#include "tessarn/vectors.h"

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
  bool inside(tessarn::slong i, tessarn::slong j) const noexcept { return i >= 0 && i < grade && j >= 0 && j < grade; }
  void forget() noexcept {
    grade = 0;
    cof = nullptr;
  }
};
