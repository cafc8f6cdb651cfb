// Arithmetic on contiguous columns for the decomposition. The order inside its sums is free; the one chosen here
// holds in every build: eight partial sums, entry k in sum k mod 8, added as a balanced tree. Kernel sources only.
#pragma once

#include "core/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

static constexpr size_t partial_sums = 8;
static constexpr size_t sum_vectors = partial_sums / width;

// Eight partial sums of products.
struct partial_dot {
  vec s[sum_vectors];
};

TESSARN_INLINE double tree_sum(const partial_dot& d, const double* rest_a, const double* rest_b, size_t rest) {
  double s[partial_sums];
  for (size_t i = 0; i < sum_vectors; ++i) store(s + i * width, d.s[i]);
  for (size_t i = 0; i < rest; ++i) s[i] += rest_a[i] * rest_b[i];
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

// The products of h with COUNT columns side by side.
template <size_t COUNT>
TESSARN_INLINE void dots(const double* h, const double* columns, size_t stride, size_t length, double* result) {
  partial_dot d[COUNT] = {};
  size_t k = 0;
  for (; k + partial_sums <= length; k += partial_sums)
    for (size_t i = 0; i < sum_vectors; ++i) {
      const vec v = load(h + k + i * width);
      for (size_t j = 0; j < COUNT; ++j) d[j].s[i] += v * load(columns + j * stride + k + i * width);
    }
  for (size_t j = 0; j < COUNT; ++j) result[j] = tree_sum(d[j], h + k, columns + j * stride + k, length - k);
}

static double dot(const double* a, const double* b, size_t n) {
  double result;
  dots<1>(a, b, 0, n, &result);
  return result;
}

static double sum_of_magnitudes(const double* a, size_t n) {
  double s[partial_sums] = {};
  for (size_t k = 0; k < n; ++k) s[k % partial_sums] += a[k] < 0 ? -a[k] : a[k];
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

template <size_t COUNT>
TESSARN_INLINE void reflect_group(const double* h, size_t skip, size_t length, double d, double g, double* columns,
                                  size_t stride) {
  double f[COUNT];
  dots<COUNT>(h + skip, columns + skip, stride, length - skip, f);
  for (size_t j = 0; j < COUNT; ++j) f[j] = (f[j] / d) * g;
  size_t k = 0;
  for (; k + width <= length; k += width) {
    const vec v = load(h + k);
    for (size_t j = 0; j < COUNT; ++j) {
      double* entry = columns + j * stride + k;
      store(entry, load(entry) + broadcast(f[j]) * v);
    }
  }
  for (; k < length; ++k)
    for (size_t j = 0; j < COUNT; ++j) columns[j * stride + k] += f[j] * h[k];
}

// Each of count columns becomes column + ((h . column) / d) g h, the product without the first skip entries.
static void reflect(const double* h, size_t skip, size_t length, double d, double g, double* columns, size_t stride,
                    size_t count) {
  size_t j = 0;
  for (; j + 4 <= count; j += 4) reflect_group<4>(h, skip, length, d, g, columns + j * stride, stride);
  for (; j < count; ++j) reflect_group<1>(h, skip, length, d, g, columns + j * stride, stride);
}

// sum = sum of f[j] column j over count columns ascending, for n rows.
static void combine(const double* f, const double* columns, size_t stride, size_t count, double* sum, size_t n) {
  size_t k = 0;
  for (; k + 2 * width <= n; k += 2 * width) {
    vec first = {}, second = {};
    for (size_t j = 0; j < count; ++j) {
      const vec factor = broadcast(f[j]);
      first += factor * load(columns + j * stride + k);
      second += factor * load(columns + j * stride + k + width);
    }
    store(sum + k, first);
    store(sum + k + width, second);
  }
  for (; k < n; ++k) {
    double s = 0;
    for (size_t j = 0; j < count; ++j) s += f[j] * columns[j * stride + k];
    sum[k] = s;
  }
}

// Column j += f[j] h for count columns of n rows.
static void add_outer(const double* f, const double* h, double* columns, size_t stride, size_t count, size_t n) {
  for (size_t j = 0; j < count; ++j) {
    double* column = columns + j * stride;
    const vec factor = broadcast(f[j]);
    size_t k = 0;
    for (; k + width <= n; k += width) store(column + k, load(column + k) + factor * load(h + k));
    for (; k < n; ++k) column[k] += f[j] * h[k];
  }
}

// VECTORS vectors of rows through a sequence of rotations; the second column of one is the first of the next, so it
// stays in registers.
template <size_t VECTORS>
TESSARN_INLINE void rotate_rows(double* columns, size_t stride, const double* rotations, size_t count) {
  vec y[VECTORS];
  for (size_t v = 0; v < VECTORS; ++v) y[v] = load(columns + v * width);
  for (size_t j = 0; j < count; ++j) {
    const vec c = broadcast(rotations[2 * j]);
    const vec s = broadcast(rotations[2 * j + 1]);
    double* next = columns + stride;
    for (size_t v = 0; v < VECTORS; ++v) {
      const vec z = load(next + v * width);
      store(columns + v * width, y[v] * c + z * s);
      y[v] = z * c - y[v] * s;
    }
    columns = next;
  }
  for (size_t v = 0; v < VECTORS; ++v) store(columns + v * width, y[v]);
}

// count rotations (c, s) of neighbouring columns, the first and second, the second and third, ...: (y, z) becomes
// (y c + z s, z c - y s) in each of n rows.
static void rotate_columns(double* columns, size_t stride, size_t n, const double* rotations, size_t count) {
  size_t k = 0;
  for (; k + 4 * width <= n; k += 4 * width) rotate_rows<4>(columns + k, stride, rotations, count);
  for (; k + width <= n; k += width) rotate_rows<1>(columns + k, stride, rotations, count);
  for (; k < n; ++k) {
    double* entry = columns + k;
    double y = *entry;
    for (size_t j = 0; j < count; ++j, entry += stride) {
      const double c = rotations[2 * j];
      const double s = rotations[2 * j + 1];
      const double z = entry[stride];
      *entry = y * c + z * s;
      y = z * c - y * s;
    }
    *entry = y;
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
