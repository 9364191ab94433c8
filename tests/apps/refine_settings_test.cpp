#include "app_support.h"
#include "refine/sampler.h"
#include "refine/settings.h"

#include <cmath>
#include <gmock/gmock.h>

using namespace app::refine;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

const std::vector<Variable> square{{"a", -1, 1}, {"b", 10, 30}};

double smallestDistance(const std::vector<Row>& points) {
  double smallest = 1e300;
  for (std::size_t i = 0; i < points.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      smallest = std::min(smallest, std::hypot((points[i][0] - points[j][0]) / 2,
                                               (points[i][1] - points[j][1]) / 20));
  return smallest;
}

TEST(RefineSampler, DrawsInsideTheBounds) {
  for (const Row& p : RandomSampler(7, 1).draw(1000, square)) {
    EXPECT_TRUE(p[0] > -1 && p[0] < 1);
    EXPECT_TRUE(p[1] > 10 && p[1] < 30);
  }
}

TEST(RefineSampler, FillsTheRangeEvenly) {
  double mean = 0, low = 0;
  for (const Row& p : RandomSampler(7, 1).draw(10000, square)) {
    mean += p[0] / 10000;
    low += p[1] < 15;
  }
  // Four standard deviations of the mean of uniform numbers in (-1, 1), and of a count of quarters.
  EXPECT_NEAR(mean, 0, 4 * std::sqrt(1.0 / 3 / 10000));
  EXPECT_NEAR(low, 2500, 4 * std::sqrt(10000 * 0.25 * 0.75));
}

TEST(RefineSampler, SeedAndStreamDecide) {
  EXPECT_EQ(RandomSampler(7, 1).draw(5, square), RandomSampler(7, 1).draw(5, square));
  EXPECT_NE(RandomSampler(7, 1).draw(5, square), RandomSampler(8, 1).draw(5, square));
  EXPECT_NE(RandomSampler(7, 1).draw(5, square), RandomSampler(7, 2).draw(5, square));
  EXPECT_NE(RandomSampler(7, 1).draw(5, square),
            RandomSampler(7 + (1ull << 32), 1).draw(5, square));
}

TEST(RefineSampler, SeedZeroIsASeed) {
  EXPECT_EQ(RandomSampler(0, 1).draw(3, square).size(), 3u);
}

TEST(RefineSampler, SpreadDrawIsBetterThanTheUsualOne) {
  double plain = 0, spread = 0;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    plain += smallestDistance(RandomSampler(seed, 1).draw(20, square));
    spread += smallestDistance(SpreadSampler(seed, 1).draw(20, square));
  }
  EXPECT_GT(spread, 1.5 * plain);
}

TEST(RefineSampler, LargeDrawsTakeNoLongerThanTheyMust) {
  EXPECT_EQ(SpreadSampler(1, 1).draw(20000, square).size(), 20000u);
}

TEST(RefineVariable, VariableHasNameAndBounds) {
  const Variable v = parseVariable(" width =-1e-3:2.5");
  EXPECT_EQ(v.name, "width");
  EXPECT_EQ(v.low, -1e-3);
  EXPECT_EQ(v.high, 2.5);
}

TEST(RefineVariable, VariableThatIsNotOneIsRefused) {
  for (const char* text : {"", "w", "w=1", "w=1:", "w=:1", "=1:2", "w=2:1", "w=1:1", "w=a:b",
                           "w=0:inf", "w=nan:1", "w=0:1e999", "w:1=2"})
    EXPECT_EQ(failureOf([&] { parseVariable(text); }).code, app::ExitCode::usage) << text;
}

class RefineSettings : public apptest::InFolder {
protected:
  RefineSettings() {
    options_.study = path("study");
    options_.command = "sim";
    options_.inputs = {"a=0:1", "b=0:1"};
    options_.outputs = "y,z";
  }

  Settings prepared() { return prepare(options_, globals_); }
  app::Failure refused() {
    return failureOf([&] { prepared(); });
  }

  Options options_;
  app::Globals globals_;
};

