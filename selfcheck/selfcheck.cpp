// Calls every member of the families, compares the hashes with the stored ones, and looks at how the thread computes.
#include "tessarn/selfcheck.h"

#include <cstring>

#include "selfcheck/line.h"
#include "selfcheck/members.h"
#include "selfcheck/stored.h"

namespace tessarn {
namespace {

using namespace detail;

constexpr const selfcheck_family* families[] = {
    &selfcheck_values,   &selfcheck_angles, &selfcheck_matrices, &selfcheck_complex_matrices, &selfcheck_polynomials,
    &selfcheck_surfaces, &selfcheck_lists,  &selfcheck_geometry, &selfcheck_analysis};

std::uint64_t hash_of(const selfcheck_member& m, bool hostile) {
  inputs in(m.name, hostile);
  results out;
  for (int i = 0; i < m.rounds; ++i) m.call(in, out);
  return out.value();
}

// The stored hash; for a member that is not in the table one that differs from what was found.
std::uint64_t stored_hash(const stored_hash_line* table, std::size_t lines, const selfcheck_entry& e) noexcept {
  for (std::size_t i = 0; i < lines; ++i)
    if (std::strcmp(table[i].member, e.member) == 0 && std::strcmp(table[i].inputs, e.inputs) == 0)
      return table[i].hash;
  return ~e.found;
}

// Numbers that the compiler cannot know, so that the processor computes with them as the thread has set it.
real unknown(real v) noexcept {
  volatile real u = v;
  return u;
}

rounding rounding_of_thread() noexcept {
  const real one = unknown(1);
  const real tiny = unknown(static_cast<real>(0x1p-60));
  const bool up = one + tiny > one;
  const bool down = one - tiny < one;
  const bool towards_minus = -one - tiny < -one;
  if (up) return rounding::upward;
  if (down) return towards_minus ? rounding::downward : rounding::toward_zero;
  return rounding::nearest;
}

real from_bits(std::uint64_t bits) noexcept {
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return static_cast<real>(v);
}

// By bits, since a comparison would take its operand for zero, too.
bool has_bits(real v) noexcept {
  const auto d = static_cast<double>(v);
  std::uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  return bits != 0;
}

bool keeps_subnormal_results() noexcept {
  const real smallest_normal = unknown(from_bits(0x0010000000000000u));
  const real half = smallest_normal * unknown(static_cast<real>(0.5));
  return has_bits(half);
}

bool keeps_subnormal_operands() noexcept {
  const real smallest = unknown(from_bits(1));
  const real large = smallest * unknown(static_cast<real>(0x1p600));
  return has_bits(large);
}

#define TESSARN_TEXT(number) TESSARN_QUOTED(number)
#define TESSARN_QUOTED(number) #number
constexpr char version[] =
    TESSARN_TEXT(TESSARN_VERSION_MAJOR) "." TESSARN_TEXT(TESSARN_VERSION_MINOR) "." TESSARN_TEXT(TESSARN_VERSION_PATCH);

void name_differing(const selfcheck_report& r, text& line) {
  constexpr std::size_t room_for_the_rest = 140;
  ulong left = r.differing();
  const char* separator = ", differing: ";
  for (const selfcheck_entry& e : r) {
    if (!e.differs()) continue;
    if (line.left() < std::strlen(e.member) + room_for_the_rest) break;
    line << separator << e.member << " (" << e.inputs << ")";
    separator = ", ";
    --left;
  }
  if (left > 0) line << " and " << static_cast<std::uint32_t>(left) << " more";
}

void write_line(selfcheck_report& r) {
  text line(r.line, sizeof r.line);
  line << "Tessarn " << version << ": " << static_cast<std::uint32_t>(r.count - r.differing()) << " of "
       << static_cast<std::uint32_t>(r.count) << " hashes equal, all ";
  line.hexadecimal(r.all);
  name_differing(r, line);
  switch (r.rounds) {
    case rounding::nearest: line << "; rounds to nearest"; break;
    case rounding::upward: line << "; ROUNDS UPWARD"; break;
    case rounding::downward: line << "; ROUNDS DOWNWARD"; break;
    case rounding::toward_zero: line << "; ROUNDS TOWARD ZERO"; break;
  }
  if (r.subnormal_results_kept && r.subnormal_operands_kept) line << ", keeps subnormal numbers";
  if (!r.subnormal_results_kept) line << ", FLUSHES SUBNORMAL RESULTS TO ZERO";
  if (!r.subnormal_operands_kept) line << ", TAKES SUBNORMAL OPERANDS FOR ZERO";
}

}  // namespace

selfcheck_report detail::selfcheck_against(const stored_hash_line* table, std::size_t lines) {
  selfcheck_report r = {};
  r.rounds = rounding_of_thread();
  r.subnormal_results_kept = keeps_subnormal_results();
  r.subnormal_operands_kept = keeps_subnormal_operands();
  hash all;
  const auto take = [&](const selfcheck_member& m, bool hostile) {
    if (r.count == selfcheck_report::capacity) return;
    selfcheck_entry& e = r.entries[r.count++];
    e = {m.name, hostile ? "hostile" : "ordinary", 0, hash_of(m, hostile)};
    e.stored = stored_hash(table, lines, e);
    all.add(e.found);
  };
  for (const selfcheck_family* f : families)
    for (std::size_t i = 0; i < f->count; ++i) {
      take(f->members[i], false);
      if (f->members[i].hostile) take(f->members[i], true);
    }
  r.all = all.value();
  write_line(r);
  return r;
}

selfcheck_report selfcheck() { return selfcheck_against(stored_hashes, sizeof stored_hashes / sizeof *stored_hashes); }

}  // namespace tessarn
