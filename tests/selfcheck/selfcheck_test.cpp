// The self-check: its list, what it says of a wrong hash, and of a thread that rounds otherwise or drops subnormal
// numbers.
#include <gtest/gtest.h>

#include <cfenv>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "selfcheck/members.h"
#include "selfcheck/stored.h"
#include "tessarn/selfcheck.h"

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace {

using tessarn::rounding;
using tessarn::selfcheck;
using tessarn::selfcheck_entry;
using tessarn::selfcheck_report;
using tessarn::detail::stored_hash_line;
using tessarn::detail::stored_hashes;

std::vector<stored_hash_line> table() { return {std::begin(stored_hashes), std::end(stored_hashes)}; }

bool says(const selfcheck_report& r, const char* words) { return std::strstr(r.line, words) != nullptr; }

TEST(Selfcheck, EveryHashIsTheStoredOne) {
  const selfcheck_report r = selfcheck();
  for (const selfcheck_entry& e : r) EXPECT_EQ(e.found, e.stored) << e.member << ", " << e.inputs;
  EXPECT_EQ(r.count, table().size());
  EXPECT_TRUE(r.passed()) << r.line;
  EXPECT_EQ(r.rounds, rounding::nearest);
  EXPECT_TRUE(r.subnormal_results_kept && r.subnormal_operands_kept);
  EXPECT_TRUE(says(r, "; rounds to nearest, keeps subnormal numbers")) << r.line;
}

TEST(Selfcheck, CoversEveryClass) {
  const selfcheck_report r = selfcheck();
  for (const char* name : {"cplx", "vector", "vector3d", "polarvector3d", "vectormat", "mat", "mat<cplx>", "sqmat",
                           "sqmat<cplx>", "binom", "hyperbinom", "line3d", "plane"}) {
    const std::size_t length = std::strlen(name);
    int members = 0;
    for (const selfcheck_entry& e : r) {
      const char after = std::strncmp(e.member, name, length) == 0 ? e.member[length] : 'x';
      members += after == ' ' || after == ':' || after == '(' ? 1 : 0;
    }
    EXPECT_GT(members, 0) << name;
  }
}

TEST(Selfcheck, NoTwoEntriesHaveOneNameOrOneHash) {
  std::set<std::string> names;
  std::set<std::uint64_t> hashes;
  const selfcheck_report r = selfcheck();
  for (const selfcheck_entry& e : r) {
    EXPECT_TRUE(names.insert(std::string(e.member) + "/" + e.inputs).second) << e.member;
    EXPECT_TRUE(hashes.insert(e.found).second) << e.member << ", " << e.inputs;
  }
  EXPECT_LT(r.count, selfcheck_report::capacity) << "no entry is left out for want of room";
}

TEST(Selfcheck, RepeatsItself) {
  const selfcheck_report a = selfcheck();
  const selfcheck_report b = selfcheck();
  EXPECT_EQ(a.all, b.all);
  EXPECT_STREQ(a.line, b.line);
}

TEST(Selfcheck, AWrongHashIsReportedByName) {
  std::vector<stored_hash_line> wrong = table();
  ASSERT_GT(wrong.size(), 50u);
  wrong[50].hash ^= 1;
  const selfcheck_report r = tessarn::detail::selfcheck_against(wrong.data(), wrong.size());
  EXPECT_FALSE(r.passed());
  ASSERT_EQ(r.differing(), 1u);
  EXPECT_TRUE(r.entries[50].differs());
  EXPECT_TRUE(says(r, (std::string("differing: ") + wrong[50].member + " (" + wrong[50].inputs + ");").c_str()))
      << r.line;
  EXPECT_TRUE(says(r, (std::to_string(r.count - 1) + " of " + std::to_string(r.count) + " hashes equal").c_str()))
      << r.line;
}

TEST(Selfcheck, AMemberWithoutAStoredHashDiffers) {
  std::vector<stored_hash_line> fewer = table();
  const std::string last = fewer.back().member;
  fewer.pop_back();
  const selfcheck_report r = tessarn::detail::selfcheck_against(fewer.data(), fewer.size());
  ASSERT_EQ(r.differing(), 1u);
  EXPECT_TRUE(says(r, last.c_str())) << r.line;
}

TEST(Selfcheck, TheLineHasRoomForTheRest) {
  const selfcheck_report r = tessarn::detail::selfcheck_against(nullptr, 0);
  EXPECT_EQ(r.differing(), r.count);
  EXPECT_TRUE(says(r, " more; rounds to nearest, keeps subnormal numbers")) << r.line;
  EXPECT_LT(std::strlen(r.line), sizeof r.line - 1);
}

// ---------------------------------------------------------------- another rounding

class WithRounding {
 public:
  explicit WithRounding(int mode) : former_(std::fegetround()), set_(std::fesetround(mode) == 0) {}
  ~WithRounding() { std::fesetround(former_); }
  bool set() const { return set_; }

 private:
  int former_;
  bool set_;
};

// WebAssembly has no such mode, whatever its headers say.
void expect_reported(int mode, rounding expected, const char* words) {
  selfcheck_report r;
  {
    const WithRounding rounded(mode);
    if (!rounded.set()) GTEST_SKIP() << "this processor has no such rounding";
    r = selfcheck();
  }
  EXPECT_EQ(r.rounds, expected);
  EXPECT_FALSE(r.passed());
  EXPECT_GT(r.differing(), 0u);
  EXPECT_TRUE(says(r, words)) << r.line;
  EXPECT_TRUE(selfcheck().passed()) << "once the mode is set back";
}

#if defined(FE_UPWARD) && !defined(__wasm__)
TEST(Selfcheck, ReportsRoundingUpward) { expect_reported(FE_UPWARD, rounding::upward, "ROUNDS UPWARD"); }
#endif
#if defined(FE_DOWNWARD) && !defined(__wasm__)
TEST(Selfcheck, ReportsRoundingDownward) { expect_reported(FE_DOWNWARD, rounding::downward, "ROUNDS DOWNWARD"); }
#endif
#if defined(FE_TOWARDZERO) && !defined(__wasm__)
TEST(Selfcheck, ReportsRoundingTowardZero) {
  expect_reported(FE_TOWARDZERO, rounding::toward_zero, "ROUNDS TOWARD ZERO");
}
#endif

// ---------------------------------------------------------------- subnormal numbers dropped

#if defined(__SSE2__)
selfcheck_report with_control_bits(unsigned bits) {
  const unsigned former = _mm_getcsr();
  _mm_setcsr(former | bits);
  const selfcheck_report r = selfcheck();
  _mm_setcsr(former);
  return r;
}

TEST(Selfcheck, ReportsResultsFlushedToZero) {
  const selfcheck_report r = with_control_bits(0x8000);
  EXPECT_FALSE(r.subnormal_results_kept || r.passed());
  EXPECT_TRUE(r.subnormal_operands_kept);
  EXPECT_TRUE(says(r, "FLUSHES SUBNORMAL RESULTS TO ZERO")) << r.line;
}

TEST(Selfcheck, ReportsOperandsTakenForZero) {
  const selfcheck_report r = with_control_bits(0x0040);
  EXPECT_FALSE(r.subnormal_operands_kept || r.passed());
  EXPECT_TRUE(r.subnormal_results_kept);
  EXPECT_TRUE(says(r, "TAKES SUBNORMAL OPERANDS FOR ZERO")) << r.line;
}
#elif defined(__aarch64__)
TEST(Selfcheck, ReportsSubnormalNumbersTakenForZero) {
  std::uint64_t former;
  __asm__ volatile("mrs %0, fpcr" : "=r"(former));
  __asm__ volatile("msr fpcr, %0" : : "r"(former | (std::uint64_t{1} << 24)));
  const selfcheck_report r = selfcheck();
  __asm__ volatile("msr fpcr, %0" : : "r"(former));
  EXPECT_FALSE(r.subnormal_results_kept || r.subnormal_operands_kept || r.passed());
  EXPECT_TRUE(says(r, "FLUSHES SUBNORMAL RESULTS TO ZERO")) << r.line;
}
#endif

}  // namespace
