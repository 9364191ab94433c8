// Samples of the process's memory, of one worker and of several.
#include "memory/support.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <zarel/C_PllMgr.h>
#include <zarel/zarelmem.h>

#include "memory/elapsed.h"
#include "support/FailingAllocation.h"
#include "support/Files.h"

namespace memory_test {

namespace {

using support::TempDirectory;
using support::WorkingDirectory;

double now = 0;
double testClock() {
  return now;
}

// A working directory that outlives the manager, whose end writes what samples it still has.
class OwnDirectory {
protected:
  TempDirectory directory;
  WorkingDirectory working{directory.path()};
};

class MemTracks : protected OwnDirectory, public MemManager {
protected:
  MemTracks() : _former(Zarel::setElapsedTime(testClock)) {}
  ~MemTracks() override { Zarel::setElapsedTime(_former); }

  void track(double time, __int64 memory, const char* label) {
    now = time;
    manager.resident = memory;
    manager.TrackMem(label);
  }

private:
  Zarel::ElapsedTime _former;
};

std::string padded(const std::string& label) {
  return std::string(50 - label.size(), ' ') + label;
}

TEST_F(MemTracks, AreWrittenInAscendingTime) {
  track(2.5, 300, "second");
  track(0.25, 4294967297, "first");

  manager.DumpTracks("run");

  EXPECT_EQ(support::bytesOf("run_0.MemTrack"), "0.250000\t" + padded("first") +
                                                    "\t4294967297\n2.500000\t" + padded("second") +
                                                    "\t300\n");
  manager.DumpTracks("run");
}

TEST_F(MemTracks, WithinOneTickAreKept1e10Apart) {
  track(1.0, 10, "a");
  track(1.0, 20, "b");

  manager.DumpTracks("tick");

  EXPECT_EQ(support::bytesOf("tick_0.MemTrack"),
            "1.000000\t" + padded("a") + "\t10\n1.000000\t" + padded("b") + "\t20\n");
}

// The second sample moves to 1 + 1e-10, so the third one, of that very time, moves on by another
// 1e-10; the fourth then comes between the two. No other distance gives this order.
TEST_F(MemTracks, AreMovedBy1e10Exactly) {
  track(1.0, 10, "a");
  track(1.0, 20, "b");
  track(1.0 + 1e-10, 30, "c");
  track(1.0 + 1.5e-10, 40, "d");

  manager.DumpTracks("tick");

  EXPECT_EQ(support::bytesOf("tick_0.MemTrack"),
            "1.000000\t" + padded("a") + "\t10\n1.000000\t" + padded("b") + "\t20\n1.000000\t" +
                padded("d") + "\t40\n1.000000\t" + padded("c") + "\t30\n");
}

TEST_F(MemTracks, AThirdWithinOneTickReplacesTheSecond) {
  track(1.0, 10, "a");
  track(1.0, 20, "b");
  track(1.0, 30, "c");

  manager.DumpTracks("tick");

  EXPECT_EQ(support::bytesOf("tick_0.MemTrack"),
            "1.000000\t" + padded("a") + "\t10\n1.000000\t" + padded("c") + "\t30\n");
}

TEST_F(MemTracks, MakeNoFileWhenThereAreNone) {
  manager.DumpTracks("none");

  EXPECT_THROW(support::bytesOf("none_0.MemTrack"), std::runtime_error);
}

TEST_F(MemTracks, ThatCannotBeWrittenAreLeftOut) {
  track(1.0, 10, "a");

  manager.DumpTracks("missing/directory");
}

// What cannot be written shows at the end at the latest, or, with more than a buffer holds, before.
TEST_F(MemTracks, ThatCannotBeWrittenToTheirEndLeaveNoFile) {
  for (const int samples : {1, 500}) {
    std::filesystem::create_symlink("/dev/full", "full_0.MemTrack");
    for (int k = 0; k < samples; ++k)
      track(k, 10, "a");

    manager.DumpTracks("full");

    EXPECT_FALSE(std::filesystem::is_symlink("full_0.MemTrack")) << samples;
  }
}

TEST_F(MemTracks, OfALongLabelAreNotCut) {
  const std::string label(60, 'l');
  track(1.0, 10, label.c_str());
  track(2.0, 20, nullptr);

  manager.DumpTracks("long");

  EXPECT_EQ(support::bytesOf("long_0.MemTrack"),
            "1.000000\t" + label + "\t10\n2.000000\t" + padded("") + "\t20\n");
}

TEST_F(MemTracks, AreWrittenByTheDestructorAsTest) {
  {
    HostManager other;
    now = 0;
    other.resident = 1;
    other.TrackMem("last");
  }

  EXPECT_EQ(support::bytesOf("Test_0.MemTrack"), "0.000000\t" + padded("last") + "\t1\n");
}

TEST_F(MemTracks, AreLostWithoutMemoryButNothingElseIs) {
  const long failed = support::forEachFailingAllocation(
      [this] { track(1.0, 10, "a label that is no short text"); });

  EXPECT_GT(failed, 0);
}

// Released at the very end, after everything that the first sample registered.
struct LateRelease {
  void* block = nullptr;
  ~LateRelease() { zarelmem_free(block, __FILE__, __LINE__); }
};

[[noreturn]] void endWithASample() {
  static LateRelease late;
  late.block = zarelmem_malloc(100, "test", 1, __FILE__, __LINE__);
  getGlobalMemManager()->TrackMem("end");
  std::exit(0);
}

[[noreturn]] void endWithoutASample() {
  static LateRelease late;
  late.block = zarelmem_malloc(100, "test", 1, __FILE__, __LINE__);
  std::exit(0);
}

TEST_F(MemTracks, AreWrittenAtTheEndOfTheProcess) {
  EXPECT_EXIT(endWithASample(), testing::ExitedWithCode(0), "");

  EXPECT_NE(support::bytesOf("Test_0.MemTrack").find(padded("end")), std::string::npos);
}

TEST_F(MemTracks, MakeNoFileAtTheEndOfAProcessWithoutAny) {
  EXPECT_EXIT(endWithoutASample(), testing::ExitedWithCode(0), "");

  EXPECT_THROW(support::bytesOf("Test_0.MemTrack"), std::runtime_error);
}

// The manager may be released after its samples were written: they are not written once more. This
// one was there before any sample, so that it ends behind what the first sample registered.
struct ReleaseOfTheManager {
  bool wanted = false;
  ~ReleaseOfTheManager() {
    if (!wanted) return;
    std::filesystem::rename("Test_0.MemTrack", "once");
    ReleaseGlobalMemManager();
  }
};
ReleaseOfTheManager atTheVeryEnd;

[[noreturn]] void endWithASampleAndAReleasedManager() {
  atTheVeryEnd.wanted = true;
  getGlobalMemManager()->TrackMem("end");
  std::exit(0);
}

TEST_F(MemTracks, AreWrittenOnceAtTheEndOfTheProcess) {
  EXPECT_EXIT(endWithASampleAndAReleasedManager(), testing::ExitedWithCode(0), "");

  EXPECT_NE(support::bytesOf("once").find(padded("end")), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists("Test_0.MemTrack"));
}

TEST(MemTrack, HoldsLabelMemoryAndTime) {
  __int64 memory = 5;
  double time = 1.5;
  const C_MemTrack sample("label", memory, time);
  const C_MemTrack copy = sample;

  EXPECT_EQ(copy.Label(), "label");
  EXPECT_EQ(copy.Memory(), 5);
  EXPECT_EQ(copy.Time(), 1.5);
}

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

const Clock::time_point startOfTheProcess = Clock::now();

TEST(ElapsedTime, IsInSecondsFromItsFirstUse) {
  const Zarel::ElapsedTime former = Zarel::setElapsedTime(nullptr);
  const double first = Zarel::elapsedTime();
  const Clock::time_point start = Clock::now();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));

