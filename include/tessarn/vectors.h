/// \file
/// Plane, space and polar vectors, and the point list: each class has a header of its own.
///
/// Conventions of all four:
/// - Angles are radians.
/// - Lengths and angles are formed from plain sums of squares, without scaling. Where a squared
///   coordinate overflows (magnitudes above about 1e154) or vanishes (below about 1e-162) lengths are
///   infinite or 0, and angles wrong or 0, without a word. Angles between two Cartesian vectors use
///   the product of both squared lengths, so for them the product of the two lengths has to be within
///   these limits.
/// - Divisions by a scalar multiply by its reciprocal, except where a member says that it divides.
///   They do not test for 0; a divisor below about 5.6e-309 has an infinite reciprocal.
/// - Comparisons by `==` have no tolerance, and a NaN counts as equal to anything.
/// - Results have the same bits on every machine.
#pragma once

#include "tessarn/polarvector3d.h"
#include "tessarn/vector.h"
#include "tessarn/vector3d.h"

// The list needs the plane vector, and assigning a list to a vector the list: each includes the other here.
#include "tessarn/list.h"
