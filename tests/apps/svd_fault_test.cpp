// zarel svd when the system refuses what it asks for: calls that fail, disks that are full, memory
// that is far smaller than the vectors, and a sudden end.
#include "svd_support.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <thread>

#include "support/sanitizers.h"

using apptest::Around;
using apptest::departure;
using apptest::Outcome;
using apptest::Vectors;
using apptest::vectorsOf;
using apptest::Words;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr int failure = 1, io = 4;

std::function<void()> limited(int resource, rlim_t bytes) {
  return [resource, bytes] {
    const rlimit limit{bytes, bytes};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
  };
}

class SvdFaults : public apptest::SvdProgram {
protected:
  SvdFaults() { std::filesystem::create_directory(path("tmp")); }

  /** A run that keeps its temporary files in the folder tmp. */
  Outcome temporary(const Words& words, Around around = {}) const {
    around.environment.push_back("TMPDIR=" + path("tmp"));
    return svd(words, around);
  }
  bool nothingTemporary() const { return std::filesystem::is_empty(path("tmp")); }

  /** Row after row, so that the vectors have to be copied. */
  std::string rowsOf(const Vectors& vectors) const {
    return write("rows.raw", apptest::bytesOf(vectors.byRow()));
  }
  /** A set of 600 MiB that hardly takes any disk: vector j is a multiple of direction j. */
  std::string writeLargeSet() const {
    const std::string file = write("large.set", apptest::bytesOf<std::int32_t>({count, rows}));
    std::filesystem::resize_file(file, 8 + std::uintmax_t{8} * count * rows);
    std::fstream out(file, std::ios::in | std::ios::out | std::ios::binary);
    for (std::int64_t j = 0; j < count; ++j) {
      const double value = j == 0 ? 1000 : j == 1 ? 500 : 1;
      out.seekp(8 + 8 * (j * rows + j));
      out.write(reinterpret_cast<const char*>(&value), sizeof value);
    }
    return file;
  }
  static constexpr std::int32_t count = 300, rows = 262144;

  bool usesOpenBlas() const {
    return zarel({"--version", "--json"}).json()["blas"]["name"] == "OpenBLAS";
  }
  /**
   * Calls that may fail and leave a good run: of files that were only read, of folders that are
   * synced, of the watcher's pipe, and of run-time libraries that look at the standard streams.
   */
  static Words borne() { return {"", "open", "read", "fstat", "close", "fsync of a folder"}; }
  /** Runs with each system call failing in turn; every end is a good one. */
  void failEachCall(const Words& words, const std::function<void(const Outcome&)>& afterwards);
};

void SvdFaults::failEachCall(const Words& words,
                             const std::function<void(const Outcome&)>& afterwards) {
  std::filesystem::create_directory(path("out"));
  int failed = 0;
  for (int n = 1;; ++n) {
    ASSERT_LT(n, 2000) << "the run never got through";
    Around around;
    around.environment = {std::string("LD_PRELOAD=") + ZAREL_FAILING_CALLS,
                          "ZAREL_FAILING_CALL=" + std::to_string(n),
                          "ZAREL_FAILING_MARK=" + path("mark")};
    const Outcome run = temporary(words, around);
    const std::string which = std::to_string(n) + ": " + read("mark") + "\n" + run.err;

    EXPECT_EQ(run.signal, 0) << which;
    EXPECT_THAT(run.code, ::testing::AnyOf(0, failure, io)) << which;
    if (run.code != 0) {
      EXPECT_THAT(run.err, HasSubstr("zarel: error: ")) << which;
    }
    EXPECT_TRUE(nothingTemporary()) << which;
    if (run.code == 0) {
      EXPECT_THAT(read("mark"), ::testing::AnyOfArray(borne())) << which;
    }
    afterwards(run);
    for (const auto& left : std::filesystem::directory_iterator(path("out")))
      EXPECT_NE(left.path().filename().string().front(), '.') << left.path() << which;
    std::filesystem::remove_all(path("out"));
    std::filesystem::create_directory(path("out"));
    if (!std::filesystem::remove(path("mark"))) break;
    ++failed;
  }
  EXPECT_GT(failed, 20);
}

TEST_F(SvdFaults, EveryFailingCallIsToldOrBorneAndLeavesWholeFilesOnly) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers come before all else that is preloaded";
  const std::string raw = rowsOf(vectors_);
  for (const Words& input : {Words{set_, "--method", "arpack"}, Words{set_},
                             Words{raw, "--rows", "--vectors", "9", "--memory", "1k"}}) {
    Words words = input;
    words.insert(words.end(), {"-k", "2", "-o", path("out/basis"), "--values", path("out/v.csv"),
                               "--coefficients", path("out/c.csv"), "--plot", path("out/s.svg")});
    failEachCall(words, [&](const Outcome& run) {
      if (run.code == 0) {
        EXPECT_TRUE(exists("out/s.svg") && exists("out/basis"));
      }
      if (exists("out/basis")) {
        EXPECT_LE(departure(vectorsOf(read("out/basis"))), 1e-12);
      }
      EXPECT_EQ(read("vectors.set"), setFile(vectors_));
    });
  }
}

TEST_F(SvdFaults, EveryFailingCallInPlaceIsToldOrBorne) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers come before all else that is preloaded";
  write("in.set", setFile(vectors_));
  failEachCall({path("in.set"), "--in-place", "--force", "--method", "arpack", "-k", "2",
                "--values", path("out/v.csv")},
               [&](const Outcome& run) {
                 const std::string now = read("in.set");
                 if (run.code == 0) {
                   EXPECT_EQ(vectorsOf(now).count(), 2u);
                 } else if (!exists("out/v.csv")) { // stopped before the vectors were replaced
                   EXPECT_EQ(now, setFile(vectors_)) << run.err;
                 }
                 write("in.set", setFile(vectors_));
               });
}

