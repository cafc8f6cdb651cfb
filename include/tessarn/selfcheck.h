/// \file
/// Whether this library, as it was built and on this processor, gives the bits that every build
/// gives.
///
/// The library holds a hash of what each member gives for inputs made from integers. selfcheck()
/// computes them again and compares. It also looks at how the calling thread computes: another
/// rounding than to nearest, or subnormal numbers taken for zero, change results.
///
/// What a program has compiled from these headers with flags of its own is not looked at: the members
/// are called as the library itself is compiled.
///
/// For a protocol of measurements: print `line` of the report in the thread that computes. From a
/// shell, `tessarn-selfcheck --line` prints it.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn {

/// How a thread rounds. The library promises its results for `nearest`.
enum class rounding : int { nearest, upward, downward, toward_zero };

/// One member with one kind of inputs. The texts live as long as the library is loaded.
struct selfcheck_entry {
  const char* member;    ///< for example "sqmat::det"
  const char* inputs;    ///< "ordinary" numbers, or "hostile" ones: zeros, subnormals, infinities, NaN
  std::uint64_t stored;  ///< the hash of the results that every build gives
  std::uint64_t found;   ///< the hash of the results here

  /// Whether the results here have other bits than the stored ones.
  bool differs() const noexcept { return stored != found; }
};

/// The findings of selfcheck(): one entry for each member and kind of inputs, and how the thread
/// computes.
///
/// \code
/// const tessarn::selfcheck_report report = tessarn::selfcheck();
/// assert(report.passed());
/// assert(report.differing() == 0 && report.rounds == tessarn::rounding::nearest);
/// \endcode
///
/// To look at the members one by one:
///
/// \code
/// for (const tessarn::selfcheck_entry& e : tessarn::selfcheck())
///   assert(!e.differs());                  // or print e.member and e.inputs
/// \endcode
///
/// Memory: a plain value of about 9 kB; nothing is owned.
struct selfcheck_report {
  /// The most entries that a report can hold; the library has fewer.
  static constexpr std::size_t capacity = 256;

  selfcheck_entry entries[capacity];  ///< the first `count` of them
  ulong count;                        ///< number of entries
  rounding rounds;                    ///< how the calling thread rounds
  bool subnormal_results_kept;        ///< false where a result that is subnormal becomes zero
  bool subnormal_operands_kept;       ///< false where a subnormal operand counts as zero
  std::uint64_t all;  ///< the hash of all hashes found: two libraries with the same one gave the same bits
  /// The answer in one line, for a protocol of measurements: version, how many hashes are equal, the hash of all, the
  /// differing members as far as they fit, how the thread rounds and treats subnormal numbers.
  char line[512];

  /// The entries that are in use, for loops.
  const selfcheck_entry* begin() const noexcept { return entries; }
  const selfcheck_entry* end() const noexcept { return entries + count; }
  /// The number of entries that differ.
  ulong differing() const noexcept {
    ulong n = 0;
    for (const selfcheck_entry& e : *this) n += e.differs() ? 1 : 0;
    return n;
  }
  /// Whether every hash is the stored one, and the thread computes as the library expects. An empty
  /// report has not passed.
  bool passed() const noexcept {
    return count > 0 && differing() == 0 && rounds == rounding::nearest && subnormal_results_kept &&
           subnormal_operands_kept;
  }
};

/// Computes every hash anew, in the calling thread and with the instruction set that the library has
/// chosen for this processor. The state of the thread is only read.
/// Cost: some milliseconds. Throws std::bad_alloc where there is no memory.
TESSARN_API selfcheck_report selfcheck();

}  // namespace tessarn
