// The singular value decomposition by G. Golub and C. Reinsch (Singular value decomposition and least squares
// solutions, Numerische Mathematik 14, 1970): Householder bidiagonalisation, accumulation of the
// transformations, implicit-shift QR sweeps. The matrices are worked on as contiguous columns.
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/access.h"
#include "core/storage.h"
#include "matrix/columns.h"
#include "matrix/elementwise.h"

using tessarn::real;
using tessarn::detail::add_scaled;
using tessarn::detail::dot;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;

namespace {

constexpr int sweep_limit = 30;  // a value that takes more is left as it stands

real with_sign(real a, real b) { return b >= 0 ? std::fabs(a) : -std::fabs(a); }

real hypotenuse(real a, real b) { return std::sqrt(a * a + b * b); }

class decomposition {
 public:
  decomposition(const real* a, std::size_t rows, std::size_t columns);
  void run();
  void write(real* U, real* S, real* V) const;

 private:
  struct rotation {
    real c, s;
  };

  real* u(std::size_t column) { return u_.get() + column * m_; }
  real* v(std::size_t column) { return v_.get() + column * n_; }
  void bidiagonalise();
  real column_step(std::size_t i);
  real row_step(std::size_t i);
  void accumulate_right();
  void accumulate_left();
  void diagonalise(std::size_t k);
  void cancel(std::size_t l, std::size_t k);
  void sweep(std::size_t l, std::size_t k);
  void sort();

