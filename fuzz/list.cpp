// Random operations on point lists.
#include <memory>

#include "input.h"

namespace {

bool in_order(const vector& a, const vector& b) { return !(a.x > b.x || (a.x == b.x && a.y > b.y)); }

void step(fuzz::input& in, vectormat& l, vectormat& other) {
  switch (in.byte() % 16) {
    case 0:
    case 1:
    case 2: l.add(vector{in.real(), in.real()}); break;
    case 3:
      for (int i = in.byte() * 8; i > 0; --i) l += vector(i, in.empty() ? i % 7 : in.tame());
      break;
    case 4:
      if (l.count > 0) l.add(l.points[in.number(l.count - 1)]);
      break;
    case 5: l.del(in.any_number()); break;
    case 6: l -= in.number(16); break;
    case 7: l *= in.real(); break;
    case 8: l.flip(); break;
    case 9:
      l.sort();
      for (tessarn::ulong i = 0; i + 1 < l.count; ++i) fuzz::require(in_order(l.points[i], l.points[i + 1]), "sorted");
      break;
    case 10: l.DeleteErrors(in.real()); break;
    case 11: {
      const tessarn::ulong before = l.count;
      const std::unique_ptr<vectormat> chain(l.findline(vector{in.real(), in.real()}));
      fuzz::require(l.count + (chain ? chain->count : 0) <= before, "a chain takes its points from the list");
      break;
    }
    case 12: {
      vector mean = l.average();
      mean = l.avdir();
      mean = l;
      if (l.count > 0) l.points[in.number(l.count - 1)] = l;
      break;
    }
    case 13: other = l; break;
    case 14: l = static_cast<vectormat&&>(other); break;
    default: l.empty(); break;
  }
  fuzz::require(l.count <= l.capacity, "count <= capacity");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input in(data, size);
  vectormat l, other;
  while (!in.empty() && l.count < 4096) step(in, l, other);
  return 0;
}
