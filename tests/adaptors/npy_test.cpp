// NumPy's files: every type, order and version, and everything that can be wrong with them.
#include <tessarn/files.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/wide_sizes.h"

namespace {

using namespace tessarn::files;

std::string npy(const std::string& dictionary, const std::string& data, char version = 1) {
  std::string length(version == 1 ? 2 : 4, '\0');
  length[0] = static_cast<char>(dictionary.size() & 0xFF);
  length[1] = static_cast<char>(dictionary.size() >> 8);
  return std::string("\x93NUMPY", 6) + version + '\0' + length + dictionary + data;
}

std::string header(const std::string& type, const std::string& shape, const char* fortran = "False") {
  return "{'descr': '" + type + "', 'fortran_order': " + fortran + ", 'shape': " + shape + ", }\n";
}

template <class Number>
std::string bytes(std::vector<Number> list, bool big_endian) {
  std::string s;
  for (const Number v : list) {
    std::string one(sizeof v, '\0');
    std::memcpy(one.data(), &v, sizeof v);
    const std::uint16_t probe = 1;
    const bool machine_is_big = *reinterpret_cast<const unsigned char*>(&probe) == 0;
    s += machine_is_big == big_endian ? one : std::string(one.rbegin(), one.rend());
  }
  return s;
}

template <class Number>
void reads(const char* type, const std::vector<Number>& list) {
  for (const bool big : {false, true}) {
    const auto a = parse_npy(
        npy(header((big ? '>' : '<') + std::string(type), "(" + std::to_string(list.size()) + ",)"), bytes(list, big)));
    ASSERT_EQ(a.state.message(), "") << type;
    ASSERT_EQ(a.values.size(), list.size());
    for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(a.values[i], static_cast<double>(list[i])) << type;
  }
}

TEST(Npy, ReadsEveryTypeInBothByteOrders) {
  reads<double>("f8", {0.1, -1e300, 5e-324});
  reads<float>("f4", {0.1f, -1e30f, 1e-45f});
  reads<std::int8_t>("i1", {-128, 127, -1});
  reads<std::int16_t>("i2", {-32768, 32767, -1});
  reads<std::int32_t>("i4", {INT32_MIN, INT32_MAX, -1});
  reads<std::int64_t>("i8", {INT64_MIN, INT64_C(1) << 53, -1});
  reads<std::uint8_t>("u1", {255, 0});
  reads<std::uint16_t>("u2", {65535, 0});
  reads<std::uint32_t>("u4", {UINT32_MAX, 0});
  reads<std::uint64_t>("u8", {UINT64_C(1) << 63, 0});
  reads<std::uint8_t>("b1", {1, 0});
}

TEST(Npy, RefusesIntegersThatNoRealEquals) {
  const auto a = parse_npy(npy(header("<i8", "(2,)"), bytes<std::int64_t>({1, (INT64_C(1) << 53) + 1}, false)));
  EXPECT_EQ(a.state.message(), "element 1 is an integer that no real equals");
  EXPECT_TRUE(a.values.empty());
  EXPECT_FALSE(parse_npy(npy(header("<u8", "(1,)"), bytes<std::uint64_t>({UINT64_MAX}, false))).state.ok());
}

TEST(Npy, ReadsFortranOrder) {
  const auto a = parse_npy(npy(header("<f8", "(2, 3)", "True"), bytes<double>({1, 4, 2, 5, 3, 6}, false)));
  ASSERT_EQ(a.state.message(), "");
  EXPECT_EQ(std::vector<double>(a.values.begin(), a.values.end()), (std::vector<double>{1, 2, 3, 4, 5, 6}));
  // Three dimensions: element (i, j, k) is 100 i + 10 j + k.
  std::vector<double> stored;
  for (int k = 0; k < 4; ++k)
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 2; ++i) stored.push_back(100 * i + 10 * j + k);
  const auto b = parse_npy(npy(header("<f8", "(2, 3, 4)", "True"), bytes(stored, false)));
  ASSERT_EQ(b.state.message(), "");
  EXPECT_EQ(b.values[(1 * 3 + 2) * 4 + 3], 123);
  EXPECT_EQ(b.values[(0 * 3 + 1) * 4 + 2], 12);
}

TEST(Npy, ReadsEveryVersionAndOrderOfEntries) {
  const std::string data = bytes<double>({7}, false);
  for (const char version : {'\1', '\2', '\3'})
    EXPECT_EQ(parse_npy(npy(header("<f8", "(1, 1)"), data, version)).values[0], 7);
  EXPECT_EQ(parse_npy(npy("{\"shape\":(1L,),\"fortran_order\":False,\"descr\":\"<f8\"}", data)).values[0], 7);
  EXPECT_TRUE(parse_npy(npy(header("<f8", "()"), data)).shape.empty());
  EXPECT_EQ(parse_npy(npy(header("<f8", "(0, 99999999999)"), "")).state.message(),
            tests::by_size("", "the header of the .npy file has no valid shape"));
  EXPECT_FALSE(parse_npy(npy(header("<f8", "(1,)"), data, 4)).state.ok());
  EXPECT_FALSE(parse_npy(npy(header("<f8", "(1,)"), data, '\0')).state.ok());
}

