// The adjugate: all minors of a matrix with one row and one column less. Every minor has the bits of an elimination of
// its own, but minors share the steps that they have in common. Kernel sources only.
//
// - The minors without a row and a column from p on share the first p steps of the whole matrix.
// - Of these, the minors without row p and a column from t on share the next steps, too, up to column t; likewise with
//   rows and columns exchanged. Such minors, for t = p + 1, p + 2, ..., are a series.
// - What is left of a minor behind the shared steps is eliminated on its own. At each t the minors of several series
//   have the same size: one series is in each lane of the vectors.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// As many matrices as there are lanes: a vector holds entry (i, j) of each.
struct lane_matrix {
  double* w;
  size_t stride;
  double* at(size_t i, size_t j) const { return w + (i * stride + j) * width; }
  lane_matrix from(size_t i, size_t j) const { return {at(i, j), stride}; }
};

// Elimination makes several steps at a time, so that entries are loaded and stored once for all of them: eight steps
// for matrices beyond the first size, four beyond the second.
static constexpr size_t eight_steps_size = 10, four_steps_size = 5;

// ROWS x COLUMNS entries after all STEPS: to = t + factor * row of step 0 + factor * row of step 1 ..., in this order.
// The factors are in the first columns of to already.
template <size_t STEPS, size_t ROWS, size_t COLUMNS>
TESSARN_INLINE void joint_tile(lane_matrix t, lane_matrix to, size_t row, size_t column) {
  vec sum[ROWS][COLUMNS];
  for (size_t i = 0; i < ROWS; ++i)
    for (size_t j = 0; j < COLUMNS; ++j) sum[i][j] = load(t.at(row + i, column + j));
  for (size_t s = 0; s < STEPS; ++s) {
    vec upper[COLUMNS];
    for (size_t j = 0; j < COLUMNS; ++j) upper[j] = load(to.at(s, column + j));
    for (size_t i = 0; i < ROWS; ++i) {
      const vec f = load(to.at(row + i, s));
      for (size_t j = 0; j < COLUMNS; ++j) sum[i][j] = f * upper[j] + sum[i][j];
    }
  }
  for (size_t i = 0; i < ROWS; ++i)
    for (size_t j = 0; j < COLUMNS; ++j) store(to.at(row + i, column + j), sum[i][j]);
}

// ROWS rows, tile by tile from left to right, as their entries follow each other in memory.
template <size_t STEPS, size_t ROWS>
TESSARN_INLINE void joint_rows(lane_matrix t, lane_matrix to, size_t size, size_t row) {
  size_t j = STEPS;
  for (; j + 4 <= size; j += 4) joint_tile<STEPS, ROWS, 4>(t, to, row, j);
  for (; j < size; ++j) joint_tile<STEPS, ROWS, 1>(t, to, row, j);
}

// The factors of a row for the first of the steps, as many as given; each depends on the one before, so the row stays
// in registers. A row that is itself the row of a step has only the factors of the steps before, and keeps its entries
// from the diagonal on.
template <size_t STEPS>
TESSARN_INLINE void joint_factors(lane_matrix t, lane_matrix to, size_t row, size_t factors, const vec* reciprocal) {
  vec entry[STEPS];
  TESSARN_UNROLL for (size_t s = 0; s < STEPS; ++s) entry[s] = load(t.at(row, s));
  TESSARN_UNROLL for (size_t s = 0; s < STEPS; ++s) {
    if (s < factors) {
      entry[s] = reciprocal[s] * entry[s];
      TESSARN_UNROLL for (size_t j = s + 1; j < STEPS; ++j) entry[j] = entry[s] * load(to.at(s, j)) + entry[j];
    }
    store(to.at(row, s), entry[s]);
  }
}

// The entries of the rows of the steps in one column behind the steps.
template <size_t STEPS>
TESSARN_INLINE void joint_column(lane_matrix t, lane_matrix to, size_t column) {
  vec x[STEPS];
  TESSARN_UNROLL for (size_t i = 0; i < STEPS; ++i) {
    x[i] = load(t.at(i, column));
    TESSARN_UNROLL for (size_t s = 0; s < i; ++s) x[i] = load(to.at(i, s)) * x[s] + x[i];
    store(to.at(i, column), x[i]);
  }
}

// The leading STEPS elimination steps on the matrix t of the given size. The result goes to `to`, which may be t;
// product is multiplied by the pivots, in their order.
template <size_t STEPS>
static void eliminate_jointly(lane_matrix t, lane_matrix to, size_t size, vec& product) {
  vec reciprocal[STEPS];
  TESSARN_UNROLL for (size_t i = 0; i < STEPS; ++i) {
    joint_factors<STEPS>(t, to, i, i, reciprocal);
    const vec pivot = load(to.at(i, i));
    product *= pivot;
    reciprocal[i] = broadcast(-1) / pivot;
  }
  for (size_t k = STEPS; k < size; ++k) joint_factors<STEPS>(t, to, k, STEPS, reciprocal);
  for (size_t k = STEPS; k < size; ++k) joint_column<STEPS>(t, to, k);
  size_t i = STEPS;
  for (; i + 4 <= size; i += 4) joint_rows<STEPS, 4>(t, to, size, i);
  for (; i < size; ++i) joint_rows<STEPS, 1>(t, to, size, i);
}

