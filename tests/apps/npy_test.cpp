// Heads of .npy files, as NumPy writes them and as it does not.
#include "svd/npy.h"

#include "app_support.h"
#include "snapshot_files.h"

#include <gmock/gmock.h>

using app::NpyHead;
using apptest::failureOf;
using apptest::npyDictionary;
using apptest::npyFile;
using ::testing::HasSubstr;

namespace {

NpyHead headOf(const std::string& dictionary) {
  return app::parseNpyHead(npyFile(dictionary, ""), "a.npy");
}

TEST(Npy, TellsTypeOrderShapeAndWhereTheNumbersBegin) {
  const NpyHead head = headOf(npyDictionary(true, 30, 4));

  EXPECT_EQ(head.type, "<f8");
  EXPECT_TRUE(head.columnOrder);
  EXPECT_EQ(head.shape, (std::vector<long long>{30, 4}));
  EXPECT_EQ(head.dataOffset, 128u);
}

TEST(Npy, TakesKeysInAnyOrderAndEitherQuote) {
  const NpyHead head = headOf("{\"shape\":(7,),\"fortran_order\":False,'descr':\"<f8\"}");

  EXPECT_FALSE(head.columnOrder);
  EXPECT_EQ(head.shape, (std::vector<long long>{7}));
}

TEST(Npy, ReadsTheWiderLengthOfLaterVersions) {
  const std::string dictionary = npyDictionary(false, 2, 3);
  for (char version : {'\x02', '\x03'}) {
    std::string bytes = std::string("\x93NUMPY") + version + '\0';
    bytes += apptest::bytesOf<std::uint32_t>({static_cast<std::uint32_t>(dictionary.size())});
    const NpyHead head = app::parseNpyHead(bytes + dictionary, "a.npy");

    EXPECT_EQ(head.shape, (std::vector<long long>{2, 3}));
    EXPECT_EQ(head.dataOffset, 12 + dictionary.size());
  }
}

TEST(Npy, KnowsItsFirstBytes) {
  EXPECT_TRUE(app::isNpy("\x93NUMPY and more"));
  EXPECT_FALSE(app::isNpy("\x93NUMP"));
  EXPECT_FALSE(app::isNpy(""));
}

TEST(Npy, RefusesWhatIsNoHead) {
  for (const char* dictionary :
       {"", "{", "{}", "{'descr': '<f8'}", "{'descr' '<f8'}", "{'descr': '<f8",
        "{'descr': [('a', '<f8')], 'fortran_order': False, 'shape': (2,)}",
        "{'descr': '<f8', 'fortran_order': Maybe, 'shape': (2,)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (-2,)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (2x)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (99999999999999999999,)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (2 3)}",
        "{'descr': '<f8' 'fortran_order': False, 'shape': (2,)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (2,), 'shape': (3,)}",
        "{'descr': '<f8', 'descr': '<f8', 'fortran_order': False, 'shape': (2,)}",
        "{'descr': '<f8', 'fortran_order': False, 'fortran_order': True, 'shape': (2,)}",
        "{'descr': '<f8', 'fortran_order': False, 'shape': (2,), 'more': 1}"}) {
    const app::Failure failure = failureOf([&] { headOf(dictionary); });
    EXPECT_EQ(failure.code, app::ExitCode::badInput) << dictionary;
    EXPECT_EQ(failure.place.file, "a.npy");
  }
}

TEST(Npy, RefusesEveryHeadThatIsCutOff) {
  const std::string whole = npyFile(npyDictionary(true, 3, 2), "");
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(failureOf([&] { app::parseNpyHead(whole.substr(0, length), "a"); }).code,
              app::ExitCode::badInput);
}

TEST(Npy, RefusesUnknownVersions) {
  std::string bytes = npyFile(npyDictionary(true, 3, 2), "");
  bytes[6] = 9;

  EXPECT_THAT(failureOf([&] { app::parseNpyHead(bytes, "a"); }).what(), HasSubstr("version 9"));
}

TEST(Npy, SurvivesAnyChangedByte) {
  const std::string whole = npyFile(npyDictionary(true, 3, 2), "");
  for (std::size_t at = 0; at < whole.size(); ++at)
    for (int bit = 0; bit < 8; ++bit) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(bytes[at] ^ (1 << bit));
      try {
        EXPECT_LE(app::parseNpyHead(bytes, "a").dataOffset, bytes.size());
      } catch (const app::Failure& failure) {
        EXPECT_EQ(failure.code, app::ExitCode::badInput);
      }
    }
}

} // namespace
