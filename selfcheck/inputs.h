// The inputs of the self-check. They are made from integers, and no rounding takes part, so that they are the same in
// every rounding mode and on every processor.
#pragma once

#include <cstdint>
#include <cstring>

#include "tessarn/tessarn.h"

namespace tessarn::detail {

// FNV-1a, byte by byte from the lowest (G. Fowler, L. C. Noll, K.-P. Vo).
class hash {
 public:
  void add(std::uint64_t word) noexcept {
    for (int shift = 0; shift < 64; shift += 8) value_ = (value_ ^ ((word >> shift) & 0xFF)) * 1099511628211u;
  }
  void add(const char* text) noexcept {
    for (; *text; ++text) add(static_cast<unsigned char>(*text));
  }
  std::uint64_t value() const noexcept { return value_; }

 private:
  std::uint64_t value_ = 14695981039346656037u;
};

// Each member has inputs of its own, which no other member's number of inputs changes.
class inputs {
 public:
  inputs(const char* member, bool hostile) noexcept : hostile_(hostile) {
    hash h;
    h.add(member);
    h.add(std::uint64_t{hostile});
    state_ = h.value();
  }

  // An integer below n.
  ulong below(ulong n) noexcept { return static_cast<ulong>((next() >> 32) % n); }

  // Between -16 and 16 in steps of 2^-36, one in four an integer; of hostile numbers half are troublemakers.
  real number() noexcept {
    const ulong kind = below(4);
    if (hostile_ && kind < 2) return troublemaker();
    return kind == 3 ? integer() : ordinary();
  }
  // Never a troublemaker.
  real ordinary() noexcept {
    const auto steps = static_cast<std::int64_t>(next() >> 23) - (std::int64_t{1} << 40);
    return static_cast<real>(static_cast<double>(steps) * 0x1p-36);
  }
  // From -3 to 3.
  real integer() noexcept { return static_cast<real>(static_cast<int>(below(7)) - 3); }
  // A number from 0 up to, but not including, 1.
  real fraction() noexcept { return static_cast<real>(static_cast<double>(next() >> 24) * 0x1p-40); }

  cplx complex() noexcept {
    const real re = number();
    const real im = number();
    return cplx(re, im);
  }
  ::vector plane_vector() noexcept {
    const real x = number();
    const real y = number();
    return ::vector(x, y);
  }
  vector3d space_vector() noexcept {
    const real x = number();
    const real y = number();
    const real z = number();
    return vector3d(x, y, z);
  }
  polarvector3d polar_vector() noexcept {
    const real alpha = number();
    const real beta = number();
    const real length = number();
    return polarvector3d(alpha, beta, length);
  }

  template <std::size_t n>
  void fill(::vector (&points)[n]) noexcept {
    for (::vector& p : points) p = plane_vector();
  }
  template <std::size_t n>
  void fill(vector3d (&points)[n]) noexcept {
    for (vector3d& p : points) p = space_vector();
  }
  template <std::size_t n>
  void fill(real (&fractions)[n]) noexcept {
    for (real& f : fractions) f = fraction();
  }

 private:
  // splitmix64 (G. L. Steele, D. Lea, C. H. Flood, 2014).
  std::uint64_t next() noexcept {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  // By their bits, which no mode of the processor changes: zeros, infinities, a NaN, the smallest and the largest
  // subnormal number, the smallest normal one, the largest, 1, the one above it, 2^-540, 2^600, 2^53 + 2.
  real troublemaker() noexcept {
    static constexpr std::uint64_t bits[] = {0,
                                             0x8000000000000000u,
                                             0x7FF0000000000000u,
                                             0xFFF0000000000000u,
                                             0x7FF8000000000000u,
                                             1,
                                             0x800FFFFFFFFFFFFFu,
                                             0x0010000000000000u,
                                             0x7FEFFFFFFFFFFFFFu,
                                             0x3FF0000000000000u,
                                             0xBFF0000000000001u,
                                             0x1E30000000000000u,
                                             0xE570000000000000u,
                                             0x4340000000000001u};
    double v;
    std::memcpy(&v, &bits[below(sizeof bits / sizeof *bits)], sizeof v);
    return static_cast<real>(v);
  }

  std::uint64_t state_;
  bool hostile_;
};

}  // namespace tessarn::detail
