// The stated accuracy of align(), judged by numbers of 640 bits on random and hostile pairs of sets.
//
// The judge starts at the rotation that was found and goes on by Newton's method on the rotations. Where it ends, two
// conditions prove that no rotation is better: the matrix P = R'H is symmetric, and tr(P) I - P is positive definite.
#include <gtest/gtest.h>
#include <tessarn/align.h>

#include <cstdlib>
#include <vector>

#include "../support/random.h"
#include "wide.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using tessarn::align_options;
using tessarn::space_alignment;
using tessarn::status;
using test::random_source;
using test::wide;
using test::wide3;
using cloud = std::vector<vector3d>;

int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 3000;
}

struct wide_matrix {
  wide3 row[3];
  wide3& operator[](int r) { return row[r]; }
  const wide3& operator[](int r) const { return row[r]; }
};

wide_matrix product(const wide_matrix& a, const wide_matrix& b) {
  wide_matrix c;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) c[i][j] = wide(a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j]);
  return c;
}

wide_matrix transposed(const wide_matrix& a) {
  wide_matrix t;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) t[i][j] = a[j][i];
  return t;
}

wide determinant(const wide_matrix& a) { return test::dot(a[0], test::cross(a[1], a[2])); }

wide3 times(const wide_matrix& a, const wide3& v) {
  return {{test::dot(a[0], v), test::dot(a[1], v), test::dot(a[2], v)}};
}

// The matrix with the same effect on lengths, made orthogonal by the method of Gram and Schmidt.
wide_matrix orthogonal(const mat<long double>& r) {
  wide_matrix q;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) q[i][j] = wide(static_cast<double>(r.getData()[3 * i + j]));
    for (int k = 0; k < i; ++k) {
      const wide d = test::dot(q[k], q[i]);
      for (int j = 0; j < 3; ++j) q[i][j] -= d * q[k][j];
    }
    const wide l = test::length(q[i]);
    for (int j = 0; j < 3; ++j) q[i][j] /= l;
  }
  return q;
}

// tr(P) I - (P + P') / 2.
wide_matrix curvature(const wide_matrix& p) {
  const wide trace(p[0][0] + p[1][1] + p[2][2]);
  wide_matrix s;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) s[i][j] = wide((i == j ? trace : wide(0)) - (p[i][j] + p[j][i]) / 2);
  return s;
}

bool positive_definite(const wide_matrix& s) {
  return s[0][0] > 0 && s[0][0] * s[1][1] - s[0][1] * s[1][0] > 0 && determinant(s) > 0;
}

// Goes on from q until tr(q'h) is largest; false when it does not get there.
bool improve(wide_matrix& q, const wide_matrix& h) {
  for (int i = 0; i < 40; ++i) {
    const wide_matrix p = product(transposed(q), h), s = curvature(p);
    if (!positive_definite(s)) return false;
    const wide3 g{{wide(p[2][1] - p[1][2]), wide(p[0][2] - p[2][0]), wide(p[1][0] - p[0][1])}};
    // Half of the solution of s w = g by cofactors; s is symmetric.
    const wide d(determinant(s) * 2);
    const wide_matrix cofactors{{test::cross(s[1], s[2]), test::cross(s[2], s[0]), test::cross(s[0], s[1])}};
    wide3 w = times(cofactors, g);
    for (int k = 0; k < 3; ++k) w[k] /= d;
    const wide ww = test::dot(w, w);
    // The rotation of A. Cayley by this vector.
    wide_matrix step;
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) step[r][c] = wide(2 * w[r] * w[c] + (r == c ? wide(1 - ww) : wide(0)));
    for (int k = 0; k < 3; ++k) {
      const int u = (k + 1) % 3, v = (k + 2) % 3;
      step[u][v] -= 2 * w[k];
      step[v][u] += 2 * w[k];
    }
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) step[r][c] /= 1 + ww;
    q = product(q, step);
    if (ww < wide(std::ldexp(1.0, -900))) return true;
  }
  return false;
}

struct exact_sums {
  wide weight;
  wide3 a, b;  // centroids
  wide_matrix h;
  wide aa, bb;
};

wide3 exact(const vector3d& p) { return {{wide(p.x), wide(p.y), wide(p.z)}}; }

exact_sums sums_of(const cloud& a, const cloud& b, const std::vector<tessarn::real>& weights) {
  exact_sums s;
  const auto weight = [&](std::size_t i) {
    const wide w(weights.empty() ? 1.0 : static_cast<double>(weights[i]));
    return wide(w * w);
  };
  for (std::size_t i = 0; i < a.size(); ++i) {
    s.weight += weight(i);
    for (int k = 0; k < 3; ++k) {
      s.a[k] += weight(i) * exact(a[i])[k];
      s.b[k] += weight(i) * exact(b[i])[k];
    }
  }
  for (int k = 0; k < 3; ++k) {
    s.a[k] /= s.weight;
    s.b[k] /= s.weight;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    const wide3 p = exact(a[i]) - s.a, q = exact(b[i]) - s.b;
    s.aa += weight(i) * test::dot(p, p);
    s.bb += weight(i) * test::dot(q, q);
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) s.h[r][c] += weight(i) * q[r] * p[c];
  }
  return s;
}

