// Runs the benchmarks on one core, with OpenBLAS on one thread, and names everything that was
// measured. With --scaling as its first argument it times the growth of operations instead of the table.
#include <CGAL/version.h>
#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_version.h>
#include <sched.h>

#include <Eigen/Core>
#include <boost/version.hpp>
#include <fstream>
#include <string>

#include "rows.h"
#include "support.h"
#include "tessarn/version.h"

// The header of OpenBLAS cannot be included beside that of GSL.
extern "C" {
void openblas_set_num_threads(int threads);
char* openblas_get_config();
void ilaver_(int* major, int* minor, int* patch);
}

namespace {

// The last core we may use: interrupts and other programs prefer the first.
int pin_to_one_core() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return -1;
  for (int core = CPU_SETSIZE - 1; core >= 0; --core) {
    if (!CPU_ISSET(core, &allowed)) continue;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(core, &one);
    return sched_setaffinity(0, sizeof one, &one) == 0 ? core : -1;
  }
  return -1;
}

std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

std::string version(int a, int b, int c) {
  return std::to_string(a) + "." + std::to_string(b) + "." + std::to_string(c);
}

void describe(int core) {
  int major = 0, minor = 0, patch = 0;
  ilaver_(&major, &minor, &patch);
  using benchmark::AddCustomContext;
  AddCustomContext("processor", processor());
  AddCustomContext("core", std::to_string(core));
  AddCustomContext("compiler", "g++ " __VERSION__);
  AddCustomContext("flags", BENCH_FLAGS);
  AddCustomContext("library flags", BENCH_LIBRARY_FLAGS);
  AddCustomContext("instruction set", bench::detail::set_name(bench::detail::best_set()));
  AddCustomContext("version Tessarn", version(TESSARN_VERSION_MAJOR, TESSARN_VERSION_MINOR, TESSARN_VERSION_PATCH));
  AddCustomContext("version Eigen", version(EIGEN_WORLD_VERSION, EIGEN_MAJOR_VERSION, EIGEN_MINOR_VERSION));
  AddCustomContext("version OpenBLAS", openblas_get_config());
  AddCustomContext("version LAPACK", version(major, minor, patch));
  AddCustomContext("version GSL", gsl_version);
  AddCustomContext("version Boost", version(BOOST_VERSION / 100000, BOOST_VERSION / 100 % 1000, BOOST_VERSION % 100));
  AddCustomContext("version CGAL", CGAL_VERSION_STR);
}

void add_table() {
  bench::add_machine_limits();
  bench::add_products();
  bench::add_solves();
  bench::add_inversions();
  bench::add_decompositions();
  bench::add_gram();
  bench::add_least_squares();
  bench::add_transforms();
  bench::add_complex();
  bench::add_fits();
  bench::add_curves();
  bench::add_searches();
  bench::add_surfaces();
  bench::add_lists();
  bench::add_planes();
  bench::add_vectors();
  bench::add_angles();
  bench::add_shapes();
}

}  // namespace

int main(int argc, char** argv) {
  const bool scaling = argc > 1 && std::string(argv[1]) == "--scaling";
  if (scaling) {
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  const int core = pin_to_one_core();
  openblas_set_num_threads(1);
  gsl_set_error_handler_off();
  describe(core);

  if (scaling) {
    bench::time_best_set_only();
    bench::add_scaling();
  } else {
    add_table();
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
