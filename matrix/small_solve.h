// Systems of up to 16 equations, solved without the quiet-NaN rule.
//
// A NaN that an operation leaves in the matrix spreads to all entries that depend on it, until a column of candidate
// pivots holds NaN only; a NaN on the right-hand side spreads to the solution. So a solution without a NaN is the one
// that the quiet-NaN rule gives. The caller solves all other systems again under the rule.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/nan_rule.h"
#include "matrix/elimination.h"
#include "simd/unroll.h"

namespace tessarn::detail {

// Stores the solution in place of the right-hand side; false, and nothing stored, where there is a NaN in it.
template <std::size_t N>
bool store_unless_nan(const real* u, column_view<real> b) {
  if (has_nan(u, N)) return false;
  for (std::size_t i = 0; i < N; ++i) b[i] = u[i];
  return true;
}

// A system of N <= 8 equations in registers: all loops are unrolled, so that the compiler sees every entry as a
// variable of its own. Forward substitution is part of the elimination. With the rows exchanged by pointer instead
// (pointer_solve), systems take 1.1 to 1.6 times as long.
template <std::size_t N>
class register_system {
 public:
  register_system(const real* a, column_view<real> b) {
    TESSARN_UNROLL for (std::size_t r = 0; r < N; ++r) {
      TESSARN_UNROLL for (std::size_t c = 0; c < N; ++c) w_[r][c] = a[N * r + c];
      v_[r] = b[r];
      sum_[r] = 0;
    }
  }

  // False when a column of candidate pivots is 0.
  bool eliminate() {
    TESSARN_UNROLL for (std::size_t k = 0; k < N; ++k) {
      if (!exchange_for_pivot(k)) return false;
      v_[k] -= sum_[k];
      TESSARN_UNROLL for (std::size_t r = k + 1; r < N; ++r) {
        const real multiplier = w_[r][k] / w_[k][k];
        TESSARN_UNROLL for (std::size_t c = k + 1; c < N; ++c) w_[r][c] -= multiplier * w_[k][c];
        sum_[r] += multiplier * v_[k];
      }
    }
    return true;
  }
  bool substitute_back(column_view<real> b) const {
    real u[N];
    TESSARN_UNROLL for (std::size_t k = 0; k < N; ++k) {
      const std::size_t i = N - 1 - k;
      real s = 0;
      TESSARN_UNROLL for (std::size_t j = i + 1; j < N; ++j) s += w_[i][j] * u[j];
      u[i] = (v_[i] - s) / w_[i][i];
    }
    return store_unless_nan<N>(u, b);
  }

 private:
  // Exchanges row k with the row of the largest magnitude in column k, the upper one of equals; false when the column
  // is 0. Columns left of k are not read again, so they stay. The rows are compared with p one by one: an index that is
  // not a compile-time constant would force the entries out of the registers.
  bool exchange_for_pivot(std::size_t k) {
    real best = 0;
    std::size_t p = N;
    TESSARN_UNROLL for (std::size_t r = k; r < N; ++r) {
      const real magnitude = std::fabs(w_[r][k]);
      if (magnitude > best) {
        p = r;
        best = magnitude;
      }
    }
    if (p == N) return false;
    TESSARN_UNROLL for (std::size_t r = k + 1; r < N; ++r) {
      if (r != p) continue;
      TESSARN_UNROLL for (std::size_t c = k; c < N; ++c) std::swap(w_[k][c], w_[r][c]);
      std::swap(v_[k], v_[r]);
      std::swap(sum_[k], sum_[r]);
    }
    return true;
  }

  real w_[N][N];
  real v_[N];    // the right-hand side, and then the intermediate entries
  real sum_[N];  // of the terms of the forward substitution
};

template <std::size_t N>
bool register_solve(const real* a, column_view<real> b) {
  register_system<N> system(a, b);
  return system.eliminate() && system.substitute_back(b);
}

// A row of a system on its way through the factorisation.
template <std::size_t N>
struct system_row {
  real w[N];
  real b;    // the right-hand side, and then the intermediate entry
  real sum;  // of the terms of the forward substitution
};

// Solves N equations that are too many for registers; the rows are exchanged by pointer. The kernel, which is for any
// size, takes 1.4 to 3.2 times as long for up to 16 equations.
template <std::size_t N>
bool pointer_solve(const real* a, column_view<real> b) {
  system_row<N> rows[N];
  system_row<N>* at[N];
  for (std::size_t r = 0; r < N; ++r) {
    std::copy_n(a + N * r, N, rows[r].w);
    rows[r].b = b[r];
    rows[r].sum = 0;
    at[r] = &rows[r];
  }
  TESSARN_KEEP_LOOP
  for (std::size_t k = 0; k < N; ++k) {
    real best = 0;
    std::size_t p = N;
    for (std::size_t r = k; r < N; ++r) {
      const real magnitude = std::fabs(at[r]->w[k]);
      if (magnitude > best) [[unlikely]] {  // else the compiler selects, and each comparison waits for the one before
        p = r;
        best = magnitude;
      }
    }
    if (p == N) return false;
    std::swap(at[k], at[p]);
    system_row<N>& upper = *at[k];
    upper.b -= upper.sum;
    for (std::size_t r = k + 1; r < N; ++r) {
      system_row<N>& row = *at[r];
      const real multiplier = row.w[k] / upper.w[k];
      for (std::size_t c = k + 1; c < N; ++c) row.w[c] -= multiplier * upper.w[c];
      row.sum += multiplier * upper.b;
    }
  }
  real u[N];
  for (std::size_t i = N; i-- > 0;) {
    real s = 0;
    for (std::size_t j = i + 1; j < N; ++j) s += at[i]->w[j] * u[j];
    u[i] = (at[i]->b - s) / at[i]->w[i];
  }
  return store_unless_nan<N>(u, b);
}

}  // namespace tessarn::detail
