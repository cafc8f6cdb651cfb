// Line segments and planes.
#include <pybind11/stl.h>

#include "module.h"
#include "text.h"

namespace binding {

namespace {

std::string text_of(const vector3d& v) { return call_text("vector3d", {v.x, v.y, v.z}); }

void add_line3d(py::class_<line3d>& type) {
  type.def(py::init<>())
      .def(py::init([](const vector3d& a, const vector3d& b) { return line3d(a, b); }), py::arg("a"), py::arg("b"))
      .def(py::init([](const line3d& o) { return o; }), py::arg("o"))
      .def_readwrite("start", &line3d::start, "First end point.")
      .def_readwrite("end", &line3d::end, "Second end point.")
      .def(
          "cut", [](const line3d& l, const plane& pl, vector3d& x) { return l.cut(pl, x); }, py::arg("pl"),
          py::arg("x"),
          "Writes the point where the segment crosses the plane into x; False, leaving x, when it does not.")
      .def(
          "cut_off", [](line3d& l, const plane& pl) { return l.cut_off(pl); }, py::arg("pl"),
          "Clips the segment to the side into which the normal points; False when nothing of it is there.")
      .def("__str__", [](const line3d& l) { return printed(l); })
      .def("__repr__", [](const line3d& l) { return "line3d(" + text_of(l.start) + ", " + text_of(l.end) + ")"; })
      .def("__copy__", [](const line3d& l) { return l; })
      .def(
          "__deepcopy__", [](const line3d& l, const py::dict&) { return l; }, py::arg("memo"))
      .def(py::pickle([](const line3d& l) { return py::make_tuple(l.start, l.end); },
                      [](const py::tuple& t) { return line3d(t[0].cast<vector3d>(), t[1].cast<vector3d>()); }));
}

// Distances of one point or of the rows of an array.
numbers distances(const plane& pl, const array_like& p) {
  if (py::isinstance<vector3d>(p.object))
    return {py::float_(static_cast<double>(pl.distance(p.object.cast<const vector3d&>())))};
  const std::vector<vector3d> points = to_vectors3d(p, "p");
  array result(static_cast<py::ssize_t>(points.size()));
  tessarn::real* to = as_real(result.mutable_data());
  {
    py::gil_scoped_release unlocked;
    for (std::size_t k = 0; k < points.size(); ++k) to[k] = pl.distance(points[k]);
  }
  return {result};
}

bool calc_normale(vector3d& n, const optional_array& par, const optional_array& perp) {
  std::vector<vector3d> parallel, perpendicular;
  if (par) parallel = to_vectors3d(*par, "par");
  if (perp) perpendicular = to_vectors3d(*perp, "perp");
  py::gil_scoped_release unlocked;
  return plane::CalcNormale(n, par ? parallel.data() : nullptr, parallel.size(), perp ? perpendicular.data() : nullptr,
                            perpendicular.size());
}

void add_plane_members(py::class_<plane>& type) {
  type.def_static("CalcNormale", calc_normale, py::arg("n"), py::arg("par"), py::arg("perp"),
                  "Writes into n the unit vector as parallel as possible to the rows of par and as perpendicular as "
                  "possible to those of perp, shapes (k, 3); False when both are None.")
      .def(
          "__eq__", [](const plane& a, const plane& b) { return a == b; }, py::arg("o"),
          "Whether the normals are equal and the other origin lies exactly on this plane.")
      .def("rotate", &plane::rotate, py::arg("a"), py::arg("b"), py::arg("c"),
           "Rotates the frame about axis2, the new axis1 and the new normal, clockwise seen from the tips.")
      .def(
          "cross", [](const plane& a, const plane& o, ::vector& p, ::vector& q) { return a.cross(o, p, q); },
          py::arg("o"), py::arg("p"), py::arg("q"),
          "Writes a point and the direction of the intersection line into p and q, in the coordinates of this plane.")
      .def(
          "cross", [](const plane& a, const vector3d& d, ::vector& st) { return a.cross(d, st); }, py::arg("d"),
          py::arg("st"), "The intersection with the line through (0, 0, 0) along d, by the axes; st gets (s, t).")
      .def(
          "cross", [](const plane& a, const vector3d& d) { return a.cross(d); }, py::arg("d"),
          "The intersection with the line through (0, 0, 0) along d, by the normal.")
      .def("distance", distances, py::arg("p"),
           "The signed distance of a point, or of each row of an array of shape (n, 3).");
}

void add_plane(py::class_<plane>& type) {
  type.def(py::init<>())
      .def(py::init([](const vector3d& p, const vector3d& u, const vector3d& v) { return plane(p, u, v); }),
           py::arg("p"), py::arg("u"), py::arg("v"), "Through p with the axes u and v; the normal is v x u.")
      .def(py::init([](const vector3d& p, const vector3d& n) { return plane(p, n); }), py::arg("p"), py::arg("n"),
           "Through p with the normal n, which is scaled to length 1.")
      .def(py::init([](const plane& o) { return o; }), py::arg("o"))
      .def(py::init([](const array_like& points) {
             const std::vector<vector3d> given = to_vectors3d(points, "points");
             py::gil_scoped_release unlocked;
             return plane(given);
           }),
           py::arg("points"), "Fits the plane to points, shape (n, 3).")
      .def_readwrite("origin", &plane::origin, "A point of the plane, where s = t = 0.")
      .def_readwrite("normal", &plane::normal, "The normal.")
      .def_readwrite("axis1", &plane::axis1, "Direction of s.")
      .def_readwrite("axis2", &plane::axis2, "Direction of t.");
  add_plane_members(type);
  type.def("__str__", [](const plane& p) { return printed(p); })
      .def("__repr__",
           [](const plane& p) {
             return "plane(origin=" + text_of(p.origin) + ", normal=" + text_of(p.normal) +
                    ", axis1=" + text_of(p.axis1) + ", axis2=" + text_of(p.axis2) + ")";
           })
      .def("__copy__", [](const plane& p) { return p; })
      .def(
          "__deepcopy__", [](const plane& p, const py::dict&) { return p; }, py::arg("memo"))
      .def(py::pickle([](const plane& p) { return py::make_tuple(p.origin, p.normal, p.axis1, p.axis2); },
                      [](const py::tuple& t) {
                        plane p;
                        p.origin = t[0].cast<vector3d>();
                        p.normal = t[1].cast<vector3d>();
                        p.axis1 = t[2].cast<vector3d>();
                        p.axis2 = t[3].cast<vector3d>();
                        return p;
                      }));
}

}  // namespace

void add_geometry(py::module_& m) {
  py::class_<line3d> line(m, "line3d", R"(The straight segment between two points.

Examples
--------
>>> ground = tessarn.plane(tessarn.vector3d(0, 0, 0), tessarn.vector3d(0, 0, 1))
>>> segment, x = tessarn.line3d(tessarn.vector3d(0, 0, -1), tessarn.vector3d(0, 0, 3)), tessarn.vector3d()
>>> segment.cut(ground, x), x
(True, vector3d(0.0, 0.0, 0.0)))");
  py::class_<plane> frame(m, "plane", R"(A plane held as a frame: a point, a normal and two axes.

The fit of ``plane(points)`` is a search to steps of 1e-6; tessarn.flatness gives the exact least-squares plane.

Examples
--------
>>> p = tessarn.plane([[0, 0, 1], [1, 0, 1], [0, 1, 1], [1, 1, 1]])
>>> p.normal, p.distance(tessarn.vector3d(5, 7, 4))
(vector3d(0.0, 0.0, 1.0), 3.0)
>>> p.distance([[0, 0, 0], [0, 0, 2]])
array([-1.,  1.]))");
  add_line3d(line);
  add_plane(frame);
}

}  // namespace binding
