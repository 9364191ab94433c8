#include "app_support.h"
#include "refine/study.h"

#include <cmath>
#include <gmock/gmock.h>

using app::ExitCode;
using app::Json;
using apptest::failureOf;
using namespace app::refine;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

class RefineStudy : public apptest::InFolder {
protected:
  std::unique_ptr<Study> open(const Json& settings = {{"seed", 1}}, bool force = false) {
    return std::make_unique<Study>(path("s"), force, settings, [&] {
      ++begun_;
      return StudyStart{settings, {{0.5}, {1.5}, {2.5}}, results_};
    });
  }

  static RunResult done(long long id, double y) {
    RunResult result;
    result.done = {{id, {y}}};
    return result;
  }

  std::vector<Row> results_;
  int begun_ = 0;
};

TEST_F(RefineStudy, BeginsOnceAndRemembers) {
  open();
  const auto study = open();

  EXPECT_EQ(begun_, 1);
  EXPECT_TRUE(study->wasResumed());
  ASSERT_EQ(study->points().size(), 3u);
  EXPECT_EQ(study->points()[1].x, Row{1.5});
  EXPECT_EQ(study->waiting(study->plans()[0]).size(), 3u);
}

// Such studies draw the same test points no more.
TEST_F(RefineStudy, AStudyThatDrewItsPointsInAnotherWayIsRefusedWithTheReason) {
  open({{"seed", 1}});

  const app::Failure failure = failureOf([&] { open({{"seed", 1}, {"sampling", 2}}); });

  EXPECT_EQ(failure.code, ExitCode::usage);
  EXPECT_THAT(failure.text(), HasSubstr("drew its points differently"));
  EXPECT_THAT(failure.hint, HasSubstr("--force"));
  EXPECT_TRUE(open({{"seed", 1}})->wasResumed()) << "files that give all points draw none";
}

TEST_F(RefineStudy, ResultsFailuresAndSplitsComeBack) {
  {
    const auto study = open();
    RunResult result = done(2, 7.25);
    result.failed = {{0, "exit code 3"}};
    result.folder = "failed/run-000001";
    result.split = {1};
    study->recordRun(result);
  }
  const auto study = open();

  EXPECT_EQ(study->points()[2].y, Row{7.25});
  EXPECT_EQ(study->points()[0].reason, "exit code 3");
  EXPECT_EQ(study->points()[0].folder, "failed/run-000001");
  const auto waiting = study->waiting(study->plans()[0]);
  ASSERT_EQ(waiting.size(), 1u);
  EXPECT_EQ(waiting[0].id, 1);
  EXPECT_TRUE(waiting[0].alone);
  EXPECT_THAT(study->finished(study->plans()[0]), ElementsAre(2u));
  EXPECT_EQ(study->simulatedCount(), 2);
  EXPECT_EQ(study->failedCount(), 1);
}

TEST_F(RefineStudy, RoundsAndPlansComeBack) {
  {
    const auto study = open();
    RoundRecord round;
    round.samples = 3;
    round.predictedError = 0.1;
    round.predictedRms = std::nan("");
    round.theta = {1.0 / 3};
    round.validation = std::make_unique<Validation>();
    round.validation->largestError = 0.25;
    round.validation->r2 = {0.5, std::nan("")};
    study->recordRound(std::move(round));
    study->recordPlan({{9.0}});
  }
  const auto study = open();

  ASSERT_EQ(study->rounds().size(), 1u);
  EXPECT_EQ(study->rounds()[0].theta, std::vector<double>{1.0 / 3});
  EXPECT_TRUE(std::isnan(study->rounds()[0].predictedRms));
  EXPECT_EQ(study->rounds()[0].validation->largestError, 0.25);
  EXPECT_TRUE(std::isnan(study->rounds()[0].validation->r2[1]));
  ASSERT_EQ(study->plans().size(), 2u);
  EXPECT_EQ(study->points().back().x, Row{9.0});
}

