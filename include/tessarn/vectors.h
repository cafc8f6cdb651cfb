/// \file
/// Plane, space and polar vectors, and the point list: each class has a header of its own.
///
/// Angles are radians. Lengths and angles are formed from plain sums of squares, without scaling: where a
/// squared coordinate overflows (magnitudes above about 1e154) or vanishes (below about 1e-162) lengths are
/// infinite or 0, and angles wrong or 0, without a word. Divisions by a scalar multiply by its reciprocal, except
/// where a member says that it divides.
#pragma once

#include "tessarn/polarvector3d.h"
#include "tessarn/vector.h"
#include "tessarn/vector3d.h"

// The list needs the plane vector, and assigning a list to a vector the list: each includes the other here.
#include "tessarn/list.h"
