#include "csv.h"

#include "app_support.h"

#include <random>

using namespace app;
using apptest::failureOf;

namespace {

using Rows = std::vector<std::vector<std::string>>;

class CsvReading : public apptest::InFolder {
protected:
  std::string file(const std::string& text) { return write("t.csv", text); }

  Rows rows(const std::string& text) {
    CsvReader reader(file(text));
    names_ = reader.names();
    delimiter_ = reader.delimiter();
    hasHeader_ = reader.hasHeader();
    Rows all;
    lines_.clear();
    while (reader.next()) {
      all.emplace_back(reader.fields().begin(), reader.fields().end());
      lines_.push_back(reader.place().line);
    }
    return all;
  }

  Failure failure(const std::string& text) {
    return failureOf([&] { rows(text); });
  }

  std::vector<std::string> names_;
  std::vector<long long> lines_;
  char delimiter_ = 0;
  bool hasHeader_ = false;
};

using Names = std::vector<std::string>;

TEST_F(CsvReading, HeaderAndRows) {
  EXPECT_EQ(rows("a,b\n1,2\n3,4\n"), (Rows{{"1", "2"}, {"3", "4"}}));
  EXPECT_EQ(names_, (Names{"a", "b"}));
  EXPECT_TRUE(hasHeader_);
}

TEST_F(CsvReading, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(rows("a,b\n1,2"), (Rows{{"1", "2"}}));
  EXPECT_EQ(rows("a,b"), Rows{});
  EXPECT_EQ(rows("a,b\n1,\"2\""), (Rows{{"1", "2"}}));
}

TEST_F(CsvReading, CarriageReturnsBelongToTheLineEnd) {
  EXPECT_EQ(rows("a,b\r\n1,2\r\n\"3\",\"4\"\r\n\"5\",6\r\n"),
            (Rows{{"1", "2"}, {"3", "4"}, {"5", "6"}}));
  EXPECT_EQ(names_, (Names{"a", "b"}));
}

TEST_F(CsvReading, AByteOrderMarkIsNoName) {
  rows("\xEF\xBB\xBF"
       "a,b\n1,2\n");
  EXPECT_EQ(names_, (Names{"a", "b"}));
  EXPECT_EQ(rows("\xEF\xBB\xBF"
                 "\"a\",b\n1,2\n"),
            (Rows{{"1", "2"}}));
  EXPECT_EQ(names_, (Names{"a", "b"}));
}

TEST_F(CsvReading, Utf16IsNamed) {
  const auto failed = failure(std::string("\xFF\xFE"
                                          "a\0,\0",
                                          6));
  EXPECT_EQ(failed.code, ExitCode::badInput);
  EXPECT_EQ(failed.hint, "save it as UTF-8");
}

TEST_F(CsvReading, FindsTheDelimiter) {
  EXPECT_EQ(rows("a;b\n1;2\n"), (Rows{{"1", "2"}}));
  EXPECT_EQ(delimiter_, ';');
  EXPECT_EQ(rows("a\tb\n1\t2\n"), (Rows{{"1", "2"}}));
  EXPECT_EQ(delimiter_, '\t');
  EXPECT_EQ(rows("\"x;y;z\",b\n1,2\n"), (Rows{{"1", "2"}})) << "not inside quotes";
  EXPECT_EQ(delimiter_, ',');
  EXPECT_EQ(rows("a\n1\n2\n"), (Rows{{"1"}, {"2"}}));
}

TEST_F(CsvReading, QuotesHoldDelimitersQuotesAndLineBreaks) {
  EXPECT_EQ(rows("a,b\n\"x,y\",\"he said \"\"hi\"\"\"\n\"two\nlines\",\"\"\n"),
            (Rows{{"x,y", "he said \"hi\""}, {"two\nlines", ""}}));
  EXPECT_EQ(lines_, (std::vector<long long>{2, 3}));
}

TEST_F(CsvReading, LinesAreCountedAsAnEditorDoes) {
  rows("# made by hand\n\na,b\n1,2\n# between\n\n\"x\n\ny\",4\n5,6\n");
  EXPECT_EQ(lines_, (std::vector<long long>{4, 7, 10}));
}

TEST_F(CsvReading, AHashInsideARowIsData) {
  EXPECT_EQ(rows("a,b\n1,#2\n\"#3\",4\n"), (Rows{{"1", "#2"}, {"#3", "4"}}));
}

TEST_F(CsvReading, AQuoteInsideAPlainFieldIsData) {
  EXPECT_EQ(rows("a,b\n5\" pipe,2\n"), (Rows{{"5\" pipe", "2"}}));
}

TEST_F(CsvReading, EmptyFieldsCount) {
  EXPECT_EQ(rows("a,b,c\n,,\n1,,3\n"), (Rows{{"", "", ""}, {"1", "", "3"}}));
  EXPECT_EQ(rows("a\tb\n\t\n"), (Rows{{"", ""}})) << "a line of tabs is no blank line";
}

TEST_F(CsvReading, NumbersInFrontMeanNoHeader) {
  EXPECT_EQ(rows("1,2\n3,4\n"), (Rows{{"1", "2"}, {"3", "4"}}));
  EXPECT_FALSE(hasHeader_);
  EXPECT_EQ(names_, (Names{"column_1", "column_2"}));
}

TEST_F(CsvReading, ANamelessColumnGetsAName) {
  rows("a,,c\n1,2,3\n");
  EXPECT_EQ(names_, (Names{"a", "column_2", "c"}));
}

TEST_F(CsvReading, NumbersStayAcrossQuotesAndBlanks) {
  CsvReader reader(file("a,b\n\"1.5\", 2 \n"));
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.number(0), 1.5);
  EXPECT_EQ(reader.number(1), 2);
}

