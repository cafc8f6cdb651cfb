// Loaded before a program, makes it compute as no build promises its results: rounding upward.
#include <cfenv>

namespace {

[[maybe_unused]] const int set = std::fesetround(FE_UPWARD);

}  // namespace
