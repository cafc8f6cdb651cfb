// Matching of point sets: rigid and affine transforms as 4 x 4 matrices.
#include <algorithm>
#include <cmath>

#include "core/binary_form.h"
#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/decompose.h"
#include "matrix/elimination.h"
#include "matrix/kernels/kernels.h"
#include "matrix/names.h"
#include "tessarn/vectors.h"

using tessarn::real;
using tessarn::detail::as_doubles;
using tessarn::detail::exponent_of;
using tessarn::detail::nan_to_zero;
using tessarn::detail::power_of_two;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;
using tessarn::detail::without_quiet_nan;

namespace {

constexpr real determinant_tolerance = static_cast<real>(0.001);

// Sums of coordinates, centred coordinates and sums of their products are formed as they are up to these magnitudes
// and down to their reciprocals.
constexpr real largest_summed = static_cast<real>(0x1p900);
constexpr real safe_factor = static_cast<real>(0x1p450);
constexpr real safe_covariance = static_cast<real>(0x1p900);

static_assert(sizeof(vector3d) == 32, "the kernels step from point to point by four reals");

struct point {
  real c[3];
};

struct matrix_3 {
  real entries[9];  // row by row
};

// The coordinates of a point under the quiet-NaN rule.
point coordinates(const vector3d& v) {
  return {{without_quiet_nan(v.x), without_quiet_nan(v.y), without_quiet_nan(v.z)}};
}

// The coordinates of a point under the quiet-NaN rule, multiplied by a power of two. The product makes a signalling NaN
// quiet.
point coordinates(const vector3d& v, real factor) {
  point p = coordinates(v);
  for (real& c : p.c) c *= factor;
  return p;
}

void raise_to_magnitudes(real& largest, const point& p) {
  for (const real c : p.c) largest = std::max(largest, std::fabs(c));
}

real largest_coordinate(const vector3d* points, tessarn::ulong n) {
  real largest = 0;
  for (tessarn::ulong i = 0; i < n; ++i) raise_to_magnitudes(largest, coordinates(points[i]));
  return largest;
}

// The factor for coordinates of this largest magnitude, so that neither their sums overflow nor their mean loses
// digits.
real summing_factor(real largest) {
  if (largest > largest_summed && std::isfinite(largest)) return static_cast<real>(0x1p-100);
  return largest < 1 / largest_summed ? static_cast<real>(0x1p200) : static_cast<real>(1);
}

// The factor for centred coordinates of this largest magnitude, so that their products neither overflow nor vanish.
real product_factor(real largest) {
  if (largest == 0 || !std::isfinite(largest) || (largest > 1 / safe_factor && largest < safe_factor)) return 1;
  return power_of_two(std::clamp(-exponent_of(largest), -1000, 1000));
}

// Points with their centroid, multiplied by powers of two so that no sum or product of them overflows or underflows. A
// power of two changes no direction, and of the bits only the exponents. The factors are 1 where none is needed, and
// where infinite coordinates leave none that helps.
struct centred_points {
  const vector3d* points;
  real factor;  // of the coordinates before they are summed
  point centroid{{0, 0, 0}};
  real centred_factor = 1;  // of the coordinates less the centroid

  centred_points(const vector3d* p, tessarn::ulong n) : points(p), factor(summing_factor(largest_coordinate(p, n))) {
    for (tessarn::ulong i = 0; i < n; ++i) {
      const point q = coordinates(points[i], factor);
      for (int k = 0; k < 3; ++k) centroid.c[k] += q.c[k];
    }
    const real r = 1 / static_cast<real>(n);
    for (real& c : centroid.c) c *= r;
    real largest = 0;
    for (tessarn::ulong i = 0; i < n; ++i) raise_to_magnitudes(largest, at(i));
    centred_factor = product_factor(largest);
  }
  point at(tessarn::ulong i) const {
    point p = coordinates(points[i], factor);
    for (int k = 0; k < 3; ++k) p.c[k] = nan_to_zero(p.c[k] - centroid.c[k]) * centred_factor;
    return p;
  }
};

// H[r][c] = sum of (b - cb)_r (a - ca)_c over the pairs in order, the rule applied to every step, divided by n. Where
// products of the centred coordinates could vanish or overflow it is a multiple of H by a power of two.
matrix_3 cross_covariance(const vector3d* a, const vector3d* b, tessarn::ulong n) {
  const centred_points from(a, n), to(b, n);
  matrix_3 h{};
  for (tessarn::ulong i = 0; i < n; ++i) {
    const point q = from.at(i);
    const point p = to.at(i);
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) {
        real& entry = h.entries[3 * r + c];
        entry = nan_to_zero(entry + nan_to_zero(p.c[r] * q.c[c]));
      }
  }
  for (real& entry : h.entries) entry = nan_to_zero(entry / static_cast<real>(n));
  return h;
}

