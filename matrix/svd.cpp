// The singular value decomposition by G. Golub and C. Reinsch (Singular value decomposition and least squares
// solutions, Numerische Mathematik 14, 1970): Householder bidiagonalisation, accumulation of the
// transformations, implicit-shift QR sweeps. The matrices are worked on as contiguous columns.
#include <algorithm>
#include <cmath>
#include <memory>

#include "core/access.h"
#include "core/storage.h"
#include "matrix/elementwise.h"
#include "matrix/kernels.h"

using tessarn::real;
using tessarn::detail::as_doubles;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;

namespace {

constexpr int sweep_limit = 30;  // a value that takes more is left as it stands

double with_sign(double a, double b) { return b >= 0 ? std::fabs(a) : -std::fabs(a); }

double hypotenuse(double a, double b) { return std::sqrt(a * a + b * b); }

class decomposition {
 public:
  decomposition(const real* a, std::size_t rows, std::size_t columns);
  void run();
  void write(real* U, real* S, real* V) const;

 private:
  double* u(std::size_t column) { return u_ + column * m_; }
  double* v(std::size_t column) { return v_ + column * n_; }
  void bidiagonalise();
  double column_step(std::size_t i);
  double row_step(std::size_t i);
  void accumulate_right();
  void accumulate_left();
  void diagonalise(std::size_t k);
  void cancel(std::size_t l, std::size_t k);
  void sweep(std::size_t l, std::size_t k);
  void sort();

