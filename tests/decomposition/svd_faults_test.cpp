// Decompositions on which memory or the system fails, and of sets over files of other programs.
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <type_traits>

#include <dirent.h>

#include "decomposition/sets.h"
#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"

namespace {

using namespace sets;
using Set = C_VSTRUCT<double>;
using Matrix = C_MatMGe<double>;

int filesIn(const std::string& directory) {
  int count = 0;
  if (DIR* const list = ::opendir(directory.c_str())) {
    while (const dirent* const entry = ::readdir(list))
      if (entry->d_name[0] != '.') ++count;
    ::closedir(list);
  }
  return count;
}

/** A place for temporary files, in which nothing may stay, as no descriptor may stay open. */
class SvdFaults : public ::testing::Test {
protected:
  ~SvdFaults() override {
    EXPECT_EQ(filesIn(directory.path()), 0) << "litter";
    EXPECT_EQ(filesIn("/proc/self/fd"), before) << "descriptors";
  }

  /** Every system call of a run fails in turn; a run that reports success must be one. */
  template <class Algorithm>
  void failSystemCalls() {
    Matrix a = withSpectrum<double>(12, {4, 2, 1});
    long failures = 0, unlinks = 0;
    support::capture([&] {
      failures = support::forEachFailingCall([&] {
        Set set(onFile, 3, 12, nullptr);
        fillFrom(set, a);
        Algorithm svd;
        try {
          EXPECT_EQ(svd.Run(set, 0, -1), 0);
        } catch (const C_ZarelException& e) {
          expectTold(e, support::FailingCall::failed());
          return expectNothingLeft(svd, set, a);
        }
        expectSuccess(svd, set);
      });
      unlinks = filesIn(directory.path());
      removeWhatCouldNotBe();
    });
    EXPECT_GT(failures, 0);
    EXPECT_LE(unlinks, 2);
  }

  /** The code says what could not be done, the reason why: 31, as for every errno without one of
   * its own, or nothing where a file could not be taken for mapping. */
  static void expectTold(const C_ZarelException& e, const std::string& call) {
    const std::map<std::string, std::set<int>> codes{{"open", {19}},      {"mmap", {13}},
                                                     {"munmap", {14}},    {"duplicate", {13}},
                                                     {"fstat", {13, 24}}, {"fallocate", {13, 24}}};
    const auto expected = codes.find(call);
    ASSERT_NE(expected, codes.end()) << call;
    EXPECT_EQ(expected->second.count(e.getExceptionCode()), 1u)
        << call << ' ' << e.getExceptionCode();
    const bool notTaken = e.getExceptionCode() == 13 && (call == "duplicate" || call == "fstat");
    if (!notTaken || e.getReasonCode() != 0) {
      EXPECT_EQ(e.getReasonCode(), 31) << call;
    }
  }

  static void expectSuccess(C_AlgoSvd<double>& svd, Set& set) {
    EXPECT_EQ(svd.GetNbRetained(), 3);
    Matrix u = matrixOf(set);
    EXPECT_LE(departure(u), 1e-12);
  }

  /** No results stay, and both objects serve a run on the same vectors. */
  static void expectNothingLeft(C_AlgoSvd<double>& svd, Set& set, Matrix& a) {
    SCOPED_TRACE(support::FailingCall::failed());
    EXPECT_EQ(svd.GetNbRetained(), 0);
    EXPECT_EQ(set.getDim(), 3);
    fillFrom(set, a);
    EXPECT_EQ(svd.Run(set, 0, -1), 0);
    expectSuccess(svd, set);
  }

  /** The attempts whose `unlink` failed, one for each set that has a file, leave that file. */
  void removeWhatCouldNotBe() {
    for (const auto& entry : std::filesystem::directory_iterator(directory.path()))
      std::filesystem::remove(entry.path());
  }

  support::TempDirectory directory;
  support::Environment place{"TMPDIR", directory.path().c_str()};
  int before = filesIn("/proc/self/fd");
};

/** The direct solver works in place; the restarted one changes nothing before it cuts the set. */
template <class Algorithm>
constexpr bool changesNothingBeforeTheCut = std::is_same_v<Algorithm, C_AlgoSvdArpack>;

/** Runs on four vectors, of which the threshold keeps two, with one thing going wrong. */
template <class Algorithm>
class OneRun {
public:
  OneRun(int mode, Matrix& a) : mode_(mode), a_(a), set_(mode, 4, 12, nullptr) {
    fillFrom(set_, a);
    set_.UnmapAllBlocks();
    svd_.SetThresholdValue(0.25);
  }

