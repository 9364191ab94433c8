// zarel svd from outside: every kind of input, both solvers, in and out of core, and what it
// leaves.
#include "svd_support.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <limits>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>

using apptest::Around;
using apptest::departure;
using apptest::length;
using apptest::numbersOf;
using apptest::Outcome;
using apptest::total;
using apptest::Vectors;
using apptest::vectorsOf;
using apptest::Words;
using ::testing::HasSubstr;

namespace {

constexpr int usage = 2, badInput = 3, io = 4, numerical = 5, interrupted = 130;

/** Numbers in [0, 1) without order. */
Vectors randomVectors(std::size_t count, std::size_t rows) {
  Vectors vectors;
  std::uint64_t state = 1;
  for (std::size_t j = 0; j < count; ++j) {
    vectors.columns.emplace_back(rows);
    for (double& value : vectors.columns.back()) {
      state = state * 6364136223846793005ULL + 1442695040888963407ULL;
      value = std::ldexp(static_cast<double>(state >> 11), -53);
    }
  }
  return vectors;
}

/** The largest entry of the difference between the vectors and basis times coefficients. */
double missing(const Vectors& vectors, const Vectors& basis,
               const std::vector<std::vector<double>>& coefficients) {
  double largest = 0;
  for (std::size_t j = 0; j < vectors.count(); ++j)
    for (std::size_t i = 0; i < vectors.length(); ++i) {
      double sum = 0;
      for (std::size_t k = 0; k < basis.count(); ++k)
        sum += basis.columns[k][i] * coefficients[j][k];
      largest = std::max(largest, std::fabs(sum - vectors.columns[j][i]));
    }
  return largest;
}

class Svd : public apptest::SvdProgram {
protected:
  std::string csvOf(const Vectors& vectors) const {
    std::string text;
    char number[40];
    for (std::size_t i = 0; i < vectors.length(); ++i)
      for (std::size_t j = 0; j < vectors.count(); ++j) {
        std::snprintf(number, sizeof number, "%.17g", vectors.columns[j][i]);
        text += number;
        text += j + 1 < vectors.count() ? ',' : '\n';
      }
    return text;
  }
};

TEST_F(Svd, LeavesBasisValuesCoefficientsAndPicture) {
  for (const std::string method : {"lapack", "arpack"})
    for (const std::string memory : {"1G", "1k"}) {
      const Outcome run = svd({set_, "--method", method, "--memory", memory, "-k", "3", "-o",
                               path("basis"), "--values", path("values.csv"), "--coefficients",
                               path("c.csv"), "--plot", path("scree.svg"), "--force"});
      ASSERT_EQ(run.code, 0) << run.err;

      const Vectors basis = vectorsOf(read("basis"));
      EXPECT_EQ(basis.count(), 3u);
      EXPECT_LE(departure(basis), 1e-12);
      EXPECT_LE(missing(vectors_, basis, numbersOf(read("c.csv"))), 1e-12);
      const auto values = numbersOf(read("values.csv"));
      ASSERT_GE(values.size(), 3u);
      for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i][0], static_cast<double>(i + 1));
        EXPECT_EQ(values[i][3], i < 3 ? 1.0 : 0.0);
        EXPECT_LE(values[i][1], values[i > 0 ? i - 1 : 0][1]);
      }
      EXPECT_THAT(read("scree.svg"), HasSubstr("<svg"));
      EXPECT_THAT(read("scree.svg"), HasSubstr("3 kept"));
    }
  EXPECT_EQ(read("vectors.set"), setFile(vectors_)); // never changed
}

