#include "app_support.h"
#include "refine/journal.h"

#include <csignal>
#include <cstring>
#include <gmock/gmock.h>
#include <sys/resource.h>

using app::Json;
using apptest::failureOf;
using namespace app::refine;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

class RefineJournal : public apptest::InFolder {
protected:
  std::vector<int> records() {
    std::vector<int> seen;
    Journal journal(path("j"), [&](const Json& r) { seen.push_back(r.at("n").get<int>()); });
    torn_ = journal.wasTorn();
    return seen;
  }
  void append(int n) {
    Journal journal(path("j"), [](const Json&) {});
    journal.append({{"n", n}});
  }
  bool torn_ = false;
};

TEST_F(RefineJournal, ChecksumIsTheOneOfTheStandardsCheckString) {
  EXPECT_EQ(crc32("123456789"), 0xCBF43926u); // the check value of CRC-32/ISO-HDLC
  EXPECT_EQ(crc32(""), 0u);
}

TEST_F(RefineJournal, LineIsChecksumBlankTextLineFeed) {
  // crc32 of {"n":1} by Python's zlib.crc32
  EXPECT_EQ(journalLine({{"n", 1}}), "d44b3b7e {\"n\":1}\n");
}

TEST_F(RefineJournal, RecordsComeBackInOrder) {
  for (int n : {3, 1, 2})
    append(n);

  EXPECT_THAT(records(), ElementsAre(3, 1, 2));
  EXPECT_FALSE(torn_);
}

TEST_F(RefineJournal, LastLineCutAtAnyByteIsDroppedAndTheRestStays) {
  append(1);
  append(2);
  const std::string whole = read("j");
  const std::size_t first = whole.find('\n') + 1;

  for (std::size_t length = first; length < whole.size(); ++length) {
    write("j", whole.substr(0, length));
    EXPECT_THAT(records(), ElementsAre(1)) << length;
    EXPECT_EQ(torn_, length > first) << length;
    EXPECT_EQ(read("j"), whole.substr(0, first)) << length;
  }
}

TEST_F(RefineJournal, GoesOnBehindATornLine) {
  append(1);
  write("j", read("j") + "12345678 {\"n\":");
  append(2);

  EXPECT_THAT(records(), ElementsAre(1, 2));
}

TEST_F(RefineJournal, DamageBeforeTheLastLineIsRefusedAndNothingIsChanged) {
  append(1);
  append(2);
  append(3);
  const std::string whole = read("j");
  const std::size_t line = whole.find('\n') + 1;

  for (std::size_t at = 0; at < line; ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    write("j", damaged);
    const app::Failure failure = failureOf([&] { records(); });
    EXPECT_EQ(failure.code, app::ExitCode::badInput) << at;
    EXPECT_EQ(failure.place.line, 1) << at;
    EXPECT_EQ(read("j"), damaged) << at;
  }
}

TEST_F(RefineJournal, NumbersComeBackToTheLastBit) {
  const std::vector<double> values{0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308, -0.0, 1e22};
  {
    Journal journal(path("j"), [](const Json&) {});
    journal.append({{"values", values}});
  }
  std::vector<double> back;
  Journal journal(path("j"),
                  [&](const Json& r) { back = r.at("values").get<std::vector<double>>(); });

  ASSERT_EQ(back.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    EXPECT_EQ(std::memcmp(&back[i], &values[i], sizeof(double)), 0) << values[i];
}

TEST_F(RefineJournal, FailedWriteIsReportedAndLeavesTheFormerRecords) {
  append(1);
  signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  {
    Journal journal(path("j"), [](const Json&) {});
    const rlimit small{20, former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const app::Failure failure = failureOf([&] { journal.append({{"text", "longer than 20"}}); });
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(failure.code, app::ExitCode::io);
    journal.append({{"n", 2}});
  }

  EXPECT_THAT(records(), ElementsAre(1, 2));
  EXPECT_FALSE(torn_);
}

} // namespace
