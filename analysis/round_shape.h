// Circle, sphere and cylinder as one family, with line and plane among them.
//
// A shape is the set A |q|^2 + B q + D = 0 with |B|^2 - 4 A D = 1 (V. Pratt, Direct least-squares fitting of algebraic
// surfaces, 1987). The point q is that of the caller, or its place across the axis of a cylinder. The curvature is 2 A,
// and the line or plane has A = 0, so that no number becomes large where a radius does. With P = A |q|^2 + B q + D the
// distance of a point from the shape, positive outside where A > 0, is the r near 0 with A r^2 + r = P:
//
//   r = 2 P / (1 + s) with s = sqrt(1 + 4 A P), which is |q - centre| / radius.
//
// All functions are templates: the search begins in double precision and ends in doubled precision.
#pragma once

#include <cstddef>

#include "analysis/shape_data.h"

namespace tessarn::analysis {

inline double root(double v) noexcept { return v > 0 ? std::sqrt(v) : 0; }
inline doubled root(doubled v) noexcept { return square_root(v); }
inline double leading(double v) noexcept { return v; }
inline double leading(doubled v) noexcept { return v.high; }

// Unknowns at most: three components of B, A and D less one for the condition; or four less one, and two for an axis.
inline constexpr std::size_t most_unknowns = 5;
inline constexpr std::size_t most_entries = most_unknowns * (most_unknowns + 1) / 2;

// Where entry (r, c) of a symmetric matrix stands, for c <= r.
constexpr std::size_t entry_at(std::size_t r, std::size_t c) noexcept { return r * (r + 1) / 2 + c; }

template <class T>
struct round_shape {
  std::size_t dimension;  // of q
  bool has_axis;
  T v[5];        // A, the components of B, D
  T axes[3][3];  // of a cylinder: two directions across the axis, and that of the axis

  std::size_t parts() const noexcept { return dimension + 2; }
  std::size_t unknowns() const noexcept { return dimension + 1 + (has_axis ? 2 : 0); }
  T a() const noexcept { return v[0]; }
  const T* b() const noexcept { return v + 1; }
  T d() const noexcept { return v[dimension + 1]; }
};

// A point beside a shape.
template <class T>
struct placed_point {
  T q[3];
  T axial;   // its place along the axis
  T square;  // |q|^2
  T distance;
  T slope;  // s
};

template <class T>
placed_point<T> place(const round_shape<T>& m, const T* p) noexcept {
  placed_point<T> x;
  x.axial = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    x.q[k] = p[k];
    if (!m.has_axis) continue;
    const T along = m.axes[k][0] * p[0] + m.axes[k][1] * p[1] + m.axes[k][2] * p[2];
    (k < 2 ? x.q[k] : x.axial) = along;
  }
  x.square = x.q[0] * x.q[0] + x.q[1] * x.q[1];
  T value = m.b()[0] * x.q[0] + m.b()[1] * x.q[1];
  if (m.dimension == 3) {
    x.square += x.q[2] * x.q[2];
    value += m.b()[2] * x.q[2];
  }
  value += m.a() * x.square + m.d();
  x.slope = root(T(1.0) + T(4.0) * m.a() * value);
  x.distance = T(2.0) * value / (T(1.0) + x.slope);
  return x;
}

// Scales A, B and D so that the condition holds; false when nothing can be scaled so.
template <class T>
bool normalise(round_shape<T>& m) noexcept {
  T square = T(-4.0) * m.a() * m.d();
  for (std::size_t k = 0; k < m.dimension; ++k) square += m.b()[k] * m.b()[k];
  if (!(leading(square) > 0x1p-200 && leading(square) < 0x1p200)) return false;
  const T factor = T(1.0) / root(square);
  for (std::size_t k = 0; k < m.parts(); ++k) m.v[k] *= factor;
  return true;
}

// Directions that fulfil the condition to first order, from the unit vectors of all parts but one: direction j is
// e_j - ratio_j e_k, where part k has the largest derivative of the condition. `bend` is the condition's second
// derivative along two of them.
template <class T>
struct tangents {
  std::size_t left_out = 0;
  std::size_t part[4];
  T ratio[4], curvature[4];  // `curvature`: the change of A
  T bend[4][4];

  tangents() = default;
  explicit tangents(const round_shape<T>& m) noexcept {
    const std::size_t last = m.dimension + 1;
    T derivative[5];
    for (std::size_t k = 0; k <= last; ++k)
      derivative[k] = k == 0 ? T(-2.0) * m.d() : k == last ? T(-2.0) * m.a() : m.v[k];
    for (std::size_t k = 1; k <= last; ++k)
      if (magnitude(derivative[k]) > magnitude(derivative[left_out])) left_out = k;
    for (std::size_t k = 0, j = 0; k <= last; ++k) {
      if (k == left_out) continue;
      part[j] = k;
      ratio[j++] = derivative[k] / derivative[left_out];
    }
    for (std::size_t i = 0; i < last; ++i) {
      curvature[i] = component(i, 0);
      for (std::size_t j = 0; j <= i; ++j) {
        T sum = T(-2.0) * (component(i, 0) * component(j, last) + component(i, last) * component(j, 0));
        for (std::size_t k = 1; k < last; ++k) sum += component(i, k) * component(j, k);
        bend[i][j] = bend[j][i] = sum;
      }
    }
  }