// The largest coordinate about the centroid.
wide extent(const cloud& points, const wide3& centroid) {
  wide largest;
  for (const vector3d& p : points) {
    const wide3 d = exact(p) - centroid;
    for (int k = 0; k < 3; ++k)
      if (test::magnitude(d[k]) > largest) largest = test::magnitude(d[k]);
  }
  return largest;
}

double orthogonality(const mat<long double>& r) {
  double worst = 0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      wide sum(i == j ? -1 : 0);
      for (int k = 0; k < 3; ++k)
        sum += wide(static_cast<double>(r.getData()[3 * k + i])) * wide(static_cast<double>(r.getData()[3 * k + j]));
      worst = std::fmax(worst, std::fabs(sum.get_d()));
    }
  return worst;
}

// Half a unit in the last place, or of the smallest double.
wide rounding(const wide& v) { return wide(test::magnitude(v) * wide(0x1p-53) + wide(0x1p-1074) / 2); }

// Checks every claim of the accuracy; whether the rotation was determined.
bool check(const cloud& a, const cloud& b, const align_options& o, const std::vector<tessarn::real>& weights) {
  const space_alignment m = tessarn::align(a, b, o);
  if (m.rotation.getHeight() != 3) return false;
  EXPECT_LE(orthogonality(m.rotation), 0x1p-51);
  if (m.state != status::ok) return false;
  const exact_sums s = sums_of(a, b, weights);
  wide_matrix r = orthogonal(m.rotation), h = s.h;
  EXPECT_EQ(m.reflected, determinant(r) < 0);
  for (int i = 0; m.reflected && i < 9; ++i) {
    h[i / 3][i % 3] *= -1;
    r[i / 3][i % 3] *= -1;
  }
  const bool best = improve(r, h);
  EXPECT_TRUE(best) << m.determination;
  if (!best) return false;
  if (m.reflected) {
    EXPECT_TRUE(o.reflections && determinant(s.h) < 0);
  }
  const wide_matrix p = product(transposed(r), h);
  // The determination: the smallest eigenvalue of tr(P) I - P over |a| |b|.
  const wide norm(test::square_root(s.aa) * test::square_root(s.bb));
  for (const double side : {-1.0, 1.0}) {
    wide_matrix shifted = curvature(p);
    const wide told(norm * (static_cast<double>(m.determination) * (1 + side * 1e-9) + side * 0x1p-90));
    for (int k = 0; k < 3; ++k) shifted[k][k] -= told;
    EXPECT_EQ(positive_definite(shifted), side < 0) << m.determination;
  }
  const wide correlation(p[0][0] + p[1][1] + p[2][2]);
  for (int i = 0; m.reflected && i < 9; ++i) r[i / 3][i % 3] *= -1;

  const wide e(wide((static_cast<double>(a.size()) + 64) * 0x1p-98) / wide(static_cast<double>(m.determination)));
  for (int i = 0; i < 9; ++i)
    EXPECT_TRUE(test::near(r[i / 3][i % 3], static_cast<double>(m.rotation.getData()[i]), wide(e + 0x1p-53)))
        << m.determination;
  const wide scale = o.scale ? wide(correlation / s.aa) : wide(1);
  EXPECT_TRUE(test::near(scale, static_cast<double>(m.scale), wide(scale * (e + 0x1.01p-53)))) << m.determination;
  const wide size_a(scale * extent(a, s.a)), size_b = extent(b, s.b);
  const wide off(e * (size_a > size_b ? size_a : size_b));
  const wide3 turned = times(r, s.a);
  const double t[] = {static_cast<double>(m.translation.x), static_cast<double>(m.translation.y),
                      static_cast<double>(m.translation.z)};
  const wide reach(e * (scale * test::length(s.a)));
  for (int k = 0; k < 3; ++k) {
    const wide exact_t(s.b[k] - scale * turned[k]);
    EXPECT_TRUE(test::near(exact_t, t[k], wide(rounding(exact_t) * 1.01 + off + reach))) << exact_t.get_d() - t[k];
  }
  wide squares;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const wide3 pa = times(r, exact(a[i]) - s.a), pb = exact(b[i]) - s.b;
    const wide3 d{{wide(pb[0] - scale * pa[0]), wide(pb[1] - scale * pa[1]), wide(pb[2] - scale * pa[2])}};
    const wide l = test::length(d), w(weights.empty() ? 1.0 : static_cast<double>(weights[i]));
    EXPECT_TRUE(test::near(l, static_cast<double>(m.distances.getData()[i]), wide(2 * rounding(l) + off)));
    squares += w * w * l * l;
  }
  const wide rms = test::square_root(wide(squares / s.weight));
  EXPECT_TRUE(test::near(rms, static_cast<double>(m.root_mean_square), wide(4 * rounding(rms) + 2 * off)));
  return true;
}

