// How much memory a call takes, in the raw results beside the times.
#pragma once

namespace bench {

struct memory_use {
  double allocations = 0;
  double peak = 0;  // the most bytes that were held at once besides those held before
};

void start_counting_memory();
memory_use stop_counting_memory();

}  // namespace bench
