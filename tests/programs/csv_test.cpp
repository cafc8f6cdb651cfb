// The reader that the example programs share.
#include "support/csv.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using example::input_error;
using example::read_csv;
using example::table;

class Csv : public ::testing::Test {
 protected:
  table read(const std::string& content) {
    std::ofstream(path_, std::ios::binary) << content;
    return read_csv(path_.string(), {"x", "y"});
  }
  // What is said after the name of the file.
  std::string complaint(const std::string& content) {
    try {
      read(content);
    } catch (const input_error& e) {
      return std::string(e.what()).substr(path_.string().size());
    }
    return "none";
  }
  void TearDown() override { std::filesystem::remove(path_); }

  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() /
      (std::string("tessarn_csv_") + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv");
};

TEST_F(Csv, ReadsPlainNumbers) {
  const table t = read("1,2\n-3.5,4e2\n");
  ASSERT_EQ(t.rows(), 2u);
  EXPECT_EQ(t.at(0, 0), 1);
  EXPECT_EQ(t.at(1, 0), -3.5);
  EXPECT_EQ(t.at(1, 1), 400);
  EXPECT_EQ(t.names[1], "y");
  EXPECT_EQ(t.lines[1], 2u);
}

TEST_F(Csv, SkipsHeaderCommentsBlanksAndCarriageReturns) {
  const table t = read(
      "\xEF\xBB\xBF# title: Some points\r\n\r\n  # simulated with seed 1\r\ntime (s),way (m)\r\n1, "
      "+2\r\n\t\r\n3 ,4");
  ASSERT_EQ(t.rows(), 2u);
  EXPECT_EQ(t.at(0, 1), 2);
  EXPECT_EQ(t.at(1, 0), 3);
  EXPECT_EQ(t.lines[1], 7u);
  EXPECT_EQ(t.last_line, 7u);
  EXPECT_EQ(t.names[0], "time (s)");
  EXPECT_EQ(t.title(), "Some points");
  EXPECT_TRUE(t.simulated());
  EXPECT_FALSE(read("1,2\n").simulated());
}

TEST_F(Csv, NamesLineAndReason) {
  EXPECT_EQ(complaint(""), ":1: the file ends without any numbers");
  EXPECT_EQ(complaint("x,y\n"), ":1: the file ends without any numbers");
  EXPECT_EQ(complaint("1,2\n3\n"), ":2: expected 2 columns, found 1");
  EXPECT_EQ(complaint("1,2\n3,4,\n"), ":2: expected 2 columns, found 3");
  EXPECT_EQ(complaint("1,2\nx,y\n"), ":2: 'x' is not a number");
  EXPECT_EQ(complaint("x,1\n"), ":1: 'x' is not a number");
  EXPECT_EQ(complaint("1,2\n1,\n"), ":2: a field is empty");
  EXPECT_EQ(complaint("1,0x10\n"), ":1: '0x10' is not a number");
  EXPECT_EQ(complaint("1,nan\n"), ":1: 'nan' is not a finite number");
  EXPECT_EQ(complaint("1,-inf\n"), ":1: '-inf' is not a finite number");
  EXPECT_EQ(complaint("1,1e999\n"), ":1: '1e999' is not a finite number");
  EXPECT_EQ(complaint("1,+-2\n"), ":1: '+-2' is not a number");
}

// A file of another kind is refused with the name of what separates its columns.
TEST_F(Csv, NamesTheSeparatorFound) {
  const std::string found_1 = ":1: expected 2 columns, found 1; the columns seem to be separated by ";
  const std::string must = ", but commas must separate the columns";
  EXPECT_EQ(complaint("1;2\n"), found_1 + "semicolons" + must);
  EXPECT_EQ(complaint("1\t2\n"), found_1 + "tabs" + must);
  EXPECT_EQ(complaint("1   2\n"), found_1 + "blanks" + must);
  EXPECT_EQ(complaint("x;y\n1;2\n"), found_1 + "semicolons" + must);
  EXPECT_EQ(complaint("1,5;2,5\n"),
            ":1: expected 2 columns, found 3; the columns seem to be separated by semicolons and the "
            "decimals by commas" +
                must + " and points the decimals");
  EXPECT_EQ(complaint("0,5\n1,5\t2\n"),
            ":2: '5?2' is not a number; the columns seem to be separated by tabs and the decimals by "
            "commas" +
                must + " and points the decimals");
  EXPECT_EQ(complaint("1, 2 3\n"), ":1: '2 3' is not a number");
  EXPECT_EQ(complaint("1;2;3\n"), ":1: expected 2 columns, found 1");
}

// Whatever stands in the file, the message stays one short line.
TEST_F(Csv, MessageIsOneShortLine) {
  EXPECT_EQ(complaint("1,2\n1,a\rb\n"), ":2: 'a?b' is not a number");
  EXPECT_EQ(complaint("1,2\n1," + std::string(5000, 'z') + "\n"),
            ":2: '" + std::string(40, 'z') + "...' is not a number");
}

TEST_F(Csv, RequiresRows) {
  const table t = read("1,2\n3,4\n");
  EXPECT_NO_THROW(example::require_rows(t, t.rows(), 2, "a line"));
  EXPECT_THROW(example::require_rows(t, t.rows(), 3, "a parabola"), input_error);
}

TEST_F(Csv, MissingFile) { EXPECT_THROW(read_csv("/nonexistent/points.csv", {"x", "y"}), input_error); }

}  // namespace
