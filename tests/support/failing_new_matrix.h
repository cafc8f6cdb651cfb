// Allocation that fails on demand, and a count of the blocks in use. The replacement of operator
// new is in the .cpp file beside this header and holds for the whole test program.
#pragma once

namespace test {

// Blocks from operator new that have not been released.
long blocks_in_use();

// While alive, lets `allowed` allocations succeed and all later ones throw std::bad_alloc.
class allocation_limit {
 public:
  explicit allocation_limit(long allowed);
  ~allocation_limit();
  allocation_limit(const allocation_limit&) = delete;
  allocation_limit& operator=(const allocation_limit&) = delete;
};

}  // namespace test
