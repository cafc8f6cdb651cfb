// Operations of the library as data: what went in and what came out, as 64-bit words. One program writes the file;
// the same operations, compiled with other compilers for other systems, read the inputs back and compare what
// comes out. Numbers are made when a file is written and stored, so that no generator has to agree.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include <tessarn/tessarn.h>

#include "support/random.h"

namespace replay {

using tessarn::real;
using words = std::vector<std::uint64_t>;

using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

inline std::uint64_t bits_of(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

inline double from_bits(std::uint64_t b) {
  double v;
  std::memcpy(&v, &b, sizeof v);
  return v;
}

// One bit pattern for every NaN; the sign and the payload of a NaN carry no meaning.
inline std::uint64_t result_bits(double v) { return v != v ? 0x7FF8000000000000u : bits_of(v); }

// The operands of one operation: drawn and noted, or read back.
class input {
 public:
  input(test::random_source& random, words& noted) : random_(&random), noted_(&noted) {}
  input(const std::uint64_t* first, const std::uint64_t* last) : next_(first), last_(last) {}

  // Mostly ordinary numbers, often small integers, some hostile.
  real any();
  // Without infinities and NaN.
  real finite();
  // In [lo, hi).
  real within(double lo, double hi);
  // An integer in [lo, hi].
  int integer(int lo, int hi);
  // The seed of an operand too large to be written out.
  std::uint64_t seed();

 private:
  std::uint64_t word(std::uint64_t drawn);
  bool drawing() const { return random_ != nullptr; }

  test::random_source* random_ = nullptr;
  words* noted_ = nullptr;
  const std::uint64_t* next_ = nullptr;
  const std::uint64_t* last_ = nullptr;
};

// What came out.
class output {
 public:
  void put(real v) { results.push_back(result_bits(static_cast<double>(v))); }
  void put_number(std::uint64_t v) { results.push_back(v); }
  void put(bool v) { put_number(v); }
  void put(int v) { put_number(static_cast<std::uint32_t>(v)); }
  void put(tessarn::ulong v) { put_number(v); }
  void put(const cplx& v);
  void put(const vector& v);
  void put(const vector3d& v);
  void put(const polarvector3d& v);
  void put(const line3d& v);
  void put(const plane& v);
  void put(const vectormat& v);
  void put(const real_mat& v);
  void put(const complex_mat& v);
  void put(const real_sqmat& v);
  void put(const complex_sqmat& v);
  void put(const binom& v);
  void put(const hyperbinom& v);
  void put_all(const real* v, std::size_t n);

  // Replaces a long result by its length and hash.
  void shorten();

  words results;
};

struct operation {
  const char* name;
  unsigned cases;  // when a file is written
  void (*run)(input& in, output& out);
};

struct family {
  const operation* operations;
  std::size_t count;
};

extern const family angle_functions, complex_numbers, plane_vectors, space_vectors, polar_vectors, point_lists,
    real_matrices, complex_matrices, real_squares, matches, complex_squares, polynomials, surfaces, geometry, analysis;

}  // namespace replay
