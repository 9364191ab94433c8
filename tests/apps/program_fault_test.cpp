#include "program_support.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "support/sanitizers.h"

using apptest::Around;
using apptest::Outcome;
using apptest::Words;
using ::testing::HasSubstr;

namespace {

class Faults : public apptest::Program {
protected:
  static void limitFileSize(rlim_t bytes) {
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  /** Samples on which a fit takes many seconds. */
  std::string writeSlowSamples() {
    std::string csv = "a,b,c,d,y\n";
    for (int i = 0; i < 1600; ++i) {
      for (const int step : {389, 577, 701, 911})
        csv += std::to_string(i * step % 1600 / 1600.0) + ",";
      csv += std::to_string(std::sin(0.02 * i)) + "\n";
    }
    return write("slow.csv", csv);
  }

  static void after(double seconds, pid_t child, int signal) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    kill(child, signal);
  }
};

TEST_F(Faults, AFullDeviceIsReported) {
  Around full;
  full.outputFile = "/dev/full";
  const std::string model = fitModel();
  for (const Words& words :
       {Words{"predict", model, writePoints(10)}, Words{"info", model}, Words{"--version"},
        Words{"predict", model, path("points.csv"), "--json"}, Words{"info", model, "--json"}}) {
    const Outcome run = zarel(words, full);
    EXPECT_EQ(run.code, 4) << words[0];
    EXPECT_THAT(run.err, HasSubstr("No space left on device"));
  }
  EXPECT_EQ(zarel({"predict", model, path("points.csv"), "-o", "/dev/full"}).code, 4);
  EXPECT_EQ(zarel({"fit", path("samples.csv"), "--inputs", "2", "-o", "/dev/full"}).code, 4);
}

TEST_F(Faults, AClosedStandardOutputIsReported) {
  Around closed;
  closed.child = [] { close(STDOUT_FILENO); };
  EXPECT_EQ(zarel({"info", fitModel()}, closed).code, 4);
}

TEST_F(Faults, AClosedPipeIsReported) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  Around broken;
  broken.child = [&ends] { dup2(ends[1], STDOUT_FILENO); };
  const Outcome run = zarel({"predict", fitModel(), writePoints(50000)}, broken);
  close(ends[1]);
  EXPECT_EQ(run.signal, 0) << "the program outlives SIGPIPE";
  EXPECT_EQ(run.code, 4);
  EXPECT_THAT(run.err, HasSubstr("Broken pipe"));
}

TEST_F(Faults, TheFormerModelOutlivesAFileSizeLimit) {
  const std::string model = fitModel();
  const std::string former = read("model.krg");
  Around limited;
  limited.child = [] { limitFileSize(600); };

  const Outcome run =
      zarel({"fit", writeSamples(), "--inputs", "2", "-o", model, "--force"}, limited);

  EXPECT_EQ(run.signal, 0) << "the program outlives SIGXFSZ";
  EXPECT_EQ(run.code, 4) << run.err;
  EXPECT_THAT(run.err, HasSubstr("File too large"));
  EXPECT_EQ(read("model.krg"), former);
  EXPECT_EQ(count(), 2) << "model and samples, no temporary";
}

TEST_F(Faults, TheFormerModelOutlivesAFullDisk) {
  const std::string mounted = path("tiny");
  std::filesystem::create_directory(mounted);
  if (mount("tmpfs", mounted.c_str(), "tmpfs", 0, "size=8k") != 0)
    GTEST_SKIP() << "needs the right to mount";
  fitModel("model.krg");
  const std::string former = read("model.krg").substr(0, 100);
  write("tiny/model.krg", former);

  const Outcome run =
      zarel({"fit", writeSamples(400), "--inputs", "2", "-o", mounted + "/model.krg", "--force",
             "--no-optimise", "--trend", "linear"});
  const std::string left = read("tiny/model.krg");
  const auto files = std::distance(std::filesystem::directory_iterator(mounted), {});
  umount(mounted.c_str());

  EXPECT_EQ(run.code, 4) << run.err;
  EXPECT_THAT(run.err, HasSubstr("No space left on device"));
  EXPECT_THAT(run.err, HasSubstr("the former file is unchanged"));
  EXPECT_EQ(left, former);
  EXPECT_EQ(files, 1);
}

TEST_F(Faults, DamagedModelsAreRefusedInOneMessage) {
  const std::string whole = (fitModel(), read("model.krg"));
  const std::vector<std::string> damaged{"",
                                         "x",
                                         "not a model at all, but some text",
                                         whole.substr(0, whole.size() / 2),
                                         whole.substr(0, whole.size() - 1),
                                         whole + "x",
                                         std::string(5000, '\xff')};
  for (const auto& bytes : damaged) {
    const Outcome run = zarel({"info", write("bad", bytes)});
    EXPECT_EQ(run.code, 3) << bytes.size() << " bytes: " << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, ::testing::StartsWith("zarel: error: " + path("bad") + ": "))
        << "nothing of the library in front";
    EXPECT_LE(std::count(run.err.begin(), run.err.end(), '\n'), 2);
    if (bytes.size() < 50) {
      EXPECT_THAT(run.err, HasSubstr("give a file that zarel fit"));
    }
  }
  EXPECT_EQ(zarel({"info", path("none")}).code, 4);
  EXPECT_EQ(zarel({"info", folder_.string()}).code, 4);
}

