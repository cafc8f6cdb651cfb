// Points in PLY, XYZ, .npy and tables, by the names of the files.
#include <tessarn/files.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/wide_sizes.h"

namespace {

using namespace tessarn::files;

const std::vector<vector3d> cloud = {{0.1, -2, 3}, {1e300, 5e-324, -0.0}, {4, 5, 6}};

void expect_cloud(const space_cloud& c) {
  ASSERT_EQ(c.state.message(), "");
  ASSERT_EQ(c.points.size(), cloud.size());
  for (std::size_t i = 0; i < cloud.size(); ++i) EXPECT_TRUE(c.points[i] == cloud[i]) << i;
  EXPECT_TRUE(std::signbit(c.points[1].z));
}

class PointFiles : public ::testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(folder_); }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() /
      (std::string("tessarn_points_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(PointFiles, WritesAndReadsByTheEnding) {
  for (const char* name : {"cloud.ply", "cloud.PLY", "cloud.xyz", "cloud.npy", "cloud.csv", "cloud.txt"}) {
    const auto file = folder_ / name;
    ASSERT_EQ(write_points(file, tessarn::space_points(cloud)).message(), "");
    expect_cloud(read_space_points(file));
  }
  const std::vector<vector> flat = {{-1, 2}, {0.1, 4}};
  for (const char* name : {"flat.csv", "flat.npy"}) {
    ASSERT_EQ(write_points(folder_ / name, tessarn::plane_points(flat)).message(), "");
    const plane_cloud c = read_plane_points(folder_ / name);
    ASSERT_EQ(c.state.message(), "");
    ASSERT_EQ(c.points.size(), 2u);
    EXPECT_EQ(c.points[1], flat[1]);
    EXPECT_EQ(c.marked, 1u);
  }
  const plane_cloud wrong = read_plane_points(folder_ / "cloud.npy");
  EXPECT_EQ(wrong.state.message(), (folder_ / "cloud.npy").string() + ": the array is not n x 2");
}

TEST_F(PointFiles, TellsWhatCannotBeWritten) {
  EXPECT_EQ(write_points("/nonexistent/a.csv", tessarn::space_points(cloud)).message(),
            "/nonexistent/a.csv: cannot be written: No such file or directory");
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_EQ(save("/dev/full", "1,2\n").message(), "/dev/full: cannot be written: No space left on device");
    EXPECT_EQ(save("/dev/full", std::string(1 << 20, 'x')).what, problem::cannot_write);
  }
}

TEST(PointTables, ChooseColumns) {
  csv_options o;
  EXPECT_EQ(parse_space_points("1,2,3,4\n").state.message(), "line 1: expected 3 columns, found 4");
  o.columns = {"4", "2", "1"};
  EXPECT_TRUE(parse_space_points("1,2,3,4\n", o).points[0] == vector3d(4, 2, 1));
  EXPECT_EQ(parse_plane_points("1,2,3,4\n", o).state.message(), "these points need 2 columns, 3 are chosen");
}

TEST(Xyz, PassesOverWhatFollows) {
  const space_cloud c = parse_xyz("# scan\r\n1 2 3 255 0 0\r\n\r\n  4\t5\t6\n");
  ASSERT_EQ(c.state.message(), "");
  ASSERT_EQ(c.points.size(), 2u);
  EXPECT_TRUE(c.points[1] == vector3d(4, 5, 6));
  EXPECT_EQ(c.lines[1], 4u);
  EXPECT_EQ(parse_xyz("1 2\n").state.message(), "line 1: expected 3 numbers, found 2");
  EXPECT_EQ(parse_xyz("1 2 3\n4 x 6\n").state.message(), "line 2:3: 'x' is not a number");
  EXPECT_EQ(parse_xyz("1 2 inf\n").state.message(), "line 1:5: 'inf' is not a finite number");
  EXPECT_EQ(parse_xyz("").state.message(), "line 1: the file ends without any numbers");
}

std::string ply(const std::string& format, const std::string& elements, const std::string& data) {
  return "ply\nformat " + format + " 1.0\ncomment made by hand\n" + elements + "end_header\n" + data;
}

const std::string xyz = "property float x\nproperty double y\nproperty short z\n";

TEST(Ply, ReadsText) {
  const space_cloud c =
      parse_ply(ply("ascii",
                    "element camera 1\nproperty float f\nelement vertex 2\nproperty uchar red\n" + xyz +
                        "property list uchar int neighbours\nelement face 1\nproperty list uchar int v\n",
                    "0.5\n255 1 2.5 3 2 7 8\n0 -4 5 6 0\n3 0 1 0\n"));
  ASSERT_EQ(c.state.message(), "");
  ASSERT_EQ(c.points.size(), 2u);
  EXPECT_TRUE(c.points[0] == vector3d(1, 2.5, 3));
  EXPECT_TRUE(c.points[1] == vector3d(-4, 5, 6));
  EXPECT_EQ(c.lines[1], 17u);
}

