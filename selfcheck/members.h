// The members that the self-check calls, in families.
#pragma once

#include "selfcheck/inputs.h"

namespace tessarn::detail {

// The hash of results. All NaNs are one, as their sign and payload are not promised.
class results {
 public:
  void put(real v) noexcept {
    const auto d = static_cast<double>(v);
    std::uint64_t bits = 0x7FF8000000000000u;
    if (d == d) std::memcpy(&bits, &d, sizeof bits);
    hash_.add(bits);
  }
  void put(bool v) noexcept { hash_.add(std::uint64_t{v}); }
  void put(int v) noexcept { hash_.add(static_cast<std::uint32_t>(v)); }
  void put(ulong v) noexcept { hash_.add(std::uint64_t{v}); }
  void put(const cplx& v) noexcept {
    put(v.re);
    put(v.im);
  }
  void put(const ::vector& v) noexcept {
    put(v.x);
    put(v.y);
  }
  void put(const vector3d& v) noexcept {
    put(v.x);
    put(v.y);
    put(v.z);
  }
  void put(const polarvector3d& v) noexcept {
    put(v.alpha);
    put(v.beta);
    put(v.len);
  }
  void put(const line3d& v) noexcept {
    put(v.start);
    put(v.end);
  }
  void put(const plane& v) noexcept {
    put(v.origin);
    put(v.normal);
    put(v.axis1);
    put(v.axis2);
  }
  void put(const vectormat& v) noexcept {
    put(v.count);
    for (ulong i = 0; i < v.count; ++i) put(v.points[i]);
  }
  template <class Entry>
  void put(const mat<Entry>& v) {
    put(v.getWidth());
    put(v.getHeight());
    for (ulong y = 0; y < v.getHeight(); ++y)
      for (ulong x = 0; x < v.getWidth(); ++x) put(v.get(x, y));
  }
  template <class Entry>
  void put(const sqmat<Entry>& v) {
    put(v.getSize());
    for (ulong y = 0; y < v.getSize(); ++y)
      for (ulong x = 0; x < v.getSize(); ++x) put(v.get(x, y));
  }
  void put(const binom& v) {
    put(v.getcofcnt());
    for (ulong i = 0; i < v.getcofcnt(); ++i) put(v.get(static_cast<slong>(i)));
  }
  void put(const hyperbinom& v) {
    put(v.getgrade());
    for (ulong j = 0; j < v.getgrade(); ++j)
      for (ulong i = 0; i < v.getgrade(); ++i) put(v.get(static_cast<slong>(i), static_cast<slong>(j)));
  }

  std::uint64_t value() const noexcept { return hash_.value(); }

 private:
  hash hash_;
};

struct selfcheck_member {
  const char* name;
  int rounds;    // how often it is called with new inputs
  bool hostile;  // whether it also gets hostile inputs
  void (*call)(inputs& in, results& out);
};

struct selfcheck_family {
  const selfcheck_member* members;
  std::size_t count;
};

template <std::size_t n>
constexpr selfcheck_family family_of(const selfcheck_member (&members)[n]) {
  return {members, n};
}

// One line of the table of stored hashes.
struct stored_hash_line {
  const char* member;
  const char* inputs;
  std::uint64_t hash;
};

// selfcheck() with another table, for tests.
selfcheck_report selfcheck_against(const stored_hash_line* table, std::size_t lines);

extern const selfcheck_family selfcheck_values, selfcheck_angles, selfcheck_matrices, selfcheck_complex_matrices,
    selfcheck_polynomials, selfcheck_surfaces, selfcheck_lists, selfcheck_geometry, selfcheck_analysis;

}  // namespace tessarn::detail

// A line of a family's table: the statements take the operands in their order, and out the results.
#define TESSARN_MEMBER_HOSTILE(name, rounds, ...)                     \
  {                                                                   \
    name, rounds, true, [](inputs& in, results& out) { __VA_ARGS__; } \
  }
#define TESSARN_MEMBER_ORDINARY(name, rounds, ...)                     \
  {                                                                    \
    name, rounds, false, [](inputs& in, results& out) { __VA_ARGS__; } \
  }
