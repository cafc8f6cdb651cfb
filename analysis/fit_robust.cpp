// Robust fits by iteratively reweighted least squares.
#include <algorithm>

#include "analysis/doubled_matrix.h"
#include "tessarn/fit.h"

namespace tessarn {

using namespace analysis;

namespace {

// The data of the rounds: for each point the weight of the caller, 0 for a point that is left out, and that of the
// round.
class reweighting {
 public:
  reweighting(const plane_points& points, const robust_options& options)
      : points_(points),
        options_(options.fit),
        given_(points.size()),
        factors_(points.size()),
        products_(points.size()),
        sorted_(points.size()) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      given_[i] = options_.weights.empty() ? 1.0 : static_cast<double>(options_.weights[i]);
      if (!(is_finite(given_[i]) && is_finite(points.x[i]) && is_finite(points.y[i]))) given_[i] = 0;
      if (given_[i] != 0) largest_y_ = std::max(largest_y_, std::fabs(static_cast<double>(points.y[i])) * given_[i]);
      factors_[i] = given_[i] != 0 ? 1 : 0;
    }
  }

  // The magnitude of the weighted residual of a point.
  double residual(const polynomial_fit& f, std::size_t i) const {
    return std::fabs(static_cast<double>(points_.y[i] - f.value(points_.x[i])) * given_[i]);
  }

  // The upper median of the magnitudes over 0.6745, the median of a standard normal deviate's magnitude. Where most
  // points lie on the curve, what rounding leaves is the scale.
  double scale(const polynomial_fit& f) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < points_.size(); ++i)
      if (given_[i] != 0) sorted_[count++] = residual(f, i);
    std::nth_element(sorted_.data(), sorted_.data() + count / 2, sorted_.data() + count);
    return std::max(sorted_[count / 2] / 0.6745, largest_y_ * 0x1p-48);
  }

  // New weights from the residuals; gives the largest change of one.
  double reweigh(const polynomial_fit& f, double scale, robust_weights kind) {
    double change = 0;
    for (std::size_t i = 0; i < points_.size(); ++i) {
      if (given_[i] == 0) continue;
      const double u = scale > 0 ? residual(f, i) / scale : 0;
      double w = u <= 1.345 ? 1 : 1.345 / u;
      if (kind == robust_weights::tukey) {
        const double v = u / 4.685;
        w = v < 1 ? (1 - v * v) * (1 - v * v) : 0;
      }
      change = std::max(change, std::fabs(w - factors_[i]));
      factors_[i] = w;
    }
    return change;
  }

  // The fit with the products of both weights; those of the round act on squares.
  polynomial_fit fit(ulong coefficients) {
    for (std::size_t i = 0; i < points_.size(); ++i)
      products_[i] = static_cast<real>(given_[i] * std::sqrt(factors_[i]));
    fit_options o = options_;
    o.weights = column_view(products_.data(), products_.size());
    return fit_polynomial(points_, coefficients, o);
  }

  double factor(std::size_t i) const { return factors_[i]; }

 private:
  plane_points points_;
  fit_options options_;
  numbers<double> given_, factors_;
  numbers<real> products_;
  numbers<double> sorted_;
  double largest_y_ = 0;
};

// Rounds with one kind of weights, until no weight changes by more than 1e-9. Huber's rounds find the scale as they go.
void iterate(reweighting& w, robust_weights kind, ulong coefficients, ulong most_rounds, robust_fit& r) {
  for (;;) {
    if (r.rounds >= most_rounds) {
      r.state = status::not_converged;
      return;
    }
    if (kind == robust_weights::huber) r.scale = w.scale(r.fit);
    const double change = w.reweigh(r.fit, r.scale, kind);
    if (change < 1e-9) return;
    ++r.rounds;
    polynomial_fit next = w.fit(coefficients);
    r.state = next.state;
    if (r.state != status::ok) return;
    r.fit = std::move(next);
  }
}

}  // namespace

robust_fit fit_robust(plane_points points, ulong coefficients, const robust_options& options) {
  robust_fit r;
  r.fit = fit_polynomial(points, coefficients, options.fit);
  r.state = r.fit.state;
  if (r.state == status::ok && (options.weigh_by != robust_weights::huber && options.weigh_by != robust_weights::tukey))
    r.state = status::bad_option;
  if (r.state != status::ok) return r;
  reweighting w(points, options);
  iterate(w, robust_weights::huber, coefficients, options.most_rounds, r);
  if (r.state == status::ok && options.weigh_by == robust_weights::tukey)
    iterate(w, robust_weights::tukey, coefficients, options.most_rounds, r);
  r.weights = mat<long double>(std::size_t{1}, points.size());
  for (std::size_t i = 0; i < points.size(); ++i) r.weights.getData()[i] = w.factor(i);
  return r;
}

}  // namespace tessarn
