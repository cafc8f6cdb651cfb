// The flatness of points.
#include "module.h"
#include "record.h"

namespace binding {

namespace {

using tessarn::flatness_result;
using tessarn::reference_plane;

void add_reference_plane(py::module_& m) {
  record<reference_plane> r(m, "ReferencePlane", R"(A plane among points: the places p with normal . p = offset.

The residual of a point is its distance from the plane, positive on the side into which the normal points.)");
  r.field("status", &reference_plane::state, "Whether the result holds, and if not, why.")
      .field("normal", &reference_plane::normal, "Of length 1; its component of the largest magnitude is positive.")
      .field("point", &reference_plane::point, "The foot of the centroid of the points on the plane.")
      .field("offset", &reference_plane::offset, "normal . p of all p of the plane.")
      .field("residuals", &reference_plane::residuals, layout::column, "Of each point; NaN for points left out.")
      .field("root_mean_square", &reference_plane::root_mean_square, "sqrt(sum residual^2 / n).")
      .field("peak_to_valley", &reference_plane::peak_to_valley, "The largest residual minus the smallest one.")
      .field("highest", &reference_plane::highest, "The index of the point with the largest residual.")
      .field("lowest", &reference_plane::lowest, "The index of the point with the smallest residual.")
      .with_status(&reference_plane::state);
  r.finish();
}

}  // namespace

void add_flat(py::module_& m) {
  add_reference_plane(m);
  record<flatness_result> r(m, "Flatness",
                            "The minimum zone of points, its middle plane, and the least-squares plane.");
  r.field("status", &flatness_result::state, "Whether the result holds, and if not, why.")
      .field("zone", &flatness_result::zone,
             "The flatness of ISO 1101: the smallest distance of two parallel planes that hold all points.")
      .field("middle", &flatness_result::middle, "The plane in the middle of the zone.")
      .attribute(
          "touching",
          [](const flatness_result& f) {
            py::array_t<tessarn::ulong> a(static_cast<py::ssize_t>(f.touching_above + f.touching_below));
            std::copy_n(f.touching, a.size(), a.mutable_data());
            return a;
          },
          [](flatness_result& f, const py::handle& value) {
            std::size_t k = 0;
            for (const py::handle& index : value) f.touching[k++] = index.cast<tessarn::ulong>();
          },
          "The indices of points on the two planes, which determine them: first those above, then those below.")
      .field("touching_above", &flatness_result::touching_above, "How many of them are above.")
      .field("touching_below", &flatness_result::touching_below, "How many of them are below.")
      .field("least_squares", &flatness_result::least_squares,
             "The plane with the smallest sum of squared distances; it has a status of its own.")
      .field("determination", &flatness_result::determination,
             "How well the normal of the least-squares plane is determined, from 0 to 1/2.")
      .field("points_used", &flatness_result::points_used, "The number of points that are finite.")
      .field("points_left_out", &flatness_result::points_left_out, "The number of points that are not.")
      .with_status(&flatness_result::state);
  r.finish();
  m.def(
      "flatness",
      [](const array_like& points, bool leave_out_not_finite) {
        const rows p = to_rows(points, "points", 3);
        py::gil_scoped_release unlocked;
        return tessarn::flatness(p.space(), {leave_out_not_finite});
      },
      py::arg("points"), py::kw_only(), py::arg("leave_out_not_finite") = false,
      R"(The least-squares plane and the flatness (minimum zone) of points.

Parameters
----------
points : array_like, shape (n, 3)
leave_out_not_finite : bool
    Leave points with a NaN or an infinity out, instead of answering `not_finite`.

Returns
-------
Flatness

Examples
--------
>>> f = tessarn.flatness([[0, 0, 0], [4, 0, 0], [0, 4, 0], [4, 4, 0], [2, 2, 1]])
>>> f.zone
1.0
>>> bool(f.zone <= f.least_squares.peak_to_valley)
True)");
}

}  // namespace binding
