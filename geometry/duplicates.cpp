// Finds the points that occur more than once: a table of bits tells which hash values may repeat, and only points with
// such a value are compared.
#include "geometry/duplicates.h"

#include <algorithm>

namespace tessarn::detail {
namespace {

bool same_point(const vector3d& p, const vector3d& q) { return p.x == q.x && p.y == q.y && p.z == q.z; }

unsigned logarithm_from(std::uint64_t n, unsigned least) {
  unsigned log = least;
  while (log < 32 && std::uint64_t{1} << log < n) ++log;
  return log;
}

constexpr std::uint64_t bits_each = 8;

// A word for each value of the leading bits of a hash value; the least table is not allocated.
class word_table {
 public:
  explicit word_table(std::uint64_t bits) : log_(std::min(logarithm_from(bits / 64, least_log), 26u)), room_(size()) {
    std::fill_n(room_.data(), size(), std::uint64_t{0});
  }
  hash_words words() { return {room_.data(), 32 - log_}; }

 private:
  // So few words are cleared in no time, and so sparse for a few hundred points that all of them differ in it.
  static constexpr unsigned least_log = 9;
  std::size_t size() const { return std::size_t{1} << log_; }

  const unsigned log_;
  workspace<std::uint64_t, std::size_t{1} << least_log> room_;
};

}  // namespace

duplicate_search::duplicate_search(ulong count)
    : count_(count), room_(2 * count_ + padding + 1), hashes_(room_.data()), listed_(hashes_ + count_ + padding) {}

// Lists the points whose hash value is that of one that repeats another, and perhaps some more.
std::size_t duplicate_search::list_suspects() {
  std::size_t found = 0;
  {
    word_table seen(bits_each * count_);
    found = geometry_kernels_in_use().list_repeated(seen.words(), hashes_, count_, listed_);
  }
  if (found == 0) return 0;
  // Sparser: each of the points that shares a bit by chance has to be compared.
  word_table shared(64 * static_cast<std::uint64_t>(found));
  const hash_words table = shared.words();
  for (std::size_t k = 0; k < found; ++k) {
    const std::uint32_t h = hashes_[listed_[k]];
    table.words[h >> table.shift] |= std::uint64_t{1} << h % 64;
  }
  return geometry_kernels_in_use().list_suspects(table, hashes_, count_, listed_);
}

// The suspects go through an exact table, from the last to the first. Their hash values are brought together: those of
// most differ, and the points stay untouched.
std::unique_ptr<bool[]> duplicate_search::marked(const vector3d* pts) {
  std::fill_n(hashes_ + count_, padding, std::uint32_t{0});  // the kernels read ahead that far
  const std::size_t suspects = list_suspects();
  if (suspects == 0) return nullptr;
  const unsigned log = logarithm_from(2 * static_cast<std::uint64_t>(suspects), 6);
  const std::size_t slots = std::size_t{1} << log;
  const std::unique_ptr<ulong[]> table(new ulong[slots]());  // number in the list + 1; 0 is free
  const std::unique_ptr<std::uint32_t[]> values(new std::uint32_t[suspects]);
  for (std::size_t k = 0; k < suspects; ++k) values[k] = hashes_[listed_[k]];
  std::unique_ptr<bool[]> duplicate;
  for (std::size_t k = suspects; k-- > 0;) {
    std::size_t slot = static_cast<std::size_t>(values[k] * 0x9E3779B97F4A7C15u >> (64 - log));
    const auto differs = [&](std::size_t other) {
      return values[other] != values[k] || !same_point(pts[listed_[k]], pts[listed_[other]]);
    };
    while (table[slot] != 0 && differs(table[slot] - 1)) slot = (slot + 1) & (slots - 1);
    if (table[slot] == 0) {
      table[slot] = static_cast<ulong>(k + 1);
    } else {
      if (!duplicate) duplicate.reset(new bool[count_]());
      duplicate[listed_[k]] = true;
    }
  }
  return duplicate;
}

}  // namespace tessarn::detail
