// The data file of a set: its name, its size, and what a failure leaves of it.
#include <cerrno>
#include <string_view>

#include <sys/resource.h>

#include <zarel/C_MemManager.h>
#include <zarel/bf.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/calls.h"
#include "system/text.h"
#include "vectorset/files.h"

using namespace vectorset;
using Zarel::toWide;

namespace {

using Set = Zarel::C_VSTRUCT<double>;

/** What a call tells while the n-th system call of a name fails; the messages are swallowed. */
template <class Call>
Told toldWhen(const char* name, int error, Call call, long n = 1) {
  Told told;
  support::capture([&] {
    const support::FailingCall failing(n, name, error);
    told = toldBy(call);
    EXPECT_TRUE(support::FailingCall::happened()) << name;
  });
  return told;
}

/** Has other system calls in use for as long as it lives. */
class CallsInstead {
public:
  template <class Change>
  explicit CallsInstead(Change change) : saved_(Zarel::systemCalls()) {
    change(Zarel::systemCalls());
  }
  CallsInstead(const CallsInstead&) = delete;
  CallsInstead& operator=(const CallsInstead&) = delete;
  ~CallsInstead() { Zarel::systemCalls() = saved_; }

private:
  Zarel::SystemCalls saved_;
};

class DataFile : public ::testing::Test {
protected:
  bool exists(const std::string& name) { return std::filesystem::exists(directory.file(name)); }
  std::wstring wide(const std::string& name) { return toWide(directory.file(name)); }
  /** A file of the set's form that is not the set's. */
  std::wstring put(const std::string& name) {
    support::writeBytes(directory.file(name), bytes);
    return wide(name);
  }
  std::string bytesOf(const std::string& name) { return support::bytesOf(directory.file(name)); }

