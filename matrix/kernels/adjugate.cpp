// The adjugate; compiled once for each instruction set. It has a source of its own to have vectors of at most four
// lanes: a group of minors begins with a part of its lanes in use, and the narrower the vectors, the sooner all of them
// are.
#define TESSARN_AT_MOST_FOUR_LANES
#include "matrix/kernels/adjugate.inl"
