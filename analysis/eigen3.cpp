// The method of Jacobi for small symmetric matrices.
#include "analysis/eigen3.h"

namespace tessarn::analysis {

namespace {

// Six sweeps are usual. The limit ends the loop for a matrix with a NaN.
constexpr int most_sweeps = 40;
// An entry beside the diagonal of at most this, where the largest entry is between 1 and 2, counts as 0: it turns a
// vector by less than the bound that eigen3.h states.
constexpr double negligible(double) noexcept { return 0x1p-104; }
constexpr double negligible(doubled) noexcept { return 0x1p-112; }

// A plane rotation by the angle whose tangent is t: c = 1 / sqrt(1 + t^2), s = t c, tau = s / (1 + c).
template <class T>
struct rotation {
  T t, s, tau;

  // (u, v) becomes (c u - s v, s u + c v). With tau the small change of each number is added to it.
  void turn(T& u, T& v) const noexcept {
    const T old_u = u, old_v = v;
    u = old_u - s * (old_v + tau * old_u);
    v = old_v + s * (old_u - tau * old_v);
  }
};

double leading(double v) noexcept { return v; }
double leading(doubled v) noexcept { return v.high; }
double square_root(double v) noexcept { return std::sqrt(v); }

// The rotation, by at most 45 degrees, after which the entry beside the diagonal is 0.
template <class T>
rotation<T> annihilating(T first, T second, T beside) noexcept {
  const T theta = (second - first) / (T(2.0) * beside);
  const T positive = leading(theta) < 0 ? -theta : theta;
  const T t = T(1.0) / (positive + square_root(positive * positive + T(1.0)));
  rotation<T> r;
  r.t = leading(theta) < 0 ? -t : t;
  const T c = T(1.0) / square_root(t * t + T(1.0));
  r.s = r.t * c;
  r.tau = r.s / (T(1.0) + c);
  return r;
}

// One rotation: makes the entry (p, q) 0, p < q, in the upper triangle.
template <int N, class T>
void annihilate(T (&a)[N][N], T (&vectors)[N][N], int p, int q) noexcept {
  const rotation<T> r = annihilating(a[p][p], a[q][q], a[p][q]);
  const T change = r.t * a[p][q];
  a[p][p] -= change;
  a[q][q] += change;
  a[p][q] = T(0.0);
  for (int k = 0; k < N; ++k) {
    if (k != p && k != q) r.turn(k < p ? a[k][p] : a[p][k], k < q ? a[k][q] : a[q][k]);
    r.turn(vectors[p][k], vectors[q][k]);
  }
}

// Each pair (p, q) once, row by row; false when all entries beside the diagonal were negligible.
template <int N, class T>
bool sweep(T (&a)[N][N], T (&vectors)[N][N]) noexcept {
  bool any = false;
  for (int p = 0; p < N - 1; ++p)
    for (int q = p + 1; q < N; ++q) {
      if (magnitude(a[p][q]) <= negligible(a[p][q])) continue;
      any = true;
      annihilate(a, vectors, p, q);
    }
  return any;
}

bool smaller(double a, double b) noexcept { return a < b; }
bool smaller(doubled a, doubled b) noexcept { return a.high < b.high || (a.high == b.high && a.low < b.low); }

// The eigenvectors in double precision, made orthogonal in doubled precision (by the method of Gram and Schmidt), and
// the matrix in their coordinates: nearly diagonal, so that two sweeps are left of the usual six.
template <int N>
void begin(doubled (&a)[N][N], doubled (&vectors)[N][N]) noexcept {
  double rounded[N][N];
  for (int r = 0; r < N; ++r)
    for (int c = r; c < N; ++c) rounded[r][c] = a[r][c].high;
  const eigen_system<N, double> near = eigen_of_symmetric(rounded);
  for (int r = 0; r < N; ++r) {
    doubled square = 0.0;
    for (int c = 0; c < N; ++c) vectors[r][c] = near.vectors[r][c];
    for (int k = 0; k < r; ++k) {
      doubled along = 0.0;
      for (int c = 0; c < N; ++c) along += vectors[r][c] * vectors[k][c];
      for (int c = 0; c < N; ++c) vectors[r][c] -= along * vectors[k][c];
    }
    for (int c = 0; c < N; ++c) square += vectors[r][c] * vectors[r][c];
    const doubled factor = doubled(1.0) / square_root(square);
    for (int c = 0; c < N; ++c) vectors[r][c] *= factor;
  }
  doubled image[N][N];  // of each vector
  for (int r = 0; r < N; ++r)
    for (int c = 0; c < N; ++c) {
      image[r][c] = 0.0;
      for (int k = 0; k < N; ++k) image[r][c] += (k < c ? a[k][c] : a[c][k]) * vectors[r][k];
    }
  for (int r = 0; r < N; ++r)
    for (int c = r; c < N; ++c) {
      a[r][c] = 0.0;
      for (int k = 0; k < N; ++k) a[r][c] += image[r][k] * vectors[c][k];
    }
}

template <int N>
void begin(double (&)[N][N], double (&vectors)[N][N]) noexcept {
  for (int r = 0; r < N; ++r)
    for (int c = 0; c < N; ++c) vectors[r][c] = r == c ? 1 : 0;
}

}  // namespace

// The matrix is scaled by a power of two, so that its largest entry is between 1 and 2.
template <int N, class T>
eigen_system<N, T> eigen_of_symmetric(const T (&matrix)[N][N]) noexcept {
  double largest = 0;
  for (int r = 0; r < N; ++r)
    for (int c = r; c < N; ++c) largest = magnitude(matrix[r][c]) > largest ? magnitude(matrix[r][c]) : largest;
  const int exponent = largest > 0 && is_finite(largest) ? exponent_of(largest) : 0;
  T a[N][N], vectors[N][N];
  for (int r = 0; r < N; ++r)
    for (int c = 0; c < N; ++c) a[r][c] = r <= c ? scaled(matrix[r][c], -exponent) : T(0.0);
  begin(a, vectors);
  for (int i = 0; i < most_sweeps && sweep(a, vectors); ++i) continue;
  int order[N];
  for (int k = 0; k < N; ++k) {
    int place = k;
    for (; place > 0 && smaller(a[k][k], a[order[place - 1]][order[place - 1]]); --place)
      order[place] = order[place - 1];
    order[place] = k;
  }
  eigen_system<N, T> result;
  for (int k = 0; k < N; ++k) {
    result.values[k] = scaled(a[order[k]][order[k]], exponent);
    for (int c = 0; c < N; ++c) result.vectors[k][c] = vectors[order[k]][c];
  }
  return result;
}

template eigen_system<3, double> eigen_of_symmetric(const double (&)[3][3]) noexcept;
template eigen_system<4, double> eigen_of_symmetric(const double (&)[4][4]) noexcept;
template eigen_system<3> eigen_of_symmetric(const doubled (&)[3][3]) noexcept;
template eigen_system<4> eigen_of_symmetric(const doubled (&)[4][4]) noexcept;

}  // namespace tessarn::analysis
