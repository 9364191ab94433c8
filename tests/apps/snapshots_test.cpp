// What a file of vectors holds, found out from it, and how it gets into a set.
#include "svd/snapshots.h"

#include "app_support.h"
#include "snapshot_files.h"
#include "svd/decompose.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

using app::ExitCode;
using app::SnapshotChoice;
using app::SnapshotFormat;
using app::SnapshotLayout;
using app::Snapshots;
using apptest::failureOf;
using apptest::npyDictionary;
using apptest::npyFile;
using apptest::Vectors;
using ::testing::HasSubstr;

namespace {

const Vectors three{{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}}};

class SnapshotFiles : public apptest::InFolder {
protected:
  SnapshotChoice choiceOf(const std::string& name, const std::string& bytes) const {
    SnapshotChoice choice;
    choice.path = write(name, bytes);
    return choice;
  }
  /** Loads in both ways and expects the three vectors. */
  void expectThree(const SnapshotChoice& choice) const {
    app::Console console;
    const SnapshotLayout layout = app::inspectSnapshots(choice);
    for (const bool inCore : {true, false}) {
      const Snapshots loaded = app::loadSnapshots(choice, layout, inCore, console);
      expectThree(*loaded.set);
      EXPECT_EQ(loaded.set->getCoreMode(), inCore ? 1 : 2);
    }
    if (layout.vectorAfterVector && layout.format != SnapshotFormat::csv)
      expectThree(*app::viewSnapshots(choice.path, layout, false).set);
  }
  static void expectThree(app::VectorSet& set) {
    ASSERT_EQ(set.getDim(), 3);
    ASSERT_EQ(set.getDim1(), 4);
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 4; ++i)
        EXPECT_EQ(set.GetVal(i, j), 4 * j + i + 1);
  }
};

TEST_F(SnapshotFiles, AVectorSetFileHasItsCountsInFront) {
  const SnapshotChoice choice = choiceOf("a", setFile(three));

  const SnapshotLayout layout = app::inspectSnapshots(choice);

  EXPECT_EQ(layout.format, SnapshotFormat::vectorSet);
  EXPECT_EQ(layout.offset, 8u);
  expectThree(choice);
}

TEST_F(SnapshotFiles, RawNumbersNeedOneCount) {
  SnapshotChoice choice = choiceOf("a", apptest::bytesOf(three.byVector()));
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::badInput);
  choice.format = SnapshotFormat::raw;
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::usage);

  choice.vectors = 3;
  expectThree(choice);
  choice.vectors = 0;
  choice.length = 4;
  expectThree(choice);
  choice.length = 5;
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::badInput);
}

TEST_F(SnapshotFiles, RawNumbersMayStandByRows) {
  SnapshotChoice choice = choiceOf("a", apptest::bytesOf(three.byRow()));
  choice.vectors = 3;
  choice.rows = true;

  expectThree(choice);
}

TEST_F(SnapshotFiles, TheHeadOfANpyFileTellsTheOrder) {
  SnapshotChoice columns =
      choiceOf("f", npyFile(npyDictionary(true, 4, 3), apptest::bytesOf(three.byVector())));
  SnapshotChoice rows =
      choiceOf("c", npyFile(npyDictionary(false, 4, 3), apptest::bytesOf(three.byRow())));

  expectThree(columns);
  expectThree(rows);
  rows.rows = columns.rows = true;
  expectThree(rows);
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(columns); }).code, ExitCode::usage);
}

TEST_F(SnapshotFiles, TheVectorsMayBeTheRowsOfATable) {
  SnapshotChoice array =
      choiceOf("t", npyFile(npyDictionary(false, 3, 4), apptest::bytesOf(three.byVector())));
  SnapshotChoice table = choiceOf("t.csv", "1,2,3,4\n5,6,7,8\n9,10,11,12\n");
  array.transpose = table.transpose = true;

  EXPECT_TRUE(app::inspectSnapshots(array).vectorAfterVector); // may be shown as it lies
  expectThree(array);
  expectThree(table);
}

TEST_F(SnapshotFiles, ColumnsOfCsvAreVectors) {
  expectThree(choiceOf("a.csv", "u,v,w\n1,5,9\n2,6,10\n3,7,11\n4,8,12\n"));
}

TEST_F(SnapshotFiles, RefusesArraysOfOtherNumbersAndDimensions) {
  for (const char* dictionary : {"{'descr': '<f4', 'fortran_order': False, 'shape': (1, 1)}",
                                 "{'descr': '>f8', 'fortran_order': False, 'shape': (1, 1)}",
                                 "{'descr': '<f8', 'fortran_order': False, 'shape': (1, 1, 1)}",
                                 "{'descr': '<f8', 'fortran_order': False, 'shape': ()}",
                                 "{'descr': '<f8', 'fortran_order': False, 'shape': (0, 5)}",
                                 "{'descr': '<f8', 'fortran_order': False, 'shape': (2, 2)}"}) {
    const SnapshotChoice choice = choiceOf("a", npyFile(dictionary, "12345678"));
    EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::badInput)
        << dictionary;
  }
}

TEST_F(SnapshotFiles, RefusesASetFileThatIsShorterOrLongerThanItPromises) {
  const std::string whole = setFile(three);
  for (const std::string& bytes :
       {whole.substr(0, whole.size() - 1), whole + "x", whole.substr(0, 7), std::string(),
        apptest::bytesOf<std::int32_t>({-3, -4}), apptest::bytesOf<std::int32_t>({0, 4}),
        apptest::bytesOf<std::int32_t>({2147483647, 2147483647})}) {
    const SnapshotChoice choice = choiceOf("a", bytes);
    EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::badInput)
        << bytes.size();
  }
}

