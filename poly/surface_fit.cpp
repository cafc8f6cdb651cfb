// The surface fits: normal equations from sums of products of powers, solved by the square solver.
#include <algorithm>
#include <new>

#include "core/access.h"
#include "core/nan_rule.h"
#include "core/storage.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::computed;
using tessarn::detail::partial_sums;
using tessarn::detail::point_block;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

namespace {

// Beyond it 32 bits do not count the entries of the g g x g g system.
constexpr slong largest_grade = 255;

// The distinct sums of the normal equations, side * side sums of y^b x^a, a, b < side = 2 g - 1, and g * g moments of
// y^j x^i z, each in partial sums over the points in their order. With weights a point's terms are (y^b x^a)(w w) and
// (y^j x^i)((w z) w). The points pass through a block of fixed size.
class surface_sums {
 public:
  explicit surface_sums(tessarn::ulong g)
      : g_(g),
        side_(2 * g_ - 1),
        sums_(tessarn::detail::allocate_zeroed((side_ * side_ + g_ * g_) * partial_sums)),
        powers_(tessarn::detail::allocate(2 * side_ * point_block)) {}

  void run(const vector3d* pts, const real* w, tessarn::ulong n) {
    static_assert(sizeof(vector3d) == 4 * sizeof(double), "four doubles a point, as the kernel takes them");
    for (tessarn::ulong first = 0; first < n; first += point_block) {
      const std::size_t count = std::min<std::size_t>(n - first, point_block);
      if (count == point_block)
        tessarn::detail::poly().unpack_space(reinterpret_cast<const double*>(pts + first), x_, y_, z_);
      else
        unpack_rest(pts + first, count);
      if (w) apply_weights(w + first, count);
      add(w != nullptr, count);
    }
  }

  real power(std::size_t b, std::size_t a) const { return sum(side_ * b + a); }
  real moment(std::size_t j, std::size_t i) const { return sum(side_ * side_ + g_ * j + i); }

 private:
  void unpack_rest(const vector3d* pts, std::size_t count) {
    for (std::size_t i = 0; i < point_block; ++i) {
      x_[i] = y_[i] = 1;
      z_[i] = 0;
      if (i >= count) continue;
      x_[i] = static_cast<double>(pts[i].x);
      y_[i] = static_cast<double>(pts[i].y);
      z_[i] = static_cast<double>(pts[i].z);
    }
  }
  // Makes w w and (w z) w of the weights and ordinates.
  void apply_weights(const real* w, std::size_t count) {
    for (std::size_t i = 0; i < point_block; ++i) {
      const auto weight = static_cast<double>(i < count ? w[i] : 0);
      z_[i] = (weight * z_[i]) * weight;
      w_[i] = weight * weight;
    }
  }
  real sum(std::size_t k) const {
    return tessarn::detail::tree_sum(tessarn::detail::as_doubles(sums_.get()) + k * partial_sums);
  }
  void add(bool weighted, std::size_t count) {
    const auto exponents = static_cast<unsigned>(side_);
    double* px = tessarn::detail::as_doubles(powers_.get());
    double* py = px + side_ * point_block;
    tessarn::detail::block_powers(x_, exponents, px);
    tessarn::detail::block_powers(y_, exponents, py);
    tessarn::detail::clear_rows(px, exponents, count);
    double* sums = tessarn::detail::as_doubles(sums_.get());
    tessarn::detail::poly().add_products(px, py, weighted ? w_ : nullptr, z_, static_cast<unsigned>(g_), sums,
                                         sums + side_ * side_ * partial_sums);
  }

  const std::size_t g_, side_;
  real_array sums_, powers_;
  double x_[point_block], y_[point_block], z_[point_block], w_[point_block];
};

// The sum in row r and column c depends on the exponents' sums only. Every sum that is a NaN becomes 0.
real_mat solved(const surface_sums& s, tessarn::ulong g) {
  const tessarn::ulong unknowns = g * g;
  real_mat b;
  b.create(1, unknowns);
  real_sqmat a;
  a.create(unknowns);
  for (tessarn::ulong r = 0; r < unknowns; ++r) {
    for (tessarn::ulong c = 0; c < unknowns; ++c)
      a.getData()[static_cast<std::size_t>(r) * unknowns + c] = computed(s.power(r / g + c / g, r % g + c % g));
    b.getData()[r] = computed(s.moment(r / g, r % g));
  }
  a.solve(b);
  return b;
}

}  // namespace

void hyperbinom::create(vector3d* pts, tessarn::ulong n, tessarn::ulong g) { create(pts, nullptr, n, g); }

void hyperbinom::create(vector3d* pts, real* w, tessarn::ulong n, tessarn::ulong g) {
  if (static_cast<slong>(g) > largest_grade) throw std::bad_array_new_length();
  create(static_cast<slong>(g));
  if (grade < 1) return;
  surface_sums sums(g);
  sums.run(pts, w, n);
  const real_mat solution = solved(sums, g);
  const tessarn::ulong unknowns = g * g;
  for (tessarn::ulong k = 0; k < unknowns; ++k) cof[k] = solution.getData()[k];
}