vector3d random_point(random_source& random) {
  const double x = random.uniform(), y = random.uniform();
  return {x, y, random.uniform()};
}

// Two sets of n points. Kinds: a turned set with noise of any size; small integers; far from the origin; a mirrored
// set; nearly on a line; nearly in a plane; of very different sizes; unrelated.
void draw(random_source& random, int kind, std::size_t n, cloud& a, cloud& b) {
  const double noise = std::ldexp(1.0, -static_cast<int>(random.below(60)));
  const double thin = std::ldexp(1.0, -static_cast<int>(random.below(48)));
  const vector3d u = random_point(random), v = random_point(random), w = random_point(random);
  for (std::size_t i = 0; i < n; ++i) {
    vector3d p = random_point(random), q = random_point(random);
    if (kind == 1) {
      const auto whole = [&] { return static_cast<double>(random.below(4)); };
      p = {whole(), whole(), whole()};
      q = {whole(), whole(), whole()};
    }
    if (kind == 4) p = u * p.x + v * (thin * p.y) + w * (thin * p.z);
    if (kind == 5) p = u * p.x + v * p.y + w * (thin * p.z);
    if (kind != 1 && kind != 7) q = vector3d(-p.y, p.z * (kind == 3 ? -1.0 : 1.0), -p.x) + q * noise;
    if (kind == 2) {
      p = p * 1e-6 + vector3d(1e6, -2e6, 5e5);
      q = q * 1e-6 + vector3d(3e6, 1e6, 7e6);
    }
    if (kind == 6) {
      p = p * 0x1p400;
      q = q * 0x1p-500;
    }
    a.push_back(p);
    b.push_back(q);
  }
}

TEST(AlignAccuracy, ManyBoundsHold) {
  random_source random(1720);
  int determined = 0;
  const int count = rounds();
  for (int i = 0; i < count && !HasFailure(); ++i) {
    cloud a, b;
    draw(random, i % 8, 3 + random.below(7), a, b);
    align_options o;
    o.scale = i / 8 % 2 == 1;
    o.reflections = i / 16 % 2 == 1;
    std::vector<tessarn::real> weights;
    for (std::size_t k = 0; i / 32 % 2 == 1 && k < a.size(); ++k) weights.push_back(random.uniform(0.1, 2));
    o.weights = weights;
    determined += check(a, b, o, weights);
    ASSERT_FALSE(HasFailure()) << "round " << i;
  }
  EXPECT_GT(determined, count * 3 / 4);
}

// Thin sets, whose rotation about their long direction is hardly determined, turned out of their plane by angles of its
// uncertainty: the rotation is orthogonal, with all its small entries.
TEST(AlignAccuracy, RotationsOfThinSetsAreOrthogonal) {
  random_source random(1721);
  for (int i = 0; i < 4000 && !HasFailure(); ++i) {
    const double thin = std::ldexp(1.0, -40 - static_cast<int>(random.below(6)));
    const double angle = std::ldexp(random.uniform(), -44 - static_cast<int>(random.below(10)));
    cloud a, b;
    for (int k = 0; k < 6; ++k) {
      const double x = k, y = thin * random.uniform(), z = thin * random.uniform();
      const double u = y - angle * z, v = z + angle * y;
      a.push_back({x, y, z});
      b.push_back({0.8 * x - 0.6 * u, 0.6 * x + 0.8 * u, v + angle * x});
    }
    const space_alignment m = tessarn::align(a, b);
    EXPECT_LE(orthogonality(m.rotation), 0x1p-51) << m.determination;
  }
}

// Coordinates near 1e6 with a spread of 1e-6 keep all digits that they have.
TEST(AlignAccuracy, FarFromTheOrigin) {
  const double step = 0x1p-20;
  cloud a, b;
  for (int i = 0; i < 8; ++i) {
    const vector3d p(step * (i & 1), step * (i & 2), step * (i & 4));
    a.push_back({1e6 + p.x, -1e6 + p.y, 1e6 + p.z});
    b.push_back({3e6 - p.y, p.x, p.z - 1e6});
  }
  const space_alignment m = tessarn::align(a, b);
  ASSERT_EQ(m.state, status::ok);
  EXPECT_EQ(m.root_mean_square, 0);
  EXPECT_EQ(m.translation, vector3d(2e6, -1e6, -2e6));
  EXPECT_EQ(m.map(a[5]), b[5]);
}

}  // namespace

#endif
