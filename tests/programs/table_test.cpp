// Measured points as the commands read them. What a table may look like, the tests of tessarn/files.h show.
#include "support/table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using program::input_error;
using program::input_options;
using program::read_table;
using program::table;

class Table : public ::testing::Test {
 protected:
  table read(const std::string& content, const input_options& o = {}) {
    std::ofstream(path_, std::ios::binary) << content;
    return read_table(path_.string(), {"x", "y"}, o);
  }
  // The message behind the name of the file.
  std::string complaint(const std::string& content, const input_options& o = {}) {
    try {
      read(content, o);
    } catch (const input_error& e) {
      const std::string words = e.what();
      return words.rfind(path_.string(), 0) == 0 ? words.substr(path_.string().size()) : words;
    }
    return "none";
  }
  void TearDown() override { std::filesystem::remove(path_); }

  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() /
      (std::string("tessarn_table_") + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv");
};

TEST_F(Table, HasTitleAndNames) {
  const table t = read("# title: Some points\n# simulated with seed 1\ntime (s),way (m)\n1,2\n");
  EXPECT_EQ(t.title(), "Some points");
  EXPECT_TRUE(t.simulated());
  EXPECT_EQ(t.names[1], "way (m)");
  EXPECT_EQ(t.at(0, 1), 2);
  EXPECT_EQ(read("1,2\n").names[1], "y");
  EXPECT_EQ(read("1,2\n").title(), path_.filename().string());
  EXPECT_FALSE(read("1,2\n").simulated());
}

TEST_F(Table, SaysWhichOptionHelps) {
  EXPECT_EQ(complaint("1,2,3\n"), ":1: expected 2 columns, found 3; --columns chooses among them");
  input_options o;
  o.columns = {"1", "2", "3"};
  EXPECT_EQ(complaint("1,2,3\n", o), "--columns: 2 columns are needed, 3 are named");
  o.columns = {"1", "z"};
  EXPECT_EQ(complaint("x,y\n1,2\n", o), ":1: no column is named 'z'; the columns are 'x', 'y'");
  o = {};
  o.separator = "dot dot";
  EXPECT_EQ(complaint("1,2\n", o), "--separator: comma, semicolon, tab, blank or one character");
  o = {};
  o.decimal = "dot";
  EXPECT_EQ(complaint("1,2\n", o), "--decimal: point or comma");
}

TEST_F(Table, TakesSeparatorsByName) {
  input_options o;
  for (const auto& [name, text] : {std::pair{"comma", "1,2\n"},
                                   {"semicolon", "1;2\n"},
                                   {"tab", "1\t2\n"},
                                   {"\\t", "1\t2\n"},
                                   {"blank", "1 2\n"},
                                   {":", "1:2\n"}}) {
    o.separator = name;
    EXPECT_EQ(read(text, o).at(0, 1), 2) << name;
  }
}

TEST_F(Table, CountsRowsLeftOut) {
  input_options o;
  o.skip_bad = true;
  const table t = read("1,2\nx,y\n3,4\n", o);
  EXPECT_EQ(t.rows(), 2u);
  EXPECT_EQ(t.skipped, 1u);
  EXPECT_EQ(t.first_skipped, path_.filename().string() + ":2:1: 'x' is not a number");
}

TEST_F(Table, RequiresRows) {
  const table t = read("1,2\n3,4\n");
  EXPECT_NO_THROW(program::require_rows(t, t.rows(), 2, "a line"));
  EXPECT_THROW(program::require_rows(t, t.rows(), 3, "a parabola"), input_error);
}

TEST_F(Table, MissingFile) { EXPECT_THROW(read_table("/nonexistent/points.csv", {"x", "y"}, {}), input_error); }

}  // namespace
