// Tables of numbers in text.
#include <tessarn/files/csv.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace tessarn::files;

std::string complaint(const std::string& text, const csv_options& o = {}) { return parse_csv(text, o).state.message(); }

std::vector<double> values(const std::string& text, const csv_options& o = {}) {
  const table t = parse_csv(text, o);
  EXPECT_EQ(t.state.message(), "") << text;
  return {t.values.begin(), t.values.end()};
}

using numbers = std::vector<double>;

TEST(Csv, ReadsPlainNumbers) {
  const table t = parse_csv("1,2\n-3.5,4e2\n");
  ASSERT_TRUE(t.state.ok());
  EXPECT_EQ(t.rows(), 2u);
  EXPECT_EQ(t.columns, 2u);
  EXPECT_EQ(t.at(1, 0), -3.5);
  EXPECT_EQ(t.at(1, 1), 400);
  EXPECT_TRUE(t.names.empty());
  EXPECT_EQ(t.lines[1], 2u);
  EXPECT_EQ(t.last_line, 2u);
}

TEST(Csv, SkipsHeaderCommentsBlanksAndCarriageReturns) {
  const table t =
      parse_csv("\xEF\xBB\xBF# title: Some points\r\n\r\n  # more\r\ntime (s),way (m)\r\n1, +2\r\n\t\r\n3 ,4");
  ASSERT_EQ(t.state.message(), "");
  ASSERT_EQ(t.rows(), 2u);
  EXPECT_EQ(t.at(0, 1), 2);
  EXPECT_EQ(t.lines[1], 7u);
  EXPECT_EQ(t.last_line, 7u);
  EXPECT_EQ(t.names, (std::vector<std::string>{"time (s)", "way (m)"}));
  EXPECT_EQ(t.comments, (std::vector<std::string>{"title: Some points", "more"}));
}

TEST(Csv, RecognisesSeparatorAndDecimalMark) {
  const numbers expected{1.5, 2.25, 3, -4};
  for (const char* text :
       {"1.5,2.25\n3,-4\n", "1.5;2.25\n3;-4\n", "1,5;2,25\n3;-4\n", "1.5\t2.25\n3\t-4\n", "1,5\t2,25\n3\t-4\n",
        "1.5 2.25\n3 -4\n", "  1.5   2.25 \n3\t -4\n", "1,5  2,25\n3  -4\n", "1.5|2.25\n3|-4\n", "1.5, 2.25\n3, -4\n",
        "\"1,5\",\"2,25\"\n3,-4\n", "a;b\n1,5;2,25\n3;-4\n", "a,b\n1.5,2.25\n3,-4\n"})
    EXPECT_EQ(values(text), expected) << text;
  const table t = parse_csv("1,5;2,25\n");
  EXPECT_EQ(t.separator, ';');
  EXPECT_EQ(t.decimal, ',');
}

TEST(Csv, TakesSeparatorAndDecimalMarkAsGiven) {
  csv_options o;
  o.separator = ';';
  EXPECT_EQ(values("1,5;2,25\n", o), (numbers{1.5, 2.25}));
  o.decimal = '.';
  EXPECT_EQ(complaint("1;2\n1,5;2,25\n", o), "line 2:1: '1,5' is not a number");
  o = {};
  o.decimal = ',';
  EXPECT_EQ(values("1,5\n2,5\n", o), (numbers{1.5, 2.5}));
  EXPECT_EQ(values("1,5\n2,5\n"), (numbers{1, 5, 2, 5}));
  o.decimal = '.';
  o.separator = ':';
  EXPECT_EQ(values("1:2\n", o), (numbers{1, 2}));
}

// With a decimal comma a point is no number, nor is a comma at the end.
TEST(Csv, ADecimalCommaIsStrict) {
  csv_options o;
  o.separator = ';';
  o.decimal = ',';
  for (const char* cell : {"1.5", "1,5,5", "1,", ",", "1.000,5"})
    EXPECT_EQ(complaint(std::string("0;") + cell + "\n", o), std::string("line 1:3: '") + cell + "' is not a number");
  EXPECT_EQ(values("0;0," + std::string(200, '0') + "1\n", o), (numbers{0, 1e-201}));
}

TEST(Csv, QuotedCells) {
  EXPECT_EQ(values("\"x, \"\"raw\"\"\",y\n\"1\" , \" 2\"\n"), (numbers{1, 2}));
  const table t = parse_csv("\"x, \"\"raw\"\"\",\"two\nlines\"\n1,2\n");
  ASSERT_EQ(t.state.message(), "");
  EXPECT_EQ(t.names, (std::vector<std::string>{"x, \"raw\"", "two\nlines"}));
  EXPECT_EQ(t.lines[0], 3u);
  EXPECT_EQ(values("\"1\" \"2\"\n3 4\n"), (numbers{1, 2, 3, 4}));
  EXPECT_EQ(complaint("1,2\n\"3,4\n"), "line 2:1: the quote that begins here does not end");
  EXPECT_EQ(complaint("1,2\n\"3\"x,4\n"), "line 2:4: text stands between a closing quote and the separator");
}

