#include "program_support.h"

#include <cmath>
#include <gmock/gmock.h>
#include <zarel/KrigingList.h>

using apptest::Outcome;
using apptest::Words;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

class Fit : public apptest::Program {
protected:
  Outcome fit(const std::string& csv, const Words& more = {}) {
    Words words{"fit", write("in.csv", csv), "--inputs", "2", "-o", path("m")};
    words.insert(words.end(), more.begin(), more.end());
    return zarel(words);
  }

  std::string refused(const std::string& csv, const Words& more = {}) {
    const Outcome run = fit(csv, more);
    EXPECT_EQ(run.code, 3) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(exists("m"));
    return run.err;
  }

  nlohmann::json infoOf(const Words& options) {
    return zarel({"info", fitModel("m", options), "--json", "--force"}).json();
  }
};

TEST_F(Fit, WritesAModelAndTellsAboutItOnStandardError) {
  const Outcome run = zarel({"fit", writeSamples(), "--inputs", "a,b", "-o", path("m")});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("fitted 2 models to 36 samples of 2 inputs"));
  EXPECT_THAT(run.err, HasSubstr("y: gaussian, quadratic trend (6 terms)"));
  EXPECT_TRUE(exists("m"));
}

TEST_F(Fit, QuietSaysNothing) {
  EXPECT_EQ(zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("m"), "-q"}).err, "");
}

TEST_F(Fit, JsonIsOneDocument) {
  const Outcome run = zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("m"), "--json"});

  ASSERT_EQ(run.code, 0) << run.err;
  const auto document = run.json();
  EXPECT_EQ(document["schema_version"], 1);
  EXPECT_EQ(document["command"], "fit");
  EXPECT_EQ(document["samples"], 36);
  EXPECT_EQ(document["inputs"], (Words{"a", "b"}));
  EXPECT_EQ(document["outputs"], (Words{"y", "z"}));
  ASSERT_EQ(document["models"].size(), 2u);
  EXPECT_EQ(document["models"][0]["theta"].size(), 2u);
  EXPECT_GT(document["models"][0]["criterion"], 0.0);
  EXPECT_GE(document["seconds"], 0.0);
}

TEST_F(Fit, ModelsAreNotOverwrittenWithoutForce) {
  write("m", "precious");
  const Outcome refused = zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("m")});
  EXPECT_EQ(refused.code, 2);
  EXPECT_THAT(refused.err, HasSubstr("--force"));
  EXPECT_EQ(read("m"), "precious");

  EXPECT_EQ(zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("m"), "--force"}).code, 0);
  EXPECT_NE(read("m"), "precious");
}

TEST_F(Fit, TheModelGoesToAStream) {
  const Outcome run =
      zarel({"fit", "-", "--inputs", "2", "-o", "-"},
            {read(std::filesystem::path(writeSamples()).filename().string()), {}, {}, {}, {}, {}});
  ASSERT_EQ(run.code, 0) << run.err;
  write("streamed", run.out);
  fitModel("m");
  EXPECT_EQ(read("streamed"), read("m"));
  EXPECT_EQ(zarel({"fit", writeSamples(), "--inputs", "2", "-o", "-", "--json"}).code, 2);
}

