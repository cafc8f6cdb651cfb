// Evaluation, derivatives and searches of polynomials. An interval has at most some thousand steps, unless a bound or
// the step is so strange that the scan has to notice.
#include <cmath>
#include <limits>

#include "input.h"

namespace {

struct interval {
  double a, b, step, eps;
};

interval read_interval(fuzz::input& in) {
  interval i{in.real(), in.real(), 0, 0};
  const double length = std::fabs(i.b - i.a);
  switch (in.byte() % 8) {
    case 0: i.step = 0; break;
    case 1: i.step = std::numeric_limits<double>::quiet_NaN(); break;
    case 2: i.step = std::numeric_limits<double>::infinity(); break;
    case 3: i.step = -length / (1 + in.number(4000)); break;
    default: i.step = length / (1 + in.number(4000)); break;
  }
  if (std::isinf(length)) i.step = std::ldexp(1.0, in.number(1000));
  i.eps = in.real();
  if (in.byte() % 2) i.eps = i.step * 1e-6;
  return i;
}

// A scan to infinity goes on as far as the polynomial may still have a zero.
bool ends_soon(const interval& i, const binom& p) {
  if (!std::isinf(i.a) && !std::isinf(i.b)) return true;
  for (tessarn::ulong k = 0; k < p.getcofcnt(); ++k) {
    const double c = std::fabs(static_cast<double>(p.get(static_cast<tessarn::slong>(k))));
    if (c != 0 && !(c > 1e-3 && c < 1e3)) return false;
  }
  return std::fabs(i.a) < 1e3 || std::isinf(i.a) || i.a != i.a;
}

void search(const interval& i, const binom& p) {
  const double zero = static_cast<double>(p.find_zero(i.a, i.b, i.step, i.eps));
  if (i.a > i.b && !(std::fabs(i.step) < i.eps)) fuzz::require(zero == -1, "nothing in a reversed interval");
  p.find_extrpoint_arc(i.a, i.b, i.step, i.eps);
  p.find_high_hpoint_arc(i.a, i.b, i.step, i.eps);
}

void sample(fuzz::input& in, const binom& p, const binom& q) {
  const double a = in.real(), length = std::fabs(in.tame());
  const double h = in.byte() % 4 == 0 ? in.real() : length / (1 + in.number(500));
  const double n = length / h;
  if (n > 1000 || n < -1) return;  // as many points as there would be, or an impossible number
  p.scalar(q, a, a + length, h);
  p.antifunction(a, a + length, h);
}

void evaluate(fuzz::input& in, const binom& p) {
  std::vector<tessarn::real> x(in.number(70)), y(x.size());
  for (auto& v : x) v = in.real();
  const auto n = static_cast<tessarn::ulong>(x.size());
  const auto same = [](tessarn::real a, tessarn::real b) { return a == b || (a != a && b != b); };
  p.arc_1(x.data(), y.data(), n);
  for (tessarn::ulong i = 0; i < n; ++i) fuzz::require(same(y[i], p.arc_1(x[i])), "arrays give the members' values");
  p.func_3(x.data(), y.data(), n);
  for (tessarn::ulong i = 0; i < n; ++i) fuzz::require(same(y[i], p.func_3(x[i])), "arrays give the members' values");
  p.func(x.data(), x.data(), n);
}

void change(fuzz::input& in, binom& p, binom& q) {
  switch (in.byte() % 8) {
    case 0: p += q; break;
    case 1: p -= p; break;
    case 2: p.shift_h(in.real()); break;
    case 3: p.shift_v(in.real()); break;
    case 4: p.resize(static_cast<tessarn::slong>(in.number(40))); break;
    case 5:
      if (p.getcofcnt() + q.getcofcnt() > 0 && p.getcofcnt() < 100) p *= q;
      break;
    case 6:
      if (p.getcofcnt() > 0 && p.getcofcnt() < 100) p *= p;
      break;
    default:
      if (p.getcofcnt() > 0) p.func_1(q);
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input in(data, size);
  binom p = fuzz::polynomial(in, 24);
  binom q = fuzz::polynomial(in, 24);
  for (int i = in.byte() % 6; i > 0; --i) change(in, p, q);
  evaluate(in, p);
  const interval i = read_interval(in);
  if (ends_soon(i, p)) search(i, p);
  sample(in, p, q);
  return 0;
}
