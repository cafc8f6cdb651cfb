// What the fuzz targets read from the bytes they are given. When the bytes are used up, everything is 0.
// Two values are read in two statements or within braces, never as arguments of a call, whose order is the compiler's
// choice: the same bytes mean the same everywhere.
#pragma once

#include <tessarn/tessarn.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace fuzz {

// Ends the program when a property does not hold, so that the fuzzer keeps the input.
inline void require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

class input {
 public:
  input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  std::uint8_t byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  // A number from 0 to last.
  tessarn::ulong number(tessarn::ulong last) {
    std::uint32_t v = byte();
    if (last > 255) v = v << 8 | byte();
    return static_cast<tessarn::ulong>(v % (static_cast<std::uint64_t>(last) + 1));
  }
  tessarn::ulong any_number() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = v << 8 | byte();
    return v;
  }
  // A small integer, a number from a list of troublemakers, or any bit pattern.
  double real() {
    const std::uint8_t kind = byte();
    if (kind < 160) return static_cast<double>(kind % 32) - 16;
    if (kind < 240) return troublemaker(kind - 160u);
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits = bits << 8 | byte();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
  }
  // Between -16 and 16 in steps of 1/1024.
  double tame() {
    const int high = byte();
    return (static_cast<double>(high << 8 | byte()) - 32768) / 2048;
  }

 private:
  static double troublemaker(unsigned i) {
    using limits = std::numeric_limits<double>;
    static const double list[] = {0.0,
                                  -0.0,
                                  0.5,
                                  -1.0,
                                  1e-3,
                                  0.1,
                                  1e3,
                                  1e8,
                                  1e16,
                                  -1e16,
                                  1e100,
                                  1e-100,
                                  1e154,
                                  1e-160,
                                  1e300,
                                  -1e300,
                                  limits::min(),
                                  limits::denorm_min(),
                                  limits::max(),
                                  limits::lowest(),
                                  limits::infinity(),
                                  -limits::infinity(),
                                  limits::quiet_NaN(),
                                  limits::signaling_NaN(),
                                  limits::epsilon(),
                                  2147483648.0,
                                  4294967296.0};
    return list[i % (sizeof list / sizeof *list)];
  }

  const std::uint8_t* data_;
  std::size_t left_;
};

inline std::vector<vector> points(input& in, tessarn::ulong most) {
  std::vector<vector> list(in.number(most));
  for (vector& p : list) {
    p.x = in.real();
    p.y = in.real();
  }
  return list;
}

inline std::vector<vector3d> space_points(input& in, tessarn::ulong most) {
  std::vector<vector3d> list(in.number(most));
  for (vector3d& p : list) p = vector3d{in.real(), in.real(), in.real()};
  return list;
}

inline binom polynomial(input& in, tessarn::ulong most) {
  binom p;
  p.create(static_cast<tessarn::slong>(in.number(most)));
  for (tessarn::ulong i = 0; i < p.getcofcnt(); ++i) p.set(static_cast<tessarn::slong>(i), in.real());
  return p;
}

}  // namespace fuzz
