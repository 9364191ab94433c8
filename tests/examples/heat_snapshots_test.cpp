// The plate against solutions in closed form, and the study from the snapshots to the check.
#include "heat.h"

#include "app_support.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <sys/wait.h>

namespace {

constexpr double pi = 3.14159265358979323846;

heat::Spot cold() {
  heat::Spot spot;
  spot.power = 0;
  return spot;
}

/** How far the slowest mode is from exp(-2 pi^2 t) after a time of 0.05. */
double decayError(int points, int steps) {
  heat::Plate plate(points, 0.05 / steps, cold());
  const double h = plate.spacing();
  for (int j = 0; j < points; ++j)
    for (int i = 0; i < points; ++i)
      plate.temperature()(i, j) = std::sin(pi * (i + 1) * h) * std::sin(pi * (j + 1) * h);
  for (int k = 0; k < steps; ++k)
    EXPECT_EQ(plate.advance(), 0);
  const int middle = points / 2; // an odd number of points has one at the middle
  return std::fabs(plate.temperature()(middle, middle) - std::exp(-2 * pi * pi * 0.05));
}

TEST(HeatPlate, TheSlowestModeDecaysAtItsRate) {
  EXPECT_LE(decayError(63, 64), 2e-4);
}

TEST(HeatPlate, TheErrorFallsWithTheSquareOfStepAndSpacing) {
  const double coarse = decayError(15, 16), fine = decayError(31, 32);

  EXPECT_NEAR(coarse / fine, 4, 0.4);
}

TEST(HeatPlate, ASpotAtRestLeavesAPlateThatIsTheSameOnBothSidesOfTheDiagonal) {
  heat::Spot spot;
  spot.radius = 0; // in the middle
  heat::Plate plate(21, 0.001, spot);
  for (int k = 0; k < 50; ++k)
    plate.advance();
  heat::Field& t = plate.temperature();

  EXPECT_GT(t(10, 10), 0);
  for (int j = 0; j < 21; ++j)
    for (int i = 0; i < 21; ++i) {
      EXPECT_NEAR(t(i, j), t(j, i), 1e-12 * t(10, 10));
      EXPECT_NEAR(t(i, j), t(20 - i, j), 1e-12 * t(10, 10));
      EXPECT_LE(t(i, j), t(10, 10));
    }
}

TEST(HeatPlate, WhatTheSpotBringsIsWhatThePlateHolds) {
  heat::Spot spot;
  spot.radius = 0;
  spot.width = 0.02;
  const double time = 1e-4; // nothing has reached the edge yet
  heat::Plate plate(201, time / 10, spot);
  for (int k = 0; k < 10; ++k)
    plate.advance();
  double held = 0;
  for (int j = 0; j < 201; ++j)
    for (int i = 0; i < 201; ++i)
      held += plate.temperature()(i, j) * plate.spacing() * plate.spacing();

  EXPECT_NEAR(held, spot.power * 2 * pi * spot.width * spot.width * time, 1e-9 * held);
}

class HeatSnapshots : public apptest::InFolder {
protected:
  int run(const std::string& program, const std::string& arguments) const {
    const std::string command =
        "'" + program + "' " + arguments + " >'" + path("out") + "' 2>'" + path("err") + "'";
    return WEXITSTATUS(std::system(command.c_str()));
  }
  int heat(const std::string& arguments) const { return run(HEAT_SNAPSHOTS, arguments); }
  std::string quoted(const std::string& name) const { return "'" + path(name) + "'"; }

  /** 24 x 24 points and as much memory as 15 of 60 snapshots take. */
  void simulate() const {
    ASSERT_EQ(heat("simulate --points 24 --memory 69120 " + quoted("s.set")), 0) << read("err");
  }
  int decompose(const std::string& more) const {
    return run(ZAREL_PROGRAM, "svd " + quoted("s.set") + " --memory 69120 -f -o " +
                                  quoted("b.set") + " --values " + quoted("v.csv") +
                                  " --coefficients " + quoted("c.csv") + " " + more);
  }
  int check() const {
    return heat("check " + quoted("s.set") + " " + quoted("b.set") + " " + quoted("c.csv") + " " +
                quoted("v.csv"));
  }
};

TEST_F(HeatSnapshots, TheFileIsFourTimesTheMemory) {
  simulate();
  const std::string bytes = read("s.set");
  std::int32_t counts[2];
  std::memcpy(counts, bytes.data(), sizeof counts);

  EXPECT_EQ(counts[0], 60);
  EXPECT_EQ(counts[1], 24 * 24);
  EXPECT_EQ(bytes.size(), 8u + 8u * 60 * 24 * 24);
  EXPECT_GE(bytes.size(), 4u * 69120);
}

TEST_F(HeatSnapshots, WhatABasisMissesIsAtMostWhatTheTableSays) {
  simulate();
  for (const char* method : {"", "--method lapack"})
    for (const char* choice : {"-t 1e-2", "-t 1e-4", "-k 5"}) {
      if (std::string(choice) == "-k 5" && *method == '\0') continue; // a table of few values
      ASSERT_EQ(decompose(std::string(choice) + " " + method), 0) << read("err");
      EXPECT_EQ(check(), 0) << read("out") << read("err");
    }
}

TEST_F(HeatSnapshots, TheCheckFindsABasisThatDoesNotFit) {
  simulate();
  ASSERT_EQ(decompose("-t 1e-4"), 0) << read("err");
  std::string bytes = read("b.set");
  bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x55);
  bytes[8 + 7] = 0x40; // the first temperature of the first vector becomes 2 or more
  write("b.set", bytes);

  EXPECT_EQ(check(), 1);
}

TEST_F(HeatSnapshots, DrawsTheFirstVectors) {
  simulate();
  ASSERT_EQ(decompose("-t 1e-2"), 0) << read("err");

  EXPECT_EQ(heat("draw " + quoted("b.set") + " " + quoted("b.svg")), 0) << read("err");
  EXPECT_EQ(read("b.svg").substr(0, 4), "<svg");
}

TEST_F(HeatSnapshots, WrongWordsAndFilesAreTold) {
  EXPECT_EQ(heat(""), 2);
  EXPECT_EQ(heat("simulate --points many --memory 1000 " + quoted("s.set")), 2);
  EXPECT_EQ(heat("simulate --points 10 --memory 1 " + quoted("s.set")), 2);
  EXPECT_EQ(heat("check a b c d"), 1);
  EXPECT_EQ(heat("draw " + quoted("nothing") + " " + quoted("b.svg")), 1);
  const std::int32_t vast[] = {2147483647, 2147483647};
  write("vast.set", {reinterpret_cast<const char*>(vast), sizeof vast});
  EXPECT_EQ(heat("draw " + quoted("vast.set") + " " + quoted("b.svg")), 1);
  EXPECT_NE(read("err").find("vast.set does not hold what its head tells"), std::string::npos);
}

} // namespace
