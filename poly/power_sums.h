// The sums of which the normal equations of the polynomial fits consist.
#pragma once

#include "core/storage.h"
#include "core/workspace.h"
#include "poly/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// A sum from its partial sums, as a balanced tree.
inline double tree_sum(const double* s) noexcept {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

// power(e) = sum of x^e for e below exponents, and moment(e) = sum of x^e y for 2 e below exponents, over the points in
// the order in which they are added: correctly rounded powers, each sum in partial_sums from +0.0. Equal exponents
// share one sum. Most points are added by a kernel that takes them as they lie in memory; the others pass through a
// block of fixed size (docs/powers.md).
class power_sums {
 public:
  explicit power_sums(unsigned exponents);
  power_sums(const power_sums&) = delete;
  // Adds the points whose abscissa is neither the marker nor NaN; all, where the marker is NaN.
  void add(const vector* points, std::size_t n, real marker);
  // Ends adding: every sum in one number, and 0 where it is a NaN.
  void close();
  real power(unsigned e) const { return sums_[e]; }
  real moment(unsigned e) const { return sums_[exponents_ + e]; }

 private:
  std::size_t add_at_once(const double* points, std::size_t n, double marker);
  std::size_t add_by_kernel(const double* points, std::size_t n, double marker);
  void add(const vector& point, real marker);
  bool add_block(const double* points, std::size_t n, double marker);
  void flush();

  const poly_kernels& kernels_ = poly_kernels_in_use();
  static constexpr std::size_t cache_line = 64 / sizeof(real);

  const unsigned exponents_;
  const std::size_t length_;
  workspace<double, 23 * partial_sums, 64> room_;  // enough for eight coefficients
  double* const sums_;
  real_array powers_;  // allocated by the first block that needs them
  std::size_t count_ = 0, waiting_ = 0;
  unsigned blocks_without_kernel_ = 0;
  alignas(64) double block_[3 * point_block];  // points as they lie in memory
};

// Whether the powers below count of all abscissas of a block are in the safe range (core/power_range.h), or are those
// of 0.
bool chains_are_safe(const double* x, unsigned count) noexcept;

// powers[e * point_block + i] = x[i]^e for 2 <= e < exponents and the block of abscissas x = powers + point_block,
// whatever their range.
void block_powers(unsigned exponents, double* powers);

}  // namespace tessarn::detail
