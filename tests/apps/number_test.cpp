#include "number.h"

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace app;

namespace {

double parsed(const std::string& text) {
  double value = -77;
  EXPECT_EQ(parseNumber(text, value), NumberStatus::ok) << text;
  return value;
}

NumberStatus statusOf(const std::string& text) {
  double value = 0;
  return parseNumber(text, value);
}

TEST(Number, ReadsWhatPeopleAndProgramsWrite) {
  EXPECT_EQ(parsed("1"), 1.0);
  EXPECT_EQ(parsed("-2.5e-3"), -0.0025);
  EXPECT_EQ(parsed("+4"), 4.0);
  EXPECT_EQ(parsed(" 7\t"), 7.0);
  EXPECT_EQ(parsed(".5"), 0.5);
  EXPECT_EQ(parsed("1E3"), 1000.0);
  EXPECT_EQ(parsed("5e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(Number, RefusesText) {
  for (const char* text : {"", " ", "abc", "1x", "1 2", "0x10", "--1", "+-1", "1,5", "1e", "e5"})
    EXPECT_EQ(statusOf(text), NumberStatus::notANumber) << text;
}

TEST(Number, TellsNotFiniteFromOutOfRange) {
  for (const char* text : {"nan", "NaN", "inf", "-INF", "infinity"})
    EXPECT_EQ(statusOf(text), NumberStatus::notFinite) << text;
  EXPECT_EQ(statusOf("1e400"), NumberStatus::outOfRange);
  EXPECT_EQ(statusOf("-1e400"), NumberStatus::outOfRange);
}

TEST(Number, LeavesTheValueAloneWhenItRefuses) {
  double value = 3;

  parseNumber("1e400", value);
  parseNumber("text", value);

  EXPECT_EQ(value, 3);
}

TEST(Number, WholeNumbersTakeNoFraction) {
  long long value = 0;
  EXPECT_EQ(parseInteger("12", value), NumberStatus::ok);
  EXPECT_EQ(value, 12);
  EXPECT_EQ(parseInteger("1.5", value), NumberStatus::notANumber);
  EXPECT_EQ(parseInteger("1e3", value), NumberStatus::notANumber);
  EXPECT_EQ(parseInteger("99999999999999999999", value), NumberStatus::outOfRange);
}

TEST(Number, RoundTripsEveryBit) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100000; ++i) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const double back = parsed(numberText(value));
    ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << numberText(value);
  }
}

TEST(Number, WritesTheShortestForm) {
  EXPECT_EQ(numberText(0.1), "0.1");
  EXPECT_EQ(numberText(-0.0), "-0");
  EXPECT_EQ(numberText(1e23), "1e+23");
  EXPECT_EQ(numberText(100), "100");
  EXPECT_EQ(numberText(std::nan("")), "nan");
  EXPECT_EQ(numberText(-std::nan("")), "nan");
  EXPECT_EQ(numberText(-INFINITY), "-inf");
}

TEST(Number, NeverListensToTheLocale) {
  const char* former = std::setlocale(LC_ALL, nullptr);
  const std::string kept = former ? former : "C";
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"})
    std::setlocale(LC_ALL, name);

  EXPECT_EQ(parsed("1.5"), 1.5);
  EXPECT_EQ(numberText(1.5), "1.5");
  EXPECT_EQ(roundedText(1.5), "1.5");

  std::setlocale(LC_ALL, kept.c_str());
}

TEST(Number, PartsAreTrimmed) {
  std::vector<std::string> parts;
  forEachPart(" a, b ,,c", ',', [&](std::string_view part) { parts.emplace_back(part); });
  EXPECT_EQ(parts, (std::vector<std::string>{"a", "b", "", "c"}));
}

} // namespace