// product times the pivots of a small matrix, whose entries stay in registers.
template <size_t SIZE>
TESSARN_INLINE vec times_small_determinant(lane_matrix t, vec product) {
  vec w[SIZE][SIZE];
  TESSARN_UNROLL for (size_t i = 0; i < SIZE; ++i) TESSARN_UNROLL for (size_t j = 0; j < SIZE; ++j) w[i][j] =
      load(t.at(i, j));
  TESSARN_UNROLL for (size_t k = 0; k < SIZE; ++k) {
    product *= w[k][k];
    const vec reciprocal = broadcast(-1) / w[k][k];
    TESSARN_UNROLL for (size_t i = k + 1; i < SIZE; ++i) {
      const vec f = reciprocal * w[i][k];
      TESSARN_UNROLL for (size_t j = k + 1; j < SIZE; ++j) w[i][j] = f * w[k][j] + w[i][j];
    }
  }
  return product;
}

// product times the pivots of a matrix of any size; room is for a copy of the matrix.
static vec times_determinant(lane_matrix t, size_t size, vec product, double* room) {
  lane_matrix to = {room, size};
  for (; size > eight_steps_size; size -= 8) {
    eliminate_jointly<8>(t, to, size, product);
    t = to = to.from(8, 8);
  }
  for (; size > four_steps_size; size -= 4) {
    eliminate_jointly<4>(t, to, size, product);
    t = to = to.from(4, 4);
  }
  switch (size) {
    case 5: return times_small_determinant<5>(t, product);
    case 4: return times_small_determinant<4>(t, product);
    case 3: return times_small_determinant<3>(t, product);
    case 2: return times_small_determinant<2>(t, product);
    case 1: return product * load(t.w);
    default: return product;
  }
}

// The whole matrix is kept in rows of whole vectors.
TESSARN_INLINE size_t whole_stride(size_t n) { return (n + width - 1) / width * width; }

// Step k of the elimination of the whole matrix, on ROWS rows from r on. It works on whole vectors from the one with
// column k + 1 on: whatever it writes to eliminated columns and to the padding, nobody reads it.
template <size_t ROWS>
TESSARN_INLINE void eliminate_rows(double* w, size_t stride, size_t k, size_t r, double reciprocal) {
  const double* upper = w + k * stride;
  double* row = w + r * stride;
  vec f[ROWS];
  TESSARN_UNROLL for (size_t i = 0; i < ROWS; ++i) f[i] = broadcast(reciprocal * row[i * stride + k]);
  for (size_t x = (k + 1) / width * width; x < stride; x += width) {
    const vec u = load(upper + x);
    TESSARN_UNROLL for (size_t i = 0; i < ROWS; ++i) store(row + i * stride + x, f[i] * u + load(row + i * stride + x));
  }
}

TESSARN_INLINE void eliminate_whole(double* w, size_t n, size_t k) {
  const size_t stride = whole_stride(n);
  const double reciprocal = -1 / w[k * stride + k];
  size_t r = k + 1;
  for (; r + 4 <= n; r += 4) eliminate_rows<4>(w, stride, k, r, reciprocal);
  for (; r < n; ++r) eliminate_rows<1>(w, stride, k, r, reciprocal);
}

// Minors without row t and column t, one in each lane, from the whole matrix after its first t steps. The first minor
// added is the largest. The smaller ones are filled up with rows and columns of the identity before their own, whose
// steps change nothing.
struct principal_minors {
  lane_matrix packed;
  size_t size, count;
  double products[width];
  size_t indices[width];
};

// count of the lanes are in use; the products are those of the first t pivots of the whole matrix.
TESSARN_INLINE void add_principal_minor(principal_minors& minors, const double* whole, size_t n, size_t t,
                                        double product) {
  const size_t size = n - 1 - t, stride = whole_stride(n);
  if (minors.count == 0) {
    minors.size = minors.packed.stride = size;
    for (size_t i = 0; i < size; ++i)
      for (size_t j = 0; j < size; ++j) store(minors.packed.at(i, j), broadcast(i == j ? 1 : 0));
    for (size_t l = 0; l < width; ++l) minors.products[l] = product;
  }
  const size_t before = minors.size - size;
  for (size_t i = 0; i < size; ++i) {
    const double* row = whole + (t + 1 + i) * stride + t + 1;
    double* to = minors.packed.at(before + i, before) + minors.count;
    for (size_t j = 0; j < size; ++j) to[j * width] = row[j];
  }
  minors.products[minors.count] = product;
  minors.indices[minors.count++] = t;
}

