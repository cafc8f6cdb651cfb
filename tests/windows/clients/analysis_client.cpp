// Results with a status through the module.
#include <tessarn/align.h>
#include <tessarn/curve.h>
#include <tessarn/fit.h>
#include <tessarn/flat.h>
#include <tessarn/shapes.h>
#include <tessarn/solve.h>

#include "check.h"

using tessarn::real;
using tessarn::status;

int main() {
  const mat<long double> a{{0, 2}, {1, 1}}, b{{4}, {5}};
  const tessarn::linear_solution s = tessarn::solve(a, b);
  CHECK(s.state == status::ok && s.x.get(0, 0) == 3 && s.x.get(0, 1) == 2);
  const tessarn::linear_solution l = tessarn::least_squares(a, b);
  CHECK(l.state == status::ok && l.x.get(0, 0) == 3 && l.rank == 2);
  const tessarn::inverse_matrix i = tessarn::inverse(a);
  CHECK(i.state == status::ok && i.inverse.get(0, 0) == static_cast<real>(-0.5));
  const tessarn::determinant_value d = tessarn::determinant(a);
  CHECK(d.state == status::ok && d.value == -2);

  mat<cplx> c, r;
  c.create(1, 1);
  c.set(0, 0, cplx(0, 2));
  r.create(1, 1);
  r.set(0, 0, cplx(4, 0));
  const tessarn::complex_solution z = tessarn::solve(c, r);
  CHECK(z.state == status::ok && z.x.get(0, 0).re == 0 && z.x.get(0, 0).im == -2);
  const tessarn::complex_inverse_matrix ci = tessarn::inverse(c);
  CHECK(ci.state == status::ok && ci.inverse.get(0, 0).im == static_cast<real>(-0.5));

  const vector points[] = {{0, 1}, {1, 3}, {2, 7}, {3, 13}};  // 1 + x + x^2
  const tessarn::polynomial_fit f = tessarn::fit_polynomial({points, 4}, 3);
  CHECK(f.state == status::ok && f.of_powers.get(0, 2) == 1);
  CHECK(f.value(10) == 111 && f.expanded().func(10) == 111);
  CHECK(f.predict(10, 2).value == 111);
  const tessarn::robust_fit h = tessarn::fit_robust({points, 4}, 2);
  CHECK(h.fit.points_used == 4 || h.fit.state != status::ok);
  const vector3d places[] = {{0, 0, 1}, {1, 0, 2}, {0, 1, 4}, {1, 1, 9}};  // 1 + x + 3 y + 4 x y
  const tessarn::surface_fit g = tessarn::fit_surface({places, 4}, 2);
  CHECK(g.state == status::ok && g.value(2, 2) == 25 && g.expanded().func(2, 2) == 25);
  CHECK(g.predict(2, 2, 2).value == 25);
  const tessarn::robust_surface_fit k = tessarn::fit_robust({places, 4}, 1);
  CHECK(k.fit.points_used == 4 || k.fit.state != status::ok);

  const vector3d from[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, to[] = {{5, 0, 0}, {5, 1, 0}, {4, 0, 0}};
  const tessarn::space_alignment m = tessarn::align({from, 3}, {to, 3});
  CHECK(m.state == status::ok && m.translation == vector3d(5, 0, 0) && m.map(from[2]) == to[2]);
  const vector a2[] = {{0, 0}, {2, 0}}, b2[] = {{1, 1}, {1, 3}};
  const tessarn::plane_alignment n = tessarn::align({a2, 2}, {b2, 2});
  CHECK(n.state == status::ok && n.map(vector(0, 2)) == vector(-1, 1));

  const vector3d tent[] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}, {2, 2, 1}};
  const tessarn::flatness_result t = tessarn::flatness({tent, 5});
  CHECK(t.state == status::ok && t.zone == 1 && t.touching_above == 1 && t.touching[0] == 4);
  CHECK(t.middle.normal == vector3d(0, 0, 1) && t.least_squares.state == status::ok);
  const binom p{-6, 11, -6, 1};  // (x - 1) (x - 2) (x - 3)
  const tessarn::curve_points zeros = tessarn::zeros(p, 1.5, 9);
  CHECK(zeros.state == status::ok && zeros.count == 2 && zeros[0].at == 2 && zeros[1].lower == 3);
  CHECK(tessarn::extremes(p, 0, 9).count == 2 && tessarn::extremes(p, 0, 9)[0].is_maximum());
  CHECK(tessarn::inflections(p, 0, 9)[0].at == 2);
  const tessarn::curve_points sharpest = tessarn::curvature_extremes(binom{0, 0, 2}, -1, 1);
  CHECK(sharpest.count == 1 && sharpest[0].curvature == 4 && sharpest[0].radius == static_cast<real>(0.25));

  const vector3d row[] = {{0, 0, 5}, {1, 2, 5}, {2, 4, 5}, {3, 6, 5}};
  const tessarn::line_fit line = tessarn::fit_line({row, 4});
  CHECK(line.state == status::ok && line.point.y == 3 && line.direction.y == 2 * line.direction.x);
  const vector ring[] = {{5, 0}, {3, 4}, {-4, 3}, {0, -5}, {-3, -4}};
  const tessarn::circle_fit circle = tessarn::fit_circle({ring, 5});
  CHECK(circle.state == status::ok && circle.radius == 5);
  const vector3d ball[] = {{4, 2, 3}, {-2, 2, 3}, {1, 5, 3}, {1, -1, 3}, {1, 2, 6}, {1, 2, 0}};
  const tessarn::sphere_fit sphere = tessarn::fit_sphere({ball, 6});
  CHECK(sphere.state == status::ok && sphere.radius == 3 && sphere.centre.z == 3);
  const vector3d tube[] = {{5, 0, 0}, {3, 4, 1}, {-4, 3, 2}, {0, -5, 3}, {-3, -4, 4}, {4, -3, 5}, {0, 5, 6}};
  const tessarn::cylinder_fit cylinder = tessarn::fit_cylinder({tube, 7});
  CHECK(cylinder.state == status::ok && cylinder.radius == 5 && cylinder.direction.z == 1);

  CHECK(tessarn::to_string(status::ok) != tessarn::to_string(status::singular));
  return check::finish();
}
