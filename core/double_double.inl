// Double-double arithmetic, written once for single numbers and for vectors of them. It is included inside a namespace:
// core/power_chain.h includes it for reals, poly/kernels/power_chains.inl in the namespace of each instruction set, so
// that no two builds of the kernels share a symbol. The including file defines before
//   TESSARN_NUMBER     the type to compute with: real, or a vector of doubles,
//   TESSARN_FUNCTION   the specifiers of a function that is to be inlined,
//   leading_bits(v)    v with the lower 27 bits of its significand cleared, so that 26 are left,
// and is compiled without fused multiply-add. docs/powers.md has the notation and the bounds of the errors.

// An unevaluated sum high + low with |low| at most half an ulp of high, about 106 bits.
struct double_double {
  TESSARN_NUMBER high, low;
};

// x as the sum of its 26 leading bits and the rest, after T. Dekker (A floating-point technique for extending the
// available precision, 1971). Deviation: bits are cut off, where Dekker rounds by a product with 2^27 + 1 that
// overflows for large x. The rest has up to 27 bits therefore, and the product of two rests can be rounded, by 2^-106
// of the whole.
TESSARN_FUNCTION double_double split(TESSARN_NUMBER x) {
  const TESSARN_NUMBER high = leading_bits(x);
  return {high, x - high};
}

// a * x as the rounded product and its error; parts is split(x). The order of the sum makes each partial result exact,
// but for the last.
TESSARN_FUNCTION double_double exact_product(TESSARN_NUMBER a, TESSARN_NUMBER x, double_double parts) {
  const TESSARN_NUMBER p = a * x;
  const double_double b = split(a);
  const TESSARN_NUMBER e = ((b.high * parts.high - p) + b.high * parts.low + b.low * parts.high) + b.low * parts.low;
  return {p, e};
}

// w * x for a power w of x: the step of the chain x, x^2, x^3, ... The relative error is about 2^-105 a step, so the
// high part is the correctly rounded power while the chain is in the safe range (core/power_range.h).
TESSARN_FUNCTION double_double next_power(double_double w, TESSARN_NUMBER x, double_double parts) {
  const double_double p = exact_product(w.high, x, parts);
  const TESSARN_NUMBER t = p.low + w.low * x;
  const TESSARN_NUMBER high = p.high + t;
  return {high, t - (high - p.high)};
}
