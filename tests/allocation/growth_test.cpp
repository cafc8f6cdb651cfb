// A growing point list: what it tells of its capacity, what it asks of the memory, and whose arrays it trusts.
#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <memory>
#include <new>
#include <vector>

#include "support/failing_new.h"
#include "support/lists.h"
#include "vectors/point_array.h"

namespace {

using tessarn::ulong;
using test::live_blocks;
using test::requested_bytes;

vector point(ulong i) { return vector(static_cast<tessarn::real>(i), -static_cast<tessarn::real>(i)); }

void add_points(vectormat& l, ulong n) {
  for (ulong i = 0; i < n; ++i) l.add(point(l.count));
}

void expect_points(vectormat& l, ulong n) {
  ASSERT_EQ(l.count, n);
  for (ulong i = 0; i < n; ++i) ASSERT_TRUE(l.points[i].x == i && l.points[i].y == -static_cast<tessarn::real>(i)) << i;
  for (ulong i = n; i < l.capacity; ++i) ASSERT_TRUE(l.points[i].x == 0 && l.points[i].y == 0) << i;
}

TEST(ListGrowth, CapacityGrowsByTheStep) {
  const long live = live_blocks();
  {
    vectormat l;
    for (ulong n = 1; n <= 20000; ++n) {
      l.add(point(n - 1));
      ASSERT_EQ(l.capacity, (n + 1023) / 1024 * 1024);
      if (n % 1024 == 1 || n % 1024 == 0) expect_points(l, n);
    }
    l.DeleteErrors(0);
    EXPECT_EQ(l.capacity, 20000u);
    l.add(point(l.count));
    EXPECT_EQ(l.capacity, 21024u);
    expect_points(l, 20001);
    l.empty();
    l.add(point(0));
    EXPECT_EQ(l.capacity, 1024u);
  }
  EXPECT_EQ(live_blocks(), live);
}

long long bytes_of_growing(ulong n) {
  const long long before = requested_bytes();
  vectormat l;
  add_points(l, n);
  return requested_bytes() - before;
}

// The memory asked for, all in all, is what growing costs.
TEST(ListGrowth, CostsWhatThePointsCost) {
  for (ulong n : {10000u, 100000u, 1000000u}) {
    const long long once = bytes_of_growing(n), twice = bytes_of_growing(2 * n);
    const auto size = static_cast<long long>(sizeof(vector));
    EXPECT_LE(once, 4 * size * n + 4096) << n;
    EXPECT_LE(twice, 4 * size * 2 * n + 4096) << n;
  }
}

// The count of the array stands in front of the points, which keep their alignment.
constexpr std::size_t in_front = sizeof(std::size_t) > alignof(vector) ? sizeof(std::size_t) : alignof(vector);

TEST(ListGrowth, ShortListsHaveNoMoreMemoryThanTheyShow) {
  const auto block = static_cast<long long>(1024 * sizeof(vector) + in_front);
  EXPECT_EQ(bytes_of_growing(1), block);
  EXPECT_EQ(bytes_of_growing(1024), block);
  vectormat l, copied;
  add_points(l, 5000);
  const long long before = requested_bytes();
  copied = l;
  EXPECT_EQ(requested_bytes() - before, static_cast<long long>(5120 * sizeof(vector) + in_front));
  EXPECT_EQ(copied.capacity, 5120u);
}

TEST(ListGrowth, MovesAndCopiesGrowOn) {
  vectormat l;
  add_points(l, 5000);
  vectormat copied(l), moved(static_cast<vectormat&&>(l));
  add_points(copied, 4000);
  add_points(moved, 4000);
  add_points(l, 3000);
  expect_points(copied, 9000);
  expect_points(moved, 9000);
  expect_points(l, 3000);
  copied = static_cast<vectormat&&>(moved);
  add_points(copied, 4000);
  expect_points(copied, 13000);
}

TEST(ListGrowth, LongListsGrowInTheirPlace) {
  vectormat l;
  add_points(l, 4097);
  const vector* const place = l.points;
  add_points(l, 4095);
  EXPECT_EQ(l.points, place);
  l.add(point(l.count));
  EXPECT_NE(l.points, place);
}

// The compiler keeps the number of elements where it is looked for.
TEST(ListGrowth, ElementCounts) {
  for (std::size_t n : {1u, 77u, 8192u}) {
    const std::unique_ptr<vector[]> points(new vector[n]);
    EXPECT_EQ(tessarn::detail::element_count(points.get()), n);
  }
}

// The room that the library remembers belongs to an array that has been released and whose address the program's own
// array has now.
TEST(ListGrowth, AnotherArrayAtAKnownAddressIsNotTrusted) {
  const long live = live_blocks();
  {
    vectormat l;
    l.points = new vector[5120];
    tessarn::detail::note_room(l.points, 8192);
    for (ulong i = 0; i < 5120; ++i) l.points[i] = point(i);
    l.count = l.capacity = 5120;
    const vector* const own = l.points;
    l.add(point(5120));
    EXPECT_NE(l.points, own);
    expect_points(l, 5121);
    EXPECT_EQ(l.capacity, 6144u);
  }
  EXPECT_EQ(live_blocks(), live);
}

TEST(ListGrowth, AChangedCapacityIsBelieved) {
  vectormat l;
  add_points(l, 5000);
  l.capacity = 5000;
  l.add(point(5000));
  EXPECT_EQ(l.capacity, 6024u);
  expect_points(l, 5001);
  // Points that the program forgets and the list meets again.
  l.count = 3000;
  l.capacity = 4000;
  add_points(l, 1500);
  EXPECT_EQ(l.capacity, 5024u);
  expect_points(l, 4500);
}

TEST(ListGrowth, Failures) {
  const long live = live_blocks();
  for (ulong full : {1024u, 2048u, 5120u, 8192u}) {
    long threw = 0;
    for (long k = 0; k < 4; ++k) {
      vectormat l;
      add_points(l, full);
      const test::outcome o = test::run_failing(k, [&] { l.add(point(l.count)); });
      threw += o.threw;
      EXPECT_EQ(l.capacity, o.threw ? full : full + 1024);
      expect_points(l, o.threw ? full : full + 1);
      add_points(l, 3000);
      expect_points(l, (o.threw ? full : full + 1) + 3000);
    }
    // Where memory for twice the room is missing, the plain step is tried.
    EXPECT_EQ(threw, full == 1024 ? 1 : 0) << full;
    vectormat l;
    add_points(l, full);
    if (full != 8192) continue;
    std::vector<std::unique_ptr<vectormat>> others;  // so many long lists that the table of their arrays grows
    long failures = 0;
    for (int i = 0; i < 300; ++i) {
      others.emplace_back(new vectormat);
      add_points(*others.back(), 2048);
      const test::outcome o = test::run_failing(1, [&] { others.back()->add(point(2048)); });
      EXPECT_EQ(o.threw, o.failed);
      failures += o.threw;
      expect_points(*others.back(), o.threw ? 2048 : 2049);
      if (o.threw) others.back()->add(point(2048));
    }
    EXPECT_GT(failures, 5);
  }
  EXPECT_EQ(live_blocks(), live);
}

// The counts of a list are 32 bits: one that could not count its points is not made.
TEST(ListGrowth, CountsBeyond32Bits) {
  vectormat l;
  add_points(l, 3);
  for (ulong full : {4294966272u, 4294966273u, 4294967295u}) {
    for (ulong capacity : {full, tessarn::ulong{3}}) {
      l.count = full;
      l.capacity = capacity;
      EXPECT_THROW(l.add(point(3)), std::bad_array_new_length);
      EXPECT_EQ(l.count, full);
      EXPECT_EQ(l.capacity, capacity);
    }
  }
  l.count = 3;
  l.capacity = 1024;
  expect_points(l, 3);
}

// The last test, since the table goes on to know the arrays that a program has released itself.
TEST(ListGrowth, ArraysOfTheProgramInAList) {
  const long live = live_blocks();
  {
    for (int round = 0; round < 6; ++round) {
      vectormat l;
      add_points(l, 5000);
      delete[] l.points;
      l.points = new vector[5000];
      for (ulong i = 0; i < 5000; ++i) l.points[i] = point(i);
      l.capacity = round % 2 ? 5000 : 17;
      add_points(l, 5000);
      EXPECT_EQ(l.capacity, 5000u + 5 * 1024);
      expect_points(l, 10000);
    }
  }
  EXPECT_EQ(live_blocks(), live);
}

}  // namespace
