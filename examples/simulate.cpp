// Writes the simulated data of the demonstrations. The seeds are fixed, so that every run writes
// the same files.

#include <tessarn/tessarn.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "support/random.h"
#include "support/report.h"

namespace {

using program::input_error;
using test::random_source;

class csv_file {
 public:
  csv_file(const std::filesystem::path& path, const std::string& title, unsigned seed)
      : path_(path), file_(std::fopen(path.c_str(), "w")) {
    if (!file_) fail();
    std::fprintf(file_, "# title: %s\n# simulated with a fixed seed, %u\n", title.c_str(), seed);
  }
  ~csv_file() {
    if (file_) std::fclose(file_);
  }
  csv_file(const csv_file&) = delete;
  csv_file& operator=(const csv_file&) = delete;

  void line(const std::string& s) { std::fprintf(file_, "%s\n", s.c_str()); }
  void row(double x, double y) { std::fprintf(file_, "%.6f,%.6f\n", x, y); }
  void row(const vector3d& v) { std::fprintf(file_, "%.6f,%.6f,%.6f\n", v.x, v.y, v.z); }
  // Throws when something could not be written.
  void close() {
    bool good = !std::ferror(file_);
    good = std::fclose(file_) == 0 && good;
    file_ = nullptr;
    if (!good) fail();
  }

 private:
  [[noreturn]] void fail() const { throw input_error(path_.string() + ": cannot be written: " + std::strerror(errno)); }

  std::filesystem::path path_;
  std::FILE* file_;
};

// A cam in the shape of a W; the probe lost contact a few times and wrote -1, 0.
void profile(const std::filesystem::path& folder) {
  constexpr unsigned seed = 20;
  csv_file f(folder / "simulated_profile.csv", "Profile of a cam", seed);
  f.line(
      "# truth: y = 16 (2 u^4 - 2 u^2 + 0.15 u + 0.3), u = x / 20; noise 0.05 mm; 4 readings lost "
      "(x = -1)");
  f.line("position (mm),height (mm)");
  random_source random(seed);
  for (int i = 0; i <= 93; ++i) {
    const double x = -23.25 + 0.5 * i, u = x / 20;
    if (i % 25 == 13) {
      f.line("-1.0,0.0");
    } else {
      f.row(x, 16 * (2 * u * u * u * u - 2 * u * u + 0.15 * u + 0.3) + 0.05 * random.normal());
    }
  }
  f.close();
}

// A sensor that answers with an offset and a tangent.
void sensor(const std::filesystem::path& folder) {
  constexpr unsigned seed = 21;
  csv_file f(folder / "simulated_sensor.csv", "Answer of an angle sensor", seed);
  f.line("# truth: y = 0.25 + tan x; noise 0.002 V");
  f.line("angle (rad),voltage (V)");
  random_source random(seed);
  for (int i = -20; i <= 20; ++i) {
    const double x = 0.04 * i;
    f.row(x, 0.25 + std::tan(x) + 0.002 * random.normal());
  }
  f.close();
}

// A coil scanned in two positions; the motion is a right-hand turn of 40 degrees about (1, 2, 2)/3,
// then a shift.
void coil(const std::filesystem::path& folder) {
  constexpr unsigned seed = 22;
  csv_file a(folder / "simulated_coil_a.csv", "Coil, first position", seed);
  csv_file b(folder / "simulated_coil_b.csv", "Coil, second position", seed);
  for (csv_file* f : {&a, &b}) {
    f->line(
        "# truth: turned by 40 degrees about (1, 2, 2)/3, then shifted by (90, -30, 40) mm; noise "
        "0.1 mm in each coordinate");
    f->line("x (mm),y (mm),z (mm)");
  }
  random_source random(seed);
  const vector3d axis = vector3d(1, 2, 2) / 3;
  const double turn = -40 * tessarn::pi / 180;  // rotate() turns clockwise
  for (int i = 0; i < 60; ++i) {
    const double phase = 0.3 * i;
    const vector3d p((30 - 0.2 * i) * std::cos(phase), (30 - 0.2 * i) * std::sin(phase), 1.2 * i);
    const auto noise = [&random] { return vector3d(random.normal(), random.normal(), random.normal()) * 0.1; };
    a.row(p + noise());
    b.row(p.rotate(axis, turn) + vector3d(90, -30, 40) + noise());
  }
  a.close();
  b.close();
}

// A surface plate, slightly tilted, with a sagging middle and a raised corner.
void plate(const std::filesystem::path& folder) {
  constexpr unsigned seed = 23;
  csv_file f(folder / "simulated_plate.csv", "Surface plate", seed);
  f.line(
      "# truth: z = 12 + 0.004 x - 0.003 y mm, a hollow of 0.006 mm in the middle, a corner raised "
      "by 0.008 mm, noise 0.0005 mm");
  f.line("x (mm),y (mm),z (mm)");
  random_source random(seed);
  for (int j = 0; j <= 16; ++j) {
    for (int i = 0; i <= 25; ++i) {
      const double x = 25.0 * i, y = 25.0 * j;
      const double u = (x - 312.5) / 200, v = (y - 200) / 140, s = (x - 625) / 120, t = (y - 400) / 120;
      const double form = -0.006 * std::exp(-u * u - v * v) + 0.008 * std::exp(-s * s - t * t);
      f.row(vector3d(x, y, 12 + 0.004 * x - 0.003 * y + form + 0.0005 * random.normal()));
    }
  }
  f.close();
}

// A laser line across a folded sheet: two straight flanks, and a few wild readings.
void scan(const std::filesystem::path& folder) {
  constexpr unsigned seed = 24;
  csv_file f(folder / "simulated_scan.csv", "Laser line across a folded sheet", seed);
  f.line(
      "# truth: slope 0.2 up to x = 60 mm, then -0.5; noise 0.005 mm; 9 wild readings of 5 to 15 "
      "mm");
  f.line("x (mm),z (mm)");
  random_source random(seed);
  for (int i = 0; i < 221; ++i) {
    const double x = 0.5 * i;
    double z = x <= 60 ? 10 + 0.2 * x : 22 - 0.5 * (x - 60);
    z += 0.005 * random.normal();
    if (i % 24 == 17) z += (random.below(2) ? 1 : -1) * random.uniform(5, 15);
    f.row(x, z);
  }
  f.close();
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Writes the simulated data of the demonstrations, the same files in every run."};
  std::string folder;
  app.add_option("folder", folder, "an existing folder, where the files simulated_*.csv go")->required();
  return program::run(app, argc, argv, [&folder](program::report&) {
    for (const auto write : {profile, sensor, coil, plate, scan}) write(folder);
  });
}
