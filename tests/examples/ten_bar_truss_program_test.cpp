// The simulation as a program: files in, files out.
#include "app_support.h"
#include "truss.h"

#include <sstream>
#include <sys/wait.h>

namespace {

class TenBarTrussProgram : public apptest::InFolder {
protected:
  int run(const std::string& arguments) const {
    const std::string command = "'" TEN_BAR_TRUSS "' " + arguments + " 2>'" + path("err") + "'";
    return WEXITSTATUS(std::system(command.c_str()));
  }

  static std::vector<std::vector<double>> numbers(const std::string& text) {
    std::vector<std::vector<double>> rows;
    std::istringstream lines(text);
    std::string line, cell;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
      rows.emplace_back();
      std::istringstream cells(line);
      while (std::getline(cells, cell, ','))
        rows.back().push_back(std::stod(cell));
    }
    return rows;
  }
};

const char* const header = "a1,a2,a3,a4,a5,a6,a7,a8,a9,a10\n";

TEST_F(TenBarTrussProgram, TellsHowItIsCalled) {
  EXPECT_EQ(run("--help >'" + path("out") + "'"), 0);
  EXPECT_EQ(read("out").substr(0, 21), "usage: ten_bar_truss ");
  EXPECT_EQ(run("--nonsense"), 2);
  EXPECT_NE(read("err").find("--help"), std::string::npos);
}

TEST_F(TenBarTrussProgram, WritesARowOfResultsForEachPoint) {
  write("p.csv", std::string(header) + "10,10,10,10,10,10,10,10,10,10\n5,6,7,8,9,10,11,12,13,14\n");

  ASSERT_EQ(run("'" + path("p.csv") + "' '" + path("r.csv") + "'"), 0) << read("err");

  EXPECT_EQ(read("r.csv").substr(0, 34), "weight,max_stress,tip_displacement");
  const auto rows = numbers(read("r.csv"));
  ASSERT_EQ(rows.size(), 2u);
  const truss::Response r = truss::analyse({5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
  EXPECT_EQ(rows[1], (std::vector<double>{r.weight, r.maxStress(), r.tipDisplacement()}));
}

TEST_F(TenBarTrussProgram, SamplesAreSeededAndInTheirBounds) {
  ASSERT_EQ(run("--sample 50 --seed 3 --bounds 6 9 > '" + path("a") + "'"), 0);
  ASSERT_EQ(run("--seed 3 --sample 50 --bounds 6 9 > '" + path("b") + "'"), 0);
  ASSERT_EQ(run("--sample 50 --seed 4 --bounds 6 9 > '" + path("c") + "'"), 0);

  EXPECT_EQ(read("a"), read("b"));
  EXPECT_NE(read("a"), read("c"));
  const auto rows = numbers(read("a"));
  ASSERT_EQ(rows.size(), 50u);
  for (const auto& row : rows) {
    ASSERT_EQ(row.size(), 13u);
    for (int k = 0; k < 10; ++k)
      EXPECT_TRUE(row[k] >= 6 && row[k] <= 9);
  }
}

TEST_F(TenBarTrussProgram, WrongInputIsRefused) {
  write("short.csv", std::string(header) + "1,2,3\n");
  write("text.csv", std::string(header) + "1,2,3,4,5,6,7,8,9,x\n");
  write("header.csv", "b1,a2\n1,2\n");
  write("zero.csv", std::string(header) + "1,2,3,4,5,6,7,8,9,0\n");
  const std::string out = " '" + path("r.csv") + "'";
  EXPECT_EQ(run("'" + path("short.csv") + "'" + out), 2);
  EXPECT_EQ(run("'" + path("text.csv") + "'" + out), 2);
  EXPECT_EQ(run("'" + path("header.csv") + "'" + out), 2);
  EXPECT_EQ(run("'" + path("nothing.csv") + "'" + out), 2);
  EXPECT_EQ(run("'" + path("zero.csv") + "'" + out), 1);
  EXPECT_EQ(run(""), 2);
  EXPECT_EQ(run("--sample 0"), 2);
  EXPECT_EQ(run("--sample 3 --seed 0"), 2);
  EXPECT_EQ(run("--sample 3 --bounds 5 5"), 2);
  EXPECT_EQ(run("--sample"), 2);
  EXPECT_EQ(run("--smaple 3"), 2);
  EXPECT_FALSE(exists("r.csv"));
}

} // namespace