TEST_F(CsvReading, RaggedRowsNameTheirPlace) {
  const auto shortRow = failure("a,b,c\n1,2,3\n# c\n4,5\n");
  EXPECT_EQ(shortRow.code, ExitCode::badInput);
  EXPECT_EQ(shortRow.place.line, 4);
  EXPECT_EQ(shortRow.place.row, 2);
  EXPECT_EQ(shortRow.text(), path("t.csv") + ":4: row 2: 2 fields, where the first line has 3");
  EXPECT_EQ(failure("a,b\n1,2,3\n").place.line, 2);
}

class CsvNumber : public CsvReading, public ::testing::WithParamInterface<const char*> {};

TEST_F(CsvReading, WrongNumbersNameFileRowAndColumn) {
  struct Case {
    const char* field;
    const char* what;
  };
  for (const auto& [field, what] :
       {Case{"abc", "\"abc\" is not a number"}, Case{"", "the field is empty"},
        Case{"nan", "\"nan\" is not a finite number"},
        Case{"-inf", "\"-inf\" is not a finite number"},
        Case{"1e999", "\"1e999\" is beyond double precision"}}) {
    CsvReader reader(file(std::string("p;q\n1;2\n3;") + field + "\n"));
    reader.next();
    reader.next();
    const auto failed = failureOf([&] { reader.number(1); });
    EXPECT_EQ(failed.code, ExitCode::badInput);
    EXPECT_EQ(failed.text(), path("t.csv") + ":3: row 2, column 2 (q): " + what);
    EXPECT_FALSE(failed.hint.empty());
  }
}

TEST_F(CsvReading, ADecimalCommaIsRecognised) {
  CsvReader reader(file("p;q\n1,5;2\n"));
  reader.next();
  EXPECT_EQ(failureOf([&] { reader.number(0); }).hint, "write a decimal point, not a comma");
}

TEST_F(CsvReading, OpenQuotesAreRefused) {
  const auto open = failure("a,b\n1,\"2\n3,4\n");
  EXPECT_EQ(open.code, ExitCode::badInput);
  EXPECT_EQ(open.place.line, 2);
  EXPECT_NE(open.text().find("never closed"), std::string::npos);
  EXPECT_NE(failure("a,b\n\"1\"x,2\n").text().find("after a closing quote"), std::string::npos);
}

TEST_F(CsvReading, EmptyFilesAreRefused) {
  for (const char* text : {"", "\n\n", "# only words\n", "\xEF\xBB\xBF"})
    EXPECT_EQ(failure(text).code, ExitCode::badInput);
}

TEST_F(CsvReading, AMissingFileIsAnInputOutputFailure) {
  const auto failed = failureOf([&] { CsvReader reader(path("none.csv")); });
  EXPECT_EQ(failed.code, ExitCode::io);
  EXPECT_NE(failed.text().find("none.csv"), std::string::npos);
  EXPECT_EQ(failureOf([&] { CsvReader reader(folder_.string()); }).code, ExitCode::io);
}

TEST_F(CsvReading, ARunawayRecordEndsInBoundedMemory) {
  std::string text = "a,b\n1,\"";
  text.append(std::size_t{70} << 20, 'x');
  EXPECT_NE(failure(text).text().find("64 MiB"), std::string::npos);
}

/** Any table survives: quoted at random, over block borders, with either line end. */
TEST_F(CsvReading, RandomTablesComeBack) {
  std::mt19937 random(7);
  const std::string alphabet = "ab1,;\t\"\n# .";
  for (int round = 0; round < 20; ++round) {
    const std::size_t columns = 2 + random() % 4;
    Rows table;
    std::string text;
    const std::string end = round % 2 ? "\r\n" : "\n";
    for (std::size_t i = 0; i < columns; ++i)
      text += (i ? ",name" : "name") + std::to_string(i);
    text += end;
    const int count = round == 0 ? 30000 : 200; // the first goes over several read blocks
    for (int row = 0; row < count; ++row) {
      table.emplace_back();
      for (std::size_t i = 0; i < columns; ++i) {
        std::string field(1 + random() % 12, ' ');
        for (auto& c : field)
          c = alphabet[random() % alphabet.size()];
        std::string quoted = "\"";
        for (const char c : field)
          quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
        text += (i ? "," : "") + quoted + "\"";
        table.back().push_back(field);
      }
      text += end;
    }
    ASSERT_EQ(rows(text), table) << "round " << round;
  }
}

/** The same bytes give the same rows however the pipe cuts them. */
TEST_F(CsvReading, EveryCutOfShortInputsIsSafe) {
  const std::string text = "a,\"b\"\"c\"\r\n1,\"2\r\n3\"\r\n# x\n4,5";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    try {
      rows(text.substr(0, size));
    } catch (const Failure& failed) {
      EXPECT_EQ(failed.code, ExitCode::badInput);
    }
  }
}

} // namespace
