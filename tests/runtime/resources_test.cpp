// Where message texts come from.
#include "runtime/fixture.h"

namespace runtime_test {

class Resources : public Messages {
protected:
  Resources() : working(directory.path()) {
    tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
    tool().setMessageTypeFilter(0, LOG);
    tool().setMessageTypeFilter(0, LOG_RECORD);
    tool().setVerbosityLevel(-1, LOG);
    tool().setVerbosityLevel(-1, LOG_RECORD);
  }
  std::string built() const {
    std::string name;
    tool().BuildResourcesFilename(name);
    return name;
  }
  // The first line that the streams got.
  std::string report() {
    EXPECT_EQ(tool().Initialize(), -1);
    EXPECT_FALSE(tool().isInitialized());
    return noting.lines.empty() ? "" : noting.lines.front();
  }

  support::TempDirectory directory;
  support::WorkingDirectory working;
};

TEST_F(Resources, NobodyWhoReadsNeedsNone) {
  tool().setMessageStreamCtrl(&devNull, ALL_STREAMS);
  EXPECT_EQ(tool().Initialize(), 0);
  EXPECT_TRUE(tool().isInitialized());
}

TEST_F(Resources, OneReaderIsEnoughToNeedThem) {
  tool().setMessageStreamCtrl(&devNull, SCREEN);
  tool().setMessageStreamCtrl(nullptr, LOG);
  EXPECT_EQ(tool().Initialize(), -1);
  tool().setMessageStreamCtrl(nullptr, LOG_RECORD);
  EXPECT_EQ(tool().Initialize(), 0) << "null is the screen's controller";
}

TEST_F(Resources, NameIsBuiltFromDirectoryAndLanguage) {
  EXPECT_EQ(tool().setResourcesDir("dir/sub", 2), 0);
  EXPECT_EQ(built(), "dir/sub/qx2.msb");
  EXPECT_EQ(tool().setResourcesDir(std::string(2000, 'd'), 2), 0);
  EXPECT_EQ(built(), std::string(1023, 'd')) << "cut at its buffer";
}

TEST_F(Resources, DirectoryMayComeFromTheEnvironment) {
  const support::Environment variable("ZAREL_TEST_DIR", "/res");
  EXPECT_EQ(tool().setResourcesDirByEnv("ZAREL_TEST_DIR", 1), 0);
  EXPECT_EQ(built(), "/res/qx1.msb");

  const support::Environment unset("ZAREL_TEST_DIR", nullptr);
  tool().setResourcesDirByEnv("ZAREL_TEST_DIR", 1);
  EXPECT_EQ(built(), " /qx1.msb") << "unset is one blank";
}

TEST_F(Resources, FileThatDoesNotExistIsRefused) {
  tool().setResourcesDir("keep", 0);
  const Captured c = capture([] { EXPECT_EQ(tool().setResourcesFilename("none.msb", 3), -1); });
  EXPECT_EQ(c.err, "Resource filename none.msb does not exist.");
  EXPECT_EQ(built(), "keep/qx3.msb") << "the language is stored first";
}

TEST_F(Resources, DirectoryOfTheFileBecomesTheirs) {
  const std::string file = directory.file("any.msb");
  support::writeBytes(file, "");
  EXPECT_EQ(tool().setResourcesFilename(file, 4), 0);
  EXPECT_EQ(built(), directory.file("qx4.msb"));

  tool().setResourcesDir("keep", 0);
  EXPECT_EQ(tool().setResourcesFilename("any.msb", 5), 0);
  EXPECT_EQ(built(), "keep/qx5.msb") << "a name without directory leaves it";
}

TEST_F(Resources, WithoutAnyTheReportTellsWhatWasMissing) {
  EXPECT_EQ(report(), "0 2 Programming error: resources file is not specified.");
  std::string text;
  EXPECT_EQ(C_MessageTool::getMessage(static_cast<E_MessageCode_t>(5), text, nullptr, defaultKey),
            -1);
  EXPECT_EQ(text, "MessageTool is not initialized! Cannot get message ID=5.");
}

TEST_F(Resources, ReportNamesTheFile) {
  tool().setResourcesDir("dir", 1);
  EXPECT_EQ(report(), "0 2 Resources file 'dir/qx1.msb' not found.");
}

TEST_F(Resources, ReportNamesTheVariable) {
  const support::Environment variable("ZAREL_TEST_DIR", "/res");
  tool().setResourcesDirByEnv("ZAREL_TEST_DIR", 1);
  EXPECT_EQ(report(), "0 2 Resources file '/res/qx1.msb' not found. ZAREL_TEST_DIR = /res");
}

TEST_F(Resources, ReportTellsAnEmptyVariable) {
  const support::Environment variable("ZAREL_TEST_DIR", "");
  tool().setResourcesDirByEnv("ZAREL_TEST_DIR", 1);
  EXPECT_EQ(report(), "0 2 Resources file '/qx1.msb' not found. ZAREL_TEST_DIR is not specified.");
}

TEST_F(Resources, WorkingDirectoryIsSearchedInOrder) {
  for (const char* name : {"lum0.msb", "qx0.msb", "zarel0.msb"}) {
    support::writeBytes(name, "");
    noting.lines.clear();
    EXPECT_EQ(report(), std::string("0 4 Programming error: resources file is not specified."
                                    "\nFound file '") +
                            name + "': loading and continuing.");
    EXPECT_EQ(noting.lines[1], "0 2 Cannot load messages database: load failed");
    dropTools();
    tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
    tool().setMessageTypeFilter(0, LOG);
    tool().setMessageTypeFilter(0, LOG_RECORD);
    tool().setVerbosityLevel(-1, LOG);
    tool().setVerbosityLevel(-1, LOG_RECORD);
  }
}

TEST_F(Resources, DirectoryInPlaceOfAFileIsAnInvalidName) {
  tool().setResourcesFilename(directory.path(), 0);
  EXPECT_EQ(report(), "0 2 Cannot load messages database: invalid filename");
}

// The retry takes the name of language 0, which is not there: the name is what is told.
TEST_F(Resources, FailedLoadIsRetriedInLanguageZero) {
  support::writeBytes("qx2.msb", "");
  tool().setResourcesDir(".", 2);
  EXPECT_EQ(report(), "0 2 Cannot load messages database: invalid filename");
  EXPECT_EQ(built(), "./qx0.msb");
}

} // namespace runtime_test
