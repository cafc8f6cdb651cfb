// The adaptors, compiled for Microsoft's C++ ABI without a warning. They are templates and streams, for which a whole
// C++ library would have to be linked; with MinGW-w64 their tests run (tests/adaptors/).
#include <cmath>
extern "C" long double fabsl(long double);  // the headers that stand in for the vendor's lack it, and Eigen calls it

#include <tessarn/eigen.h>
#include <tessarn/files.h>
#include <tessarn/std.h>

std::size_t use_every_adaptor() {
  mat<long double> m{{1, 2, 3}, {4, 5, 6}};
  const auto mapped = tessarn::eigen_map(m);
  const auto copied = tessarn::from_eigen<mat<long double>>(mapped * 2);
  const std::vector<vector3d> cloud = {{1, 2, 3}, {4, 5, 6}};
  std::size_t size = tessarn::files::format_matrix_market(copied).size() + tessarn::files::format_xyz(cloud).size();
  for (const tessarn::real x : tessarn::x_of(cloud)) size += x > 2;
  return size;
}
