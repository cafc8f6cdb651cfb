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
using tessarn::detail::point_block;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

namespace {

// Beyond it 32 bits do not count the entries of the g g x g g system.
constexpr slong largest_grade = 255;

// The distinct sums of the normal equations, side * side sums of y^b x^a, a, b < side = 2 g - 1, and g * g moments of
// y^j x^i z. Each sum runs over the points in their order from +0.0. With weights a point's terms are (y^b x^a)(w w)
// and (y^j x^i)((w z) w). The points pass through a block of fixed size.
class surface_sums {
 public:
  explicit surface_sums(tessarn::ulong g)
      : g_(g),
        side_(2 * g - 1),
        stride_((side_ + 7) / 8 * 8),
        sums_(tessarn::detail::allocate_zeroed((side_ + g_) * stride_)),
        work_(tessarn::detail::allocate((2 * side_ + stride_) * point_block)) {
    for (double& x : x_) x = 1;
    for (double& y : y_) y = 1;
    std::fill_n(work_.get() + 2 * side_ * point_block, stride_ * point_block, static_cast<real>(0));
  }

  void run(const vector3d* pts, const real* w, tessarn::ulong n) {
    for (tessarn::ulong first = 0; first < n; first += point_block) {
      const std::size_t count = std::min<std::size_t>(n - first, point_block);
      for (std::size_t i = 0; i < count; ++i) {
        const vector3d& p = pts[first + i];
        x_[i] = static_cast<double>(p.x);
        y_[i] = static_cast<double>(p.y);
        z_[i] = static_cast<double>(w ? (w[first + i] * p.z) * w[first + i] : p.z);
        if (w) w_[i] = static_cast<double>(w[first + i] * w[first + i]);
      }
      add(w != nullptr, count);
    }
  }

  real power(std::size_t b, std::size_t a) const { return sums_[b * stride_ + a]; }
  real moment(std::size_t j, std::size_t i) const { return sums_[(side_ + j) * stride_ + i]; }

 private:
  void add(bool weighted, std::size_t count) {
    double* px = tessarn::detail::as_doubles(work_.get());
    double* py = px + side_ * point_block;
    tessarn::detail::block_powers(x_, static_cast<unsigned>(side_), px);
    tessarn::detail::block_powers(y_, static_cast<unsigned>(side_), py);
    double* sums = tessarn::detail::as_doubles(sums_.get());
    tessarn::detail::poly().add_products(px, py, weighted ? w_ : nullptr, z_, count, static_cast<unsigned>(g_), stride_,
                                         py + side_ * point_block, sums, sums + side_ * stride_);
  }

  const std::size_t g_, side_, stride_;
  real_array sums_, work_;
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
