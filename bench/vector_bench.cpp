// Loops over arrays of the value classes, against plain structs of the same size.
#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <cstdlib>
#include <new>
#include <typeindex>

#include "inputs.h"

namespace bench {

namespace {

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

void assign(vector3d& v, double x, double y, double z) { v = vector3d(x, y, z); }
void assign(space& v, double x, double y, double z) { v = {0, x, y, z}; }
void assign(vector& v, double x, double y, double) { v = vector(x, y); }
void assign(flat& v, double x, double y, double) { v = {0, x, y}; }

template <class T>
struct array {
  T* first;
  std::size_t n;
  T& operator[](std::size_t k) const { return first[k]; }
};
template <class T>
values values_of(const array<T>& a) {
  values r;
  for (std::size_t k = 0; k < a.n; ++k) {
    r.insert(r.end(), {a[k].x, a[k].y});
    if constexpr (sizeof(T) == sizeof(space)) r.push_back(a[k].z);
  }
  return r;
}

// Whole large pages, which depend less on what a program did before.
struct block {
  static constexpr std::size_t page = std::size_t(2) << 20;
  explicit block(std::size_t size) {
    const std::size_t whole = (size + page - 1) / page * page;
    memory.reset(std::aligned_alloc(page, whole));
    if (!memory) throw std::bad_alloc();
#if defined(__linux__)
    madvise(memory.get(), whole, MADV_HUGEPAGE);
#endif
  }
  struct release {
    void operator()(void* p) const { std::free(p); }
  };
  std::unique_ptr<void, release> memory;
};

template <class T>
struct arrays {
  array<T> a, b, c;
};

// Two arrays to read and one to write. Loops over millions of vectors run at the rate of the
// memory, which depends on where they lie by more than these loops differ: so all types stand in
// the same memory, one after the other.
struct vector_inputs {
  explicit vector_inputs(long size) : n(std::size_t(size)), blocks{block(bytes()), block(bytes()), block(bytes())} {}

  // They are made when another type stood there: in the first of many calls.
  template <class T>
  arrays<T> of() {
    const arrays<T> all = {at<T>(0), at<T>(1), at<T>(2)};
    if (present == typeid(T)) return all;
    present = typeid(T);
    test::random_source r(50);
    for (std::size_t k = 0; k < n; ++k) {
      double c[6];
      for (double& v : c) v = r.uniform();
      assign(*new (all.a.first + k) T, c[0], c[1], c[2]);
      assign(*new (all.b.first + k) T, c[3], c[4], c[5]);
      assign(*new (all.c.first + k) T, 0, 0, 0);
    }
    return all;
  }
  // Not at the same place of their pages, where the stores would get in the way of the loads.
  template <class T>
  array<T> at(std::size_t i) {
    return {reinterpret_cast<T*>(static_cast<char*>(blocks[i].memory.get()) + i * apart), n};
  }
  std::size_t bytes() const { return n * sizeof(space) + 3 * apart; }

  static constexpr std::size_t apart = 1344;
  std::size_t n;
  int rotation = 1;
  block blocks[3];
  std::type_index present = typeid(void);
};

constexpr double factor = 1.25;

void add_space(long n) {
  const double m = double(n);
  row<vector_inputs>("vector3d, sum of dot products", n, {6 * m, 64 * m, traffic::read})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector3d> v = in.of<vector3d>();
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) sum += v.a[k] * v.b[k];
        return sum;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<space> v = in.of<space>();
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) {
          const space &p = v.a[k], &q = v.b[k];
          sum += p.x * q.x + p.y * q.y + p.z * q.z;
        }
        return sum;
      });
  row<vector_inputs>("vector3d, cross products", n, {9 * m, 96 * m})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector3d> v = in.of<vector3d>();
        for (std::size_t k = 0; k < in.n; ++k) v.c[k] = v.a[k].cross(v.b[k]);
        return v.c;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<space> v = in.of<space>();
        for (std::size_t k = 0; k < in.n; ++k) {
          const space &p = v.a[k], &q = v.b[k];
          v.c[k].set(p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x);
        }
        return v.c;
      });
  row<vector_inputs>("vector3d, sums", n, {3 * m, 96 * m})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector3d> v = in.of<vector3d>();
        for (std::size_t k = 0; k < in.n; ++k) v.c[k] = v.a[k] + v.b[k];
        return v.c;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<space> v = in.of<space>();
        for (std::size_t k = 0; k < in.n; ++k) {
          const space &p = v.a[k], &q = v.b[k];
          v.c[k].set(p.x + q.x, p.y + q.y, p.z + q.z);
        }
        return v.c;
      });
  row<vector_inputs>("vector3d, scaling", n, {3 * m, 64 * m})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector3d> v = in.of<vector3d>();
        for (std::size_t k = 0; k < in.n; ++k) v.c[k] = v.a[k] * factor;
        return v.c;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<space> v = in.of<space>();
        for (std::size_t k = 0; k < in.n; ++k) {
          const space& p = v.a[k];
          v.c[k].set(p.x * factor, p.y * factor, p.z * factor);
        }
        return v.c;
      });
}

void add_flat(long n) {
  const double m = double(n);
  row<vector_inputs>("vector, sum of lengths", n, {5 * m, 24 * m, traffic::read})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector> v = in.of<vector>();
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) sum += v.a[k].lenld();
        return sum;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<flat> v = in.of<flat>();
        double sum = 0;
        for (std::size_t k = 0; k < in.n; ++k) {
          const flat& t = v.a[k];
          sum += std::sqrt(t.x * t.x + t.y * t.y);
        }
        return sum;
      });
  row<vector_inputs>("vector, sums", n, {2 * m, 72 * m})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector> v = in.of<vector>();
        for (std::size_t k = 0; k < in.n; ++k) v.c[k] = v.a[k] + v.b[k];
        return v.c;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<flat> v = in.of<flat>();
        for (std::size_t k = 0; k < in.n; ++k) {
          const flat &t = v.a[k], &u = v.b[k];
          v.c[k].set(t.x + u.x, t.y + u.y);
        }
        return v.c;
      });
  row<vector_inputs>("vector, scaling", n, {2 * m, 48 * m})
      .in_headers()
      .ours([](vector_inputs& in, int) {
        const arrays<vector> v = in.of<vector>();
        for (std::size_t k = 0; k < in.n; ++k) v.c[k] = v.a[k] * factor;
        return v.c;
      })
      .peer("other", "plain struct", [](vector_inputs& in, int) {
        const arrays<flat> v = in.of<flat>();
        for (std::size_t k = 0; k < in.n; ++k) {
          const flat& t = v.a[k];
          v.c[k].set(t.x * factor, t.y * factor);
        }
        return v.c;
      });
}

}  // namespace

void add_vectors() {
  for (long n : {1000L, 1000000L}) {
    add_space(n);
    add_flat(n);
  }
}

}  // namespace bench
