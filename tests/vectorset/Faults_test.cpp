// Sets on which memory, the disk and the system fail.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <set>
#include <sys/resource.h>

#include <zarel/lm_bitvec.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "support/FrameProbe.h"
#include "vectorset/support.h"

using namespace vectorset;

namespace {

using Set = Zarel::C_VSTRUCT<double>;

int filesIn(const std::string& directory) {
  int count = 0;
  if (DIR* const list = ::opendir(directory.c_str())) {
    while (const dirent* const entry = ::readdir(list))
      if (entry->d_name[0] != '.') ++count;
    ::closedir(list);
  }
  return count;
}

int openDescriptors() {
  return filesIn("/proc/self/fd");
}

/** A place for temporary files, and what is left in it and open behind every attempt. */
class Faults : public ::testing::Test {
protected:
  ~Faults() override {
    EXPECT_EQ(filesIn(directory.path()), 0) << "litter";
    EXPECT_EQ(openDescriptors(), before) << "descriptors";
  }

  /** Runs an attempt with every allocation failing in turn. */
  template <class Attempt>
  void withoutMemory(Attempt attempt) {
    support::capture([&] { EXPECT_GT(support::forEachFailingAllocation(attempt), 0); });
  }
  /** Runs an attempt with every system call failing in turn. */
  template <class Attempt>
  void withoutSystem(Attempt attempt) {
    support::capture([&] { EXPECT_GT(support::forEachFailingCall(attempt), 0); });
  }

