#include "app_support.h"
#include "refine/runner.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <gmock/gmock.h>
#include <map>
#include <set>
#include <thread>

using namespace app::refine;
using apptest::failureOf;
using ::testing::HasSubstr;

namespace {

using Clock = std::chrono::steady_clock;

class Listener : public RunListener {
public:
  bool runEnded(const RunResult& result) override {
    for (const auto& [id, y] : result.done)
      done[id] = y;
    for (const auto& [id, reason] : result.failed)
      failed[id] = reason;
    folders.push_back(result.folder);
    if (whenEnded) whenEnded();
    return static_cast<int>(done.size() + failed.size()) < enough;
  }

  std::map<long long, Row> done;
  std::map<long long, std::string> failed;
  std::vector<std::string> folders;
  int enough = 1 << 20;
  std::function<void()> whenEnded;
};

/// Runs the test simulation on points (a, 2 a), a = 0.1, 0.2, ...
class RefineRunner : public apptest::InFolder {
protected:
  RefineRunner() {
    settings_.program = ZAREL_TEST_SIMULATION;
    settings_.inputs = {"a", "b"};
    settings_.outputs = {"y", "z"};
    settings_.startDirectory = folder_.string();
    settings_.study = path("study");
    settings_.grace = 0.2;
    std::filesystem::create_directories(settings_.study);
    use({});
  }

  void use(const std::vector<std::string>& options) {
    settings_.words = {"sim", "{points}", "{results}", "--log", path("log")};
    settings_.words.insert(settings_.words.end(), options.begin(), options.end());
  }

  Runner::Outcome run(int count) {
    std::deque<Task> tasks;
    for (int i = 0; i < count; ++i)
      tasks.push_back({i, {0.1 * (i + 1), 0.2 * (i + 1)}, false});
    Runner runner(settings_);
    return runner.run(tasks, listener_);
  }

  void expectDone(int i) {
    const double a = 0.1 * (i + 1), b = 0.2 * (i + 1);
    ASSERT_EQ(listener_.done.count(i), 1u) << i;
    EXPECT_EQ(listener_.done[i], (Row{std::sin(3 * a) + b * b, a * b})) << i;
  }

  /// Only point `bad` is lost, and its reason says so.
  void expectOnlyLost(int bad, int count, const std::string& reason) {
    for (int i = 0; i < count; ++i)
      if (i != bad) expectDone(i);
    ASSERT_EQ(listener_.failed.size(), 1u);
    EXPECT_THAT(listener_.failed[bad], HasSubstr(reason));
  }

  int calls() const {
    const std::string log = read("log");
    return static_cast<int>(std::count(log.begin(), log.end(), '\n'));
  }

  std::vector<std::string> entries(const std::string& name) const {
    std::vector<std::string> names;
    if (exists(name))
      for (const auto& entry : std::filesystem::directory_iterator(path(name)))
        names.push_back(entry.path().filename().string());
    return names;
  }

  SimulationSettings settings_;
  Listener listener_;
};

TEST_F(RefineRunner, SimulatesEachPointOnce) {
  EXPECT_EQ(run(5), Runner::Outcome::finished);

  for (int i = 0; i < 5; ++i)
    expectDone(i);
  EXPECT_EQ(calls(), 5);
  EXPECT_TRUE(entries("study/work").empty());
  EXPECT_FALSE(exists("study/failed"));
}

TEST_F(RefineRunner, BatchesHoldNoMoreThanTheirSize) {
  settings_.batch = 3;
  settings_.keepRuns = true;

  run(7);

  for (int i = 0; i < 7; ++i)
    expectDone(i);
  EXPECT_EQ(entries("study/work").size(), 3u);
}

TEST_F(RefineRunner, JobsRunAtTheSameTime) {
  use({"--sleep", "300"});
  settings_.jobs = 4;

  const auto start = Clock::now();
  run(4);

  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1000)); // one by one: 1200
  EXPECT_EQ(listener_.done.size(), 4u);
}

