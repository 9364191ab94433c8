#include "samples.h"

#include "app_support.h"

#include <gmock/gmock.h>

using namespace app;
using apptest::failureOf;
using ::testing::HasSubstr;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

class SamplesOf : public apptest::InFolder {
protected:
  Samples samples(const std::string& text, const std::string& inputs,
                  const std::string& outputs = "") {
    return readSamples(write("s.csv", text), inputs, outputs, console_);
  }

  std::string wordsOf(const std::string& text, const std::string& inputs) {
    const Samples read = samples(text, inputs);
    CaptureStderr();
    checkSamples(read, options_, console_);
    return GetCapturedStderr();
  }

  Failure refusal(const std::string& text, const std::string& inputs) {
    const Samples read = samples(text, inputs);
    return failureOf([&] { checkSamples(read, options_, console_); });
  }

  Console console_;
  ModelOptions options_;
};

using Names = std::vector<std::string>;

TEST_F(SamplesOf, TakeInputsAndTheRestAsOutputs) {
  const Samples read = samples("a,b,y,z\n1,2,3,4\n5,6,7,8\n", "2");
  EXPECT_EQ(read.inputs.names, (Names{"a", "b"}));
  EXPECT_EQ(read.outputs.names, (Names{"y", "z"}));
  EXPECT_EQ(read.inputs.values, (std::vector<double>{1, 2, 5, 6}));
  EXPECT_EQ(read.outputs.values, (std::vector<double>{3, 4, 7, 8}));
  EXPECT_EQ(read.lines, (std::vector<long long>{2, 3}));
}

TEST_F(SamplesOf, TakeColumnsInTheOrderTheyAreNamed) {
  const Samples read = samples("a,b,y,z\n1,2,3,4\n", "b,a", "z");
  EXPECT_EQ(read.inputs.values, (std::vector<double>{2, 1}));
  EXPECT_EQ(read.outputs.values, (std::vector<double>{4}));
}

TEST_F(SamplesOf, ReadOnlyTheColumnsThatAreAskedFor) {
  EXPECT_EQ(samples("name,a,y\nfirst,1,2\n", "a", "y").inputs.rows(), 1u);
}

TEST_F(SamplesOf, AreRefusedWithThePlaceOfAWrongField) {
  const auto failure = failureOf([&] { samples("a,y\n1,2\n3,x\n", "a"); });
  EXPECT_EQ(failure.code, ExitCode::badInput);
  EXPECT_THAT(failure.text(), HasSubstr("s.csv:3: row 2, column 2 (y)"));
}

TEST_F(SamplesOf, NeedOutputs) {
  EXPECT_THAT(failureOf([&] { samples("a,b\n1,2\n", "2"); }).text(),
              HasSubstr("no column is left for outputs"));
  EXPECT_THAT(failureOf([&] { samples("a,b,c\n1,2,3\n", "a,b", "b"); }).text(),
              HasSubstr("both an input and an output"));
}

TEST_F(SamplesOf, NeedNamesThatDiffer) {
  EXPECT_THAT(failureOf([&] { samples("a,a,y\n1,2,3\n", "2"); }).text(),
              HasSubstr("more than one column is called \"a\""));
}

TEST_F(SamplesOf, TooFewAreRefused) {
  EXPECT_THAT(refusal("a,y\n", "a").text(), HasSubstr("no samples"));
  EXPECT_THAT(refusal("a,y\n1,2\n", "a").text(), HasSubstr("a single sample"));
  const auto few = refusal("a,b,c,y\n1,2,3,4\n5,7,6,8\n", "3");
  EXPECT_EQ(few.code, ExitCode::badInput);
  EXPECT_THAT(few.text(), HasSubstr("2 samples are too few for 3 inputs"));
}

TEST_F(SamplesOf, AnInputThatNeverChangesIsRefusedWhereItIsDividedBy) {
  const char* text = "a,b,y\n1,5,1\n2,5,2\n3,5,4\n";
  EXPECT_THAT(refusal(text, "2").text(), HasSubstr("the input \"b\" has the same value"));
  options_.scaling = {0};
  EXPECT_THAT(refusal(text, "2").text(), HasSubstr("\"b\""));
  options_.kernel = {0};
  options_.trend = {0};
  EXPECT_THAT(wordsOf(text, "2"), HasSubstr("warning"));
}

TEST_F(SamplesOf, AReducedTrendIsTold) {
  const std::string words = wordsOf("a,b,y\n1,2,3\n4,6,6\n9,8,7\n", "2");
  EXPECT_THAT(words, HasSubstr("the quadratic trend of 2 inputs has 6 terms"));
  EXPECT_THAT(words, HasSubstr("3 samples carry the linear one"));
  options_.trend = {2};
  EXPECT_EQ(wordsOf("a,b,y\n1,2,3\n4,6,6\n9,8,7\n", "2"), "");
}

TEST_F(SamplesOf, DuplicatesAreTold) {
  options_.trend = {1};
  const std::string same = wordsOf("a,y\n1,2\n3,4\n1,2\n", "1");
  EXPECT_THAT(same, HasSubstr("1 duplicate point: line 2 and line 4"));
  EXPECT_THAT(same, HasSubstr("each point is needed once"));
  EXPECT_THAT(wordsOf("a,y\n1,2\n3,4\n1,9\n", "1"), HasSubstr("their outputs differ"));
  EXPECT_THAT(wordsOf("a,y\n0,2\n-0,3\n1,9\n", "1"), HasSubstr("line 2 and line 3"));
}

TEST_F(SamplesOf, AnOutputThatNeverChangesIsTold) {
  options_.trend = {1};
  EXPECT_THAT(wordsOf("a,y\n1,2\n3,2\n", "1"), HasSubstr("the output \"y\" has the same value"));
}

TEST(Trend, TermsFollowTheirFormulas) {
  EXPECT_EQ(trendTerms(0, 3), 0);
  EXPECT_EQ(trendTerms(1, 3), 1);
  EXPECT_EQ(trendTerms(2, 3), 4);
  EXPECT_EQ(trendTerms(3, 3), 7);
  EXPECT_EQ(trendTerms(4, 3), 10);
}

} // namespace
