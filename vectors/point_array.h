// The arrays of the point list. They are made with the array form of new, so that a program may release one itself or
// put one of its own into a list.
//
// A list grows by a fixed step, but into arrays with room for twice the points, so that n points are added in O(n). A
// list's capacity does not tell this room: a table holds it. The table may know an array that a program has
// released since, and whose address belongs to another array now. So the room counts only where it is the number of
// elements that array new keeps in front of them: then the elements are there, whoever made the array.
#pragma once

#include "tessarn/vectors.h"

namespace tessarn::detail {

// A list of up to so many points has no more memory than it shows.
inline constexpr ulong list_growth = 1024;

// The capacity with which a full list of count points goes on. Throws std::bad_array_new_length beyond 32 bits.
ulong next_capacity(ulong count);

// True where the array of a full list of count points has room for `larger`; the elements behind them are (0, 0) then.
bool extend_points(vector* points, ulong count, ulong larger) noexcept;

// An array for `larger` points with the first count of those given, which are then released. Throws std::bad_alloc, and
// changes nothing then.
vector* grow_points(vector* points, ulong count, ulong larger);

// Releases an array; null is none.
void release_points(vector* points) noexcept;

// Notes the room of an array.
void note_room(const vector* points, ulong room);

// The number of elements of an array made with array new.
std::size_t element_count(const vector* points) noexcept;

// Moves coordinates, never virtual table pointers.
inline void copy_points(const vector* from, ulong n, vector* to) noexcept {
  for (ulong i = 0; i < n; ++i) {
    to[i].x = from[i].x;
    to[i].y = from[i].y;
  }
}

}  // namespace tessarn::detail
