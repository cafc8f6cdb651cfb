// Arithmetic of 256 bits and a plain search for the circle or sphere with the least sum, as judge of the fits.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <gmpxx.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace test {

using precise = mpf_class;
using precise_column = std::vector<precise>;
inline constexpr int precise_bits = 256;

inline precise to_precise(double v) { return {v, precise_bits}; }

// Solves a x = b for a positive definite a by elimination without pivoting; false when a pivot is not positive.
inline bool eliminate_positive(std::vector<precise_column> a, precise_column& b) {
  const std::size_t n = b.size();
  for (std::size_t k = 0; k < n; ++k) {
    if (a[k][k] <= 0) return false;
    for (std::size_t r = k + 1; r < n; ++r) {
      const precise f = a[r][k] / a[k][k];
      for (std::size_t c = k; c < n; ++c) a[r][c] -= f * a[k][c];
      b[r] -= f * b[k];
    }
  }
  for (std::size_t r = n; r-- > 0;) {
    for (std::size_t c = r + 1; c < n; ++c) b[r] -= a[r][c] * b[c];
    b[r] /= a[r][r];
  }
  return true;
}

// Points and weights, and a centre with a radius, all of 256 bits. Weights are squared.
struct precise_points {
  std::vector<precise_column> p;
  precise_column weights;
};

// The sum, its gradient, the products of the first derivatives and the second derivatives, for the unknowns centre and
// radius: the distance |p - c| - R has the derivatives -(p - c) / |p - c| and -1, and the second ones
// (1 - n n') / |p - c|.
struct precise_sums {
  precise squares;
  precise_column gradient;
  std::vector<precise_column> normal, hessian;

  precise_sums(const precise_points& points, const precise_column& x)
      : squares(0, precise_bits),
        gradient(x.size(), precise(0, precise_bits)),
        normal(x.size(), gradient),
        hessian(normal) {
    const std::size_t d = x.size() - 1;
    precise_column n(d + 1, to_precise(-1));
    for (std::size_t i = 0; i < points.p.size(); ++i) {
      precise rho(0, precise_bits);
      for (std::size_t k = 0; k < d; ++k) {
        n[k] = points.p[i][k] - x[k];
        rho += n[k] * n[k];
      }
      rho = sqrt(rho);
      if (rho == 0) continue;
      for (std::size_t k = 0; k < d; ++k) n[k] /= -rho;
      const precise r = rho - x[d], weighted = points.weights[i] * r, bend = weighted / rho;
      squares += weighted * r;
      for (std::size_t a = 0; a <= d; ++a) {
        gradient[a] += weighted * n[a];
        for (std::size_t b = 0; b <= d; ++b) {
          const precise product = points.weights[i] * n[a] * n[b];
          normal[a][b] += product;
          hessian[a][b] += product;
          if (a < d && b < d) hessian[a][b] -= bend * n[a] * n[b];
        }
        if (a < d) hessian[a][a] += bend;
      }
    }
  }
};

// The weighted mean distance of the points from a centre.
inline precise mean_distance(const precise_points& points, const precise_column& x) {
  precise sum(0, precise_bits), weights(0, precise_bits);
  for (std::size_t i = 0; i < points.p.size(); ++i) {
    precise square(0, precise_bits);
    for (std::size_t k = 0; k + 1 < x.size(); ++k) square += (points.p[i][k] - x[k]) * (points.p[i][k] - x[k]);
    sum += points.weights[i] * sqrt(square);
    weights += points.weights[i];
  }
  return sum / weights;
}

// Newton's method with damping, from the centre in x and the best radius for it, until the steps have fewer than 2^-200
// of the radius; gives the sums there.
inline precise_sums minimise(const precise_points& points, precise_column& x, int most_steps = 300) {
  precise damping(0, precise_bits);
  x.back() = mean_distance(points, x);
  precise_sums s(points, x);
  for (int step = 0; step < most_steps; ++step) {
    std::vector<precise_column> h = s.hessian;
    for (std::size_t k = 0; k < x.size(); ++k) h[k][k] += damping * s.normal[k][k];
    precise_column dx = s.gradient, next = x;
    if (eliminate_positive(h, dx)) {
      precise largest(0, precise_bits);
      for (std::size_t k = 0; k < x.size(); ++k) {
        next[k] -= dx[k];
        if (abs(dx[k]) > largest) largest = abs(dx[k]);
      }
      if (largest < x.back() * to_precise(0x1p-200) && damping == 0) return s;
      precise_sums after(points, next);
      if (after.squares < s.squares && next.back() > 0) {
        x = next;
        s = after;
        damping = damping < 1e-6 ? precise(0, precise_bits) : precise(damping / 16);
        continue;
      }
      if (damping == 0 && largest < x.back() * to_precise(0x1p-90)) return s;  // the sum is at its rounding
    }
    damping = damping == 0 ? precise(1e-4, precise_bits) : precise(damping * 8);
    if (damping > 1e40) break;
  }
  return s;
}

}  // namespace test

#endif
