// Writes the operations with their inputs and result bits to a file, or repeats those of a file and compares:
//   replay write FILE [DIVISOR]      DIVISOR: only so much of the cases
//   replay check FILE [SET]          SET: a name of simd/sets.h, in programs that have the static library
//
// Equal bits are demanded of every result. Where sin, cos, asin or acos take part, whose last bit depends on the C
// library, a result may differ if it is what the documented formula gives with this C library, bit for bit, and
// each of the calls that the formula made when the file was written, repeated here, is within one unit in the last
// place.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "plain/library.h"
#include "replay/record.h"

#if defined(REPLAY_INSTRUCTION_SETS)
#include "support/instruction_set.h"
#endif

namespace replay {
namespace {

const family* const families[] = {&complex_numbers,  &plane_vectors, &space_vectors, &polar_vectors, &point_lists,
                                  &real_matrices,    &complex_matrices, &real_squares, &matches, &complex_squares,
                                  &polynomials,      &surfaces, &geometry};

constexpr std::uint64_t magic = 0x31594C5052535354u;

// The names of the operations, so that a file of other operations is not taken for this one.
std::uint64_t fingerprint() {
  std::uint64_t hash = 14695981039346656037u;
  for (const family* f : families)
    for (std::size_t i = 0; i < f->count; ++i)
      for (const char* c = f->operations[i].name; *c; ++c) hash = (hash ^ static_cast<unsigned char>(*c)) * 1099511628211u;
  return hash;
}

using calls = std::vector<plain::library_call>;

// The result of the documented formula, with the calls of the C library that it made.
words evaluate_formula(const operation& op, input in, calls& made) {
  output out;
  plain::listener = &made;
  op.formula(in, out);
  plain::listener = nullptr;
  out.shorten();
  return out.results;
}

std::uint64_t distance(double a, double b) {
  if (result_bits(a) == result_bits(b)) return 0;
  if (a != a || b != b) return ~std::uint64_t{0};
  const auto key = [](double v) {
    const std::uint64_t u = bits_of(v);
    return (u >> 63) ? -static_cast<std::int64_t>(u & ~(std::uint64_t{1} << 63)) : static_cast<std::int64_t>(u);
  };
  const std::int64_t d = key(a) - key(b);
  return static_cast<std::uint64_t>(d < 0 ? -d : d);
}

// ---------------------------------------------------------------------------- the file

// A file is little-endian, whatever the processor is: a word as it lies in the file, and back.
std::uint64_t file_order(std::uint64_t word) {
  unsigned char bytes[8];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<unsigned char>(word >> (8 * i));
  std::memcpy(&word, bytes, sizeof word);
  return word;
}
std::uint64_t from_file_order(std::uint64_t word) {
  unsigned char bytes[8];
  std::memcpy(bytes, &word, sizeof word);
  word = 0;
  for (int i = 0; i < 8; ++i) word |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
  return word;
}

// ---------------------------------------------------------------------------- writing

// One case: the counts of its words in one word, then the inputs, the calls of the C library, the results.
void append(words& file, const words& inputs, const calls& made, const words& results) {
  file.push_back(inputs.size() | (made.size() << 20) | (results.size() << 40));
  file.insert(file.end(), inputs.begin(), inputs.end());
  for (const plain::library_call& c : made) {
    file.push_back(static_cast<std::uint64_t>(c.which));
    file.push_back(bits_of(c.argument));
    file.push_back(bits_of(c.value));
  }
  file.insert(file.end(), results.begin(), results.end());
}

int write(const char* path, unsigned divisor) {
  test::random_source random(20240229);
  words file = {magic, fingerprint()};
  unsigned long total = 0;
  for (const family* f : families)
    for (std::size_t i = 0; i < f->count; ++i) {
      const operation& op = f->operations[i];
      const unsigned cases = (op.cases + divisor - 1) / divisor;
      file.push_back(cases);
      for (unsigned k = 0; k < cases; ++k, ++total) {
        words inputs;
        output out;
        input in(random, inputs);
        op.run(in, out);
        out.shorten();
        calls made;
        if (op.formula &&
            evaluate_formula(op, input(inputs.data(), inputs.data() + inputs.size()), made) != out.results) {
          std::printf("%s: the result is not that of the formula\n", op.name);
          return 1;
        }
        append(file, inputs, made, out.results);
      }
    }
  for (std::uint64_t& word : file) word = file_order(word);
  std::FILE* out = std::fopen(path, "wb");
  const bool written = out && std::fwrite(file.data(), 8, file.size(), out) == file.size();
  if (!out || std::fclose(out) != 0 || !written) {
    std::printf("cannot write %s\n", path);
    return 1;
  }
  std::printf("%lu operations, %lu bytes\n", total, static_cast<unsigned long>(8 * file.size()));
  return 0;
}

// ---------------------------------------------------------------------------- comparing

struct counts {
  unsigned long cases = 0, equal = 0, by_library = 0, wrong = 0;
  void operator+=(const counts& c) {
    cases += c.cases;
    equal += c.equal;
    by_library += c.by_library;
    wrong += c.wrong;
  }
};

struct stored_case {
  const std::uint64_t *inputs, *made, *results, *end;
  explicit stored_case(const std::uint64_t* p)
      : inputs(p + 1), made(inputs + (*p & 0xFFFFF)), results(made + 3 * ((*p >> 20) & 0xFFFFF)), end(results + (*p >> 40)) {}
};

bool same(const words& results, const stored_case& c) {
  const auto n = static_cast<std::size_t>(c.end - c.results);
  return results.size() == n && (n == 0 || std::memcmp(results.data(), c.results, 8 * n) == 0);
}

// The calls of the C library and those that differ from the stored ones.
struct library_counts {
  unsigned long calls = 0, differing = 0, far = 0;
};

void compare_calls(const stored_case& c, library_counts& total) {
  for (const std::uint64_t* p = c.made; p != c.results; p += 3) {
    const double here = plain::call(static_cast<plain::function>(p[0]), from_bits(p[1]));
    const std::uint64_t d = distance(here, from_bits(p[2]));
    ++total.calls;
    total.differing += d == 1;
    total.far += d > 1;
  }
}

void describe(const operation& op, const stored_case& c, const words& results) {
  std::printf("%s: wrong\n  inputs  ", op.name);
  for (const std::uint64_t* p = c.inputs; p != c.made && p != c.inputs + 8; ++p) std::printf(" %016" PRIx64, *p);
  std::printf("\n  stored  ");
  for (const std::uint64_t* p = c.results; p != c.end && p != c.results + 8; ++p) std::printf(" %016" PRIx64, *p);
  std::printf("\n  here    ");
  for (std::size_t i = 0; i < results.size() && i < 8; ++i) std::printf(" %016" PRIx64, results[i]);
  std::printf("\n");
}

void repeat(const operation& op, const stored_case& c, counts& count, library_counts& library) {
  input in(c.inputs, c.made);
  output out;
  op.run(in, out);
  out.shorten();
  ++count.cases;
  library_counts here;
  compare_calls(c, here);
  library.calls += here.calls;
  library.differing += here.differing;
  library.far += here.far;
  if (same(out.results, c)) {
    ++count.equal;
    return;
  }
  calls made;
  if (op.formula && here.far == 0 && evaluate_formula(op, input(c.inputs, c.made), made) == out.results) {
    ++count.by_library;
    return;
  }
  if (++count.wrong <= 3) describe(op, c, out.results);
}

bool read(const char* path, words& file) {
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return false;
  std::uint64_t block[4096];
  for (std::size_t n; (n = std::fread(block, 8, 4096, f)) != 0;) file.insert(file.end(), block, block + n);
  std::fclose(f);
  for (std::uint64_t& word : file) word = from_file_order(word);
  return file.size() > 2 && file[0] == magic && file[1] == fingerprint();
}

void print(const char* name, const counts& c) {
  std::printf("%-36s %8lu %8lu %8lu %6lu\n", name, c.cases, c.equal, c.by_library, c.wrong);
}

int check(const char* path) {
  words file;
  if (!read(path, file)) {
    std::printf("%s is not a file of these operations\n", path);
    return 1;
  }
  std::printf("%-36s %8s %8s %8s %6s\n", "operation", "cases", "equal", "C lib", "wrong");
  counts all;
  library_counts library;
  const std::uint64_t* p = file.data() + 2;
  for (const family* f : families)
    for (std::size_t i = 0; i < f->count; ++i) {
      const operation& op = f->operations[i];
      counts c;
      const std::uint64_t cases = *p++;
      for (std::uint64_t k = 0; k < cases; ++k) {
        const stored_case stored(p);
        repeat(op, stored, c, library);
        p = stored.end;
      }
      print(op.name, c);
      all += c;
    }
  print("all", all);
  std::printf("%lu calls of sin, cos, asin and acos: %lu differ by one unit in the last place, %lu by more\n", library.calls,
              library.differing, library.far);
  return p == file.data() + file.size() && all.wrong == 0 && library.far == 0 && all.cases > 0 ? 0 : 1;
}

// Takes over the limit of the environment, which the Windows module cannot be given.
bool limit_instruction_sets() {
#if defined(REPLAY_INSTRUCTION_SETS)
  return test::limit_by_environment();
#else
  return true;
#endif
}

// Chooses a build of the kernels; otherwise the code to end with: 77 where the processor does not have it.
int choose_instruction_set(const char* name) {
#if defined(REPLAY_INSTRUCTION_SETS)
  tessarn::detail::isa set;
  if (test::set_of(name, set)) return test::choose(set) ? 0 : 77;
#endif
  std::printf("no instruction set to choose: %s\n", name);
  return 2;
}

}  // namespace
}  // namespace replay

int main(int argc, char** argv) {
  if (!replay::limit_instruction_sets()) return 2;
  if (argc >= 3 && std::strcmp(argv[1], "write") == 0)
    return replay::write(argv[2], argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 1);
  if (argc >= 3 && std::strcmp(argv[1], "check") == 0) {
    if (argc > 3)
      if (const int code = replay::choose_instruction_set(argv[3])) return code;
    return replay::check(argv[2]);
  }
  std::printf("usage: replay write FILE [DIVISOR] | replay check FILE [SET]\n");
  return 2;
}
