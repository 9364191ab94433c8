// Decompositions on which memory or the system fails, and of sets over files of other programs.
#include <filesystem>
#include <map>
#include <set>

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
  void SetUp() override {
    std::string bytes = raw(4, 30);
    for (int j = 0; j < 4; ++j) {
      for (int i = 0; i < 30; ++i)
        bytes += raw(a(i, j));
      if (j < 3) bytes += raw(1e99, 1e99);
    }
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

TEST_F(SvdFiles, TheRestartedSolverTakesGapsAndVectorsThatAreNeverMapped) {
  for (const bool mapped : {true, false}) {
    std::rewind(file);
    Set set;
    set.Read(file, 2, mapped, 0, 0, 16);
    Kept problem(set);
    C_AlgoSvdArpack svd;
    int nev = 2;
    svd.SetNbEigenValuesToFind(nev);

    ASSERT_EQ(svd.Run(static_cast<C_ItfAlgorithm&>(problem)), 0);

    const std::vector<double> s = valuesOf<double>(svd);
    EXPECT_NEAR(s[0], 4, 1e-12);
    EXPECT_NEAR(s[1], 2, 1e-12);
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
