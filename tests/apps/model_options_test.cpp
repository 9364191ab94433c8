#include "model_options.h"

#include "app_support.h"
#include "option_values.h"

#include <gmock/gmock.h>
#include <zarel/Kriging.h>

using namespace app;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

class Options : public ::testing::Test {
protected:
  Options() { addModelOptions(app_, options_); }

  void parse(std::vector<std::string> words) {
    std::reverse(words.begin(), words.end());
    app_.parse(words);
  }

  std::string refusal(const std::vector<std::string>& words) {
    try {
      parse(words);
    } catch (const CLI::ParseError& error) {
      return error.what();
    }
    return "";
  }

  CLI::App app_;
  ModelOptions options_;
};

TEST_F(Options, HaveTheDefaultsThatTheHelpTells) {
  const std::string help = app_.help();
  for (const char* word :
       {"gaussian", "quadratic", "both", "anisotropic", "0.01:20", "1e-08", "each"})
    EXPECT_THAT(help, HasSubstr(word));
  parse({});
  EXPECT_EQ(options_.correlation, (std::vector<int>{E_CorrGauss}));
  EXPECT_EQ(options_.trend, (std::vector<int>{E_PolyFullQuad}));
  EXPECT_EQ(options_.scaling, (std::vector<int>{E_ScaleBoth}));
  EXPECT_EQ(options_.kernel, (std::vector<int>{E_KernAnisotropic}));
  EXPECT_TRUE(options_.optimise);
}

TEST_F(Options, NameEveryValueOfTheLibrary) {
  const std::vector<std::pair<std::string, int>> correlations{{"exponential", E_CorrExp},
                                                              {"gaussian", E_CorrGauss},
                                                              {"linear", E_CorrLin},
                                                              {"spherical", E_CorrSpherical},
                                                              {"cubic", E_CorrCubic},
                                                              {"multiquadric", E_CorrMultiquadric},
                                                              {"spline", E_CorrSpline},
                                                              {"matern52", E_CorrMatern52},
                                                              {"quadratic", E_CorrQuadratic},
                                                              {"bessel", E_CorrBessel},
                                                              {"sinc", E_CorrSinc}};
  for (const auto& [name, value] : correlations) {
    parse({"--correlation", name});
    EXPECT_EQ(options_.correlation, (std::vector<int>{value})) << name;
    EXPECT_EQ(nameOf(correlationNames(), value), name);
  }
  EXPECT_EQ(correlationNames().size(), correlations.size());
  const std::vector<std::pair<std::string, int>> trends{{"none", E_PolyNone},
                                                        {"constant", E_PolyConst},
                                                        {"linear", E_PolyLinear},
                                                        {"pure-quadratic", E_PolyPureQuad},
                                                        {"quadratic", E_PolyFullQuad}};
  for (const auto& [name, value] : trends) {
    parse({"--trend", name});
    EXPECT_EQ(options_.trend, (std::vector<int>{value})) << name;
  }
  const std::vector<std::pair<std::string, int>> scalings{{"none", E_ScaleNone},
                                                          {"inputs", E_ScaleInputs},
                                                          {"outputs", E_ScaleOutputs},
                                                          {"both", E_ScaleBoth}};
  for (const auto& [name, value] : scalings) {
    parse({"--scaling", name});
    EXPECT_EQ(options_.scaling, (std::vector<int>{value})) << name;
  }
  parse({"--kernel", "isotropic"});
  EXPECT_EQ(options_.kernel, (std::vector<int>{E_KernIsotropic}));
}

TEST_F(Options, TakeOneValueAModel) {
  parse({"--correlation", "gaussian,matern52", "--trend=none,linear"});
  EXPECT_EQ(options_.correlation, (std::vector<int>{2, 8}));
  EXPECT_EQ(options_.trend, (std::vector<int>{0, 2}));
}

TEST_F(Options, SuggestForANearMiss) {
  EXPECT_THAT(refusal({"--correlation", "gausian"}), HasSubstr("did you mean \"gaussian\"?"));
  EXPECT_THAT(refusal({"--trend", "quadratik"}), HasSubstr("did you mean \"quadratic\"?"));
  EXPECT_THAT(refusal({"--kernel", "round"}), HasSubstr("isotropic, anisotropic"));
}

TEST_F(Options, ReadNumbersStrictly) {
  parse({"--theta", "1,2.5, 1e-3", "--bounds", "0.1:5", "--drop-tolerance", "1e-6", "--step", "3",
         "--no-optimise"});
  EXPECT_EQ(options_.theta, (std::vector<double>{1, 2.5, 0.001}));
  EXPECT_EQ(options_.lowerBound, 0.1);
  EXPECT_EQ(options_.upperBound, 5);
  EXPECT_EQ(options_.dropTolerance, 1e-6);
  EXPECT_EQ(options_.step, 3);
  EXPECT_FALSE(options_.optimise);
}

TEST_F(Options, RefuseNumbersOutOfRange) {
  const std::vector<std::vector<std::string>> wrong{
      {"--theta", "1,0"},        {"--theta", "1e400"},        {"--theta", "1,,2"},
      {"--theta", "nan"},        {"--bounds", "2"},           {"--bounds", "0:3"},
      {"--bounds", "2:3"},       {"--bounds", "0.1:0.5"},     {"--bounds", "0.1:1e400"},
      {"--step", "0"},           {"--step", "1.5"},           {"--drop-tolerance", "0"},
      {"--drop-tolerance", "1"}, {"--drop-tolerance", "inf"}, {"--drop-tolerance", "small"}};
  for (const auto& words : wrong)
    EXPECT_NE(refusal(words), "") << words[0] << " " << words[1];
}

using Groups = std::vector<std::vector<int>>;
const std::vector<std::string> outputs{"fx", "fy", "weight", "fz"};

TEST(Groups, MakeTheModels) {
  EXPECT_EQ(outputGroups("each", outputs), (Groups{{0}, {1}, {2}, {3}}));
  EXPECT_EQ(outputGroups("all", outputs), (Groups{{0, 1, 2, 3}}));
  EXPECT_EQ(outputGroups("fx,fy,fz;weight", outputs), (Groups{{0, 1, 3}, {2}}));
  EXPECT_EQ(outputGroups("fz, fx", outputs), (Groups{{3, 0}, {1}, {2}}));
}

TEST(Groups, RefuseNamesThatAreNotThereOrTwice) {
  const auto unknown = failureOf([] { outputGroups("fx,wieght", outputs); });
  EXPECT_EQ(unknown.code, ExitCode::usage);
  EXPECT_EQ(unknown.hint, "did you mean \"weight\"?");
  EXPECT_EQ(failureOf([] { outputGroups("fx;fx", outputs); }).code, ExitCode::usage);
}

} // namespace