  void run() {
    try {
      failed_ = svd_.Run(set_, 0, -1) != 0;
    } catch (const std::bad_alloc&) {
      failed_ = true;
    } catch (const C_ZarelException&) {
      failed_ = true;
    }
  }

  /** Either all is well, or nothing is left of the run and both objects serve another one. */
  void check() {
    if (failed_) {
      EXPECT_EQ(svd_.GetNbRetained(), 0);
      if (mode_ == onFile) expectNothingMapped();
      if (set_.getDim() != 2) expectUncut();
      set_.Allocate(mode_, 4, 12, nullptr);
      fillFrom(set_, a_);
      EXPECT_EQ(svd_.Run(set_, 0, -1), 0);
    }
    EXPECT_EQ(svd_.GetNbRetained(), 2);
    Matrix u = matrixOf(set_);
    EXPECT_EQ(u.NbCol(), 2);
    EXPECT_LE(departure(u), 1e-12);
    EXPECT_LE(reconstructionError<double>(svd_, u, a_), 1.01);
  }

private:
  void expectNothingMapped() {
    EXPECT_EQ(set_.Adr(), nullptr);
    for (unsigned j = 0; j < static_cast<unsigned>(set_.getDim()); ++j)
      EXPECT_FALSE(set_.isMapped(j)) << j;
  }
  void expectUncut() {
    ASSERT_EQ(set_.getDim(), 4);
    Matrix after = matrixOf(set_);
    if (changesNothingBeforeTheCut<Algorithm>) {
      EXPECT_EQ(largestDifference(after, a_), 0);
    }
  }