  const double passed = Zarel::elapsedTime() - first;

  EXPECT_GE(first, 0);
  EXPECT_LE(first, secondsSince(startOfTheProcess));
  EXPECT_GE(passed, 0.02);
  EXPECT_NEAR(passed, secondsSince(start), 0.01);
  Zarel::setElapsedTime(former);
}

// ---- workers of a host ----

int worker = 0;
int workers = 3;
std::vector<int> locks;

int currentWorker() {
  return worker;
}
int answer(int* code) {
  return *code == 3 ? workers : 1;
}
void noValue(int*, int*) {}
void noState() {}
void noShare(int*, int*, int*) {}

class MemWorkers : public MemTracks {
protected:
  MemWorkers() {
    locks.clear();
    worker = 0;
    workers = 3;
    getGlobalPllManager()->Init([](int* number) { locks.push_back(*number); },
                                [](int* number) { locks.push_back(-*number); }, currentWorker,
                                answer, noValue, noState, noState, noShare, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  ~MemWorkers() override { ReleaseGlobalPllManager(); }

  void sample(C_MemManager& books, int who, const char* label) {
    worker = who;
    books.TrackMem(label);
  }
};

TEST_F(MemWorkers, WriteAFileEachThatHasSamples) {
  HostManager books;
  books.resident = 8;
  now = 1;
  sample(books, 0, "zero");
  sample(books, 2, "two");

  books.DumpTracks("w");

  EXPECT_EQ(support::bytesOf("w_0.MemTrack"), "1.000000\t" + padded("zero") + "\t8\n");
  EXPECT_EQ(support::bytesOf("w_1.MemTrack"), "1.000000\t" + padded("two") + "\t8\n");
  EXPECT_THROW(support::bytesOf("w_2.MemTrack"), std::runtime_error);
}

TEST_F(MemWorkers, HaveRoomFor1024WhenTheHostReportsNone) {
  workers = 0;
  HostManager books;
  books.resident = 8;

  sample(books, 1023, "last");
  sample(books, 1024, "no room");
  books.DumpTracks("many");

  EXPECT_NE(support::bytesOf("many_0.MemTrack").find("last"), std::string::npos);
  EXPECT_THROW(support::bytesOf("many_1.MemTrack"), std::runtime_error);
}

TEST_F(MemWorkers, InitHoldsLock107AndMakesRoomForWorkersThatCameLater) {
  workers = 1;
  HostManager books;
  workers = 3;
  books.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo);
  books.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo);

