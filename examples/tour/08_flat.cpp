// Finds how flat a plate is: the least-squares plane, and the minimum zone of ISO 1101.
#include <tessarn/tessarn.h>

#include <cstdio>
#include <vector>

#include "picture.h"

int main(int argc, char** argv) {
  std::vector<vector3d> plate;  // millimetres; tilted, and bent by a few micrometres
  for (int i = 0; i <= 10; ++i)
    for (int j = 0; j <= 10; ++j) {
      const double x = 10 * i, y = 10 * j;
      plate.push_back({x, y,
                       5 + 0.002 * x - 0.001 * y + 1e-6 * (x - 50) * (x - 50) -
                           5e-7 * (y - 30) * (y - 30) +
                           (i == 10 && j == 9 ? 0.002 : 0.0)});
    }

  const auto f = tessarn::flatness(plate);
  if (f.state != tessarn::status::ok) return std::puts(tessarn::to_string(f.state)), 1;
  std::printf("flatness (minimum zone)        %.4f um\n", 1000 * f.zone);
  std::printf("peak to valley, least squares  %.4f um\n",
              1000 * f.least_squares.peak_to_valley);
  for (tessarn::ulong i = 0; i < f.touching_above + f.touching_below; ++i)
    std::printf("touches %s at (%g, %g)\n", i < f.touching_above ? "above" : "below",
                plate[f.touching[i]].x, plate[f.touching[i]].y);

  picture drawing(argc, argv);
  for (int j = 0; j <= 10; j += 3) {
    vector profile[11];
    for (tessarn::ulong i = 0; i <= 10; ++i)
      profile[i] =
          vector(10.0 * i, 1000 * f.middle.residuals.get(0, 11 * i + tessarn::ulong(j)));
    drawing.points("y = " + std::to_string(10 * j), {profile, 11});
  }
  drawing.curve(
      "zone", [&](double) { return 500 * f.zone; }, 0, 100);
  drawing.curve(
      "zone", [&](double) { return -500 * f.zone; }, 0, 100);
}
