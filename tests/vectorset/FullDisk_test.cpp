// Sets on a file system that runs full: a small one of memory, in a namespace of the test process.
// Where the system allows no namespaces these tests are skipped; the limit of the size of files in
// other tests stands in for it.
#include "support/Capture.h"
#include "support/SmallDisk.h"
#include "system/text.h"
#include "vectorset/files.h"

using namespace vectorset;
using Zarel::toWide;

namespace {

using Set = Zarel::C_VSTRUCT<double>;

/** Vectors of a tenth of the disk. */
constexpr int kLength = support::SmallDisk::bytes / 10 / sizeof(double);
constexpr int kTooMany = 12;

constexpr char kFullText[] = "\nFails to be created. Probably due to insufficient disk space.";

class SetOnAFullDisk : public ::testing::Test {
protected:
  void SetUp() override {
    if (!disk.mounted()) GTEST_SKIP() << "no small file system to be had here";
  }
  long filesOnDisk() { return std::distance(std::filesystem::directory_iterator(disk.path()), {}); }
  /** A file of the set's form that is all hole behind its head. */
  std::string sparse(int vectors) {
    support::writeBytes(disk.file("sparse"), raw(vectors, kLength));
    support::truncateTo(disk.file("sparse"),
                        8 + sizeof(double) * static_cast<std::size_t>(vectors) * kLength);
    return disk.file("sparse");
  }

  support::SmallDisk disk;
  support::Environment place{"TMPDIR", disk.path().c_str()};
};

TEST_F(SetOnAFullDisk, IsToldWhenItIsMadeAndLeavesNothing) {
  Set set;
  Told told;
  const auto said = support::capture(
      [&] { told = toldBy([&] { set.Allocate(2, kTooMany, kLength, nullptr); }); });

  EXPECT_EQ(told, (Told{24, 5}));
  EXPECT_NE(said.err.find("Temporary File : " + disk.path() + "/ZRLVS"), std::string::npos);
  EXPECT_NE(said.err.find(kFullText), std::string::npos);
  EXPECT_FALSE(set.isValid());
  EXPECT_EQ(filesOnDisk(), 0);
}

TEST_F(SetOnAFullDisk, IsToldWhenItGrowsAndStaysAsItWas) {
  const Dense<double> values = randomDense<double>(3, kLength);
  Set set(2, 3, kLength, nullptr);
  for (int j = 0; j < 3; ++j)
    std::copy_n(values[static_cast<std::size_t>(j)].begin(), kLength,
                set.GetVector(j, nullptr)->Adr(0));
  Told told;

  const auto said =
      support::capture([&] { told = toldBy([&] { set.Resize(kTooMany, nullptr); }); });

  EXPECT_EQ(told, (Told{24, 5}));
  EXPECT_NE(said.err.find(kFullText), std::string::npos);
  EXPECT_TRUE(set.isValid());
  EXPECT_EQ(set.getDataFileSize(), 3 * kLength * sizeof(double));
  EXPECT_TRUE(contentOf(set) == values);
  set.Resize(8, nullptr);
  EXPECT_EQ(set.GetVal(kLength - 1, 7), 0);
}

TEST_F(SetOnAFullDisk, TakesStoresIntoPlaceThatItHas) {
  Set set(2, 5, kLength, nullptr);
  disk.fillUp("filler");

  set.MapAllBlocks();
  for (int j = 0; j < 5; ++j)
    set[j]->Init(j + 1, 0, -1);
  set.UnmapAllBlocks();

  for (int j = 0; j < 5; ++j)
    EXPECT_EQ(set.GetVal(kLength - 1, j), j + 1);
}

TEST_F(SetOnAFullDisk, IsToldWhenItIsWrittenThere) {
  std::vector<double> data(static_cast<std::size_t>(kTooMany) * kLength, 7.5);
  Set set(kTooMany, kLength, data.data());
  const auto writing = [&](auto write) {
    FILE* const file = std::fopen(disk.file("out").c_str(), "w+b");
    std::fputs("what was there", file);
    const Told told = toldBy([&] { write(file); });
    std::fclose(file);
    EXPECT_EQ(support::bytesOf(disk.file("out")).substr(0, 14), "what was there");
    std::filesystem::remove(disk.file("out"));
    return told;
  };

  EXPECT_EQ(writing([&](FILE* file) { set.Write(file); }), (Told{22, 0}));
  EXPECT_EQ(writing([&](FILE* file) { set.Dump(file); }), (Told{35, 0}));
  EXPECT_EQ(writing([&](FILE* file) { set.WriteT(file, true); }), (Told{22, 0}));
  EXPECT_EQ(writing([&](FILE* file) { set.WriteT(file, false); }), (Told{35, 0}));
}

TEST_F(SetOnAFullDisk, OverAFileOfHolesIsAnErrorAndNoSignal) {
  const std::string path = sparse(kTooMany);
  std::wstring name = toWide(path);
  disk.fillUp("filler");
  Set mapped, resident;
  mapped.Read(name.c_str(), 0, 2, true, 0, 0, 0);
  resident.Read(name.c_str(), 0, 2, false, 0, 0, 0);

  EXPECT_EQ(toldBy([&] { mapped.MapBlock(2, 4); }), (Told{13, 5}));
  EXPECT_EQ(toldBy([&] { resident.SetVal(kLength - 1, 3, 1.0); }), (Told{22, 0}));

  EXPECT_EQ(resident.GetVal(kLength - 1, 3), 0);
  std::filesystem::remove(disk.file("filler"));
  mapped.SetVal(1, 2, 5);
  EXPECT_EQ(mapped.GetVal(1, 2), 5);
}

} // namespace