  EXPECT_EQ(locks, (std::vector<int>{107, -107, 107, -107}));
  books.resident = 8;
  sample(books, 2, "late");
  books.DumpTracks("late");
  EXPECT_NE(support::bytesOf("late_0.MemTrack").find("late"), std::string::npos);
}

TEST_F(MemWorkers, KeepTheirSamplesWhenThereAreFewer) {
  HostManager books;
  books.resident = 8;
  sample(books, 2, "early");
  workers = 1;

  books.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo);

  books.DumpTracks("fewer");
  EXPECT_NE(support::bytesOf("fewer_0.MemTrack").find("early"), std::string::npos);
}

TEST_F(MemWorkers, ASecondInitKeepsWhatTheFirstAllocated) {
  HostManager books;
  const auto init = [&] { books.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo); };
  init();

  EXPECT_EQ(support::forEachFailingAllocation(init), 0);
}

TEST_F(MemWorkers, AnInitWithoutMemoryReleasesItsLock) {
  workers = 1;
  HostManager books;
  workers = 2000;

  const long failed = support::forEachFailingAllocation([&] {
    locks.clear();
    locks.reserve(2);
    books.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo);
  });

  EXPECT_GT(failed, 1);
  EXPECT_EQ(locks, (std::vector<int>{107, -107}));
}

} // namespace

} // namespace memory_test
