#include "program_support.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <gmock/gmock.h>
#include <map>
#include <set>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using apptest::Words;
using ::testing::HasSubstr;

namespace {

class Refine : public apptest::Program {
protected:
  /// A study of the test simulation in two variables.
  Words study(const std::string& name, const Words& more = {}, const std::string& faults = {}) {
    const std::string command = std::string("'") + ZAREL_TEST_SIMULATION +
                                "' {points} {results} --log '" + path(name + ".calls") + "' " +
                                faults;
    Words words{"refine", "--study",  path(name), "--command", command, "--input",
                "a=0:1",  "--input",  "b=0:1",    "--outputs", "y,z",   "--initial",
                "8",      "--target", "1e-9",     "--rounds",  "4",     "--test-points",
                "100",    "--trend",  "constant", "--grace",   "0.5",   "--points-per-round",
                "2"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  /// What the simulation would give on a grid of side x side points.
  std::string writeGrid(int side, const std::string& name) const {
    std::ostringstream text;
    text.precision(17);
    text << "a,b,y,z\n";
    for (int i = 0; i < side * side; ++i) {
      const double a = (i / side) / (side - 1.0), b = (i % side) / (side - 1.0);
      text << a << ',' << b << ',' << std::sin(3 * a) + b * b << ',' << a * b << '\n';
    }
    return write(name, text.str());
  }

  /// How often each point was started.
  std::map<std::string, int> calls(const std::string& name) const {
    std::map<std::string, int> counts;
    std::istringstream log(read(name + ".calls"));
    for (std::string line; std::getline(log, line);)
      ++counts[line];
    return counts;
  }

  int callCount(const std::string& name) const {
    int count = 0;
    for (const auto& entry : calls(name))
      count += entry.second;
    return count;
  }

  /// The samples without how long anything took.
  std::string samples(const std::string& name) const { return read(name + "/samples.csv"); }

  int sampleCount(const std::string& name) const {
    const std::string text = samples(name);
    return static_cast<int>(std::count(text.begin(), text.end(), '\n')) - 1;
  }

  /// True once the child has ended; it stays to be waited for.
  static bool hasEnded(pid_t child) {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == child;
  }

  /// Ends the process as soon as so many points were started.
  static std::function<void(pid_t)> after(int count, int signal, std::function<int()> counter) {
    return [=](pid_t child) {
      while (counter() < count && !hasEnded(child))
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      ::kill(child, signal);
    };
  }

  /// Kills the process when the study's journal has grown to so many bytes.
  std::function<void(pid_t)> killAtJournalSize(const std::string& name, std::size_t bytes) {
    return [=](pid_t child) {
      for (int i = 0; i < 20000; ++i) {
        std::error_code error;
        const auto size = std::filesystem::file_size(path(name + "/journal.log"), error);
        if ((!error && size >= bytes) || hasEnded(child)) break;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
      }
      ::kill(child, SIGKILL);
    };
  }
};

TEST_F(Refine, RunsRoundsAndLeavesAStudy) {
  const auto run = zarel(study("s"));

  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("predicted error"));
  EXPECT_THAT(run.out, HasSubstr("study.krg"));
  EXPECT_THAT(run.err, HasSubstr("round limit"));
  for (const char* file :
       {"study.krg", "samples.csv", "failed.csv", "report.html", "report.svg", "journal.log"})
    EXPECT_TRUE(exists(std::string("s/") + file)) << file;
  EXPECT_EQ(callCount("s"), sampleCount("s"));
}

TEST_F(Refine, ModelPredictsWhatWasSimulated) {
  // The increment on the diagonal keeps a model off its samples by its multiple of the correlation
  // coefficients, so the correlation is one that keeps these moderate: rough and short.
  const Words options{"--correlation", "matern52", "--bounds", "1:20"};
  ASSERT_EQ(zarel(study("s", options)).code, 0);
  const auto rows = apptest::numbersOf(samples("s"));

  const auto run = zarel({"predict", path("s/study.krg"), path("s/samples.csv"), "-q"});

  ASSERT_EQ(run.code, 0) << run.err;
  const auto predicted = apptest::numbersOf(run.out);
  ASSERT_EQ(predicted.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const double a = rows[i][0], b = rows[i][1];
    const auto& last = predicted[i];
    EXPECT_NEAR(last[last.size() - 2], std::sin(3 * a) + b * b, 1e-4);
    EXPECT_NEAR(last[last.size() - 1], a * b, 1e-4);
  }
}

TEST_F(Refine, ErrorsFallOverTheRounds) {
  const std::string file = writeGrid(5, "v.csv");
  const auto run = zarel(study("s", {"--validation", file, "--json", "--rounds", "8"}));

  ASSERT_EQ(run.code, 0) << run.err;
  const auto rounds = run.json()["rounds"];
  const auto &first = rounds.front(), &last = rounds.back();
  EXPECT_LT(last["predicted_error"].get<double>(), 0.5 * first["predicted_error"].get<double>());
  EXPECT_LT(last["validation"]["rms_error"].get<double>(),
            0.5 * first["validation"]["rms_error"].get<double>());
  EXPECT_GT(last["validation"]["r2"][0].get<double>(), 0.99);
}

TEST_F(Refine, JsonIsOneDocument) {
  const auto run = zarel(study("s", {"--json"}));

  ASSERT_EQ(run.code, 0) << run.err;
  const auto document = run.json();
  EXPECT_EQ(document["schema_version"], 1);
  EXPECT_EQ(document["command"], "refine");
  EXPECT_EQ(document["outcome"], "round-limit");
  EXPECT_EQ(document["rounds"].size(), 5u);
  EXPECT_EQ(document["samples"], sampleCount("s"));
  EXPECT_EQ(document["models"].size(), 2u);
  EXPECT_TRUE(document["failed"].empty());
}

TEST_F(Refine, SameSeedSameSamples) {
  ASSERT_EQ(zarel(study("s")).code, 0);
  ASSERT_EQ(zarel(study("t", {"--jobs", "3"})).code, 0);
  ASSERT_EQ(zarel(study("u", {"--jobs", "2", "--batch", "3"})).code, 0);
  ASSERT_EQ(zarel(study("v", {"--seed", "2"})).code, 0);

  EXPECT_EQ(samples("t"), samples("s"));
  EXPECT_EQ(samples("u"), samples("s"));
  EXPECT_NE(samples("v"), samples("s"));
}

TEST_F(Refine, StopsAtTheTarget) {
  const auto run = zarel(study("s", {"--target", "0.05", "--rounds", "50", "--json"}));

  ASSERT_EQ(run.code, 0) << run.err;
  const auto rounds = run.json()["rounds"];
  EXPECT_EQ(run.json()["outcome"], "target-reached");
  EXPECT_LE(rounds.back()["predicted_error"].get<double>(), 0.05);
  for (std::size_t r = 0; r + 1 < rounds.size(); ++r)
    EXPECT_GT(rounds[r]["predicted_error"].get<double>(), 0.05);
}

TEST_F(Refine, StopsAtTheBudget) {
  const auto run = zarel(study("s", {"--budget", "11", "--rounds", "50", "--json"}));

  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.json()["outcome"], "point-budget");
  EXPECT_EQ(callCount("s"), 11);
}

TEST_F(Refine, StopsWhenNoTestPointIsLeft) {
  write("t.csv", "a,b\n0.1,0.9\n0.9,0.1\n");
  const auto run = zarel(study("s", {"--tests", path("t.csv"), "--json", "--rounds", "50"}));

  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.json()["outcome"], "no-candidates");
  EXPECT_EQ(run.json()["samples"], 10);
}

