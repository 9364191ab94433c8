#include "kernel/records.h"

#include <string>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

using namespace kernel;

namespace {

class Errors : public Kernel {};

std::string boxed;
void keepText(const char*, const char* text) {
  boxed += text;
  boxed += '\n';
}

// What a call leaves in the error box, where the traces go while there is no message tool.
template <class F>
std::string traces(F call) {
  boxed.clear();
  const zarel_ErrorBox former = zarel_setErrorBox(keepText);
  call();
  zarel_setErrorBox(former);
  return boxed;
}

TEST_F(Errors, RecordTellsWhereAndWhat) {
  EXPECT_FALSE(LM_v_add(nullptr, nullptr, nullptr, 0, nullptr, &status));
  ASSERT_EQ(LM_error_count(), 1);
  const LM_ERROR_RECORD* const record = LM_error_get(0);
  EXPECT_EQ(record->number, 8);
  EXPECT_STREQ(record->function, "LM_v_add");
  EXPECT_THAT(record->file, testing::EndsWith("src/kernel/vecop.cpp"));
  EXPECT_GT(record->line, 0);
  EXPECT_EQ(LM_error_get(1), nullptr);
  EXPECT_EQ(LM_error_get(-1), nullptr);
}

TEST_F(Errors, StatusIsClearedOnEntryAndSetByAnError) {
  LM_v_sum(nullptr, 0, nullptr, &status);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(LM_global_status(), -1);
  const auto x = vec({1, 2});
  EXPECT_EQ(LM_v_sum(x.get(), 0, nullptr, &status), 3.0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(LM_global_status(), 0);
}

TEST_F(Errors, StatusMayBeNull) {
  EXPECT_EQ(LM_v_sum(nullptr, 0, nullptr, nullptr), 0.0);
  EXPECT_EQ(LM_global_status(), -1);
}

TEST_F(Errors, TheHundredAndFirstDropsTheFirst) {
  for (int k = 1; k <= 100; ++k)
    LM_error("f", k, 1000 + k, "g", 0, nullptr);
  EXPECT_EQ(LM_error_count(), 100);
  EXPECT_EQ(LM_error_get(0)->number, 1);
  LM_error("f", 101, 1101, "g", 0, nullptr);
  EXPECT_EQ(LM_error_count(), 100);
  EXPECT_EQ(LM_error_get(0)->number, 2);
  EXPECT_EQ(LM_error_get(99)->number, 101);
  EXPECT_EQ(LM_error_get(99)->line, 1101);
}

TEST_F(Errors, LongTextsAreCut) {
  const std::string longName(300, 'x');
  LM_error(longName.c_str(), 1, 2, longName.c_str(), 0, nullptr);
  EXPECT_EQ(std::string(LM_error_get(0)->function), std::string(99, 'x'));
  EXPECT_EQ(std::string(LM_error_get(0)->file), std::string(254, 'x'));
}

TEST_F(Errors, TextsThatAreMissingAreEmpty) {
  LM_error(nullptr, 1, 2, nullptr, 0, nullptr);
  EXPECT_STREQ(LM_error_get(0)->message, "") << "there is no message tool to ask";
  EXPECT_STREQ(LM_error_get(0)->function, "");
  EXPECT_STREQ(LM_error_get(0)->file, "");
}

TEST_F(Errors, ModeOneAlsoReports) {
  const auto reported = [this] {
    return support::capture([this] { LM_v_sum(nullptr, 0, nullptr, &status); });
  };
  const auto silent = reported();
  EXPECT_EQ(LM_error_mode(1), 0);
  const auto loud = reported();
  EXPECT_EQ(LM_error_mode(2), 1);
  const auto other = reported();
  EXPECT_EQ(LM_error_mode(0), 2);
  EXPECT_EQ(silent.out + silent.err, "");
  EXPECT_EQ(other.out + other.err, "") << "no other mode than 1 says anything";
  EXPECT_NE(loud.out + loud.err, "") << "Erreur says nothing";
}

// The resize of the output has no memory: its error is kept under its own name.
TEST_F(Errors, FailureOfACalleeIsPassedOn) {
  const auto x = vec({1, 2});
  {
    const support::FailingAllocation failing(1);
    EXPECT_FALSE(LM_v_add(x.get(), x.get(), nullptr, 0, nullptr, &status));
  }
  EXPECT_EQ(status, -1);
  EXPECT_EQ(lastError(), 3);
  EXPECT_STREQ(LM_error_get(0)->function, "LM_v_resize");
}

TEST_F(Errors, FailureOfACalleeLeavesATraceOfTheFixedWord) {
  const auto x = vec({1, 2});
  const std::string said = traces([&] {
    const support::FailingAllocation failing(1);
    LM_v_add(x.get(), x.get(), nullptr, 0, nullptr, &status);
  });
  EXPECT_THAT(said, testing::HasSubstr("*** fct_Trace( aff_lieu, "));
}

TEST_F(Errors, ARefusalLeavesATraceOfTheFunctionAndNoRecord) {
  const std::string said =
      traces([&] { EXPECT_FALSE(LM_bv_get("t", 0, LM_BV_IVEC, 4, 0, nullptr, &status)); });
  EXPECT_THAT(said, testing::HasSubstr("*** fct_Trace( LM_bv_get, "));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(LM_global_status(), -1);
  EXPECT_EQ(LM_error_count(), 0);
}

TEST_F(Errors, AllocationFlagIsGivenBack) {
  EXPECT_EQ(LM_allocation_flag(7), 0);
  EXPECT_EQ(LM_allocation_flag(0), 7);
}

TEST_F(Errors, StartEntryDoesNothing) {
  init_kernel();
  EXPECT_EQ(LM_error_count(), 0);
}

} // namespace
