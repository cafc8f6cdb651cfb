// Writes the operations with their inputs and result bits to a file, or repeats those of a file and compares:
//   replay write FILE [DIVISOR]      DIVISOR: only so much of the cases
//   replay check FILE [SET]          SET: a name of simd/sets.h, in programs that have the static library
//
// Equal bits are demanded of every result.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "replay/record.h"

#if defined(REPLAY_INSTRUCTION_SETS)
#include "support/instruction_set.h"
#endif

namespace replay {
namespace {

const family* const families[] = {&angle_functions, &complex_numbers, &plane_vectors,    &space_vectors, &polar_vectors,
                                  &point_lists,     &real_matrices,   &complex_matrices, &real_squares,  &matches,
                                  &complex_squares, &polynomials,     &surfaces,         &geometry,      &analysis};

constexpr std::uint64_t magic = 0x31594C5052535354u;

// The names of the operations, so that a file of other operations is not taken for this one.
std::uint64_t fingerprint() {
  std::uint64_t hash = 14695981039346656037u;
  for (const family* f : families)
    for (std::size_t i = 0; i < f->count; ++i)
      for (const char* c = f->operations[i].name; *c; ++c)
        hash = (hash ^ static_cast<unsigned char>(*c)) * 1099511628211u;
  return hash;
}

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

// One case: the counts of its words in one word, then the inputs and the results.
void append(words& file, const words& inputs, const words& results) {
  file.push_back(inputs.size() | (results.size() << 32));
  file.insert(file.end(), inputs.begin(), inputs.end());
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
        append(file, inputs, out.results);
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
  unsigned long cases = 0, wrong = 0;
  void operator+=(const counts& c) {
    cases += c.cases;
    wrong += c.wrong;
  }
};

struct stored_case {
  const std::uint64_t *inputs, *results, *end;
  explicit stored_case(const std::uint64_t* p)
      : inputs(p + 1), results(inputs + (*p & 0xFFFFFFFF)), end(results + (*p >> 32)) {}
};

bool same(const words& results, const stored_case& c) {
  const auto n = static_cast<std::size_t>(c.end - c.results);
  return results.size() == n && (n == 0 || std::memcmp(results.data(), c.results, 8 * n) == 0);
}

void describe(const operation& op, const stored_case& c, const words& results) {
  std::printf("%s: wrong\n  inputs  ", op.name);
  for (const std::uint64_t* p = c.inputs; p != c.results && p != c.inputs + 8; ++p) std::printf(" %016" PRIx64, *p);
  std::printf("\n  stored  ");
  for (const std::uint64_t* p = c.results; p != c.end && p != c.results + 8; ++p) std::printf(" %016" PRIx64, *p);
  std::printf("\n  here    ");
  for (std::size_t i = 0; i < results.size() && i < 8; ++i) std::printf(" %016" PRIx64, results[i]);
  std::printf("\n");
}

void repeat(const operation& op, const stored_case& c, counts& count) {
  input in(c.inputs, c.results);
  output out;
  op.run(in, out);
  out.shorten();
  ++count.cases;
  if (!same(out.results, c) && ++count.wrong <= 3) describe(op, c, out.results);
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

void print(const char* name, const counts& c) { std::printf("%-36s %8lu %8lu\n", name, c.cases, c.wrong); }

int check(const char* path) {
  words file;
  if (!read(path, file)) {
    std::printf("%s is not a file of these operations\n", path);
    return 1;
  }
  std::printf("%-36s %8s %8s\n", "operation", "cases", "differ");
  counts all;
  const std::uint64_t* p = file.data() + 2;
  for (const family* f : families)
    for (std::size_t i = 0; i < f->count; ++i) {
      const operation& op = f->operations[i];
      counts c;
      const std::uint64_t cases = *p++;
      for (std::uint64_t k = 0; k < cases; ++k) {
        const stored_case stored(p);
        repeat(op, stored, c);
        p = stored.end;
      }
      print(op.name, c);
      all += c;
    }
  print("all", all);
  return p == file.data() + file.size() && all.wrong == 0 && all.cases > 0 ? 0 : 1;
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