TEST(Csv, NamesLineColumnAndReason) {
  EXPECT_EQ(complaint(""), "line 1: the file ends without any numbers");
  EXPECT_EQ(complaint("x,y\n"), "line 1: the file ends without any numbers");
  EXPECT_EQ(complaint("1,2\n3\n"), "line 2: expected 2 columns, found 1");
  EXPECT_EQ(complaint("1,2\n3,4,\n"), "line 2: expected 2 columns, found 3");
  EXPECT_EQ(complaint("1,2\nx,y\n"), "line 2:1: 'x' is not a number");
  EXPECT_EQ(complaint("x,1\n"), "line 1:1: 'x' is not a number");
  EXPECT_EQ(complaint("1,2\n1, \n"), "line 2:4: a field is empty");
  EXPECT_EQ(complaint("1,0x10\n"), "line 1:3: '0x10' is not a number");
  EXPECT_EQ(complaint("1,nan\n"), "line 1:3: 'nan' is not a finite number");
  EXPECT_EQ(complaint("1, -inf\n"), "line 1:4: '-inf' is not a finite number");
  EXPECT_EQ(complaint("1,1e999\n"), "line 1:3: '1e999' is not a finite number");
  EXPECT_EQ(complaint("1,-1e-999\n"), "line 1:3: '-1e-999' is too small for double precision");
  EXPECT_EQ(complaint("1,+-2\n"), "line 1:3: '+-2' is not a number");
  EXPECT_EQ(complaint("1,2\n1,a\rb\n"), "line 2:3: 'a?b' is not a number");
  EXPECT_EQ(complaint("1,2\n1," + std::string(5000, 'z') + "\n"),
            "line 2:3: '" + std::string(40, 'z') + "...' is not a number");
  EXPECT_EQ(complaint("1,2\n\xC3\xA4\xC3\xB6,x\n"), "line 2:1: '\xC3\xA4\xC3\xB6' is not a number");
  // The column counts characters, not bytes.
  csv_options o;
  o.columns = {"2"};
  EXPECT_EQ(complaint("1,2\n\xC3\xA4\xC3\xB6,x\n", o), "line 2:4: 'x' is not a number");
}

TEST(Csv, RefusesUtf16) {
  EXPECT_EQ(complaint(std::string("\xFF\xFE\x31\x00", 4)), "line 1: the text is in UTF-16; save it as UTF-8");
  EXPECT_EQ(complaint(std::string("\xFE\xFF\x00\x31", 4)), "line 1: the text is in UTF-16; save it as UTF-8");
  EXPECT_EQ(parse_csv(std::string("1,2\n\x31\x00,2", 8)).state.what, problem::wrong_encoding);
  EXPECT_EQ(parse_csv(std::string("1,2\n\x31\x00,2", 8)).state.line, 2u);
}

TEST(Csv, ChoosesColumns) {
  const std::string text = "name;time (s);x (mm);y (mm)\nA;0,5;1;2\nB;1,5;3;4\n";
  csv_options o;
  o.columns = {"y (mm)", "time"};
  EXPECT_EQ(values(text, o), (numbers{2, 0.5, 4, 1.5}));
  EXPECT_EQ(parse_csv(text, o).names, (std::vector<std::string>{"y (mm)", "time (s)"}));
  o.columns = {"3", "x"};
  EXPECT_EQ(values(text, o), (numbers{1, 1, 3, 3}));
  o.columns = {"z"};
  EXPECT_EQ(complaint(text, o),
            "line 1: no column is named 'z'; the columns are 'name', 'time (s)', 'x (mm)', 'y (mm)'");
  o.columns = {"5"};
  EXPECT_EQ(complaint(text, o), "line 1: there is no column '5' among 4");
  o.columns = {"0"};
  EXPECT_EQ(complaint(text, o), "line 1: there is no column '0' among 4");
  o.columns = {"x"};
  EXPECT_EQ(complaint("x (mm),x (s)\n1,2\n", o), "line 1: several columns are named 'x'; give the number of one");
  EXPECT_EQ(complaint("1,2\n", o), "line 1: no column is named 'x'; the file has no header");
}

