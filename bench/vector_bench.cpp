// Loops over arrays of the value classes, against plain structs of the same size.
#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <cstdlib>
#include <new>

#include "inputs.h"

namespace bench {

namespace {

// Whole large pages: loops over millions of numbers run at the rate of the memory, which else depends on the pages that
// an array happened to get by more than these loops differ.
template <class T>
struct large_pages {
  using value_type = T;
  static constexpr std::size_t page = std::size_t(2) << 20;
  static constexpr std::size_t large = page / 2;
  T* allocate(std::size_t n) {
    const std::size_t size = n * sizeof(T);
    if (size < large) return static_cast<T*>(::operator new(size));
    const std::size_t whole = (size + page - 1) / page * page;
    void* p = std::aligned_alloc(page, whole);
    if (p == nullptr) throw std::bad_alloc();
#if defined(__linux__)
    madvise(p, whole, MADV_HUGEPAGE);
#endif
    return static_cast<T*>(p);
  }
  void deallocate(T* p, std::size_t n) {
    if (n * sizeof(T) < large)
      ::operator delete(p);
    else
      std::free(p);
  }
  friend bool operator==(large_pages, large_pages) { return true; }
};

// Their loops store the coordinates only, as the assignment of a vector does; copies of the whole
// struct would make them slower.
struct space {
  double tag, x, y, z;
  void set(double first, double second, double third) { x = first, y = second, z = third; }
};
struct flat {
  double tag, x, y;
  void set(double first, double second) { x = first, y = second; }
};
static_assert(sizeof(space) == sizeof(vector3d) && sizeof(flat) == sizeof(vector));

// Wrapped, so that the overloads for them are found.
template <class T>
struct array {
  std::vector<T, large_pages<T>> v;
};
template <class T>
values space_values(const array<T>& a) {
  values r;
  for (const T& p : a.v) r.insert(r.end(), {p.x, p.y, p.z});
  return r;
}
template <class T>
values flat_values(const array<T>& a) {
  values r;
  for (const T& p : a.v) r.insert(r.end(), {p.x, p.y});
  return r;
}
values values_of(const array<space>& a) { return space_values(a); }
values values_of(const array<vector3d>& a) { return space_values(a); }
values values_of(const array<flat>& a) { return flat_values(a); }
values values_of(const array<vector>& a) { return flat_values(a); }

struct vector_inputs {
  explicit vector_inputs(long size) : n(std::size_t(size)), rotation(1) {
    test::random_source r(50);
    a.v.resize(n), b.v.resize(n), c.v.resize(n);
    p.v.resize(n), q.v.resize(n), s.v.resize(n);
    d.v.resize(n), e.v.resize(n), f.v.resize(n);
    t.v.resize(n), u.v.resize(n), w.v.resize(n);
    for (std::size_t k = 0; k < n; ++k) {
      a.v[k] = vector3d(r.uniform(), r.uniform(), r.uniform());
      b.v[k] = vector3d(r.uniform(), r.uniform(), r.uniform());
      p.v[k] = {0, a.v[k].x, a.v[k].y, a.v[k].z};
      q.v[k] = {0, b.v[k].x, b.v[k].y, b.v[k].z};
      d.v[k] = vector(a.v[k].x, a.v[k].y);
      e.v[k] = vector(b.v[k].x, b.v[k].y);
      t.v[k] = {0, a.v[k].x, a.v[k].y};
      u.v[k] = {0, b.v[k].x, b.v[k].y};
    }
  }
  std::size_t n;
  int rotation;
  array<vector3d> a, b, c;
  array<space> p, q, s;
  array<vector> d, e, f;
  array<flat> t, u, w;
};

constexpr double factor = 1.25;

void add_space(long n, double reach) {
  const double m = double(n);
  row<vector_inputs>("vector3d, sum of dot products", n, {6 * m, 64 * m, true})
      .reach(reach)
      .ours([](vector_inputs& in, int) {
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) sum += in.a.v[k] * in.b.v[k];
        return sum;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) {
          const space &p = in.p.v[k], &q = in.q.v[k];
          sum += p.x * q.x + p.y * q.y + p.z * q.z;
        }
        return sum;
      });
  row<vector_inputs>("vector3d, cross products", n, {9 * m, 96 * m})
      .reach(reach)
      .ours([](vector_inputs & in, int) -> auto& {
        for (std::size_t k = 0; k < in.n; ++k) in.c.v[k] = in.a.v[k].cross(in.b.v[k]);
        return in.c;
      })
      .peer(
          "other", "plain struct", [](vector_inputs & in, int) -> auto& {
            for (std::size_t k = 0; k < in.n; ++k) {
              const space &p = in.p.v[k], &q = in.q.v[k];
              in.s.v[k].set(p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x);
            }
            return in.s;
          });
  row<vector_inputs>("vector3d, sums", n, {3 * m, 96 * m})
      .reach(reach)
      .ours([](vector_inputs & in, int) -> auto& {
        for (std::size_t k = 0; k < in.n; ++k) in.c.v[k] = in.a.v[k] + in.b.v[k];
        return in.c;
      })
      .peer(
          "other", "plain struct", [](vector_inputs & in, int) -> auto& {
            for (std::size_t k = 0; k < in.n; ++k) {
              const space &p = in.p.v[k], &q = in.q.v[k];
              in.s.v[k].set(p.x + q.x, p.y + q.y, p.z + q.z);
            }
            return in.s;
          });
  row<vector_inputs>("vector3d, scaling", n, {3 * m, 64 * m})
      .reach(reach)
      .ours([](vector_inputs & in, int) -> auto& {
        for (std::size_t k = 0; k < in.n; ++k) in.c.v[k] = in.a.v[k] * factor;
        return in.c;
      })
      .peer(
          "other", "plain struct", [](vector_inputs & in, int) -> auto& {
            for (std::size_t k = 0; k < in.n; ++k) {
              const space& p = in.p.v[k];
              in.s.v[k].set(p.x * factor, p.y * factor, p.z * factor);
            }
            return in.s;
          });
}

