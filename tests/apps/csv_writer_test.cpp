#include "csv.h"

#include "app_support.h"

#include <cmath>

using namespace app;

namespace {

class CsvWriting : public apptest::InFolder {};

TEST_F(CsvWriting, QuotesOnlyWhatNeedsIt) {
  OutputFile output(path("o.csv"), false);
  CsvWriter writer(output);

  writer.header({"a", "b,c", "d\"e", "f\ng", "#h", " i", ""});
  writer.flush();
  output.commit();

  EXPECT_EQ(read("o.csv"), "a,\"b,c\",\"d\"\"e\",\"f\ng\",\"#h\",\" i\",\n");
}

TEST_F(CsvWriting, NumbersAreShortestRoundTrips) {
  OutputFile output(path("o.csv"), false);
  CsvWriter writer(output, ';');

  writer.field(0.1);
  writer.field(1.0 / 3);
  writer.field(std::nan(""));
  writer.endRow();
  writer.flush();
  output.commit();

  EXPECT_EQ(read("o.csv"), "0.1;0.3333333333333333;nan\n");
}

TEST_F(CsvWriting, WhatIsWrittenReadsBack) {
  {
    OutputFile output(path("o.csv"), false);
    CsvWriter writer(output);
    writer.header({"x \"1\"", "y,z"});
    for (int i = 0; i < 100000; ++i) {
      writer.field(std::sin(i));
      writer.field(std::exp(i % 700));
      writer.endRow();
    }
    writer.flush();
    output.commit();
  }

  CsvReader reader(path("o.csv"));

  EXPECT_EQ(reader.names(), (std::vector<std::string>{"x \"1\"", "y,z"}));
  for (int i = 0; i < 100000; ++i) {
    ASSERT_TRUE(reader.next());
    ASSERT_EQ(reader.number(0), std::sin(i));
    ASSERT_EQ(reader.number(1), std::exp(i % 700));
  }
  EXPECT_FALSE(reader.next());
}

} // namespace
