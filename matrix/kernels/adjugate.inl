// The minors of a matrix share their leading elimination steps: those of the rows and columns before the removed
// ones. Removing row p or column p leaves the first p steps those of the whole matrix; then, with row p gone, the
// steps before column q are shared by all minors that remove a later column, and likewise with the roles
// exchanged. The minors whose later removed index is the same are of one size: several are finished side by side, one
// in a lane. Each entry sees the same operations in the same order as in an elimination of its own. Kernel sources
// only.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// Matrices side by side: a vector holds entry (i, j) of each.
struct lane_matrix {
  double* w;
  size_t stride;
  double* at(size_t i, size_t j) const { return w + (i * stride + j) * width; }
  lane_matrix from(size_t i, size_t j) const { return {at(i, j), stride}; }
};

// Steps are done several at a time, so that entries are loaded and stored once for all of them: eight beyond this size,
// else four.
static constexpr size_t eight_steps_size = 10, four_steps_size = 5;

// entries = factors (one a step, left in to) times the rows of the steps, added one after the other.
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

// A block of rows from left to right, as they lie in memory.
template <size_t STEPS, size_t ROWS>
TESSARN_INLINE void joint_rows(lane_matrix t, lane_matrix to, size_t size, size_t row) {
  size_t j = STEPS;
  for (; j + 4 <= size; j += 4) joint_tile<STEPS, ROWS, 4>(t, to, row, j);
  for (; j < size; ++j) joint_tile<STEPS, ROWS, 1>(t, to, row, j);
}

// The factors of a row, which depend on each other, in registers from step to step. Rows of the steps themselves have
// one factor fewer than rows above them, and their entries from the diagonal on are left instead.
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

// The rows of the steps in one column behind them.
template <size_t STEPS>
TESSARN_INLINE void joint_column(lane_matrix t, lane_matrix to, size_t column) {
  vec x[STEPS];
  TESSARN_UNROLL for (size_t i = 0; i < STEPS; ++i) {
    x[i] = load(t.at(i, column));
    TESSARN_UNROLL for (size_t s = 0; s < i; ++s) x[i] = load(to.at(i, s)) * x[s] + x[i];
    store(to.at(i, column), x[i]);
  }
}

// The leading STEPS steps on a matrix of the given size, the result in to, which may be t; the product goes on with the
// pivots.
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

// product times the diagonal of the eliminated matrix, which stays in registers.
template <size_t SIZE>
TESSARN_INLINE vec times_small_determinant(lane_matrix t, vec product) {
  vec w[SIZE][SIZE];
  TESSARN_UNROLL for (size_t i = 0; i < SIZE; ++i)
    TESSARN_UNROLL for (size_t j = 0; j < SIZE; ++j) w[i][j] = load(t.at(i, j));
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

// The same for any size; room is for a matrix of that size.
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

// The matrix itself, in rows of whole vectors.
TESSARN_INLINE size_t whole_stride(size_t n) { return (n + width - 1) / width * width; }

// Step k of its elimination, ROWS rows from r on. It works on whole vectors from the one with column k + 1 on: what it
// makes of eliminated columns and of the padding is never read.
template <size_t ROWS>
TESSARN_INLINE void eliminate_rows(double* w, size_t stride, size_t k, size_t r, double reciprocal) {
  const double* upper = w + k * stride;
  double* row = w + r * stride;
  vec f[ROWS];
  TESSARN_UNROLL for (size_t i = 0; i < ROWS; ++i) f[i] = broadcast(reciprocal * row[i * stride + k]);
  for (size_t x = (k + 1) / width * width; x < stride; x += width) {
    const vec u = load(upper + x);
    TESSARN_UNROLL for (size_t i = 0; i < ROWS; ++i)
      store(row + i * stride + x, f[i] * u + load(row + i * stride + x));
  }
}

TESSARN_INLINE void eliminate_whole(double* w, size_t n, size_t k) {
  const size_t stride = whole_stride(n);
  const double reciprocal = -1 / w[k * stride + k];
  size_t r = k + 1;
  for (; r + 4 <= n; r += 4) eliminate_rows<4>(w, stride, k, r, reciprocal);
  for (; r < n; ++r) eliminate_rows<1>(w, stride, k, r, reciprocal);
}

// Minors without a row and the column of the same number t, each in a lane of its own: from the matrix after its first
// t steps. The first is the largest; what the others lack stands before them as rows and columns of the identity, whose
// steps change nothing.
struct principal_minors {
  lane_matrix packed;
  size_t size, count;
  double products[width];
  size_t indices[width];
};

TESSARN_INLINE void add_minor(principal_minors& minors, const double* whole, size_t n, size_t t, double product) {
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

TESSARN_INLINE void finish(principal_minors& minors, size_t n, double* dst) {
  double values[width];
  store(values, times_determinant(minors.packed, minors.size, load(minors.products), minors.packed.w));
  for (size_t l = 0; l < minors.count; ++l) dst[minors.indices[l] * (n + 1)] = values[l];
  minors.count = 0;
}

// A walk has lost row p (walks of even number) or column p (odd ones). Before the other removed index comes to t, its
// rows and columns behind t are those of a minor. Besides, a walk without row p still has column t, and with it the
// pivot above the minor's rows; one without column p still has row t. These stand in the border.
struct minor_walks {
  lane_matrix block;
  double* border;
  vec product;
  mask lost_row;
};

TESSARN_INLINE size_t walk_index(size_t walk) { return walk / 2; }
TESSARN_INLINE bool loses_row(size_t walk) { return walk % 2 == 0; }
// The part of a group's first walk number that loses_row sees: the walk number of lane i is first + i. Groups of several
// lanes begin at even numbers, so the part is the constant 0 there.
TESSARN_INLINE size_t odd_part(size_t first) { return width == 1 ? first % 2 : 0; }

// The same step in all lanes, from the matrix's entry on: each lane has its own factors and its own row above.
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

// The walks from number first on, with the indices p and perhaps p + 1, at t = p + 1, from the matrix after its first p
// steps and the product of their pivots. The walks of index p have gone on by a step whose pivot is below or beside the
// matrix's own; for those of p + 1 that step is the matrix's. room is for the rows and columns of these pivots.
TESSARN_INLINE void begin(minor_walks& walks, const double* whole, size_t n, size_t first, double product,
                          double* room) {
  const size_t stride = whole_stride(n), p = walk_index(first), size = n - 2 - p;
  int64_t below[width], beside[width];
  for (size_t l = 0; l < width; ++l) {
    const size_t walk = odd_part(first) + l;
    below[l] = walk_index(walk) == 0 && loses_row(walk) ? -1 : 0;
    beside[l] = walk_index(walk) == 0 && !loses_row(walk) ? -1 : 0;
  }
  const mask row_below = load_mask(below), column_beside = load_mask(beside);
  const double* at = whole + p * stride + p;
  const vec own = broadcast_from(at), other = select(row_below, broadcast_from(at + stride), broadcast_from(at + 1));
  const vec pivot = select(row_below | column_beside, other, own);
  walks.product = broadcast(product) * pivot;
  const vec reciprocal = broadcast(-1) / pivot;
  double* const uppers = room;
  double* const factors = room + n * width;
  for (size_t i = 0; i <= size; ++i) {
    const double* above = at + 1 + i;
    const double* left = at + (1 + i) * stride;
    store(uppers + i * width, select(row_below, broadcast_from(above + stride), broadcast_from(above)));
    store(factors + i * width,
          reciprocal * select(column_beside, broadcast_from(left + 1), broadcast_from(left)));
  }
  const double* entries = at + stride + 1;
  const vec first_upper = load(uppers), first_factor = load(factors);
  for (size_t i = 0; i < size; ++i) {
    const vec column = load(factors + (i + 1) * width) * first_upper + broadcast_from(entries + (i + 1) * stride);
    const vec row = first_factor * load(uppers + (i + 1) * width) + broadcast_from(entries + i + 1);
    store(walks.border + i * width, select(walks.lost_row, column, row));
  }
  entries += stride + 1;
  size_t i = 0;
  for (; i + 4 <= size; i += 4)
    begin_rows<4>(walks.block, entries, stride, factors + width, uppers + width, i, size);
  for (; i < size; ++i) begin_rows<1>(walks.block, entries, stride, factors + width, uppers + width, i, size);
}

// The step of ROWS rows of the block behind the first one, and of the border beside them.
template <size_t ROWS>
TESSARN_INLINE void move_rows(lane_matrix t, double* next_border, mask lost_row, size_t i, size_t size, vec reciprocal,
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
    TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r)
      store(t.at(i + r, j), f[r] * upper + load(t.at(i + r, j)));
  }
}

