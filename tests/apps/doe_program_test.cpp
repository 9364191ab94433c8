// zarel doe from outside.
#include "program_support.h"

#include <cmath>
#include <gmock/gmock.h>
#include <sys/resource.h>

using apptest::Around;
using apptest::firstLine;
using apptest::numbersOf;
using apptest::Outcome;
using apptest::Words;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

class Doe : public apptest::Program {
protected:
  Outcome doe(const Words& more, const Around& around = {}) {
    Words words{"doe"};
    words.insert(words.end(), more.begin(), more.end());
    return zarel(words, around);
  }

  std::string refused(const Words& words, int code = 2) {
    const Outcome run = doe(words);
    EXPECT_EQ(run.code, code) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith("zarel: error: "));
    return run.err;
  }
};

TEST_F(Doe, WritesPointsOnStandardOutput) {
  const Outcome run = doe({"--factors", "2", "--points", "7"});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(firstLine(run.out), "x1,x2");
  EXPECT_EQ(numbersOf(run.out).size(), 7u);
  EXPECT_THAT(run.err, HasSubstr("7 points of 2 factors: 7 drawn"));
  EXPECT_THAT(run.err, HasSubstr("smallest distance "));
}

TEST_F(Doe, ReportsTheSmallestDistance) {
  const auto document = doe({"--factors", "3", "--points", "9", "--json"}).json();

  const auto rows = document["rows"].get<std::vector<std::vector<double>>>();
  ASSERT_EQ(rows.size(), 9u);
  double smallest = 1e300;
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      smallest = std::min(smallest, std::hypot(rows[i][0] - rows[j][0], rows[i][1] - rows[j][1],
                                               rows[i][2] - rows[j][2]));
  EXPECT_NEAR(document["smallest_distance"].get<double>(), smallest, 1e-14);
  EXPECT_EQ(document["command"], "doe");
  EXPECT_EQ(document["points"], 9);
  EXPECT_EQ(document["values"], "coded");
  EXPECT_TRUE(document["distance_to_others"].is_null());
}

TEST_F(Doe, AFileOfBoundsGivesPhysicalValues) {
  const std::string bounds = write("b.txt", "length=1:3\nload=1000:5000\n");
  const Outcome run = doe({"--bounds", bounds, "--points", "5", "--centre"});

  EXPECT_EQ(firstLine(run.out), "length,load");
  const auto rows = numbersOf(run.out);
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[0], (std::vector<double>{2, 3000}));
  for (const auto& row : rows)
    EXPECT_TRUE(row[0] >= 1 && row[0] <= 3 && row[1] >= 1000 && row[1] <= 5000);
  const auto coded = numbersOf(doe({"--bounds", bounds, "--points", "5", "--coded"}).out);
  for (const auto& row : coded)
    EXPECT_TRUE(std::fabs(row[0]) <= 1 && std::fabs(row[1]) <= 1);
}

TEST_F(Doe, DesignsAreExtendedByKeepingThem) {
  ASSERT_EQ(doe({"--factors", "2", "--points", "5", "-o", path("first.csv")}).code, 0);

  const Outcome run =
      doe({"--factors", "2", "--points", "4", "--keep", path("first.csv"), "--seed", "2"});

  EXPECT_EQ(run.out.substr(0, read("first.csv").size()), read("first.csv"));
  EXPECT_EQ(numbersOf(run.out).size(), 9u);
}

TEST_F(Doe, PointsToStayAwayFromComeFromAStream) {
  Around around;
  around.input = "x1\n1\n";

  const auto document =
      doe({"--factors", "1", "--points", "1", "--away", "-", "--json"}, around).json();

  EXPECT_LT(document["rows"][0][0].get<double>(), -0.99);
  EXPECT_GT(document["distance_to_others"].get<double>(), 1.99);
  EXPECT_EQ(document["stay_away_from"], 1);
}

TEST_F(Doe, TheSeedDecides) {
  const Words words{"--factors", "4", "--points", "6"};
  Words other = words;
  other.insert(other.end(), {"--seed", "9"});

  EXPECT_EQ(doe(words).out, doe(words).out);
  EXPECT_NE(doe(words).out, doe(other).out);
}

TEST_F(Doe, WritesAPicture) {
  const Outcome run =
      doe({"--factors", "3", "--levels", "3", "--svg", path("d.svg"), "-o", path("d.csv")});

  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(read("d.svg"), StartsWith("<?xml"));
  EXPECT_THAT(read("d.svg"), HasSubstr("27 points of 3 factors at 3 levels"));
  EXPECT_THAT(read("d.svg"), ::testing::EndsWith("</svg>\n"));
  EXPECT_EQ(numbersOf(read("d.csv")).size(), 27u);
}