  const tessarn::detail::matrix_kernels& kernels_ = tessarn::detail::matrix();
  const std::size_t m_, n_;
  real_array storage_;
  double* u_;      // columns of U
  double* v_;      // columns of V
  double* w_;      // diagonal of the bidiagonal form
  double* rv1_;    // its superdiagonal
  double* row_;    // a row of U, and later which sign a column has after the sort
  double* right_;  // the rotations of a sweep, of the columns of V
  double* left_;   // and of U
  double* aux_;    // an auxiliary column
  std::unique_ptr<std::size_t[]> column_;  // which column stands where after the sort
  double norm_ = 0;
};

decomposition::decomposition(const real* a, std::size_t rows, std::size_t columns)
    : m_(rows),
      n_(columns),
      storage_(tessarn::detail::allocate(rows * (columns + 1) + columns * (columns + 7))),
      u_(as_doubles(storage_.get())),
      v_(u_ + m_ * n_),
      w_(v_ + n_ * n_),
      rv1_(w_ + n_),
      row_(rv1_ + n_),
      right_(row_ + n_),
      left_(right_ + 2 * n_),
      aux_(left_ + 2 * n_),
      column_(new std::size_t[columns]) {
  tessarn::detail::transpose_entries(a, n_, m_, storage_.get(), [](real x) { return x; });
  std::fill_n(v_, n_ * (n_ + 2), 0.0);
}

void decomposition::run() {
  bidiagonalise();
  accumulate_right();
  accumulate_left();
  for (std::size_t k = n_; k-- > 0;) diagonalise(k);
  sort();
}

void decomposition::bidiagonalise() {
  double super = 0;
  for (std::size_t i = 0; i < n_; ++i) {
    rv1_[i] = super;
    w_[i] = i < m_ ? column_step(i) : 0;
    super = i < m_ && i + 1 < n_ ? row_step(i) : 0;
    norm_ = std::max(norm_, std::fabs(w_[i]) + std::fabs(rv1_[i]));
  }
}

// Makes column i zero below the diagonal by a Householder reflection, which it stores there; returns the
// diagonal entry.
double decomposition::column_step(std::size_t i) {
  double* h = u(i) + i;
  const std::size_t length = m_ - i;
  const double scale = kernels_.sum_of_magnitudes(h, length);
  if (scale == 0) return 0;
  for (std::size_t k = 0; k < length; ++k) h[k] /= scale;
  const double s = kernels_.dot(h, h, length);
  const double f = h[0];
  const double g = -with_sign(std::sqrt(s), f);
  const double denominator = f * g - s;
  h[0] = f - g;
  kernels_.reflect(h, 0, length, denominator, 1, h + m_, m_, n_ - i - 1);
  for (std::size_t k = 0; k < length; ++k) h[k] *= scale;
  return scale * g;
}

// Makes row i zero right of the superdiagonal; returns the superdiagonal entry.
double decomposition::row_step(std::size_t i) {
  const std::size_t l = i + 1;
  const std::size_t length = n_ - l;
  double* r = row_ + l;
  for (std::size_t k = 0; k < length; ++k) r[k] = u(l + k)[i];
  const double scale = kernels_.sum_of_magnitudes(r, length);
  if (scale == 0) return 0;
  for (std::size_t k = 0; k < length; ++k) r[k] /= scale;
  const double s = kernels_.dot(r, r, length);
  const double f = r[0];
  const double g = -with_sign(std::sqrt(s), f);
  const double denominator = f * g - s;
  r[0] = f - g;
  for (std::size_t k = 0; k < length; ++k) rv1_[l + k] = r[k] / denominator;
  const std::size_t rows = m_ > l ? m_ - l : 0;
  kernels_.combine(r, u(l) + l, m_, length, aux_, rows);
  kernels_.add_outer(rv1_ + l, aux_, u(l) + l, m_, length, rows);
  for (std::size_t k = 0; k < length; ++k) u(l + k)[i] = r[k] * scale;
  return scale * g;
}

void decomposition::accumulate_right() {
  for (std::size_t i = n_; i-- > 0;) {
    const std::size_t l = i + 1;
    if (l < n_) {
      const std::size_t length = n_ - l;
      double* vi = v(i) + l;
      const double g = rv1_[l];
      if (g != 0) {
        double* r = row_;
        for (std::size_t k = 0; k < length; ++k) r[k] = u(l + k)[i];
        // Two divisions, which guard against underflow.
        for (std::size_t k = 0; k < length; ++k) vi[k] = (r[k] / r[0]) / g;
        // V's columns receive (row . column) vi: the product is with the row, the sum with vi.
        for (std::size_t j = l; j < n_; ++j) right_[j - l] = kernels_.dot(r, v(j) + l, length);
        kernels_.add_outer(right_, vi, v(l) + l, n_, length, length);
      }
      for (std::size_t j = l; j < n_; ++j) v(j)[i] = 0;
      std::fill_n(vi, length, 0.0);
    }
    v(i)[i] = 1;
  }
}

void decomposition::accumulate_left() {
  for (std::size_t i = std::min(m_, n_); i-- > 0;) {
    double* ui = u(i) + i;
    const std::size_t length = m_ - i;
    for (std::size_t j = i + 1; j < n_; ++j) u(j)[i] = 0;
    if (w_[i] != 0) {
      const double g = 1 / w_[i];
      kernels_.reflect(ui, 1, length, ui[0], g, ui + m_, m_, n_ - i - 1);
      for (std::size_t k = 0; k < length; ++k) ui[k] *= g;
    } else {
      std::fill_n(ui, length, 0.0);
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
  double c = 0, s = 1;
  for (std::size_t i = l; i <= k; ++i) {
    const double f = s * rv1_[i];
    rv1_[i] = c * rv1_[i];
    if (std::fabs(f) + norm_ == norm_) break;
    const double g = w_[i];
    w_[i] = hypotenuse(g, f);
    const double r = 1 / w_[i];
    c = g * r;
    s = -(f * r);
    kernels_.rotate(u(l - 1), u(i), c, s, m_);
  }
}

// One implicit QR sweep on the block l .. k with the shift of its trailing 2 x 2 block. The rotations of the columns
// do not feed back into the sweep: they are collected and applied together.
void decomposition::sweep(std::size_t l, std::size_t k) {
  double x = w_[l];
  double y = w_[k - 1];
  double g = rv1_[k - 1];
  double h = rv1_[k];
  const double z = w_[k];
  double f = ((y - z) * (y + z) + (g - h) * (g + h)) / ((h + h) * y);
  g = hypotenuse(f, 1);
  f = ((x - z) * (x + z) + h * (y / (f + with_sign(g, f)) - h)) / x;
  double c = 1, s = 1;
  for (std::size_t j = l; j < k; ++j) {
    g = rv1_[j + 1];
    y = w_[j + 1];
    h = s * g;
    g = c * g;
    double length = hypotenuse(f, h);
    rv1_[j] = length;
    c = f / length;
    s = h / length;
    right_[2 * (j - l)] = c;
    right_[2 * (j - l) + 1] = s;
    f = x * c + g * s;
    g = g * c - x * s;
    h = y * s;
    y = y * c;
    length = hypotenuse(f, h);
    w_[j] = length;
    if (length != 0) {
      c = f / length;
      s = h / length;
    }
    left_[2 * (j - l)] = c;
    left_[2 * (j - l) + 1] = s;
    f = c * g + s * y;
    x = c * y - s * g;
  }
  rv1_[l] = 0;
  rv1_[k] = f;
  w_[k] = x;
  kernels_.rotate_columns(v(l), n_, n_, right_, k - l);
  kernels_.rotate_columns(u(l), m_, m_, left_, k - l);
}

// Shell sort into descending order; every move negates the moved columns of U and V and the saved ones.
void decomposition::sort() {
  for (std::size_t i = 0; i < n_; ++i) {
    column_[i] = i;
    row_[i] = 1;
  }
  std::size_t gap = 1;
  do gap = 3 * gap + 1;
  while (gap <= n_);
  do {
    gap /= 3;
    for (std::size_t i = gap; i < n_; ++i) {
      const double saved_value = w_[i];
      const std::size_t saved_column = column_[i];
      double saved_sign = row_[i];
      std::size_t j = i;
      while (j >= gap && w_[j - gap] < saved_value) {
        w_[j] = w_[j - gap];
        column_[j] = column_[j - gap];
        row_[j] = -row_[j - gap];
        saved_sign = -saved_sign;
        j -= gap;
      }
      w_[j] = saved_value;
      column_[j] = saved_column;
      row_[j] = saved_sign;
    }
  } while (gap > 1);
}

// Row by row into the three results, of which S is zeroed.
void decomposition::write(real* U, real* S, real* V) const {
  const auto write_columns = [&](const double* columns, std::size_t rows, real* to) {
    for (std::size_t j = 0; j < n_; ++j) {
      const double* from = columns + column_[j] * rows;
      for (std::size_t r = 0; r < rows; ++r) to[r * n_ + j] = row_[j] < 0 ? -from[r] : from[r];
    }
  };
  write_columns(u_, m_, U);
  write_columns(v_, n_, V);
  for (std::size_t i = 0; i < n_; ++i) S[i * n_ + i] = w_[i];
}

}  // namespace

void real_mat::decompose(mat& U, mat& S, mat& V) {
  tessarn::detail::require_countable(width, width);
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