TEST_F(RefineStudy, GivenResultsCountAsSamplesAndNotAsSimulated) {
  results_ = {{1}, {2}, {3}};
  const auto study = open();

  EXPECT_EQ(study->finished(study->plans()[0]).size(), 3u);
  EXPECT_EQ(study->simulatedCount(), 0);
}

TEST_F(RefineStudy, OneProcessAtATime) {
  const auto study = open();

  const app::Failure failure = failureOf([&] { open(); });

  EXPECT_EQ(failure.code, ExitCode::usage);
  EXPECT_THAT(failure.text(), HasSubstr("another process"));
}

TEST_F(RefineStudy, OtherSettingsAreRefusedByName) {
  open({{"seed", 1}, {"model", "m"}});

  const app::Failure failure = failureOf([&] { open({{"seed", 2}, {"model", "m"}}); });

  EXPECT_EQ(failure.code, ExitCode::usage);
  EXPECT_THAT(failure.text(), HasSubstr("seed = 1, not 2"));
}

TEST_F(RefineStudy, ForceStartsOver) {
  open()->recordRun(done(0, 1));
  const auto study = open({{"seed", 2}}, true);

  EXPECT_EQ(begun_, 2);
  EXPECT_FALSE(study->wasResumed());
  EXPECT_EQ(study->simulatedCount(), 0);
}

TEST_F(RefineStudy, FolderWithOtherFilesIsLeftAlone) {
  std::filesystem::create_directories(path("s"));
  write("s/thesis.tex", "years of work");

  for (bool force : {false, true})
    EXPECT_EQ(failureOf([&] { open({}, force); }).code, ExitCode::usage);

  EXPECT_EQ(read("s/thesis.tex"), "years of work");
}

TEST_F(RefineStudy, ForceKeepsWhatIsNotTheStudys) {
  open();
  write("s/notes.txt", "mine");
  open({{"seed", 2}}, true);
  EXPECT_EQ(read("s/notes.txt"), "mine");
}

TEST_F(RefineStudy, JournalCutAtAnyByteOpensWithThePointsBeforeIt) {
  {
    const auto study = open();
    for (int i = 0; i < 3; ++i)
      study->recordRun(done(i, i));
  }
  const std::string whole = read("s/journal.log");
  const std::size_t begin = whole.find('\n') + 1;

  for (std::size_t length = begin; length <= whole.size(); ++length) {
    write("s/journal.log", whole.substr(0, length));
    const auto lines = std::count(whole.begin(), whole.begin() + static_cast<long>(length), '\n');
    EXPECT_EQ(open()->simulatedCount(), lines - 1) << length;
  }
}

TEST_F(RefineStudy, StudyKilledBeforeItsFirstRecordBeginsAgain) {
  open();
  const std::string whole = read("s/journal.log");
  write("s/journal.log", whole.substr(0, whole.size() / 2));

  const auto study = open();

  EXPECT_EQ(begun_, 2);
  EXPECT_EQ(study->points().size(), 3u);
}

TEST_F(RefineStudy, RecordsThatDoNotFitTogetherAreRefused) {
  const Json bad[] = {{{"record", "round"}, {"round", 1}},
                      {{"record", "plan"}, {"points", Json::array()}},
                      {{"record", "run"}, {"done", {{{"id", 3}, {"y", {1}}}}}},
                      {{"record", "run"}, {"done", {{{"id", -1}, {"y", {1}}}}}},
                      {{"record", "run"}, {"done", {{{"id", 0}, {"y", "text"}}}}},
                      {{"record", "study"}},
                      {{"record", "dance"}},
                      {{"word", 1}},
                      Json(3)};
  for (const Json& record : bad) {
    std::filesystem::remove_all(path("s"));
    open();
    write("s/journal.log", read("s/journal.log") + journalLine(record));
    EXPECT_EQ(failureOf([&] { open(); }).code, ExitCode::badInput) << record;
  }
}

} // namespace
