// Sine, cosine and their inverses through the module.
#include <tessarn/angles.h>

#include "check.h"

namespace angles = tessarn::angles;
using tessarn::real;

int main() {
  CHECK(angles::sin(tessarn::half_pi) == 1);
  CHECK(angles::cos(tessarn::pi) == -1);
  CHECK(angles::asin(1) == tessarn::half_pi);
  CHECK(angles::acos(-1) == tessarn::pi);
  // The doubles nearest to sin 1 and to cos 1e22, an angle that needs a thousand bits of pi.
  CHECK(angles::sin(1) == static_cast<real>(0x1.aed548f090ceep-1));
  CHECK(angles::cos(static_cast<real>(1e22)) == static_cast<real>(0x1.0be2cef01c8f4p-1));
  const angles::sine_and_cosine both = angles::sin_cos(1);
  CHECK(both.sine == angles::sin(1) && both.cosine == angles::cos(1));
  const real outside = angles::asin(2);
  CHECK(outside != outside);
  return check::finish();
}
