// The exported array allocators.
#include "tessarn/vectors.h"

namespace {

// One object for 0, an array otherwise: callers release the two differently.
template <class T>
T* new_objects(tessarn::ulong n) {
  return n == 0 ? new T : new T[n];
}

}  // namespace

vector* new_vector(tessarn::ulong n) { return new_objects<vector>(n); }
vector3d* new_vector3d(tessarn::ulong n) { return new_objects<vector3d>(n); }
polarvector3d* new_polarvector3d(tessarn::ulong n) { return new_objects<polarvector3d>(n); }