TEST_F(RefineSettings, DefaultsAreTenSamplesAnInputAndFiveHundredTests) {
  const Settings settings = prepared();
  EXPECT_EQ(settings.initialPoints.size(), 20u);
  EXPECT_EQ(settings.testPoints.size(), 500u);
  EXPECT_TRUE(settings.initialResults.empty());
}

TEST_F(RefineSettings, WhatIsMissingIsNamed) {
  for (auto member : {&Options::study, &Options::command, &Options::outputs}) {
    const std::string former = std::exchange(options_.*member, "");
    EXPECT_EQ(refused().code, app::ExitCode::usage);
    EXPECT_THAT(refused().text(), HasSubstr("missing"));
    options_.*member = former;
  }
  options_.inputs.clear();
  EXPECT_THAT(refused().text(), HasSubstr("--input"));
}

TEST_F(RefineSettings, NamesStandOnce) {
  options_.outputs = "y,a";
  EXPECT_THAT(refused().text(), HasSubstr("\"a\" stands twice"));
  options_.outputs = "y,y";
  EXPECT_THAT(refused().text(), HasSubstr("\"y\" stands twice"));
  options_.outputs = "y";
  options_.inputs = {"a=0:1", "a=0:2"};
  EXPECT_THAT(refused().text(), HasSubstr("stands twice"));
}

TEST_F(RefineSettings, SamplesWithOutputsNeedNoSimulation) {
  options_.samplesFile = write("s.csv", "z,b,a,y\n1,2,3,4\n5,6,7,8\n9,10,11,12\n");
  const Settings settings = prepared();
  EXPECT_EQ(settings.initialPoints, (std::vector<Row>{{3, 2}, {7, 6}, {11, 10}}));
  EXPECT_EQ(settings.initialResults, (std::vector<Row>{{4, 1}, {8, 5}, {12, 9}}));
}

TEST_F(RefineSettings, SamplesWithoutOutputsAreToBeSimulated) {
  options_.samplesFile = write("s.csv", "a,b\n1,2\n3,4\n5,6\n");
  const Settings settings = prepared();
  EXPECT_EQ(settings.initialPoints.size(), 3u);
  EXPECT_TRUE(settings.initialResults.empty());
}

TEST_F(RefineSettings, SamplesWithSomeOutputsAreRefused) {
  options_.samplesFile = write("s.csv", "a,b,y\n1,2,3\n");
  EXPECT_EQ(refused().code, app::ExitCode::badInput);
}

TEST_F(RefineSettings, NearMissOfAColumnIsNamed) {
  options_.inputs = {"width=0:1", "b=0:1"};
  options_.testFile = write("t.csv", "widht,b\n1,2\n");
  EXPECT_EQ(refused().code, app::ExitCode::badInput);
  EXPECT_THAT(refused().hint, HasSubstr("widht"));
}

TEST_F(RefineSettings, BadNumbersAreRefusedWithTheirPlace) {
  options_.validationFile = write("v.csv", "a,b,y,z\n1,2,3,4\n1,2,3,nan\n");
  const app::Failure failure = refused();
  EXPECT_EQ(failure.code, app::ExitCode::badInput);
  EXPECT_EQ(failure.place.row, 2);
  EXPECT_EQ(failure.place.name, "z");
}

TEST_F(RefineSettings, TooFewSamplesAndTooSmallBudgetsAreRefused) {
  options_.initial = 2;
  EXPECT_THAT(refused().text(), HasSubstr("too few"));
  options_.initial = 10;
  options_.budget = 9;
  EXPECT_THAT(refused().text(), HasSubstr("--budget"));
}

TEST_F(RefineSettings, IdentityTellsStudiesApart) {
  const app::Json first = prepared().identity;
  EXPECT_EQ(prepared().identity, first);
  options_.rounds = 3; // may change
  options_.target = 0.5;
  EXPECT_EQ(prepared().identity, first);
  globals_.seed = 2;
  EXPECT_NE(prepared().identity, first);
  globals_.seed = 1;
  options_.model.trend = {1};
  EXPECT_NE(prepared().identity, first);
}

} // namespace
