#include "matrix/multiply.h"

#include <algorithm>
#include <vector>

#include "core/nan_rule.h"

namespace tessarn::detail {

// k runs in the middle loop: each entry still sees its terms in ascending order.
void multiply(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  for (std::size_t r = 0; r < rows; ++r) {
    real* row = c + r * columns;
    std::fill_n(row, columns, static_cast<real>(0));
    for (std::size_t k = 0; k < inner; ++k) {
      const real factor = a[r * inner + k];
      for (std::size_t x = 0; x < columns; ++x) row[x] += factor * b[k * columns + x];
    }
    for (std::size_t x = 0; x < columns; ++x) row[x] = computed(row[x]);
  }
}

void multiply(const cplx* a, const cplx* b, cplx* c, std::size_t n) {
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t x = 0; x < n; ++x) {
      cplx sum;
      for (std::size_t k = 0; k < n; ++k) sum += a[r * n + k] * b[k * n + x];
      c[r * n + x] = sum;
    }
}

}  // namespace tessarn::detail
