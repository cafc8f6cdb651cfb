// Minimum zones judged by all planes through three points and all planes parallel to two pairs of points, in whole
// numbers of any length; least-squares planes judged by numbers of 640 bits.
#include <gtest/gtest.h>
#include <tessarn/flat.h>

#include <array>
#include <cstdlib>
#include <vector>

#include "../support/random.h"
#include "wide.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using tessarn::flatness_result;
using tessarn::status;
using test::random_source;
using test::wide;
using test::wide3;
using cloud = std::vector<vector3d>;
using whole = mpz_class;
using whole3 = std::array<whole, 3>;

int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 1500;
}

whole3 operator-(const whole3& a, const whole3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
whole dot(const whole3& a, const whole3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
whole3 cross(const whole3& a, const whole3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// The coordinates times 2^shift are whole numbers.
std::vector<whole3> exact(const cloud& points, int shift) {
  std::vector<whole3> result;
  for (const vector3d& p : points) {
    whole3 v;
    const double c[] = {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
    for (int k = 0; k < 3; ++k) {
      const mpf_class scaled(mpf_class(c[k], 2000) * mpf_class(std::ldexp(1.0, shift), 2000), 2000);
      v[k] = whole(scaled);
      EXPECT_TRUE(mpf_class(v[k], 2000) == scaled);
    }
    result.push_back(v);
  }
  return result;
}

// The width in the direction n is extent / |n|.
struct zone {
  whole extent, square;
  bool found = false;

  // Whether this zone is smaller than the other.
  bool operator<(const zone& o) const { return extent * extent * o.square < o.extent * o.extent * square; }
};

zone zone_along(const std::vector<whole3>& points, const whole3& n) {
  whole high = dot(n, points[0]), low = high;
  for (const whole3& p : points) {
    const whole h = dot(n, p);
    if (h > high) high = h;
    if (h < low) low = h;
  }
  return {high - low, dot(n, n), true};
}

// The best of all directions that are possible at all; none when all points lie on a line.
zone best_zone(const std::vector<whole3>& points) {
  zone best;
  const std::size_t n = points.size();
  std::vector<whole3> steps;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < i; ++j) steps.push_back(points[i] - points[j]);
  for (std::size_t i = 0; i < steps.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const whole3 normal = cross(steps[i], steps[j]);
      if (dot(normal, normal) == 0) continue;
      const zone z = zone_along(points, normal);
      if (!best.found || z < best) best = z;
    }
  return best;
}

wide value(const zone& z, int shift) {
  return wide(test::square_root(
                  wide(wide(mpf_class(z.extent * z.extent, wide::bits)) / wide(mpf_class(z.square, wide::bits)))) *
              wide(std::ldexp(1.0, -shift)));
}

// The touching points span the direction of the normal, are the extreme ones, and their zone is the best one.
void check_touching(const flatness_result& f, const std::vector<whole3>& points, const zone& best) {
  const auto p = [&](int k) -> const whole3& { return points[f.touching[k]]; };
  whole3 n;
  const tessarn::ulong above = f.touching_above;
  ASSERT_EQ(above + f.touching_below, 4u);
  if (above == 3) n = cross(p(1) - p(0), p(2) - p(0));
  if (above == 1) n = cross(p(2) - p(1), p(3) - p(1));
  if (above == 2) n = cross(p(1) - p(0), p(3) - p(2));
  if (dot(n, p(0) - p(3)) < 0) n = {-n[0], -n[1], -n[2]};
  const whole high = dot(n, p(0)), low = dot(n, p(3));
  for (tessarn::ulong k = 0; k < 4; ++k) EXPECT_TRUE(dot(n, p(static_cast<int>(k))) == (k < above ? high : low));
  for (const whole3& q : points) EXPECT_TRUE(dot(n, q) <= high && dot(n, q) >= low);
  const zone z{high - low, dot(n, n), true};
  // Widths within 2^-90 count as equal: squares within 2^-89.
  const whole ours = z.extent * z.extent * best.square, theirs = best.extent * best.extent * z.square;
  EXPECT_TRUE((ours - theirs) * (whole(1) << 88) <= theirs);
  const wide length = test::square_root(wide(mpf_class(z.square, wide::bits)));
  const double normal[] = {static_cast<double>(f.middle.normal.x), static_cast<double>(f.middle.normal.y),
                           static_cast<double>(f.middle.normal.z)};
  for (int k = 0; k < 3; ++k)
    EXPECT_TRUE(test::near(wide(wide(mpf_class(n[static_cast<std::size_t>(k)], wide::bits)) / length), normal[k],
                           wide(0x1.0001p-53)));
}

void check_zone(const cloud& c, int shift) {
  const std::vector<whole3> points = exact(c, shift);
  const zone best = best_zone(points);
  const flatness_result f = tessarn::flatness(c);
  if (!best.found) {
    EXPECT_TRUE(f.state == status::collinear || f.state == status::too_few_distinct ||
                f.state == status::too_few_points);
    return;
  }
  ASSERT_EQ(f.state, status::ok);
  const wide exact_zone = value(best, shift);
  EXPECT_TRUE(test::near(exact_zone, static_cast<double>(f.zone), wide(exact_zone * 0x1.0001p-53)))
      << f.zone << ' ' << exact_zone.get_d();
  EXPECT_EQ(f.zone == 0, best.extent == 0);
  if (best.extent != 0) check_touching(f, points, best);
  const double half = static_cast<double>(f.zone) / 2;
  for (std::size_t i = 0; i < c.size(); ++i)
    EXPECT_LE(std::fabs(static_cast<double>(f.middle.residuals.getData()[i])), half * (1 + 0x1p-50) + 0x1p-90);
  if (f.least_squares.state == status::ok) {
    const double noise = 0x1p-80 * (1 + 1 / std::sqrt(static_cast<double>(f.determination)));
    EXPECT_LE(f.zone, f.least_squares.peak_to_valley * (1 + 0x1p-50) + noise);
  }
}

// Kinds: anywhere; a small grid, with ties, repetitions and points in one plane; a thin plate; far from the origin;
// nearly on a line; a prism with two equal polygons, so that faces and edges are parallel; a small grid whose points
// are hardly off their places; a tiny body and one point far away.
cloud draw(random_source& random, int kind, std::size_t n) {
  cloud c;
  const double thin = std::ldexp(1.0, -static_cast<int>(random.below(50)));
  const double slight = std::ldexp(1.0, -20 - static_cast<int>(random.below(32)));
  const auto grid = [&](std::uint32_t size) { return static_cast<double>(random.below(size)); };
  const auto off_grid = [&] { return grid(3) + slight * (grid(3) - 1); };
  for (std::size_t i = 0; i < n; ++i) {
    const double x = random.uniform(), y = random.uniform(), z = random.uniform();
    if (kind == 0) c.push_back({x, y, z});
    if (kind == 1) {
      const double u = grid(3), v = grid(3);
      c.push_back({u, v, grid(3)});
    }
    if (kind == 2) c.push_back({x, y + z, x - y + thin * z});
    if (kind == 3) c.push_back({1e6 + x, 1e6 + y, -1e6 + x + y + 1e-9 * z});
    if (kind == 4) c.push_back({x, x + thin * y, x - thin * z});
    if (kind == 6) {
      const double u = off_grid(), v = off_grid();
      c.push_back({u, v, off_grid()});
    }
    if (kind == 7) {  // areas whose squares are below all doubles
      const auto tiny = [](double v) { return std::copysign(0.25 + 0.75 * std::fabs(v), v) * 0x1p-268; };
      c.push_back(i == 0 ? vector3d(1, y, z) : vector3d(tiny(x), tiny(y), tiny(z)));
    }
    if (kind == 5 && i % 2 == 0) {
      const double u = grid(6), v = grid(6);
      c.push_back({u, v, 0});
      c.push_back({u + 1, v, 4});
    }
  }
  return c;
}

TEST(FlatAccuracy, ManyZonesAreExact) {
  random_source random(1740);
  const int count = rounds();
  for (int i = 0; i < count; ++i) {
    const std::size_t n = 3 + random.below(i % 50 == 0 ? 10 : 5);
    check_zone(draw(random, i % 8, n), 400);
    ASSERT_FALSE(HasFailure()) << "round " << i;
  }
}

struct wide_symmetric {
  wide a[3][3];
};

// Goes on from v by the iteration of Rayleigh; whether it ends at the smallest eigenvalue of c.
bool improve(wide3& v, const wide_symmetric& c, const wide& trace) {
  for (int i = 0; i < 12; ++i) {
    const wide l = test::length(v);
    for (int k = 0; k < 3; ++k) v[k] /= l;
    wide quotient;
    for (int r = 0; r < 3; ++r)
      for (int k = 0; k < 3; ++k) quotient += v[r] * c.a[r][k] * v[k];
    wide3 rows[3], shifted[3];
    const wide tiny(trace * wide(std::ldexp(1.0, -500)));
    for (int r = 0; r < 3; ++r)
      for (int k = 0; k < 3; ++k) {
        rows[r][k] = wide(c.a[r][k] - (r == k ? quotient : wide(0)));
        shifted[r][k] = wide(rows[r][k] + (r == k ? tiny : wide(0)));
      }
    if (i == 11) {
      const wide minor(shifted[0][0] * shifted[1][1] - shifted[0][1] * shifted[1][0]);
      return shifted[0][0] > 0 && minor > 0 && test::dot(shifted[0], test::cross(shifted[1], shifted[2])) > 0;
    }
    const wide3 cofactors[] = {test::cross(rows[1], rows[2]), test::cross(rows[2], rows[0]),
                               test::cross(rows[0], rows[1])};
    const wide3 next{{test::dot(cofactors[0], v), test::dot(cofactors[1], v), test::dot(cofactors[2], v)}};
    if (test::length(next) > 0) v = next;
  }
  return false;
}

wide3 wide_point(const vector3d& p) { return {{wide(p.x), wide(p.y), wide(p.z)}}; }

bool check_least_squares(const cloud& c) {
  const flatness_result f = tessarn::flatness(c);
  const tessarn::reference_plane& p = f.least_squares;
  if (p.state != status::ok) return false;
  wide3 mean;
  for (const vector3d& q : c)
    for (int k = 0; k < 3; ++k) mean[k] += wide_point(q)[k] / static_cast<double>(c.size());
  wide_symmetric s;
  wide trace, extent;
  for (const vector3d& q : c) {
    const wide3 d = wide_point(q) - mean;
    for (int r = 0; r < 3; ++r) {
      for (int k = 0; k < 3; ++k) s.a[r][k] += d[r] * d[k];
      trace += d[r] * d[r];
      if (test::magnitude(d[r]) > extent) extent = test::magnitude(d[r]);
    }
  }
  wide3 normal = wide_point(p.normal);
  const bool smallest = improve(normal, s, trace);
  EXPECT_TRUE(smallest);
  if (test::dot(normal, wide_point(p.normal)) < 0)
    for (int k = 0; k < 3; ++k) normal[k] *= -1;
  const wide e(wide((static_cast<double>(c.size()) + 64) * 0x1p-98) / wide(static_cast<double>(f.determination)));
  const wide3 found = wide_point(p.normal);
  for (int k = 0; k < 3; ++k) EXPECT_TRUE(test::near(normal[k], found[k].get_d(), wide(e + 0x1p-53)));
  // The two larger values from their sum and their product.
  wide least, minors;
  for (int r = 0; r < 3; ++r) {
    const int i = (r + 1) % 3, k = (r + 2) % 3;
    for (int j = 0; j < 3; ++j) least += normal[r] * s.a[r][j] * normal[j];
    minors += s.a[i][i] * s.a[k][k] - s.a[i][k] * s.a[i][k];
  }
  const wide sum(trace - least), product(minors - least * sum);
  const wide apart(sum * sum / 4 - product);  // 0 but for rounding where the two are equal
  const wide second(sum / 2 - (apart > 0 ? test::square_root(apart) : wide(0)));
  const wide part = test::square_root(wide(second / trace));
  wide squares;
  const wide off(((static_cast<double>(c.size()) + 64) * 0x1p-98 + e * part) * extent);
  for (std::size_t i = 0; i < c.size(); ++i) {
    const wide r = test::dot(normal, wide_point(c[i]) - mean);
    EXPECT_TRUE(
        test::near(r, static_cast<double>(p.residuals.getData()[i]), wide(test::magnitude(r) * 0x1.01p-53 + off)))
        << f.determination;
    squares += r * r;
  }
  const wide rms = test::square_root(wide(squares / static_cast<double>(c.size())));
  EXPECT_TRUE(test::near(rms, static_cast<double>(p.root_mean_square), wide(rms * 0x1p-51 + 2 * off)));
  const wide offset = test::dot(normal, mean);
  EXPECT_TRUE(test::near(offset, static_cast<double>(p.offset),
                         wide(test::magnitude(offset) * 0x1.01p-53 + off + e * test::length(mean))));
  return true;
}

// Far from the origin and a billion times as wide as thick among them; nearly upright planes, too.
TEST(FlatAccuracy, ManyLeastSquaresPlanesHold) {
  random_source random(1741);
  const int count = rounds();
  int determined = 0;
  for (int i = 0; i < count; ++i) {
    cloud c = draw(random, i % 6, 4 + random.below(8));
    if (i % 4 == 1)
      for (vector3d& p : c) p = {p.z * 1e3, p.x, p.y};
    determined += check_least_squares(c);
    ASSERT_FALSE(HasFailure()) << "round " << i;
  }
  EXPECT_GT(determined, count / 2);
}

}  // namespace

#endif