TEST_F(Refine, NoRoundAddsMoreThanItMay) {
  const auto run = zarel(study("s", {"--json"}));
  const auto rounds = run.json()["rounds"];
  for (std::size_t r = 1; r < rounds.size(); ++r)
    EXPECT_LE(rounds[r]["samples"].get<int>() - rounds[r - 1]["samples"].get<int>(), 2);
}

TEST_F(Refine, GivenSamplesAreNotSimulated) {
  const std::string file = writeGrid(4, "given.csv");
  const auto run = zarel(study("s", {"--samples", file, "--rounds", "1", "--json"}));

  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.json()["samples"].get<int>() - 16, callCount("s"));
}

TEST_F(Refine, FinishedStudyIsNotRunAgainAndGoesOnWithHigherLimits) {
  ASSERT_EQ(zarel(study("s", {"--rounds", "2"})).code, 0);
  const int before = callCount("s");
  const auto again = zarel(study("s", {"--rounds", "2"}));
  EXPECT_EQ(again.code, 0) << again.err;
  EXPECT_EQ(callCount("s"), before);
  EXPECT_THAT(again.out, HasSubstr("predicted error"));

  ASSERT_EQ(zarel(study("s")).code, 0);
  ASSERT_EQ(zarel(study("t")).code, 0);

  EXPECT_EQ(samples("s"), samples("t"));
  for (const auto& entry : calls("s"))
    EXPECT_EQ(entry.second, 1) << entry.first;
}

