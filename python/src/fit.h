// Conversions that the fits and the curves of the module share.
#pragma once

#include "record.h"

namespace binding {

// The coefficients of a polynomial, the constant first: of a binom, of a fit, or of an array.
column to_coefficients(const py::object& polynomial);
// The coefficients of a fit in powers of x; throws ValueError where it has none.
tessarn::column_view coefficients_of(const tessarn::polynomial_fit& fit);

tessarn::powers to_powers(const std::string& name);
tessarn::robust_weights to_robust_weights(const std::string& name);

// Values and the halves of two intervals at each of many places.
struct predictions {
  py::object value, mean, observation;
};
// Fills them, for a number or the places of an array: at(k) is the prediction at place k.
template <class At>
predictions predict_over(const std::vector<py::ssize_t>& shape, bool number, std::size_t n, At at) {
  array value(shape), mean(shape), observation(shape);
  {
    double *v = value.mutable_data(), *m = mean.mutable_data(), *o = observation.mutable_data();
    py::gil_scoped_release unlocked;
    for (std::size_t k = 0; k < n; ++k) {
      const tessarn::prediction p = at(k);
      v[k] = static_cast<double>(p.value);
      m[k] = static_cast<double>(p.mean);
      o[k] = static_cast<double>(p.observation);
    }
  }
  if (number) return {value.attr("item")(), mean.attr("item")(), observation.attr("item")()};
  return {value, mean, observation};
}

// The signature of the searches for places of a curve.
using curve_search = tessarn::curve_points (*)(tessarn::column_view, tessarn::real, tessarn::real);
tessarn::curve_points search_curve(curve_search search, const tessarn::column_view& coefficients, double a, double b);

}  // namespace binding
