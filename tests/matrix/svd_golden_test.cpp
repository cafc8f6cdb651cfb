// The singular value decomposition where there is no plain form to compare with: the order that the library chose for
// its sums, and what is left after the last sweep.
#include <cstdint>

#include "core/storage.h"
#include "matrix/kernels/kernels.h"
#include "plain/decompose.h"
#include "svd_support.h"

namespace {

using namespace test;

// A. Fowler, G. Noll, K.-P. Vo, 1991: a hash over the bytes, the first one first.
class bit_hash {
 public:
  void add(const real_matrix& m) {
    for (std::size_t i = 0; i < std::size_t{m.getWidth()} * m.getHeight(); ++i) {
      std::uint64_t bits = bits_of(m.getData()[i]);
      for (int k = 0; k < 8; ++k, bits >>= 8) value_ = (value_ ^ (bits & 255)) * 0x100000001B3u;
    }
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

struct golden {
  u32 width, height;
  std::uint64_t largest;  // the bits of the largest singular value
  std::uint64_t smallest;
  std::uint64_t all;  // a hash of U, S and V
};

// The order inside the sums is free, but it is the same everywhere and from version to version.
// Written by this test, after the decompositions had been found right; a new order needs new
// numbers.
constexpr golden wanted[] = {
    {3, 2, 0x400fc3e6d232c95e, 0x400a60ec9120fa49, 0x10d45fefed823cc3},
    {3, 7, 0x401a56c45844e23a, 0x40061f08db250912, 0x67829c76e335647},
    {4, 4, 0x401b631236f878fa, 0x3fe36381f2c72eed, 0x8cdc70c8bc7bffed},
    {5, 9, 0x401cd3e02f9a3418, 0x40096783452ff5e7, 0x87aeab2f47676569},
    {7, 7, 0x401f1327da97eaf4, 0x3fbc8583b1d4d3be, 0x10eba12e52dab6fe},
    {9, 5, 0x402159aba8916109, 0x3ff959e5786fc9eb, 0xa2daa869dc65a689},
    {9, 17, 0x4024bd20cdab88a4, 0x400ac6e4e22bbc86, 0x168dc820eb3768ef},
    {12, 90, 0x4035294cff52633f, 0x4027f2e34cb668fc, 0x492a4757a040c448},
    {3, 1000, 0x404c230e90a33f98, 0x404afa269fa5e169, 0xf679bab08c4aaa6f},
    {33, 40, 0x4033e51dd6a64e2b, 0x3ffd7b817d5b054f, 0xfc56f7a9b46e5d54},
    {65, 64, 0x4039ff2955adb830, 0x3fc349884c23eea6, 0xb992ddf0bf83332b},
    {20, 560, 0x4047ac1dee874a13, 0x4041654e2da954c5, 0x1b467aae7ec71fac},
    {520, 6, 0x4044ea68b3916b92, 0x40423f66227a7db2, 0x77149445b41b0e3c},
};

// Golden bits for entries multiplied by 2^-390 and by 2^390: so far from 1 the decomposition scales each column and row
// before it sums their squares.
constexpr golden wanted_small[] = {
    {5, 9, 0x27c262dc01efbc50, 0x2798b45cba05ba69, 0x3988898d5fc644c},
    {12, 90, 0x27d54b6e70288825, 0x27c710d72400d700, 0xb9cebe930e3a2d04},
};
constexpr golden wanted_large[] = {
    {5, 9, 0x588262dc01efbc50, 0x5858b45cba05ba69, 0xe05e62447f6a5f51},
    {12, 90, 0x58954b6e70288825, 0x588710d72400d700, 0x95f40e6d26843938},
};

template <std::size_t N>
void expect_golden(const golden (&all)[N], int exponent) {
  random_source random(191);
  for (const golden& g : all) {
    plain::matrix a = random_matrix(g.width, g.height, random, entries::ordinary);
    for (double& v : a.data) v = std::ldexp(v, exponent);
    const parts p = decomposed(a);
    ASSERT_LE(columns_off(p.v), 1e-12);
    bit_hash hash;
    hash.add(p.u);
    hash.add(p.s);
    hash.add(p.v);
    const u32 last = std::min(g.width, g.height) - 1;
    EXPECT_TRUE(bits_of(p.s.get(0, 0)) == g.largest && bits_of(p.s.get(last, last)) == g.smallest &&
                hash.value() == g.all)
        << std::hex << "{" << std::dec << g.width << ", " << g.height << std::hex << ", 0x" << bits_of(p.s.get(0, 0))
        << ", 0x" << bits_of(p.s.get(last, last)) << ", 0x" << hash.value() << "},";
  }
}

TEST_EVERY_BUILD(DecomposeGolden, BitsOfTheChosenOrder) {
  expect_golden(wanted, 0);
  expect_golden(wanted_small, -390);
  expect_golden(wanted_large, 390);
}

// Where squares lose their digits the sweeps do not converge and end after the thirtieth. The
// kernel is called as it is, since decompose() gives it no such entries.
TEST_EVERY_BUILD(DecomposeGolden, ThirtySweeps) {
  random_source random(192);
  int fewer = 0, more = 0;
  for (int round = 0; round < 3000; ++round) {
    plain::matrix a = random_matrix(2, 2 + random.below(4), random, entries::ordinary);
    for (double& v : a.data) v = std::ldexp(v, -539 + round % 3);
    const plain::decomposition want = plain::decompose(a), early = plain::decompose(a, 29),
                               late = plain::decompose(a, 31);
    fewer += !std::equal(want.u.data.begin(), want.u.data.end(), early.u.data.begin(), same_bits);
    more += !std::equal(want.u.data.begin(), want.u.data.end(), late.u.data.begin(), same_bits);
    plain::decomposition got{plain::matrix(2, a.height), plain::matrix(2, 2), plain::matrix(2, 2)};
    const auto& kernels = tessarn::detail::matrix_kernels_in_use();
    std::vector<double> workspace(kernels.decompose_workspace(a.height, 2));
    kernels.decompose(a.data.data(), a.height, 2, got.u.data.data(), got.s.data.data(), got.v.data.data(),
                      workspace.data());
    ASSERT_TRUE(same_entries(got.u.data.data(), want.u.data, 2));
    ASSERT_TRUE(same_entries(got.s.data.data(), want.s.data, 2));
    ASSERT_TRUE(same_entries(got.v.data.data(), want.v.data, 2));
  }
  EXPECT_GT(fewer, 20);
  EXPECT_GT(more, 20);
}

}  // namespace
