// The complex square matrix: storage, columns, product.
#include <algorithm>

#include "core/storage.h"
#include "matrix/complex_array.h"
#include "matrix/kernels/kernels.h"
#include "matrix/multiply.h"
#include "matrix/names.h"

using tessarn::detail::complex_mat;
using tessarn::detail::complex_sqmat;
using tessarn::detail::entry_count;

namespace {

// a b as new entries.
cplx* product_of(const cplx* a, const cplx* b, tessarn::ulong n) {
  using namespace tessarn::detail;
  const std::size_t count = entry_count(n, n);
  entries_owner product(allocate_entries(count));
  multiply(a, b, first_part(product.get()), n);
  construct_around_parts(product.get(), count);
  return product.release();
}

}  // namespace

complex_sqmat::sqmat(sqmat& m)
    : data(tessarn::detail::copied_entries(m.data, entry_count(m.size, m.size))), size(m.size) {}

complex_sqmat::~sqmat() { release(); }

void complex_sqmat::release() noexcept {
  cplx* entries = data;
  forget();
  tessarn::detail::release_entries(entries);  // at the end, where nothing has to be kept for later
}

void complex_sqmat::create(tessarn::ulong n) {
  release();
  tessarn::detail::require_countable(n, n);
  data = tessarn::detail::zero_entries(entry_count(n, n));
  size = n;
}

void complex_sqmat::operator=(sqmat& src) {
  if (size != src.size) create(src.size);
  if (this != &src) std::copy_n(src.data, entry_count(size, size), data);
}

complex_sqmat& complex_sqmat::operator=(sqmat&& src) noexcept {
  if (this == &src) return *this;
  tessarn::detail::release_entries(data);
  data = src.data;
  size = src.size;
  src.forget();
  return *this;
}

complex_mat complex_sqmat::getColumn(tessarn::ulong x) {
  complex_mat column;
  column.create(1, size);
  for (tessarn::ulong y = 0; y < size; ++y) column.getData()[y] = data[position(x, y)];
  return column;
}

void complex_sqmat::setColumn(tessarn::ulong x, complex_mat column) {
  if (size == 0 || column.getHeight() != size || column.getWidth() == 0) return;
  tessarn::detail::require_countable(column.getWidth(), column.getHeight());
  for (tessarn::ulong y = 0; y < size; ++y) data[position(x, y)] = column.get(0, y);
}

void complex_sqmat::operator*=(sqmat& b) {
  if (b.size != size || size == 0) return;
  tessarn::detail::multiply(data, b.data, tessarn::detail::first_part(data), size);
}

complex_sqmat tessarn::detail::unchecked::product(const complex_sqmat& a, const complex_sqmat& b) {
  complex_sqmat product;
  if (a.size != b.size || a.size == 0) return product;
  product.data = product_of(a.data, b.data, a.size);
  product.size = a.size;
  return product;
}