TEST_F(Refine, KilledAtManyMomentsItEndsWithTheSameSamples) {
  ASSERT_EQ(zarel(study("whole")).code, 0);
  const std::size_t bytes = read("whole/journal.log").size();

  for (int moment = 1; moment <= 12; ++moment) {
    const std::string name = "cut" + std::to_string(moment);
    apptest::Around setup;
    setup.meanwhile = killAtJournalSize(name, bytes * static_cast<std::size_t>(moment) / 13);
    zarel(study(name), setup);
    const std::string journal = exists(name + "/journal.log") ? read(name + "/journal.log") : "";
    const auto lines = std::count(journal.begin(), journal.end(), '\n');

    const auto resumed = zarel(study(name));

    ASSERT_EQ(resumed.code, 0) << resumed.err;
    EXPECT_EQ(samples(name), samples("whole")) << moment;
    // One process ran at the moment: the one point under way may have been started twice.
    EXPECT_LE(callCount(name), sampleCount(name) + 1) << moment << " after " << lines << " records";
    EXPECT_EQ(static_cast<int>(calls(name).size()), sampleCount(name));
  }
}

TEST_F(Refine, KilledOverAndOverItStillEndsTheSame) {
  ASSERT_EQ(zarel(study("whole")).code, 0);

  int kills = 0;
  for (; kills < 60; ++kills) {
    const int goal = callCount("s") + 1;
    apptest::Around setup;
    setup.meanwhile = after(goal, SIGKILL, [&] { return callCount("s"); });
    if (zarel(study("s", {}, "--sleep 30"), setup).signal == 0) break;
  }

  EXPECT_GT(kills, 5);
  ASSERT_EQ(zarel(study("s", {}, "--sleep 30")).code, 0);
  EXPECT_EQ(samples("s"), samples("whole"));
}

TEST_F(Refine, SearchInEveryThirdFitResumesTheSameToo) {
  const Words options{"--step", "3", "--rounds", "5"};
  ASSERT_EQ(zarel(study("whole", options)).code, 0);
  apptest::Around setup;
  setup.meanwhile = after(12, SIGKILL, [&] { return callCount("s"); });
  zarel(study("s", options, "--sleep 20"), setup);

  ASSERT_EQ(zarel(study("s", options, "--sleep 20")).code, 0);

  EXPECT_EQ(samples("s"), samples("whole"));
}

TEST_F(Refine, GrowingTrendResumesTheSameToo) {
  const Words options{"--trend", "quadratic", "--rounds", "6"};
  ASSERT_EQ(zarel(study("whole", options)).code, 0);
  apptest::Around setup;
  setup.meanwhile = after(9, SIGKILL, [&] { return callCount("s"); });
  zarel(study("s", options, "--sleep 20"), setup);

  ASSERT_EQ(zarel(study("s", options, "--sleep 20")).code, 0);

  EXPECT_EQ(samples("s"), samples("whole"));
}

TEST_F(Refine, TrendGrowsWithTheSamplesThatCarryIt) {
  const Words options{"--trend", "quadratic", "--json", "--rounds"};
  const auto terms = [&](const char* rounds) {
    Words words = options;
    words.emplace_back(rounds);
    const auto run = zarel(study("s", words));
    EXPECT_EQ(run.code, 0) << run.err;
    return run.json()["models"][0]["trend_terms"].get<int>();
  };

  EXPECT_EQ(terms("0"), 3); // 8 samples: linear
  EXPECT_EQ(terms("6"), 6); // 12 or more: quadratic
  EXPECT_GE(sampleCount("s"), 12);
}