TEST_F(RefineRunner, FailureCostsThePointAndKeepsWhatItSaid) {
  use({"--fail-above", "0.45"});

  EXPECT_EQ(run(5), Runner::Outcome::finished);

  expectOnlyLost(4, 5, "exit code 3: mesh collapsed");
  EXPECT_EQ(calls(), 5);
  const auto failed = entries("study/failed");
  ASSERT_EQ(failed.size(), 1u);
  EXPECT_EQ(listener_.folders.back(), "failed/" + failed[0]);
  EXPECT_EQ(read("study/failed/" + failed[0] + "/stderr.txt"), "some words\nmesh collapsed\n");
}

TEST_F(RefineRunner, CrashNamesItsSignal) {
  use({"--crash-above", "0.45"});
  run(5);
  expectOnlyLost(4, 5, "signal 6");
}

TEST_F(RefineRunner, BatchThatFailsIsRunPointByPoint) {
  use({"--fail-above", "0.45"});
  settings_.batch = 5;

  run(5);

  expectOnlyLost(4, 5, "exit code 3");
  EXPECT_EQ(calls(), 10); // the batch, and each of its points alone
}

TEST_F(RefineRunner, HangingRunIsEndedAfterItsTime) {
  use({"--hang-above", "0.15"});
  settings_.timeout = 0.3;

  run(2);

  expectOnlyLost(1, 2, "still ran after 0.3 s");
}

