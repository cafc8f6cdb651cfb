// A picture drawn by gnuplot into an .svg, .png or .pdf file.
#pragma once

#include <string>
#include <vector>

namespace program {

class plot {
 public:
  // Throws input_error when the name ends otherwise or the file cannot be written.
  plot(const std::string& file, int width, int height);
  ~plot();
  plot(const plot&) = delete;
  plot& operator=(const plot&) = delete;

  void command(const std::string& line);
  // The data block $name.
  void data(const std::string& name, const std::vector<std::vector<double>>& rows);
  // Runs gnuplot; the file appears only when it is complete. Throws no_result when gnuplot fails.
  void draw();

 private:
  std::string file_;
  std::string part_;  // written first, renamed at the end
  std::string script_;
};

// The number in the shortest of the usual forms with the given digits.
std::string text(double v, int digits = 6);
// The string as gnuplot reads it literally.
std::string quote(const std::string& s);
// "name (unit)" gives "what (unit)".
std::string with_unit_of(const std::string& name, const std::string& what);
// 1, 2 or 5 times a power of ten, so that about `count` of them make `extent`.
double tick_step(double extent, double count);
// A range that leaves room around the values: "[lo:hi]".
std::string padded_range(double lo, double hi, double share = 0.05);

}  // namespace program