TEST_F(Refine, InterruptReachesARunningFit) {
  // Enough given samples that the first fit takes seconds.
  std::ostringstream csv;
  csv << "a,b,y,z\n";
  unsigned state = 1;
  const auto draw = [&] { return (state = state * 1664525u + 1013904223u) / 4294967296.0; };
  for (int i = 0; i < 1500; ++i) {
    const double a = draw(), b = draw();
    csv << a << ',' << b << ',' << std::sin(30 * a) + b << ',' << a * b << '\n';
  }
  const Words options{"--samples", write("many.csv", csv.str()), "--rounds", "0"};
  apptest::Around setup;
  setup.meanwhile = [&](pid_t child) {
    while (!exists("s/journal.log") && !hasEnded(child))
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    ::kill(child, SIGINT);
  };

  const auto start = std::chrono::steady_clock::now();
  const auto run = zarel(study("s", options), setup);

  EXPECT_EQ(run.code, 130) << run.err;
  EXPECT_THAT(run.err, HasSubstr("to go on: "));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(Refine, ChildrenDieWithAKilledProgram) {
  apptest::Around setup;
  setup.meanwhile = after(1, SIGKILL, [&] { return callCount("s"); });
  zarel(study("s", {}, "--sleep 200"), setup);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));

  // The orphan would have written its results by now.
  for (const auto& run : std::filesystem::directory_iterator(path("s/work")))
    EXPECT_FALSE(std::filesystem::exists(run.path() / "results.csv"));
}

TEST_F(Refine, InterruptKeepsWhatIsFinishedAndTellsHowToGoOn) {
  ASSERT_EQ(zarel(study("whole")).code, 0);
  apptest::Around setup;
  setup.meanwhile = after(4, SIGINT, [&] { return callCount("s"); });

  const auto run = zarel(study("s", {}, "--sleep 100"), setup);

  EXPECT_EQ(run.code, 130) << run.err;
  EXPECT_THAT(run.err, HasSubstr("to go on: "));
  EXPECT_THAT(run.err, HasSubstr("--study " + path("s")));
  ASSERT_EQ(zarel(study("s", {}, "--sleep 100")).code, 0);
  EXPECT_EQ(samples("s"), samples("whole"));
  EXPECT_LE(callCount("s"), sampleCount("s") + 1);
}

TEST_F(Refine, InterruptEndsSimulationsThatDoNotListen) {
  apptest::Around setup;
  setup.meanwhile = after(1, SIGINT, [&] { return callCount("s"); });

  const auto start = std::chrono::steady_clock::now();
  const auto run = zarel(study("s", {}, "--stubborn-above -1"), setup);

  EXPECT_EQ(run.code, 130) << run.err;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Refine, FailuresCostTheirPointsOnlyAndAreNotRepeated) {
  const auto run = zarel(study("s", {"--json", "--max-failures", "50"}, "--fail-above 0.7"));

  ASSERT_EQ(run.code, 0) << run.err;
  const auto failed = run.json()["failed"];
  ASSERT_FALSE(failed.empty());
  for (const auto& point : failed) {
    EXPECT_GT(point["inputs"]["a"].get<double>(), 0.7);
    EXPECT_THAT(point["reason"].get<std::string>(), HasSubstr("mesh collapsed"));
    EXPECT_TRUE(std::filesystem::exists(point["folder"].get<std::string>() + "/stderr.txt"));
  }
  EXPECT_EQ(callCount("s"), sampleCount("s") + static_cast<int>(failed.size()));
  for (const auto& entry : calls("s"))
    EXPECT_EQ(entry.second, 1) << entry.first;

  const int before = callCount("s");
  EXPECT_EQ(zarel(study("s", {"--max-failures", "50"}, "--fail-above 0.7")).code, 0);
  EXPECT_EQ(callCount("s"), before);
}

TEST_F(Refine, TooManyFailuresEndIt) {
  const auto run = zarel(study("s", {"--max-failures", "2"}, "--fail-above -1"));

  EXPECT_EQ(run.code, 6);
  EXPECT_THAT(run.err, HasSubstr("--max-failures"));
  EXPECT_EQ(callCount("s"), 3);
  const std::string failed = read("s/failed.csv");
  EXPECT_EQ(std::count(failed.begin(), failed.end(), '\n'), 1 + 3);
  EXPECT_THAT(failed, HasSubstr("mesh collapsed"));
  EXPECT_EQ(zarel(study("s", {"--max-failures", "2"}, "--fail-above -1")).code, 6);
  EXPECT_EQ(callCount("s"), 3);
}

TEST_F(Refine, TooFewInitialSuccessesEndIt) {
  const auto run = zarel(study("s", {"--max-failures", "50"}, "--fail-above -1"));
  EXPECT_EQ(run.code, 6);
  EXPECT_THAT(run.err, HasSubstr("initial samples succeeded"));
}

