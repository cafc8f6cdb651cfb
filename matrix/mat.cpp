// The real rectangular matrix: storage, arithmetic, comparison.
#include <algorithm>
#include <cmath>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/elementwise.h"
#include "matrix/multiply.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::entry_count;
using tessarn::detail::nan_to_zero;
using tessarn::detail::real_mat;

namespace {

std::size_t entry_count(const real_mat& m) { return tessarn::detail::entry_count(m.getWidth(), m.getHeight()); }

// Applies the function to each pair of entries, in a new matrix of the sizes of a.
template <class Function>
real_mat combined(const real_mat& a, const real_mat& b, Function f) {
  real_mat result;
  if (a.getWidth() != b.getWidth() || a.getHeight() != b.getHeight()) return result;
  result.create(a.getWidth(), a.getHeight());
  const real* u = a.getData();
  const real* v = b.getData();
  real* r = result.getData();
  const std::size_t n = entry_count(a);
  for (std::size_t i = 0; i < n; ++i) r[i] = nan_to_zero(f(u[i], v[i]));
  return result;
}

template <class Function>
real_mat mapped(const real_mat& a, Function f) {
  real_mat result;
  result.create(a.getWidth(), a.getHeight());
  const real* u = a.getData();
  real* r = result.getData();
  const std::size_t n = entry_count(a);
  for (std::size_t i = 0; i < n; ++i) r[i] = nan_to_zero(f(u[i]));
  return result;
}

}  // namespace

real_mat::mat(mat& m) : mat() {
  if (m.data == nullptr) return;
  create(m.width, m.height);
  std::copy_n(m.data, entry_count(m), data);
}

real_mat::~mat() { release(); }

void real_mat::release() noexcept {
  delete[] data;
  forget();
}

void real_mat::operator=(mat& src) {
  if (this == &src) return;
  create(src.width, src.height);
  std::copy_n(src.data, entry_count(src), data);
}

real_mat& real_mat::operator=(mat&& src) noexcept {
  if (this == &src) return *this;
  delete[] data;
  data = src.data;
  width = src.width;
  height = src.height;
  src.forget();
  return *this;
}

void real_mat::create(tessarn::ulong columns, tessarn::ulong rows) {
  release();
  data = new real[entry_count(columns, rows)];
  width = columns;
  height = rows;
}

void real_mat::set(tessarn::ulong x, tessarn::ulong y, real v) {
  const std::uint64_t place = position(x, y);
  if (place >= entry_count(width, height)) throw std::bad_array_new_length();  // a count that wrapped
  data[place] = tessarn::detail::without_quiet_nan(v);
}

real_mat real_mat::operator+(mat& b) {
  return combined(*this, b, [](real u, real v) { return u + v; });
}

real_mat real_mat::operator-(mat& b) {
  return combined(*this, b, [](real u, real v) { return u - v; });
}

real_mat real_mat::operator*(mat& b) {
  mat product;
  if (width != b.height) return product;
  tessarn::detail::require_countable(width, height);
  tessarn::detail::require_countable(b.width, b.height);
  tessarn::detail::require_countable(b.width, height);
  product.create(b.width, height);
  tessarn::detail::multiply(data, b.data, product.data, height, width, b.width);
  return product;
}

real_mat real_mat::operator*(real s) {
  return mapped(*this, [s](real u) { return s * u; });
}

real_mat real_mat::operator/(real s) {
  return mapped(*this, [s](real u) { return u / s; });
}

bool real_mat::operator==(mat& b) {
  if (width != b.width || height != b.height) return true;
  return tessarn::detail::entries_equal(data, b.data, entry_count(*this));
}

bool real_mat::operator!=(mat& b) {
  if (width != b.width || height != b.height) return false;
  return !tessarn::detail::entries_equal(data, b.data, entry_count(*this));
}

void real_mat::transpose(mat& dst) {
  tessarn::detail::require_countable(width, height);
  if (&dst == this) {  // released before it is read: what is left to move are zeros
    mat cleared;
    cleared.create(height, width);
    std::fill_n(cleared.data, entry_count(cleared), static_cast<real>(0));
    *this = static_cast<mat&&>(cleared);
    return;
  }
  dst.create(height, width);
  tessarn::detail::transpose_entries(data, width, height, dst.data, [](real v) { return v; });
}

real_mat real_mat::normalize() {
  mat unit;
  if (width != 1) return unit;
  real sum = 0;
  for (tessarn::ulong y = 0; y < height; ++y) sum += data[y] * data[y];
  return *this / std::sqrt(sum);
}

bool real_mat::isDiagonal() {
  tessarn::detail::require_countable(width, height);
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t x = 0; x < width; ++x)
      if (x != y && !tessarn::detail::equal_or_unordered(data[y * width + x], 0)) return false;
  return true;
}
