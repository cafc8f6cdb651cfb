// Solves a linear system with a proved bound of its error, and is told when there is
// nothing to solve.
#include <tessarn/tessarn.h>

#include <cstdio>

int main() {
  mat<long double> hilbert(6, 6), ones(1, 6);  // columns, rows
  for (tessarn::ulong row = 0; row < 6; ++row) {
    for (tessarn::ulong column = 0; column < 6; ++column)
      hilbert.set(column, row, 1.0 / (row + column + 1));
    ones.set(0, row, 1);
  }
  const auto s = tessarn::solve(hilbert, ones);
  std::printf("condition about %.0e\n", 1 / s.reciprocal_condition);
  for (tessarn::ulong row = 0; row < 6; ++row)
    std::printf("%.17g +- %.1e\n", s.x.get(0, row), s.error.get(0, row));

  const mat<long double> dependent{{1, 2}, {2, 4}}, b{{3}, {5}};
  std::printf("%s\n", tessarn::to_string(tessarn::solve(dependent, b).state));

  const auto best = tessarn::least_squares(dependent, b);
  std::printf("%s\n", tessarn::to_string(best.state));
  std::printf("rank %u, residual %.4f\n", unsigned(best.rank), best.residual);
}
