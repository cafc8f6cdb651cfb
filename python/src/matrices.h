// Conversions and members that rectangular and square matrices share.
#pragma once

#include <algorithm>
#include <complex>

#include "text.h"

namespace binding {

// An access to a matrix without entries would never return; IndexError is raised instead.
void require_entries(tessarn::ulong width, tessarn::ulong height);
// Throws MemoryError for sizes whose entries no matrix can hold: it would have the sizes, but no storage.
void require_storable(tessarn::ulong width, tessarn::ulong height);

inline void clear(tessarn::real* entries, std::size_t n) { std::fill_n(entries, n, static_cast<tessarn::real>(0)); }
inline void clear(cplx*, std::size_t) {}  // complex entries are zeros from the start

inline double to_python(tessarn::real v) { return static_cast<double>(v); }
inline cplx to_python(const cplx& v) { return v; }

// The rows of an array without the quiet-NaN rule, as copies are made.
mat<long double> stored_as_they_are(const array& rows);
// Complex entries, row by row, and back.
py::array_t<std::complex<double>> from_complex(const cplx* entries, tessarn::ulong width, tessarn::ulong height);
mat<cplx> to_complex_matrix(const array_like& argument, const char* name);

}  // namespace binding
