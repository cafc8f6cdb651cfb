#include "analysis/rotation.h"

#include "analysis/eigen3.h"

namespace tessarn::analysis {

namespace {

struct quaternion {
  doubled v[4];  // the real part first
};

doubled squared_length(const quaternion& q) noexcept {
  return q.v[0] * q.v[0] + q.v[1] * q.v[1] + (q.v[2] * q.v[2] + q.v[3] * q.v[3]);
}

// The matrix N of B. Horn, 1987, section 4.A: for a unit quaternion q, q'N q is the sum of (R a) . b.
eigen_system<4> horn(const doubled (&h)[3][3]) noexcept {
  const doubled xx = h[0][0], yy = h[1][1], zz = h[2][2];
  const doubled yz = h[2][1], zy = h[1][2], zx = h[0][2], xz = h[2][0], xy = h[1][0], yx = h[0][1];
  const doubled n[4][4] = {{xx + yy + zz, yz - zy, zx - xz, xy - yx},
                           {0.0, xx - yy - zz, xy + yx, zx + xz},
                           {0.0, 0.0, yy - xx - zz, yz + zy},
                           {0.0, 0.0, 0.0, zz - xx - yy}};
  return eigen_of_symmetric(n);
}

// Of the unit quaternions in the space of the eigenvalues that equal the largest one, that with the largest real part:
// the rotation by the smallest angle. Where all of them have the real part 0, the first eigenvector.
quaternion smallest_angle(const eigen_system<4>& e, double tolerance) noexcept {
  quaternion q{{0.0, 0.0, 0.0, 0.0}};
  for (int k = 3; k >= 0 && (e.values[3] - e.values[k]).high <= tolerance; --k)
    for (int c = 0; c < 4; ++c) q.v[c] += e.vectors[k][0] * e.vectors[k][c];
  if (!(squared_length(q).high > 0x1p-80))
    for (int c = 0; c < 4; ++c) q.v[c] = e.vectors[3][c];
  return q;
}

void store_rotation(const quaternion& unscaled, double sign, doubled (&r)[3][3]) noexcept {
  const doubled f = doubled(1.0) / square_root(squared_length(unscaled));
  const doubled w = unscaled.v[0] * f, x = unscaled.v[1] * f, y = unscaled.v[2] * f, z = unscaled.v[3] * f;
  const doubled two = 2 * sign, ww = w * w, xx = x * x, yy = y * y, zz = z * z;
  r[0][0] = sign * (ww - yy + (xx - zz));
  r[1][1] = sign * (ww - xx + (yy - zz));
  r[2][2] = sign * (ww - xx + (zz - yy));
  r[0][1] = two * (x * y - w * z);
  r[1][0] = two * (x * y + w * z);
  r[0][2] = two * (x * z + w * y);
  r[2][0] = two * (x * z - w * y);
  r[1][2] = two * (y * z - w * x);
  r[2][1] = two * (y * z + w * x);
}

}  // namespace

// The eigenvalues of N are s1 + s2 + s3, s1 - s2 - s3, -s1 + s2 - s3 and -s1 - s2 + s3, descending, with the sign of
// det H at s3. The largest belongs to the best rotation. The matrix for -H is -N: the smallest belongs to the best
// rotation of the mirror image.
best_rotation<3> rotation_of(const doubled (&h)[3][3], double tolerance, bool reflections) noexcept {
  const eigen_system<4> e = horn(h);
  best_rotation<3> r;
  r.reflected = reflections && (e.values[0] + e.values[3]).high < -2 * tolerance;
  if (r.reflected) {
    quaternion q;
    for (int c = 0; c < 4; ++c) q.v[c] = e.vectors[0][c];
    store_rotation(q, -1, r.entries);
    r.product = -e.values[0];
    r.gap = (e.values[1] - e.values[0]) * doubled(0.5);
    r.wide_gap = (e.values[2] - e.values[0]) * doubled(0.5);
  } else {
    store_rotation(smallest_angle(e, 2 * tolerance), 1, r.entries);
    r.product = e.values[3];
    r.gap = (e.values[3] - e.values[2]) * doubled(0.5);
    r.wide_gap = (e.values[3] - e.values[1]) * doubled(0.5);
  }
  return r;
}

// The product for the angle t is p cos t + q sin t, for the mirror image m cos t + n sin t; the best angle has the
// direction of these two numbers. The identity where both vanish.
best_rotation<2> rotation_of(const doubled (&h)[2][2], double tolerance, bool reflections) noexcept {
  const doubled p = h[0][0] + h[1][1], q = h[1][0] - h[0][1], m = h[0][0] - h[1][1], n = h[1][0] + h[0][1];
  const doubled turned = square_root(p * p + q * q), mirrored = square_root(m * m + n * n);
  best_rotation<2> r;
  r.reflected = reflections && (mirrored - turned).high > 2 * tolerance;
  r.product = r.gap = r.wide_gap = r.reflected ? mirrored : turned;
  const bool vanishes = !(r.product.high > 0);
  const doubled c = vanishes ? doubled(1.0) : (r.reflected ? m : p) / r.product;
  const doubled s = vanishes ? doubled(0.0) : (r.reflected ? n : q) / r.product;
  r.entries[0][0] = c;
  r.entries[1][0] = s;
  r.entries[0][1] = r.reflected ? s : -s;
  r.entries[1][1] = r.reflected ? -c : c;
  return r;
}

}  // namespace tessarn::analysis
