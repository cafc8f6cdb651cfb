// Texts of objects: repr() as a call that makes the object again, str() as the library prints it.
#pragma once

#include <initializer_list>
#include <sstream>
#include <string>

#include "arrays.h"
#include "tessarn/io.h"

namespace binding {

inline std::string number_text(tessarn::real v) {
  return py::repr(py::float_(static_cast<double>(v))).cast<std::string>();
}

// "name(1.0, 2.0)"
inline std::string call_text(const char* name, std::initializer_list<tessarn::real> arguments) {
  std::string text = name, separator = "(";
  for (const tessarn::real v : arguments) {
    text += separator + number_text(v);
    separator = ", ";
  }
  return text + ")";
}

// "name([[1.0, 2.0], [3.0, 4.0]])", by the lists that an array gives; "name()" without entries.
inline std::string call_text(const char* name, const py::array& entries) {
  std::string text = name;
  if (entries.size() == 0) return text + "()";
  text.append("(").append(py::repr(entries.attr("tolist")()).cast<std::string>()).append(")");
  return text;
}

template <class T>
std::string printed(const T& object) {
  std::ostringstream out;
  out << object;
  return out.str();
}

}  // namespace binding
