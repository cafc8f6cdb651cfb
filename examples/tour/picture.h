// The data of a picture: series of numbers, as JSON, in the file that the first argument
// names.
#pragma once

#include <tessarn/views.h>

#include <cmath>
#include <fstream>
#include <string>

class picture {
 public:
  picture(int argc, char** argv) {
    if (argc > 1) out_.open(argv[1]);
    out_ << "[";
    out_.precision(17);
  }
  ~picture() { out_ << "]\n"; }
  picture(const picture&) = delete;
  picture& operator=(const picture&) = delete;

  // Single points, drawn as marks.
  void points(const std::string& label, const tessarn::plane_points& p) {
    begin("points", label);
    for (std::size_t i = 0; i < p.size(); ++i) point(p.x[i], p.y[i]);
    end();
  }
  void point(const std::string& label, double x, double y) {
    begin("points", label);
    point(x, y);
    end();
  }
  // The graph of a function.
  template <class Function>
  void curve(const std::string& label, Function f, double from, double to) {
    begin("line", label);
    for (int i = 0; i <= 200; ++i) {
      const double x = from + (to - from) * i / 200;
      point(x, f(x));
    }
    end();
  }
  void circle(const std::string& label, const vector& centre, double radius) {
    begin("line", label);
    for (int i = 0; i <= 200; ++i) {
      const double turn = 2 * 3.14159265358979 * i / 200;
      point(centre.x + radius * std::cos(turn), centre.y + radius * std::sin(turn));
    }
    end();
  }

 private:
  void begin(const char* kind, const std::string& label) {
    out_ << (first_series_ ? "" : ",") << "\n{\"kind\": \"" << kind << "\", \"label\": \""
         << label << "\", \"xy\": [";
    first_series_ = false;
    first_point_ = true;
  }
  void point(double x, double y) {
    out_ << (first_point_ ? "[" : ", [") << x << ", " << y << "]";
    first_point_ = false;
  }
  void end() { out_ << "]}"; }

  std::ofstream out_;
  bool first_series_ = true;
  bool first_point_ = true;
};
