// Whether the library inside this module gives the bits that every build gives.
#include <pybind11/stl.h>

#include "module.h"
#include "record.h"

namespace binding {

namespace {

using tessarn::rounding;
using tessarn::selfcheck_report;

const char* name_of(rounding r) {
  switch (r) {
    case rounding::nearest: return "nearest";
    case rounding::upward: return "upward";
    case rounding::downward: return "downward";
    case rounding::toward_zero: return "toward_zero";
  }
  return "unknown";
}

}  // namespace

void add_selfcheck(py::module_& m) {
  py::class_<selfcheck_report>(m, "SelfcheckReport", "The findings of selfcheck().")
      .def_property_readonly(
          "line", [](const selfcheck_report& r) { return std::string(r.line); },
          "The answer in one line, for a protocol of measurements.")
      .def_property_readonly(
          "passed", [](const selfcheck_report& r) { return r.passed(); },
          "Whether every hash is the stored one, and the thread computes as the library expects.")
      .def_property_readonly(
          "differing",
          [](const selfcheck_report& r) {
            std::vector<std::string> names;
            for (const tessarn::selfcheck_entry& e : r)
              if (e.differs()) names.push_back(std::string(e.member) + " " + e.inputs);
            return names;
          },
          "The members, with the kind of inputs, whose results have other bits than the stored ones.")
      .def_property_readonly(
          "all", [](const selfcheck_report& r) { return r.all; }, "The hash of all hashes found.")
      .def_property_readonly(
          "count", [](const selfcheck_report& r) { return r.count; }, "The number of hashes.")
      .def_property_readonly(
          "rounds", [](const selfcheck_report& r) { return name_of(r.rounds); }, "How the calling thread rounds.")
      .def_property_readonly(
          "hashes",
          [](const selfcheck_report& r) {
            std::map<std::string, std::uint64_t> hashes;
            for (const tessarn::selfcheck_entry& e : r) hashes[std::string(e.member) + " " + e.inputs] = e.found;
            return hashes;
          },
          "The hash found for each member and kind of inputs.")
      .def("__repr__", [](const selfcheck_report& r) { return "SelfcheckReport(" + std::string(r.line) + ")"; });
  m.def(
      "selfcheck",
      [] {
        py::gil_scoped_release unlocked;
        return tessarn::selfcheck();
      },
      R"(Compute the hashes of what the library gives, and compare them with those that every build gives.

Examples
--------
>>> tessarn.selfcheck().passed
True)");
}

}  // namespace binding
