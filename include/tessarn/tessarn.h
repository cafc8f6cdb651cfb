/// \file
/// The whole library.
#pragma once

#include "tessarn/angles.h"
#include "tessarn/cplx.h"
#include "tessarn/fit.h"
#include "tessarn/geometry.h"
#include "tessarn/matrix.h"
#include "tessarn/poly.h"
#include "tessarn/scalar.h"
#include "tessarn/selfcheck.h"
#include "tessarn/solve.h"
#include "tessarn/status.h"
#include "tessarn/vectors.h"
#include "tessarn/views.h"
