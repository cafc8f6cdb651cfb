// The surface fits: normal equations from sums of products of powers, solved by the square solver.
#include <algorithm>
#include <new>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/linear_system.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::linear_system;
using tessarn::detail::nan_to_zero;
using tessarn::detail::partial_sums;
using tessarn::detail::point_block;
using tessarn::detail::real_array;

namespace {

// The system has g g x g g entries; a larger grade has more of them than 32 bits count.
constexpr slong largest_grade = 255;

// The distinct sums of the normal equations, side * side sums of y^b x^a, a, b < side = 2 g - 1, and g * g moments of
// y^j x^i z, each in partial sums over the points in their order. With weights a point's terms are (y^b x^a)(w w) and
// (y^j x^i)((w z) w). The points pass through a few blocks of fixed size, except for the grade 2, whose points are
// added as they lie in memory. Point k is in partial sum k mod 8 either way.
class surface_sums {
 public:
  explicit surface_sums(tessarn::ulong g)
      : g_(g),
        side_(2 * g_ - 1),
        storage_(tessarn::detail::allocate(cache_line + length() + most_blocks * stride())),
        sums_(tessarn::detail::as_doubles(tessarn::detail::whole_cache_line(storage_.get()))),
        moments_(sums_ + side_ * side_ * partial_sums),
        blocks_(sums_ + length()) {
    std::fill_n(sums_, length(), 0.0);
    for (double* px = blocks_; px < blocks_ + most_blocks * stride(); px += stride()) {
      std::fill_n(px, point_block, 1.0);
      std::fill_n(px + rows() * point_block, point_block, 1.0);
    }
  }

  // Blocks are added when most_blocks of them are full, which loads and stores the sums once for all, or at the end.
  void run(const vector3d* pts, const real* w, std::size_t n) {
    static_assert(sizeof(vector3d) == 4 * sizeof(double), "four doubles a point, as the kernel takes them");
    std::size_t filled = 0;
    for (std::size_t first = g_ == 2 ? add_whole_groups(pts, w, n) : 0; first < n; first += point_block) {
      fill(blocks_ + filled * stride(), pts + first, w ? w + first : nullptr, std::min(n - first, point_block));
      if (++filled < most_blocks && n - first > point_block) continue;
      kernels_.add_products({blocks_, filled, rows(), stride()}, w != nullptr, static_cast<unsigned>(g_), sums_,
                            moments_);
      filled = 0;
    }
    close();
    if (!w) sums_[0] = static_cast<double>(n);
  }

  // After run. Every sum that is a NaN has become 0.
  real power(std::size_t b, std::size_t a) const { return sums_[side_ * b + a]; }
  real moment(std::size_t j, std::size_t i) const { return sums_[side_ * side_ + g_ * j + i]; }

 private:
  static constexpr std::size_t cache_line = 64 / sizeof(real);
  static constexpr std::size_t most_blocks = 2;

  std::size_t length() const { return (side_ * side_ + g_ * g_) * partial_sums; }
  // Rows of powers: at least those of power 0, which is 1 all the time, and of power 1, which takes the coordinates.
  std::size_t rows() const { return std::max<std::size_t>(side_, 2); }
  std::size_t stride() const { return (2 * rows() + 2) * point_block; }
  // Adds the points of grade 2 in whole groups of partial_sums, and returns how many it has added.
  std::size_t add_whole_groups(const vector3d* pts, const real* w, std::size_t n) {
    constexpr std::size_t part = 512;  // stays in the cache: with two lanes the kernel passes over it four times
    const std::size_t end = n - n % partial_sums;
    for (std::size_t first = 0; first < end; first += part)
      kernels_.add_points(reinterpret_cast<const double*>(pts + first),
                          w ? tessarn::detail::as_doubles(w + first) : nullptr, std::min(part, end - first), sums_,
                          moments_);
    return end;
  }
  // Fills the rows of a block from count points and their weights: coordinates, powers, weighted ordinates.
  void fill(double* px, const vector3d* pts, const real* w, std::size_t count) const {
    double* py = px + rows() * point_block;
    double* z = py + rows() * point_block;
    bool with_powers = false;
    if (count == point_block)
      with_powers = kernels_.unpack_space(reinterpret_cast<const double*>(pts), side_, px, py, z);
    else
      unpack_rest(pts, count, px + point_block, py + point_block, z);
    if (w) apply_weights(w, count, z);
    if (with_powers) return;
    tessarn::detail::block_powers(static_cast<unsigned>(side_), px);
    tessarn::detail::block_powers(static_cast<unsigned>(side_), py);
  }
  // Fewer points than a block has, and zeros behind them.
  void unpack_rest(const vector3d* pts, std::size_t count, double* x, double* y, double* z) const {
    for (std::size_t i = 0; i < point_block; ++i) {
      x[i] = i < count ? static_cast<double>(pts[i].x) : 0;
      y[i] = i < count ? static_cast<double>(pts[i].y) : 0;
      z[i] = i < count ? static_cast<double>(pts[i].z) : 0;
    }
  }
  void apply_weights(const real* w, std::size_t count, double* z) const {
    double filled[point_block] = {};
    if (count < point_block) std::copy_n(w, count, filled);
    kernels_.apply_weights(count < point_block ? filled : tessarn::detail::as_doubles(w), z);
  }
  // Each sum takes the place of partial sums that went into one before it.
  void close() {
    for (std::size_t k = 0; k < length() / partial_sums; ++k)
      sums_[k] = static_cast<double>(nan_to_zero(tessarn::detail::tree_sum(sums_ + k * partial_sums)));
  }

  const tessarn::detail::poly_kernels& kernels_ = tessarn::detail::poly_kernels_in_use();
  const std::size_t g_, side_;
  const real_array storage_;  // the sums, and blocks
  double* const sums_;
  double* const moments_;
  double* const blocks_;
};

// The normal equations in the order of the coefficients, y^j x^i at g j + i. An entry depends on the sums of the
// exponents of its row and its column only.
void set_up(const surface_sums& s, std::size_t g, linear_system& system) {
  for (std::size_t r = 0; r < g * g; ++r) {
    const std::size_t j = r / g, i = r % g;
    real* to = system.row(r);
    for (std::size_t b = 0; b < g; ++b)
      for (std::size_t a = 0; a < g; ++a) *to++ = s.power(j + b, i + a);
    system.right()[r] = s.moment(j, i);
  }
}

}  // namespace

void hyperbinom::create(vector3d* pts, tessarn::ulong n, tessarn::ulong g) { create(pts, nullptr, n, g); }

void hyperbinom::create(vector3d* pts, real* w, tessarn::ulong n, tessarn::ulong g) {
  if (static_cast<slong>(g) > largest_grade) throw std::bad_array_new_length();
  create(static_cast<slong>(g));
  if (grade < 1) return;
  surface_sums sums(g);
  sums.run(pts, w, n);
  linear_system system(g * g);
  set_up(sums, g, system);
  system.solve();
  std::copy_n(system.right(), system.size(), cof);
}