// The step by which t moves on, for minors of the given size. The factors of the rows come from the border or from the
// first column, the row that they multiply is the first one or the border.
TESSARN_INLINE void move_on(minor_walks& walks, size_t size) {
  const lane_matrix t = walks.block;
  double* const border = walks.border;
  const mask lost_row = walks.lost_row;
  const vec pivot = load(border);
  const vec reciprocal = broadcast(-1) / pivot;
  const vec corner = load(t.w);
  const vec first_factor = reciprocal * corner;
  walks.product *= pivot;
  for (size_t j = 1; j < size; ++j) {
    const vec first = load(t.at(0, j)), beside = load(border + j * width);
    store(t.at(0, j), select(lost_row, first, beside));
    // The next border of walks that lost a column: the first row after the step.
    store(border + j * width, select(lost_row, beside, first_factor * beside + first));
  }
  size_t i = 1;
  for (; i + 4 <= size; i += 4) move_rows<4>(t, border, lost_row, i, size, reciprocal, corner);
  for (; i < size; ++i) move_rows<1>(t, border, lost_row, i, size, reciprocal, corner);
  walks.block = t.from(1, 1);
  walks.border += width;
}

// A group of walks with its border, room for their minors, minors to come, the matrix itself.
size_t adjugate_workspace(size_t n) { return n * (3 * n + 2) * width + n * whole_stride(n); }

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
    const size_t p = walk_index(first);
    advance(p);
    add_minor(minors, whole, n, p, product);
    if (minors.count == width || first + width >= 2 * n) finish(minors, n, dst);
    if (p + 1 == n) break;
    int64_t lost_row[width];
    for (size_t l = 0; l < width; ++l) lost_row[l] = loses_row(odd_part(first) + l) ? -1 : 0;
    minor_walks walks = {{blocks, n + 1}, border, vec{}, load_mask(lost_row)};
    begin(walks, whole, n, first, product, room);
    for (size_t t = p + 1;; ++t) {
      const size_t size = n - 1 - t;
      double values[width];
      store(values, times_determinant(walks.block, size, walks.product, room));
      TESSARN_UNROLL for (size_t l = 0; l < width; ++l) {
        const size_t walk = odd_part(first) + l, lost = p + walk_index(walk);
        dst[loses_row(walk) ? t * n + lost : lost * n + t] = (lost + t) % 2 == 0 ? values[l] : -values[l];
      }
      if (size == 0) break;
      move_on(walks, size);
    }
  }
  advance(n - 1);
  return product * whole[(n - 1) * (whole_stride(n) + 1)];
}

}  // namespace tessarn::detail::TESSARN_ISA
