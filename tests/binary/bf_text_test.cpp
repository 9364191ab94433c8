// Texts on a stream.
#include <cwchar>
#include <thread>

#include <zarel/zarelmem.h>

#include "binary/fixture.h"
#include "support/FailingAllocation.h"

namespace binary_test {

class BfText : public BinaryFile {
protected:
  // Reads a narrow text; "<null>" for a null pointer.
  std::string readText(int expected) {
    char* text = &unset;
    EXPECT_EQ(BF_fread_str(file, &text), expected);
    const std::string result = text ? text : "<null>";
    zarelmem_free(text, __FILE__, __LINE__);
    return result;
  }

  std::wstring readWide(int expected) {
    wchar_t* text = nullptr;
    EXPECT_EQ(BF_fread_tstr(file, &text), expected);
    const std::wstring result = text ? text : L"<null>";
    zarelmem_free(text, __FILE__, __LINE__);
    return result;
  }

  char unset = 0;
};

TEST_F(BfText, NarrowTextIsALengthAndItsBytes) {
  EXPECT_EQ(BF_fwrite_str(file, "abc"), 0);
  EXPECT_EQ(bytes(), hex("03000000") + "abc");

  rewind();
  EXPECT_EQ(readText(0), "abc");
}

TEST_F(BfText, EmptyTextComesBackAsNull) {
  EXPECT_EQ(BF_fwrite_str(file, ""), 0);
  EXPECT_EQ(bytes(), hex("00000000"));

  rewind();
  EXPECT_EQ(readText(0), "<null>");
}

TEST_F(BfText, LengthOfAnExceptionIsBigEndian) {
  AddFileException(file);
  BF_fwrite_str(file, "ab");
  EXPECT_EQ(bytes(), hex("00000002") + "ab");

  rewind();
  EXPECT_EQ(readText(0), "ab");
}

TEST_F(BfText, LengthsThatCannotBeAreRefused) {
  for (const char* length : {"ffffffff", "00000080", "04000000", "ffffff7f"}) {
    hold(hex(length) + "abc");
    EXPECT_EQ(readText(-1), "<null>") << length;
  }
  hold(hex("0100"));
  EXPECT_EQ(readText(-1), "<null>");
}

TEST_F(BfText, APromiseThatTheFileCannotKeepCostsNoMemory) {
  hold(hex("ffffff7f") + "abc");
  char* text = nullptr;

  // An allocation of two gigabytes would succeed on this platform; that none is made shows in
  // that not even the first one, which would fail, is asked for.
  const support::FailingAllocation failing(1);
  const int result = BF_fread_str(file, &text);

  EXPECT_FALSE(support::FailingAllocation::happened());
  EXPECT_EQ(result, -1);
  EXPECT_EQ(text, nullptr);
}

TEST_F(BfText, NullsAreRefusedWithATrace) {
  char* text = nullptr;
  wchar_t* wide = nullptr;
  EXPECT_EQ(BF_fwrite_str(nullptr, "a"), -1);
  EXPECT_EQ(BF_fwrite_str(file, nullptr), -1);
  EXPECT_EQ(BF_fwrite_tstr(nullptr, L"a"), -1);
  EXPECT_EQ(BF_fwrite_tstr(file, nullptr), -1);
  EXPECT_EQ(BF_fread_str(nullptr, &text), -1);
  EXPECT_EQ(BF_fread_str(file, nullptr), -1);
  EXPECT_EQ(BF_fread_tstr(nullptr, &wide), -1);
  EXPECT_EQ(BF_fread_tstr(file, nullptr), -1);
  EXPECT_EQ(traces, 8);
}

TEST_F(BfText, FailedWriteGoesUnnoticed) {
  FILE* full = std::fopen("/dev/full", "wb");
  if (!full) GTEST_SKIP() << "no /dev/full";

  EXPECT_EQ(BF_fwrite_str(full, "text"), 0);
  EXPECT_EQ(BF_fwrite_tstr(full, L"text"), 0);

  std::fclose(full);
}

TEST_F(BfText, WideTextIsALengthAndSixteenBitUnits) {
  EXPECT_EQ(BF_fwrite_tstr(file, L"a\x20ac"), 0);
  EXPECT_EQ(bytes(), hex("02000000 6100 ac20"));

  rewind();
  EXPECT_EQ(readWide(0), L"a\x20ac");
}

TEST_F(BfText, WideTextOfAnExceptionIsBigEndian) {
  AddFileException(file);
  BF_fwrite_tstr(file, L"a\x20ac");
  EXPECT_EQ(bytes(), hex("00000002 0061 20ac"));

  rewind();
  EXPECT_EQ(readWide(0), L"a\x20ac");
}

// U+1F600 is the pair d83d de00 in UTF-16.
TEST_F(BfText, CharactersBeyondSixteenBitsAreTwoUnits) {
  const std::wstring face = {L'x', wchar_t(0x1F600), L'y'};

  BF_fwrite_tstr(file, face.c_str());
  EXPECT_EQ(bytes(), hex("04000000 7800 3dd8 00de 7900"));

  rewind();
  EXPECT_EQ(readWide(0), face);
}

TEST_F(BfText, UnitsThatFormNoPairStay) {
  hold(hex("03000000 3dd8 6100 00de"));

  EXPECT_EQ(readWide(0), (std::wstring{wchar_t(0xD83D), L'a', wchar_t(0xDE00)}));
}

TEST_F(BfText, LongWideTextSurvivesItsStages) {
  std::wstring text(255, L'a');
  for (int k = 0; k < 300; ++k)
    text.push_back(wchar_t(0x10000 + k));

  BF_fwrite_tstr(file, text.c_str());
  rewind();

  EXPECT_EQ(bytes().size(), 4u + 2 * (255 + 600));
  EXPECT_EQ(readWide(0), text);
}

TEST_F(BfText, EmptyAndBrokenWideTexts) {
  BF_fwrite_tstr(file, L"");
  EXPECT_EQ(bytes(), hex("00000000"));
  rewind();
  EXPECT_EQ(readWide(0), L"<null>");
  for (const char* broken : {"ffffffff", "02000000 6100 61", "ffffff7f 6100"}) {
    hold(hex(broken));
    EXPECT_EQ(readWide(-1), L"<null>") << broken;
  }
}

// A pipe cannot tell how much it holds: the memory grows with what arrives.
TEST_F(BfText, TextsArriveThroughPipes) {
  const std::string text(300000, 'p');
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* in = fdopen(ends[0], "rb");
  FILE* out = fdopen(ends[1], "wb");
  std::thread writer([&] {
    BF_fwrite_str(out, text.c_str());
    const int huge = 0x7fffffff;
    BF_fwrite_int(out, &huge, 1);
    std::fclose(out);
  });

  char *read = nullptr, *none = nullptr;
  EXPECT_EQ(BF_fread_str(in, &read), 0);
  EXPECT_EQ(BF_fread_str(in, &none), -1);

  writer.join();
  EXPECT_EQ(std::string(read ? read : ""), text);
  EXPECT_EQ(none, nullptr);
  zarelmem_free(read, __FILE__, __LINE__);
  std::fclose(in);
}

TEST_F(BfText, FailingAllocationsEndInMinusOne) {
  BF_fwrite_str(file, "narrow");
  BF_fwrite_tstr(file, L"wide");

  const long failed = support::forEachFailingAllocation([this] {
    char* narrow = nullptr;
    wchar_t* wide = nullptr;
    rewind();
    const int first = BF_fread_str(file, &narrow);
    EXPECT_EQ(first == 0, narrow != nullptr);
    CBF_fseek64(file, 10, SEEK_SET);
    const int second = BF_fread_tstr(file, &wide);
    EXPECT_EQ(second == 0, wide != nullptr);
    zarelmem_free(narrow, __FILE__, __LINE__);
    zarelmem_free(wide, __FILE__, __LINE__);
  });

  EXPECT_EQ(failed, 3);
}

TEST_F(BfText, MultiplatformTextIsAWidthAndUnits) {
  wchar_t read[3] = {};

  EXPECT_EQ(BF_fwrite_multiplatform_char(file, L"abc", 3), 0);
  EXPECT_EQ(bytes(), hex("02000000 6100 6200 6300"));

  rewind();
  EXPECT_EQ(BF_fread_multiplatform_char(file, read, 3), 0);
  EXPECT_EQ(std::wstring(read, 3), L"abc");
}

TEST_F(BfText, MultiplatformWidthOneHasTwoByteUnitsAllTheSame) {
  hold(hex("01000000 6100 6200"));
  wchar_t read[2] = {};

  EXPECT_EQ(BF_fread_multiplatform_char(file, read, 2), 0);

  EXPECT_EQ(std::wstring(read, 2), L"ab");
}

TEST_F(BfText, MultiplatformWidthBelowOneReadsNothingMore) {
  for (const char* width : {"00000000", "fbffffff"}) {
    hold(hex(width) + hex("6100"));
    wchar_t read[1] = {L'?'};
    EXPECT_EQ(BF_fread_multiplatform_char(file, read, 1), 0);
    EXPECT_EQ(read[0], L'?');
    EXPECT_EQ(CBF_ftell64(file), 4);
  }
}

// Of 4-byte characters the 16-bit units are taken, so that a text ends after its first character.
TEST_F(BfText, MultiplatformWidthAboveTwoEndsAtTheFirstEmptyUnit) {
  hold(hex("04000000 61000000 62000000 63000000 7f"));
  wchar_t read[3] = {L'?', L'?', L'?'};

  EXPECT_EQ(BF_fread_multiplatform_char(file, read, 3), 0);

  EXPECT_EQ(std::wstring(read, 3), std::wstring(L"a\0\0", 3));
  EXPECT_EQ(CBF_ftell64(file), 16);
}

TEST_F(BfText, MultiplatformWidthAboveTwoCopiesUnitsWhileThereAreAny) {
  hold(hex("04000000 61006200 63006400"));
  wchar_t read[2] = {};

  EXPECT_EQ(BF_fread_multiplatform_char(file, read, 2), 0);

  EXPECT_EQ(std::wstring(read, 2), L"ab");
}

TEST_F(BfText, MultiplatformWidthAboveTwoNeverOverrunsItsRoom) {
  const std::string units(4 * 1000, 'a');
  hold(hex("04000000") + units + "z");
  std::vector<wchar_t> read(1000, L'?');

  EXPECT_EQ(BF_fread_multiplatform_char(file, read.data(), 1000), 0);

  EXPECT_EQ(read[519], wchar_t(0x6161));
  EXPECT_EQ(read[520], L'\0') << "1040 bytes hold 520 units";
  EXPECT_EQ(read[999], L'\0');
  EXPECT_EQ(CBF_ftell64(file), 4 + 4000);
}

TEST_F(BfText, MultiplatformHugeWidthIsNoHarm) {
  hold(hex("ffffff7f 6100"));
  wchar_t read[2] = {L'?', L'?'};

  EXPECT_EQ(BF_fread_multiplatform_char(file, read, 2), 0) << "the read is not checked";
  EXPECT_EQ(std::wstring(read, 2), std::wstring(L"a\0", 2));
}

TEST_F(BfText, MultiplatformFailures) {
  wchar_t text[2] = {};
  EXPECT_EQ(BF_fread_multiplatform_char(nullptr, text, 1), -1);
  EXPECT_EQ(BF_fread_multiplatform_char(file, nullptr, 1), -1);
  EXPECT_EQ(BF_fread_multiplatform_char(file, text, 0), -1);
  EXPECT_EQ(BF_fwrite_multiplatform_char(nullptr, text, 1), -1);
  EXPECT_EQ(BF_fwrite_multiplatform_char(file, nullptr, 1), -1);
  EXPECT_EQ(BF_fwrite_multiplatform_char(file, text, 0), -1);
  EXPECT_EQ(traces, 6);

  hold(hex("0200"));
  EXPECT_EQ(BF_fread_multiplatform_char(file, text, 1), -1);
  hold(hex("02000000 6100"));
  EXPECT_EQ(BF_fread_multiplatform_char(file, text, 2), -1);
  FILE* full = std::fopen("/dev/full", "wb");
  if (full) {
    EXPECT_EQ(BF_fwrite_multiplatform_char(full, text, 1), -1);
    std::fclose(full);
  }
}

} // namespace binary_test
