/// \file
/// The whole library, but for printing (tessarn/io.h) and the adaptors for files, Eigen and the standard library
/// (tessarn/files.h, eigen.h, std.h). A program can as well include the headers of its classes alone, in any order:
///
/// \verbatim
///     angles.h     sines, cosines and their inverses with the same bits everywhere
///     cplx.h       complex numbers
///     vectors.h    vectors in the plane and in space, polar vectors, the point list
///     matrix.h     rectangular and square matrices, real and complex
///     poly.h       polynomials in one and two variables: fits, curve analysis
///     geometry.h   line segments and planes in space, the plane fit
///     align.h      the motion that carries points onto their partners
///     flat.h       the plane among points, and how flat they are
///     curve.h      every zero, extreme point and inflection of a polynomial, and where it bends most, proved
///     fit.h        fits of polynomials and surfaces that tell what they are worth
///     shapes.h     lines, circles, spheres and cylinders through measured points
///     solve.h      systems, least squares, inverses, determinants with a status and bounds of their errors
///     views.h      points and matrices in arrays of the program's own, without a copy
///     status.h     what became of such a computation
///     scalar.h     the number types
///     selfcheck.h  asks whether this machine computes the promised bits
/// \endverbatim
#pragma once

#include "tessarn/align.h"
#include "tessarn/angles.h"
#include "tessarn/cplx.h"
#include "tessarn/curve.h"
#include "tessarn/fit.h"
#include "tessarn/flat.h"
#include "tessarn/geometry.h"
#include "tessarn/matrix.h"
#include "tessarn/poly.h"
#include "tessarn/scalar.h"
#include "tessarn/selfcheck.h"
#include "tessarn/shapes.h"
#include "tessarn/solve.h"
#include "tessarn/status.h"
#include "tessarn/vectors.h"
#include "tessarn/views.h"
