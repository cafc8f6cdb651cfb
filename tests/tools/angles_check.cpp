// Compares sine, cosine, arc sine and arc cosine of the library with MPFR's correctly rounded ones.
//   angles_check random COUNT [SEED]   COUNT arguments a function: over all exponents, where angles lie, beside
//   multiples of pi/2 angles_check read [FILE]           every function at the arguments of a text, one a line; #
//   begins a comment
// Prints the disagreements (at most 20) and ends with 1 when there is one.
#include <mpfr.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "support/bits.h"
#include "support/random.h"
#include "tessarn/angles.h"

namespace {

struct function {
  const char* name;
  tessarn::real (*ours)(tessarn::real) noexcept;
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  bool is_inverse;
};
constexpr function functions[] = {{"sin", tessarn::angles::sin, mpfr_sin, false},
                                  {"cos", tessarn::angles::cos, mpfr_cos, false},
                                  {"asin", tessarn::angles::asin, mpfr_asin, true},
                                  {"acos", tessarn::angles::acos, mpfr_acos, true}};

class comparison {
 public:
  comparison() {
    mpfr_set_emin(-1073);
    mpfr_set_emax(1024);
    mpfr_init2(v_, 53);
  }
  ~comparison() { mpfr_clear(v_); }
  comparison(const comparison&) = delete;
  comparison& operator=(const comparison&) = delete;

  void check(const function& f, double x) {
    mpfr_set_d(v_, x, MPFR_RNDN);
    const int ternary = f.exact(v_, v_, MPFR_RNDN);
    mpfr_subnormalize(v_, ternary, MPFR_RNDN);
    judge(f.name, x, f.ours(x), mpfr_get_d(v_, MPFR_RNDN));
    ++checked_;
    if (f.is_inverse) return;
    const auto both = tessarn::angles::sin_cos(x);
    if (f.exact == mpfr_sin) judge("sin_cos", x, both.sine, f.ours(x));
    if (f.exact == mpfr_cos) judge("sin_cos", x, both.cosine, f.ours(x));
  }

  int report() const {
    std::printf("%lu values of sin, cos, asin and acos, %lu wrong\n", checked_, wrong_);
    return wrong_ == 0 && checked_ > 0 ? 0 : 1;
  }

 private:
  void judge(const char* name, double x, double ours, double right) {
    if (test::bits_of(ours) == test::bits_of(right) || (ours != ours && right != right)) return;
    if (++wrong_ <= 20) std::printf("%s(%a) = %a, not %a\n", name, x, ours, right);
  }

  mpfr_t v_;
  unsigned long checked_ = 0, wrong_ = 0;
};

double any_exponent(test::random_source& r, const function& f) {
  for (;;) {
    const double x = test::from_bits(r.next());
    if (std::isfinite(x) && (!f.is_inverse || std::fabs(x) <= 1)) return x;
  }
}

double near_multiple(test::random_source& r) {
  const double k = std::floor(std::ldexp(r.uniform(), static_cast<int>(r.below(21))));
  return k * 0x1.921fb54442d18p+0 + std::ldexp(r.uniform(-1, 1), -static_cast<int>(r.below(40)));
}

double draw(test::random_source& r, const function& f, long i) {
  if (i % 2 == 0) return any_exponent(r, f);
  if (f.is_inverse) return r.uniform(-1, 1);
  return i % 4 == 1 ? r.uniform(-3.2, 3.2) : near_multiple(r);
}

int usage() {
  std::fprintf(stderr, "usage: angles_check random COUNT [SEED] | read [FILE]\n");
  return 2;
}

}  // namespace

int main(int count, char** argument) {
  if (count < 2 || count > 4) return usage();
  comparison all;
  if (std::strcmp(argument[1], "random") == 0 && count > 2) {
    const long n = std::strtol(argument[2], nullptr, 10);
    test::random_source r(count > 3 ? std::strtoull(argument[3], nullptr, 10) : 1);
    for (long i = 0; i < n; ++i)
      for (const function& f : functions) all.check(f, draw(r, f, i));
  } else if (std::strcmp(argument[1], "read") == 0 && count < 4) {
    std::ifstream file(count == 3 ? argument[2] : "/dev/stdin");
    for (std::string line; std::getline(file, line);) {
      if (line.empty() || line[0] == '#') continue;
      const double x = std::strtod(line.c_str(), nullptr);
      for (const function& f : functions)
        if (!f.is_inverse || std::fabs(x) <= 1) all.check(f, x);
    }
  } else {
    return usage();
  }
  return all.report();
}
