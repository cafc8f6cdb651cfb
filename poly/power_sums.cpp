#include "poly/power_sums.h"

#include <algorithm>

#include "core/power.h"

namespace tessarn::detail {

void power_sums(const real* x, const real* y, std::size_t n, unsigned exponents, unsigned ordinates,
                real* sums, real* moments) {
  std::fill_n(sums, exponents, static_cast<real>(0));
  std::fill_n(moments, ordinates, static_cast<real>(0));
  for (std::size_t i = 0; i < n; ++i) {
    const bool safe = exponents < 2 || chain_is_safe(x[i], exponents - 1);
    const double_double halves = split(x[i]);
    double_double w{1, 0};
    for (unsigned e = 0; e < exponents; ++e) {
      if (e == 1) w = {x[i], 0};
      if (e > 1 && safe) w = times(w, x[i], halves);
      const real p = e > 1 && !safe ? power(x[i], e) : w.high;
      sums[e] += p;
      if (e < ordinates) moments[e] += p * y[i];
    }
  }
}

}  // namespace tessarn::detail