TEST(Npy, ReadsComplexNumbers) {
  const auto a = parse_npy(npy(header("<c8", "(2,)"), bytes<float>({1, 2, 3, 4}, false)));
  ASSERT_EQ(a.state.message(), "");
  EXPECT_TRUE(a.complex);
  EXPECT_EQ(a.values.size(), 4u);
  EXPECT_EQ(parse_complex_matrix(npy(header("<c16", "(1, 2)"), bytes<double>({1, 2, 3, 4}, false))).matrix.get(1, 0).im,
            4);
}

TEST(Npy, RefusesWhatItCannotHold) {
  const std::string data = bytes<double>({7}, false);
  const auto complaint = [](const std::string& s) { return parse_npy(s).state.message(); };
  EXPECT_EQ(complaint(""), "this is no .npy file");
  EXPECT_EQ(complaint("\x93NUMPY"), "the file ends within its header");
  EXPECT_EQ(complaint(npy(header("<f2", "(1,)"), data)), "arrays of the type '<f2' are not read");
  EXPECT_EQ(complaint(npy(header("|O", "(1,)"), data)), "arrays of the type '|O' are not read");
  EXPECT_EQ(complaint(npy("{'descr': [('x', '<f8')], 'fortran_order': False, 'shape': (1,), }", data)),
            "arrays of records are not read");
  EXPECT_EQ(complaint(npy(header("<f8", "(2,)"), data)), "the file ends before the array that its header announces");
  EXPECT_EQ(complaint(npy(header("<f8", "(4294967296, 4294967296)"), data)),
            tests::by_size("the file ends before the array that its header announces",
                           "the header of the .npy file has no valid shape"));
  EXPECT_EQ(complaint(npy(header("<f8", "(1,)"), data + "x")), "something stands behind the array");
  EXPECT_EQ(complaint(npy("{'descr': '<f8'}", data)), "the header of the .npy file lacks an entry");
  EXPECT_EQ(complaint(npy("{'descr'", data)), "the header of the .npy file is no dictionary");
  EXPECT_EQ(complaint(npy(header("<f8", "(-1,)"), data)), "the header of the .npy file has no valid shape");
}

// Every beginning of a good file is refused, and none reads beyond its end (the address sanitizer looks).
TEST(Npy, RefusesEveryCutFile) {
  const std::string whole = npy(header("<f8", "(2, 2)"), bytes<double>({1, 2, 3, 4}, false));
  ASSERT_TRUE(parse_npy(whole).state.ok());
  for (std::size_t n = 0; n < whole.size(); ++n) {
    const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
    EXPECT_FALSE(parse_npy({cut.data(), cut.size()}).state.ok()) << n;
  }
}

TEST(Npy, ReadsWhatItWrites) {
  mat<long double> m{{0.1, -2, 3}, {4, 1e300, -0.0}};
  const std::string file = format_npy(tessarn::matrix_view(m));
  const auto at = file.find('\n');
  EXPECT_EQ((at + 1) % 64, 0u) << "the numbers begin at a multiple of 64 bytes";
  const real_matrix r = parse_matrix(file);
  ASSERT_EQ(r.state.message(), "");
  EXPECT_EQ(r.matrix.getWidth(), 3u);
  EXPECT_TRUE(r.matrix == m);
  EXPECT_TRUE(std::signbit(r.matrix.get(2, 1)));
  mat<cplx> c{{cplx(1, 2), cplx(3, 4)}};
  const complex_matrix z = parse_complex_matrix(format_npy(tessarn::complex_view(c)));
  ASSERT_EQ(z.state.message(), "");
  EXPECT_EQ(z.matrix.get(1, 0).im, 4);
}

TEST(Npy, MatricesOfOneDimension) {
  const real_matrix r = parse_matrix(npy(header("<f8", "(2,)"), bytes<double>({1, 2}, false)));
  EXPECT_EQ(r.matrix.getWidth(), 1u);
  EXPECT_EQ(r.matrix.getHeight(), 2u);
  EXPECT_EQ(parse_matrix(npy(header("<f8", "()"), bytes<double>({1}, false))).state.message(),
            "the array has 0 dimensions, not 1 or 2");
  const std::string nan = npy(header("<f8", "(1,)"), bytes<double>({std::nan("")}, false));
  EXPECT_EQ(parse_matrix(nan).state.message(), "entry 0 is not finite");
  matrix_options o;
  o.keep_not_finite = true;
  EXPECT_TRUE(std::isnan(parse_matrix(nan, o).matrix.get(0, 0)));
}

}  // namespace
