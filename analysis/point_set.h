// Points of the plane or of space about a reference among them, in doubled precision.
#pragma once

#include <cstddef>

#include "analysis/point_arrays.h"

namespace tessarn::analysis {

// The columns of the caller, D of them, and whether a point is to count.
template <int D>
struct point_columns {
  column_view c[D];

  std::size_t size() const noexcept { return c[0].size(); }
  bool sizes_agree() const noexcept {
    for (int k = 1; k < D; ++k)
      if (c[k].size() != c[0].size()) return false;
    return true;
  }
  bool finite(std::size_t i) const noexcept {
    for (int k = 0; k < D; ++k)
      if (!is_finite(c[k][i])) return false;
    return true;
  }
};

inline point_columns<2> columns_of(const plane_points& p) noexcept { return {{p.x, p.y}}; }
inline point_columns<3> columns_of(const space_points& p) noexcept { return {{p.x, p.y, p.z}}; }

// Coordinates relative to a reference point, which is one of the points, in units of a power of two: differences of two
// doubles are exact in doubled precision, so points far from the origin keep all their digits. The largest coordinate
// in magnitude is between 1 and 2 then.
template <int D>
class local_points {
 public:
  // No points.
  local_points() noexcept = default;
  // The reference is point number `first` of the caller. The points that count are those of the arrays.
  local_points(const point_columns<D>& columns, std::size_t first, const point_arrays& points) noexcept
      : columns_(columns) {
    for (int k = 0; k < D; ++k) {
      reference_[k] = columns.c[k][first];
      largest_[k] = std::max(std::fabs(points.least(k)), std::fabs(points.greatest(k)));
      // Differences of coordinates above 2^1000 are formed in units of 2^60, in which they do not overflow.
      shift_[k] = largest_[k] > 0x1p1000 ? 60 : 0;
      widths_[k] = std::max(magnitude(difference(k, points.least(k))), magnitude(difference(k, points.greatest(k))));
    }
  }

  // False when all points are equal.
  bool choose_unit() noexcept {
    bool any = false;
    for (int k = 0; k < D; ++k) {
      if (widths_[k] == 0) continue;
      const int e = exponent_of(widths_[k]) + shift_[k];
      exponent_ = any && exponent_ > e ? exponent_ : e;
      any = true;
    }
    return any;
  }

  // A number of the unit of the caller as coordinate k; of point i.
  doubled local(int k, double v) const noexcept { return scaled(difference(k, v), shift_[k] - exponent_); }
  doubled local_of(int k, std::size_t i) const noexcept { return local(k, columns_.c[k][i]); }
  // A local coordinate as a number in units of 2^shift(k).
  doubled global(int k, doubled v) const noexcept {
    return doubled(scaled(reference_[k], -shift_[k])) + scaled(v, exponent_ - shift_[k]);
  }
  // The points as the kernels take them, about a double that is near `centre`; `rest` is what is left of the centre.
  // (No product overflows: a coordinate that is not constant is at most 2^54 times as large as its width.)
  detail::local_columns kernel_columns(const point_arrays& points, const doubled (&centre)[D],
                                       doubled (&rest)[D]) const noexcept {
    const detail::result_scale unit = scale_of(-exponent_);
    detail::local_columns c{};
    for (int k = 0; k < D; ++k) {
      c.c[k] = points.column(k);
      for (int i = 0; i < 2; ++i) c.factors[k][i] = constant(k) ? 0 : unit.factors[i];
      const double reference = reference_[k] * c.factors[k][0] * c.factors[k][1];
      c.origin[k] = (doubled(reference) + centre[k]).high;
      rest[k] = centre[k] - exact_sum(c.origin[k], -reference);
    }
    return c;
  }

  // Whether all points agree in this coordinate.
  bool constant(int k) const noexcept { return widths_[k] == 0; }
  int shift(int k) const noexcept { return shift_[k]; }
  int exponent() const noexcept { return exponent_; }

  // The sum of the squares of the largest coordinates in magnitude, in local units; coordinates in which all points
  // agree do not count. 2^-53 of its root is what the rounding of the coordinates to doubles may have moved a point.
  double squared_magnitude() const noexcept {
    double sum = 0;
    for (int k = 0; k < D; ++k) {
      if (widths_[k] == 0) continue;
      const double v = scaled(largest_[k], -exponent_);
      sum += v * v;
    }
    return sum;
  }

 private:
  doubled difference(int k, double v) const noexcept {
    const double unit = shift_[k] == 0 ? 1 : 0x1p-60;
    return exact_sum(v * unit, -reference_[k] * unit);
  }

  point_columns<D> columns_;
  double reference_[D] = {}, largest_[D] = {}, widths_[D] = {};
  int shift_[D] = {}, exponent_ = 0;
};

}  // namespace tessarn::analysis
