// A quadratic model of the sum of squared residuals around a normal, and how far the sums can be from it.
#include "geometry/residual_model.h"

#include <algorithm>
#include <cmath>

namespace tessarn::detail {
namespace {

constexpr double u = 0x1p-53;
constexpr double least_z = 0.3;

}  // namespace

residual_model::residual_model(const residual_form& f, bool usable) {
  const double unit = f.second[0] + f.second[1] + f.second[2];
  const auto moment = [&](int k, int a, int b) { return (f.second[k] - f.count * f.mean[a] * f.mean[b]) / unit; };
  xx_ = moment(0, 0, 0);
  yy_ = moment(1, 1, 1);
  zz_ = moment(2, 2, 2);
  xy_ = moment(3, 0, 1);
  xz_ = moment(4, 0, 2);
  yz_ = moment(5, 1, 2);
  cross_ = std::sqrt(xz_ * xz_ + yz_ * yz_);
  const double residual = f.residual_margin / std::sqrt(unit);
  error_ = 1.1 * f.mean_margin / unit + 0x1p46 * residual * residual;
  factor_ = f.factor + 0x1p-43;
  // The product of the three principal moments is at most a quarter of the least one, since the others sum up to 1 or
  // less. Above 1000 u its own roundings and those of the moments do not matter, and no moment is negative.
  const double product = xx_ * (yy_ * zz_ - yz_ * yz_) - xy_ * (xy_ * zz_ - yz_ * xz_) + xz_ * (xy_ * yz_ - yy_ * xz_);
  usable_ = usable && product > 1000 * u && product > error_;
}

// Takes (x, y) for the base. False where the normal is too steep.
bool residual_model::expand(double x, double y) {
  const double z2 = 1 - x * x - y * y;
  if (!(z2 >= least_z * least_z) || (reach_ >= 0 && x == x_ && y == y_)) return false;
  const double z = std::sqrt(z2);
  const double reciprocal = 1 / z;
  const double cube = reciprocal * reciprocal * reciprocal;
  const double zx = -x * reciprocal, zy = -y * reciprocal;
  const double bx = 2 * xz_, by = 2 * yz_, b = bx * x + by * y;
  const double a_x = xx_ - zz_, a_y = yy_ - zz_;
  x_ = x;
  y_ = y;
  slope_x_ = 2 * (a_x * x + xy_ * y) + zx * b + z * bx;
  slope_y_ = 2 * (a_y * y + xy_ * x) + zy * b + z * by;
  curve_xx_ = 2 * a_x - (1 - y * y) * cube * b + 2 * zx * bx;
  curve_yy_ = 2 * a_y - (1 - x * x) * cube * b + 2 * zy * by;
  curve_xy_ = 2 * xy_ - x * y * cube * b + zx * by + zy * bx;
  third_ = 7.2 * cross_ * cube * reciprocal * reciprocal;
  reach_ = z2 / 32;
  const double value = zz_ + a_x * x * x + a_y * y * y + 2 * xy_ * x * y + z * b;
  const double curve = std::fabs(curve_xx_) + std::fabs(curve_yy_) + 2 * std::fabs(curve_xy_) + third_ * reach_;
  const double greatest = value + reach_ * (std::fabs(slope_x_) + std::fabs(slope_y_) + reach_ * curve);
  margin_ = 2.2 * (error_ + factor_ * greatest) + 60 * u * std::sqrt(greatest);
  return true;
}

// The cells' values less that of the centre are i p + j q + i^2 a + i j b + j^2 c. In a row, t = p + j b, the least
// is that of i = 0 or a - |t|, and these two are the lowest.
int residual_model::decide(double x, double y, double step) const {
  const double dx = x - x_, dy = y - y_;
  const double away = std::fabs(dx) + std::fabs(dy) + 1.4143 * step;
  if (!(away <= reach_)) return undecided;
  // The remainders of two cells differ by at most a third of the derivative's bound times the cube of the distance from
  // the base, or half of it times the square of that and the distance of the cells, 2.83 steps or less.
  const double remainder = third_ * away * away * std::min(away * (1.0 / 3), 1.4143 * step);
  const double margin = margin_ + 4000 * u * step + 1.01 * remainder;
  const double p = step * (slope_x_ + curve_xx_ * dx + curve_xy_ * dy);
  const double q = step * (slope_y_ + curve_yy_ * dy + curve_xy_ * dx);
  const double square = step * step;
  const double a = 0.5 * square * curve_xx_, b = square * curve_xy_, c = 0.5 * square * curve_yy_;
  const double below = c - q + std::min(0.0, a - std::fabs(p - b));
  const double same = std::min(0.0, a - std::fabs(p));
  const double above = c + q + std::min(0.0, a - std::fabs(p + b));
  const double outer = std::min(below, above);
  int row = 0;
  double t = p, rest = outer - same;
  if (outer < same) {
    row = above < below ? 1 : -1;
    t = p + row * b;
    rest = std::min(same, std::max(below, above)) - outer;
  }
  const double column_gap = std::fabs(t) - a;
  if (!(a > 0 && rest > margin && std::fabs(column_gap) > margin)) return undecided;
  const int column = column_gap < 0 ? 0 : t < 0 ? 1 : -1;
  return 4 + 3 * row + column;
}

}  // namespace tessarn::detail
