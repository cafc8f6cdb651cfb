// How the thread rounds. Exact arithmetic on doubles is exact only where sums are rounded to nearest, and its loops end
// only then.
#pragma once

namespace tessarn::analysis {

// False when the caller has set another rounding mode. The compiler must not know the numbers: it computes with the
// mode of its own.
inline bool rounds_to_nearest() noexcept {
  const volatile double one = 1, tiny = 0x1p-60;
  const double above = one + tiny, below = one - tiny;
  return above == 1 && below == 1;
}

}  // namespace tessarn::analysis