// H by the vector kernels, for coordinates that need no scaling; false when H has to be formed by cross_covariance. The
// kernels do not apply the NaN rule, but a NaN stays in every sum that it enters, so sums without a NaN are the sums
// under the rule. When the largest entry of H lies in the safe range, no product overflowed, and the products that
// underflowed are too small to change it.
bool ordinary_cross_covariance(const vector3d* a, const vector3d* b, tessarn::ulong n, matrix_3& h) {
  const tessarn::detail::matrix_kernels& kernels = tessarn::detail::matrix_kernels_in_use();
  double sums[6], products[9];
  kernels.sum_points(as_doubles(&a->x), as_doubles(&b->x), n, sums);
  const double r = 1 / static_cast<double>(n);
  for (double& s : sums) s *= r;
  kernels.sum_products(as_doubles(&a->x), as_doubles(&b->x), n, sums, sums + 3, products);
  bool finite = true;
  real largest = 0;
  for (int k = 0; k < 9; ++k) {
    finite &= std::fabs(products[k]) < static_cast<double>(safe_covariance);
    h.entries[k] = products[k] / static_cast<double>(n);
    largest = std::max(largest, std::fabs(h.entries[k]));
  }
  return finite && largest > 1 / safe_covariance;
}

bool is_rotation_or_reflection(real determinant) {
  return !(std::fabs(std::fabs(determinant) - 1) > determinant_tolerance);
}

// V U', each entry the sum over k ascending from +0.0, under the NaN rule.
matrix_3 times_transposed(const matrix_3& v, const matrix_3& u) {
  matrix_3 product;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) {
      real sum = 0;
      for (int k = 0; k < 3; ++k) sum += v.entries[3 * r + k] * u.entries[3 * c + k];
      product.entries[3 * r + c] = nan_to_zero(sum);
    }
  return product;
}

// V U' as a rotation, with the third column of V negated when it comes out as a reflection; false when the
// determinant is not near 1 in magnitude.
bool rotation_from(const matrix_3& h, matrix_3& rotation) {
  matrix_3 u, s, v;
  tessarn::detail::decompose(h.entries, 3, 3, u.entries, s.entries, v.entries);
  rotation = times_transposed(v, u);
  const real determinant = tessarn::detail::determinant(rotation.entries, 3);
  if (!is_rotation_or_reflection(determinant)) return false;
  if (determinant >= 0) return true;
  for (int r = 0; r < 3; ++r) v.entries[3 * r + 2] = without_quiet_nan(-v.entries[3 * r + 2]);
  rotation = times_transposed(v, u);
  return is_rotation_or_reflection(tessarn::detail::determinant(rotation.entries, 3));
}

// The mean of b - R a, summed in order under the NaN rule, of points of this largest coordinate. Where the sums could
// overflow they are those of a multiple by a power of two.
point translation_by_rule(const vector3d* a, const vector3d* b, tessarn::ulong n, const real* R, real largest) {
  const real factor = largest > largest_summed ? summing_factor(largest) : 1;
  point sum{};
  for (tessarn::ulong i = 0; i < n; ++i) {
    const point pa = coordinates(a[i], factor);
    const point pb = coordinates(b[i], factor);
    for (int r = 0; r < 3; ++r) {
      real turned = 0;
      for (int k = 0; k < 3; ++k) turned += R[3 * r + k] * pa.c[k];
      sum.c[r] = nan_to_zero(sum.c[r] + nan_to_zero(pb.c[r] - turned));
    }
  }
  for (real& c : sum.c) c = nan_to_zero(c / static_cast<real>(n)) / factor;
  return sum;
}

