#include "program_support.h"

#include <gmock/gmock.h>

using apptest::Outcome;
using apptest::Words;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace {

class Usage : public apptest::Program {
protected:
  /** A wrong command line: code 2, words on standard error, nothing on standard output. */
  std::string wrong(const Words& words) {
    const Outcome run = zarel(words);
    EXPECT_EQ(run.code, 2) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith("zarel: error: "));
    return run.err;
  }
};

TEST_F(Usage, VersionIsDataOnStandardOutput) {
  const Outcome run = zarel({"--version"});
  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.out, StartsWith("zarel "));
  EXPECT_THAT(run.out, HasSubstr("BLAS"));
  EXPECT_EQ(run.err, "");
}

TEST_F(Usage, HelpTellsCommandsOptionsAndDefaults) {
  const Outcome root = zarel({"--help"});
  EXPECT_EQ(root.code, 0);
  for (const char* word :
       {"doe", "fit", "predict", "info", "--quiet", "--json", "--seed", "--force"})
    EXPECT_THAT(root.out, HasSubstr(word));
  const Outcome fit = zarel({"fit", "--help"});
  EXPECT_EQ(fit.code, 0);
  for (const char* word : {"SAMPLES.csv", "--inputs", "--correlation", "gaussian", "--trend",
                           "--scaling", "--kernel", "--bounds", "0.01:20", "--groups"})
    EXPECT_THAT(fit.out, HasSubstr(word));
  EXPECT_THAT(root.out, HasSubstr("--config FILE"));
  for (const char* command : {"fit", "predict", "info", "refine"})
    EXPECT_THAT(zarel({command, "--help"}).out, HasSubstr("see zarel --help"));
  EXPECT_EQ(zarel({"info", "-h"}).code, 0);
}

TEST_F(Usage, ACommandIsNeeded) {
  EXPECT_THAT(wrong({}), HasSubstr("zarel --help"));
  EXPECT_THAT(wrong({"predct", "m", "p"}), HasSubstr("did you mean \"predict\"?"));
}

TEST_F(Usage, NearMissesAreSuggested) {
  EXPECT_THAT(wrong({"--quite"}), HasSubstr("did you mean \"--quiet\"?"));
  EXPECT_THAT(wrong({"fit", "s.csv", "--imputs", "2", "-o", "m"}),
              HasSubstr("did you mean \"--inputs\"?"));
  EXPECT_THAT(wrong({"fit", "s.csv", "--inputs", "2", "-o", "m", "--corelation=gaussian"}),
              HasSubstr("did you mean \"--correlation\"?"));
  EXPECT_THAT(wrong({"fit", "s.csv", "--inputs", "2", "-o", "m", "--correlation", "gausian"}),
              HasSubstr("did you mean \"gaussian\"?"));
}

TEST_F(Usage, WhatIsRequiredIsNamed) {
  EXPECT_THAT(wrong({"fit"}), HasSubstr("required"));
  EXPECT_THAT(wrong({"fit", "s.csv", "-o", "m"}), HasSubstr("--inputs"));
  EXPECT_THAT(wrong({"predict", "m"}), HasSubstr("points"));
  EXPECT_THAT(wrong({"info"}), HasSubstr("model"));
  EXPECT_THAT(wrong({"info", "m", "extra"}), HasSubstr("extra"));
}

TEST_F(Usage, WhatIsGivenTwiceIsNamed) {
  EXPECT_THAT(wrong({"fit", "s.csv", "--inputs", "2", "-i", "3", "-o", "m"}),
              HasSubstr("--inputs is given more than once"));
}

TEST_F(Usage, NumbersAreReadStrictly) {
  const std::string samples = writeSamples();
  for (const Words& words : {Words{"--seed", "x"}, Words{"--seed", "-1"}, Words{"--seed", "1.5"},
                             Words{"--drop-tolerance", "1e400"}, Words{"--bounds", "1e400:2"},
                             Words{"--theta", "nan"}}) {
    Words all{"fit", samples, "--inputs", "2", "-o", path("m")};
    all.insert(all.end(), words.begin(), words.end());
    EXPECT_THAT(wrong(all), HasSubstr(words[0]));
  }
  EXPECT_FALSE(exists("m"));
}

TEST_F(Usage, GlobalOptionsStandAnywhere) {
  const std::string samples = writeSamples();
  for (const Words& words : {Words{"--quiet", "fit", samples, "--inputs", "2", "-o", path("a")},
                             Words{"fit", samples, "--inputs", "2", "-o", path("b"), "--quiet"}}) {
    const Outcome run = zarel(words);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(Usage, ErrorsAreJsonToo) {
  for (const Words& words : {Words{"--json", "fit"}, Words{"--json", "nonsense"},
                             Words{"fit", "--json", "--nonsense"}}) {
    const Outcome run = zarel(words);
    EXPECT_EQ(run.code, 2);
    const auto document = run.json();
    EXPECT_EQ(document["schema_version"], 1);
    EXPECT_EQ(document["error"]["exit_code"], 2);
    EXPECT_FALSE(document["error"]["message"].get<std::string>().empty());
  }
}

TEST_F(Usage, AFileOfOptionsIsRead) {
  const std::string samples = writeSamples();
  const std::string config =
      write("fit.toml", "quiet = true\n\n[fit]\ncorrelation = \"matern52\"\ntrend = \"linear\"\n"
                        "theta = \"2.5,3\"\nno-optimise = true\ngroups = \"all\"\n");

  const Outcome fit = zarel({"--config", config, "fit", samples, "--inputs", "2", "-o", path("m")});

  EXPECT_EQ(fit.code, 0) << fit.err;
  EXPECT_EQ(fit.err, "");
  const auto model = zarel({"info", path("m"), "--json"}).json()["models"][0];
  EXPECT_EQ(model["correlation"], "matern52");
  EXPECT_EQ(model["trend"], "linear");
  EXPECT_EQ(model["theta"], (std::vector<double>{2.5, 3}));
}

TEST_F(Usage, TheCommandLineBeatsTheFile) {
  const std::string config = write("c.toml", "[fit]\ncorrelation = \"cubic\"\n");
  const Outcome run = zarel({"--config", config, "fit", writeSamples(), "--inputs", "2", "-o",
                             path("m"), "--correlation", "spline"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(zarel({"info", path("m"), "--json"}).json()["models"][0]["correlation"], "spline");
}

TEST_F(Usage, AFileOfOptionsIsCheckedLikeTheCommandLine) {
  const std::string samples = writeSamples();
  const Words fit{"fit", samples, "--inputs", "2", "-o", path("m"), "--config"};
  const auto with = [&](const std::string& text) {
    Words words = fit;
    words.push_back(write("c.toml", text));
    return words;
  };
  EXPECT_THAT(wrong(with("[fit]\ncorelation = \"cubic\"\n")), HasSubstr("corelation"));
  EXPECT_THAT(wrong(with("[fit]\ncorrelation = \"cubik\"\n")), HasSubstr("cubic"));
  EXPECT_THAT(wrong(with("[fit]\ndrop-tolerance = 1e400\n")), HasSubstr("--drop-tolerance"));
  Words missing = fit;
  missing.push_back(path("none.toml"));
  EXPECT_EQ(zarel(missing).code, 4);
}

TEST_F(Usage, OptionsOfOtherCommandsMayStandInTheFile) {
  const std::string config = write("c.toml", "[fit]\ncorrelation = \"cubic\"\n");
  const Outcome run = zarel({"info", fitModel(), "--config", config});
  EXPECT_EQ(run.code, 0) << run.err;
}

} // namespace
