// Fits of polynomials and surfaces through hostile points.
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input in(data, size);
  const tessarn::ulong coefficients = in.number(20);
  const tessarn::ulong grade = in.number(5);
  const bool weighted = in.byte() % 2;
  const std::vector<vector> points = fuzz::points(in, 80);
  binom p;
  p.create(points.data(), static_cast<tessarn::ulong>(points.size()), coefficients);
  fuzz::require(p.getcofcnt() == coefficients, "as many coefficients as asked for");
  p.createtan(points.data(), static_cast<tessarn::ulong>(points.size()), coefficients);
  for (tessarn::slong i = 2; i < static_cast<tessarn::slong>(coefficients); i += 2)
    fuzz::require(p.get(i) == 0, "even powers stay 0");
  const std::vector<vector3d> space = fuzz::space_points(in, 60);
  const auto n = static_cast<tessarn::ulong>(space.size());
  hyperbinom s;
  if (weighted) {
    std::vector<tessarn::real> weights(n);
    for (auto& w : weights) w = in.real();
    s.create(space.data(), weights.data(), n, grade);
  } else {
    s.create(space.data(), n, grade);
  }
  fuzz::require(s.getgrade() == grade, "the grade asked for");
  hyperbinom t;
  t.create(static_cast<tessarn::slong>(in.number(4)));
  s += t;
  if (s.getgrade() + t.getgrade() > 0) s *= t;
  s.resize(static_cast<tessarn::slong>(in.number(6)));
  const double x = in.real();
  s.func(x, in.real());
  return 0;
}
