// The polynomial in one variable: storage, evaluation, arithmetic, transformations of the graph.
#include <algorithm>
#include <utility>

#include "core/shared_array.h"
#include "core/storage.h"
#include "poly/kernels/kernels.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::allocate_counted;
using tessarn::detail::real_array;

namespace {

// The array for n coefficients, as the class holds it: an empty polynomial has none.
real* coefficients_of(real_array array, slong n) {
  if (n == 0) return nullptr;
  return tessarn::detail::held(std::move(array));
}

// Polynomials from this count on are multiplied by a kernel, which needs zeros around the factors and room behind the
// product (poly/kernels/kernels.h).
constexpr slong kernel_count = 16;
constexpr std::size_t c_margin = 8, q_margin = 24, r_margin = 32;

// The coefficients of a product by the kernel, or no array where a coefficient of a factor is not finite: times the
// zeros around the other factor it would give a NaN.
real_array convolved(const real* c, slong n, const real* q, slong nq, slong m) {
  const std::size_t length = tessarn::detail::checked_sum(static_cast<std::size_t>(n), static_cast<std::size_t>(nq),
                                                          2 * c_margin + 2 * q_margin);
  const real_array padded = tessarn::detail::allocate_zeroed(length);
  real* padded_c = padded.get() + c_margin;
  real* padded_q = padded_c + n + c_margin + q_margin;
  std::copy_n(c, n, padded_c);
  std::copy_n(q, nq, padded_q);
  real_array product = tessarn::detail::allocate(tessarn::detail::checked_sum(static_cast<std::size_t>(m), r_margin));
  using tessarn::detail::as_doubles;
  const auto& kernels = tessarn::detail::poly_kernels_in_use();
  const bool done = kernels.convolve(as_doubles(padded_c), static_cast<std::size_t>(n), as_doubles(padded_q),
                                     static_cast<std::size_t>(nq), as_doubles(product.get()));
  if (!done) product.reset();
  return product;
}

}  // namespace

binom::binom(const binom& p) : cofcnt(p.cofcnt), cof(tessarn::detail::share(p.cof)) {}

binom::~binom() {
  tessarn::detail::give_up(cof);
  forget();
}

void binom::empty() {
  tessarn::detail::give_up(cof);
  forget();
}

binom binom::clone() const {
  binom cloned;
  cloned.copy(*this);
  return cloned;
}

void binom::create(slong n) {
  binom::empty();
  if (n == 0) return;
  cof = coefficients_of(allocate_counted(n), n);
  cofcnt = n;
}

// Where the memory does not suffice the polynomial stays as it was.
void binom::resize(slong n) {
  if (n == cofcnt) return;
  real_array resized = allocate_counted(n);
  std::copy_n(cof, std::min(cofcnt, n), resized.get());
  tessarn::detail::give_up(cof);
  cof = coefficients_of(std::move(resized), n);
  cofcnt = n;
}

void binom::copy(binom& src) {
  if (this == &src) return;
  if (cof == src.cof) {  // a shared array stays with the source
    tessarn::detail::leave(cof);
    forget();
  }
  create(src.cofcnt);
  std::copy_n(src.cof, src.cofcnt, cof);
}

const binom& binom::operator=(binom& src) {
  copy(src);
  return *this;
}

binom& binom::operator=(binom&& src) noexcept {
  if (this == &src) return *this;
  if (cof != src.cof)
    tessarn::detail::give_up(cof);
  else
    tessarn::detail::leave(cof);
  cofcnt = src.cofcnt;
  cof = src.cof;
  src.forget();
  return *this;
}

real binom::func(real x) {
  if (cofcnt < 1) return 0;
  real s = cof[0];
  real w = 1;
  for (slong i = 1; i < cofcnt; ++i) {
    w *= x;
    s += w * cof[i];
  }
  return s;
}

// A polynomial derived into itself needs its coefficients until the end: it gets those of a temporary.
void binom::func_1(binom& d) {
  if (&d == this) {
    binom derived;
    func_1(derived);
    d = static_cast<binom&&>(derived);
    return;
  }
  d.create(cofcnt - 1);
  for (slong k = 1; k < cofcnt; ++k) d.cof[k - 1] = static_cast<real>(k) * cof[k];
}

void binom::operator+=(binom& q) {
  if (q.cofcnt > cofcnt) resize(q.cofcnt);
  for (slong i = 0; i < cofcnt; ++i) cof[i] += q.get(i);
}

void binom::operator-=(binom& q) {
  if (q.cofcnt > cofcnt) resize(q.cofcnt);
  for (slong i = 0; i < cofcnt; ++i) cof[i] -= q.get(i);
}

// Each coefficient of the product is the sum over the coefficients of q in ascending order, by the kernel or by a loop.
void binom::operator*=(binom& q) {
  const auto m = static_cast<slong>(static_cast<tessarn::ulong>(cofcnt) + static_cast<tessarn::ulong>(q.cofcnt) - 1u);
  real_array product;
  if (m > 0 && cofcnt >= kernel_count && q.cofcnt >= kernel_count) product = convolved(cof, cofcnt, q.cof, q.cofcnt, m);
  if (!product) {
    product = allocate_counted(m);
    for (slong j = 0; j < q.cofcnt; ++j)
      for (slong i = 0; i < cofcnt; ++i)
        product[static_cast<std::size_t>(i) + static_cast<std::size_t>(j)] += cof[i] * q.cof[j];
  }
  tessarn::detail::give_up(cof);
  cof = coefficients_of(std::move(product), m);
  cofcnt = m;
}

void binom::operator*=(real s) {
  for (slong i = 0; i < cofcnt; ++i) cof[i] *= s;
}

// Expansion in powers of (x - x0): power is (x - x0)^i, multiplied in place by the factor -x0 + x. Each new
// coefficient is the sum, from zero, of the product with -x0 and then of the one with 1.
void binom::shift_h(real x0) {
  if (cofcnt < 1) return;
  const auto n = static_cast<std::size_t>(cofcnt);
  real_array shifted = tessarn::detail::allocate_zeroed(n);
  real_array power = tessarn::detail::allocate_zeroed(tessarn::detail::checked_sum(n, 1));
  power[0] = 1;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < n; ++k) shifted[k] += k <= i ? power[k] * cof[i] : 0;
    for (std::size_t k = i + 1; k > 0; --k)
      power[k] = (k <= i ? 0 + power[k] * -x0 : 0) + power[k - 1] * static_cast<real>(1);
    power[0] = 0 + power[0] * -x0;
  }
  tessarn::detail::give_up(cof);
  cof = coefficients_of(std::move(shifted), cofcnt);
}

void binom::shift_v(real dy) {
  if (cofcnt == 0) resize(1);
  if (cofcnt > 0) cof[0] += dy;
}

void binom::mirror_h() {
  for (slong i = 1; i < cofcnt; i += 2) cof[i] = -cof[i];
}

void binom::mirror_v() {
  for (slong i = 0; i < cofcnt; ++i) cof[i] = -cof[i];
}