// Writes the determinants of the minors to the diagonal of the adjugate, and begins a new group.
TESSARN_INLINE void finish_principal_minors(principal_minors& minors, size_t n, double* dst) {
  double values[width];
  store(values, times_determinant(minors.packed, minors.size, load(minors.products), minors.packed.w));
  for (size_t l = 0; l < minors.count; ++l) dst[minors.indices[l] * (n + 1)] = values[l];
  minors.count = 0;
}

// A group of series, one in each lane. After the steps before t this is left of the matrix of a series:
//
//     without row p                      without column p
//
//            t   t+1  ...                        t+1  ...
//     t+1    b    B   B   B              t        b   b   b
//     ...    b    B   B   B              t+1      B   B   B
//            b    B   B   B              ...      B   B   B
//                                                 B   B   B
//
// The block B, times the product of the pivots so far, is the minor of t. The border b is the removed column or row t,
// which the later minors of the series have: its first entry is the pivot of the step to t + 1.
struct series_group {
  lane_matrix block;
  double* border;
  vec product;
  mask lost_row;  // the lanes whose series lack row p; the others lack column p
};

// Series 2 p lacks row p, series 2 p + 1 column p.
TESSARN_INLINE size_t series_index(size_t series) { return series / 2; }
TESSARN_INLINE bool lacks_row(size_t series) { return series % 2 == 0; }
// Lane i of a group has series first + i. Whether a series lacks its row depends on the last bit of its number alone,
// and so does this: the last bit of first. Groups of several lanes begin at even numbers, where it is the compile-time
// constant 0.
TESSARN_INLINE size_t last_bit(size_t first) { return width == 1 ? first % 2 : 0; }

// The first step of all series of a group, on ROWS rows: all lanes start from the same entries of the whole matrix, but
// each has its own factors and its own row above.
template <size_t ROWS>
TESSARN_INLINE void begin_rows(lane_matrix block, const double* entries, size_t stride, const double* factors,
                               const double* uppers, size_t i, size_t size) {
  vec f[ROWS];
  TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) f[r] = load(factors + (i + r) * width);
  for (size_t j = 0; j < size; ++j) {
    const vec upper = load(uppers + j * width);
    TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r)
        store(block.at(i + r, j), f[r] * upper + broadcast_from(entries + (i + r) * stride + j));
  }
}

// Begins the group of series from number first on, which have the indices p and, in vectors of four lanes, p + 1, at t
// = p + 1. whole is the matrix after its first p steps, product that of their pivots. The series of p make step p with
// the entry below or beside the matrix's pivot in its place, since row or column p is missing; those of p + 1 make the
// step of the matrix itself. room is for the row and the column of these pivots.
TESSARN_INLINE void begin_series(series_group& group, const double* whole, size_t n, size_t first, double product,
                                 double* room) {
  const size_t stride = whole_stride(n), p = series_index(first), size = n - 2 - p;
  int64_t below[width], beside[width];
  for (size_t l = 0; l < width; ++l) {
    const size_t series = last_bit(first) + l;
    below[l] = series_index(series) == 0 && lacks_row(series) ? -1 : 0;
    beside[l] = series_index(series) == 0 && !lacks_row(series) ? -1 : 0;
  }
  const mask row_below = load_mask(below), column_beside = load_mask(beside);
  const double* at = whole + p * stride + p;
  const vec own = broadcast_from(at), other = select(row_below, broadcast_from(at + stride), broadcast_from(at + 1));
  const vec pivot = select(row_below | column_beside, other, own);
  group.product = broadcast(product) * pivot;
  const vec reciprocal = broadcast(-1) / pivot;
  double* const uppers = room;
  double* const factors = room + n * width;
  for (size_t i = 0; i <= size; ++i) {
    const double* above = at + 1 + i;
    const double* left = at + (1 + i) * stride;
    store(uppers + i * width, select(row_below, broadcast_from(above + stride), broadcast_from(above)));
    store(factors + i * width, reciprocal * select(column_beside, broadcast_from(left + 1), broadcast_from(left)));
  }
  const double* entries = at + stride + 1;
  const vec first_upper = load(uppers), first_factor = load(factors);
  for (size_t i = 0; i < size; ++i) {
    const vec column = load(factors + (i + 1) * width) * first_upper + broadcast_from(entries + (i + 1) * stride);
    const vec row = first_factor * load(uppers + (i + 1) * width) + broadcast_from(entries + i + 1);
    store(group.border + i * width, select(group.lost_row, column, row));
  }
  entries += stride + 1;
  size_t i = 0;
  for (; i + 4 <= size; i += 4) begin_rows<4>(group.block, entries, stride, factors + width, uppers + width, i, size);
  for (; i < size; ++i) begin_rows<1>(group.block, entries, stride, factors + width, uppers + width, i, size);
}