/** A host reads the program's file with the library alone. */
TEST_F(Fit, TheLibraryReadsTheModelFromItsStart) {
  const std::string model = fitModel();
  std::FILE* file = std::fopen(model.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  KrigingList<double> list;
  EXPECT_EQ(list.Read(file), 0);
  std::fclose(file);

  C_MatMGe<double> x;
  C_MatMGe<double> y;
  x.Resize(20, 2);
  std::string csv = "a,b\n";
  for (int i = 0; i < 20; ++i) {
    x(i, 0) = i / 32.0;
    x(i, 1) = 1 - i / 64.0;
    csv += std::to_string(i / 32.0) + "," + std::to_string(1 - i / 64.0) + "\n";
  }
  ASSERT_EQ(list.EvalModel(x, y), 0);
  const Outcome run = zarel({"predict", model, write("p.csv", csv)});
  ASSERT_EQ(run.code, 0) << run.err;
  const auto rows = apptest::numbersOf(run.out);
  ASSERT_EQ(rows.size(), 20u);
  for (int i = 0; i < 20; ++i)
    EXPECT_THAT(rows[i], ElementsAre(y(i, 0), y(i, 1)));
}

/** The program's model is the one that the library's own calls make. */
TEST_F(Fit, OptionsReachTheLibrary) {
  const auto info =
      infoOf({"--correlation", "matern52,gaussian", "--trend", "linear,constant", "--scaling",
              "inputs", "--kernel", "isotropic,anisotropic", "--no-optimise", "--theta", "2,3,4",
              "--drop-tolerance", "1e-7", "--bounds", "0.5:4"});
  EXPECT_EQ(info["models"][0]["correlation"], "matern52");
  EXPECT_EQ(info["models"][1]["correlation"], "gaussian");
  EXPECT_EQ(info["models"][0]["trend"], "linear");
  EXPECT_EQ(info["models"][0]["trend_terms"], 3);
  EXPECT_EQ(info["models"][1]["trend"], "constant");
  EXPECT_EQ(info["models"][0]["scaling"], "inputs");
  EXPECT_EQ(info["models"][0]["theta"], std::vector<double>{2});
  EXPECT_EQ(info["models"][1]["theta"], (std::vector<double>{3, 4}));
  EXPECT_EQ(info["models"][0]["optimised"], false);
  EXPECT_EQ(info["drop_tolerance"], 1e-7);
  EXPECT_EQ(info["lower_bound"], 0.5);
  EXPECT_EQ(info["upper_bound"], 4);
}

TEST_F(Fit, BoundsHoldTheSearch) {
  const auto info = infoOf({"--theta", "2,2,2,2", "--bounds", "0.9:1.1"});
  for (const auto& model : info["models"]) {
    for (const double theta : model["theta"].get<std::vector<double>>()) {
      EXPECT_GE(theta, 0.9 * 2 * (1 - 1e-12));
      EXPECT_LE(theta, 1.1 * 2 * (1 + 1e-12));
    }
  }
}

TEST_F(Fit, EveryCorrelationFits) {
  // At such multipliers all samples are strangers to each other, so every function fits.
  for (const char* name : {"exponential", "gaussian", "linear", "spherical", "cubic", "spline",
                           "matern52", "quadratic", "bessel", "sinc"})
    EXPECT_EQ(infoOf({"--correlation", name, "--no-optimise", "--theta", "900,900,900,900",
                      "--force"})["models"][0]["correlation"],
              name);
}

TEST_F(Fit, GroupsShareAModel) {
  const auto each = infoOf({"--groups", "each"});
  EXPECT_EQ(each["models"].size(), 2u);
  const auto all = infoOf({"--groups", "all", "--force"});
  ASSERT_EQ(all["models"].size(), 1u);
  EXPECT_EQ(all["models"][0]["outputs"], (Words{"y", "z"}));
  const auto turned = infoOf({"--groups", "z;y", "--force"});
  EXPECT_EQ(turned["models"][0]["outputs"], Words{"z"});
  const Outcome wrong =
      zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("n"), "--groups", "y,zz"});
  EXPECT_EQ(wrong.code, 2);
  EXPECT_THAT(wrong.err, HasSubstr("did you mean \"z\"?"));
}

TEST_F(Fit, ListsOfTheWrongLengthAreUsageErrors) {
  const std::string samples = writeSamples();
  for (const Words& more : {Words{"--trend", "linear,linear,linear"}, Words{"--theta", "1"},
                            Words{"--kernel", "isotropic,isotropic", "--groups", "all"}}) {
    Words words{"fit", samples, "--inputs", "2", "-o", path("n")};
    words.insert(words.end(), more.begin(), more.end());
    EXPECT_EQ(zarel(words).code, 2) << more[0];
  }
  EXPECT_FALSE(exists("n"));
}

TEST_F(Fit, WrongDataIsRefusedWithItsPlace) {
  const std::string head = "a,b,y\n0,0,1\n0,1,2\n1,0,3\n";
  const std::string file = path("in.csv");
  EXPECT_THAT(refused(head + "1,x,4\n"),
              HasSubstr(file + ":5: row 4, column 2 (b): \"x\" is not a number"));
  EXPECT_THAT(refused(head + "1,nan,4\n"),
              HasSubstr("row 4, column 2 (b): \"nan\" is not a finite"));
  EXPECT_THAT(refused(head + "1,1,inf\n"),
              HasSubstr("row 4, column 3 (y): \"inf\" is not a finite"));
  EXPECT_THAT(refused(head + "1,1e999,4\n"), HasSubstr("beyond double precision"));
  EXPECT_THAT(refused(head + "1,1\n"), HasSubstr(file + ":5: row 4: 2 fields"));
  EXPECT_THAT(refused(head + "1,\"1,4\n"), HasSubstr("never closed"));
  EXPECT_THAT(refused("a,b,y\n"), HasSubstr("no samples"));
  EXPECT_THAT(refused(""), HasSubstr("empty"));
  EXPECT_THAT(refused("a,b,y\n1,2,3\n"), HasSubstr("single sample"));
  EXPECT_THAT(refused("a,y\n1,2\n3,4\n"), HasSubstr("no column is left"));
}

