// The motion that carries points onto their partners.
#include <pybind11/stl.h>

#include "module.h"
#include "record.h"

namespace binding {

namespace {

using tessarn::plane_alignment;
using tessarn::space_alignment;

bool has_motion(tessarn::status s) {
  return s == tessarn::status::ok || s == tessarn::status::collinear || s == tessarn::status::not_determined;
}

// Where a motion carries one point or many, shape (k,) or (n, k).
template <class Alignment, class Point>
array map_points(const Alignment& motion, const array_like& points, int k) {
  require_answer(has_motion(motion.state), "motion", motion.state);
  const array a = dense_array(points, "points", -1);
  if (a.ndim() < 1 || a.ndim() > 2 || a.shape(a.ndim() - 1) != k)
    throw py::value_error("points must have the shape (" + std::to_string(k) + ",) or (n, " + std::to_string(k) +
                          "), not " + shape_of(a));
  array result(std::vector<py::ssize_t>(a.shape(), a.shape() + a.ndim()));
  const tessarn::real* from = as_real(a.data());
  tessarn::real* to = as_real(result.mutable_data());
  py::gil_scoped_release unlocked;
  Point p;
  for (py::ssize_t i = 0; i < a.size(); i += k) {
    std::copy_n(from + i, k, &p.x);
    const Point moved = motion.map(p);
    std::copy_n(&moved.x, k, to + i);
  }
  return result;
}

template <class Alignment, class Point>
void add_alignment(py::module_& m, const char* name, int dimensions, const char* doc) {
  record<Alignment> r(m, name, doc);
  r.field("status", &Alignment::state, "Whether the result holds, and if not, why.")
      .field("rotation", &Alignment::rotation, layout::square, "R, with rows and columns as in formulas.")
      .field("scale", &Alignment::scale, "Positive, or 0 where the points have nothing in common; 1 unless asked for.")
      .field("translation", &Alignment::translation, "t of b = scale R a + t.")
      .field("centre", &Alignment::centre, "The centroid of the points of a, rounded.")
      .field("image", &Alignment::image, "Where the motion carries `centre`.")
      .field("reflected", &Alignment::reflected, "Whether R is a mirror image; only with the option.")
      .field("differences", &Alignment::differences, layout::square, "b - (scale R a + t), a row for each pair.")
      .field("distances", &Alignment::distances, layout::column, "Their lengths.")
      .field("root_mean_square", &Alignment::root_mean_square, "sqrt(sum (w distance)^2 / sum w^2).")
      .field("largest_residual", &Alignment::largest_residual, "The largest distance of a pair with a weight.")
      .field("largest_at", &Alignment::largest_at, "The index of the pair it belongs to.")
      .field("points_used", &Alignment::points_used, "The number of pairs with a weight above 0.")
      .field("points_left_out", &Alignment::points_left_out,
             "The number of pairs that are not finite or have a weight of 0.")
      .field("determination", &Alignment::determination,
             "How well the rotation is determined: near 0 for points near a line.")
      .with_status(&Alignment::state);
  r.type().def(
      "map",
      [dimensions](const Alignment& motion, const array_like& points) {
        return map_points<Alignment, Point>(motion, points, dimensions);
      },
      py::arg("points"), "Where the motion carries a point, or each row of an array of points.");
  r.finish();
}

py::object align(const array_like& a, const array_like& b, bool scale, bool reflections, const optional_array& w,
                 bool leave_out_not_finite) {
  const rows from = to_rows(a, "a", 0), to = to_rows(b, "b", from.dimensions);
  if (from.size != to.size)
    throw py::value_error("a and b must have as many points, not the shapes " + shape_of(from.kept) + " and " +
                          shape_of(to.kept));
  const column weights = to_column(w, "w");
  if (w && weights.view.size() != from.size)
    throw py::value_error("w must have a weight for each of the " + std::to_string(from.size) +
                          " pairs, not the shape " + shape_of(weights.kept));
  const tessarn::align_options options{scale, reflections, weights.view, leave_out_not_finite};
  if (from.dimensions == 2) {
    plane_alignment motion;
    {
      py::gil_scoped_release unlocked;
      motion = tessarn::align(from.plane(), to.plane(), options);
    }
    return py::cast(std::move(motion));
  }
  space_alignment motion;
  {
    py::gil_scoped_release unlocked;
    motion = tessarn::align(from.space(), to.space(), options);
  }
  return py::cast(std::move(motion));
}

}  // namespace

void add_align(py::module_& m) {
  add_alignment<space_alignment, vector3d>(m, "SpaceAlignment", 3, R"(A motion of space, b = scale R a + t.

``m.map(points)`` applies it as image + scale R (p - centre), which keeps the digits of points far from the origin. With
the statuses `collinear` and `not_determined` the motion is one of several that fit equally well.)");
  add_alignment<plane_alignment, vector>(m, "PlaneAlignment", 2, "A motion of the plane; see SpaceAlignment.");
  m.def("align", align, py::arg("a"), py::arg("b"), py::kw_only(), py::arg("scale") = false,
        py::arg("reflections") = false, py::arg("w") = py::none(), py::arg("leave_out_not_finite") = false,
        R"(Find the motion that carries the points a onto the points b, pair by pair.

Parameters
----------
a, b : array_like, shape (n, 3) or (n, 2)
    The points. Arrays of float64 are taken where they lie, also columns of larger ones and transposed ones.
scale : bool
    Also find the scale that fits best.
reflections : bool
    Allow a mirror image where it fits better than every rotation.
w : array_like, shape (n,), optional
    Weights of the residuals.
leave_out_not_finite : bool
    Leave pairs with a NaN or an infinity out, instead of answering `not_finite`.

Returns
-------
SpaceAlignment or PlaneAlignment

Examples
--------
>>> a = np.array([[0, 0, 0], [1, 0, 0], [0, 1, 0]])
>>> b = np.array([[5, 0, 0], [5, 1, 0], [4, 0, 0]])
>>> m = tessarn.align(a, b)
>>> m.translation
array([5., 0., 0.])
>>> m.map([0, 0, 7])
array([5., 0., 7.])
>>> m.root_mean_square
0.0)");
}

}  // namespace binding
