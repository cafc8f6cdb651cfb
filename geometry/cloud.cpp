#include "geometry/cloud.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace tessarn::detail {
namespace {

bool same_point(const vector3d& p, const vector3d& q) { return p.x == q.x && p.y == q.y && p.z == q.z; }

unsigned logarithm_from(std::uint64_t n) {
  unsigned log = 6;
  while (log < 32 && std::uint64_t{1} << log < n) ++log;
  return log;
}

// A table of so few bits is cleared in no time, and so sparse for a few hundred points that all of them differ in it.
constexpr std::uint64_t least_bits = 1 << 15;
constexpr std::uint64_t bits_each = 16;

// A bit for each value of the leading bits of a hash value; up to least_bits nothing is allocated.
class bit_table {
 public:
  explicit bit_table(std::uint64_t size) {
    const unsigned log = std::min(logarithm_from(size), 32u);
    const std::size_t words = (std::size_t{1} << log) / 64;
    shift_ = 32 - log;
    if (words > std::size(few_)) {
      many_.reset(new std::uint64_t[words]());
      words_ = many_.get();
    } else {
      std::fill_n(few_, words, std::uint64_t{0});
    }
  }
  bit_table(const bit_table&) = delete;
  unsigned shift() const { return shift_; }
  std::uint64_t* words() { return words_; }
  void set(std::uint32_t h) { words_[(h >> shift_) / 64] |= std::uint64_t{1} << ((h >> shift_) % 64); }
  bool test(std::uint32_t h) const { return (words_[(h >> shift_) / 64] >> ((h >> shift_) % 64)) & 1; }

 private:
  unsigned shift_;
  std::uint64_t* words_ = few_;
  std::unique_ptr<std::uint64_t[]> many_;
  std::uint64_t few_[least_bits / 64];
};

// The points, in their order, whose hash value is that of one of the first in the list, and perhaps some more: listed
// has room for one point more than there are. Without branches: they could not be foreseen.
std::size_t list_suspects(const std::uint32_t* hashes, ulong count, std::uint32_t* listed, std::size_t repeated) {
  // Sparser: each of the points that shares a bit by chance has to be compared.
  bit_table shared(64 * static_cast<std::uint64_t>(repeated));
  for (std::size_t k = 0; k < repeated; ++k) shared.set(hashes[listed[k]]);
  std::size_t suspects = 0;
  for (ulong i = 0; i < count; ++i) {
    listed[suspects] = static_cast<std::uint32_t>(i);
    suspects += shared.test(hashes[i]);
  }
  return suspects;
}

// Marks the points that a later point equals; null if there are none. The suspects go through an exact table, from
// the last to the first. Their hash values are brought together: those of most differ, and the points stay untouched.
std::unique_ptr<bool[]> marked_duplicates(const vector3d* pts, const std::uint32_t* hashes, ulong count,
                                          std::uint32_t* listed, std::size_t repeated) {
  const std::size_t suspects = list_suspects(hashes, count, listed, repeated);
  const unsigned log = logarithm_from(2 * static_cast<std::uint64_t>(suspects));
  const std::size_t slots = std::size_t{1} << log;
  const std::unique_ptr<ulong[]> table(new ulong[slots]());  // number in the list + 1; 0 is free
  const std::unique_ptr<std::uint32_t[]> values(new std::uint32_t[suspects]);
  for (std::size_t k = 0; k < suspects; ++k) values[k] = hashes[listed[k]];
  std::unique_ptr<bool[]> duplicate;
  for (std::size_t k = suspects; k-- > 0;) {
    std::size_t slot = static_cast<std::size_t>(values[k] * 0x9E3779B97F4A7C15u >> (64 - log));
    const auto differs = [&](std::size_t other) {
      return values[other] != values[k] || !same_point(pts[listed[k]], pts[listed[other]]);
    };
    while (table[slot] != 0 && differs(table[slot] - 1)) slot = (slot + 1) & (slots - 1);
    if (table[slot] == 0) {
      table[slot] = static_cast<ulong>(k + 1);
    } else {
      if (!duplicate) duplicate.reset(new bool[count]());
      duplicate[listed[k]] = true;
    }
  }
  return duplicate;
}

}  // namespace

cloud::cloud(const vector3d* pts, ulong count)
    : n_(count),
      stride_(n_ + padding),
      many_(3 * stride_ > std::size(few_) ? allocate(3 * stride_) : nullptr),
      coordinates_(many_ ? many_.get() : few_) {
  static_assert(sizeof(vector3d) == 4 * sizeof(double), "four doubles a point, as the kernel takes them");
  // The hash values, padded, and a list of points.
  const std::unique_ptr<std::uint32_t[]> room(new std::uint32_t[stride_ + n_ + 1]);
  std::uint32_t* const hashes = room.get();
  std::uint32_t* const listed = hashes + stride_;
  geometry().unpack(reinterpret_cast<const double*>(pts), n_, as_doubles(coordinates_), stride_, hashes, sums_);
  std::fill_n(hashes + n_, padding, std::uint32_t{0});
  bit_table seen(std::max<std::uint64_t>(least_bits, bits_each * static_cast<std::uint64_t>(count)));
  repeated_hashes repeated = {hashes, seen.words(), seen.shift(), listed, 0};
  make_moments(&repeated);
  if (repeated.found == 0) return;
  const std::unique_ptr<bool[]> duplicate = marked_duplicates(pts, hashes, count, listed, repeated.found);
  if (!duplicate) return;
  remove(duplicate.get());
  make_moments(nullptr);
}

void cloud::make_moments(repeated_hashes* hashes) {
  const vector3d c = centroid();
  const double reference[3] = {static_cast<double>(c.x), static_cast<double>(c.y), static_cast<double>(c.z)};
  farthest_ = geometry().moments(arrays(), reference, &moments_, hashes);
}

void cloud::remove(const bool* marked) {
  std::size_t kept = 0;
  std::fill_n(sums_, 3, 0.0);
  for (std::size_t i = 0; i < n_; ++i) {
    if (marked[i]) continue;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      real* c = coordinates_ + axis * stride_;
      c[kept] = c[i];
      sums_[axis] += static_cast<double>(c[i]);
    }
    ++kept;
  }
  n_ = kept;
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
