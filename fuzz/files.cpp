// Files of every format, forged and cut: no crash, no endless loop, no result beside a failure, and what is written
// reads back with the same bits.
#include <tessarn/files.h>

#include "input.h"

namespace {

using namespace tessarn::files;

// The first byte chooses the format and the second one the options; the rest is the file.
csv_options table_options(std::uint8_t choice) {
  constexpr char separators[] = {0, ',', ';', '\t', ' ', '"', '\n', '1'};
  csv_options o;
  o.separator = separators[choice & 7];
  o.decimal = (choice & 8) != 0 ? ',' : '\0';
  o.skip_bad_rows = (choice & 16) != 0;
  o.keep_not_finite = (choice & 32) != 0;
  o.comment = (choice & 64) != 0 ? '\0' : '#';
  if ((choice & 128) != 0) o.columns = {"2", "x"};
  return o;
}

bool same(const std::vector<tessarn::real>& a, const tessarn::real* b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] || std::signbit(a[i]) != std::signbit(b[i])) return false;
  return true;
}

void check_table(std::string_view text, const csv_options& o) {
  const table t = parse_csv(text, o);
  fuzz::require(t.values.size() == t.rows() * t.columns, "a table has as many values as its rows have cells");
  fuzz::require(t.state.ok() == t.state.message().empty(), "a failure has words");
  fuzz::require(t.state.message().find('\n') == std::string::npos, "a message is one line");
  if (!t.state.ok() || o.keep_not_finite || t.rows() == 0) return;
  const std::string written =
      detail::format_table(t.rows(), t.columns, {}, [&t](std::size_t r, std::size_t c) { return t.at(r, c); });
  csv_options plain;
  plain.separator = ',';
  plain.decimal = '.';
  plain.header = header::no;
  const table again = parse_csv(written, plain);
  fuzz::require(again.state.ok() && again.values.size() == t.values.size(), "what is written can be read");
  fuzz::require(same(t.values, again.values.data()), "every number reads back with its bits");
}

void check_cloud(const space_cloud& c) {
  for (const vector3d& p : c.points)
    fuzz::require(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z), "points are finite");
  if (!c.state.ok()) return;
  const space_cloud again = parse_ply(format_ply(tessarn::space_points(c.points)));
  fuzz::require(again.state.ok() && again.points.size() == c.points.size(), "a written cloud can be read");
}

void check_matrix(std::string_view bytes, bool keep) {
  matrix_options o;
  o.most_entries = 10000;
  o.keep_not_finite = keep;
  const real_matrix m = parse_matrix(bytes, o);
  if (m.state.ok()) {
    const real_matrix again = parse_matrix(format_matrix_market(tessarn::matrix_view(m.matrix)), o);
    fuzz::require(again.state.ok() && again.matrix.getWidth() == m.matrix.getWidth(), "a written matrix can be read");
  }
  const complex_matrix c = parse_complex_matrix(bytes, o);
  fuzz::require(!m.state.ok() || c.state.ok(), "a real matrix can be read as a complex one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  switch (data[0] % 5) {
    case 0: check_table(bytes, table_options(data[1])); break;
    case 1: check_cloud(parse_ply("ply\nformat " + std::string(bytes))); break;
    case 2: check_cloud(parse_xyz(bytes)); break;
    case 3: check_matrix("%%MatrixMarket matrix " + std::string(bytes), data[1] % 2 != 0); break;
    default: {
      check_matrix("\x93NUMPY" + std::string(bytes), data[1] % 2 != 0);
      const array a = parse_npy("\x93NUMPY" + std::string(bytes));
      fuzz::require(a.state.ok() || a.values.empty(), "a failed array has no values");
    }
  }
  return 0;
}
