// The choice of instruction set: kernels are compiled several times from one source, and one build is
// chosen once per process. All builds of a kernel give the same bits.
#pragma once

namespace tessarn::detail {

enum class isa : int { baseline = 0, avx2 = 1, avx512 = 2 };

// The best instruction set that the processor and the operating system support.
isa best_isa() noexcept;

// The instruction set in use: the best one, unless a test chose another.
isa chosen_isa() noexcept;

// For tests: uses the given set from now on, or the best one if the processor does not have it; returns
// the set in use.
isa force_isa(isa wanted) noexcept;

}  // namespace tessarn::detail
