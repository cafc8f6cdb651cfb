// Who allocates and who releases, across the border of the module: the allocators, the virtual destructor of
// arrays and of derived classes, and the allocation exceptions.
#include <tessarn/tessarn.h>

#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>
#include <vector>

#include "check.h"
#include "heap_hook.h"

namespace {

using tessarn::real;

// Remembers the order in which its objects end.
std::vector<int> g_ended;

struct counted : vector {
  explicit counted(int id = 0) : vector(id, 0) {}
  ~counted() override { g_ended.push_back(rx()); }
};

bool ended_from_last_to_first(int n) {
  if (static_cast<int>(g_ended.size()) != n) return false;
  for (int i = 0; i < n; ++i)
    if (g_ended[static_cast<size_t>(i)] != n - 1 - i) return false;
  return true;
}

std::size_t stored_count(const void* array) {
  std::size_t n;
  std::memcpy(&n, static_cast<const unsigned char*>(array) - sizeof n, sizeof n);
  return n;
}

template <class Vector>
void single_object(Vector* allocate(tessarn::ulong)) {
  heap::reset();
  Vector* one = allocate(0);
  CHECK(heap::allocated == 1 && heap::last_allocated == one);  // no count in front of it
  CHECK(one->lenld() == 0);
  delete one;
  CHECK(heap::released == 1 && heap::last_released == one);
}

template <class Vector>
void array_of_objects(Vector* allocate(tessarn::ulong)) {
  for (tessarn::ulong n : {1u, 2u, 7u, 1000u}) {
    heap::reset();
    Vector* array = allocate(n);
    CHECK(heap::allocated == 1 && stored_count(array) == n);
    bool zeroed = true;
    for (tessarn::ulong i = 0; i < n; ++i) zeroed = zeroed && array[i].lenld() == 0;
    CHECK(zeroed);
    void* block = heap::last_allocated;
    CHECK(reinterpret_cast<unsigned char*>(array) == static_cast<unsigned char*>(block) + sizeof(std::size_t));
    delete[] array;
    CHECK(heap::released == 1 && heap::last_released == block);
  }
}

// Puts counting objects into an array of the module: delete[] finds their number in front of the array and
// their destructor in their virtual tables.
void order_of_destruction() {
  constexpr int n = 6;
  vector* array = new_vector(n);
  for (int i = 0; i < n; ++i) new (array + i) counted(i);
  g_ended.clear();
  delete[] array;
  CHECK(ended_from_last_to_first(n));

  g_ended.clear();
  vector* own = new counted[3];
  for (int i = 0; i < 3; ++i) static_cast<counted*>(own)[i].x = i;
  delete[] own;  // through the base, as the virtual table of this ABI provides
  CHECK(ended_from_last_to_first(3));
}

struct derived_list : vectormat {
  int* ended;
  explicit derived_list(int& n) : ended(&n) {}
  ~derived_list() override { ++*ended; }
};
struct derived_matrix : mat<long double> {
  int* ended;
  std::unique_ptr<int> more{new int(1)};
  explicit derived_matrix(int& n) : ended(&n) { create(4, 4); }
  ~derived_matrix() override { ++*ended; }
};
struct derived_polynomial : binom {
  int emptied = 0;
  void empty() override {
    ++emptied;
    binom::empty();
  }
};

void derived_classes() {
  int ended = 0;
  heap::reset();
  vectormat* list = new derived_list(ended);
  list->add(vector(1, 2));
  delete list;
  CHECK(ended == 1 && heap::allocated == 1 && heap::released == 1);
  heap::reset();
  mat<long double>* matrix = new derived_matrix(ended);
  CHECK(dynamic_cast<derived_matrix*>(matrix) != nullptr && typeid(*matrix) == typeid(derived_matrix));
  delete matrix;
  CHECK(ended == 2 && heap::allocated == 1 && heap::released == 1);
  derived_polynomial p;
  binom& base = p;
  base.create(3);
  base.empty();
  CHECK(p.emptied == 1 && p.getcofcnt() == 0);
}

// An object returned on the module's heap, and one that takes over another's storage.
void released_here() {
  vectormat list;
  for (int i = 0; i < 6; ++i) list.add(vector(i, 0));
  heap::reset();
  vectormat* chain = list.findline(vector(1, 0));
  CHECK(chain != nullptr && chain->count == 5);
  const int live_before = heap::allocated - heap::released;
  delete chain;
  CHECK(live_before - (heap::allocated - heap::released) == 2);  // the list and its points
}

struct guard {
  int& ended;
  explicit guard(int& n) : ended(n) {}
  ~guard() { ++ended; }
};

// What an impossible request raises is caught as Exception, with the caller's objects unwound.
template <class Exception, class Request>
bool raises(Request request) {
  int ended = 0;
  try {
    guard first(ended);
    std::unique_ptr<vector[]> some(new_vector(3));
    guard second(ended);
    request();
  } catch (Exception& e) {
    return ended == 2 && std::strlen(e.what()) > 0 && dynamic_cast<std::bad_alloc*>(&e) != nullptr;
  }
  return false;
}

template <class Request>
void impossible(Request request) {
  const int live = heap::allocated - heap::released;
  CHECK(raises<std::bad_alloc>(request));
  CHECK(raises<std::exception>(request));
  CHECK(heap::allocated - heap::released == live);
}

void exceptions() {
  impossible([] { new_vector(0xFFFFFFFFu); });
  impossible([] { new_vector3d(0xFFFFFFFFu); });
  impossible([] { new_polarvector3d(0xFFFFFFFFu); });
  impossible([] {
    mat<long double> m;
    m.create(0xFFFFu, 0xFFFFu);
  });
  impossible([] {
    sqmat<cplx> m;
    m.create(0xFFFFu);
  });
  impossible([] {
    binom p;
    p.create(-1);
  });
  impossible([] {
    hyperbinom p;
    p.create(0x7FFFFFFF);
  });
  // The saturated size of an array that cannot exist, without the help of the limit.
  heap::largest_request = ~0ull;
  binom p;
  CHECK(raises<std::bad_array_new_length>([&] { p.create(-1); }));
  CHECK(p.getcofcnt() == 0);
  try {
    p.create(-1);
    CHECK(false);
  } catch (std::bad_alloc e) {  // a copy, on purpose
    std::bad_alloc copied(e);
    copied = e;
    CHECK(std::strcmp(copied.what(), "bad array new length") == 0);
  }
}

void layout() {
  CHECK(sizeof(long double) == 8 && sizeof(unsigned long) == 4 && sizeof(std::bad_alloc) == 24);
  CHECK(std::strcmp(typeid(std::bad_alloc).raw_name(), ".?AVbad_alloc@std@@") == 0);
  CHECK(std::strcmp(typeid(mat<long double>).raw_name(), ".?AV?$mat@O@@") == 0);
}

}  // namespace

int main() {
  CHECK(heap::hook("Tessarn_x64.dll"));
  layout();
  single_object<vector>(new_vector);
  single_object<vector3d>(new_vector3d);
  single_object<polarvector3d>(new_polarvector3d);
  array_of_objects<vector>(new_vector);
  array_of_objects<vector3d>(new_vector3d);
  array_of_objects<polarvector3d>(new_polarvector3d);
  order_of_destruction();
  derived_classes();
  released_here();
  exceptions();
  CHECK(HeapValidate(GetProcessHeap(), 0, nullptr) != 0);
  return check::finish();
}
