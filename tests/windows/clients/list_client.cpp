// Calls every member of vectormat through the module.
#include <tessarn/vectors.h>

#include <utility>

#include "check.h"

namespace {

using tessarn::real;

vectormat list_of(int n) {
  vectormat list;
  for (int i = 0; i < n; ++i) list.add(vector(i, 2 * i));
  return list;
}

template <class Vector>
void appended() {
  vectormat list;
  Vector v(1, 2);
  list.add(v);
  list += v;
  CHECK(list.count == 2 && list.capacity == 1024 && list.points[1].y == 2);
}

template <class List>
void means(List& list) {
  CHECK(list.average().x == 2 && list.average().y == 4);
  CHECK(list.avdir().x == 1 && list.avdir().y == 2);
}

}  // namespace

int main() {
  appended<vector>();
  appended<const vector>();
  vectormat list = list_of(5);
  means(list);
  means<const vectormat>(list);

  // A long list grows in its place most of the time.
  vectormat grown = list_of(4097);
  const vector* const place = grown.points;
  while (grown.count < 8192) grown.add(vector(1, 2));
  CHECK(grown.points == place && grown.capacity == 8192);

  vectormat copied(list);
  CHECK(copied.count == 5 && copied.points != list.points);
  vectormat assigned;
  assigned = copied;
  CHECK(assigned.count == 5 && assigned.points != copied.points);
  vectormat moved(std::move(copied));
  CHECK(moved.count == 5);
  assigned = std::move(moved);
  CHECK(assigned.count == 5);

  assigned.del(0);
  assigned -= 0;
  CHECK(assigned.count == 3 && assigned.points[0].x == 2);
  assigned *= 2;
  CHECK(assigned.points[0].y == 8);
  assigned.flip();
  CHECK(assigned.points[0].x == 8);
  assigned.add(vector(1, 1));
  assigned.sort();
  CHECK(assigned.points[0].x == 1);
  assigned.add(vector(-1, 0));
  assigned.DeleteErrors(0);
  CHECK(assigned.count == 4 && assigned.capacity == 4);

  vectormat* chain = list.findline(vector(1, 2));
  CHECK(chain != nullptr && chain->count == 4 && list.count == 1);
  delete chain;
  list.empty();
  CHECK(list.points == nullptr && list.count == 0);
  return check::finish();
}