void add_flat(long n, double reach) {
  const double m = double(n);
  row<vector_inputs>("vector, sum of lengths", n, {5 * m, 24 * m, true})
      .reach(reach)
      .ours([](vector_inputs& in, int) {
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) sum += in.d.v[k].lenld();
        return sum;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) {
          const flat& t = in.t.v[k];
          sum += std::sqrt(t.x * t.x + t.y * t.y);
        }
        return sum;
      });
  row<vector_inputs>("vector, sums", n, {2 * m, 72 * m})
      .reach(reach)
      .ours([](vector_inputs & in, int) -> auto& {
        for (std::size_t k = 0; k < in.n; ++k) in.f.v[k] = in.d.v[k] + in.e.v[k];
        return in.f;
      })
      .peer(
          "other", "plain struct", [](vector_inputs & in, int) -> auto& {
            for (std::size_t k = 0; k < in.n; ++k) {
              const flat &t = in.t.v[k], &u = in.u.v[k];
              in.w.v[k].set(t.x + u.x, t.y + u.y);
            }
            return in.w;
          });
  row<vector_inputs>("vector, scaling", n, {2 * m, 48 * m})
      .reach(reach)
      .ours([](vector_inputs & in, int) -> auto& {
        for (std::size_t k = 0; k < in.n; ++k) in.f.v[k] = in.d.v[k] * factor;
        return in.f;
      })
      .peer(
          "other", "plain struct", [](vector_inputs & in, int) -> auto& {
            for (std::size_t k = 0; k < in.n; ++k) {
              const flat& t = in.t.v[k];
              in.w.v[k].set(t.x * factor, t.y * factor);
            }
            return in.w;
          });
}

}  // namespace

void add_vectors() {
  for (long n : {1000L, 1000000L}) {
    add_space(n, n == 1000000 ? 1.0 : 0);
    add_flat(n, n == 1000000 ? 1.0 : 0);
  }
}

}  // namespace bench
