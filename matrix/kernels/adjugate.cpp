// The adjugate; compiled once for each instruction set. A group of minors begins with a part of its lanes in use: the
// narrower the vectors, the sooner all of them are.
#define TESSARN_AT_MOST_FOUR_LANES
#include "matrix/kernels/adjugate.inl"
