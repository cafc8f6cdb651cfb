// The complex rectangular matrix: storage only.
#include <algorithm>

#include "matrix/complex_array.h"
#include "matrix/names.h"

using tessarn::detail::complex_mat;
using tessarn::detail::entry_count;

complex_mat::mat(mat& m) : mat() {
  if (m.data == nullptr) return;
  data = tessarn::detail::copied_entries(m.data, entry_count(m.width, m.height));
  width = m.width;
  height = m.height;
}

complex_mat::~mat() { release(); }

void complex_mat::release() noexcept {
  tessarn::detail::release_entries(data);
  forget();
}

void complex_mat::operator=(mat& src) {
  if (this == &src) return;
  create(src.width, src.height);
  std::copy_n(src.data, entry_count(width, height), data);
}

complex_mat& complex_mat::operator=(mat&& src) noexcept {
  if (this == &src) return *this;
  tessarn::detail::release_entries(data);
  data = src.data;
  width = src.width;
  height = src.height;
  src.forget();
  return *this;
}

void complex_mat::create(tessarn::ulong columns, tessarn::ulong rows) {
  release();
  data = tessarn::detail::zero_entries(entry_count(columns, rows));
  width = columns;
  height = rows;
}
