// The calls of the library that the playground makes. Points are kept here, so that a fit takes the degree alone.
#include <emscripten/bind.h>
#include <tessarn/tessarn.h>

#include <string>
#include <vector>

namespace {

using emscripten::val;
using tessarn::ulong;

// A copy that belongs to JavaScript.
val numbers(const std::vector<double>& v) {
  return val::global("Float64Array").new_(val(emscripten::typed_memory_view(v.size(), v.data())));
}

val numbers(const mat<long double>& column) {
  const tessarn::column_view entries(column);
  std::vector<double> v(entries.size());
  for (std::size_t i = 0; i < v.size(); ++i) v[i] = entries[i];
  return numbers(v);
}

// The polynomial in powers of u = x - centre. The scale is a power of two, so that the quotients are exact.
binom about_centre(const tessarn::polynomial_fit& fit) {
  binom p;
  const ulong count = fit.coefficients.getHeight();
  p.create(static_cast<tessarn::slong>(count));
  double power = 1;
  for (ulong k = 0; k < count; ++k, power *= fit.scale)
    p.set(static_cast<tessarn::slong>(k), fit.coefficients.get(0, k) / power);
  return p;
}

// The places of a curve about the centre, as objects with the places of the caller.
val places(const tessarn::curve_points& found, const tessarn::polynomial_fit& fit, const binom& p, bool bends) {
  val list = val::array();
  for (ulong i = 0; i < found.count; ++i) {
    const tessarn::curve_point place = found[i];
    val one = val::object();
    const double x = fit.centre + place.at;
    one.set("x", x);
    one.set("y", fit.value(x));
    one.set("multiplicity", static_cast<double>(place.multiplicity));
    one.set("maximum", place.is_maximum());
    if (bends) {
      const vector to_centre = p.normale(place.at);
      one.set("curvature", place.curvature);
      one.set("radius", place.radius);
      one.set("centreX", x + to_centre.x);
      one.set("centreY", fit.value(x) + to_centre.y);
    }
    list.call<void>("push", one);
  }
  val result = val::object();
  result.set("state", std::string(tessarn::to_string(found.state)));
  result.set("ok", found.state == tessarn::status::ok);
  result.set("list", list);
  return result;
}

class fitter {
 public:
  void set(const val& abscissas, const val& ordinates) {
    x_ = emscripten::convertJSArrayToNumberVector<double>(abscissas);
    y_ = emscripten::convertJSArrayToNumberVector<double>(ordinates);
  }

  void move(unsigned point, double x, double y) {
    if (point >= x_.size()) return;
    x_[point] = x;
    y_[point] = y;
  }

  // Fits so many coefficients and analyses the curve over the range of the points, with `samples` places of the curve.
  val analyse(unsigned coefficients, unsigned samples) const {
    const tessarn::polynomial_fit fit = tessarn::fit_polynomial({x_, y_}, coefficients);
    val result = val::object();
    result.set("ok", fit.state == tessarn::status::ok);
    result.set("state", std::string(tessarn::to_string(fit.state)));
    if (fit.state != tessarn::status::ok) return result;

    result.set("centre", fit.centre);
    result.set("powersOk", fit.powers_state == tessarn::status::ok);
    result.set("coefficients", numbers(fit.of_powers));
    result.set("errors", numbers(fit.of_powers_errors));
    result.set("deviation", fit.residual_deviation);
    result.set("rSquared", fit.r_squared);
    result.set("largestResidual", fit.largest_residual);
    result.set("largestAt", static_cast<double>(fit.largest_at));
    result.set("points", static_cast<double>(fit.points_used));
    result.set("condition", 1 / fit.reciprocal_condition);
    add_curve(result, fit, samples);
    add_places(result, fit);
    return result;
  }

 private:
  void add_curve(val& result, const tessarn::polynomial_fit& fit, unsigned samples) const {
    std::vector<double> residuals(x_.size());
    double low = x_[0], high = x_[0];
    for (std::size_t i = 0; i < x_.size(); ++i) {
      residuals[i] = y_[i] - fit.value(x_[i]);
      if (x_[i] < low) low = x_[i];
      if (x_[i] > high) high = x_[i];
    }
    std::vector<double> x(samples), y(samples), half(samples);
    for (unsigned i = 0; i < samples; ++i) {
      x[i] = i + 1 == samples ? high : low + (high - low) * i / (samples - 1);
      const tessarn::prediction at = fit.predict(x[i], 2);
      y[i] = at.value;
      half[i] = at.mean;
    }
    result.set("residuals", numbers(residuals));
    result.set("low", low);
    result.set("high", high);
    result.set("curveX", numbers(x));
    result.set("curveY", numbers(y));
    result.set("half", numbers(half));
  }

  static void add_places(val& result, const tessarn::polynomial_fit& fit) {
    const binom p = about_centre(fit);
    const double low = result["low"].as<double>() - fit.centre, high = result["high"].as<double>() - fit.centre;
    result.set("zeros", places(tessarn::zeros(p, low, high), fit, p, false));
    result.set("extremes", places(tessarn::extremes(p, low, high), fit, p, false));
    result.set("bends", places(tessarn::curvature_extremes(p, low, high), fit, p, true));
  }

  std::vector<double> x_, y_;
};

std::string selfcheck() { return tessarn::selfcheck().line; }

}  // namespace

EMSCRIPTEN_BINDINGS(tessarn) {
  emscripten::class_<fitter>("Fitter")
      .constructor()
      .function("set", &fitter::set)
      .function("move", &fitter::move)
      .function("analyse", &fitter::analyse);
  emscripten::function("selfcheck", &selfcheck);
}