// A number of any type as bytes.
template <class Number>
std::string raw(Number v, bool big) {
  std::string s(sizeof v, '\0');
  std::memcpy(s.data(), &v, sizeof v);
  const std::uint16_t probe = 1;
  const bool machine_is_big = *reinterpret_cast<const unsigned char*>(&probe) == 0;
  return machine_is_big == big ? s : std::string(s.rbegin(), s.rend());
}

TEST(Ply, ReadsBinary) {
  for (const bool big : {false, true}) {
    const std::string vertex = raw(1.5f, big) + raw(-2.25, big) + raw<std::int16_t>(-3, big) +
                               raw<std::uint8_t>(2, big) + raw<std::int32_t>(7, big) + raw<std::int32_t>(8, big);
    const std::string elements =
        "element face 1\nproperty list ushort char v\nelement vertex 1\n" + xyz + "property list uint8 int32 l\n";
    const std::string format = big ? "binary_big_endian" : "binary_little_endian";
    const std::string whole = ply(format, elements, raw<std::uint16_t>(3, big) + "abc" + vertex);
    const space_cloud c = parse_ply(whole);
    ASSERT_EQ(c.state.message(), "");
    ASSERT_EQ(c.points.size(), 1u);
    EXPECT_TRUE(c.points[0] == vector3d(1.5, -2.25, -3));
    for (std::size_t n = 0; n < whole.size(); ++n) {
      const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
      EXPECT_FALSE(parse_ply({cut.data(), cut.size()}).state.ok()) << n;
    }
  }
}

TEST(Ply, RefusesWhatIsWrong) {
  const auto complaint = [](const std::string& s) { return parse_ply(s).state.message(); };
  EXPECT_EQ(complaint(""), "this is no PLY file");
  EXPECT_EQ(complaint("ply\nformat ascii 2.0\n"), "line 2: only version 1.0 is read");
  EXPECT_EQ(complaint("ply\nformat utf7 1.0\n"), "line 2: 'utf7' is no known format");
  EXPECT_EQ(complaint("ply\nproperty float x\n"), "line 2: a property is incomplete");
  EXPECT_EQ(complaint("ply\nelement vertex -1\n"), "line 2: an element needs a name and a count");
  EXPECT_EQ(complaint("ply\nelement vertex 1\nproperty half x\n"), "line 3: a property has an unknown type");
  EXPECT_EQ(complaint("ply\nelement vertex 1\nproperty list float int x\n"),
            "line 3: the count of a list is no integer");
  EXPECT_EQ(complaint("ply\nhello\n"), "line 2: 'hello' does not belong into the header of a PLY file");
  EXPECT_EQ(complaint("ply\nend_header\n"), "line 2: the header names no format");
  EXPECT_EQ(complaint(ply("ascii", "", "")), "the file has no vertices");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 1\nproperty float x\nproperty float y\n", "1 2\n")),
            "the vertices have no property z");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 2\n" + xyz, "1 2 3\n")),
            "the file ends before the elements that its header announces");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 1\n" + xyz, "1 2\n")), "line 9: fewer numbers than properties");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 1\n" + xyz, "1 2 3 4\n")), "line 9:7: more numbers than properties");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 1\n" + xyz, "1 b 3\n")), "line 9:3: 'b' is not a number");
  EXPECT_EQ(complaint(ply("ascii", "element vertex 1\n" + xyz, "1 nan 3\n")), "line 9: vertex 0 is not finite");
  const char* const no_count = "line 4: an element needs a name and a count";
  EXPECT_EQ(complaint(ply("binary_little_endian", "element vertex 18446744073709551615\n" + xyz, "")),
            tests::by_size("the file ends before the elements that its header announces", no_count));
  EXPECT_EQ(complaint(ply("binary_little_endian", "element vertex 4294967295\n" + xyz, "")),
            "the file ends before the elements that its header announces");
  // Elements without properties have no data, however many there are.
  EXPECT_EQ(complaint(ply("ascii", "element nothing 18446744073709551615\nelement vertex 1\n" + xyz, "1 2 3\n")),
            tests::by_size("", no_count));
}

TEST(Ply, WritesText) {
  const std::string text = format_ply(tessarn::space_points(cloud), false);
  EXPECT_NE(text.find("0.1 -2 3\n"), text.npos);
  expect_cloud(parse_ply(text));
}

}  // namespace
