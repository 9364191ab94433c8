#include "console.h"

#include "app_support.h"

#include <gmock/gmock.h>

using namespace app;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

TEST(Console, WritesWordsOnStandardError) {
  CaptureStderr();
  Console console;
  console.note("hello");
  console.warn("odd", "mend it");
  Place place;
  place.file = "f.csv";
  place.line = 3;
  console.error(Failure(ExitCode::badInput, "wrong", "do this", place));
  EXPECT_EQ(GetCapturedStderr(), "hello\n"
                                 "zarel: warning: odd\n       mend it\n"
                                 "zarel: error: f.csv:3: wrong\n       do this\n");
}

TEST(Console, ShowsNoControlCharactersOfOthers) {
  CaptureStderr();
  Console console;
  console.note("a\033[2Jb\nc\x7f\td\xC2\x9B"
               "e\xC3\xA9");
  console.warn("odd", "called \"\r\b\"");
  EXPECT_EQ(GetCapturedStderr(), "a?[2Jb?c?\td??e\xC3\xA9\n"
                                 "zarel: warning: odd\n       called \"??\"\n");
}

TEST(Console, QuietKeepsWarningsAndErrors) {
  CaptureStderr();
  Console console;
  console.setQuiet(true);
  console.note("hello");
  console.warn("odd");
  EXPECT_EQ(GetCapturedStderr(), "zarel: warning: odd\n");
}

TEST(Console, DrawsNoBarOnAFile) {
  CaptureStderr();
  Console console;
  Progress progress(console, "working", 100);
  for (int i = 0; i < 100; ++i)
    progress.update(i);
  progress.finish();
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(Console, DurationsAreForPeople) {
  EXPECT_EQ(duration(0.034), "0.03 s");
  EXPECT_EQ(duration(0.999), "1.0 s");
  EXPECT_EQ(duration(3.24), "3.2 s");
  EXPECT_EQ(duration(125), "2 min 05 s");
  EXPECT_EQ(duration(3600 + 12 * 60), "1 h 12 min");
}

TEST(Place, NamesWhatIsKnown) {
  Place place;
  EXPECT_EQ(place.text(), "");
  place.file = "f.csv";
  EXPECT_EQ(place.text(), "f.csv");
  place.line = 4;
  place.row = 3;
  place.column = 2;
  place.name = "x";
  EXPECT_EQ(place.text(), "f.csv:4: row 3, column 2 (x)");
}

} // namespace
