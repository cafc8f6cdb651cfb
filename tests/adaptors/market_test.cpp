// Matrix Market files.
#include <tessarn/files.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/wide_sizes.h"

namespace {

using namespace tessarn::files;

const std::string banner = "%%MatrixMarket matrix ";

// Row by row.
std::vector<double> entries(const std::string& text) {
  const real_matrix r = parse_matrix(banner + text);
  EXPECT_EQ(r.state.message(), "") << text;
  return {r.matrix.getData(), r.matrix.getData() + r.matrix.getWidth() * r.matrix.getHeight()};
}

std::string complaint(const std::string& text) { return parse_matrix(banner + text).state.message(); }

using numbers = std::vector<double>;

TEST(MatrixMarket, ReadsArrays) {
  EXPECT_EQ(entries("array real general\n% c\n\n2 3\n1\n4\n2\n5\n3\n6.5\n"), (numbers{1, 2, 3, 4, 5, 6.5}));
  EXPECT_EQ(entries("array integer symmetric\r\n2 2\r\n1\r\n2\r\n3\r\n"), (numbers{1, 2, 2, 3}));
  EXPECT_EQ(entries("array real skew-symmetric\n3 3\n1\n2\n3\n"), (numbers{0, -1, -2, 1, 0, -3, 2, 3, 0}));
  EXPECT_EQ(entries("array real general\n0 5\n"), numbers());
}

TEST(MatrixMarket, ReadsCoordinates) {
  EXPECT_EQ(entries("coordinate real general\n2 3 2\n1 3 1.5\n2 1 -2\n"), (numbers{0, 0, 1.5, -2, 0, 0}));
  EXPECT_EQ(entries("coordinate real symmetric\n2 2 2\n1 1 4\n2 1 3\n"), (numbers{4, 3, 3, 0}));
  EXPECT_EQ(entries("coordinate integer skew-symmetric\n2 2 1\n2 1 3\n"), (numbers{0, -3, 3, 0}));
  EXPECT_EQ(entries("coordinate pattern general\n2 2 2\n1 2\n2 1\n"), (numbers{0, 1, 1, 0}));
  EXPECT_EQ(entries("coordinate real general\n1 1 2\n1 1 2\n1 1 3\n"), (numbers{5}));
}

TEST(MatrixMarket, ReadsComplexEntries) {
  const complex_matrix c = parse_complex_matrix(banner + "coordinate complex hermitian\n2 2 2\n1 1 1 0\n2 1 3 4\n");
  ASSERT_EQ(c.state.message(), "");
  EXPECT_EQ(c.matrix.get(0, 1).im, 4);
  EXPECT_EQ(c.matrix.get(1, 0).re, 3);
  EXPECT_EQ(c.matrix.get(1, 0).im, -4);
  const complex_matrix s = parse_complex_matrix(banner + "array complex skew-symmetric\n2 2\n3 4\n");
  EXPECT_EQ(s.matrix.get(1, 0).re, -3);
  EXPECT_EQ(s.matrix.get(1, 0).im, -4);
  EXPECT_EQ(parse_complex_matrix(banner + "array real general\n1 1\n2\n").matrix.get(0, 0).re, 2);
  EXPECT_EQ(complaint("array complex general\n1 1\n2 3\n"), "the entries are complex");
}

TEST(MatrixMarket, RefusesWhatIsWrong) {
  EXPECT_EQ(parse_matrix("hello").state.message(), "line 1: this is no Matrix Market file");
  EXPECT_EQ(parse_matrix("").state.message(), "this is no Matrix Market file");
  EXPECT_EQ(complaint("array quaternion general\n"), "line 1: 'quaternion' is no known kind of entry");
  EXPECT_EQ(complaint("array real hermitian\n"), "line 1: 'hermitian' is no known symmetry of such entries");
  EXPECT_EQ(complaint("array pattern general\n"), "line 1: an array has no pattern");
  EXPECT_EQ(complaint("array real symmetric\n2 3\n"), "line 2: a symmetric matrix is not square");
  EXPECT_EQ(complaint("array real general\n2\n"), "line 2:2: '' is no whole number from 0 on");
  EXPECT_EQ(complaint("array real general\n2 -3\n"), "line 2:3: '-3' is no whole number from 0 on");
  EXPECT_EQ(complaint("array real general\n1 2\n1\n"), "line 3: the file ends before its last entry");
  EXPECT_EQ(complaint("array real general\n1 1\n1\n2\n"), "line 4: something stands behind the last entry");
  EXPECT_EQ(complaint("array real general\n1 1\nx\n"), "line 3:1: 'x' is not a number");
  EXPECT_EQ(complaint("array real general\n1 1\n1e999\n"), "line 3:1: '1e999' is not a finite number");
  EXPECT_EQ(complaint("array real general\n1 1\n1 2\n"), "line 3:3: more numbers than the kind of matrix has");
  EXPECT_EQ(complaint("coordinate real general\n2 2 1\n3 1 1\n"), "line 3: an entry lies outside the matrix");
  EXPECT_EQ(complaint("coordinate real general\n2 2 1\n0 1 1\n"), "line 3: an entry lies outside the matrix");
  EXPECT_EQ(complaint("coordinate real symmetric\n2 2 1\n1 2 1\n"),
            "line 3: an entry above the diagonal of a symmetric matrix");
  EXPECT_EQ(complaint("coordinate real skew-symmetric\n2 2 1\n1 1 1\n"),
            "line 3: an entry on the diagonal of a skew-symmetric matrix");
}

// Three lines can announce more than the memory holds.
TEST(MatrixMarket, RefusesHugeSizes) {
  const std::string head = "coordinate real general\n",
                    too_many = "line 2: the matrix has more entries than are allowed";
  EXPECT_EQ(complaint(head + "100000 100000 1\n"), too_many);
  EXPECT_EQ(complaint(head + "4294967296 1 1\n"),
            tests::by_size(too_many.c_str(), "line 2:1: '4294967296' is no whole number from 0 on"));
  EXPECT_EQ(complaint(head + "18446744073709551615 18446744073709551615 0\n"),
            tests::by_size(too_many.c_str(), "line 2:1: '18446744073709551615' is no whole number from 0 on"));
  EXPECT_EQ(complaint("array real general\n10000 9999\n1\n"), "line 2: the file ends before its last entry");
  matrix_options o;
  o.most_entries = 3;
  EXPECT_FALSE(parse_matrix(banner + "coordinate real general\n2 2 0\n", o).state.ok());
  EXPECT_TRUE(parse_matrix(banner + "coordinate real general\n1 3 0\n", o).state.ok());
}

TEST(MatrixMarket, ReadsWhatItWrites) {
  mat<long double> m{{0.1, -2, 3}, {4, 1e300, 5e-324}};
  const real_matrix r = parse_matrix(format_matrix_market(tessarn::matrix_view(m)));
  ASSERT_EQ(r.state.message(), "");
  EXPECT_EQ(r.matrix.getWidth(), 3u);
  EXPECT_TRUE(r.matrix == m);
  mat<cplx> c{{cplx(0.1, 2), cplx(3, -4)}};
  const complex_matrix z = parse_complex_matrix(format_matrix_market(tessarn::complex_view(c)));
  ASSERT_EQ(z.state.message(), "");
  EXPECT_EQ(z.matrix.get(1, 0).im, -4);
}

}  // namespace
