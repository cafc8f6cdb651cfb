// Fits a line and asks the library whether it gives the bits that every build gives.
#include <tessarn/tessarn.h>

#include <cstdio>
#include <vector>

int main() {
  const std::vector<vector> points{{0, 1}, {1, 3}, {2, 5}};
  const tessarn::polynomial_fit line = tessarn::fit_polynomial(points, 2);
  const tessarn::selfcheck_report report = tessarn::selfcheck();
  std::printf("%s\n%s\n", tessarn::to_string(line.state), report.line);
  return line.state == tessarn::status::ok && line.value(10) == 21 && report.passed() ? 0 : 1;
}