TEST_F(Svd, EveryKindOfInputGivesTheSameBasis) {
  using apptest::npyDictionary;
  using apptest::npyFile;
  const std::string byVector = apptest::bytesOf(vectors_.byVector());
  const std::string byRow = apptest::bytesOf(vectors_.byRow());
  const std::vector<Words> inputs{
      {set_},
      {write("a.raw", byVector), "--vectors", "9"},
      {write("r.raw", byRow), "--rows", "--length", "40"},
      {write("f.npy", npyFile(npyDictionary(true, length, total), byVector))},
      {write("c.npy", npyFile(npyDictionary(false, length, total), byRow)), "--rows"},
      {write("t.npy", npyFile(npyDictionary(false, total, length), byVector)), "--transpose"},
      {write("a.csv", csvOf(vectors_))},
      {"-"}};
  for (const std::string method : {"lapack", "arpack"})
    for (const std::string memory : {"1G", "1k"}) {
      std::string expected;
      for (Words words : inputs) {
        Around around;
        if (words.front() == "-") around.input = csvOf(vectors_);
        words.insert(words.end(), {"--method", method, "--memory", memory, "-k", "2", "-o",
                                   path("basis"), "-f", "--values", path("values.csv")});
        const Outcome run = svd(words, around);
        ASSERT_EQ(run.code, 0) << words.front() << run.err;
        if (expected.empty()) expected = read("values.csv");
        EXPECT_EQ(read("values.csv"), expected) << words.front();
        EXPECT_EQ(vectorsOf(read("basis")).count(), 2u);
      }
    }
}