  support::TempDirectory directory;
  support::Environment place{"TMPDIR", directory.path().c_str()};
  int before = openDescriptors();
};

/** Rows 1 and 3 of six. */
std::unique_ptr<BVEC, void (*)(BVEC*)> oddRows() {
  int error = 0;
  BVEC* const rows = LM_bv_get_codage("rows", 0, 6, 0, "rows", &error);
  LM_bv_set_on(rows, 1);
  LM_bv_set_on(rows, 3);
  return {rows, [](BVEC* b) { LM_bv_free(b); }};
}

/** The call that failed, where that has a name. */
template <class Failing>
std::string nameOf() {
  if constexpr (std::is_same_v<Failing, support::FailingCall>) return Failing::failed();
  return "allocation";
}

/** Everything that changes storage, on one set. */
void live(int mode) {
  Set set(mode, 3, 4, nullptr);
  fillSet<double>(set, randomDense<double>(3, 4));
  set.MapAllBlocks();
  set.Resize(5, nullptr);
  Set link(set, 1, 3, 1, 3);
  link.Zero();
  set.Resize(2, nullptr);
  set.Release(true);
}

TEST_F(Faults, MemoryFailsWhileASetLives) {
  for (const int mode : {1, 2})
    withoutMemory([&] { live(mode); });
}

TEST_F(Faults, LackOfMemoryIsToldAsSuch) {
  support::capture([&] {
    for (const int mode : {1, 2})
      for (long n = 1;; ++n) {
        const support::FailingAllocation failing(n);
        const int made = codeOf([&] { Set set(mode, 2, 3, nullptr); });
        if (!support::FailingAllocation::happened()) break;
        EXPECT_TRUE(made == 1 || made == 4) << "allocation " << n << " told as " << made;
      }
  });
}

TEST_F(Faults, LackOfMemoryLeavesASetAsItWas) {
  const auto values = randomDense<double>(3, 4);
  support::capture([&] {
    for (const int mode : {1, 2}) {
      Set set(mode, 3, 4, nullptr);
      fillSet(set, values);
      for (const int size : {6, 2}) {
        long n = 0;
        int code = 1;
        while (code == 1) {
          const support::FailingAllocation failing(++n);
          code = codeOf([&] { set.Resize(size, nullptr); });
          if (code != 1) break;
          EXPECT_EQ(set.getDim(), 3);
        }
        EXPECT_EQ(code, 0);
        EXPECT_EQ(set.getDim(), size);
        set.Resize(3, nullptr);
      }
      EXPECT_EQ(partOf(contentOf(set), 0, 2, 0, 4), partOf(values, 0, 2, 0, 4));
    }
  });
}

TEST_F(Faults, SystemFailsWhileASetLives) {
  withoutSystem([&] { live(2); });
}

TEST_F(Faults, MemoryFailsInTheNumerics) {
  for (const int mode : {1, 2})
    withoutMemory([&] {
      Set set(mode, 4, 6, nullptr);
      fillSet<double>(set, randomDense<double>(4, 6));
      C_MatMGe<double> M;
      Counts lengths;
      Vec<double> r;
      Vec<double> x(6, 1.0);
      Set copy(mode, 1, 6, nullptr);
      copy.Merge(set);
      set.MatQtQ(M);
      set.MatQ1tQ(copy, M, 2);
      set.GramSchmidt(1e-10, 0, &lengths, &r);
      set.GetRows(M, 0, -1, 0, -1);
      set.AddVector(x, 3, true, 1e-10, nullptr);
    });
}

TEST_F(Faults, SystemFailsInTheNumerics) {
  withoutSystem([&] {
    Set set(2, 4, 6, nullptr);
    fillSet<double>(set, randomDense<double>(4, 6));
    C_MatMGe<double> M;
    Vec<double> x(6, 1.0);
    Vec<double> y;
    double row[4];
    set.UnmapAllBlocks();
    set.GetRow(1, row);
    set.Mv(x, y, true, 0, -1);
    set.MatQtQ(M);
    set.GramSchmidt(1e-10, 0, nullptr, nullptr);
    set.Release(true); // which is tried again at the end
  });
}

/** What operations take and give, made before anything fails. */
struct Operands {
  std::unique_ptr<BVEC, void (*)(BVEC*)> rows = oddRows();
  C_MatMGe<double> B{4, 2};
  Vec<double> x{6, 1.0};
  Vec<double> z = vecOf<double>({1, 1, 1, 7, 1, 1});
  int mask[6] = {1, 0, 1, 1, 1, 1};
};

/** Every operation on vectors. */
void work(Set& set) {
  const auto given = [] {
    const support::Unharmed unharmed;
    return std::make_unique<Operands>();
  }();
  C_MatMGe<double> M;
  Vec<double> y;
  Counts lengths;
  Zarel::C_FInnerProd<double> ip;
  set.GetRow(1, y);
  set.GetRows(M, 1, 3, 0, -1);
  set.Extract(M, given->rows.get(), 0, -1);
  set.ZeroNonMasterDof(given->mask);
  set.Mv(given->x, y, true, 0, -1);
  set.MM(1, given->B, 0, M, 'N');
  set.MatQtQ(M);
  set.MatQ1tQ(set, M, -1);
  set.SetVector(given->x, 2, true, 0, nullptr);
  set.SetVector(given->z, 3, 0, y, nullptr, &ip);
  set.AddVector(given->z, 3, true, 0, nullptr);
  Set link(set, 1, 3, 1, 6);
  link.Zero();
  set.GramSchmidt(0, 2, &lengths, &y);
}

/** Every way to take the vectors of another set. */
void take(Set& set) {
  for (const int mode : {1, 2}) {
    Set copy(mode, 1, 5, nullptr);
    copy.Initialize(set);
    copy.Merge(copy);
    Set other(mode, 2, 6, nullptr);
    other.Copy(set, 1, 4);
    other.Initialize(copy, 3 - mode);
    other = copy;
  }
}

/** Runs an operation on sets of all storages, with the n-th of something failing. */
template <class Failing, class Operation>
void expectCodes(const std::string& directory, const std::set<int>& codes, Operation operation) {
  for (const Storage storage : {Storage::InCore, Storage::Mapped, Storage::FileResident})
    for (long n = 1;; ++n) {
      MadeSet<double> set(storage, randomDense<double>(4, 6), 6);
      bool happened = false;
      int code = 0;
      std::string name;
      support::capture([&] {
        const Failing failing(n);
        code = codeOf([&] { operation(*set); });
        happened = Failing::happened();
        name = nameOf<Failing>();
      });
      EXPECT_TRUE(code == 0 || codes.count(code) == 1)
          << "the failing " << n << " (" << name << ") told as " << code;
      if (name == "unlink") // leaves a file, as it was told to
        for (const auto& left : std::filesystem::directory_iterator(directory))
          std::filesystem::remove(left);
      if (!happened) break;
    }
}

TEST_F(Faults, LackOfMemoryIsToldAsSuchByEveryOperation) {
  expectCodes<support::FailingAllocation>(directory.path(), {1}, work);
  expectCodes<support::FailingAllocation>(directory.path(), {1, 4}, take);
}

TEST_F(Faults, FailingCallsAreToldByTheirCodes) {
  const std::set<int> codes{4, 13, 14, 19, 20, 21, 22, 24, 27, 34};
  expectCodes<support::FailingCall>(directory.path(), codes, work);
  expectCodes<support::FailingCall>(directory.path(), codes, take);
}

TEST_F(Faults, CopiesOfAnOddRangeNeedMemory) {
  AtOddByte<double> set({{1, 2}, {3, 4}, {5, 6}}, 2);
  for (long n = 1;; ++n) {
    {
      const support::FailingAllocation failing(n);
      const int code = codeOf([&] { set->MapBlock(0, 2); });
      if (!support::FailingAllocation::happened()) break;
      EXPECT_EQ(code, 1);
    }
    EXPECT_FALSE(set->isMapped(0));
  }
  EXPECT_EQ((*set)[2]->GetVal(1), 6);
}

/** The reason stands for the system's own. */
template <class Call>
int reasonOf(Call call) {
  int reason = -1;
  support::capture([&] {
    try {
      call();
    } catch (const C_ZarelException& e) {
      reason = e.getReasonCode();
    }
  });
  return reason;
}

TEST_F(Faults, ReasonIsTheSystems) {
  constexpr int noMemory = 1;
  Set set(2, 3, 4, nullptr);
  const auto reasonWhen = [&](const char* name, auto call) {
    const support::FailingCall failing(1, name, ENOMEM);
    return reasonOf(call);
  };

  EXPECT_EQ(reasonWhen("mmap", [&] { set.MapAllBlocks(); }), noMemory);
  set.MapAllBlocks();
  EXPECT_EQ(reasonWhen("munmap", [&] { set.UnmapAllBlocks(); }), noMemory);
  Set fresh(2, 3, 4, nullptr); // no handle for views that is closed before
  EXPECT_EQ(reasonWhen("close", [&] { fresh.Release(true); }), noMemory);
  EXPECT_EQ(reasonWhen("open", [&] { Set other(2, 1, 1, nullptr); }), noMemory);
  EXPECT_EQ(reasonOf([&] { set.Allocate(3, 1, 1, nullptr); }), 0);
}

// Frames.

using Names = std::vector<std::string>;

/** The frames that a call opens, by their names within the class, and in their order. */
template <class Call>
Names framesOf(Call call) {
  static const std::string prefix = "+C_VSTRUCT<T>::";
  const support::FrameProbe frames;
  call();
  Names names;
  int open = 0;
  for (const std::string& name : frames.taken()) {
    open += name[0] == '+' ? 1 : -1;
    if (name.rfind(prefix, 0) == 0) names.push_back(name.substr(prefix.size()));
  }
  EXPECT_EQ(open, 0);
  return names;
}

/** The same without those of the mapped ranges. */
template <class Call>
Names stepsOf(Call call) {
  Names names = framesOf(call);
  const auto ofRange = [](const std::string& n) { return n == "MapBlock" || n == "_UnmapBlock"; };
  names.erase(std::remove_if(names.begin(), names.end(), ofRange), names.end());
  return names;
}

TEST(VectorSetFrames, NameTheStepsOfASetInCore) {
  Set set;
  const Names made{"Allocate", "_Initialize", "_DeallocateList", "_AllocateList", "_AllocateBase"};
  EXPECT_EQ(framesOf([&] { set.Allocate(1, 2, 3, nullptr); }), made);
  EXPECT_EQ(framesOf([&] { set.Resize(3, nullptr); }),
            (Names{"Resize", "_ResizeIncore", "_ResizeList", "_ReallocateBase"}));
  EXPECT_EQ(framesOf([&] { set.Release(true); }), (Names{"Release", "_DeallocateList"}));
}

TEST(VectorSetFrames, NameTheStepsOfASetOnAFile) {
  Set set;
  EXPECT_EQ(framesOf([&] { set.Allocate(2, 2, 3, nullptr); }),
            (Names{"Allocate", "_Initialize", "_DeallocateList", "_AllocateList", "_CreateDataFile",
                   "_ComputeDataFileSize", "_setDataFileSize"}));
  EXPECT_EQ(framesOf([&] { set.MapAllBlocks(); }), Names{"MapBlock"});
  EXPECT_EQ(
      framesOf([&] { set.Resize(1, nullptr); }),
      (Names{"Resize", "_ResizeOutofcore", "_UnmapBlock", "_setDataFileSize", "_ResizeList"}));
  EXPECT_EQ(framesOf([&] { set.Release(true); }),
            (Names{"Release", "_CloseDataFile", "_RemoveDataFile", "_DeallocateList"}));
}

TEST(VectorSetFrames, NameTheOperations) {
  Set set(2, 2, 2, nullptr);
  fillSet<double>(set, {{3, 4}, {1, 0}});
  Set other(1, 2, 2, nullptr);
  C_MatMGe<double> M;
  C_MatMGe<double> N(2, 1);
  Vec<double> x(2, 1.0);
  Vec<double> y;
  Zarel::C_FInnerProd<double> ip;
  int mask[2] = {1, 1};

  EXPECT_EQ(stepsOf([&] { set.GetRow(0, y); }), Names{"GetRow"});
  EXPECT_EQ(stepsOf([&] { set.GetRows(M, 0, 1, 0, 1); }), Names{"GetRows"});
  EXPECT_EQ(stepsOf([&] { set.ZeroNonMasterDof(mask); }), Names{"ZeroNonMasterDof"});
  EXPECT_EQ(stepsOf([&] { set.Mv(x, y, true, 0, -1); }), Names{"Mv"});
  EXPECT_EQ(stepsOf([&] { set.MM(1, N, 0, M, 'N'); }), (Names{"MM", "Mv"}));
  EXPECT_EQ(stepsOf([&] { set.MatQtQ(M); }), Names{"MatQtQ"});
  EXPECT_EQ(stepsOf([&] { set.MatQ1tQ(other, M, 1); }), Names{"MatQ1tQ"});
  EXPECT_EQ(stepsOf([&] { set.GramSchmidt(0, 0, nullptr, nullptr); }),
            (Names{"GramSchmidt", "Resize"}));
  EXPECT_EQ(stepsOf([&] { set.AddVector(x, 0, true, 0, nullptr); }), Names{"AddVector"});
  EXPECT_EQ(stepsOf([&] { set.SetVector(x, 0, true, 0, nullptr); }), Names{"SetVector"});
  EXPECT_EQ(stepsOf([&] { set.SetVector(x, 0, 0, y, nullptr, &ip); }), Names{"SetVector"});
  EXPECT_EQ(stepsOf([&] { set.Zero(); }), Names{"Zero"});
  EXPECT_EQ(stepsOf([&] { other.Copy(set, 0, -1); }), (Names{"Copy", "Resize"}));
  EXPECT_EQ(stepsOf([&] { other.Initialize(set); }), (Names{"Initialize", "Resize"}));
  EXPECT_EQ(stepsOf([&] { other.Merge(set); })[0], "Merge");
  EXPECT_EQ(stepsOf([&] { Set link(set, 0, -1, 0, -1); })[0], "LinkTo");
}

TEST_F(Faults, GramMatrixFallsBackToSingleVectorsWhenTheWholeSetCannotBeMapped) {
  Set set(2, 3, 2, nullptr);
  fillSet<double>(set, {{1, 0}, {1, 1}, {0, 2}});
  set.UnmapAllBlocks();
  C_MatMGe<double> M;
  {
    const support::FailingCall failing(1, "mmap", ENOMEM);
    set.MatQtQ(M);
    EXPECT_TRUE(support::FailingCall::happened());
  }
  EXPECT_EQ(std::vector<double>(M.Adr(), M.Adr() + 9),
            (std::vector<double>{1, 1, 0, 1, 2, 2, 0, 2, 4}));
}

TEST_F(Faults, RangeThatCannotBeMappedIsTold) {
  Set set(2, 3, 4, nullptr);
  set.MapBlock(0, 0);
  {
    const support::FailingCall failing(1, "mmap", ENOMEM);
    EXPECT_EQ(codeOf([&] { set.MapBlock(1, 2); }), 13);
  }
  for (unsigned int j = 0; j < 3; ++j)
    EXPECT_FALSE(set.isMapped(j)) << "the former range is gone, the new one not there";
  set.MapBlock(1, 2);
  EXPECT_TRUE(set.isMapped(1, 2));
}

TEST_F(Faults, RangeThatCannotBeUnmappedIsTold) {
  support::capture([&] {
    Set set(2, 3, 4, nullptr);
    set.MapAllBlocks();
    {
      const support::FailingCall failing(1, "munmap", ENOMEM);
      EXPECT_EQ(codeOf([&] { set.UnmapAllBlocks(); }), 14);
    }
    EXPECT_EQ(set.Adr(), nullptr);
  });
}

TEST_F(Faults, FileThatCannotBeClosedIsToldAndForgotten) {
  support::capture([&] {
    Set set(2, 3, 4, nullptr);
    {
      const support::FailingCall failing(1, "close", EIO);
      EXPECT_EQ(codeOf([&] { set.Release(true); }), 27);
    }
    EXPECT_EQ(set.getDataFileDescriptor(), -1);
  });
}

TEST_F(Faults, FileThatCannotBeDeletedKeepsItsName) {
  Set set(2, 3, 4, nullptr);
  const std::wstring name = set.getDataFileName();
  {
    const support::FailingCall failing(1, "unlink", EACCES);
    set.Release(true);
    ASSERT_TRUE(support::FailingCall::happened());
  }
  EXPECT_EQ(set.getDataFileName(), name);
  EXPECT_FALSE(set.isValid());
  set.Release(true);
  EXPECT_TRUE(set.getDataFileName().empty());
}

// The full disk.

constexpr char kFullText[] = "\nFails to be created. Probably due to insufficient disk space.";

TEST_F(Faults, FullDiskIsToldWhenTheSetIsMade) {
  Set set;
  const support::FailingCall failing(1, "fallocate", ENOSPC);
  int reason = 0;
  const auto told = support::capture([&] {
    try {
      set.Allocate(2, 3, 4, nullptr);
    } catch (const C_ZarelException& e) {
      EXPECT_EQ(e.getExceptionCode(), 24);
      reason = e.getReasonCode();
    }
  });

  EXPECT_EQ(reason, 5) << "no room on the disk";
  EXPECT_NE(told.err.find("Temporary File : " + directory.path() + "/ZRLVS"), std::string::npos)
      << told.err;
  EXPECT_NE(told.err.find(kFullText), std::string::npos);
  EXPECT_FALSE(set.isValid());
  EXPECT_EQ(set.getDataFileDescriptor(), -1);
}

TEST_F(Faults, FullDiskIsToldWhenTheSetGrowsAndNothingIsLost) {
  const auto values = randomDense<double>(3, 4);
  Set set(2, 3, 4, nullptr);
  fillSet(set, values);
  const auto told = support::capture([&] {
    const support::FailingCall failing(1, "fallocate", ENOSPC);
    EXPECT_EQ(codeOf([&] { set.Resize(9, nullptr); }), 24);
  });

  EXPECT_NE(told.err.find(kFullText), std::string::npos);
  EXPECT_EQ(set.getDim(), 3);
  EXPECT_EQ(contentOf(set), values);
  set.Resize(9, nullptr);
  EXPECT_EQ(set.getDim(), 9);
}

TEST_F(Faults, FileSizeLimitIsTold) {
  struct Limit {
    Limit() {
      ::getrlimit(RLIMIT_FSIZE, &former);
      handler = std::signal(SIGXFSZ, SIG_IGN);
      const rlimit tight{1 << 20, former.rlim_max};
      ::setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~Limit() {
      ::setrlimit(RLIMIT_FSIZE, &former);
      std::signal(SIGXFSZ, handler);
    }
    rlimit former;
    void (*handler)(int);
  };
  Set set(2, 1, 1000, nullptr);
  set.SetVal(999, 0, 5);
  int made = 0;
  int grown = 0;
  const auto told = support::capture([&] {
    const Limit limit;
    Set large;
    made = codeOf([&] { large.Allocate(2, 200, 1000, nullptr); });
    grown = codeOf([&] { set.Resize(200, nullptr); });
  });

  EXPECT_EQ(made, 24);
  EXPECT_EQ(grown, 24);
  EXPECT_NE(told.err.find(kFullText), std::string::npos);
  EXPECT_EQ(set.GetVal(999, 0), 5);
}

} // namespace
