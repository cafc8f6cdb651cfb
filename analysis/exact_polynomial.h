// Polynomials with integer coefficients, and what can be said exactly about them: signs, common divisors,
// multiplicities.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "analysis/integer.h"
#include "analysis/sequence.h"
#include "tessarn/views.h"

namespace tessarn::analysis {

// The coefficients, the constant first; the last is not 0. The zero polynomial has none.
using polynomial = sequence<integer>;

// How much work may be done: operations on the digits of integers, counted before they are done. The count does not
// depend on the machine, nor does the answer of a call that runs out of work.
class work_allowance {
 public:
  static constexpr std::uint64_t operations_of_a_call = 1000000000;

  // False when there is not so much left.
  bool spend(std::uint64_t operations) noexcept {
    enough_ = enough_ && operations <= left_;
    if (enough_) left_ -= operations;
    return enough_;
  }
  bool enough() const noexcept { return enough_; }

 private:
  std::uint64_t left_ = operations_of_a_call;
  bool enough_ = true;
};

// The number m 2^e.
struct dyadic {
  integer m;
  int e = 0;

  dyadic() noexcept = default;
  dyadic(integer mantissa, int exponent) noexcept : m(std::move(mantissa)), e(exponent) {}
  // A finite double.
  explicit dyadic(double v);
};

// The sign of a - b.
int compare(const dyadic& a, const dyadic& b);
// (a + b) / 2.
dyadic middle(const dyadic& a, const dyadic& b);
// The largest double that is not above v, and the smallest that is not below it, for v >= 0; infinity counts.
double double_below(const dyadic& v) noexcept;
double double_above(const dyadic& v) noexcept;

// A polynomial with doubles as coefficients is 2^exponent times the one with integers; leading zeros are left out.
polynomial exact_coefficients(column_view coefficients, int& exponent);

void trim(polynomial& p) noexcept;
// The digits of the longest coefficient; 64 bits on every machine, as the counts of work that begin with it.
std::uint64_t most_digits(const polynomial& p) noexcept;
polynomial derivative(const polynomial& p);
polynomial product(const polynomial& a, const polynomial& b);
// a + b and a - b.
polynomial sum(const polynomial& a, const polynomial& b);
polynomial difference(const polynomial& a, const polynomial& b);
// p(-x).
polynomial mirrored(const polynomial& p);

// p(x) 2^-scale, by Horner's scheme.
integer evaluate(const polynomial& p, const dyadic& x, long long& scale);
int sign_at(const polynomial& p, const dyadic& x);
// The sign of a polynomial that is not zero immediately to the right and to the left of x.
int sign_after(const polynomial& p, const dyadic& x);
int sign_before(const polynomial& p, const dyadic& x);

// The polynomials f, gcd(f, f'), the same of that, ... as long as they are not constant, each up to a constant factor,
// and their quotients s_i = f_i / f_(i+1), which have the zeros of f whose multiplicity is above i, each once.
struct multiplicities {
  sequence<polynomial> quotients;

  // The polynomial that has the zeros of f, each once.
  const polynomial& square_free() const noexcept { return quotients[0]; }
};
// Empty when the work was not allowed. f is not constant.
multiplicities separate_multiplicities(polynomial f, work_allowance& work);

// The product of the factors of odd multiplicity: a polynomial that changes its sign exactly where p does.
polynomial changing_part(const multiplicities& m);

}  // namespace tessarn::analysis