TEST_F(Faults, WantOfMemoryIsToldAndLeavesTheFormerModel) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers reserve more address space than this leaves";
  // The factor of 12000 samples takes 1.1 GiB, which is more than the address space allowed.
  std::string csv = "a,y\n";
  for (int i = 0; i < 12000; ++i)
    csv += std::to_string(i) + "," + std::to_string(std::sin(0.02 * i)) + "\n";
  write("m", "former");
  Around small;
  small.child = [] {
    const rlimit limit{rlim_t{1} << 30, rlim_t{1} << 30};
    setrlimit(RLIMIT_AS, &limit);
  };

  const Outcome run = zarel({"fit", write("many.csv", csv), "-i", "1", "-o", path("m"), "--trend",
                             "constant", "--no-optimise", "--force"},
                            small);

  EXPECT_EQ(run.code, 1) << run.err;
  EXPECT_THAT(run.err, HasSubstr("zarel: error: out of memory\n       fit fewer samples"));
  EXPECT_EQ(read("m"), "former");
}

TEST_F(Faults, LibraryMessagesNeverMixWithData) {
  Around loud;
  loud.environment = {"ZAREL_VERBOSITY=3", "ZAREL_DEBUG_SCOPES=502"};
  const Outcome run =
      zarel({"fit", writeSamples(), "--inputs", "2", "-o", path("m"), "--json"}, loud);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.json()["command"], "fit");
  EXPECT_THAT(run.err, HasSubstr("Kernel : "));
}

TEST_F(Faults, CtrlCStopsAFitAndTellsHowToGoOn) {
  const std::string samples = writeSlowSamples();
  write("m", "former");
  for (const int signal : {SIGINT, SIGTERM}) {
    Around interrupted;
    interrupted.meanwhile = [signal](pid_t child) { after(1.5, child, signal); };
    const auto start = std::chrono::steady_clock::now();

    const Outcome run =
        zarel({"fit", samples, "--inputs", "4", "-o", path("m"), "--force"}, interrupted);

    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(run.code, 130) << run.err;
    EXPECT_THAT(run.err, HasSubstr("interrupted"));
    EXPECT_THAT(run.err, HasSubstr("--theta "));
    EXPECT_EQ(read("m"), "former");
    EXPECT_LT(took.count(), 60);
  }
}

TEST_F(Faults, CtrlCKeepsThePredictionsThatAreDone) {
  const std::string model = fitModel();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  Around interrupted;
  interrupted.child = [&ends] {
    dup2(ends[0], STDIN_FILENO);
    close(ends[1]);
  };
  interrupted.meanwhile = [&ends](pid_t child) {
    std::string rows = "a,b\n";
    for (int i = 0; i < 100000; ++i)
      rows += "0.25,0.5\n";
    EXPECT_EQ(::write(ends[1], rows.data(), rows.size()), static_cast<ssize_t>(rows.size()));
    after(0.5, child, SIGINT); // the program waits for more
  };

  const Outcome run = zarel({"predict", model, "-", "-o", path("o.csv")}, interrupted);
  close(ends[0]);
  close(ends[1]);

  EXPECT_EQ(run.code, 130) << run.err;
  EXPECT_FALSE(exists("o.csv"));
  const auto kept = apptest::numbersOf(read("o.csv.partial"));
  EXPECT_EQ(kept.size(), 100000u) << "all that had come";
  EXPECT_THAT(run.err, HasSubstr("--skip " + std::to_string(kept.size())));
}

/** What a command shows on a terminal, in the order it came. */
std::string onTerminal(const Words& words, const Words& environment) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    for (const auto& entry : environment)
      putenv(strdup(entry.c_str()));
    std::vector<char*> arguments{strdup(ZAREL_PROGRAM)};
    for (const auto& word : words)
      arguments.push_back(strdup(word.c_str()));
    arguments.push_back(nullptr);
    execv(ZAREL_PROGRAM, arguments.data());
    _exit(98);
  }
  std::string shown;
  char block[4096];
  ssize_t got = 0;
  while ((got = read(terminal, block, sizeof block)) > 0)
    shown.append(block, static_cast<std::size_t>(got));
  int status = 0;
  waitpid(child, &status, 0);
  close(terminal);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << shown;
  return shown;
}

TEST_F(Faults, ATerminalSeesAtMostTenBarsASecond) {
  const std::string model = fitModel();
  writePoints(600000);
  const auto start = std::chrono::steady_clock::now();

  const std::string shown =
      onTerminal({"predict", model, path("points.csv"), "-o", path("o.csv")}, {"TERM=xterm"});

  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::size_t bars = 0;
  for (std::size_t at = 0; (at = shown.find("predicting [", at)) != std::string::npos; ++at)
    ++bars;
  EXPECT_GT(bars, 0u);
  EXPECT_LE(static_cast<double>(bars), 10 * took.count() + 1);
  const std::string quiet = onTerminal(
      {"predict", model, path("points.csv"), "-o", path("q.csv"), "--quiet"}, {"TERM=xterm"});
  EXPECT_EQ(quiet, "");
}

TEST_F(Faults, ColoursAreForTerminalsThatWantThem) {
  const std::string csv = write("d.csv", "a,b,y\n0,0,1\n0,1,2\n1,0,3\n1,1,4.5\n.5,.3,2\n");
  const Words words{"fit", csv, "--inputs", "2", "-o", path("m"), "--force"};
  EXPECT_THAT(onTerminal(words, {"TERM=xterm"}), HasSubstr("\033[33mwarning"));
  EXPECT_THAT(onTerminal(words, {"TERM=xterm", "NO_COLOR=1"}),
              ::testing::Not(HasSubstr("\033[33m")));
}

} // namespace
