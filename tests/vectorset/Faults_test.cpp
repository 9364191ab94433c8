// Sets on which memory, the disk and the system fail.
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <sys/resource.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
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