// The part of next_minors that concerns ROWS rows of the block, from row i on, and the border beside them.
template <size_t ROWS>
TESSARN_INLINE void next_rows(lane_matrix t, double* next_border, mask lost_row, size_t i, size_t size, vec reciprocal,
                              vec corner) {
  vec f[ROWS];
  TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) {
    double* const at = next_border + (i + r) * width;
    const vec border = load(at), first = load(t.at(i + r, 0));
    f[r] = reciprocal * select(lost_row, border, first);
    store(at, select(lost_row, f[r] * corner + first, border));
  }
  for (size_t j = 1; j < size; ++j) {
    const vec upper = load(t.at(0, j));
    TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) store(t.at(i + r, j), f[r] * upper + load(t.at(i + r, j)));
  }
}

// Goes from t to t + 1; size is that of the blocks at t. In series without a row the factors come from the border and
// multiply the first row of the block; in series without a column they come from the first column of the block and
// multiply the border. The first row or column of the block becomes the new border.
TESSARN_INLINE void next_minors(series_group& group, size_t size) {
  const lane_matrix t = group.block;
  double* const border = group.border;
  const mask lost_row = group.lost_row;
  const vec pivot = load(border);
  const vec reciprocal = broadcast(-1) / pivot;
  const vec corner = load(t.w);
  const vec first_factor = reciprocal * corner;
  group.product *= pivot;
  for (size_t j = 1; j < size; ++j) {
    const vec first = load(t.at(0, j)), beside = load(border + j * width);
    store(t.at(0, j), select(lost_row, first, beside));
    // The new border of series without a column is the first row after the step.
    store(border + j * width, select(lost_row, beside, first_factor * beside + first));
  }
  size_t i = 1;
  for (; i + 4 <= size; i += 4) next_rows<4>(t, border, lost_row, i, size, reciprocal, corner);
  for (; i < size; ++i) next_rows<1>(t, border, lost_row, i, size, reciprocal, corner);
  group.block = t.from(1, 1);
  group.border += width;
}

// For the blocks of a group of series with their border, the minor that is being eliminated, the principal minors, and
// the whole matrix.
size_t adjugate_workspace(size_t n) { return n * (3 * n + 2) * width + n * whole_stride(n); }

// The groups of series in turn, and beside them the whole matrix, which is eliminated no further than a group needs it.
// Its last pivots are left to the end, for the determinant.
double adjugate(const double* m, size_t n, double* dst, double* workspace) {
  double* blocks = workspace;
  double* border = blocks + n * (n + 1) * width;
  double* room = border + n * width;
  principal_minors minors = {{room + n * n * width, 0}, 0, 0, {}, {}};
  double* whole = minors.packed.w + n * n * width;
  for (size_t i = 0; i < n; ++i)
    for (size_t j = 0; j < whole_stride(n); ++j) whole[i * whole_stride(n) + j] = j < n ? m[i * n + j] : 0;
  double product = 1;
  size_t steps = 0;  // of the whole matrix
  const auto advance = [&](size_t t) {
    for (; steps < t; ++steps) {
      product *= whole[steps * whole_stride(n) + steps];
      eliminate_whole(whole, n, steps);
    }
  };
  for (size_t first = 0; first < 2 * n; first += width) {
    const size_t p = series_index(first);
    advance(p);
    add_principal_minor(minors, whole, n, p, product);
    if (minors.count == width || first + width >= 2 * n) finish_principal_minors(minors, n, dst);
    if (p + 1 == n) break;
    int64_t lost_row[width];
    for (size_t l = 0; l < width; ++l) lost_row[l] = lacks_row(last_bit(first) + l) ? -1 : 0;
    series_group group = {{blocks, n + 1}, border, vec{}, load_mask(lost_row)};
    begin_series(group, whole, n, first, product, room);
    for (size_t t = p + 1;; ++t) {
      const size_t size = n - 1 - t;
      double values[width];
      store(values, times_determinant(group.block, size, group.product, room));
      TESSARN_UNROLL for (size_t l = 0; l < width; ++l) {
        const size_t series = last_bit(first) + l, lost = p + series_index(series);
        dst[lacks_row(series) ? t * n + lost : lost * n + t] = (lost + t) % 2 == 0 ? values[l] : -values[l];
      }
      if (size == 0) break;
      next_minors(group, size);
    }
  }
  advance(n - 1);
  return product * whole[(n - 1) * (whole_stride(n) + 1)];
}

}  // namespace tessarn::detail::TESSARN_ISA