  const std::size_t m_, n_;
  real_array u_, v_;     // columns of U and V
  real_array w_, rv1_;   // diagonal and superdiagonal of the bidiagonal form
  real_array row_, aux_; // a row of U, and an auxiliary column
  std::unique_ptr<std::size_t[]> column_;  // which column stands where after the sort
  real_array sign_;                        // and with which sign
  real norm_ = 0;
};

decomposition::decomposition(const real* a, std::size_t rows, std::size_t columns)
    : m_(rows),
      n_(columns),
      u_(tessarn::detail::allocate(rows * columns)),
      v_(tessarn::detail::allocate_zeroed(columns * columns)),
      w_(tessarn::detail::allocate_zeroed(columns)),
      rv1_(tessarn::detail::allocate_zeroed(columns)),
      row_(tessarn::detail::allocate(columns)),
      aux_(tessarn::detail::allocate(rows)),
      column_(new std::size_t[columns]),
      sign_(tessarn::detail::allocate(columns)) {
  tessarn::detail::transpose_entries(a, n_, m_, u_.get(), [](real x) { return x; });
}

void decomposition::run() {
  bidiagonalise();
  accumulate_right();
  accumulate_left();
  for (std::size_t k = n_; k-- > 0;) diagonalise(k);
  sort();
}

void decomposition::bidiagonalise() {
  real super = 0;
  for (std::size_t i = 0; i < n_; ++i) {
    rv1_[i] = super;
    w_[i] = i < m_ ? column_step(i) : 0;
    super = i < m_ && i + 1 < n_ ? row_step(i) : 0;
    norm_ = std::max(norm_, std::fabs(w_[i]) + std::fabs(rv1_[i]));
  }
}

// Makes column i zero below the diagonal by a Householder reflection, which it stores there; returns the
// diagonal entry.
real decomposition::column_step(std::size_t i) {
  real* h = u(i) + i;
  const std::size_t length = m_ - i;
  const real scale = tessarn::detail::sum_of_magnitudes(h, length);
  if (scale == 0) return 0;
  for (std::size_t k = 0; k < length; ++k) h[k] /= scale;
  const real s = dot(h, h, length);
  const real f = h[0];
  const real g = -with_sign(std::sqrt(s), f);
  const real denominator = f * g - s;
  h[0] = f - g;
  for (std::size_t j = i + 1; j < n_; ++j)
    add_scaled(u(j) + i, dot(h, u(j) + i, length) / denominator, h, length);
  for (std::size_t k = 0; k < length; ++k) h[k] *= scale;
  return scale * g;
}

// Makes row i zero right of the superdiagonal; returns the superdiagonal entry.
real decomposition::row_step(std::size_t i) {
  const std::size_t l = i + 1;
  const std::size_t length = n_ - l;
  real* r = row_.get() + l;
  for (std::size_t k = 0; k < length; ++k) r[k] = u(l + k)[i];
  const real scale = tessarn::detail::sum_of_magnitudes(r, length);
  if (scale == 0) return 0;
  for (std::size_t k = 0; k < length; ++k) r[k] /= scale;
  const real s = dot(r, r, length);
  const real f = r[0];
  const real g = -with_sign(std::sqrt(s), f);
  const real denominator = f * g - s;
  r[0] = f - g;
  for (std::size_t k = 0; k < length; ++k) rv1_[l + k] = r[k] / denominator;
  const std::size_t rows = m_ > l ? m_ - l : 0;
  std::fill_n(aux_.get(), rows, static_cast<real>(0));
  for (std::size_t k = 0; k < length; ++k) add_scaled(aux_.get(), r[k], u(l + k) + l, rows);
  for (std::size_t k = 0; k < length; ++k) {
    add_scaled(u(l + k) + l, rv1_[l + k], aux_.get(), rows);
    u(l + k)[i] = r[k] * scale;
  }
  return scale * g;
}

void decomposition::accumulate_right() {
  for (std::size_t i = n_; i-- > 0;) {
    const std::size_t l = i + 1;
    if (l < n_) {
      const std::size_t length = n_ - l;
      real* vi = v(i) + l;
      const real g = rv1_[l];
      if (g != 0) {
        real* r = row_.get();
        for (std::size_t k = 0; k < length; ++k) r[k] = u(l + k)[i];
        for (std::size_t k = 0; k < length; ++k) vi[k] = (r[k] / r[0]) / g;  // two divisions: no underflow
        for (std::size_t j = l; j < n_; ++j) add_scaled(v(j) + l, dot(r, v(j) + l, length), vi, length);
      }
      for (std::size_t j = l; j < n_; ++j) v(j)[i] = 0;
      std::fill_n(vi, length, static_cast<real>(0));
    }
    v(i)[i] = 1;
  }
}

void decomposition::accumulate_left() {
  for (std::size_t i = std::min(m_, n_); i-- > 0;) {
    const std::size_t l = i + 1;
    real* ui = u(i) + i;
    const std::size_t length = m_ - i;
    for (std::size_t j = l; j < n_; ++j) u(j)[i] = 0;
    if (w_[i] != 0) {
      const real g = 1 / w_[i];
      for (std::size_t j = l; j < n_; ++j)
        add_scaled(u(j) + i, (dot(ui + 1, u(j) + l, length - 1) / ui[0]) * g, ui, length);
      for (std::size_t k = 0; k < length; ++k) ui[k] *= g;
    } else {
      std::fill_n(ui, length, static_cast<real>(0));
    }
    ui[0] += 1;
  }
}

// Brings singular value k to convergence, or gives up after the last sweep without a further test.
void decomposition::diagonalise(std::size_t k) {
  for (int sweeps = 0; sweeps < sweep_limit; ++sweeps) {
    std::size_t l = k;
    bool cancellation = false;
    for (; l > 0; --l) {
      if (std::fabs(rv1_[l]) + norm_ == norm_) break;
      if (std::fabs(w_[l - 1]) + norm_ == norm_) {
        cancellation = true;
        break;
      }
    }
    if (cancellation) cancel(l, k);
    if (l == k) {
      if (!(w_[k] >= 0)) {
        w_[k] = -w_[k];
        for (std::size_t r = 0; r < n_; ++r) v(k)[r] = -v(k)[r];
      }
      return;
    }
    sweep(l, k);
  }
}

// Removes the superdiagonal entry l by rotations, since the diagonal entry before it is negligible.
void decomposition::cancel(std::size_t l, std::size_t k) {
  real c = 0, s = 1;
  for (std::size_t i = l; i <= k; ++i) {
    const real f = s * rv1_[i];
    rv1_[i] = c * rv1_[i];
    if (std::fabs(f) + norm_ == norm_) break;
    const real g = w_[i];
    w_[i] = hypotenuse(g, f);
    const real r = 1 / w_[i];
    c = g * r;
    s = -(f * r);
    tessarn::detail::rotate(u(l - 1), u(i), c, s, m_);
  }
}

// One implicit QR sweep on the block l .. k with the shift of its trailing 2 x 2 block.
void decomposition::sweep(std::size_t l, std::size_t k) {
  real x = w_[l];
  real y = w_[k - 1];
  real g = rv1_[k - 1];
  real h = rv1_[k];
  const real z = w_[k];
  real f = ((y - z) * (y + z) + (g - h) * (g + h)) / ((h + h) * y);
  g = hypotenuse(f, 1);
  f = ((x - z) * (x + z) + h * (y / (f + with_sign(g, f)) - h)) / x;
  rotation right{1, 1};
  for (std::size_t j = l; j < k; ++j) {
    const std::size_t i = j + 1;
    g = rv1_[i];
    y = w_[i];
    h = right.s * g;
    g = right.c * g;
    real length = hypotenuse(f, h);
    rv1_[j] = length;
    right = {f / length, h / length};
    f = x * right.c + g * right.s;
    g = g * right.c - x * right.s;
    h = y * right.s;
    y = y * right.c;
    tessarn::detail::rotate(v(j), v(i), right.c, right.s, n_);
    length = hypotenuse(f, h);
    w_[j] = length;
    rotation left = right;
    if (length != 0) left = {f / length, h / length};
    f = left.c * g + left.s * y;
    x = left.c * y - left.s * g;
    tessarn::detail::rotate(u(j), u(i), left.c, left.s, m_);
    right = left;
  }
  rv1_[l] = 0;
  rv1_[k] = f;
  w_[k] = x;
}

// Shell sort into descending order; every move negates the moved columns of U and V and the saved ones.
void decomposition::sort() {
  for (std::size_t i = 0; i < n_; ++i) {
    column_[i] = i;
    sign_[i] = 1;
  }
  std::size_t gap = 1;
  do gap = 3 * gap + 1;
  while (gap <= n_);
  do {
    gap /= 3;
    for (std::size_t i = gap; i < n_; ++i) {
      const real saved_value = w_[i];
      const std::size_t saved_column = column_[i];
      real saved_sign = sign_[i];
      std::size_t j = i;
      while (j >= gap && w_[j - gap] < saved_value) {
        w_[j] = w_[j - gap];
        column_[j] = column_[j - gap];
        sign_[j] = -sign_[j - gap];
        saved_sign = -saved_sign;
        j -= gap;
      }
      w_[j] = saved_value;
      column_[j] = saved_column;
      sign_[j] = saved_sign;
    }
  } while (gap > 1);
}

// Row by row into the three results, of which S is zeroed.
void decomposition::write(real* U, real* S, real* V) const {
  const auto write_columns = [&](const real* columns, std::size_t rows, real* to) {
    for (std::size_t j = 0; j < n_; ++j) {
      const real* from = columns + column_[j] * rows;
      for (std::size_t r = 0; r < rows; ++r) to[r * n_ + j] = sign_[j] < 0 ? -from[r] : from[r];
    }
  };
  write_columns(u_.get(), m_, U);
  write_columns(v_.get(), n_, V);
  for (std::size_t i = 0; i < n_; ++i) S[i * n_ + i] = w_[i];
}

}  // namespace

void real_mat::decompose(mat& U, mat& S, mat& V) {
  decomposition d(data, height, width);
  mat left, values, right;
  left.create(width, height);
  values.create(width, width);
  right.create(width, width);
  std::fill_n(values.data, static_cast<tessarn::ulong>(width * width), static_cast<real>(0));
  d.run();
  d.write(left.data, values.data, right.data);
  U = static_cast<mat&&>(left);
  S = static_cast<mat&&>(values);
  V = static_cast<mat&&>(right);
}
