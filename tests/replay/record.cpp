#include "replay/record.h"

#include "replay/draw.h"

namespace replay {
namespace {

// Results longer than this are kept as a hash.
constexpr std::size_t longest = 96;

std::uint64_t hash_of(const std::uint64_t* first, const std::uint64_t* last) {
  std::uint64_t hash = 14695981039346656037u;
  for (; first != last; ++first)
    for (int shift = 0; shift < 64; shift += 8) hash = (hash ^ ((*first >> shift) & 0xFF)) * 1099511628211u;
  return hash;
}

}  // namespace

std::uint64_t input::word(std::uint64_t drawn) {
  if (drawing()) {
    noted_->push_back(drawn);
    return drawn;
  }
  return next_ == last_ ? 0 : *next_++;
}

real input::any() {
  double v = 0;
  if (drawing()) {
    switch (random_->below(8)) {
      case 0:
      case 1: v = static_cast<double>(random_->below(7)) - 3.0; break;
      case 2: v = random_->hostile(); break;
      case 3: v = random_->hostile_finite(); break;
      default: v = random_->uniform(-10.0, 10.0);
    }
  }
  return static_cast<real>(from_bits(word(bits_of(v))));
}

real input::finite() {
  double v = 0;
  if (drawing())
    v = random_->below(3) == 0 ? static_cast<double>(random_->below(7)) - 3.0 : random_->uniform(-10.0, 10.0);
  return static_cast<real>(from_bits(word(bits_of(v))));
}

real input::within(double lo, double hi) {
  return static_cast<real>(from_bits(word(bits_of(drawing() ? random_->uniform(lo, hi) : 0.0))));
}

int input::integer(int lo, int hi) {
  const auto span = static_cast<std::uint32_t>(hi - lo) + 1;
  const std::uint64_t drawn =
      drawing() ? static_cast<std::uint64_t>(lo + static_cast<std::int64_t>(random_->below(span))) : 0;
  return static_cast<int>(static_cast<std::int64_t>(word(drawn)));
}

std::uint64_t input::seed() { return word(drawing() ? random_->next() : 0); }

void output::put_all(const real* v, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) put(v[i]);
}

void output::put(const cplx& v) {
  put(v.re);
  put(v.im);
}

void output::put(const vector& v) {
  put(v.x);
  put(v.y);
}

void output::put(const vector3d& v) {
  put(v.x);
  put(v.y);
  put(v.z);
}

void output::put(const polarvector3d& v) {
  put(v.alpha);
  put(v.beta);
  put(v.len);
}

void output::put(const line3d& v) {
  put(v.start);
  put(v.end);
}

void output::put(const plane& v) {
  put(v.origin);
  put(v.normal);
  put(v.axis1);
  put(v.axis2);
}

void output::put(const vectormat& v) {
  put(v.count);
  put(v.capacity);
  for (tessarn::ulong i = 0; i < v.count; ++i) put(v.points[i]);
}

void output::put(const real_mat& v) {
  put(v.getWidth());
  put(v.getHeight());
  put_all(v.getData(), static_cast<std::size_t>(v.getWidth()) * v.getHeight());
}

void output::put(const complex_mat& v) {
  put(v.getWidth());
  put(v.getHeight());
  const std::size_t n = static_cast<std::size_t>(v.getWidth()) * v.getHeight();
  for (std::size_t i = 0; i < n; ++i) put(v.getData()[i]);
}

void output::put(const real_sqmat& v) {
  put(v.getSize());
  put_all(v.getData(), static_cast<std::size_t>(v.getSize()) * v.getSize());
}

void output::put(const complex_sqmat& v) {
  const tessarn::ulong n = v.getSize();
  put(n);
  for (tessarn::ulong y = 0; y < n; ++y)
    for (tessarn::ulong x = 0; x < n; ++x) put(v.get(x, y));
}

void output::put(const binom& v) {
  const tessarn::ulong n = v.getcofcnt();
  put(n);
  for (tessarn::ulong i = 0; i < n; ++i) put(v.get(static_cast<tessarn::slong>(i)));
}

void output::put(const hyperbinom& v) {
  const auto g = static_cast<tessarn::slong>(v.getgrade());
  put(v.getgrade());
  for (tessarn::slong j = 0; j < g; ++j)
    for (tessarn::slong i = 0; i < g; ++i) put(v.get(i, j));
}

void output::shorten() {
  if (results.size() <= longest) return;
  const std::uint64_t hash = hash_of(results.data(), results.data() + results.size());
  results.assign({static_cast<std::uint64_t>(results.size()), hash});
}

}  // namespace replay
