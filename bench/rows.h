// The rows of the table, one function a file of benchmarks, in the order of the table.
#pragma once

namespace bench {

void add_machine_limits();
void add_products();
void add_solves();
void add_inversions();
void add_decompositions();
void add_gram();
void add_least_squares();
void add_transforms();
void add_complex();
void add_fits();
void add_curves();
void add_searches();
void add_surfaces();
void add_lists();
void add_planes();
void add_vectors();
void add_angles();
void add_shapes();

// Not in the table: the same operations over three decades of sizes, for the growth of their times.
void add_scaling();

}  // namespace bench
