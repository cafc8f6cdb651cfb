// The functions of the C library that the plain forms call, with an ear for each call: results that differ from
// one C library to another can then be traced to the calls.
#pragma once

#include <cmath>
#include <vector>

namespace plain {

enum class function { sine, cosine, arc_sine, arc_cosine };

struct library_call {
  function which;
  double argument;
  double value;
};

inline double call(function which, double x) {
  switch (which) {
    case function::sine: return std::sin(x);
    case function::cosine: return std::cos(x);
    case function::arc_sine: return std::asin(x);
    default: return std::acos(x);
  }
}

// Receives the calls of a listening program.
inline std::vector<library_call>* listener = nullptr;

inline double noted(function which, double x) {
  const double value = call(which, x);
  if (listener) listener->push_back({which, x, value});
  return value;
}

inline double sine(double x) { return noted(function::sine, x); }
inline double cosine(double x) { return noted(function::cosine, x); }
inline double arc_sine(double x) { return noted(function::arc_sine, x); }
inline double arc_cosine(double x) { return noted(function::arc_cosine, x); }

}  // namespace plain
