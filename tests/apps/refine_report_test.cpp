#include "app_support.h"
#include "axis.h"
#include "refine/charts.h"
#include "refine/study_report.h"

#include <cmath>
#include <gmock/gmock.h>

using namespace app;
using namespace app::refine;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

/// True if Python's XML parser takes the text.
bool isXml(const std::string& text, const std::string& file) {
  std::ofstream(file, std::ios::binary) << text;
  const std::string command =
      "python3 -c 'import sys,xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])' '" + file + "'";
  return std::system(command.c_str()) == 0;
}

int occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

std::vector<RoundRecord> someRounds(bool validation, int count = 4) {
  std::vector<RoundRecord> rounds(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    RoundRecord& round = rounds[static_cast<std::size_t>(i)];
    round.samples = 20 + 5 * i;
    round.predictedError = 0.3 / (i + 1);
    round.predictedRms = 0.1 / (i + 1);
    if (!validation) continue;
    round.validation = std::make_unique<Validation>();
    round.validation->largestError = 0.2 / (i + 1);
    round.validation->rmsError = 0.05 / (i + 1);
    round.validation->r2 = {0.9, 0.8};
  }
  return rounds;
}

Comparison someComparison() {
  Comparison c;
  c.simulated = {{1, -5}, {2, 0}, {3, 5}};
  c.predicted = {{1.1, -5}, {2, 0.1}, {2.9, 5}};
  c.error = {{0.1, 0}, {0.2, 1}, {std::nan(""), 1}};
  c.measures.r2 = {0.99, 0.5};
  return c;
}

class RefineCharts : public apptest::InFolder {
protected:
  bool wellFormed(const Chart& chart) {
    return isXml(svgFile({{chart}}, "title"), path("chart.svg"));
  }
};

TEST(RefineAxis, LinearTicksAreRound) {
  const Axis axis = linearAxis(0.3, 9.6, 5);
  EXPECT_THAT(axis.ticks, ElementsAre(0, 2, 4, 6, 8, 10));
  EXPECT_DOUBLE_EQ(axis.position(2.5), 0.25);
}

TEST(RefineAxis, LinearAxisOfOneValueHasRoomAroundIt) {
  for (double value : {0.0, 5.0, -1e9}) {
    const Axis axis = linearAxis(value, value, 4);
    EXPECT_LT(axis.low, axis.high);
    EXPECT_GT(axis.position(value), 0);
    EXPECT_LT(axis.position(value), 1);
  }
}

TEST(RefineAxis, LogTicksAreOneTwoFive) {
  const Axis axis = logAxis(0.012, 0.8);
  EXPECT_THAT(axis.ticks, ElementsAre(0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1));
  EXPECT_NEAR(axis.position(std::sqrt(axis.low * axis.high)), 0.5, 1e-12);
}

TEST(RefineAxis, WideLogRangesHaveFewTicks) {
  EXPECT_LE(logAxis(1e-30, 1e30).ticks.size(), 12u);
}

TEST(RefineReportText, MarkupControlCharactersAndBrokenUtf8AreMadeSafe) {
  EXPECT_EQ(xmlText("a<b & \"c\" > d"), "a&lt;b &amp; &quot;c&quot; &gt; d");
  EXPECT_EQ(xmlText(std::string("x\x01y")), "x y");
  EXPECT_EQ(xmlText("\xff"), "\xEF\xBF\xBD");
}

TEST(RefineReportText, ThemesNameTheirColours) {
  const std::string css = themed("p { color: @a; background: @page; }");
  EXPECT_EQ(css.find('@'), css.find("@media"));
  EXPECT_THAT(css, HasSubstr("prefers-color-scheme: dark"));
}

TEST_F(RefineCharts, ErrorChartDrawsEachSeriesOnce) {
  const Chart chart = errorChart(someRounds(true), 0.01);

  EXPECT_TRUE(wellFormed(chart));
  EXPECT_EQ(occurrences(chart.body, "<polyline"), 4);
  EXPECT_EQ(occurrences(chart.body, "<circle"), 16);
  EXPECT_THAT(chart.body, HasSubstr("target 1 %"));
}

TEST_F(RefineCharts, ErrorChartTakesWhateverARoundHolds) {
  auto rounds = someRounds(false, 2);
  rounds[0].predictedError = std::nan("");
  rounds[1].predictedRms = 0;

  EXPECT_EQ(occurrences(errorChart(rounds, 0.01).body, "<circle"), 2);
  for (int count : {0, 1})
    EXPECT_TRUE(wellFormed(errorChart(someRounds(false, count), 1e-300))) << count;
}

TEST_F(RefineCharts, LargerErrorsStandHigher) {
  const std::string body = errorChart(someRounds(false, 2), 1e-9).body;
  // Two circles a series, in order of samples: the error falls, so y grows.
  const auto first = body.find("cy=\""), second = body.find("cy=\"", first + 1);
  EXPECT_LT(std::stod(body.substr(first + 4)), std::stod(body.substr(second + 4)));
}

