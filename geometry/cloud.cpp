#include "geometry/cloud.h"

#include <algorithm>
#include <memory>

namespace tessarn::detail {
namespace {

constexpr std::size_t block = 128;

bool same_point(const vector3d& p, const vector3d& q) { return p.x == q.x && p.y == q.y && p.z == q.z; }

std::uint64_t hash_of(const vector3d& p) noexcept {
  std::uint64_t bits[3];
  const real c[3] = {p.x + 0, p.y + 0, p.z + 0};  // -0.0 becomes 0.0
  std::memcpy(bits, c, sizeof bits);
  std::uint64_t h = bits[0] * 0x9E3779B97F4A7C15u;
  h = ((h ^ (h >> 32)) + bits[1]) * 0xBF58476D1CE4E5B9u;
  h = ((h ^ (h >> 32)) + bits[2]) * 0x94D049BB133111EBu;
  return h ^ (h >> 29);
}

// A bit for each of a power-of-two number of hash values.
class bit_table {
 public:
  explicit bit_table(std::size_t bits) : words_(new std::uint64_t[bits / 64]()), mask_(bits - 1) {}
  bool test(std::uint64_t h) const { return (words_[(h & mask_) / 64] >> (h % 64)) & 1; }
  void set(std::uint64_t h) { words_[(h & mask_) / 64] |= std::uint64_t{1} << (h % 64); }

 private:
  std::unique_ptr<std::uint64_t[]> words_;
  std::size_t mask_;
};

std::size_t power_of_two_from(std::size_t n) {
  std::size_t p = 64;
  while (p < n) p *= 2;
  return p;
}

// Marks the points that a later point equals. Few points share a bit of a sparse table with another one; only those
// go through an exact table, from the last to the first.
void mark_duplicates(const vector3d* pts, ulong count, bool* duplicate) {
  std::fill_n(duplicate, count, false);
  const std::size_t bits = power_of_two_from(16 * static_cast<std::size_t>(count));
  bit_table seen(bits), shared(bits);
  std::size_t collisions = 0;
  for (ulong i = 0; i < count; ++i) {
    const std::uint64_t h = hash_of(pts[i]);
    if (!seen.test(h)) {
      seen.set(h);
    } else {
      shared.set(h);
      ++collisions;
    }
  }
  if (collisions == 0) return;
  const std::size_t slots = power_of_two_from(4 * collisions);
  std::unique_ptr<ulong[]> table(new ulong[slots]());  // index + 1; 0 is free
  for (ulong i = count; i-- > 0;) {
    const std::uint64_t h = hash_of(pts[i]);
    if (!shared.test(h)) continue;
    std::size_t slot = (h >> 20) & (slots - 1);
    for (; table[slot] != 0 && !duplicate[i]; slot = (slot + 1) & (slots - 1))
      duplicate[i] = same_point(pts[i], pts[table[slot] - 1]);
    if (!duplicate[i]) table[slot] = i + 1;
  }
}

// The first of the n values that is the largest, if it is larger than least; n otherwise. fill(first, count, value)
// makes the values, a block at a time.
template <class Fill>
std::size_t first_largest(std::size_t n, double least, Fill fill) {
  std::size_t found = n;
  double value[block];
  for (std::size_t first = 0; first < n; first += block) {
    const std::size_t count = std::min(block, n - first);
    fill(first, count, value);
    bool larger = false;
    for (std::size_t i = 0; i < count; ++i) larger |= value[i] > least;
    if (!larger) continue;
    for (std::size_t i = 0; i < count; ++i) {
      if (!(value[i] > least)) continue;
      least = value[i];
      found = first + i;
    }
  }
  return found;
}

}  // namespace

cloud::cloud(const vector3d* pts, ulong count) {
  std::unique_ptr<bool[]> duplicate(new bool[count]);
  mark_duplicates(pts, count, duplicate.get());
  n_ = static_cast<std::size_t>(std::count(duplicate.get(), duplicate.get() + count, false));
  stride_ = n_ + 8;
  coordinates_ = allocate(3 * stride_);
  real* to = coordinates_.get();
  for (ulong i = 0; i < count; ++i) {
    if (duplicate[i]) continue;
    to[0] = pts[i].x;
    to[stride_] = pts[i].y;
    to[2 * stride_] = pts[i].z;
    ++to;
  }
  for (real* axis = coordinates_.get() + n_; axis < coordinates_.get() + 3 * stride_; axis += stride_)
    std::fill_n(axis, 8, static_cast<real>(0));
}

vector3d cloud::centroid() const {
  real sum_x = 0, sum_y = 0, sum_z = 0;
  for (std::size_t i = 0; i < n_; ++i) {
    sum_x += x()[i];
    sum_y += y()[i];
    sum_z += z()[i];
  }
  return vector3d(sum_x, sum_y, sum_z) / static_cast<real>(n_);
}

vector3d cloud::farthest_from(const vector3d& a) const {
  const double from[3] = {static_cast<double>(a.x), static_cast<double>(a.y), static_cast<double>(a.z)};
  const std::size_t i = first_largest(n_, 0, [&](std::size_t first, std::size_t count, double* value) {
    geometry().distances(arrays(), first, count, from, value);
  });
  return i < n_ ? point(i) : a;
}

vector3d cloud::farthest_from(const vector3d& a, const vector3d& b) const {
  const double from_a[3] = {static_cast<double>(a.x), static_cast<double>(a.y), static_cast<double>(a.z)};
  const double from_b[3] = {static_cast<double>(b.x), static_cast<double>(b.y), static_cast<double>(b.z)};
  const auto least = static_cast<double>((a - a).lenld() + (a - b).lenld());
  const std::size_t i = first_largest(n_, least, [&](std::size_t first, std::size_t count, double* value) {
    geometry().distance_sums(arrays(), first, count, from_a, from_b, value);
  });
  return i < n_ ? point(i) : a;
}

}  // namespace tessarn::detail
