#include "app_support.h"
#include "refine/settings.h"

#include "space_filling.h"

#include <gmock/gmock.h>

using namespace app::refine;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

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

TEST_F(RefineSettings, PointsAreDrawnByTheDesigns) {
  options_.inputs = {"a=0:2", "b=-5:5"};
  globals_.seed = 7;
  const Settings settings = prepared();

  EXPECT_EQ(settings.initialPoints, app::drawPoints(20, settings.variables, 7, 1));
  EXPECT_EQ(settings.testPoints, app::drawPoints(500, settings.variables, 7, 2));
}

TEST_F(RefineSettings, OnlyStudiesThatDrawPointsSayHow) {
  EXPECT_TRUE(prepared().identity.contains("sampling"));
  options_.samplesFile = write("s.csv", "a,b\n1,2\n3,4\n5,6\n");
  EXPECT_TRUE(prepared().identity.contains("sampling"));
  options_.testFile = write("t.csv", "a,b\n1,2\n");
  EXPECT_FALSE(prepared().identity.contains("sampling"));
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