TEST_F(SnapshotFiles, RefusesCountsOfFilesThatHaveTheirOwn) {
  SnapshotChoice choice = choiceOf("a.csv", "1\n2\n");
  choice.vectors = 1;
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::usage);

  SnapshotChoice set = choiceOf("a", setFile(three));
  set.rows = true;
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(set); }).code, ExitCode::usage);
}

TEST_F(SnapshotFiles, TellsWhatAHeadPromisesAndWhatTheFileHolds) {
  const auto textOf = [](const SnapshotChoice& choice) {
    const app::Failure failure = failureOf([&] { app::inspectSnapshots(choice); });
    EXPECT_EQ(failure.place.file, choice.path);
    EXPECT_FALSE(failure.hint.empty()) << failure.what();
    return std::string(failure.what());
  };
  SnapshotChoice raw = choiceOf("raw", apptest::bytesOf(three.byVector()));
  raw.vectors = 5;

  EXPECT_THAT(textOf(choiceOf("set", setFile(three).substr(0, 50))),
              HasSubstr("3 vectors of 4 numbers, which take 104 bytes, but it has 50"));
  EXPECT_THAT(textOf(choiceOf("negative", apptest::bytesOf<std::int32_t>({-3, 4}))),
              HasSubstr("-3 vectors of 4 numbers; both go from 1"));
  EXPECT_THAT(textOf(choiceOf("npy", npyFile(npyDictionary(true, 4, 3), "12345678"))),
              HasSubstr("its head tells of 3 vectors of 4 numbers, which take 224 bytes, but it "
                        "has 136"));
  EXPECT_THAT(textOf(raw), HasSubstr("5 vectors of 2 numbers, which take 80 bytes, but it has 96"));
  EXPECT_THAT(textOf(choiceOf("short", "1234")), HasSubstr("its 4 bytes are too few"));
  EXPECT_THAT(textOf(choiceOf("head.csv", "a,b\n")), HasSubstr("no rows"));
}

TEST_F(SnapshotFiles, CsvThroughAPipeIsReadOnce) {
  SnapshotChoice choice;
  choice.path = path("pipe");
  ASSERT_EQ(mkfifo(choice.path.c_str(), 0600), 0);
  EXPECT_THAT(failureOf([&] { app::inspectSnapshots(choice); }).hint, HasSubstr("--format csv"));
  choice.format = SnapshotFormat::csv;
  std::thread writer(
      [&] { std::ofstream(choice.path) << "u,v,w\n1,5,9\n2,6,10\n3,7,11\n4,8,12\n"; });
  app::Console console;
  const Snapshots loaded = app::loadSnapshots(choice, app::inspectSnapshots(choice), true, console);
  writer.join();

  expectThree(*loaded.set);
}

TEST_F(SnapshotFiles, RefusesWhatIsNotThere) {
  SnapshotChoice choice;
  choice.path = path("nothing");
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::io);
  choice.path = folder_.string();
  EXPECT_EQ(failureOf([&] { app::inspectSnapshots(choice); }).code, ExitCode::usage);
}

TEST_F(SnapshotFiles, AFileThatBecomesShorterIsAnErrorOfTheNextPass) {
  const SnapshotChoice choice = choiceOf("a", setFile(three));
  const Snapshots shown = app::viewSnapshots(choice.path, app::inspectSnapshots(choice), false);
  app::Console console;
  app::SvdChoice wish;
  wish.method = app::SvdMethod::arpack;
  int passes = 0;
  app::SvdCalls calls;
  calls.check = [&] {
    if (++passes == 2) std::filesystem::resize_file(choice.path, 0);
    shown.file->check();
  };
  calls.start = [](app::SvdResult&) { ADD_FAILURE() << "there is no result"; };
  calls.take = [](int, const double*) {};

  const app::Failure failure = failureOf([&] { decompose(*shown.set, wish, console, calls); });

  EXPECT_EQ(failure.code, ExitCode::badInput);
  EXPECT_THAT(failure.what(), HasSubstr("became shorter"));
  EXPECT_EQ(passes, 2);
}

TEST_F(SnapshotFiles, HolesGetTheirPlaceBeforeTheyAreWritten) {
  constexpr std::size_t bytes = std::size_t(1) << 20;
  const std::string file = write("holes", "");
  std::filesystem::resize_file(file, bytes);
  const auto placed = [&] {
    struct stat info {};
    EXPECT_EQ(stat(file.c_str(), &info), 0);
    return static_cast<std::size_t>(info.st_blocks) * 512;
  };
  if (placed() >= bytes) GTEST_SKIP() << "the file system knows no holes";

  { const app::MappedFile reading(file, bytes, false); }
  EXPECT_LT(placed(), bytes);
  const app::MappedFile writing(file, bytes, true);
  EXPECT_GE(placed(), bytes);
}

TEST_F(SnapshotFiles, KnowsOneFileUnderTwoNames) {
  const std::string file = write("a", "1");
  std::filesystem::create_symlink(file, path("b"));

  EXPECT_TRUE(app::isSameFile(file, path("b")));
  EXPECT_FALSE(app::isSameFile(file, write("c", "1")));
  EXPECT_FALSE(app::isSameFile(file, path("nothing")));
}

} // namespace
