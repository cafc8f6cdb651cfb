// Describes a structure of results to Python: one attribute for each field, a text that shows them, as_dict(), and
// pickling, which deep copies use as well. Arrays are views of the structure's own memory that cannot be written to.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"

namespace binding {

// How the entries of a matrix are shown.
enum class layout {
  column,  // one column as an array of one dimension
  square,  // rows and columns
  table,   // the coefficients of a surface, c(i, j) at grade j + i, as an array that is indexed [i, j]
};

inline array shown(const mat<long double>& m, layout form, py::handle owner) {
  constexpr py::ssize_t item = sizeof(double);
  const auto height = static_cast<py::ssize_t>(m.getHeight()), width = static_cast<py::ssize_t>(m.getWidth());
  if (form == layout::square) return read_only(m.getData(), {height, width}, {width * item, item}, owner);
  const py::ssize_t size = width == 0 ? 0 : height;
  if (form == layout::column) return read_only(m.getData(), {size}, {item}, owner);
  py::ssize_t grade = 0;
  while (grade * grade < size) ++grade;
  return read_only(m.getData(), {grade, grade}, {item, grade * item}, owner);
}

// The entries of an array that shown() has made.
inline void restore(mat<long double>& m, layout form, const py::handle& value) {
  py::array_t<double, py::array::f_style | py::array::forcecast> by_columns(py::reinterpret_borrow<py::object>(value));
  py::array_t<double, py::array::c_style | py::array::forcecast> by_rows(py::reinterpret_borrow<py::object>(value));
  const bool square = form == layout::square;
  if (by_rows.size() == 0) return;
  m.create(static_cast<tessarn::ulong>(square ? by_rows.shape(1) : 1),
           static_cast<tessarn::ulong>(square ? by_rows.shape(0) : by_rows.size()));
  const double* from = form == layout::table ? by_columns.data() : by_rows.data();
  std::copy_n(as_real(from), static_cast<std::size_t>(by_rows.size()), m.getData());
}

// A short form of a value for the text of a result.
inline std::string short_text(const py::object& value) {
  if (py::isinstance<py::array>(value)) {
    const auto a = py::reinterpret_borrow<py::array>(value);
    if (a.size() > 16) return "array of shape " + shape_of(a);
    return py::str(py::module_::import("numpy").attr("array2string")(a, py::arg("separator") = ", "))
        .cast<std::string>();
  }
  if (py::isinstance<tessarn::status>(value)) return value.attr("name").cast<std::string>();
  return py::repr(value).cast<std::string>();
}

inline std::string indented(const std::string& text, const std::string& margin) {
  std::string result;
  for (const char c : text) result += c == '\n' ? "\n" + margin : std::string(1, c);
  return result;
}

template <class R>
class record {
 public:
  record(py::module_& m, const char* name, const char* doc) : name_(name), class_(m, name, doc) {}

  py::class_<R>& type() { return class_; }

  // A number, a truth value, a status, an array of a point, or another structure.
  template <class F, class Base>
  record& field(const char* name, F Base::*member, const char* doc) {
    F R::*const place = member;
    if constexpr (std::is_same_v<F, ::vector> || std::is_same_v<F, vector3d>) {
      constexpr py::ssize_t n = std::is_same_v<F, ::vector> ? 2 : 3;
      attribute(
          name,
          [place](const py::object& self) {
            return read_only(&(self.cast<R&>().*place).x, {n}, {sizeof(double)}, self);
          },
          [place](R& r, const py::handle& value) {
            const array a(py::reinterpret_borrow<py::object>(value));
            std::copy_n(as_real(a.data()), n, &(r.*place).x);
          },
          doc);
    } else if constexpr (std::is_class_v<F>) {
      attribute(
          name, [place](R& r) -> F& { return r.*place; },
          [place](R& r, const py::handle& value) { r.*place = value.cast<F&>(); }, doc);
    } else {
      attribute(
          name, [place](const R& r) { return public_value(r.*place); },
          [place](R& r, const py::handle& value) { r.*place = static_cast<F>(value.cast<public_type<F>>()); }, doc);
    }
    return *this;
  }
  // The entries of a matrix.
  template <class Base>
  record& field(const char* name, mat<long double> Base::*member, layout form, const char* doc) {
    mat<long double> R::*const place = member;
    return attribute(
        name, [place, form](const py::object& self) { return shown(self.cast<R&>().*place, form, self); },
        [place, form](R& r, const py::handle& value) { restore(r.*place, form, value); }, doc);
  }
  // A field of another kind: how it is read, and how it is restored.
  template <class Get>
  record& attribute(const char* name, Get get, std::function<void(R&, const py::handle&)> set, const char* doc) {
    class_.def_property_readonly(name, get, doc);
    names_.emplace_back(name, std::move(set));
    return *this;
  }

  // `ok` and `message`, for structures that have a status.
  record& with_status(tessarn::status R::*state) {
    class_.def_property_readonly(
        "ok", [state](const R& r) { return r.*state == tessarn::status::ok; }, "Whether the status is `ok`.");
    class_.def_property_readonly(
        "message", [state](const R& r) { return tessarn::to_string(r.*state); }, "The status in a sentence.");
    return *this;
  }

  // Once all fields are named.
  void finish() {
    auto fields = std::make_shared<const std::vector<entry>>(std::move(names_));
    const std::string name = name_;
    const auto as_dict = [fields](const py::object& self) {
      py::dict d;
      for (const auto& [key, set] : *fields) {
        const py::object value = self.attr(key.c_str());
        d[key.c_str()] = py::hasattr(value, "as_dict") ? value.attr("as_dict")() : value;
      }
      return d;
    };
    class_.def("as_dict", as_dict,
               "All fields by their names. Fields that are results themselves become dictionaries.");
    class_.def("__repr__", [fields, name](const py::object& self) {
      std::string text = name + ":";
      std::size_t widest = 0;
      for (const auto& [key, set] : *fields) widest = std::max(widest, key.size());
      for (const auto& [key, set] : *fields)
        text += "\n  " + std::string(widest - key.size(), ' ') + key + ": " +
                indented(short_text(self.attr(key.c_str())), std::string(widest + 4, ' '));
      return text;
    });
    class_.def(py::pickle(
        [fields](const py::object& self) {
          py::dict d;
          for (const auto& [key, set] : *fields) d[key.c_str()] = self.attr(key.c_str());
          return d;
        },
        [fields](const py::dict& d) {
          R r{};
          for (const auto& [key, set] : *fields) set(r, d[key.c_str()]);
          return r;
        }));
  }

 private:
  using entry = std::pair<std::string, std::function<void(R&, const py::handle&)>>;

  // Integers and floats of Python for those of the library.
  template <class F>
  using public_type = std::conditional_t<std::is_same_v<F, tessarn::real>, double, F>;
  template <class F>
  static public_type<F> public_value(const F& v) {
    return static_cast<public_type<F>>(v);
  }

  std::string name_;
  py::class_<R> class_;
  std::vector<entry> names_;
};

// Throws ValueError for a result without an answer, with the reason.
inline void require_answer(bool there, const char* what, tessarn::status state) {
  if (!there) throw py::value_error(std::string("no ") + what + ": " + tessarn::to_string(state));
}

}  // namespace binding
