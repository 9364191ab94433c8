#include "app_support.h"
#include "doe/picture.h"

#include <gmock/gmock.h>

using namespace app;
using namespace app::doe;
using apptest::failureOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

Design designOf(std::size_t factors, const Points& points) {
  Design design;
  design.variables = codedVariables(static_cast<int>(factors));
  design.coded = design.values = points;
  design.origins.assign(points.size(), Origin::drawn);
  return design;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

TEST(DoePicture, ShowsEveryPairAndEveryFactor) {
  const Chart chart = designChart(designOf(3, {{0, 0, 0}, {0.5, -0.5, 1}}));

  EXPECT_EQ(countOf(chart.body, "<rect class=\"panel\""), 6u);
  EXPECT_EQ(countOf(chart.body, "class=\"dot a\""), 3 * 2u + 1) << "and one in the legend";
  EXPECT_EQ(countOf(chart.body, "class=\"rug\""), 3 * 2u);
  EXPECT_THAT(chart.body, HasSubstr(">x3</text>"));
  EXPECT_THAT(chart.body, HasSubstr(">2 points of 3 factors</text>"));
}

TEST(DoePicture, TellsPointsApart) {
  Design design = designOf(2, {{0, 0}, {0.5, 0.5}, {-0.5, 0.5}});
  design.origins = {Origin::centre, Origin::kept, Origin::drawn};
  design.away = {{1, 1}};
  const std::string body = designChart(design).body;

  for (const char* cls : {"dot good", "dot b", "dot a", "dot hollow"})
    EXPECT_EQ(countOf(body, "class=\"" + std::string(cls) + "\""), 2u) << cls;
  for (const char* word : {">centre<", ">kept<", ">drawn<", ">to stay away from<"})
    EXPECT_THAT(body, HasSubstr(word));
}

TEST(DoePicture, LeavesWordsOutThatSayNothing) {
  const std::string body = designChart(designOf(1, {{0.25}})).body;
  EXPECT_THAT(body, HasSubstr(">1 point of 1 factor</text>"));
  EXPECT_THAT(body, Not(HasSubstr("kept")));
}

// Where a value stands: the picture is measured, not believed.
TEST(DoePicture, DotsStandWhereTheirValuesAre) {
  const std::string body = designChart(designOf(2, {{-1, 1}, {1, -1}, {0, 0}})).body;
  std::vector<std::pair<double, double>> dots;
  for (auto at = body.find("<circle"); at != body.npos; at = body.find("<circle", at + 1)) {
    double x = 0, y = 0;
    ASSERT_EQ(std::sscanf(body.c_str() + at, "<circle cx=\"%lf\" cy=\"%lf\"", &x, &y), 2);
    dots.emplace_back(x, y);
  }
  ASSERT_EQ(dots.size(), 4u); // the first is the legend's; the last point is drawn first
  const auto centre = dots[1], lowRight = dots[2], highLeft = dots[3];

  EXPECT_NEAR(centre.first, 0.5 * (highLeft.first + lowRight.first), 0.11);
  EXPECT_NEAR(centre.second, 0.5 * (highLeft.second + lowRight.second), 0.11);
  EXPECT_LT(highLeft.first, lowRight.first);
  EXPECT_LT(highLeft.second, lowRight.second) << "upwards is up";
}

TEST(DoePicture, PointsOutsideTheBoundsStandOnTheEdge) {
  EXPECT_EQ(countOf(designChart(designOf(2, {{7, 0}})).body, "cx=\""),
            countOf(designChart(designOf(2, {{1, 0}})).body, "cx=\""));
}

TEST(DoePicture, NamesAreMadeSafeAndShort) {
  Design design = designOf(2, {{0, 0}});
  design.variables[0].name = "a<b&\"c\"";
  design.variables[1].name = std::string(200, 'n');
  const std::string body = designChart(design).body;

  EXPECT_THAT(body, HasSubstr("a&lt;b&amp;&quot;c&quot;"));
  EXPECT_THAT(body, Not(HasSubstr(std::string(100, 'n'))));
}

TEST(DoePicture, TooLargeDesignsAreRefused) {
  EXPECT_EQ(failureOf([] { designChart(designOf(21, {})); }).code, ExitCode::usage);
  const Points many(10000, std::vector<double>(10, 0.0));
  EXPECT_THAT(failureOf([&] { designChart(designOf(10, many)); }).text(), HasSubstr("dots"));
}

} // namespace