TEST_F(Svd, TheThresholdDecidesByTheTable) {
  const Outcome run = svd({set_, "-t", "0.05", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  const auto report = run.json();
  const std::vector<double> values = report["singular_values"], errors = report["errors"];
  const auto kept = report["kept"].get<std::size_t>();

  double whole = 0, sum = 0;
  for (const double value : values)
    whole += value;
  for (std::size_t i = 0; i < kept; ++i)
    sum += values[i];
  EXPECT_EQ(values.size(), total);
  EXPECT_NEAR(errors[kept - 1], 1 - sum / whole, 1e-12);
  EXPECT_LE(errors[kept - 1], 0.05);
  EXPECT_GT(errors[kept - 2], 0.05);
}

TEST_F(Svd, TheMemoryChoosesStorageAndSolver) {
  const auto small = svd({set_, "--memory", "1k", "--json"}).json();
  const auto large = svd({set_, "--memory", "1M", "--json"}).json();

  EXPECT_EQ(small["storage"], "out of core");
  EXPECT_EQ(small["method"], "arpack");
  EXPECT_GT(small["products"].get<int>(), 0);
  EXPECT_EQ(large["storage"], "in core");
  EXPECT_EQ(large["method"], "lapack");
  EXPECT_EQ(large["vectors"], total);
  EXPECT_EQ(large["length"], length);
}

TEST_F(Svd, WithoutOutputsTheValuesGoToStandardOutput) {
  const Outcome run = svd({set_});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(apptest::firstLine(run.out), "number,singular_value,error,kept");
  EXPECT_EQ(numbersOf(run.out).size(), total);
}

TEST_F(Svd, AllVectorsOfTheRestartedSolverAreCompleted) {
  const Outcome run = svd({write("id.csv", "3,0,0\n0,2,0\n0,0,1\n0,0,0\n"), "--method", "arpack",
                           "-k", "3", "-o", path("basis"), "--json"});

  ASSERT_EQ(run.code, 0) << run.err;
  const std::vector<double> values = run.json()["singular_values"];
  ASSERT_EQ(values.size(), 3u);
  EXPECT_NEAR(values[2], 1, 1e-12);
  EXPECT_LE(departure(vectorsOf(read("basis"))), 1e-12);
}

TEST_F(Svd, InPlaceTurnsASetFileIntoItsBasis) {
  for (const std::string method : {"lapack", "arpack"}) {
    const std::string file = write("in.set", setFile(vectors_));
    const Outcome run = svd({file, "--in-place", "--method", method, "-k", "2", "--coefficients",
                             path("c.csv"), "--values", path("v.csv"), "-f"});

    ASSERT_EQ(run.code, 0) << run.err;
    const Vectors basis = vectorsOf(read("in.set"));
    EXPECT_EQ(basis.count(), 2u);
    EXPECT_EQ(basis.length(), length);
    EXPECT_LE(departure(basis), 1e-12);
    EXPECT_LE(missing(vectors_, basis, numbersOf(read("c.csv"))), 0.05); // the third direction
  }
}

TEST_F(Svd, InPlaceLeavesTheVectorsAloneWhenTooFewValuesConverge) {
  // One value far above the others, which are nearly equal: one converges, three do not.
  constexpr std::size_t n = 20;
  Vectors clustered;
  for (std::size_t j = 0; j < n; ++j) {
    clustered.columns.emplace_back(n);
    clustered.columns[j][j] = j == 0 ? 10 : 1 + 1e-5 * static_cast<double>(j);
  }
  const std::string file = write("in.set", setFile(clustered));

  const Outcome run = svd({file, "--in-place", "--method", "arpack", "-k", "3", "--largest", "3",
                           "--coefficients", path("c.csv")});

  EXPECT_EQ(run.code, numerical);
  EXPECT_THAT(run.err, HasSubstr("only 1 of 3 values converged"));
  EXPECT_EQ(read("in.set"), setFile(clustered));
  EXPECT_FALSE(exists("c.csv"));
}

TEST_F(Svd, InPlaceLeavesVectorsThatAreNotFiniteAlone) {
  Vectors broken = vectors_;
  broken.columns[4][7] = std::numeric_limits<double>::quiet_NaN();
  for (const std::string method : {"lapack", "arpack"}) {
    const std::string file = write("in.set", setFile(broken));
    const Outcome run = svd({file, "--in-place", "--method", method, "-k", "2"});

    EXPECT_EQ(run.code, badInput);
    EXPECT_THAT(run.err, HasSubstr("vector 5 holds a value that is not a finite number"));
    EXPECT_EQ(read("in.set"), setFile(broken)) << method;
  }
}

TEST_F(Svd, InPlaceWritesTheOtherOutputsFirst) {
  for (const char* option : {"--coefficients", "--values", "--plot"})
    for (const std::string method : {"lapack", "arpack"}) {
      const std::string file = write("in.set", setFile(vectors_));
      const Outcome run =
          svd({file, "--in-place", "--method", method, "-k", "2", option, "/dev/full"});

      EXPECT_EQ(run.code, io) << option << run.err;
      if (method == "arpack") {
        EXPECT_EQ(read("in.set"), setFile(vectors_));
        EXPECT_THAT(run.err, HasSubstr("the vectors are unchanged"));
      } else { // used up by then; head and length still tell of all left vectors
        const Vectors left = vectorsOf(read("in.set"));
        EXPECT_EQ(left.count(), total);
        EXPECT_LE(departure(left), 1e-12);
        EXPECT_THAT(run.err, HasSubstr("the vectors are overwritten"));
      }
    }
}

TEST_F(Svd, AnInterruptedRunInPlaceTellsWhatBecameOfTheVectors) {
  const Vectors large = randomVectors(200, 10000);
  const std::string bytes = setFile(large), file = write("in.set", bytes);
  Around around;
  around.meanwhile = [&](pid_t child) { // the first Householder vector has been stored
    constexpr std::size_t head = 4096;
    std::string now(head, '\0');
    for (int tries = 0; tries < 5000; ++tries) {
      std::ifstream(file, std::ios::binary).read(now.data(), head);
      if (bytes.compare(0, head, now) != 0) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(child, SIGINT);
  };
  const Outcome run =
      svd({file, "--in-place", "--method", "lapack", "-k", "4", "--coefficients", path("c.csv")},
          around);

  if (run.code != 0) { // 0: too fast to be caught
    EXPECT_EQ(run.code, interrupted) << run.err;
    EXPECT_THAT(run.err, HasSubstr("all was finished, as the vectors were overwritten already"));
    EXPECT_THAT(run.err, ::testing::Not(HasSubstr("nothing was written")));
  }
  const Vectors basis = vectorsOf(read("in.set"));
  EXPECT_EQ(basis.count(), 4u);
  EXPECT_LE(departure(basis), 1e-12);
  EXPECT_EQ(numbersOf(read("c.csv")).size(), large.count());
}

TEST_F(Svd, InPlaceTellsAFullDiskBeforeItFillsHoles) {
  const std::filesystem::path memory = "/dev/shm";
  struct statfs info {};
  constexpr unsigned tmpfs = 0x01021994;
  if (statfs(memory.c_str(), &info) != 0 || static_cast<unsigned>(info.f_type) != tmpfs ||
      info.f_blocks == 0 || access(memory.c_str(), W_OK) != 0)
    GTEST_SKIP() << "needs a file system of known size that nobody fills by this";
  const std::filesystem::path file = memory / ("zarel-svd-" + std::to_string(getpid()) + ".set");
  // Holes larger than the whole file system, which it refuses at once.
  constexpr int vectors = 1000;
  const auto size = static_cast<double>(info.f_blocks) * static_cast<double>(info.f_bsize);
  const auto rows = static_cast<std::int64_t>(1.5 * size / (vectors * sizeof(double)));
  ASSERT_LT(rows, std::numeric_limits<int>::max());
  std::ofstream(file, std::ios::binary)
      << apptest::bytesOf<std::int32_t>({vectors, static_cast<std::int32_t>(rows)});
  std::filesystem::resize_file(file,
                               8 + static_cast<std::uintmax_t>(rows) * vectors * sizeof(double));

  const Outcome run = svd({file.string(), "--in-place", "-k", "2"});
  std::filesystem::remove(file);

  EXPECT_EQ(run.code, io) << run.err;
  EXPECT_THAT(run.err, HasSubstr("No space left"));
}

TEST_F(Svd, NoTwoOutputsAreOneFile) {
  const std::string roundabout = (folder_ / "." / "c.csv").string();
  for (const Words& words :
       std::vector<Words>{{"--values", path("c.csv"), "--coefficients", path("c.csv")},
                          {"--values", path("c.csv"), "--plot", roundabout},
                          {"-o", path("c.csv"), "--plot", path("c.csv"), "--force"}}) {
    Words all{set_};
    all.insert(all.end(), words.begin(), words.end());
    const Outcome run = svd(all);

    EXPECT_EQ(run.code, usage) << ::testing::PrintToString(words);
    EXPECT_THAT(run.err, HasSubstr("are one file"));
    EXPECT_FALSE(exists("c.csv"));
  }
  std::filesystem::create_symlink(write("c.csv", "old"), path("link.csv"));
  EXPECT_EQ(svd({set_, "-f", "-o", path("link.csv"), "--values", path("c.csv")}).code, usage);
  EXPECT_EQ(read("c.csv"), "old");
  EXPECT_EQ(svd({set_, "--values", "/dev/null", "--coefficients", "/dev/null"}).code, 0);
}

TEST_F(Svd, TheReportTellsWhetherValuesAreMissing) {
  const auto all = svd({set_, "--json"}).json();
  const auto few = svd({set_, "--json", "--largest", "2"}).json();

  EXPECT_EQ(all["partial"], false);
  EXPECT_EQ(few["partial"], true);
  EXPECT_EQ(few["method"], "arpack"); // which alone looks for some
  EXPECT_EQ(few["singular_values"].size(), 2u);
  const Outcome wide = svd({write("wide.csv", "1,2,3\n4,5,7\n"), "--json"});
  EXPECT_EQ(wide.json()["partial"], false); // two is all that there are
  EXPECT_THAT(wide.err, ::testing::Not(HasSubstr("looked for")));
}

TEST_F(Svd, ASetOfZerosIsToldOf) {
  const std::string zeros = write("zeros.csv", "0,0,0\n0,0,0\n0,0,0\n0,0,0\n");
  const Outcome direct = svd({zeros, "-k", "2", "-o", path("basis"), "--json"});

  EXPECT_EQ(direct.code, 0);
  EXPECT_THAT(direct.err, HasSubstr("warning: all vectors are zero"));
  EXPECT_EQ(direct.json()["errors"], nlohmann::json({0.0, 0.0, 0.0})); // numbers, not null
  EXPECT_LE(departure(vectorsOf(read("basis"))), 1e-12);
  const Outcome restarted = svd({zeros, "--method", "arpack"});
  EXPECT_EQ(restarted.code, numerical);
  EXPECT_THAT(restarted.err, HasSubstr("all vectors are zero"));
}

TEST_F(Svd, TheInputIsNeverAnOutput) {
  for (const char* option : {"-o", "--values", "--coefficients", "--plot"}) {
    const Outcome run = svd({set_, option, set_, "--force"});
    EXPECT_EQ(run.code, usage);
    EXPECT_THAT(run.err, HasSubstr("never overwritten"));
  }
  EXPECT_EQ(read("vectors.set"), setFile(vectors_));
}

TEST_F(Svd, OutputsAreNotOverwrittenUnasked) {
  write("basis", "old");

  EXPECT_EQ(svd({set_, "-o", path("basis")}).code, usage);
  EXPECT_EQ(read("basis"), "old");
  EXPECT_EQ(svd({set_, "-o", path("basis"), "-f"}).code, 0);
}

TEST_F(Svd, NamesTheFirstVectorThatHoldsNoFiniteNumber) {
  Vectors broken = vectors_;
  broken.columns[4][7] = std::numeric_limits<double>::quiet_NaN();
  broken.columns[6][0] = std::numeric_limits<double>::infinity();
  const std::string file = write("broken.set", setFile(broken));
  for (const std::string method : {"lapack", "arpack"}) {
    const Outcome run = svd({file, "--method", method, "-o", path("basis")});

    EXPECT_EQ(run.code, badInput);
    EXPECT_THAT(run.err, HasSubstr("vector 5 holds a value that is not a finite number"));
    EXPECT_THAT(run.err, ::testing::Not(HasSubstr("***")));
    EXPECT_FALSE(exists("basis"));
  }
}

TEST_F(Svd, WishesThatDoNotFitAreUsageErrors) {
  const std::string wideOne = write("wide.csv", "1,2,3\n4,5,7\n");
  for (const Words& words : std::vector<Words>{{set_, "-k", "10"},
                                               {set_, "-k", "0"},
                                               {set_, "-k", "2", "-t", "0.1"},
                                               {set_, "-t", "-0.1"},
                                               {set_, "--memory", "much"},
                                               {set_, "--memory", "0"},
                                               {set_, "--method", "magic"},
                                               {set_, "--rows"},
                                               {set_, "--format", "set", "--vectors", "9"},
                                               {set_, "--values", "-", "--coefficients", "-"},
                                               {set_, "--json", "-o", "-"},
                                               {set_, "--in-place", "-o", path("basis")},
                                               {set_, "--method", "lapack", "--largest", "3"},
                                               {set_, "-k", "4", "--largest", "3"},
                                               {wideOne, "--method", "arpack"},
                                               {wideOne, "--in-place"}}) {
    const Outcome run = svd(words);
    EXPECT_EQ(run.code, usage) << ::testing::PrintToString(words) << run.err;
  }
}

TEST_F(Svd, BadFilesAreBadInput) {
  EXPECT_EQ(svd({write("short", "1234")}).code, badInput);
  EXPECT_EQ(svd({write("cut", setFile(vectors_).substr(0, 100))}).code, badInput);
  EXPECT_EQ(svd({write("x.csv", "a,b\n1,2\n3,x\n")}).code, badInput);
  EXPECT_EQ(svd({path("nothing")}).code, io);
}

TEST_F(Svd, AReadOnlyInputIsEnough) {
  std::filesystem::permissions(set_, std::filesystem::perms::owner_read);

  EXPECT_EQ(svd({set_, "--memory", "1k", "-o", path("basis"), "-k", "2"}).code, 0);
}

TEST_F(Svd, AFullDiskIsToldAndLeavesNoOutput) {
  const Outcome run = svd({set_, "-o", "/dev/full"});

  EXPECT_EQ(run.code, io);
  EXPECT_THAT(run.err, HasSubstr("No space left"));
}

TEST_F(Svd, AKilledRunLeavesNoPartialOutput) {
  // Large enough to be killed in the middle, whatever the machine.
  const std::string file = write("large.set", setFile(randomVectors(120, 20000)));
  const auto before = names();
  for (const int signal : {SIGKILL, SIGINT})
    for (const std::string method : {"lapack", "arpack"}) {
      Around around;
      around.meanwhile = [signal](pid_t child) {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        kill(child, signal);
      };
      const Outcome run = svd({file, "--method", method, "-o", path("basis"), "--coefficients",
                               path("c.csv"), "--values", path("v.csv")},
                              around);

      if (run.code == 0) { // too fast to be caught
        for (const char* name : {"basis", "c.csv", "v.csv"})
          std::filesystem::remove(path(name));
        continue;
      }
      EXPECT_TRUE(run.signal == signal || run.code == interrupted) << run.code << run.err;
      EXPECT_EQ(names(), before);
    }
}

} // namespace
