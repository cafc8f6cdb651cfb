#include "support.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "simd/isa.h"

namespace bench {

void hasher::add(const values& v) {
  for (double d : v) {
    if (d != d) d = std::numeric_limits<double>::quiet_NaN();  // every NaN is the same result
    std::uint64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    state_ = (state_ ^ bits) * 0x100000001B3u;
    state_ ^= state_ >> 29;
  }
}

std::string hasher::text() const {
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(z ^ (z >> 31)));
  return text;
}

products_and_sums powers_below(int count) {
  if (count < 4) return {count > 2 ? 1.0 : 0.0, 0};
  products_and_sums all = {5, 4};  // the square, and what is kept of x and of it
  for (int e = 3; e < count; ++e) {
    const int products = e % 2 == 0 ? 3 : 4;
    const int kept = 2 * e <= count ? 2 : 0;  // for higher powers
    all = all + products_and_sums{double(products), 3.0 + kept};
  }
  return all;
}

namespace detail {

namespace {
bool best_set_only = false;
const void* current = nullptr;
std::function<void()> release_current;
}  // namespace

void set_current(const void* row, std::function<void()> release) {
  if (release_current) release_current();
  current = row;
  release_current = std::move(release);
}

bool is_current(const void* row) { return current == row; }

int best_set() { return static_cast<int>(tessarn::detail::best_isa()); }
int lowest_set() { return best_set_only ? best_set() : 0; }
const char* set_name(int set) { return tessarn::detail::set_names[set]; }
void use_set(int set) { tessarn::detail::force_isa(static_cast<tessarn::detail::isa>(set)); }

std::string benchmark_name(const labels& row, const std::string& family, const std::string& call) {
  return row.operation + "|" + std::to_string(row.size) + "|" + family + "|" + call;
}

void set_counters(benchmark::State& state, const labels& row, const memory_use& memory, const std::string& hash,
                  int inputs) {
  state.counters["operations"] = row.needs.operations;
  state.counters["bytes"] = row.needs.bytes;
  state.counters["traffic"] = static_cast<int>(row.needs.kind);
  const double own = row.needs.bytes - row.needs.shared;
  state.counters["memory"] = row.needs.shared + own * inputs / (row.needs.kind == traffic::move ? 2 : 1);
  state.counters["allocations"] = memory.allocations;
  state.counters["peak bytes"] = memory.peak;
  state.SetLabel(hash + "|" + row.note);
}

void configure(benchmark::internal::Benchmark* b, const std::string& family) {
  b->Unit(benchmark::kNanosecond);
  if (family == "plain") b->Repetitions(1);  // only its order of magnitude is wanted, and it is slow
}

std::string disagreement(const values& ours, const values& other, const labels& row, bool bits) {
  char text[160];
  if (ours.size() != other.size()) {
    std::snprintf(text, sizeof text, "%zu numbers where we give %zu", other.size(), ours.size());
    return text;
  }
  double scale = 0;
  for (double v : other) scale = std::max(scale, std::fabs(v));
  for (std::size_t k = 0; k < ours.size(); ++k) {
    const bool same = bits ? std::memcmp(&ours[k], &other[k], sizeof(double)) == 0
                           : std::fabs(ours[k] - other[k]) <= row.agree.tolerance * scale;
    if (!same) {
      std::snprintf(text, sizeof text, "number %zu is %.17g where we give %.17g", k, other[k], ours[k]);
      return text;
    }
  }
  return {};
}

}  // namespace detail

void time_best_set_only() { detail::best_set_only = true; }

}  // namespace bench
