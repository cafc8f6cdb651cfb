/// \file
/// A product that no compiler fuses into a sum: what keeps the bits of inline members in every
/// caller's build.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn::detail {

/// a * b, rounded once. A product that feeds a sum, here or after inlining in the caller's
/// expression, goes through this function, because callers compile these headers with flags of their
/// own and a fused multiply-add would change the bits.
///
///     product(re, re) + product(im, im)   // two roundings of products, one of the sum
///
/// Without fused instructions it is an ordinary product. With them the value passes through an empty
/// assembly statement, which costs no instruction but keeps it in a register: clang fuses under
/// -ffp-contract=fast whatever a pragma says, and GCC loses __builtin_assoc_barrier when it
/// vectorises. The statement names the kind of register ("x" on x86-64, "w" on AArch64). For other processors
/// the product is stored in memory and loaded again. The library itself is compiled without contraction.
/// Special results: those of IEEE-754 multiplication.
inline real product(real a, real b) noexcept {
#if defined(TESSARN_BUILD) || (defined(__x86_64__) && !defined(__FMA__))
  return a * b;
#elif (defined(__GNUC__) || defined(__clang__)) && defined(__x86_64__)
  real p = a * b;
  __asm__("" : "+x"(p));
  return p;
#elif (defined(__GNUC__) || defined(__clang__)) && defined(__aarch64__)
  real p = a * b;
  __asm__("" : "+w"(p));
  return p;
#elif defined(__GNUC__) || defined(__clang__)
  volatile real p = a * b;
  return p;
#else
#if defined(_MSC_VER)
#pragma fp_contract(off)
#endif
  return a * b;
#endif
}

}  // namespace tessarn::detail
