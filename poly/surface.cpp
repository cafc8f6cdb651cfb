// The polynomial in two variables: storage, evaluation, arithmetic.
#include <algorithm>
#include <cmath>
#include <utility>

#include "core/power.h"
#include "core/shared_array.h"
#include "core/storage.h"
#include "poly/kernels/kernels.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::allocate_counted;
using tessarn::detail::real_array;

namespace {

// The number of entries of a table of grade g. A number that does not fit 32 bits becomes an impossible size: it must
// fail in the allocator, also where the 32-bit product would wrap to a small number.
std::int64_t entries(slong g) {
  const std::int64_t n = static_cast<std::int64_t>(g) * g;
  return n > std::numeric_limits<std::int32_t>::max() ? -1 : n;
}

std::size_t table_size(slong g) { return static_cast<std::size_t>(static_cast<std::int64_t>(g) * g); }

}  // namespace

hyperbinom::hyperbinom(const hyperbinom& p) : grade(p.grade), cof(tessarn::detail::share(p.cof)) {}

hyperbinom::~hyperbinom() {
  tessarn::detail::give_up(cof);
  forget();
}

void hyperbinom::empty() {
  tessarn::detail::give_up(cof);
  forget();
}

hyperbinom hyperbinom::clone() const {
  hyperbinom cloned;
  cloned.copy(*this);
  return cloned;
}

void hyperbinom::create(slong g) {
  hyperbinom::empty();
  if (g == 0) return;
  cof = tessarn::detail::held(allocate_counted(entries(g)));
  grade = g;
}

// Keeps the first row of the table, the pure powers of x, and drops the others, as documented.
void hyperbinom::resize(slong g) {
  if (g == grade) return;
  real_array resized = allocate_counted(entries(g));
  if (grade > 0) std::copy_n(cof, std::min<std::size_t>(static_cast<std::size_t>(grade), table_size(g)), resized.get());
  tessarn::detail::give_up(cof);
  cof = g == 0 ? nullptr : tessarn::detail::held(std::move(resized));
  grade = g;
}

void hyperbinom::copy(hyperbinom& src) {
  if (this == &src) return;
  if (cof == src.cof) {  // a shared array stays with the source
    tessarn::detail::leave(cof);
    forget();
  }
  create(src.grade);
  if (src.grade > 0) std::copy_n(src.cof, table_size(src.grade), cof);
}

const hyperbinom& hyperbinom::operator=(hyperbinom& src) {
  copy(src);
  return *this;
}

hyperbinom& hyperbinom::operator=(hyperbinom&& src) noexcept {
  if (this == &src) return *this;
  if (cof != src.cof)
    tessarn::detail::give_up(cof);
  else
    tessarn::detail::leave(cof);
  grade = src.grade;
  cof = src.cof;
  src.forget();
  return *this;
}

// Row by row: a running power of y, and from it a running product with x.
real hyperbinom::func(real x, real y) {
  real s = 0;
  real row = 1;
  const real* c = cof;
  for (slong j = 0; j < grade; ++j) {
    real t = row;
    s += t * *c++;
    for (slong i = 1; i < grade; ++i) {
      t *= x;
      s += t * *c++;
    }
    row *= y;
  }
  return s;
}

void hyperbinom::func(const real* x, const real* y, real* z, tessarn::ulong n) const {
  using tessarn::detail::as_doubles;
  if (grade < 1) {
    std::fill_n(z, n, static_cast<real>(0));
    return;
  }
  const auto& kernels = tessarn::detail::poly_kernels_in_use();
  const auto g = static_cast<std::size_t>(grade);
  kernels.surface_values(as_doubles(cof), g, as_doubles(x), as_doubles(y), as_doubles(z), n);
}

void hyperbinom::operator+=(hyperbinom& q) {
  if (q.grade > grade) resize(q.grade);
  for (slong i = 0; i < grade; ++i)
    for (slong j = 0; j < grade; ++j) cof[grade * j + i] += q.get(i, j);
}

void hyperbinom::operator-=(hyperbinom& q) {
  if (q.grade > grade) resize(q.grade);
  for (slong i = 0; i < grade; ++i)
    for (slong j = 0; j < grade; ++j) cof[grade * j + i] -= q.get(i, j);
}

// Each coefficient of the product is the sum over the table of q, row by row.
void hyperbinom::operator*=(hyperbinom& q) {
  const auto g = static_cast<slong>(static_cast<tessarn::ulong>(grade) + static_cast<tessarn::ulong>(q.grade) - 1u);
  hyperbinom product;
  product.create(g);
  for (slong qi = 0; qi < q.grade; ++qi)
    for (slong qj = 0; qj < q.grade; ++qj)
      for (slong i = 0; i < grade; ++i)
        for (slong j = 0; j < grade; ++j)
          product.cof[g * (j + qj) + i + qi] += q.cof[q.grade * qj + qi] * cof[grade * j + i];
  *this = static_cast<hyperbinom&&>(product);
}

void hyperbinom::operator*=(real s) {
  if (cof == nullptr) return;
  const std::size_t n = table_size(grade);
  for (std::size_t k = 0; k < n; ++k) cof[k] *= s;
}

// Derived classes can ask with a negative k or grade, which no table has: negative exponents go to the C library.
real hyperbinom::getvec(slong k, real x, real y) {
  const auto power = [](real v, slong e) {
    return e < 0 ? tessarn::detail::inverse_power(v, 0u - static_cast<unsigned>(e))
                 : tessarn::detail::power(v, static_cast<unsigned>(e));
  };
  return power(x, k % grade) * power(y, k / grade);
}