  int mode_;
  Matrix& a_;
  Set set_;
  Algorithm svd_;
  bool failed_ = false;
};

/** Makes the n-th event of a run fail, for each n, and of nothing but the run. */
template <class Algorithm, class Failing>
long failEachIn(int mode) {
  Matrix a = withSpectrum<double>(12, {4, 2, 1, 0.5});
  long n = 0;
  bool happened = true;
  while (happened) {
    OneRun<Algorithm> one(mode, a);
    ++n;
    support::capture([&] {
      const Failing failing(n);
      one.run();
      happened = Failing::happened();
    });
    SCOPED_TRACE("number " + std::to_string(n) + " in mode " + std::to_string(mode));
    one.check();
  }
  return n - 1;
}

TEST_F(SvdFaults, AnyAllocationOfARunMayFail) {
  for (const int mode : {inCore, onFile}) {
    EXPECT_GT((failEachIn<C_AlgoSvdLapack<double>, support::FailingAllocation>(mode)), 5);
    EXPECT_GT((failEachIn<C_AlgoSvdArpack, support::FailingAllocation>(mode)), 10);
  }
}

/** What a run made room for stays for the next one of the same sizes, unless another came between.
 */
TEST_F(SvdFaults, ARunThatFoundNoRoomIsForgotten) {
  Matrix small = withSpectrum<double>(12, {4, 2, 1}),
         large = withSpectrum<double>(30, graded(9, 1, 0.5));
  long n = 0;
  bool happened = true;
  while (happened) {
    Matrix first = small, second = large, third = small;
    C_AlgoSvdLapack<double> svd;
    svd.SetThresholdValue(-1);
    ASSERT_EQ(svd.Run(first, 0), 0);
    {
      const support::FailingAllocation failing(++n);
      try {
        svd.Run(second, 0);
      } catch (const std::bad_alloc&) {
      } catch (const C_ZarelException&) {
      }
      happened = support::FailingAllocation::happened();
    }
    ASSERT_EQ(svd.Run(third, 0), 0);
    EXPECT_EQ(valuesOf<double>(svd).size(), 3u) << n;
    EXPECT_LE(reconstructionError<double>(svd, third, small), 1e-13) << n;
  }
  EXPECT_GT(n, 3);
}

TEST_F(SvdFaults, AnySystemCallOfARunMayFail) {
  EXPECT_EQ((failEachIn<C_AlgoSvdLapack<double>, support::FailingCall>(inCore)), 0);
  EXPECT_GT((failEachIn<C_AlgoSvdLapack<double>, support::FailingCall>(onFile)), 2);
  for (const int mode : {inCore, onFile})
    EXPECT_GT((failEachIn<C_AlgoSvdArpack, support::FailingCall>(mode)), 5);
  removeWhatCouldNotBe(); // the files whose unlink was made to fail
}

TEST_F(SvdFaults, SystemFailsInTheDirectSolver) {
  failSystemCalls<C_AlgoSvdLapack<double>>();
}

TEST_F(SvdFaults, SystemFailsInTheRestartedSolver) {
  failSystemCalls<C_AlgoSvdArpack>();
}

TEST_F(SvdFaults, AFullDiskUnderTheBasisLeavesTheSetAsItWas) {
  Matrix a = withSpectrum<double>(12, {4, 2, 1});
  Set set(inCore, 3, 12, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack svd;
  int code = 0, reason = 0;

  support::capture([&] {
    const support::FailingCall full(1, "fallocate", ENOSPC);
    try {
      svd.Run(set, 0, -1);
    } catch (const C_ZarelException& e) {
      code = e.getExceptionCode();
      reason = e.getReasonCode();
    }
  });

  EXPECT_EQ(code, 24);  // the data file could not take its size
  EXPECT_EQ(reason, 5); // no space
  EXPECT_EQ(svd.GetNbRetained(), 0);
  Matrix after = matrixOf(set);
  EXPECT_EQ(largestDifference(after, a), 0);
}

/** A set file with a gap of 16 bytes between its vectors, and the vectors. */
class SvdFiles : public ::testing::Test {
protected:
  void SetUp() override { store(raw(4, 30), raw(1e99, 1e99)); }

  /** The vectors behind `head`, with `between` in their gaps. */
  void store(const std::string& head, const std::string& between) {
    std::string bytes = head;
    for (int j = 0; j < 4; ++j) {
      for (int i = 0; i < 30; ++i)
        bytes += raw(a(i, j));
      if (j < 3) bytes += between;
    }
    if (file != nullptr) std::fclose(file);
    support::writeBytes(name, bytes);
    file = std::fopen(name.c_str(), "r+b");
    ASSERT_NE(file, nullptr);
  }
  ~SvdFiles() override {
    if (file != nullptr) std::fclose(file);
  }

  Matrix a = withSpectrum<double>(30, {4, 2, 1, 0.5});
  support::TempDirectory directory;
  std::string name = directory.file("vectors");
  std::FILE* file = nullptr;
};

/** The problem as it is, with a basis that goes nowhere: the file stays. */
class Kept : public C_ItfSvdArpackCVstruct {
public:
  using C_ItfSvdArpackCVstruct::C_ItfSvdArpackCVstruct;
  int SetNewA(Set&) override { return 0; }
};

/** Finds the two values of the file, and leaves the set as it is. */
void expectValuesFound(Set& set) {
  Kept problem(set);
  C_AlgoSvdArpack svd;
  int nev = 2;
  svd.SetNbEigenValuesToFind(nev);

  ASSERT_EQ(svd.Run(static_cast<C_ItfAlgorithm&>(problem)), 0);

  const std::vector<double> s = valuesOf<double>(svd);
  EXPECT_NEAR(s[0], 4, 1e-12);
  EXPECT_NEAR(s[1], 2, 1e-12);
}

TEST_F(SvdFiles, TheRestartedSolverTakesGapsAndVectorsThatAreNeverMapped) {
  for (const bool mapped : {true, false}) {
    std::rewind(file);
    Set set;
    set.Read(file, 2, mapped, 0, 0, 16);
    expectValuesFound(set);
  }
}

TEST_F(SvdFiles, TheRestartedSolverTakesGapsOfAnyBytes) {
  store(raw(4, 30), "a few bytes!"); // not the size of a value, nor twice that
  Set set;
  set.Read(file, 2, true, 0, 0, 12);
  expectValuesFound(set);
}

TEST_F(SvdFiles, TheRestartedSolverNamesTheVectorAtFaultInFilesToo) {
  std::rewind(file);
  std::fseek(file, 8 + 8 * (30 + 2 + 7), SEEK_SET); // the head, a vector, a gap, seven values
  const double none = std::nan("");
  std::fwrite(&none, sizeof none, 1, file);
  for (const bool mapped : {true, false}) {
    std::rewind(file);
    Set set;
    set.Read(file, 2, mapped, 0, 0, 16);
    C_AlgoSvdArpack svd;

    const auto said = support::capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });

    EXPECT_NE(said.err.find("vector 1 holds a value that is not a finite number"),
              std::string::npos)
        << said.err;
    EXPECT_EQ(svd.GetNbRetained(), 0);
    EXPECT_EQ(set.Adr(), nullptr); // no view stays
  }
}

TEST_F(SvdFiles, TheDirectSolverRefusesGapsAndVectorsThatAreNeverMapped) {
  const std::string before = support::bytesOf(name);
  for (const bool mapped : {true, false}) {
    std::rewind(file);
    Set set;
    set.Read(file, 2, mapped, 0, 0, 16);
    C_AlgoSvdLapack<double> svd;

    support::capture([&] { EXPECT_EQ(svd.Run(set, 0, -1), -1); });
  }
  EXPECT_EQ(support::bytesOf(name), before);
}

} // namespace
