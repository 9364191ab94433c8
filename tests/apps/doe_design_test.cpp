#include "app_support.h"
#include "doe/design.h"

#include <gmock/gmock.h>
#include <set>

using namespace app;
using namespace app::doe;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

class DoeDesign : public apptest::InFolder {
protected:
  Design made() { return makeDesign(choice_, 1); }
  Failure refused() {
    return failureOf([this] { made(); });
  }

  Choice choice_;
};

TEST_F(DoeDesign, HasTenPointsAFactorUnlessToldOtherwise) {
  choice_.factors = 3;
  EXPECT_EQ(made().coded.size(), 30u);
  choice_.points = 4;
  EXPECT_EQ(made().coded.size(), 4u);
}

TEST_F(DoeDesign, HasNoMorePointsThanItsLevels) {
  choice_.factors = 3;
  choice_.levels = 2;
  EXPECT_EQ(made().coded.size(), 8u);
  choice_.centre = true;
  EXPECT_EQ(made().coded.size(), 9u) << "the centre is no corner";
  choice_.levels = 3;
  EXPECT_EQ(made().coded.size(), 27u) << "here it is one of the points";
}

TEST_F(DoeDesign, MorePointsThanCornersAreRefused) {
  choice_.factors = 3;
  choice_.levels = 2;
  choice_.points = 9;
  EXPECT_EQ(refused().code, ExitCode::usage);
  EXPECT_THAT(refused().text(), HasSubstr("2 levels of 3 factors have 8 corners; 9 different"));
  choice_.points = 8;
  EXPECT_EQ(made().coded.size(), 8u);
  choice_.keep = write("k.csv", "1,1,1\n1,1,-1\n0,0,0\n");
  EXPECT_THAT(refused().text(), HasSubstr("of which 6 are free"));
  choice_.levels = 1;
  EXPECT_THAT(refused().text(), HasSubstr("--levels 1"));
}

TEST_F(DoeDesign, FactorsAreSaidInOneWay) {
  EXPECT_THAT(refused().text(), HasSubstr("a design needs factors"));
  choice_.factors = 2;
  choice_.inputs = {"a=0:1"};
  EXPECT_THAT(refused().hint, HasSubstr("one of them"));
  choice_.factors = 0;
  choice_.bounds = write("b.txt", "a=0:1\n");
  EXPECT_THAT(refused().hint, HasSubstr("one of them"));
  choice_.inputs.clear();
  EXPECT_EQ(made().names(), std::vector<std::string>{"a"});
  choice_.bounds = "-";
  EXPECT_EQ(refused().code, ExitCode::usage);
}

TEST_F(DoeDesign, BoundsTheWrongWayRoundAreRefused) {
  choice_.inputs = {"a=1:0"};
  EXPECT_EQ(refused().code, ExitCode::usage);
  choice_.inputs.clear();
  choice_.bounds = write("b.txt", "a=1:0\n");
  EXPECT_EQ(refused().code, ExitCode::badInput);
}

TEST_F(DoeDesign, ValuesArePhysicalWithinTheBounds) {
  choice_.inputs = {"a=10:20", "b=-1:0"};
  const Design design = made();

  ASSERT_EQ(design.values.size(), design.coded.size());
  EXPECT_TRUE(design.physical);
  for (std::size_t i = 0; i < design.values.size(); ++i) {
    EXPECT_NEAR(design.values[i][0], 15 + 5 * design.coded[i][0], 1e-13);
    EXPECT_NEAR(design.values[i][1], -0.5 + 0.5 * design.coded[i][1], 1e-15);
  }
}

TEST_F(DoeDesign, CentreAndKeptPointsComeFirstAsTheyWereGiven) {
  choice_.inputs = {"a=10:20", "b=0:1"};
  choice_.centre = true;
  choice_.points = 3;
  choice_.keep = write("k.csv", "b,other,a\n0.1,7,10.3\n0.7,7,19.1\n");
  const Design design = made();

  EXPECT_EQ(Points(design.values.begin(), design.values.begin() + 3),
            (Points{{15, 0.5}, {10.3, 0.1}, {19.1, 0.7}}));
  EXPECT_EQ(design.origins, (std::vector<Origin>{Origin::centre, Origin::kept, Origin::kept,
                                                 Origin::drawn, Origin::drawn, Origin::drawn}));
  EXPECT_EQ(design.count(Origin::drawn), 3u);
  EXPECT_EQ(design.outside, 0u);
}

TEST_F(DoeDesign, DrawnPointsStayAwayFromAllOthers) {
  choice_.factors = 1;
  choice_.points = 1;
  choice_.keep = write("k.csv", "x1\n-1\n");
  choice_.away = write("a.csv", "x1\n1\n");
  const Design design = made();

  ASSERT_EQ(design.coded.size(), 2u) << "what it stays away from is not part of it";
  EXPECT_NEAR(design.coded[1][0], 0, 0.01);
  EXPECT_EQ(design.away, (Points{{1}}));
}

TEST_F(DoeDesign, PointsThatStandTwiceAreTakenOnce) {
  choice_.factors = 2;
  choice_.points = 1;
  choice_.centre = true;
  choice_.keep = write("k.csv", "0,0\n1,1\n1,1\n0.5,3\n");
  const Design design = made();

  EXPECT_EQ(design.repeated, 2u);
  EXPECT_EQ(design.outside, 1u);
  EXPECT_EQ(design.coded.size(), 4u);
}

TEST_F(DoeDesign, KeptPointsStandOnTheLevelsTheyCameFrom) {
  choice_.inputs = {"a=0.1:0.7"}; // no level but the bounds is met exactly
  choice_.levels = 4;
  choice_.points = 4;
  const Design all = made();
  std::string csv = "a\n";
  for (const auto& row : all.values)
    csv += std::to_string(row[0]) + "\n";
  choice_.keep = write("k.csv", csv);
  choice_.points = 1;

  EXPECT_THAT(refused().text(), HasSubstr("of which 0 are free"));
}

TEST_F(DoeDesign, TheSeedDecides) {
  choice_.factors = 2;
  choice_.points = 5;
  EXPECT_EQ(makeDesign(choice_, 1).coded, makeDesign(choice_, 1).coded);
  EXPECT_NE(makeDesign(choice_, 1).coded, makeDesign(choice_, 2).coded);
  EXPECT_EQ(makeDesign(choice_, 0).coded.size(), 5u);
}

TEST_F(DoeDesign, FilesOfPointsAreChecked) {
  choice_.factors = 2;
  choice_.keep = write("k.csv", "1,2,3\n");
  EXPECT_THAT(refused().text(), HasSubstr("3 columns for 2 factors"));
  choice_.keep = write("k.csv", "x1,y\n1,2\n");
  EXPECT_THAT(refused().text(), HasSubstr("x2"));
  choice_.keep = write("k.csv", "x1,x2\n1,two\n");
  EXPECT_EQ(refused().place.row, 1);
  choice_.keep = path("none.csv");
  EXPECT_EQ(refused().code, ExitCode::io);
  choice_.keep = choice_.away = "-";
  EXPECT_EQ(refused().code, ExitCode::usage);
}

TEST_F(DoeDesign, ADesignHasPoints) {
  choice_.factors = 2;
  choice_.points = 0;
  EXPECT_THAT(refused().text(), HasSubstr("without points"));
  choice_.centre = true;
  EXPECT_EQ(made().coded, (Points{{0, 0}}));
}

} // namespace
