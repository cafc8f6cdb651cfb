// Finds every zero and every extreme point of a curve in an interval: each one enclosed
// and proved.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const binom p{-0.0625, 0.5,   -1, 0,
                1,       -0.375};  // the constant first: coefficient i belongs to x^i

  const auto zeros = tessarn::zeros(p, -2, 3);
  for (tessarn::ulong i = 0; i < zeros.count; ++i)
    std::printf("zero     x = %.17g, %u-fold\n", zeros[i].at,
                unsigned(zeros[i].multiplicity));

  const auto turns = tessarn::extremes(p, -2, 3);
  for (tessarn::ulong i = 0; i < turns.count; ++i)
    std::printf("%s  x = %.17g, p = %.6f\n",
                turns[i].is_maximum() ? "maximum" : "minimum", turns[i].at,
                turns[i].value);

  const double missed =
      p.find_zero(0, 1, 0.5, 1e-9);  // the classic search looks at samples
  std::printf("a scan of [0, 1] with step 0.5 meets %g first\n", missed);

  picture drawing(argc, argv);
  drawing.curve(
      "p(x)", [&](double x) { return p(x); }, -1.25, 2.55);
  drawing.points("zeros", {zeros.at, mat<long double>(1, zeros.count)});
  drawing.points("extreme points", {turns.at, turns.value});
}
