// Planes fitted to hostile clouds, normals of hostile directions, lines cut with what comes out.
#include "input.h"

namespace {

// A cloud near a plane, where a search goes through all its steps.
std::vector<vector3d> flat_cloud(fuzz::input& in) {
  std::vector<vector3d> cloud(in.number(100));
  const double scale = in.real(), a = in.tame(), b = in.tame();
  for (vector3d& p : cloud) {
    const double x = in.tame(), y = in.tame();
    p = vector3d(x, y, a * x + b * y + in.tame() / 1024) * scale;
  }
  return cloud;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input in(data, size);
  const bool flat = in.byte() % 2;
  const std::vector<vector3d> cloud = flat ? flat_cloud(in) : fuzz::space_points(in, 60);
  plane fitted(cloud.data(), static_cast<tessarn::ulong>(cloud.size()));
  vector3d n;
  const std::vector<vector3d> par = fuzz::space_points(in, 80);
  const std::vector<vector3d> perp = fuzz::space_points(in, 80);
  plane::CalcNormale(n, par.data(), static_cast<tessarn::ulong>(par.size()), perp.data(),
                     static_cast<tessarn::ulong>(perp.size()));
  plane other(vector3d{in.real(), in.real(), in.real()}, n);
  vector p, q;
  fitted.cross(other, p, q);
  fitted.cross(n, p);
  const double alpha = in.real(), beta = in.real();
  fitted.rotate(alpha, beta, in.real());
  line3d line(vector3d{in.real(), in.real(), in.real()}, n);
  vector3d x;
  const bool cut = line.cut(fitted, x);
  const line3d before(line);
  const bool kept = line.cut_off(fitted);
  if (cut) fuzz::require(kept, "of a segment that is cut something is kept");
  if (!kept)
    fuzz::require(before.start == line.start && before.end == line.end, "a segment that is gone stays as it was");
  return 0;
}
