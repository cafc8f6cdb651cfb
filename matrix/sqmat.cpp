// The real square matrix: storage, columns, product, comparison.
#include <algorithm>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/elementwise.h"
#include "matrix/multiply.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::entry_count;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;
using tessarn::detail::without_quiet_nan;

real_sqmat::sqmat(sqmat& m) : sqmat() {
  create(m.size);
  std::copy_n(m.data, entry_count(size, size), data);
}

real_sqmat::~sqmat() { release(); }

void real_sqmat::release() noexcept {
  delete[] data;
  forget();
}

void real_sqmat::create(tessarn::ulong n) {
  release();
  if (n == 0) return;
  tessarn::detail::require_countable(n, n);
  data = new real[entry_count(n, n)];
  size = n;
}

void real_sqmat::operator=(sqmat& src) {
  if (size != src.size) create(src.size);
  if (this != &src) std::copy_n(src.data, entry_count(size, size), data);
}

real_sqmat& real_sqmat::operator=(sqmat&& src) noexcept {
  if (this == &src) return *this;
  delete[] data;
  data = src.data;
  size = src.size;
  src.forget();
  return *this;
}

void real_sqmat::set(tessarn::ulong x, tessarn::ulong y, real v) { data[position(x, y)] = without_quiet_nan(v); }

real_mat real_sqmat::getColumn(tessarn::ulong x) {
  real_mat column;
  column.create(1, size);
  if (size == 0) return column;
  const real* entry = data + position(x, 0);
  for (tessarn::ulong y = 0; y < size; ++y, entry += size) column.getData()[y] = without_quiet_nan(*entry);
  return column;
}

void real_sqmat::setColumn(tessarn::ulong x, real_mat column) {
  if (size == 0 || column.getHeight() != size || column.getWidth() == 0) return;
  tessarn::detail::require_countable(column.getWidth(), column.getHeight());
  real* entry = data + position(x, 0);
  const real* source = column.getData();
  for (tessarn::ulong y = 0; y < size; ++y, entry += size, source += column.getWidth())
    *entry = without_quiet_nan(*source);
}

void real_sqmat::transpose(sqmat& dst) {
  sqmat transposed;
  transposed.create(size);
  tessarn::detail::transpose_entries(data, size, size, transposed.data, without_quiet_nan);
  dst = static_cast<sqmat&&>(transposed);
}

void real_sqmat::operator*=(sqmat& b) {
  if (b.size != size || size == 0) return;
  const sqmat product = *this * b;
  std::copy_n(product.data, entry_count(size, size), data);
}

real_sqmat tessarn::detail::unchecked::product(const real_sqmat& a, const real_sqmat& b) {
  real_sqmat product;
  if (a.size != b.size) return product;
  product.create(a.size);
  tessarn::detail::multiply(a.data, b.data, product.data, a.size, a.size, a.size);
  return product;
}

bool real_sqmat::operator==(sqmat& b) {
  return size != b.size || tessarn::detail::entries_equal(data, b.data, entry_count(size, size));
}

bool real_sqmat::operator!=(sqmat& b) {
  return size == b.size && !tessarn::detail::entries_equal(data, b.data, entry_count(size, size));
}
