// Robust fits by iteratively reweighted least squares.
#include <algorithm>

#include "analysis/doubled_matrix.h"
#include "tessarn/fit.h"

namespace tessarn {

using namespace analysis;

namespace {

// The fits that can be done robustly, as the rounds see them.
struct curve_problem {
  using fit_type = polynomial_fit;
  using options_type = fit_options;

  plane_points points;
  ulong coefficients;

  std::size_t size() const { return points.size(); }
  bool finite(std::size_t i) const { return is_finite(points.x[i]) && is_finite(points.y[i]); }
  double ordinate(std::size_t i) const { return points.y[i]; }
  double residual(const polynomial_fit& f, std::size_t i) const { return points.y[i] - f.value(points.x[i]); }
  polynomial_fit fit(const fit_options& options) const { return fit_polynomial(points, coefficients, options); }
};
struct surface_problem {
  using fit_type = surface_fit;
  using options_type = surface_options;

  space_points points;
  ulong grade;

  std::size_t size() const { return points.size(); }
  bool finite(std::size_t i) const {
    return is_finite(points.x[i]) && is_finite(points.y[i]) && is_finite(points.z[i]);
  }
  double ordinate(std::size_t i) const { return points.z[i]; }
  double residual(const surface_fit& f, std::size_t i) const { return points.z[i] - f.value(points.x[i], points.y[i]); }
  surface_fit fit(const surface_options& options) const { return fit_surface(points, grade, options); }
};

// The data of the rounds: for each point the weight of the caller, 0 for a point that is left out, and that of the
// round.
template <class Problem>
class reweighting {
 public:
  using fit_type = typename Problem::fit_type;

  reweighting(const Problem& problem, const typename Problem::options_type& options)
      : problem_(problem),
        options_(options),
        given_(problem.size()),
        factors_(problem.size()),
        products_(problem.size()),
        sorted_(problem.size()) {
    for (std::size_t i = 0; i < problem.size(); ++i) {
      given_[i] = options_.weights.empty() ? 1.0 : static_cast<double>(options_.weights[i]);
      if (!(is_finite(given_[i]) && problem.finite(i))) given_[i] = 0;
      if (given_[i] != 0) largest_ = std::max(largest_, std::fabs(problem.ordinate(i)) * given_[i]);
      factors_[i] = given_[i] != 0 ? 1 : 0;
    }
  }

  // The magnitude of the weighted residual of a point.
  double residual(const fit_type& f, std::size_t i) const { return std::fabs(problem_.residual(f, i) * given_[i]); }

  // The upper median of the magnitudes over 0.6745, the median of a standard normal deviate's magnitude. Where most
  // points lie on the curve, what rounding leaves is the scale.
  double scale(const fit_type& f) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < problem_.size(); ++i)
      if (given_[i] != 0) sorted_[count++] = residual(f, i);
    std::nth_element(sorted_.data(), sorted_.data() + count / 2, sorted_.data() + count);
    return std::max(sorted_[count / 2] / 0.6745, largest_ * 0x1p-48);
  }

  // New weights from the residuals; gives the largest change of one.
  double reweigh(const fit_type& f, double scale, robust_weights kind) {
    double change = 0;
    for (std::size_t i = 0; i < problem_.size(); ++i) {
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
  fit_type fit() {
    for (std::size_t i = 0; i < problem_.size(); ++i)
      products_[i] = static_cast<real>(given_[i] * std::sqrt(factors_[i]));
    typename Problem::options_type o = options_;
    o.weights = column_view(products_.data(), products_.size());
    return problem_.fit(o);
  }

  double factor(std::size_t i) const { return factors_[i]; }

 private:
  Problem problem_;
  typename Problem::options_type options_;
  numbers<double> given_, factors_;
  numbers<real> products_;
  numbers<double> sorted_;
  double largest_ = 0;  // of the weighted ordinates
};

// Rounds with one kind of weights, until no weight changes by more than 1e-9. Huber's rounds find the scale as they go.
template <class Problem, class Result>
void iterate(reweighting<Problem>& w, robust_weights kind, ulong most_rounds, Result& r) {
  for (;;) {
    if (r.rounds >= most_rounds) {
      r.state = status::not_converged;
      return;
    }
    if (kind == robust_weights::huber) r.scale = w.scale(r.fit);
    const double change = w.reweigh(r.fit, r.scale, kind);
    if (change < 1e-9) return;
    ++r.rounds;
    auto next = w.fit();
    r.state = next.state;
    if (r.state != status::ok) return;
    r.fit = std::move(next);
  }
}

template <class Result, class Problem, class Options>
Result robust(const Problem& problem, const Options& options) {
  Result r;
  r.fit = problem.fit(options.fit);
  r.state = r.fit.state;
  if (r.state == status::ok && (options.weigh_by != robust_weights::huber && options.weigh_by != robust_weights::tukey))
    r.state = status::bad_option;
  if (r.state != status::ok) return r;
  reweighting<Problem> w(problem, options.fit);
  iterate(w, robust_weights::huber, options.most_rounds, r);
  if (r.state == status::ok && options.weigh_by == robust_weights::tukey)
    iterate(w, robust_weights::tukey, options.most_rounds, r);
  r.weights = mat<long double>(std::size_t{1}, problem.size());
  for (std::size_t i = 0; i < problem.size(); ++i) r.weights.getData()[i] = w.factor(i);
  return r;
}

}  // namespace

robust_fit fit_robust(plane_points points, ulong coefficients, const robust_options& options) {
  return robust<robust_fit>(curve_problem{points, coefficients}, options);
}

robust_surface_fit fit_robust(space_points points, ulong grade, const robust_surface_options& options) {
  return robust<robust_surface_fit>(surface_problem{points, grade}, options);
}

}  // namespace tessarn
