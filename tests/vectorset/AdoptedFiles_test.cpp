// Files that become the data of a set where they lie.
#include <zarel/bf.h>

#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/text.h"
#include "vectorset/files.h"

using namespace vectorset;
using Zarel::C_VSTRUCT;

namespace {

TEST(AdoptedFile, IsNotReadBeforeAVectorIsUsed) {
  const Dense<double> values = randomDense<double>(4, 1000);
  ByteFile file(fileOf(values, 1000));
  C_VSTRUCT<double> set;
  {
    const support::FailingCall counting(0, "read");
    set.Read(file.stream(), 2, true, 0, 0, 0);
    EXPECT_EQ(support::FailingCall::count(), 2); // the two counts
  }
  {
    const support::FailingCall counting(0, "read");
    file.moveTo(8);
    set.Read(file.stream(), 2, true, 4, 1000, 0);
    EXPECT_EQ(support::FailingCall::count(), 0);
  }
  EXPECT_FALSE(set.isMapped(2));
  EXPECT_NE(set.MapBlock(2, 2), 0U);
  EXPECT_EQ(set[2]->GetVal(999), values[2][999]);
}

/** A file of a set that is open for reading only. */
class ReadOnlyFile : public ::testing::Test {
protected:
  ReadOnlyFile() : path_(folder_.file("set")), name_(Zarel::toWide(path_)) {
    support::writeBytes(path_, bytes_);
    stream_ = std::fopen(path_.c_str(), "rb");
  }
  ~ReadOnlyFile() override { std::fclose(stream_); }
  void adopt(C_VSTRUCT<double>& set, bool map) {
    lseek(fileno(stream_), 0, SEEK_SET);
    set.Read(stream_, 2, map, 0, 0, 0);
  }

  const Dense<double> values_ = randomDense<double>(3, 10);
  const std::string bytes_ = fileOf(values_, 10);
  const support::TempDirectory folder_;
  const std::string path_;
  std::wstring name_;
  FILE* stream_ = nullptr;
};

TEST_F(ReadOnlyFile, IsMappedByTheNameThatWasPreset) {
  C_VSTRUCT<double> set;
  for (int again = 0; again < 2; ++again) {
    set.setDataFileName(name_);
    adopt(set, true);

    EXPECT_EQ(set.getDataFileName(), name_);
    EXPECT_EQ(contentOf(set), values_);
  }
  set.SetVal(0, 0, 77);
  set.Release(true);
  EXPECT_EQ(support::bytesOf(path_).substr(8, 8), raw(77.0));
}

TEST_F(ReadOnlyFile, WithoutANameCannotBeMapped) {
  C_VSTRUCT<double> set;
  adopt(set, true);
  EXPECT_EQ(set.getDataFileName(), L"");
  EXPECT_EQ(codeOf([&] { set.MapBlock(0, 0); }), 13);
}

TEST_F(ReadOnlyFile, IsRestoredByThePresetNameToo) {
  C_VSTRUCT<double> set;
  set.setDataFileName(name_);
  set.Restore(nullptr, stream_, 2, 0, 0);
  EXPECT_EQ(set.getDataFileName(), name_);
  EXPECT_EQ(contentOf(set), values_);
}

TEST_F(ReadOnlyFile, ThatDoesNotFitMemoryIsMappedByThePresetName) {
  C_VSTRUCT<double> set;
  set.setDataFileName(name_);
  {
    const BlockLimit limit(200); // the values are 240 bytes
    set.Read(stream_, 1, true, 0, 0, 0);
  }
  EXPECT_EQ(set.getCoreMode(), 2);
  EXPECT_EQ(set.getDataFileName(), name_);
  EXPECT_EQ(contentOf(set), values_);
}

TEST_F(ReadOnlyFile, LeavesItsNameToNoNewFile) {
  for (bool release : {true, false})
    for (bool map : {true, false}) {
      C_VSTRUCT<double> set;
      set.setDataFileName(name_);
      adopt(set, map);
      EXPECT_EQ(set.getDataFileName(), name_);

      if (release) set.Release(true);
      set.Allocate(2, 2, 2, nullptr);

      EXPECT_NE(set.getDataFileName(), name_);
      EXPECT_EQ(support::bytesOf(path_), bytes_);
    }
  EXPECT_EQ(support::bytesOf(path_), bytes_);
}

TEST_F(ReadOnlyFile, LeavesItsNameToNoNewFileAfterAFailureEither) {
  C_VSTRUCT<double> set;
  set.setDataFileName(name_);
  lseek(fileno(stream_), 0, SEEK_END);
  EXPECT_EQ(codeOf([&] { set.Read(stream_, 2, true, 0, 0, 0); }), 21);

  set.Allocate(2, 2, 2, nullptr);

  EXPECT_NE(set.getDataFileName(), name_);
  EXPECT_EQ(support::bytesOf(path_), bytes_);
}

TEST_F(ReadOnlyFile, ReadIntoCoreLeavesAPresetNameForTheNextFile) {
  const std::wstring next = Zarel::toWide(folder_.file("next"));
  C_VSTRUCT<double> set;
  set.setDataFileName(next);
  set.Read(stream_);

  set.Allocate(2, 2, 2, nullptr);

  EXPECT_EQ(set.getDataFileName(), next);
}

TEST(AdoptedFile, TakesWhatTheSetStores) {
  Dense<double> values = randomDense<double>(4, 10);
  ByteFile file(fileOf(values, 10));
  C_VSTRUCT<double> mapped, resident;
  mapped.Read(file.stream(), 2, true, 0, 0, 0);
  file.moveTo(0);
  resident.Read(file.stream(), 2, false, 0, 0, 0);

  mapped.SetVal(3, 1, 77);
  mapped.UnmapAllBlocks();
  resident.SetVal(4, 2, 78);

  values[1][3] = 77;
  values[2][4] = 78;
  EXPECT_EQ(file.bytes(), fileOf(values, 10));
}

TEST(AdoptedFile, RestoredByNameMayGrowAndIsRemoved) {
  const Dense<double> values = randomDense<double>(2, 10);
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(values, 10));
  std::wstring name = Zarel::toWide(path);
  C_VSTRUCT<double> set;
  set.Restore(name.data(), 0ULL, 2, 0, 0);

  set.Resize(3, nullptr);

  EXPECT_EQ(set.GetVal(9, 1), values[1][9]);
  EXPECT_EQ(set.GetVal(9, 2), 0);
  set.UnmapAllBlocks();
  EXPECT_EQ(support::bytesOf(path).size(), 8 + 30 * sizeof(double));
  const int descriptor = set.getDataFileDescriptor();
  set.Release(true);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(isOpen(descriptor));
  CBF_close64(descriptor);
}

TEST(AdoptedFile, ThatWasOpenedByNameLeavesNoLitterInAnewSet) {
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(randomDense<double>(2, 10), 10));
  const long before = openDescriptors();
  {
    C_VSTRUCT<double> set;
    for (bool map : {true, false, true})
      set.Read(Zarel::toWide(path).c_str(), 0, 2, map, 0, 0, 0);
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_TRUE(std::filesystem::exists(path));
}

} // namespace
