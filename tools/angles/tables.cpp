// Writes core/angles/tables.inl, the constants of sine, cosine and their inverses, to the standard output. All values
// are computed by MPFR with 2400 bits and rounded once.
#include <mpfr.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr mpfr_prec_t working_bits = 2400;

class number {
 public:
  number() { mpfr_init2(value, working_bits); }
  explicit number(double v) : number() { mpfr_set_d(value, v, MPFR_RNDN); }
  number(const number&) = delete;
  number& operator=(const number&) = delete;
  ~number() { mpfr_clear(value); }
  mpfr_t value;
};

// The value rounded to the given count of bits, which is taken away from it.
double take(number& rest, mpfr_prec_t bits) {
  mpfr_t part;
  mpfr_init2(part, bits);
  mpfr_set(part, rest.value, MPFR_RNDN);
  const double result = mpfr_get_d(part, MPFR_RNDN);
  mpfr_sub(rest.value, rest.value, part, MPFR_RNDN);
  mpfr_clear(part);
  return result;
}

// The next limb of 2^bits a value in [0, 1), which is taken away from it.
unsigned long take_limb(number& fraction, unsigned bits) {
  mpfr_mul_2ui(fraction.value, fraction.value, bits, MPFR_RNDZ);
  const unsigned long limb = mpfr_get_ui(fraction.value, MPFR_RNDZ);
  mpfr_sub_ui(fraction.value, fraction.value, limb, MPFR_RNDZ);
  return limb;
}

void write_sines() {
  std::puts(
      "// Sine and cosine of i pi/512: the 26 leading bits of the sine and the rest rounded to a double, those of the "
      "cosine,\n"
      "// and the first two with the other sign. Four numbers from the first on are a sine and its derivative, four "
      "from\n"
      "// the third on a cosine and its derivative.\n"
      "constexpr double sine_table[256][6] = {");
  for (unsigned i = 0; i < 256; ++i) {
    number x, s, c;
    mpfr_const_pi(x.value, MPFR_RNDN);
    mpfr_mul_ui(x.value, x.value, i, MPFR_RNDN);
    mpfr_div_ui(x.value, x.value, 512, MPFR_RNDN);
    mpfr_sin_cos(s.value, c.value, x.value, MPFR_RNDN);
    const double s1 = take(s, 26), s2 = take(s, 53), c1 = take(c, 26), c2 = take(c, 53);
    std::printf("    {%a, %a, %a, %a, %a, %a},\n", s1, s2, c1, c2, -s1, -s2);
  }
  std::puts("};\n");
}

// The coefficients follow from (1 - x^2) f'' = x f'.
void write_arc_sines() {
  std::puts(
      "// The arc sine about i/256: its value as a double and the rest, the first coefficient of Taylor's series as "
      "its 26\n"
      "// leading bits and the rest, then the coefficients 2 to 8.\n"
      "constexpr double arc_sine_table[193][11] = {");
  for (int i = 0; i <= 192; ++i) {
    const double at = i / 256.0;
    number x(at), a[9], s, t;
    mpfr_asin(a[0].value, x.value, MPFR_RNDN);
    mpfr_sqr(s.value, x.value, MPFR_RNDN);
    mpfr_ui_sub(s.value, 1, s.value, MPFR_RNDN);  // 1 - x^2
    mpfr_rec_sqrt(a[1].value, s.value, MPFR_RNDN);
    for (unsigned n = 0; n + 2 <= 8; ++n) {
      mpfr_mul_d(t.value, a[n + 1].value, at * (n + 1) * (2 * n + 1), MPFR_RNDN);
      mpfr_mul_ui(a[n + 2].value, a[n].value, n * n, MPFR_RNDN);
      mpfr_add(t.value, t.value, a[n + 2].value, MPFR_RNDN);
      mpfr_div(t.value, t.value, s.value, MPFR_RNDN);
      mpfr_div_ui(a[n + 2].value, t.value, (n + 2) * (n + 1), MPFR_RNDN);
    }
    const double a1 = take(a[0], 53), a2 = take(a[0], 53), b1 = take(a[1], 26), b2 = take(a[1], 53);
    std::printf("    {%a, %a, %a, %a,\n    ", a1, a2, b1, b2);
    for (int k = 2; k <= 8; ++k) std::printf(" %a%s", mpfr_get_d(a[k].value, MPFR_RNDN), k < 8 ? "," : "},\n");
  }
  std::puts("};\n");
}