TEST_F(RefineRunner, RunThatIsDeafToItsEndIsKilled) {
  use({"--stubborn-above", "0.15"});
  settings_.timeout = 0.3;

  const auto start = Clock::now();
  run(2);

  expectOnlyLost(1, 2, "still ran");
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

TEST_F(RefineRunner, HangingBatchLosesOnlyTheCulprit) {
  use({"--hang-above", "0.25"});
  settings_.timeout = 0.3;
  settings_.batch = 3;
  run(3);
  expectOnlyLost(2, 3, "still ran");
}

TEST_F(RefineRunner, WhatARunLeavesRunningIsKilled) {
  use({"--child-above", "0"});

  run(1);

  expectDone(0);
  const pid_t child = std::stoi(read("log.child"));
  for (int i = 0; i < 100 && ::kill(child, 0) == 0; ++i) {
    // A killed orphan may wait a moment to be collected; it is then a zombie.
    std::ifstream stat("/proc/" + std::to_string(child) + "/stat");
    std::string number, name, state;
    stat >> number >> name >> state;
    if (state == "Z") return;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_NE(::kill(child, 0), 0);
}

TEST_F(RefineRunner, RowThatIsNoNumberCostsItsPointOnly) {
  for (const char* fault : {"--nan-above", "--text-above"}) {
    listener_ = {};
    use({fault, "0.35"});
    settings_.batch = 5;
    run(4);
    expectOnlyLost(3, 4, "results row 4, column \"z\"");
  }
  EXPECT_EQ(calls(), 8); // the other rows of the batch were good: nothing was run again
}

TEST_F(RefineRunner, WrongNumbersOfRowsAndWrongFilesCostThePoint) {
  const std::pair<const char*, const char*> cases[] = {
      {"--few-above", "0 rows of results for 1 point"},
      {"--many-above", "2 rows of results for 1 point"},
      {"--none-above", "no file of results"},
      {"--header-above", "no column \"y\""},
      {"--endless-above", "far too long"}};
  for (const auto& [fault, reason] : cases) {
    listener_ = {};
    use({fault, "0.25"});
    run(3);
    expectOnlyLost(2, 3, reason);
  }
}

TEST_F(RefineRunner, BatchWithTooFewRowsIsRunPointByPoint) {
  use({"--few-above", "0.25"});
  settings_.batch = 3;
  run(3);
  expectOnlyLost(2, 3, "0 rows");
}

TEST_F(RefineRunner, StopsWhenTheListenerHasEnough) {
  listener_.enough = 2;

  EXPECT_EQ(run(5), Runner::Outcome::stopped);

  EXPECT_EQ(listener_.done.size(), 2u);
  EXPECT_EQ(calls(), 2);
}

TEST_F(RefineRunner, EveryResultIsReportedBeforeTheNextRunStarts) {
  std::vector<int> started;
  listener_.whenEnded = [&] { started.push_back(calls()); };

  run(4);

  EXPECT_EQ(started, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(RefineRunner, ListenerThatThrowsEndsAllRuns) {
  use({"--hang-above", "0.15"});
  settings_.jobs = 2;
  listener_.whenEnded = [] { throw std::runtime_error("disk full"); };

  const auto start = Clock::now();
  EXPECT_THROW(run(2), std::runtime_error);

  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

TEST_F(RefineRunner, RunsHaveTheirFolderTheirFilesAndTheirEnvironment) {
  settings_.program = "/bin/sh";
  settings_.words = {"sh", "-c",
                     "pwd > $0.out; echo \"$ZAREL_STUDY|$ZAREL_POINTS|$ZAREL_RESULTS\" >> $0.out; "
                     "cat >> $0.out; printf 'y,z\\n1,2\\n' > {results}; head -1 {points} >> $0.out",
                     "{cwd}/seen"};

  run(1);

  const std::string work = path("study") + "/work/run-000001";
  EXPECT_EQ(read("seen.out"), work + "\n" + path("study") + "|" + work + "/points.csv|" + work +
                                  "/results.csv\na,b\n");
  EXPECT_EQ(listener_.done[0], (Row{1, 2}));
}

TEST_F(RefineRunner, ColumnsAreFoundByNameAndOthersIgnored) {
  settings_.program = "/bin/sh";
  settings_.words = {"sh", "-c", "printf 'extra;z;y\\nwords;2;1\\n' > {results}; : {points}"};
  run(1);
  EXPECT_EQ(listener_.done[0], (Row{1, 2}));
}

TEST_F(RefineRunner, ResultsWithoutHeaderAreTakenInOrder) {
  settings_.program = "/bin/sh";
  settings_.words = {"sh", "-c", "printf '1,2\\n' > {results}"};
  run(1);
  EXPECT_EQ(listener_.done[0], (Row{1, 2}));
}

TEST_F(RefineRunner, ResultsThatAreAFolderOrAPipeAreRefused) {
  settings_.program = "/bin/sh";
  for (const char* make : {"mkdir {results}", "mkfifo {results}"}) {
    listener_ = {};
    settings_.words = {"sh", "-c", make};
    run(1);
    EXPECT_THAT(listener_.failed[0], HasSubstr("not a regular file")) << make;
  }
}

TEST_F(RefineRunner, LeftOversOfAKilledStudyAreClearedAndNumbersGoOn) {
  std::filesystem::create_directories(path("study/work/run-000007"));
  std::filesystem::create_directories(path("study/failed/run-000009"));
  settings_.keepRuns = true;

  run(1);

  EXPECT_EQ(entries("study/work"), std::vector<std::string>{"run-000010"});
}

TEST(RefineProcess, ProgramsAreFoundFromTheFolderOrInPath) {
  EXPECT_EQ(findProgram("/bin/sh", "/nowhere"), "/bin/sh");
  EXPECT_EQ(findProgram("bin/sh", "/"), "//bin/sh");
  EXPECT_THAT(findProgram("sh", "/nowhere"), ::testing::EndsWith("/sh"));
  for (const char* name : {"no-such-program-here", "./sh", "/etc/passwd", "/bin"})
    EXPECT_EQ(failureOf([&] { findProgram(name, "/nowhere"); }).code, app::ExitCode::usage) << name;
}

} // namespace