TEST_F(Fit, MissingColumnsAreSuggested) {
  const Outcome run = zarel({"fit", writeSamples(), "--inputs", "a,bb", "-o", path("m")});
  EXPECT_EQ(run.code, 3);
  EXPECT_THAT(run.err, HasSubstr("no column is called \"bb\""));
  EXPECT_THAT(run.err, HasSubstr("did you mean \"b\"?"));
}

TEST_F(Fit, TheErrorOfADataFileIsInTheJson) {
  const Outcome run = fit("a,b,y\n0,0,1\n0,zero,2\n", {"--json"});
  EXPECT_EQ(run.code, 3);
  const auto error = run.json()["error"];
  EXPECT_EQ(error["exit_code"], 3);
  EXPECT_EQ(error["file"], path("in.csv"));
  EXPECT_EQ(error["line"], 3);
  EXPECT_EQ(error["row"], 2);
  EXPECT_EQ(error["column"], 2);
  EXPECT_EQ(error["name"], "b");
}

TEST_F(Fit, TooFewSamplesAreRefused) {
  const Outcome run = zarel(
      {"fit", write("in.csv", "a,b,c,y\n0,0,1,1\n1,2,0,2\n"), "--inputs", "3", "-o", path("m")});
  EXPECT_EQ(run.code, 3);
  EXPECT_THAT(run.err, HasSubstr("too few"));
}

TEST_F(Fit, AReducedTrendIsToldAndUsed) {
  const Outcome run = fit("a,b,y\n0,0,1\n0,1,2\n1,0,3\n.5,.3,4.5\n.2,.9,2\n", {"--json"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("warning: the quadratic trend of 2 inputs has 6 terms"));
  EXPECT_EQ(run.json()["models"][0]["trend"], "pure-quadratic");
}

TEST_F(Fit, ATrendThatTheSamplesDoNotTellIsToldAndNotUsed) {
  const Outcome run = fit("a,b,y\n0,0,1\n1,2,2\n2,4,3.5\n3,6,3\n", {"--trend", "linear", "--json"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("warning: " + path("in.csv") +
                                 ": the samples do not tell the terms of the linear trend apart; "
                                 "the model of y has the constant one"));
  EXPECT_EQ(run.json()["models"][0]["trend"], "constant");
  EXPECT_EQ(run.json()["models"][0]["trend_terms"], 1);
}

TEST_F(Fit, WithoutATrendSaysSo) {
  const Outcome run = fit("a,b,y\n0,0,1\n0,1,2\n1,0,3.5\n1,1,3\n", {"--trend", "none"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("y: gaussian, no trend, scaling both"));
}

TEST_F(Fit, DuplicatePointsAreWarnedAbout) {
  const Outcome run = fit("a,b,y\n0,0,1\n0,1,2\n1,0,3\n1,1,4.5\n0,0,1\n", {"--trend", "constant"});
  EXPECT_THAT(run.err, HasSubstr("warning: "));
  EXPECT_THAT(run.err, HasSubstr("1 duplicate point: line 2 and line 6"));
  EXPECT_TRUE(run.code == 0 || run.code == 5) << run.code;
}

TEST_F(Fit, AConstantInputIsRefused) {
  EXPECT_THAT(refused("a,b,y\n0,7,1\n1,7,2\n2,7,4\n"), HasSubstr("\"b\" has the same value"));
}

/** One sample twice with other outputs and a multiquadric: whatever comes, it is told. */
TEST_F(Fit, AFitThatIsNotFiniteIsANumericalFailure) {
  const Outcome run = fit("a,b,y\n0,0,1e308\n0,1,-1e308\n1,0,1e308\n1,1,-1e308\n.5,.4,1e308\n",
                          {"--scaling", "inputs"});
  EXPECT_EQ(run.code, 5) << run.err;
  EXPECT_THAT(run.err, HasSubstr("the model of y could not be fitted"));
  EXPECT_FALSE(exists("m"));
}

TEST_F(Fit, FilesThatAreNotThereAreInputOutputFailures) {
  const Outcome none = zarel({"fit", path("none.csv"), "--inputs", "2", "-o", path("m")});
  EXPECT_EQ(none.code, 4);
  EXPECT_THAT(none.err, HasSubstr("none.csv"));
  EXPECT_EQ(zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("no/m")}).code, 4);
  const std::string wrong = write("wrong.csv", "a,b,y\n1,2,x\n");
  EXPECT_EQ(zarel({"fit", wrong, "--inputs", "2", "-o", path("no/m")}).code, 4)
      << "the place of the model is tried before any work";
}

TEST_F(Fit, InfoTellsWhatTheModelHolds) {
  const Outcome run = zarel({"info", fitModel()});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("2 models, 36 samples"));
  EXPECT_THAT(run.out, HasSubstr("  a  0.0"));
  EXPECT_THAT(run.out, HasSubstr("z: gaussian"));
}

} // namespace