void write_constants() {
  number half_pi, step, whole, rest;
  mpfr_const_pi(half_pi.value, MPFR_RNDN);
  mpfr_div_2ui(half_pi.value, half_pi.value, 1, MPFR_RNDN);
  mpfr_div_2ui(step.value, half_pi.value, 8, MPFR_RNDN);
  mpfr_ui_div(whole.value, 1, half_pi.value, MPFR_RNDN);
  std::printf("// 512/pi.\nconstexpr double inverse_step = %a;\n\n", 256 * mpfr_get_d(whole.value, MPFR_RNDN));
  std::puts("// pi/512 as a number of 40 bits and the rest, and as two of 25 bits and the rest.");
  mpfr_set(rest.value, step.value, MPFR_RNDN);
  std::printf("constexpr double step_in_two[2] = {%a, ", take(rest, 40));
  std::printf("%a};\n", take(rest, 53));
  mpfr_set(rest.value, step.value, MPFR_RNDN);
  std::printf("constexpr double step_in_three[3] = {%a, ", take(rest, 25));
  std::printf("%a, ", take(rest, 25));
  std::printf("%a};\n\n", take(rest, 53));
  std::puts("// pi/512 as its 26 leading bits and the rest; pi/2 as a double and the rest.");
  mpfr_set(rest.value, step.value, MPFR_RNDN);
  std::printf("constexpr double step_split[2] = {%a, ", take(rest, 26));
  std::printf("%a};\n", take(rest, 53));
  mpfr_set(rest.value, half_pi.value, MPFR_RNDN);
  const double h1 = take(rest, 53), h2 = take(rest, 53);
  std::printf("constexpr double half_pi_high = %a, half_pi_low = %a;\n\n", h1, h2);

  std::puts(
      "// The bits of 2/pi behind the binary point, 64 a word, behind one word of zeros: enough to reduce the largest "
      "double.\n"
      "constexpr int two_over_pi_words = 28;\n"
      "constexpr std::uint64_t two_over_pi_bits[two_over_pi_words + 1] = {0,");
  for (int k = 0; k < 28; ++k)
    std::printf("%s0x%016lxu%s", k % 4 == 0 ? "    " : " ", take_limb(whole, 64),
                k == 27      ? "};\n\n"
                : k % 4 == 3 ? ",\n"
                             : ",");

  std::puts(
      "// The bits of pi/4 behind the binary point, 32 a word.\nconstexpr int quarter_pi_words = 24;\n"
      "constexpr std::uint32_t quarter_pi_bits[quarter_pi_words] = {");
  mpfr_div_2ui(half_pi.value, half_pi.value, 1, MPFR_RNDN);
  for (int k = 0; k < 24; ++k)
    std::printf("%s0x%08lxu%s", k % 8 == 0 ? "    " : " ", take_limb(half_pi, 32),
                k == 23      ? "};\n"
                : k % 8 == 7 ? ",\n"
                             : ",");
}

}  // namespace

int main() {
  std::puts(
      "// Constants of sine, cosine and their inverses, written by tools/angles/tables.cpp with MPFR: do not edit.\n"
      "#pragma once\n\n#include <cstdint>\n\nnamespace tessarn::angles {\n");
  write_sines();
  write_arc_sines();
  write_constants();
  std::puts("\n}  // namespace tessarn::angles");
}