TEST_F(RefineCharts, ScatterChartHasADotAPointAndABarWhereTheErrorIsKnown) {
  const Chart chart = scatterChart(someComparison(), 0, "mass <kg>");

  EXPECT_TRUE(wellFormed(chart));
  EXPECT_EQ(occurrences(chart.body, "<circle"), 3);
  EXPECT_EQ(occurrences(chart.body, "class=\"bar a\""), 2);
  EXPECT_THAT(chart.body, HasSubstr("mass &lt;kg&gt;"));
  EXPECT_EQ(occurrences(scatterChart(someComparison(), 1, "").body, "class=\"bar a\""), 2);
}

TEST_F(RefineCharts, NothingOfAnSvgFileComesFromElsewhere) {
  const std::string svg = svgFile({{errorChart(someRounds(true), 0.01)}}, "t");
  EXPECT_EQ(svg.find("<script"), std::string::npos);
  EXPECT_EQ(svg.find("href"), std::string::npos);
  EXPECT_EQ(svg.find("url("), std::string::npos);
}

class RefineReport : public apptest::InFolder {
protected:
  RefineReport() {
    settings_.variables = {{"a", 0, 1}, {"b<i>", 0, 2}};
    settings_.outputs = {"y", "z"};
    settings_.identity = {{"seed", 1}};
    settings_.options.command = "sim \"<&>\"";
    settings_.validation.x = {{0, 0}};
    study_ = std::make_unique<Study>(path("s"), false, app::Json::object(), [] {
      return StudyStart{app::Json::object(), {{0.5, 1}, {1, 2}}, {}};
    });
    RunResult run;
    run.done = {{0, {3, 4}}};
    run.failed = {{1, "said \"<no>\", and left"}};
    run.folder = "failed/run-000002";
    study_->recordRun(run);
    for (RoundRecord& round : someRounds(true, 1))
      study_->recordRound(std::move(round));
    facts_.outputs = {"y"};
    facts_.correlation = 2;
    facts_.theta = {0.5, 2};
  }

  ReportData data() const { return {settings_, *study_, {facts_}, &comparison_, Outcome::target}; }

  Settings settings_;
  std::unique_ptr<Study> study_;
  Comparison comparison_ = someComparison();
  app::ModelFacts facts_;
};

TEST_F(RefineReport, PageIsWellFormedAndNeedsNothingElse) {
  const std::string page = htmlReport(data());

  EXPECT_TRUE(isXml(page.substr(page.find('\n') + 1), path("page.xml")));
  for (const char* outside : {"<script", "http:", "https:", "url(", "@import", "<img"})
    EXPECT_EQ(page.find(outside), std::string::npos) << outside;
  EXPECT_EQ(occurrences(page, "<svg"), 4); // errors, two outputs, one model
  EXPECT_THAT(page, HasSubstr("said &quot;&lt;no&gt;&quot;, and left"));
}

TEST_F(RefineReport, PageOfAStudyWithoutRoundsIsWellFormed) {
  ReportData empty{settings_, *study_, {}, nullptr, {}};
  const std::string page = htmlReport(empty);
  EXPECT_TRUE(isXml(page.substr(page.find('\n') + 1), path("page.xml")));
}

TEST_F(RefineReport, PictureIsWellFormed) {
  EXPECT_TRUE(isXml(svgReport(data()), path("picture.svg")));
}

TEST_F(RefineReport, CsvFilesHoldSamplesAndFailures) {
  writeSamples(path("samples.csv"), settings_, *study_);
  writeFailed(path("failed.csv"), settings_, *study_);

  EXPECT_EQ(read("samples.csv"), "a,b<i>,y,z,round\n0.5,1,3,4,0\n");
  EXPECT_EQ(
      read("failed.csv"),
      "a,b<i>,point,folder,reason\n1,2,2,failed/run-000002,\"said \"\"<no>\"\", and left\"\n");
}

TEST_F(RefineReport, DocumentTellsTheStudy) {
  app::Json document;
  addToDocument(document, data());

  EXPECT_EQ(document["outcome"], "target-reached");
  EXPECT_EQ(document["simulated"], 2);
  ASSERT_EQ(document["rounds"].size(), 1u);
  EXPECT_EQ(document["rounds"][0]["predicted_error"], 0.3);
  EXPECT_EQ(document["rounds"][0]["validation"]["r2"], app::Json::array({0.9, 0.8}));
  ASSERT_EQ(document["failed"].size(), 1u);
  EXPECT_EQ(document["failed"][0]["inputs"]["a"], 1);
  EXPECT_EQ(document["failed"][0]["point"], 2);
}

TEST(RefineTable, RowsAreAsWideAsTheirHead) {
  for (bool validation : {false, true}) {
    const std::string head = tableHead(validation);
    const auto rounds = someRounds(validation, 1);
    std::size_t width = 0; // of the first line, in characters
    for (char c : head.substr(0, head.find('\n')))
      width += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    EXPECT_EQ(tableRow(0, rounds[0]).size() - 1, width) << validation;
  }
}

} // namespace
