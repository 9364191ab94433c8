#include "app_support.h"
#include "variable.h"

#include <gmock/gmock.h>
#include <limits>

using namespace app;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

TEST(Variable, HasNameAndBounds) {
  const Variable v = parseVariable(" width =-1e-3:2.5");
  EXPECT_EQ(v.name, "width");
  EXPECT_EQ(v.low, -1e-3);
  EXPECT_EQ(v.high, 2.5);
}

TEST(Variable, WhatIsNoneIsRefused) {
  for (const char* text : {"", "w", "w=1", "w=1:", "w=:1", "=1:2", "w=2:1", "w=1:1", "w=a:b",
                           "w=0:inf", "w=nan:1", "w=0:1e999", "w:1=2"}) {
    EXPECT_EQ(failureOf([&] { parseVariable(text); }).code, ExitCode::usage) << text;
    EXPECT_THAT(failureOf([&] { parseVariable(text); }).hint, HasSubstr("NAME=LOW:HIGH"));
  }
}

TEST(Variable, NamesStandOnce) {
  EXPECT_EQ(parseVariables({"a=0:1", "b=0:2"}).size(), 2u);
  EXPECT_THAT(failureOf([] {
                parseVariables({"a=0:1", "a=0:2"});
              }).text(),
              HasSubstr("stands twice"));
  EXPECT_THAT(failureOf([] { parseVariables({}); }).text(), HasSubstr("missing"));
}

TEST(Variable, CodedOnesAreNumbered) {
  const auto variables = codedVariables(3);
  ASSERT_EQ(variables.size(), 3u);
  EXPECT_EQ(variables[2].name, "x3");
  EXPECT_EQ(variables[2].low, -1);
  EXPECT_EQ(variables[2].high, 1);
}

TEST(Variable, BoundsAndMiddleAreMetExactly) {
  for (const auto& [low, high] : {std::pair(0.1, 0.3), {-7.0, 1e-9}, {1e15, 1e15 + 0.5}}) {
    const Variable v{"v", low, high};
    EXPECT_EQ(physicalValue(v, -1), low);
    EXPECT_EQ(physicalValue(v, 1), high);
    EXPECT_GE(physicalValue(v, -0.9999999999999999), low);
    EXPECT_LE(physicalValue(v, 0.9999999999999999), high);
    EXPECT_EQ(codedValue(v, low), -1);
    EXPECT_EQ(codedValue(v, high), 1);
  }
  EXPECT_EQ(physicalValue({"v", 2, 6}, 0), 4);
  EXPECT_EQ(physicalValue({"v", 2, 6}, 2), 8);
  EXPECT_EQ(codedValue({"v", 2, 6}, 5), 0.5);
}

TEST(Variable, TheWidestRangeDoesNotOverflow) {
  const double most = std::numeric_limits<double>::max();
  const Variable v{"v", -most, most};
  EXPECT_EQ(physicalValue(v, 0), 0);
  EXPECT_EQ(physicalValue(v, 1), most);
  EXPECT_EQ(codedValue(v, 0), 0);
}

class BoundsFile : public apptest::InFolder {
protected:
  Failure refused(const std::string& text) {
    const std::string file = write("b.txt", text);
    return failureOf([&] { readBounds(file); });
  }
};

TEST_F(BoundsFile, HasAVariableALine) {
  const auto variables =
      readBounds(write("b.txt", "# a beam\nlength=1:3 # m\r\n\n  width = 0.1 : 0.3\nload=1e3:5e3"));

  ASSERT_EQ(variables.size(), 3u);
  EXPECT_EQ(variables[0].name, "length");
  EXPECT_EQ(variables[1].name, "width");
  EXPECT_EQ(variables[1].high, 0.3);
  EXPECT_EQ(variables[2].high, 5000);
}

TEST_F(BoundsFile, WhatIsWrongIsToldWithItsLine) {
  const Failure failure = refused("a=0:1\n\nb=2:1\n");
  EXPECT_EQ(failure.code, ExitCode::badInput);
  EXPECT_EQ(failure.place.line, 3);
  EXPECT_THAT(failure.text(), HasSubstr("the lower bound is not below the upper one"));

  EXPECT_THAT(refused("a=0:1\na=0:1\n").text(), HasSubstr("stands twice"));
  EXPECT_THAT(refused("a;0;1\n").text(), HasSubstr("it has no ="));
  EXPECT_THAT(refused("# nothing\n").text(), HasSubstr("no variables"));
  EXPECT_THAT(refused("").text(), HasSubstr("no variables"));
  EXPECT_EQ(refused(std::string(100000, 'a') + "=0:1").code, ExitCode::badInput);
  EXPECT_EQ(refused(std::string("a\0b=0:x", 7)).code, ExitCode::badInput);
}

TEST_F(BoundsFile, MustBeThere) {
  EXPECT_EQ(failureOf([&] { readBounds(path("none")); }).code, ExitCode::io);
  EXPECT_NE(failureOf([&] { readBounds(folder_.string()); }).code, ExitCode::done);
}

} // namespace
