#include "geometry/cloud.h"

#include <algorithm>
#include <memory>

namespace tessarn::detail {
namespace {

bool same_point(const vector3d& p, const vector3d& q) { return p.x == q.x && p.y == q.y && p.z == q.z; }

// The upper half of a linear combination of the coordinates' bits.
std::uint32_t hash_of(const vector3d& p) noexcept {
  std::uint64_t bits[3];
  const real c[3] = {p.x + 0, p.y + 0, p.z + 0};  // -0.0 becomes 0.0
  std::memcpy(bits, c, sizeof bits);
  const std::uint64_t h =
      bits[0] * 0x9E3779B97F4A7C15u + bits[1] * 0xBF58476D1CE4E5B9u + bits[2] * 0x94D049BB133111EBu;
  return static_cast<std::uint32_t>(h >> 32);
}

unsigned logarithm_from(std::uint64_t n) {
  unsigned log = 6;
  while (log < 32 && std::uint64_t{1} << log < n) ++log;
  return log;
}

// A bit for each value of the leading bits of a hash value.
class bit_table {
 public:
  explicit bit_table(std::uint64_t least_bits)
      : shift_(32 - logarithm_from(least_bits)), words_(new std::uint64_t[(std::size_t{1} << (32 - shift_)) / 64]()) {}
  // Whether the bit is set; it is from now on.
  bool test_and_set(std::uint32_t h) {
    std::uint64_t& word = words_[(h >> shift_) / 64];
    const std::uint64_t bit = std::uint64_t{1} << ((h >> shift_) % 64);
    const bool was_set = (word & bit) != 0;
    word |= bit;
    return was_set;
  }
  bool test(std::uint32_t h) const { return (words_[(h >> shift_) / 64] >> ((h >> shift_) % 64)) & 1; }

 private:
  unsigned shift_;
  std::unique_ptr<std::uint64_t[]> words_;
};

// The points, in their order, whose hash value another one shares, and perhaps some more: listed has room for one point
// more than there are. Few points share a bit of a sparse table. Without branches: they could not be foreseen.
std::size_t list_suspects(const vector3d* pts, ulong count, ulong* listed) {
  const std::unique_ptr<std::uint32_t[]> hashes(new std::uint32_t[count]);
  bit_table seen(16 * static_cast<std::uint64_t>(count));
  std::size_t shared_count = 0;
  for (ulong i = 0; i < count; ++i) {
    const std::uint32_t h = hash_of(pts[i]);
    hashes[i] = h;
    listed[shared_count] = h;
    shared_count += seen.test_and_set(h);
  }
  if (shared_count == 0) return 0;
  bit_table shared(2 * static_cast<std::uint64_t>(count));
  for (std::size_t k = 0; k < shared_count; ++k) shared.test_and_set(static_cast<std::uint32_t>(listed[k]));
  std::size_t suspects = 0;
  for (ulong i = 0; i < count; ++i) {
    listed[suspects] = i;
    suspects += shared.test(hashes[i]);
  }
  return suspects;
}

// Marks the points that a later point equals; false if there are none. The suspects go through an exact table, from the
// last to the first.
bool mark_duplicates(const vector3d* pts, ulong count, std::unique_ptr<bool[]>& duplicate) {
  const std::unique_ptr<ulong[]> listed(new ulong[static_cast<std::size_t>(count) + 1]);
  const std::size_t suspects = list_suspects(pts, count, listed.get());
  const unsigned log = logarithm_from(2 * static_cast<std::uint64_t>(suspects));
  const std::size_t slots = std::size_t{1} << log;
  const std::unique_ptr<ulong[]> table(new ulong[slots]());  // index + 1; 0 is free
  for (std::size_t k = suspects; k-- > 0;) {
    const ulong i = listed[k];
    const std::uint64_t h = hash_of(pts[i]) * std::uint64_t{0x9E3779B97F4A7C15u};
    std::size_t slot = static_cast<std::size_t>(h >> (64 - log));
    for (; table[slot] != 0 && !same_point(pts[i], pts[table[slot] - 1]); slot = (slot + 1) & (slots - 1)) {
    }
    if (table[slot] == 0) {
      table[slot] = i + 1;
    } else {
      if (!duplicate) duplicate.reset(new bool[count]());
      duplicate[i] = true;
    }
  }
  return duplicate != nullptr;
}

}  // namespace

cloud::cloud(const vector3d* pts, ulong count) {
  static_assert(sizeof(vector3d) == 4 * sizeof(double), "four doubles a point, as the kernel takes them");
  std::unique_ptr<bool[]> duplicate;
  const bool duplicates = mark_duplicates(pts, count, duplicate);
  n_ = duplicates ? static_cast<std::size_t>(std::count(duplicate.get(), duplicate.get() + count, false)) : count;
  stride_ = n_ + padding;
  coordinates_ = allocate(3 * stride_);
  real* to = coordinates_.get();
  if (!duplicates) geometry().unpack(reinterpret_cast<const double*>(pts), n_, as_doubles(to), stride_);
  for (ulong i = 0; i < count && duplicates; ++i) {
    if (duplicate[i]) continue;
    to[0] = pts[i].x;
    to[stride_] = pts[i].y;
    to[2 * stride_] = pts[i].z;
    ++to;
  }
  for (real* axis = coordinates_.get() + n_; axis < coordinates_.get() + 3 * stride_; axis += stride_)
    std::fill_n(axis, padding, static_cast<real>(0));
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
  const std::size_t i = geometry().farthest(arrays(), from, 0);
  return i < n_ ? point(i) : a;
}

vector3d cloud::farthest_from(const vector3d& a, const vector3d& b) const {
  const double from_a[3] = {static_cast<double>(a.x), static_cast<double>(a.y), static_cast<double>(a.z)};
  const double from_b[3] = {static_cast<double>(b.x), static_cast<double>(b.y), static_cast<double>(b.z)};
  const auto least = static_cast<double>((a - a).lenld() + (a - b).lenld());
  const std::size_t i = geometry().farthest_from_two(arrays(), from_a, from_b, least);
  return i < n_ ? point(i) : a;
}

}  // namespace tessarn::detail
