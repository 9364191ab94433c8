// The binary form of lists.
#include <unistd.h>

#include "collections/fixture.h"
#include "system/calls.h"

namespace collections_test {

using support::hex;

class ListFile : public Collections {
protected:
  ListFile() : name(directory.file("list")), file(std::fopen(name.c_str(), "w+b")) {
    LTE_ins_fin(list, text("ab"), 1);
    LTE_ins_fin(list, text("c"), 2);
    LTE_ins_fin(list, text("def"), 1);
  }
  ~ListFile() override {
    std::fclose(file);
    LTE_free(list, nullptr);
  }

  std::string bytes() const { return support::bytesOf(name); }
  void hold(const std::string& content) {
    support::writeBytes(name, content);
    std::rewind(file);
  }

  support::TempDirectory directory;
  std::string name;
  FILE* file;
  LTE* list = LTE_creer(nullptr);
};

const std::string threeTexts = "03000000 01000000 02000000 6162  02000000 01000000 63"
                               "01000000 03000000 646566";

TEST_F(ListFile, IsACountThenTypesAndObjects) {
  EXPECT_EQ(LTE_boutput(file, list, writeText, -1), 0);
  EXPECT_EQ(bytes(), hex(threeTexts));
  std::rewind(file);
  EXPECT_EQ(LIS_boutput(file, list->first, writeText, -1), 0);
  EXPECT_EQ(bytes(), hex(threeTexts)) << "both forms are the same on file";
}

TEST_F(ListFile, TypeSelectsNodes) {
  EXPECT_EQ(LTE_boutput(file, list, writeText, 1), 0);
  EXPECT_EQ(bytes(), hex("02000000 01000000 02000000 6162 01000000 03000000 646566"));
}

TEST_F(ListFile, EmptyListIsZero) {
  EXPECT_EQ(LIS_boutput(file, nullptr, writeText, -1), 0);
  EXPECT_EQ(bytes(), hex("00000000"));
  std::rewind(file);
  LIS* read = nullptr;
  EXPECT_EQ(LIS_binput(file, &read, readText), 0);
  EXPECT_EQ(read, nullptr);
}

TEST_F(ListFile, ReadsBehindWhatTheListHas) {
  hold(hex(threeTexts));
  LIS* nodes = nullptr;
  LIS_ins_fin(&nodes, LIS_copy_str("first", nullptr), 9);

  EXPECT_EQ(LIS_binput(file, &nodes, readText), 0);

  EXPECT_EQ(textsOf(nodes), (Texts{"first", "ab", "c", "def"}));
  EXPECT_EQ(nodes->next->next->type, 2);
  EXPECT_TRUE(isSound(nodes));
  LIS_free(&nodes, LIS_free_str);
}

TEST_F(ListFile, ReadsIntoAHead) {
  hold(hex(threeTexts));
  LTE* const read = LTE_creer(nullptr);

  EXPECT_EQ(LTE_binput(file, read, readText), 0);

  EXPECT_EQ(textsOf(read->first), (Texts{"ab", "c", "def"}));
  EXPECT_TRUE(isSound(read));
  LTE_free(read, LIS_free_str);
}

TEST_F(ListFile, MissingStreamsAndFunctionsAreReported) {
  LIS* nodes = nullptr;
  EXPECT_EQ(LIS_binput(nullptr, &nodes, readText), -1);
  EXPECT_EQ(LTE_binput(nullptr, list, readText), -1);
  EXPECT_EQ(errors(), Texts(2, "There is no list to read"));
  EXPECT_EQ(LIS_boutput(nullptr, list->first, writeText, -1), -1);
  EXPECT_EQ(LTE_boutput(nullptr, list, writeText, -1), -1);
  EXPECT_EQ(LIS_boutput(file, list->first, nullptr, -1), -1);
  EXPECT_EQ(LTE_boutput(file, list, nullptr, -1), -1);
  EXPECT_EQ(LIS_binput(file, nullptr, readText), -1);
  EXPECT_EQ(LIS_binput(file, &nodes, nullptr), -1);
  EXPECT_EQ(LTE_binput(file, nullptr, readText), -1);
  EXPECT_EQ(LTE_binput(file, list, nullptr), -1);
  EXPECT_EQ(errors(), Texts(8, "An argument is missing"));
}

// Every shorter file fails and leaves the nodes that it held whole.
TEST_F(ListFile, CutFilesFail) {
  const std::string whole = hex(threeTexts);
  for (size_t length = 0; length < whole.size(); ++length) {
    hold(whole.substr(0, length));
    LTE* const read = LTE_creer(nullptr);
    EXPECT_EQ(LTE_binput(file, read, readText), -1) << length;
    EXPECT_EQ(traces(), 1) << length;
    EXPECT_EQ(read->count, length < 14 ? 0 : length < 23 ? 1 : 2) << length;
    EXPECT_TRUE(isSound(read));
    LTE_free(read, LIS_free_str);
  }
}

TEST_F(ListFile, CountsBeyondTheFileFailAndNegativeOnesToo) {
  for (const char* head : {"ffffff7f", "ffffffff", "00000080"}) {
    hold(hex(head));
    LIS* nodes = nullptr;
    EXPECT_EQ(LIS_binput(file, &nodes, readText), -1) << head;
    EXPECT_EQ(nodes, nullptr);
  }
}

TEST_F(ListFile, NegativeCountsAreReported) {
  LIS* nodes = nullptr;
  for (const char* head : {"ffffffff", "00000080"}) {
    hold(hex(head));
    EXPECT_EQ(LIS_binput(file, &nodes, readText), -1) << head;
    std::rewind(file);
    EXPECT_EQ(LTE_binput(file, list, readText), -1) << head;
  }

  EXPECT_EQ(nodes, nullptr);
  EXPECT_EQ(list->count, 3);
  EXPECT_EQ(errors(), Texts(4, "There is no list to read"));
}

TEST_F(ListFile, FailuresAreThoseOfTheFunctionCalled) {
  LIS* nodes = nullptr;
  hold(hex("ffffffff"));
  LIS_binput(file, &nodes, readText);
  std::rewind(file);
  LTE_binput(file, list, readText);
  EXPECT_EQ(blamed(), (Texts{"LIS_binput", "LTE_binput"}));

  hold(hex(threeTexts));
  {
    const support::FailingAllocation failing(1);
    LIS_binput(file, &nodes, readText);
  }
  std::rewind(file);
  {
    const support::FailingAllocation failing(1);
    LTE_binput(file, list, readText);
  }
  EXPECT_EQ(blamed(), (Texts{"LIS_binput", "LTE_binput"}));
}

TEST_F(ListFile, ObjectsThatAreNotThereEndTheReading) {
  hold(hex(threeTexts));
  static int left;
  left = 1;
  const LIS_READ readOnce = [](FILE* stream, int* error) -> void* {
    if (left-- > 0) return readText(stream, error);
    *error = -1;
    return nullptr;
  };
  LIS* nodes = nullptr;
  const auto before = zarel_sum_memsize();

  EXPECT_EQ(LIS_binput(file, &nodes, readOnce), -1);

  EXPECT_EQ(textsOf(nodes), Texts{"ab"});
  LIS_free(&nodes, LIS_free_str);
  EXPECT_EQ(zarel_sum_memsize(), before) << "nor is there a node without its object";
}

TEST_F(ListFile, ObjectsThatAreNotWrittenAreAFailure) {
  static int left;
  left = 1;
  const LIS_WRITE writeOnce = [](FILE* stream, const void* object) {
    return left-- > 0 ? writeText(stream, object) : -1;
  };

  EXPECT_EQ(LTE_boutput(file, list, writeOnce, -1), -1);
  EXPECT_EQ(bytes(), hex("03000000 01000000 02000000 6162 02000000"));
}

TEST_F(ListFile, WithoutMemoryReadsWhatCameBefore) {
  const long failures = failuresWithoutLoss([&] {
    {
      const support::Unharmed unharmed;
      hold(hex(threeTexts));
    }
    LIS* nodes = nullptr;
    const int result = LIS_binput(file, &nodes, readText);
    const support::Unharmed unharmed;
    EXPECT_EQ(result, LIS_length(nodes) == 3 ? 0 : -1);
    LIS_free(&nodes, LIS_free_str);
  });

  EXPECT_GE(failures, 6);
}

// A stream with unflushed words on a full device.
TEST_F(ListFile, FailingFlushIsReportedWithTheSystemsText) {
  FILE* const full = std::fopen("/dev/full", "w");
  ASSERT_NE(full, nullptr);
  const LIS_WRITE buffered = [](FILE* stream, const void*) {
    return std::fputc('x', stream) == 'x' ? 0 : -1;
  };
  const auto former = Zarel::systemCalls().write;
  Zarel::systemCalls().write = [](int, const void*, size_t bytes) {
    return static_cast<ssize_t>(bytes);
  };

  EXPECT_EQ(LTE_boutput(full, list, buffered, -1), -1);

  Zarel::systemCalls().write = former;
  EXPECT_THAT(noting.lines, testing::Contains(testing::StartsWith("0 8 0 LTE_boutput()")));
  EXPECT_EQ(errors(), Texts{"Write error: No space left on device"});
  std::fclose(full);
}

TEST_F(ListFile, FailingWritesAreTraced) {
  static int left;
  const auto former = Zarel::systemCalls().write;
  for (int good = 0; good < 4; ++good) {
    left = good;
    Zarel::systemCalls().write = [](int, const void*, size_t bytes) {
      if (left-- > 0) return static_cast<ssize_t>(bytes);
      errno = EIO;
      return ssize_t{-1};
    };
    const LIS_WRITE writeNumber = [](FILE* stream, const void*) {
      const int number = 1;
      return BF_fwrite_int(stream, &number, 1);
    };
    EXPECT_EQ(LTE_boutput(file, list, writeNumber, -1), -1) << good;
    EXPECT_EQ(traces(), good == 0 ? 1 : 2) << "of the count; of a node and the list";
  }
  Zarel::systemCalls().write = former;
}

} // namespace collections_test
