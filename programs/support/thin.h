// A million points on a thousand pixels: what of them can be seen in a picture, and no more.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace program {

// Pictures show up to this many points one by one, and up to so many residuals as single lines.
inline constexpr std::size_t most_points = 5000, most_lines = 1000;

// A panel of a picture: the values at its edges, divided into equal spots.
struct raster {
  double left, right, bottom, top;
  std::size_t columns, rows;
};

// A raster of square spots with a side of some pixels over a panel of width x height pixels.
raster spots(double left, double right, double bottom, double top, double width, double height, double side = 4);

// The points to draw, ascending: all of them, or when there are more than most_points the first one
// in every spot. Points outside the panel are left out then.
std::vector<std::size_t> visible(const std::vector<double>& x, const std::vector<double>& y, const raster& r);

// "points" when all are drawn, otherwise with the number drawn: for the legend.
std::string drawn(const std::string& what, std::size_t shown, std::size_t all);

// The points that share one column of pixels, summed up.
struct column {
  double left, right;
  double least, greatest, mean, deviation;  // standard deviation around the mean
  std::size_t points;
};

// The columns of [left, right] that hold points, ascending; points outside are left out.
std::vector<column> columns_of(const std::vector<double>& x, const std::vector<double>& y, double left, double right,
                               std::size_t columns);

// The mean of z in a spot.
struct spot {
  double left, right, bottom, top, mean;
};

// The spots that hold points, row by row.
std::vector<spot> means_of(const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>& z,
                           const raster& r);

}  // namespace program
