/// \file
/// Dense matrices, rectangular (tessarn/mat.h) and square (tessarn/sqmat.h), over reals and complex numbers.
///
/// Element access names the column first: get(x, y) is the entry in column x and row y. Storage is
/// row-major, entry (x, y) at index y * width + x:
///
///                 x = 0    x = 1    x = 2
///       y = 0   [ data[0]  data[1]  data[2] ]
///       y = 1   [ data[3]  data[4]  data[5] ]      width 3, height 2
///
/// Indices wrap: x = width + 1 is column 1. A matrix with a zero extent has no entries, and accessing one
/// never returns. Indices and sizes have 32 bits; get() and set() use the low 32 bits of a wider index.
///
/// The quiet-NaN rule: a real matrix stores 0.0 in place of a quiet NaN, in set() and in every computed
/// entry, except where a member says that it stores values as they are; infinities are stored as they are.
/// Complex matrices have no such rule.
///
/// Errors are not reported. Mismatched sizes give an empty matrix or no action, as each member says; only
/// std::bad_alloc is thrown, and std::bad_array_new_length, a kind of it, for sizes that no matrix can have. The
/// matrices involved are then as they were or empty. tessarn/solve.h has systems, least squares, inverses and
/// determinants that return a status instead.
///
/// Sums run in ascending order from +0.0 and products are rounded before they are added, so results have the same bits
/// everywhere. Where a member chooses another order for speed, as decompose() does, that order is fixed, too.
///
/// Threads: distinct objects may be used at the same time. Several threads may read one matrix at the same time.
///
/// A program compiled with TESSARN_CHECKED in all its files stops, with the caller's file and line, at an access to a
/// matrix without entries, at an index beyond the size, and at an operation on mismatched sizes.
///
/// Memory besides the results, in multiples of the operands, and a kilobyte:
///
///     products 1 (complex 2), determinants and complex systems 2, real systems 4,
///     decomposition 3 times the matrix and V, and the results once more for magnitudes far from 1,
///     inversion of a square matrix 24, least squares a few rows and columns, calc_match() none
#pragma once

#include "tessarn/mat.h"
#include "tessarn/sqmat.h"
#include "tessarn/vectors.h"  // the points that calc_match and its kin take