TEST_F(Refine, GarbageAndHangsCostTheirPointsOnly) {
  for (const char* fault :
       {"--nan-above 0.8", "--text-above 0.8", "--few-above 0.8", "--hang-above 0.8"}) {
    const std::string name = "s" + std::string(fault).substr(2, 4);
    const auto run = zarel(study(name,
                                 {"--json", "--max-failures", "50", "--timeout", "0.5", "--batch",
                                  "2", "--jobs", "2", "--rounds", "1"},
                                 fault));
    ASSERT_EQ(run.code, 0) << fault << run.err;
    const auto failed = run.json()["failed"];
    ASSERT_FALSE(failed.empty()) << fault;
    for (const auto& point : failed)
      EXPECT_GT(point["inputs"]["a"].get<double>(), 0.8) << fault;
  }
}

TEST_F(Refine, StudyFileGivesTheOptions) {
  write("study.toml",
        "seed = 5\n\n[refine]\ncommand = \"'" ZAREL_TEST_SIMULATION "' {points} {results}\"\n"
        "input = [\"a=0:1\", \"b=0:1\"]\noutputs = \"y,z\"\ninitial = 9\nrounds = 0\n");
  const auto run =
      zarel({"refine", "--config", path("study.toml"), "--study", path("s"), "--json"});

  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.json()["samples"], 9);
  EXPECT_EQ(run.json()["seed"], 5);
}

TEST_F(Refine, MisspeltKeyOfAStudyFileIsRefused) {
  write("study.toml", "[refine]\ncomand = \"x\"\n");
  EXPECT_EQ(zarel({"refine", "--config", path("study.toml"), "--study", path("s")}).code, 2);
}

TEST_F(Refine, UsageErrorsComeBeforeAnyWork) {
  const std::pair<Words, const char*> cases[] = {
      {{"refine"}, "--study"},
      {{"refine", "--study", path("s")}, "--command"},
      {study("s", {"--input", "c=1"}), "NAME=LOW:HIGH"},
      {study("s", {"--points-per-round", "101"}), "100"},
      {study("s", {"--jobs", "0"}), "--jobs"},
      {study("s", {"--command", "no-such-simulation"}), "not an executable"},
      {study("s", {"--command", "sh {points}"}), "{results}"},
      {study("s", {"--groups", "y;q"}), "\"q\""},
      {study("s", {"--taget", "1"}), "--target"}};
  for (const auto& [words, hint] : cases) {
    const auto run = zarel(words);
    EXPECT_EQ(run.code, 2) << run.err;
    EXPECT_THAT(run.err, HasSubstr(hint));
    EXPECT_FALSE(exists("s"));
  }
}

TEST_F(Refine, ChangedSettingsAreRefusedAndForceStartsOver) {
  ASSERT_EQ(zarel(study("s", {"--rounds", "0"})).code, 0);

  const auto run = zarel(study("s", {"--rounds", "0", "--seed", "9"}));
  EXPECT_EQ(run.code, 2);
  EXPECT_THAT(run.err, HasSubstr("seed = 1, not 9"));

  EXPECT_EQ(zarel(study("s", {"--rounds", "0", "--seed", "9", "--force"})).code, 0);
  EXPECT_EQ(callCount("s"), 16);
}

TEST_F(Refine, TwoRunsDoNotShareAStudy) {
  apptest::Around setup;
  apptest::Outcome second;
  setup.meanwhile = [&](pid_t) {
    for (int i = 0; i < 5000 && callCount("s") < 1; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    second = zarel(study("s", {}, "--sleep 50"));
  };

  EXPECT_EQ(zarel(study("s", {}, "--sleep 50"), setup).code, 0);

  EXPECT_EQ(second.code, 2);
  EXPECT_THAT(second.err, HasSubstr("another process"));
}

TEST_F(Refine, DamagedJournalIsBadInput) {
  ASSERT_EQ(zarel(study("s", {"--rounds", "0"})).code, 0);
  std::string journal = read("s/journal.log");
  journal[20] = static_cast<char>(journal[20] ^ 1);
  write("s/journal.log", journal);

  EXPECT_EQ(zarel(study("s", {"--rounds", "0"})).code, 3);
}

TEST_F(Refine, FullDiskIsReportedAndTheStudyGoesOnLater) {
  ASSERT_EQ(zarel(study("whole")).code, 0);
  apptest::Around setup;
  setup.child = [] {
    const rlimit small{3000, 3000};
    setrlimit(RLIMIT_FSIZE, &small);
  };

  EXPECT_EQ(zarel(study("s"), setup).code, 4);
  ASSERT_EQ(zarel(study("s")).code, 0);

  EXPECT_EQ(samples("s"), samples("whole"));
  for (const auto& entry : calls("s"))
    EXPECT_LE(entry.second, 2) << entry.first;
}

} // namespace