TEST_F(SvdFaults, AFullDiskUnderTheTemporaryFileIsTold) {
  const std::string raw = rowsOf(apptest::mixture(100, 1000));
  const Words words{raw, "--rows", "--vectors", "100", "--memory", "1k", "-o", path("basis")};
  Around small;
  small.child = limited(RLIMIT_FSIZE, 1 << 16);
  const Outcome limit = temporary(words, small);
  const bool mounted = mount("tmpfs", path("tmp").c_str(), "tmpfs", 0, "size=256k") == 0;
  const Outcome disk = mounted ? temporary(words) : limit;
  const bool clean = nothingTemporary();
  if (mounted) umount(path("tmp").c_str());

  for (const Outcome& run : {limit, disk}) {
    EXPECT_EQ(run.code, io) << run.err;
    EXPECT_THAT(run.err, HasSubstr("zarel: error: cannot put 781 KiB of vectors on a file in \"" +
                                   path("tmp")));
    EXPECT_THAT(run.err, HasSubstr("TMPDIR names another folder"));
    EXPECT_THAT(run.err, Not(HasSubstr("***")));
    EXPECT_THAT(run.err, Not(HasSubstr("()"))) << "the library's stack of calls";
  }
  EXPECT_THAT(limit.err, HasSubstr("File too large"));
  if (mounted) {
    EXPECT_THAT(disk.err, HasSubstr("No space left on device"));
  }
  EXPECT_TRUE(clean);
  EXPECT_FALSE(exists("basis"));
}

/** Whether a process holds a file open that lay in this folder and has no name any more. */
bool holdsNameless(pid_t process, const std::string& folder) {
  std::error_code ignored;
  const std::filesystem::path open = "/proc/" + std::to_string(process) + "/fd";
  for (const auto& entry : std::filesystem::directory_iterator(open, ignored)) {
    const std::string file = std::filesystem::read_symlink(entry.path(), ignored).string();
    if (file.rfind(folder, 0) == 0 && file.find("(deleted)") != std::string::npos) return true;
  }
  return false;
}

TEST_F(SvdFaults, AKilledRunLeavesNoTemporaryFile) {
  const std::string raw = rowsOf(apptest::mixture(100, 40000));
  bool seen = false;
  Around around;
  around.meanwhile = [&](pid_t child) {
    for (int tries = 0; tries < 3000 && !seen; ++tries) {
      seen = holdsNameless(child, path("tmp"));
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(child, SIGKILL);
  };
  const Outcome run =
      temporary({raw, "--rows", "--vectors", "100", "--memory", "1k", "-o", path("basis")}, around);

  EXPECT_TRUE(seen) << run.err;
  EXPECT_EQ(run.signal, SIGKILL);
  EXPECT_TRUE(nothingTemporary());
  EXPECT_FALSE(exists("basis"));
}

TEST_F(SvdFaults, FarLessMemoryThanTheVectorsTakeIsEnough) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers take more memory than this leaves";
  const std::string set = writeLargeSet();
  Around small; // of which the BLAS takes 128 MiB
  small.child = limited(RLIMIT_DATA, rlim_t{176} << 20);

  const Outcome inCore = svd({set, "--memory", "1G", "-k", "2"}, small);
  const Outcome onFile = svd({set, "--memory", "32M", "-k", "2", "-o", path("basis")}, small);

  EXPECT_EQ(inCore.code, failure); // so the limit is one
  EXPECT_THAT(inCore.err, HasSubstr("zarel: error: out of memory\n       --memory with less"));
  ASSERT_EQ(onFile.code, 0) << onFile.err;
  const auto values = apptest::numbersOf(onFile.out);
  ASSERT_GE(values.size(), 3u);
  EXPECT_NEAR(values[0][1], 1000, 1e-9);
  EXPECT_NEAR(values[1][1], 500, 1e-9);
  const Vectors basis = vectorsOf(read("basis"));
  EXPECT_NEAR(std::fabs(basis.columns[0][0]), 1, 1e-12);
  EXPECT_NEAR(std::fabs(basis.columns[1][1]), 1, 1e-12);
}

TEST_F(SvdFaults, AViewThatTheAddressesDoNotHoldIsTold) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers reserve more address space than this leaves";
  Around small;
  small.child = limited(RLIMIT_AS, rlim_t{400} << 20);
  const Outcome run = svd({writeLargeSet(), "--memory", "32M", "-k", "2"}, small);

  EXPECT_EQ(run.code, io);
  EXPECT_THAT(run.err, HasSubstr("large.set\": Cannot allocate memory\n"));
  EXPECT_THAT(run.err, HasSubstr("ulimit -v"));
}

TEST_F(SvdFaults, WantOfRoomForTheBlasIsToldAndNoHang) {
  if (support::addressSanitizer || support::threadSanitizer)
    GTEST_SKIP() << "sanitizers take more memory than this leaves";
  if (!usesOpenBlas()) GTEST_SKIP() << "another BLAS";
  Around small;
  small.child = limited(RLIMIT_DATA, rlim_t{96} << 20);
  const std::string model = fitModel(), points = writePoints(3);
  for (const Words& words :
       {Words{"svd", set_}, Words{"fit", path("samples.csv"), "-i", "2", "-o", path("m")},
        Words{"predict", model, points, "--error"}}) {
    const Outcome run = zarel(words, small);
    EXPECT_EQ(run.code, failure) << words[0];
    EXPECT_THAT(run.err, HasSubstr("out of memory: the BLAS needs 128 MiB")) << words[0];
  }
}

} // namespace
