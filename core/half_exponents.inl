// The steps of a chain by half exponents, written once for single numbers and for vectors of them; included as, and
// behind, core/double_double.inl. Such a chain takes less than half of the operations of one of double-doubles. It
// proves its roundings, but for a few powers in 2^19, which are in doubt and formed anew by double-doubles.
//
// Power e is held as head + rest, slightly too small in magnitude, and is made of two powers of nearly half of e. A
// step gives two numbers s and t: the power lies between s + t and s + (1 + 2 m) t, with the margin m. Where both round
// to the same number, that is the correctly rounded power. docs/powers.md proves the margin.

// head has 26 bits; rest is between 2^-25 and 2^-19 of the power or so, and has its sign.
struct half_power {
  TESSARN_NUMBER rounded, head, rest;
};

// s is exact, t is much smaller and has the sign of s.
struct unrounded_power {
  TESSARN_NUMBER s, t;
};

// The chain begins with x. Its head is made so small that the rest is at least 2^-25 |x|; the rest is then taken the
// margin of itself too small.
TESSARN_FUNCTION half_power first_half_power(TESSARN_NUMBER x, double margin) {
  const TESSARN_NUMBER head = leading_bits(x * (1 - 0x1p-25));
  return {x, head, (x - head) * (1 - margin)};
}

TESSARN_FUNCTION unrounded_power square_of(const half_power& a) {
  return {a.head * a.head, a.rest * (a.head + a.rounded)};
}

TESSARN_FUNCTION unrounded_power product_of(const half_power& a, const half_power& b) {
  return {a.head * b.head, b.head * a.rest + b.rest * a.rounded};
}

// The other end of the interval in which the power lies; s + t is the one.
TESSARN_FUNCTION TESSARN_NUMBER beyond_power(const unrounded_power& p, double margin) {
  return p.s + p.t * (1 + 2 * margin);
}

// A power in the form in which others are made of it.
TESSARN_FUNCTION half_power as_factor(TESSARN_NUMBER rounded, const unrounded_power& p) {
  const TESSARN_NUMBER head = leading_bits(p.s);
  return {rounded, head, (p.s - head) + p.t};
}
