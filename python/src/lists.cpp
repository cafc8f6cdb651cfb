// The point list.
#include "module.h"
#include "text.h"

namespace binding {

namespace {

vectormat to_list(const array_like& points) {
  const std::vector<::vector> given = to_vectors(points, "points");
  vectormat list;
  list.append(given.data(), given.size());
  return list;
}

array to_array(const vectormat& list) { return from_vectors(list.points, list.count); }

// An index as Python counts it, also from the end.
tessarn::ulong place(const vectormat& list, py::ssize_t index) {
  const auto count = static_cast<py::ssize_t>(list.count);
  const py::ssize_t i = index < 0 ? index + count : index;
  if (i < 0 || i >= count) throw py::index_error("the list has " + std::to_string(count) + " points");
  return static_cast<tessarn::ulong>(i);
}

void add_as_container(py::class_<vectormat>& type) {
  type.def("__len__", [](const vectormat& l) { return l.count; })
      .def(
          "__getitem__", [](const vectormat& l, py::ssize_t index) { return l[place(l, index)]; }, py::arg("index"),
          "A copy of a point.")
      .def(
          "__setitem__", [](vectormat& l, py::ssize_t index, const ::vector& v) { l[place(l, index)] = v; },
          py::arg("index"), py::arg("v"))
      .def(
          "__array__",
          [](const vectormat& l, const py::object& dtype) {
            return dtype.is_none() ? py::object(to_array(l)) : to_array(l).attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the points, shape (n, 2).")
      .def(
          "append",
          [](vectormat& l, const array_like& points) {
            const std::vector<::vector> given = to_vectors(points, "points");
            l.append(given.data(), given.size());
          },
          py::arg("points"), "Appends the rows of an array of shape (n, 2), or the points of another list.")
      .def("reserve", &vectormat::reserve, py::arg("n"), "Makes room for n points in all.")
      .def("__repr__", [](const vectormat& l) { return call_text("vectormat", to_array(l)); })
      .def("__str__", [](const vectormat& l) { return printed(l); })
      .def("__copy__", [](const vectormat& l) { return l; })
      .def(
          "__deepcopy__", [](const vectormat& l, const py::dict&) { return l; }, py::arg("memo"))
      .def(py::pickle([](const vectormat& l) { return to_array(l); },
                      [](const array& points) { return to_list({points}); }));
}

}  // namespace

void add_lists(py::module_& m) {
  py::class_<vectormat> type(m, "vectormat", R"(A growable list of plane points.

A point whose x is exactly -1.0 is marked as deleted: DeleteErrors removes it, classic fits leave it out. Indexing gives
copies of the points, ``np.asarray(list)`` an array of shape (n, 2).

Examples
--------
>>> points = tessarn.vectormat([[0, 1], [1, 1], [2, 9], [3, 1]])
>>> points.add(tessarn.vector(4, 1))
>>> points.DeleteErrors(20)                # (2, 9) is 6.4 above the mean around it
>>> len(points), points[2]
(4, vector(3.0, 1.0)))");
  type.def(py::init<>())
      .def(py::init([](const vectormat& l) { return l; }), py::arg("o"), "A deep copy.")
      .def(py::init(&to_list), py::arg("points"), "The rows of an array of shape (n, 2).")
      .def_property_readonly(
          "count", [](const vectormat& l) { return l.count; }, "The number of points.")
      .def_property_readonly(
          "capacity", [](const vectormat& l) { return l.capacity; }, "The number of points that fit.")
      .def("empty", &vectormat::empty, "Removes all points; it does not ask whether there are any.")
      .def(
          "add", [](vectormat& l, const ::vector& v) { l.add(v); }, py::arg("v"), "Appends a point.")
      .def(
          "del_", [](vectormat& l, tessarn::ulong i) { l.del(i); }, py::arg("i"),
          "Removes point i, the last one for an index beyond it; `del` in C++, a word that Python keeps for itself.")
      .def(
          "__iadd__", [](vectormat& l, const ::vector& v) -> vectormat& { return l += v, l; }, py::arg("v"),
          "Appends a point.")
      .def(
          "__isub__", [](vectormat& l, tessarn::ulong i) -> vectormat& { return l -= i, l; }, py::arg("i"),
          "Removes point i.")
      .def(
          "__imul__", [](vectormat& l, double k) -> vectormat& { return l *= k, l; }, py::arg("k"),
          "Multiplies the y of every point, and leaves x as it is.")
      .def("flip", &vectormat::flip, "Exchanges x and y of every point.")
      .def("sort", &vectormat::sort, py::call_guard<py::gil_scoped_release>(),
           "Sorts ascending by x, ties by y; a point with a NaN x stays where it is.")
      .def(
          "average", [](const vectormat& l) { return l.average(); }, "The mean point; NaN for an empty list.")
      .def(
          "avdir", [](const vectormat& l) { return l.avdir(); },
          "The direction (1, s) of the line fitted through the unmarked points.")
      .def("DeleteErrors", &vectormat::DeleteErrors, py::arg("limit"), py::call_guard<py::gil_scoped_release>(),
           "Removes marked points, and with limit != 0 those whose y differs from the mean around them by more than "
           "sqrt(limit).")
      .def(
          "findline", [](vectormat& l, const ::vector& dir) { return std::unique_ptr<vectormat>(l.findline(dir)); },
          py::arg("dir"),
          "Extracts the chain of points that follows a direction into a new list, and removes them from this one; None "
          "for fewer than two points.");
  add_as_container(type);
}

}  // namespace binding
