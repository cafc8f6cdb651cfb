// Searches arguments at which sin, cos, asin or acos lies very near to the middle of two doubles: within 2^-20 of the
// distance of the two.
//
//   hard_cases FUNCTION COUNT [SEED]     FUNCTION: sin, cos, asin, acos; prints one argument a line
//
// Over a run of doubles so short that the function is a straight line to 2^-23 of that distance, its place between two
// doubles is an arithmetic progression modulo 1. Its terms near 1/2 are found as V. Lefevre and J.-M. Muller do (Worst
// cases for correct rounding of the elementary functions in double precision, 2001), here with Euclid's algorithm for
// the first term in an interval. Every find is verified with MPFR.
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

using u64 = std::uint64_t;
__extension__ typedef unsigned __int128 u128;

constexpr int nearness = 20;

// The least k >= 0 with low <= (a k modulo m) <= high, for low <= high < m; m where there is none.
u128 first_in_range(u128 a, u128 m, u128 low, u128 high) {
  if (low == 0) return 0;
  a %= m;
  if (a == 0) return m;
  if (2 * a > m) {
    const u128 turned = low;
    low = m - high;
    high = m - turned;
    a = m - a;
  }
  const u128 k = (low + a - 1) / a;
  if (k * a <= high) return k;
  const u128 y = first_in_range(a - m % a == a ? 0 : a - m % a, a, low % a, high % a);
  if (y == a) return m;
  return (low + m * y + a - 1) / a;
}

struct function {
  const char* name;
  int (*value)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  int least_exponent, greatest_exponent;  // of the arguments, as frexp gives it
};
constexpr function functions[] = {
    {"sin", mpfr_sin, -19, 2}, {"cos", mpfr_cos, -19, 2}, {"asin", mpfr_asin, -19, 0}, {"acos", mpfr_acos, -19, 0}};

class search {
 public:
  search(const function& which, u64 seed) : f(which), random(seed) { mpfr_inits2(160, x, y, step, nullptr); }
  ~search() { mpfr_clears(x, y, step, nullptr); }

  // Looks through one run of doubles; returns how many it found and printed.
  long run() {
    const int exponent = f.least_exponent +
                         static_cast<int>(random() % static_cast<unsigned>(f.greatest_exponent - f.least_exponent + 1));
    const double start = std::ldexp(0.5 + std::ldexp(static_cast<double>(random() >> 12), -53), exponent);
    const double unit = std::ldexp(1.0, exponent - 53);
    // The value in units of the distance of doubles there.
    value_at(start);
    const double high = mpfr_get_d(y, MPFR_RNDN);
    if (high == 0 || std::fabs(high) < 0x1p-40) return 0;
    int size = 0;
    std::frexp(high, &size);
    const u64 at = fraction_of_unit(size);
    mpfr_set(step, y, MPFR_RNDN);
    value_at(start + unit);
    mpfr_sub(y, y, step, MPFR_RNDN);
    const u64 slope = fraction_of_unit(size);
    // Where the slope is near 0 all terms are alike, and where the line bends the verification leaves none.
    constexpr u64 width = u64{1} << (64 - nearness);
    constexpr u128 whole = u128{1} << 64;
    long found = 0;
    u64 from = 0;
    while (from < length && found < most_of_a_run) {
      const u64 shifted = at + slope * from;  // looked for: shifted + slope k in [1/2 - width, 1/2 + width]
      const u64 low = (u64{1} << 63) - width - shifted;
      u128 k;
      if (low > u64{0} - 2 * width)
        k = 0;
      else
        k = first_in_range(slope, whole, low, u128{low} + 2 * width);
      if (k >= length - from) break;
      from += static_cast<u64>(k);
      found += print_if_hard(start + static_cast<double>(from) * unit);
      ++from;
    }
    return found;
  }

 private:
  static constexpr u64 length = 1 << 15;
  static constexpr long most_of_a_run = 4;  // where the slope is near an integer, neighbours are alike

  void value_at(double v) {
    mpfr_set_d(x, v, MPFR_RNDN);
    f.value(y, x, MPFR_RNDN);
  }

  // y 2^(53 - size) modulo 1, in units of 2^-64.
  u64 fraction_of_unit(int size) {
    mpfr_t z;
    mpfr_init2(z, 260);
    mpfr_mul_2si(z, y, 53 - size, MPFR_RNDN);
    mpfr_t whole;
    mpfr_init2(whole, 260);
    mpfr_floor(whole, z);
    mpfr_sub(z, z, whole, MPFR_RNDN);
    mpfr_mul_2si(z, z, 64, MPFR_RNDN);
    const u64 result = mpfr_get_ui(z, MPFR_RNDZ);
    mpfr_clears(z, whole, nullptr);
    return result;
  }

  bool print_if_hard(double v) {
    value_at(v);
    int size = 0;
    std::frexp(mpfr_get_d(y, MPFR_RNDN), &size);
    const u64 place = fraction_of_unit(size);
    const u64 half = u64{1} << 63;
    if ((place > half ? place - half : half - place) > u64{1} << (64 - nearness)) return false;
    std::printf("%a\n", v);
    return true;
  }

  const function& f;
  std::mt19937_64 random;
  mpfr_t x, y, step;
};

}  // namespace

int main(int count, char** argument) {
  const function* f = nullptr;
  for (const function& each : functions)
    if (count > 2 && std::strcmp(argument[1], each.name) == 0) f = &each;
  char* end = nullptr;
  const long wanted = count > 2 ? std::strtol(argument[2], &end, 10) : 0;
  if (!f || count > 4 || wanted <= 0 || *end != 0) {
    std::fprintf(stderr, "usage: hard_cases sin|cos|asin|acos COUNT [SEED]\n");
    return 2;
  }
  search s(*f, count > 3 ? std::strtoull(argument[3], nullptr, 10) : 1);
  for (long found = 0; found < wanted;) found += s.run();
}