  // Part k of direction j.
  T component(std::size_t j, std::size_t k) const noexcept {
    return k == left_out ? -ratio[j] : k == part[j] ? T(1.0) : T(0.0);
  }
};

// Derivatives of the distance of one point: along the tangents, and for turns of the axis towards the two directions
// across it.
template <class T>
struct distance_derivatives {
  T first[most_unknowns];
  T second[most_entries];
};

// From A r^2 + r = P. The condition is kept by scaling after a step, which bends A, B and D by `bend`; after a turn by
// the angles t the first direction across the axis is e_1 - t_1 u - t_1 (t_1 e_1 + t_2 e_2) / 2 + ..., and the second
// alike.
template <class T>
void derive(const round_shape<T>& m, const tangents<T>& t, const placed_point<T>& x,
            distance_derivatives<T>& d) noexcept {
  // At the centre the distance has no derivative; there the sum has a peak, never its minimum.
  const T inverse = leading(x.slope) > 0x1p-25 ? T(1.0) / x.slope : T(0.0);
  const T r = x.distance;
  const std::size_t count = m.dimension + 1, all = m.unknowns();
  T direct[5];
  direct[0] = (x.square - r * r) * inverse;
  for (std::size_t k = 0; k < m.dimension; ++k) direct[k + 1] = x.q[k] * inverse;
  direct[count] = inverse;
  for (std::size_t i = 0; i < count; ++i) d.first[i] = direct[t.part[i]] - t.ratio[i] * direct[t.left_out];
  T across[2];
  for (std::size_t i = count; i < all; ++i) {
    across[i - count] = T(2.0) * m.a() * x.q[i - count] + m.b()[i - count];
    d.first[i] = -x.axial * across[i - count] * inverse;
  }
  const T two_r = T(2.0) * r, two_a = T(2.0) * m.a();
  for (std::size_t i = 0; i < all; ++i)
    for (std::size_t j = 0; j <= i; ++j) {
      T sum = -two_a * d.first[i] * d.first[j];
      if (i < count) {
        sum -= two_r * (t.curvature[i] * d.first[j] + t.curvature[j] * d.first[i]) + t.bend[i][j] * r;
      } else if (j < count) {
        const std::size_t k = i - count;
        sum -=
            two_r * t.curvature[j] * d.first[i] + x.axial * (T(2.0) * t.curvature[j] * x.q[k] + t.component(j, k + 1));
      } else {
        const std::size_t k = i - count, l = j - count;
        sum -= two_a * (x.q[k] * x.q[l]) + T(0.5) * (m.b()[k] * x.q[l] + m.b()[l] * x.q[k]);
        if (k == l) sum += two_a * x.axial * x.axial;
      }
      d.second[entry_at(i, j)] = sum * inverse;
    }
}

// The rows become orthogonal and of length 1: the last is scaled, the second made orthogonal to it, the first their
// product.
template <class T>
void make_orthogonal(T (&e)[3][3]) noexcept {
  const auto scale = [](T* v) {
    const T factor = T(1.0) / root(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (std::size_t k = 0; k < 3; ++k) v[k] *= factor;
  };
  scale(e[2]);
  const T along = e[1][0] * e[2][0] + e[1][1] * e[2][1] + e[1][2] * e[2][2];
  for (std::size_t k = 0; k < 3; ++k) e[1][k] -= along * e[2][k];
  scale(e[1]);
  for (std::size_t k = 0; k < 3; ++k)
    e[0][k] = e[1][(k + 1) % 3] * e[2][(k + 2) % 3] - e[1][(k + 2) % 3] * e[2][(k + 1) % 3];
}

// Turns the axis by the angles, with the least rotation that does so, and makes the three directions orthogonal anew.
template <class T>
void turn(round_shape<T>& m, T first, T second) noexcept {
  T u[3];
  for (std::size_t k = 0; k < 3; ++k) u[k] = m.axes[2][k] + first * m.axes[0][k] + second * m.axes[1][k];
  const T factor = T(1.0) / root(T(1.0) + first * first + second * second);
  const T angles[2] = {first * factor, second * factor};
  const T share = T(1.0) / (T(1.0) + factor);
  for (std::size_t i = 0; i < 2; ++i)
    for (std::size_t k = 0; k < 3; ++k) m.axes[i][k] -= angles[i] * share * (m.axes[2][k] + u[k] * factor);
  for (std::size_t k = 0; k < 3; ++k) m.axes[2][k] = u[k] * factor;
  make_orthogonal(m.axes);
}

// The shape after a step of minus x; false when there is none.
template <class T>
bool move(round_shape<T>& m, const tangents<T>& t, const T* x) noexcept {
  for (std::size_t i = 0; i <= m.dimension; ++i) {
    m.v[t.part[i]] -= x[i];
    m.v[t.left_out] += t.ratio[i] * x[i];
  }
  if (m.has_axis) turn(m, -x[m.dimension + 1], -x[m.dimension + 2]);
  return normalise(m);
}

}  // namespace tessarn::analysis
