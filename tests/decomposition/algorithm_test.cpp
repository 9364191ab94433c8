// The frame of algorithms: a name, options by name, and what they print.
#include <sstream>

#include <gtest/gtest.h>

#include <zarel/C_Algorithm.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

namespace {

using support::capture;
using Zarel::C_ZarelMessage;

/** A message to the screen that passes, or one of a level that nobody listens to. */
C_ZarelMessage messageOfLevel(int level) {
  return C_ZarelMessage("test", __FILE__, __LINE__, Zarel::E_MsgInfo, level, 0, Zarel::SCREEN);
}

TEST(Algorithm, HasANameATypeAndNoScope) {
  C_Algorithm algorithm("reduction");
  std::ostringstream text;
  algorithm.Info(text);

  EXPECT_EQ(algorithm.GetName(), "reduction");
  EXPECT_STREQ(algorithm.Type(), "C_Algorithm");
  EXPECT_EQ(algorithm.GetDebugScope(), 0);
  EXPECT_EQ(text.str(), std::string(40, '=') + "\nC_Algorithm : reduction\n");
}

TEST(Algorithm, RunsNothingByItself) {
  C_Algorithm algorithm("");
  C_ItfAlgorithm problem;

  EXPECT_EQ(algorithm.Run(problem), 0);
  EXPECT_EQ(problem.getProgressEngine(), nullptr);
}

TEST(Algorithm, GivesBackEachTypeOfOption) {
  C_Algorithm algorithm("");
  algorithm.setOption("b", true);
  algorithm.setOption("i", 7);
  algorithm.setOption("d", 0.5);
  algorithm.setOption("s", std::string("text"));
  bool b = false;
  int i = 0;
  double d = 0;
  std::string s;
  algorithm.getOption("b", b);
  algorithm.getOption("i", i);
  algorithm.getOption("d", d);
  algorithm.getOption("s", s);

  EXPECT_TRUE(b && algorithm.getOption_b("b") && algorithm.getbOptions().at("b"));
  EXPECT_EQ(i, 7);
  EXPECT_EQ(algorithm.getOption_i("i"), 7);
  EXPECT_EQ(algorithm.getiOptions().at("i"), 7);
  EXPECT_EQ(d, 0.5);
  EXPECT_EQ(algorithm.getOption_d("d"), 0.5);
  EXPECT_EQ(algorithm.getdOptions().at("d"), 0.5);
  EXPECT_EQ(s, "text");
  EXPECT_EQ(algorithm.getOption_s("s"), "text");
  EXPECT_EQ(algorithm.getsOptions().at("s"), "text");
}

TEST(Algorithm, OneNameMayStandInTwoTables) {
  C_Algorithm algorithm("");
  algorithm.setOption("a", 1);
  algorithm.setOption("a", 1.5);

  EXPECT_EQ(algorithm.getOption_i("a"), 1);
  EXPECT_EQ(algorithm.getOption_d("a"), 1.5);
  EXPECT_FALSE(algorithm.isOption_b("a"));
  EXPECT_FALSE(algorithm.isOption_s("a"));
}

TEST(Algorithm, ALiteralIsATextAndNoTruthValue) {
  C_Algorithm algorithm("");
  algorithm.setOption("a", "text");

  EXPECT_EQ(algorithm.getOption_s("a"), "text");
  EXPECT_FALSE(algorithm.isOption_b("a"));
}

TEST(Algorithm, AskingEntersNothingButReadingDoes) {
  C_Algorithm algorithm("");

  EXPECT_FALSE(algorithm.isOption_i("unknown"));
  EXPECT_FALSE(algorithm.isOption_i("unknown"));
  EXPECT_EQ(algorithm.getOption_i("unknown"), 0);
  EXPECT_TRUE(algorithm.isOption_i("unknown"));
  EXPECT_FALSE(algorithm.getOption_b("unknown"));
  EXPECT_EQ(algorithm.getOption_d("unknown"), 0.0);
  EXPECT_EQ(algorithm.getOption_s("unknown"), "");
  double value = 5;
  algorithm.getOption("other", value);
  EXPECT_EQ(value, 0.0);
  EXPECT_TRUE(algorithm.isOption_d("other"));
}

TEST(Algorithm, SettingAnOptionAgainReplacesItsValue) {
  C_Algorithm algorithm("");
  for (int value : {1, 2}) {
    algorithm.setOption("i", value);
    algorithm.setOption("d", value / 4.0);
    algorithm.setOption("b", value == 1);
    algorithm.setOption("s", std::to_string(value));
  }

  EXPECT_EQ(algorithm.getOption_i("i"), 2);
  EXPECT_EQ(algorithm.getOption_d("d"), 0.5);
  EXPECT_FALSE(algorithm.getOption_b("b"));
  EXPECT_EQ(algorithm.getOption_s("s"), "2");
  EXPECT_EQ(algorithm.getiOptions().size(), 1u);
}

TEST(Algorithm, HasNoOptionsOfItsOwn) {
  C_Algorithm algorithm("");
  algorithm.InitOptions();

  EXPECT_TRUE(algorithm.getbOptions().empty() && algorithm.getiOptions().empty() &&
              algorithm.getdOptions().empty() && algorithm.getsOptions().empty());
}

TEST(Algorithm, ACopyTakesNameAndOptionsAndGoesItsOwnWay) {
  C_Algorithm algorithm("first");
  algorithm.setOption("a", 1);
  algorithm.setOption("a", 0.5);
  algorithm.setOption("a", true);
  algorithm.setOption("a", "text");
  C_Algorithm copy(algorithm), assigned("second");
  assigned.setOption("own", 3);
  assigned = algorithm;
  algorithm.setOption("a", 2);

  EXPECT_FALSE(assigned.isOption_i("own"));
  for (C_Algorithm* other : {&copy, &assigned}) {
    EXPECT_EQ(other->GetName(), "first");
    EXPECT_EQ(other->getOption_i("a"), 1);
    EXPECT_EQ(other->getOption_d("a"), 0.5);
    EXPECT_TRUE(other->getOption_b("a"));
    EXPECT_EQ(other->getOption_s("a"), "text");
  }
}

/** Shows its options in its own way. */
class Terse : public C_Algorithm {
public:
  using C_Algorithm::C_Algorithm;
  void AffOptions(C_ZarelMessage& message) override {
    message.Append("none");
    message.Print();
  }
};

TEST(Algorithm, TheConfigurationShowsTheOptionsAsADerivedClassDoes) {
  Terse algorithm("terse");
  C_ZarelMessage message = messageOfLevel(0);

  EXPECT_EQ(capture([&] { algorithm.DisplayConfiguration(message); }).out,
            "\n\nAlgorithm Name : terse\n\nnone ");
}

TEST(Algorithm, PrintsItsOptionsTableByTableInTheOrderOfNames) {
  C_Algorithm algorithm("reduction");
  algorithm.setOption("text", std::string("abc"));
  algorithm.setOption("tolerance", 0.001);
  algorithm.setOption("steps", 12);
  algorithm.setOption("zero", false);
  algorithm.setOption("one", true);
  C_ZarelMessage message = messageOfLevel(0);

  EXPECT_EQ(capture([&] { algorithm.DisplayConfiguration(message); }).out,
            "\n\nAlgorithm Name : reduction\n\n"
            "\nLIST OF OPTIONS:\n\n"
            "                   one [bool] :   true\n"
            "                  zero [bool] :   false\n"
            "                 steps  [int] :   12\n"
            "             tolerance  [dbl] :   0.001\n"
            "                  text  [str] :   abc\n"
            " ");
}

TEST(Algorithm, WithoutOptionsSaysSo) {
  C_Algorithm algorithm("");
  C_ZarelMessage message = messageOfLevel(0);

  EXPECT_EQ(capture([&] { algorithm.AffOptions(message); }).out,
            "\nLIST OF OPTIONS:\n\n  No active Options\n ");
}

TEST(Algorithm, AnInactiveMessageStaysAsItIs) {
  C_Algorithm algorithm("");
  C_ZarelMessage message = messageOfLevel(3);

  EXPECT_EQ(capture([&] {
              algorithm.AffOptions(message);
              algorithm.DisplayConfiguration(message);
            }).out,
            "");
  EXPECT_EQ(message.getMessage(), "");
}

TEST(Algorithm, SurvivesFailingAllocations) {
  const long failed = support::forEachFailingAllocation([] {
    C_Algorithm algorithm("a name that is too long to stand in the string itself");
    algorithm.setOption("an option whose name is long enough to be allocated", 1.0);
    C_Algorithm copy(algorithm);
    EXPECT_EQ(copy.getOption_d("an option whose name is long enough to be allocated"), 1.0);
  });

  EXPECT_GT(failed, 0);
}

} // namespace