TEST(Csv, ChecksTheWidthAskedFor) {
  csv_options o;
  o.width = 2;
  EXPECT_EQ(complaint("1,2,3\n", o), "line 1: expected 2 columns, found 3");
  EXPECT_EQ(complaint("a,b,c\n1,2,3\n", o), "line 1: expected 2 columns, found 3");
  EXPECT_EQ(values("1,2\n", o), (numbers{1, 2}));
}

TEST(Csv, SkipsBadRows) {
  csv_options o;
  o.skip_bad_rows = true;
  const table t = parse_csv("Device 7\nx,y\n1,2\nbroken,3\n4\n5,6\n7,nan\n", o);
  ASSERT_EQ(t.state.message(), "");
  EXPECT_EQ((numbers(t.values.begin(), t.values.end())), (numbers{1, 2, 5, 6}));
  EXPECT_EQ(t.names, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(t.skipped, 4u);
  ASSERT_EQ(t.reasons.size(), 4u);
  EXPECT_EQ(t.reasons[0].message(), "line 1: expected 2 columns, found 1");
  EXPECT_EQ(t.reasons[1].message(), "line 4:1: 'broken' is not a number");
  EXPECT_EQ(t.reasons[3].message(), "line 7:3: 'nan' is not a finite number");
  std::string many = "1,2\n";
  for (int i = 0; i < 100; ++i) many += "x,\n";
  EXPECT_EQ(parse_csv(many, o).skipped, 100u);
  EXPECT_EQ(parse_csv(many, o).reasons.size(), 20u);
  EXPECT_EQ(complaint("x,1\n2,y\n", o), "line 2: the file ends without any numbers");
}

TEST(Csv, KeepsWhatIsNotFinite) {
  csv_options o;
  o.keep_not_finite = true;
  const table t = parse_csv("1,nan,-nan\n,inf,-inf\n2,1e999,-1e999\n", o);
  ASSERT_EQ(t.state.message(), "");
  EXPECT_TRUE(std::isnan(t.at(0, 1)) && std::isnan(t.at(0, 2)) && std::isnan(t.at(1, 0)));
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(t.at(1, 1), infinity);
  EXPECT_EQ(t.at(1, 2), -infinity);
  EXPECT_EQ(t.at(2, 1), infinity);
  EXPECT_EQ(t.at(2, 2), -infinity);
  EXPECT_EQ(complaint("1,word\n", o), "line 1:3: 'word' is not a number");
}

TEST(Csv, HeaderAsTold) {
  csv_options o;
  o.header = header::yes;
  EXPECT_EQ(values("1,2\n3,4\n", o), (numbers{3, 4}));
  EXPECT_EQ(parse_csv("1,2\n3,4\n", o).names, (std::vector<std::string>{"1", "2"}));
  o.header = header::no;
  EXPECT_EQ(complaint("x,y\n3,4\n", o), "line 1:1: 'x' is not a number");
  EXPECT_EQ(parse_csv(",x\n0,1\n").names, (std::vector<std::string>{"", "x"}));  // as tables with an index are written
}

TEST(Csv, CommentMarks) {
  csv_options o;
  o.comment = '%';
  EXPECT_EQ(parse_csv("% a\n1,2\n", o).comments, (std::vector<std::string>{"a"}));
  o.comment = 0;
  EXPECT_EQ(complaint("# a,b\n1,2\n", o), "");
  EXPECT_EQ(parse_csv("# a,b\n1,2\n", o).names[0], "# a");
}

TEST(Csv, WritesWhatItReads) {
  const double numbers_[] = {0.1, -1e300, 4.9406564584124654e-324, 3, 1.0 / 3, -0.0};
  for (const auto& [separator, decimal] : {std::pair{',', '.'}, {';', ','}, {'\t', ','}, {',', ','}}) {
    const csv_format f{separator, decimal, {"a \"b\"", "c,d;e\tf"}};
    const std::string text =
        detail::format_table(3, 2, f, [&](std::size_t r, std::size_t c) { return numbers_[2 * r + c]; });
    csv_options o;
    o.separator = separator;
    o.decimal = decimal;
    const table t = parse_csv(text, o);
    ASSERT_EQ(t.state.message(), "") << text;
    EXPECT_EQ(t.names, f.names);
    for (std::size_t i = 0; i < 6; ++i) {
      EXPECT_EQ(t.values[i], numbers_[i]);
      EXPECT_EQ(std::signbit(t.values[i]), std::signbit(numbers_[i]));
    }
  }
}

TEST(Csv, MissingFilesAndFolders) {
  EXPECT_EQ(read_csv("/nonexistent/points.csv").state.message(),
            "/nonexistent/points.csv: cannot be opened: No such file or directory");
  EXPECT_EQ(read_csv("/").state.message(), "/: cannot be read: it is a folder");
}

}  // namespace
