// The arrays of growing lists and the table of their room.
#include "vectors/point_array.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "core/side_table.h"
#include "core/storage.h"

namespace tessarn::detail {
namespace {

using point_array = std::unique_ptr<vector[]>;

constinit side_table<ulong> rooms;

// Room for twice the points where there is the memory for it.
point_array roomy_array(ulong count, ulong larger, ulong& room) {
  constexpr ulong most = std::numeric_limits<ulong>::max();
  room = std::max(larger, count <= most / 2 ? 2 * count : most);
  if (room > larger) {
    try {
      return point_array(new vector[room]);
    } catch (const std::bad_alloc&) {
      room = larger;
    }
  }
  return point_array(new vector[larger]);
}

}  // namespace

// The count belongs to the block of memory, not to the array: address sanitizers keep others from it.
#if defined(__GNUC__) || defined(__clang__)
__attribute__((no_sanitize("address"), noinline))
#elif defined(_MSC_VER)
__declspec(no_sanitize_address, noinline)
#endif
std::size_t
element_count(const vector* points) noexcept {
  return reinterpret_cast<const std::size_t*>(points)[-1];
}

ulong next_capacity(ulong count) { return checked_count(checked_sum(count, list_growth)); }

bool extend_points(vector* points, ulong count, ulong larger) noexcept {
  bool enough = false;
  rooms.use(points, [&](ulong room) {
    enough = room >= larger && room == element_count(points);
    return true;
  });
  if (enough) std::for_each(points + count, points + larger, [](vector& p) { p.x = p.y = 0; });
  return enough;
}

vector* grow_points(vector* points, ulong count, ulong larger) {
  ulong room = 0;
  point_array grown = roomy_array(count, larger, room);
  if (room > larger)
    note_room(grown.get(), room);
  else
    rooms.erase(grown.get());
  copy_points(points, count, grown.get());
  release_points(points);
  return grown.release();
}

void release_points(vector* points) noexcept {
  rooms.erase(points);
  delete[] points;
}

void note_room(const vector* points, ulong room) {
  rooms.change(points, [=](ulong& noted) { noted = room; });
}

}  // namespace tessarn::detail
