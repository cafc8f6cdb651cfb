// Fits a line, as a user's program would, and says so.
#include <tessarn/tessarn.h>
#include <cstdio>
#include <vector>

int main() {
  std::vector<vector> points;
  for (int i = 0; i < 5; ++i) points.emplace_back(i, 1 + 2 * i);
  binom line;
  line.create(points.data(), static_cast<tessarn::ulong>(points.size()), 2);
  const double error =
      std::fabs(static_cast<double>(line.get(0) - 1)) + std::fabs(static_cast<double>(line.get(1) - 2));
  std::printf("tessarn %d.%d.%d\n", TESSARN_VERSION_MAJOR, TESSARN_VERSION_MINOR, TESSARN_VERSION_PATCH);
  return error < 1e-12 ? 0 : 1;
}