  support::TempDirectory directory;
  support::Environment place{"TMPDIR", directory.path().c_str()};
  const Dense<double> values = randomDense<double>(3, 4);
  const std::string bytes = fileOf(values, 4);
};

// The name.

TEST_F(DataFile, PresetNameServesOnce) {
  Set set;
  set.setDataFileName(wide("first"));
  set.Allocate(2, 3, 4, nullptr);
  fillSet(set, values);
  set.Release(false);
  const std::string kept = bytesOf("first");

  set.Allocate(2, 3, 4, nullptr);

  EXPECT_EQ(bytesOf("first"), kept) << "what was kept is not made anew";
  EXPECT_NE(set.getDataFileName(), wide("first"));
}

TEST_F(DataFile, PresetNameServesAgainWhenItIsPresetAgain) {
  Set set;
  for (int again = 0; again < 2; ++again) {
    set.setDataFileName(wide("named"));
    set.Allocate(2, 3, 4, nullptr);
    EXPECT_EQ(set.getDataFileName(), wide("named"));
    EXPECT_TRUE(exists("named"));
  }
  set.Release(true);
  EXPECT_FALSE(exists("named"));
  EXPECT_EQ(set.getDataFileName(), L"");
}

TEST_F(DataFile, EmptyNameTakesAPresetBack) {
  Set set;
  set.setDataFileName(wide("named"));
  set.setDataFileName(L"");

  set.Allocate(2, 3, 4, nullptr);

  EXPECT_FALSE(exists("named"));
  EXPECT_EQ(set.getDataFileName().rfind(wide("ZRLVS"), 0), 0U);
}

TEST_F(DataFile, PresetNameIsNotUsedUpByASetInCoreNorByATry) {
  Set set;
  set.setDataFileName(wide("named"));
  set.Allocate(1, 3, 4, nullptr);
  EXPECT_FALSE(exists("named"));
  EXPECT_EQ(toldWhen("open", EACCES, [&] { set.Allocate(2, 3, 4, nullptr); }), (Told{19, 2828}));

  set.Allocate(2, 3, 4, nullptr);

  EXPECT_EQ(set.getDataFileName(), wide("named"));
  EXPECT_TRUE(exists("named"));
}

TEST_F(DataFile, PresetNameOfANextFileIsNoneOfALink) {
  put("read");
  FILE* const stream = std::fopen(directory.file("read").c_str(), "rb");
  {
    Set set;
    set.setDataFileName(wide("read"));
    set.Read(stream, 2, true, 0, 0, 0);
    set.setDataFileName(wide("next"));
    Set link(set, 1, -1, 0, -1);

    EXPECT_EQ(link.getDataFileName(), wide("read"));
    EXPECT_EQ(contentOf(link), partOf(values, 1, 3, 0, 4)); // mapped by its name
    EXPECT_FALSE(exists("next"));
    EXPECT_EQ(set.getDataFileName(), wide("next"));
  }
  std::fclose(stream);
}

TEST_F(DataFile, NameOfAFileThatWasReadIsNeverMadeAnew) {
  std::wstring name = put("read");
  Set set;
  const auto tries = [&](auto attempt) {
    for (long n = 1, more = 1; more; ++n) {
      {
        const support::FailingAllocation failing(n);
        const int code = codeOf(attempt);
        more = support::FailingAllocation::happened();
        EXPECT_EQ(set.isValid(), code == 0) << "allocation " << n << " told as " << code;
      }
      const int descriptor = set.getDataFileDescriptor();
      set.LinkTo(0, 0, nullptr); // lets go of the file and removes nothing
      if (isOpen(descriptor)) CBF_close64(descriptor);
      set.Allocate(2, 1, 1, nullptr);
      EXPECT_NE(set.getDataFileName(), name);
      EXPECT_EQ(bytesOf("read"), bytes) << "allocation " << n;
      set.Release(true);
    }
  };

  for (const bool map : {true, false})
    tries([&] { set.Read(name.c_str(), 0, 2, map, 0, 0, 0); });
  tries([&] { set.Read(name.c_str(), 0, 1, false, 0, 0, 0); });
  tries([&] { set.Restore(name.data(), 0ULL, 2, 0, 0); });

  EXPECT_EQ(bytesOf("read"), bytes);
}

TEST_F(DataFile, RestoredByNameIsTheSetsWhateverMemoryThereIs) {
  std::wstring name = put("read");
  bool more = true;
  for (long n = 1; more; ++n) {
    Set set;
    {
      const support::FailingAllocation failing(n);
      const int code = codeOf([&] { set.Restore(name.data(), 0ULL, 2, 0, 0); });
      more = support::FailingAllocation::happened();
      EXPECT_EQ(code, more ? 1 : 0) << "allocation " << n;
    }
    if (set.isValid()) {
      EXPECT_TRUE(set.getMemOwner());
      CBF_close64(set.getDataFileDescriptor());
    }
    set.Release(false);
  }
  EXPECT_EQ(bytesOf("read"), bytes);
}

TEST_F(DataFile, NameStaysWhereTheFileCouldNotBeRemovedAndTheNextOneIsAnother) {
  Set set(2, 3, 4, nullptr);
  const std::wstring former = set.getDataFileName();
  support::capture([&] {
    const support::FailingCall failing(1, "unlink", EACCES);
    set.Release(true);
  });
  EXPECT_EQ(set.getDataFileName(), former);

  set.Allocate(2, 1, 1, nullptr);

  EXPECT_NE(set.getDataFileName(), former);
}

TEST_F(DataFile, TemporaryNameThatIsTakenMeanwhileIsTriedAnew) {
  const support::FailingCall taken(1, "open", EEXIST);

  Set set(2, 3, 4, nullptr);

  EXPECT_TRUE(support::FailingCall::happened());
  EXPECT_TRUE(set.isValid());
}

/** What `open` was asked for last. */
int flagsOfOpen = 0;

TEST_F(DataFile, IsCreatedForItsOwnerAloneAndExclusivelyIfTemporary) {
  static Zarel::SystemCalls real;
  real = Zarel::systemCalls();
  const CallsInstead noting([](Zarel::SystemCalls& calls) {
    calls.open = [](const char* path, int flags, mode_t mode) {
      EXPECT_EQ(mode, 0600U);
      flagsOfOpen = flags & (O_CREAT | O_EXCL | O_TRUNC | O_CLOEXEC | O_ACCMODE);
      return real.open(path, flags, mode);
    };
  });
  Set set;

  set.Allocate(2, 3, 4, nullptr);
  EXPECT_EQ(flagsOfOpen, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC);
  set.setDataFileName(wide("named"));
  set.Allocate(2, 3, 4, nullptr);
  EXPECT_EQ(flagsOfOpen, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC);
}

TEST_F(DataFile, NameAndSizeAreGoneWithTheFile) {
  Set set(2, 3, 4, nullptr);
  EXPECT_EQ(set.getDataFileSize(), 96U);

  set.Release(true);

  EXPECT_EQ(set.getDataFileName(), L"");
  EXPECT_EQ(set.getDataFileSize(), 0U);
}

TEST_F(DataFile, NameOfAFileThatWasReadGoesWithTheLifeThatReadIt) {
  const std::wstring name = put("read");
  double data[1] = {};
  for (const int mode : {1, 2}) {
    Set set;
    set.Read(name.c_str(), 0, mode, true, 0, 0, 0);
    EXPECT_EQ(set.getDataFileName(), name);

    set.LinkTo(1, 1, data);

    EXPECT_EQ(set.getDataFileName(), L"");
  }
}

TEST_F(DataFile, WithoutAPlaceForTemporaryFilesHasNoName) {
  Set set;
  Told told;
  support::capture([&] {
    const CallsInstead nowhere([](Zarel::SystemCalls& calls) {
      calls.access = [](const char*, int) {
        errno = EACCES;
        return -1;
      };
    });
    told = toldBy([&] { set.Allocate(2, 3, 4, nullptr); });
  });

  EXPECT_EQ(told, (Told{4, 0}));
  EXPECT_FALSE(set.isValid());
}

TEST_F(DataFile, OfAPrefixThatIsNoTextHasNoName) {
  Set set;
  const Told told = toldBy([&] { set.Allocate(2, 3, 4, "abc\xff"); });
  EXPECT_EQ(told, (Told{4, 0}));
  EXPECT_FALSE(set.isValid());
}

TEST_F(DataFile, WhoseOpeningWasInterruptedIsMade) {
  Set set;
  const support::FailingCall failing(1, "open", EINTR);
  set.Allocate(2, 3, 4, nullptr);
  EXPECT_TRUE(support::FailingCall::happened());
  EXPECT_TRUE(set.isValid());
}

TEST_F(DataFile, WhoseNameIsTooLongIsNotMade) {
  Set set;
  Told told;
  const std::string prefix(5000, 'x');
  support::capture([&] { told = toldBy([&] { set.Allocate(2, 3, 4, prefix.c_str()); }); });
  EXPECT_EQ(told, (Told{19, 31}));
}

// The size.

TEST_F(DataFile, ThatCouldNotBeCutLeavesTheSetWhole) {
  Set set(2, 3, 4, nullptr);
  fillSet(set, values);

  EXPECT_EQ(toldWhen("ftruncate", EIO, [&] { set.Resize(1, nullptr); }), (Told{24, 31}));

  EXPECT_TRUE(set.isValid());
  EXPECT_EQ(set.getDataFileSize(), 96U);
  EXPECT_EQ(contentOf(set), values);
}

TEST_F(DataFile, ThatCouldNotBeCutAtFirstStillGrowsByZeros) {
  Set set(2, 3, 4, nullptr);
  fillSet(set, values);
  toldWhen("ftruncate", EIO, [&] { set.Resize(1, nullptr); });

  set.Resize(1, nullptr);
  set.Resize(3, nullptr);

  Dense<double> expected(3, std::vector<double>(4, 0));
  expected[0] = values[0];
  EXPECT_EQ(contentOf(set), expected);
}

// What stands behind the vectors of a file that the set owns makes room for new ones.
TEST_F(DataFile, RestoredBeforeOtherBytesGrowsByZeros) {
  support::writeBytes(directory.file("long"), bytes + std::string(1000, '\x5a'));
  std::wstring name = wide("long");
  Set set;
  set.Restore(name.data(), 0ULL, 2, 0, 0);

  set.Resize(5, nullptr);

  Dense<double> expected = values;
  expected.resize(5, std::vector<double>(4, 0));
  EXPECT_EQ(contentOf(set), expected);
  set.UnmapAllBlocks();
  EXPECT_EQ(bytesOf("long").size(), 8 + 5 * 4 * sizeof(double));
  const int descriptor = set.getDataFileDescriptor();
  set.Release(true);
  CBF_close64(descriptor);
}

// A file that was only adopted is of no size that the set has given it, not of size 0.
TEST_F(DataFile, RestoredWithoutAHeadIsCutToNothing) {
  support::writeBytes(directory.file("bare"), bytes.substr(8));
  std::wstring name = wide("bare");
  Set set;
  set.Restore(name.data(), 0ULL, 2, 3, 4);

  set.Resize(0, nullptr);
  EXPECT_EQ(bytesOf("bare"), "");
  set.Resize(2, nullptr);

  EXPECT_EQ(contentOf(set), Dense<double>(2, std::vector<double>(4, 0)));
  const int descriptor = set.getDataFileDescriptor();
  set.Release(true);
  CBF_close64(descriptor);
}

TEST_F(DataFile, RestoredFromAFileThatWasTooShortGrowsAndShrinks) {
  support::writeBytes(directory.file("short"), bytes.substr(0, 8 + 5 * sizeof(double)));
  std::wstring name = wide("short");
  Set set;
  set.Restore(name.data(), 0ULL, 2, 0, 0);

  set.Resize(4, nullptr);

  Dense<double> expected(4, std::vector<double>(4, 0));
  expected[0] = values[0];
  expected[1][0] = values[1][0];
  EXPECT_EQ(contentOf(set), expected);
  set.Resize(1, nullptr);
  EXPECT_EQ(contentOf(set), partOf(values, 0, 1, 0, 4));
  const int descriptor = set.getDataFileDescriptor();
  set.Release(true);
  CBF_close64(descriptor);
}

TEST_F(DataFile, ReadByNameIsClosedForOtherPrograms) {
  std::wstring name = put("read");
  Set read, restored;

  read.Read(name.c_str(), 0, 2, true, 0, 0, 0);
  restored.Restore(name.data(), 0ULL, 2, 0, 0);

  for (const Set* set : {&read, &restored})
    EXPECT_NE(fcntl(set->getDataFileDescriptor(), F_GETFD) & FD_CLOEXEC, 0);
  CBF_close64(restored.getDataFileDescriptor());
}

// Reasons.

TEST_F(DataFile, ThatIsNotMadeTellsWhy) {
  const auto make = [] { Set set(2, 3, 4, nullptr); };
  EXPECT_EQ(toldWhen("open", ENOENT, make), (Told{19, 31}));
  EXPECT_EQ(toldWhen("open", EMFILE, make), (Told{19, 7}));
  EXPECT_EQ(toldWhen("open", ENFILE, make), (Told{19, 8}));
  EXPECT_EQ(toldWhen("open", ENOSPC, make), (Told{19, 5}));
  EXPECT_EQ(toldWhen("fallocate", ENOSPC, make), (Told{24, 5}));
  EXPECT_EQ(toldWhen("fallocate", EFBIG, make), (Told{24, 9}));
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST_F(DataFile, ThatIsNotOpenedTellsWhy) {
  std::wstring name = put("read"), absent = wide("absent"), folder = toWide(directory.path());
  Set set;
  EXPECT_EQ(toldBy([&] { set.Read(absent.c_str(), 0, 2, true, 0, 0, 0); }), (Told{19, 31}));
  EXPECT_EQ(toldBy([&] { set.Read(folder.c_str(), 0, 2, true, 0, 0, 0); }), (Told{19, 31}));
  EXPECT_EQ(toldBy([&] { set.Restore(absent.data(), 0ULL, 2, 0, 0); }), (Told{19, 31}));
  EXPECT_EQ(toldBy([&] { set.Restore(folder.data(), 0ULL, 2, 0, 0); }), (Told{19, 31}));
  EXPECT_EQ(toldWhen("open", EACCES, [&] { set.Restore(name.data(), 0ULL, 2, 0, 0); }),
            (Told{19, 2828}));

  rlimit former;
  getrlimit(RLIMIT_NOFILE, &former);
  const rlimit none = {0, former.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const Told read = toldBy([&] { set.Read(name.c_str(), 0, 2, true, 0, 0, 0); });
  const Told restored = toldBy([&] { set.Restore(name.data(), 0ULL, 2, 0, 0); });
  setrlimit(RLIMIT_NOFILE, &former);

  EXPECT_EQ(read, (Told{19, 7}));
  EXPECT_EQ(restored, (Told{19, 7}));
}

TEST_F(DataFile, ThatIsNotMappedTellsWhy) {
  Set set(2, 3, 4, nullptr);
  const auto map = [&] { set.MapBlock(1, 2); };
  EXPECT_EQ(toldWhen("mmap", ENOMEM, map), (Told{13, 1}));
  EXPECT_EQ(toldWhen("mmap", EACCES, map), (Told{13, 2828}));
  ASSERT_EQ(ftruncate(set.getDataFileDescriptor(), 95), 0);
  EXPECT_EQ(toldBy(map), (Told{13, 17})) << "the file ends before the last vector does";
}

TEST_F(DataFile, ThatIsNotUnmappedTellsWhy) {
  Set set(2, 3, 4, nullptr);
  set.MapBlock(1, 2);
  EXPECT_EQ(toldWhen("munmap", ENOMEM, [&] { set.UnmapAllBlocks(); }), (Told{14, 1}));
  set.MapBlock(1, 2);
  EXPECT_EQ(toldWhen("munmap", EINVAL, [&] { set.MapBlock(0, 0); }), (Told{14, 18}));
}

TEST_F(DataFile, ThatIsNotClosedTellsWhy) {
  for (const auto& [error, reason] : {std::pair(EIO, 31), std::pair(ENOSPC, 5)}) {
    Set set(2, 3, 4, nullptr);
    EXPECT_EQ(toldWhen("close", error, [&] { set.Release(true); }), (Told{27, reason}));
    set.Release(true);
  }
  std::wstring name = put("read");
  Set set;
  set.Read(name.c_str(), 0, 2, true, 0, 0, 0);
  ::close(set.getDataFileDescriptor());
  EXPECT_EQ(toldBy([&] { set.Release(true); }), (Told{27, 16}));
  EXPECT_EQ(set.getDataFileDescriptor(), -1);
}

// The steps.

/** The steps of the set, outermost first, in which a call fails with a system call of a name. */
template <class Call>
std::string stepsWhen(const char* name, Call call) {
  constexpr std::string_view prefix = "C_VSTRUCT<T>::";
  std::string steps;
  support::capture([&] {
    const support::FailingCall failing(1, name, EIO);
    try {
      call();
    } catch (const C_ZarelException& e) {
      for (const C_Entry& entry : e.getCallStack().GetStack()) {
        const std::string_view function = entry.GetFunction();
        if (function.substr(0, prefix.size()) == prefix)
          steps.append(steps.empty() ? "" : " ").append(function.substr(prefix.size()));
      }
    }
  });
  return steps;
}

TEST_F(DataFile, FailuresNameTheStepsThatLedThere) {
  std::wstring name = put("read");
  Set set, read;
  const auto make = [&] { set.Allocate(2, 3, 4, nullptr); };

  EXPECT_EQ(stepsWhen("open", make), "Allocate _CreateDataFile");
  EXPECT_EQ(stepsWhen("fallocate", make), "Allocate _CreateDataFile _setDataFileSize");
  make();
  EXPECT_EQ(stepsWhen("mmap", [&] { set.MapBlock(0, 0); }), "MapBlock");
  EXPECT_EQ(stepsWhen("ftruncate", [&] { set.Resize(2, nullptr); }),
            "Resize _ResizeOutofcore _setDataFileSize");
  EXPECT_EQ(stepsWhen("close", [&] { set.Release(true); }), "Release _CloseDataFile");
  EXPECT_EQ(stepsWhen("read", [&] { read.Read(name.c_str(), 0, 1, false, 0, 0, 0); }), "Read");
  EXPECT_EQ(stepsWhen("read", [&] { read.Restore(name.data(), 0ULL, 1, 0, 0); }), "Restore");
}

// The way of Resize that names its caller.

/** Remembers who asked last for another size of a block. */
class NotingManager : public C_MemManager {
public:
  void* Realloc(void* block, unsigned __int64 size, const char* name, const char* file,
                int line) override {
    asked = std::string(name) + " " + file + " " + std::to_string(line);
    return C_MemManager::Realloc(block, size, name, file, line);
  }
  static inline std::string asked;
};

TEST_F(DataFile, ResizeNamesItsCallerToTheAccountingOfMemory) {
  C_MemManager::Install(new NotingManager);
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 4, nullptr);
    fillSet(set, values);
    int err = 7;

    set.Resize(2, "snapshots", "host.cpp", 41, &err);

    EXPECT_EQ(err, 0);
    EXPECT_EQ(contentOf(set), partOf(values, 0, 2, 0, 4));
    if (mode == 1) {
      EXPECT_EQ(NotingManager::asked, "snapshots host.cpp 41");
    }
    set.Resize(1, nullptr);
    if (mode == 1) {
      EXPECT_EQ(NotingManager::asked.rfind("unknown ", 0), 0U);
    }
    EXPECT_EQ(codeOf([&] { set.Resize(-1, "n", "f", 1, &err); }), 12);
    set.Resize(1, "n", "f", 1, nullptr);
    set.Release(true);
    err = 7;
    EXPECT_EQ(codeOf([&] { set.Resize(2, "n", "f", 1, &err); }), 11);
    EXPECT_EQ(err, 0);
  }
}

} // namespace
