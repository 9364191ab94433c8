#include "program_support.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <limits>
#include <memory>

#include <zarel/KrigingList.h>

#include "support/sanitizers.h"

using apptest::Around;
using apptest::firstLine;
using apptest::numbersOf;
using apptest::Outcome;
using apptest::Words;
using ::testing::HasSubstr;

namespace {

class Predict : public apptest::Program {
protected:
  Outcome predict(const std::string& csv, const Words& more = {}) {
    Words words{"predict", model_, write("p.csv", csv)};
    words.insert(words.end(), more.begin(), more.end());
    return zarel(words);
  }

  void SetUp() override { model_ = fitModel(); }

  std::string model_;
};

/**
 * How far the first output of a model may be from its first sample. The coefficients solve
 * (R + mu I - D) gamma = y - F beta, where D holds the dropped correlations, each below the drop
 * tolerance t; so the prediction differs from the sample by mu gamma_0 and at most t sum |gamma|,
 * in scaled units, and by rounding.
 */
double distanceFromFirstSample(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  KrigingList<double> list;
  EXPECT_EQ(list.Read(file.get()), 0);
  Kriging<double>& model = *list.GetItemKriging(0);
  C_MatMGe<double> gamma;
  C_VecPi<double, int, C_PtrInCore<double, int>> scale;
  EXPECT_EQ(model.GetCorrCoeff(gamma), 0);
  EXPECT_EQ(model.GetOutScaleVec(scale), 0);
  const double tolerance = 1e-8;
  const double increment = std::sqrt(gamma.NbRow()) * tolerance + (gamma.NbRow() + 10) * 1e-14;
  double sum = 0;
  for (int i = 0; i < gamma.NbRow(); ++i)
    sum += std::fabs(gamma(i, 0));
  const double rounding = 100 * std::numeric_limits<double>::epsilon() * sum;
  return (increment * std::fabs(gamma(0, 0)) + tolerance * sum + rounding) / scale[0];
}

TEST_F(Predict, ApproximatesTheFunction) {
  const Outcome run = predict("a,b\n0.33,0.71\n0.5,0.5\n");

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(firstLine(run.out), "y,z");
  const auto rows = numbersOf(run.out);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_NEAR(rows[0][0], apptest::exactY(0.33, 0.71), 0.02);
  EXPECT_NEAR(rows[0][1], apptest::exactZ(0.33, 0.71), 0.02);
  EXPECT_NEAR(rows[1][0], apptest::exactY(0.5, 0.5), distanceFromFirstSample(model_))
      << "a sample, but for what is added to the diagonal";
}

TEST_F(Predict, FindsTheInputsByName) {
  const auto plain = predict("a,b\n0.3,0.7\n").out;
  EXPECT_EQ(predict("b,name,a\n0.7,first,0.3\n").out, plain);
  EXPECT_EQ(predict("\"b\";\"a\"\r\n0.7;0.3\r\n").out, plain);
  EXPECT_EQ(predict("0.3,0.7\n").out, plain) << "no header: by position";
  EXPECT_EQ(predict("u,v\n0.7,0.3\n", {"--inputs", "v,u"}).out, plain);
}

TEST_F(Predict, RefusesPointsThatLackAnInput) {
  const Outcome run = predict("a,bb\n0.3,0.7\n");
  EXPECT_EQ(run.code, 3);
  EXPECT_THAT(run.err, HasSubstr("did you mean \"bb\"?"));
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(predict("0.3\n").code, 3);
  EXPECT_EQ(predict("a,b\n1,2\n", {"--inputs", "a"}).code, 3);
}

TEST_F(Predict, StandardErrorsVanishAtSamples) {
  const Outcome run = predict("a,b\n0.5,0.5\n0.27,0.51\n1.5,1.5\n", {"--error"});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(firstLine(run.out), "y,z,y_error,z_error");
  const auto rows = numbersOf(run.out);
  EXPECT_LT(rows[0][2], 1e-3 * rows[2][2]) << "a sample, against a point far outside";
  EXPECT_GT(rows[1][2], 0);
  EXPECT_GT(rows[2][2], rows[1][2]);
}

TEST_F(Predict, StandardErrorsWithoutATrendAreToldToHaveNoUnit) {
  const std::string mixed = fitModel("mixed.krg", {"--trend", "none,constant"});
  const Outcome errors = zarel({"predict", mixed, writePoints(3), "-e"});
  EXPECT_EQ(errors.code, 0) << errors.err;
  EXPECT_THAT(errors.err, HasSubstr("warning: the standard errors of y run from 0 to 1"));
  EXPECT_EQ(zarel({"predict", mixed, path("points.csv")}).err, "");
  EXPECT_EQ(zarel({"predict", model_, path("points.csv"), "-e"}).err, "");
}

/** Standard errors need the factors again; the predictions must not move for that. */
TEST_F(Predict, ErrorsDoNotChangeThePredictions) {
  writePoints(200, "many.csv");
  const auto plain = numbersOf(zarel({"predict", model_, path("many.csv")}).out);
  const auto both = numbersOf(zarel({"predict", model_, path("many.csv"), "-e"}).out);
  ASSERT_EQ(plain.size(), both.size());
  for (std::size_t i = 0; i < plain.size(); ++i)
    for (int j = 0; j < 2; ++j)
      EXPECT_NEAR(both[i][j], plain[i][j], 1e-9);
}

TEST_F(Predict, CanRepeatTheInputs) {
  const Outcome run = predict("b,a\n0.7,0.3\n", {"--with-inputs"});
  EXPECT_EQ(firstLine(run.out), "a,b,y,z");
  EXPECT_EQ(numbersOf(run.out)[0][0], 0.3);
}

TEST_F(Predict, WritesAFile) {
  const Outcome run = predict("a,b\n0.3,0.7\n", {"-o", path("out.csv")});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(read("out.csv"), predict("a,b\n0.3,0.7\n").out);
  EXPECT_EQ(predict("a,b\n0.3,0.7\n", {"-o", path("out.csv")}).code, 2) << "it exists";
  EXPECT_EQ(predict("a,b\n0.3,0.7\n", {"-o", path("out.csv"), "--force"}).code, 0);
}

TEST_F(Predict, ReadsStreams) {
  Around points;
  points.input = "a,b\n0.3,0.7\n";
  EXPECT_EQ(zarel({"predict", model_, "-"}, points).out, predict(points.input).out);
  Around model;
  model.inputFile = model_;
  EXPECT_EQ(zarel({"predict", "-", path("p.csv")}, model).out, predict(points.input).out);
  EXPECT_EQ(zarel({"predict", "-", "-"}, model).code, 2);
}

TEST_F(Predict, JsonIsOneDocumentWithTheRows) {
  const Outcome run = predict("a,b\n0.3,0.7\n0.1,0.2\n", {"--json", "-e"});
  ASSERT_EQ(run.code, 0) << run.err;
  const auto document = run.json();
  EXPECT_EQ(document["schema_version"], 1);
  EXPECT_EQ(document["columns"], (Words{"y", "z", "y_error", "z_error"}));
  EXPECT_EQ(document["rows"].size(), 2u);
  EXPECT_EQ(document["points"], 2);
  EXPECT_EQ(document["rows"][0][0].get<double>(),
            numbersOf(predict("a,b\n0.3,0.7\n", {"-e"}).out)[0][0]);
}

TEST_F(Predict, JsonBesideAFileIsAReport) {
  const auto document = predict("a,b\n0.3,0.7\n", {"--json", "-o", path("o.csv")}).json();
  EXPECT_EQ(document["command"], "predict");
  EXPECT_EQ(document["points"], 1);
  EXPECT_EQ(document["output"], path("o.csv"));
}

TEST_F(Predict, NoPointsGiveAHeaderAlone) {
  EXPECT_EQ(predict("a,b\n").out, "y,z\n");
}

TEST_F(Predict, AWrongRowEndsWithItsPlace) {
  std::string csv = "a,b\n";
  for (int i = 0; i < 20000; ++i)
    csv += "0.5,0.5\n";
  csv += "0.5,oops\n";

  const Outcome run = predict(csv, {"-o", path("out.csv")});

  EXPECT_EQ(run.code, 3);
  EXPECT_THAT(run.err, HasSubstr(path("p.csv") + ":20002: row 20001, column 2 (b)"));
  EXPECT_FALSE(exists("out.csv"));
  const Outcome json = predict(csv, {"--json"});
  EXPECT_EQ(json.code, 3);
  const auto document = json.json();
  EXPECT_EQ(document["error"]["row"], 20001);
  EXPECT_EQ(document["rows"].size(), document["points"]);
}

TEST_F(Predict, SkipLeavesPointsOut) {
  writePoints(5000, "many.csv");
  const std::string all = zarel({"predict", model_, path("many.csv")}).out;
  const std::string rest = zarel({"predict", model_, path("many.csv"), "--skip", "1234"}).out;
  auto expected = numbersOf(all);
  expected.erase(expected.begin(), expected.begin() + 1234);
  const auto rows = numbersOf(rest);
  ASSERT_EQ(rows.size(), expected.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (int j = 0; j < 2; ++j)
      ASSERT_NEAR(rows[i][j], expected[i][j], 1e-12);
}

/** A big file passes through in blocks: the peak is that of a small one and a little more. */
TEST_F(Predict, StreamsInBoundedMemory) {
  const std::string big = path("big.csv");
  {
    std::ofstream file(big);
    file << "a,b\n";
    std::string line;
    for (int i = 0; i < 1500000; ++i) {
      line = std::to_string(0.123456 + i * 1e-7) + "5678901," + std::to_string(0.9 - i * 1e-7) +
             "2345678901\n";
      file << line;
    }
  }
  ASSERT_GT(std::filesystem::file_size(big), 45u << 20);
  writePoints(20000, "small.csv");

  const Outcome small = zarel({"predict", model_, path("small.csv"), "-o", path("s.csv")});
  const Outcome run = zarel({"predict", model_, big, "-o", path("o.csv")});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_GT(std::filesystem::file_size(path("o.csv")), 30u << 20);
  // The sanitizer keeps freed blocks in quarantine.
  const long slack = support::addressSanitizer ? 300 << 10 : 8 << 10;
  EXPECT_LT(run.peakKiB, small.peakKiB + slack);
}

} // namespace