// The mean of b - R a by the vector kernel; by translation_by_rule when the kernel meets a NaN or an infinity.
point translation_of(const vector3d* a, const vector3d* b, tessarn::ulong n, const matrix_3& rotation) {
  const real* R = rotation.entries;
  point sum;
  tessarn::detail::matrix_kernels_in_use().sum_residuals(as_doubles(&a->x), as_doubles(&b->x), n, as_doubles(R),
                                                         as_doubles(sum.c));
  if (!(std::isfinite(sum.c[0]) && std::isfinite(sum.c[1]) && std::isfinite(sum.c[2])))
    return translation_by_rule(a, b, n, R, std::max(largest_coordinate(a, n), largest_coordinate(b, n)));
  for (real& c : sum.c) c = nan_to_zero(c / static_cast<real>(n));
  return sum;
}

}  // namespace

// The rotation comes from the singular value decomposition of the cross-covariance, the translation from the means.
// Fast kernels form the sums where the coordinates need neither scaling nor the quiet-NaN rule. The matrix is built
// apart, so that a failure changes nothing.
bool real_sqmat::calc_match(vector3d* a, vector3d* b, tessarn::ulong n) {
  if (a == nullptr || b == nullptr || n < 3) return false;
  matrix_3 covariance, rotation;
  if (!ordinary_cross_covariance(a, b, n, covariance)) covariance = cross_covariance(a, b, n);
  if (!rotation_from(covariance, rotation)) return false;
  const point translation = translation_of(a, b, n, rotation);
  sqmat matched;
  matched.create(4);
  std::fill_n(matched.data, 16, static_cast<real>(0));
  for (int r = 0; r < 3; ++r) {
    real* row = matched.data + 4 * r;
    for (int c = 0; c < 3; ++c) row[c] = rotation.entries[3 * r + c];
    row[3] = translation.c[r];
  }
  matched.data[15] = 1;
  *this = static_cast<sqmat&&>(matched);
  return true;
}

// Row by row, each a least-squares fit of one coordinate of b by (x, y, z, 1) of a; the last row fits the constant 1.
void real_sqmat::calc_transform(vector3d* a, vector3d* b, tessarn::ulong n) {
  tessarn::detail::require_countable(4, n);
  real_mat system;
  system.create(4, n);
  real_mat ordinates;
  ordinates.create(1, n);
  sqmat fitted;
  fitted.create(4);
  real* row_of_a = system.getData();
  for (tessarn::ulong i = 0; i < n; ++i, row_of_a += 4) {
    const point p = coordinates(a[i]);
    std::copy_n(p.c, 3, row_of_a);
    row_of_a[3] = 1;
  }
  constexpr real vector3d::*coordinate[] = {&vector3d::x, &vector3d::y, &vector3d::z};
  for (tessarn::ulong r = 0; r < 4; ++r) {
    real* ordinate = ordinates.getData();
    for (tessarn::ulong i = 0; i < n; ++i) ordinate[i] = r < 3 ? without_quiet_nan(b[i].*coordinate[r]) : 1;
    real_mat row;
    row.solve(system, ordinates);
    for (tessarn::ulong k = 0; k < 4; ++k) fitted.set(k, r, row.get(0, k));
  }
  *this = static_cast<sqmat&&>(fitted);
}

void real_sqmat::transform(vector3d& in, vector3d& out) {
  if (size != 4) return;
  const real x = in.x, y = in.y, z = in.z;
  const auto component = [&](const real* row) { return (row[1] * y + row[0] * x) + (row[2] * z + row[3]); };
  out.x = component(data);
  out.y = component(data + 4);
  out.z = component(data + 8);
}

void real_sqmat::transform(const vector3d* in, vector3d* out, tessarn::ulong n) const {
  for (tessarn::ulong i = 0; i < n; ++i) transform(in[i], out[i]);
}
