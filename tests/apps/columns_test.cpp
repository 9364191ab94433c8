#include "columns.h"

#include "app_support.h"

using namespace app;
using apptest::failureOf;

namespace {

const std::vector<std::string> names{"x1", "x2", "x3", "weight", "stress"};

Columns chosen(const std::string& text) {
  return selectColumns(text, names, allColumns(names.size()), "--inputs", "s.csv");
}

TEST(Columns, AreFoundByName) {
  EXPECT_EQ(chosen("x3, x1"), (Columns{2, 0}));
}

TEST(Columns, AreFoundByNumber) {
  EXPECT_EQ(chosen("1,3"), (Columns{0, 2}));
  EXPECT_EQ(chosen("#2"), (Columns{1}));
  EXPECT_EQ(chosen("2-4"), (Columns{1, 2, 3}));
  EXPECT_EQ(chosen("x1,4-5"), (Columns{0, 3, 4}));
}

TEST(Columns, ALoneNumberCounts) {
  EXPECT_EQ(chosen("3"), (Columns{0, 1, 2}));
  EXPECT_EQ(selectColumns("1", names, {3, 4}, "--outputs", "s.csv"), (Columns{3}));
}

TEST(Columns, ANameBeatsANumber) {
  const std::vector<std::string> odd{"2", "1", "1-2"};
  EXPECT_EQ(selectColumns("2", odd, allColumns(3), "--inputs", "s.csv"), (Columns{0}));
  EXPECT_EQ(selectColumns("1-2", odd, allColumns(3), "--inputs", "s.csv"), (Columns{2}));
}

TEST(Columns, AMissingNameIsSuggested) {
  const auto failure = failureOf([] { chosen("x1,wieght"); });
  EXPECT_EQ(failure.code, ExitCode::badInput);
  EXPECT_EQ(failure.text(), "s.csv: no column is called \"wieght\"");
  EXPECT_EQ(failure.hint, "did you mean \"weight\"?");
}

TEST(Columns, AFarNameGetsTheList) {
  const auto failure = failureOf([] { chosen("temperature"); });
  EXPECT_EQ(failure.hint, "the columns are x1, x2, x3, weight, stress");
}

TEST(Columns, NumbersOutOfRangeAreRefused) {
  for (const char* text : {"#0", "1,6", "2-9", "4-2", "0", "6", "1,99999999999999999999"})
    EXPECT_EQ(failureOf([&] { chosen(text); }).code, ExitCode::badInput) << text;
}

TEST(Columns, TwiceIsRefused) {
  EXPECT_NE(failureOf([] { chosen("x1,x2,x1"); }).text().find("twice"), std::string::npos);
  EXPECT_NE(failureOf([] { chosen("1-3,x2"); }).text().find("twice"), std::string::npos);
}

TEST(Columns, ANameOfTwoColumnsIsRefused) {
  const std::vector<std::string> twins{"a", "b", "a"};
  const auto failure = failureOf([&] { findColumn("a", twins, "s.csv"); });
  EXPECT_NE(failure.text().find("more than one column"), std::string::npos);
  EXPECT_EQ(findColumn("b", twins, "s.csv"), 1u);
}

TEST(Columns, TheOthersAreWhatIsLeft) {
  EXPECT_EQ(otherColumns(5, {0, 2}), (Columns{1, 3, 4}));
  EXPECT_EQ(otherColumns(2, {0, 1}), Columns{});
}

} // namespace