TEST_F(Doe, DesignsThatCannotBeMadeAreRefused) {
  EXPECT_THAT(refused({}), HasSubstr("a design needs factors"));
  EXPECT_THAT(refused({"--factors", "0"}), HasSubstr("between 1 and 1000"));
  EXPECT_THAT(refused({"--factors", "2.5"}), HasSubstr("no whole number"));
  EXPECT_THAT(refused({"--factors", "3", "--levels", "2", "--points", "9"}),
              HasSubstr("8 corners; 9 different points do not fit"));
  EXPECT_THAT(refused({"--factors", "3", "--levels", "-1"}), HasSubstr("--levels"));
  EXPECT_THAT(refused({"--factors", "2", "--points", "10001"}), HasSubstr("--points"));
  EXPECT_THAT(refused({"--factors", "2", "--points", "0"}), HasSubstr("without points"));
  EXPECT_THAT(refused({"--input", "a=2:1"}), HasSubstr("lower bound is not below"));
  EXPECT_THAT(refused({"--factors", "30", "--svg", path("d.svg")}), HasSubstr("20 factors"));
  EXPECT_THAT(refused({"--bounds", write("b.txt", "a=2:1\n")}, 3), HasSubstr("b.txt:1: "));
  EXPECT_THAT(refused({"--bounds", path("none")}, 4), HasSubstr("No such file"));
  EXPECT_EQ(count(), 1) << "only the bounds";
}

TEST_F(Doe, AFailureIsADocumentToo) {
  const Outcome run = doe({"--factors", "1", "--levels", "2", "--points", "3", "--json"});

  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.json()["error"]["exit_code"], 2);
}

TEST_F(Doe, NothingIsOverwrittenUnasked) {
  const std::string points = write("d.csv", "mine"), picture = write("d.svg", "mine");

  refused({"--factors", "2", "-o", points});
  refused({"--factors", "2", "--svg", picture, "-o", path("new.csv")});
  refused({"--factors", "2", "--svg", path("same"), "-o", path("same")});
  refused({"--factors", "2", "--svg", "-"});
  EXPECT_EQ(read("d.csv") + read("d.svg"), "minemine");
  EXPECT_FALSE(exists("new.csv"));

  EXPECT_EQ(doe({"--factors", "2", "-o", points, "--svg", picture, "--force"}).code, 0);
  EXPECT_EQ(firstLine(read("d.csv")), "x1,x2");
}

TEST_F(Doe, APictureGoesToAStream) {
  const Outcome run = doe({"--factors", "2", "--svg", "-", "-o", path("d.csv")});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_THAT(run.out, StartsWith("<?xml"));
}

TEST_F(Doe, FormerFilesOutliveAFileSizeLimit) {
  const std::string points = write("d.csv", "mine"), picture = write("d.svg", "mine");
  Around limited;
  limited.child = [] {
    const rlimit limit{5000, 5000};
    setrlimit(RLIMIT_FSIZE, &limit);
  };

  const Outcome run = doe(
      {"--factors", "2", "--points", "200", "-o", points, "--svg", picture, "--force"}, limited);

  EXPECT_EQ(run.code, 4) << run.err;
  EXPECT_EQ(read("d.csv") + read("d.svg"), "minemine");
  EXPECT_EQ(count(), 2) << "no temporary";
}

TEST_F(Doe, AFullDeviceIsReported) {
  Around full;
  full.outputFile = "/dev/full";
  EXPECT_EQ(doe({"--factors", "2"}, full).code, 4);
  EXPECT_EQ(doe({"--factors", "2", "--json"}, full).code, 4);
  EXPECT_EQ(doe({"--factors", "2", "--svg", "/dev/full"}).code, 4);
}

TEST_F(Doe, OptionsComeFromAFile) {
  const std::string config = write("d.toml", "seed = 4\n[doe]\ninput = [\"a=0:1\", \"b=0:2\"]\n"
                                             "points = 3\nlevels = 5\ncentre = true\n");
  const auto document = zarel({"doe", "--config", config, "--json"}).json();

  EXPECT_EQ(document["seed"], 4);
  EXPECT_EQ(document["levels"], 5);
  EXPECT_EQ(document["points"], 4);
  EXPECT_EQ(document["rows"][0], (std::vector<double>{0.5, 1}));
}

TEST_F(Doe, QuietSaysNothing) {
  EXPECT_EQ(doe({"--factors", "2", "--quiet"}).err, "");
}

} // namespace
