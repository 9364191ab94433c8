// Procedural reporting.
#include <cstring>

#include <zarel/zarelmem.h>

#include "runtime/fail.h"
#include "runtime/fixture.h"
#include "support/FailingAllocation.h"

namespace runtime_test {

class Procedural : public Messages {
protected:
  using Lines = std::vector<std::string>;
  // A tool that shows its screen stream alone.
  void listen(int level = 0) {
    tool().setMessageStreamCtrl(&noting, ALL_STREAMS);
    tool().setVerbosityLevel(level, SCREEN);
    for (const auto stream : {LOG, LOG_RECORD}) {
      tool().setMessageTypeFilter(0, stream);
      tool().setVerbosityLevel(-1, stream);
    }
  }
};

TEST_F(Procedural, ErreurIsAnErrorAtThePlaceGiven) {
  listen();
  EXPECT_EQ(Erreur("fonction", 12, "a.c", "%d sur %s", 3, "x"), 0);
  EXPECT_EQ(noting.lines, (Lines{"0 2 3 sur x", "0 8 0 fonction(), a.c line 12\n"}));
}

TEST_F(Procedural, WarningIsAWarning) {
  listen();
  EXPECT_EQ(Warning("fonction", 12, "a.c", "%d", 3), 0);
  EXPECT_EQ(noting.lines, (Lines{"0 4 3"}));
}

TEST_F(Procedural, PublicWordsPassAndInternalOnesAreSilentAtFirst) {
  listen();
  EXPECT_EQ(Msg_public("%s", "all"), 0);
  EXPECT_EQ(Msg_interne("%s", "few"), 0);
  EXPECT_EQ(Msg_verbeux(0, "%s", "few"), 0);
  EXPECT_EQ(noting.lines, (Lines{"0 1 all"}));
}

TEST_F(Procedural, InternalWordsPassAtLevelThree) {
  listen(3);
  Msg_interne("%s", "few");
  Msg_verbeux(77, "%s", "scoped");
  switch_debug_scope(77, 1);
  Msg_verbeux(77, "%s", "scoped");
  EXPECT_EQ(noting.lines, (Lines{"0 1 few", "0 1 scoped"}));
}

TEST_F(Procedural, LongTextsAreCut) {
  listen();
  Msg_public("%s", std::string(30000, 'x').c_str());
  EXPECT_EQ(noting.lines[0].size(), 4u + 16383u);
}

int calls = 0;
TEST_F(Procedural, HookSeesTheReports) {
  listen();
  calls = 0;
  SetXternalPrint([](int*) { return ++calls, 0; });
  Erreur("f", 1, "a.c", "%s", "t");
  Warning("f", 1, "a.c", "%s", "t");
  Msg_public("%s", "t");
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(noting.lines, Lines{});
}

TEST_F(Procedural, TraceBeforeAnyInitializeIsABox) {
  listen();
  EXPECT_EQ(fct_Trace("aff_lieu", 33, "src/x.cpp"), -1);
  EXPECT_EQ(boxes, (Lines{"Error: *** We couldn't retrieve the \"last used\" Message Tool !\n"
                          "*** fct_Trace( aff_lieu, 33, src/x.cpp)"}));
  EXPECT_EQ(noting.lines, Lines{}) << "nothing on the streams";
}

TEST_F(Procedural, TraceGoesToTheInitializedTool) {
  initialized();
  EXPECT_EQ(fct_Trace("aff_lieu", 33, "src/x.cpp"), 0);
  EXPECT_EQ(noting.lines[0], "0 8 fct_Trace: aff_lieu(), src/x.cpp line 33");
  EXPECT_EQ(boxes, Lines{});
}

TEST_F(Procedural, TraceFallsBackToTheLastTool) {
  tool();
  initialized("own");
  tool("own");
  EXPECT_EQ(fct_Trace("aff_lieu", 1, "a.c"), 0);
  EXPECT_EQ(noting.lines.size(), 3u);
  EXPECT_EQ(boxes, Lines{});
}

TEST_F(Procedural, TracedGivesMinusOneAndItsOwnPlace) {
  initialized();
  const int line = __LINE__ + 1;
  EXPECT_EQ(Zarel::traced(), -1);
  EXPECT_EQ(noting.lines[0], "0 8 fct_Trace: aff_lieu(), tests/runtime/erreur_test.cpp line " +
                                 std::to_string(line));
}

TEST_F(Procedural, QueriesTellTheScreenOfTheDefaultTool) {
  EXPECT_TRUE(is_externe_on());
  EXPECT_FALSE(is_interne_on());
  EXPECT_TRUE(is_trace_on());
  EXPECT_TRUE(is_warning_on());
  EXPECT_TRUE(is_debug_scope_on(0));
  EXPECT_FALSE(is_verbeux_on(5));

  tool().setVerbosityLevel(3, SCREEN);
  EXPECT_TRUE(is_interne_on());
  tool().setVerbosityLevel(-1, SCREEN);
  EXPECT_FALSE(is_externe_on());
  tool().setMessageTypeFilter(3, SCREEN);
  EXPECT_FALSE(is_trace_on());
  EXPECT_FALSE(is_warning_on());
}

TEST_F(Procedural, SwitchIsOnForOneAlone) {
  EXPECT_EQ(switch_debug_scope(5, 1), 0);
  EXPECT_TRUE(is_debug_scope_on(5));
  EXPECT_FALSE(tool().DebugScopeActive(5, LOG)) << "the screen alone";
  switch_verbeux(5, 2);
  EXPECT_FALSE(is_verbeux_on(5));
  switch_verbeux(5, 1);
  switch_debug_scope(5, 0);
  EXPECT_FALSE(is_verbeux_on(5));
}

TEST_F(Procedural, TextsOfNumbersNeedATool) {
  EXPECT_EQ(MSG_get(5), nullptr);
  EXPECT_EQ(boxes, (Lines{"Error: *** We couldn't retrieve the \"last used\" Message Tool !"}));
  initialized();
  EXPECT_EQ(MSG_get(-1), nullptr);
  EXPECT_EQ(MSG_get_default(5), nullptr) << "no such text";
  EXPECT_EQ(boxes.size(), 1u);
}

// C has no way to catch anything.
TEST_F(Procedural, NothingIsThrownWhereMemoryEnds) {
  listen(3);
  bool thrown = false;
  const auto report = [&](auto call) {
    return support::forEachFailingAllocation(
        [&] {
          try {
            call();
          } catch (...) {
            thrown = true;
          }
        },
        support::FailingAllocation::FromThenOn);
  };

  EXPECT_GT(report([] { Erreur("fonction", 12, "a.c", "%d", 3); }), 0);
  EXPECT_GT(report([] { Warning("fonction", 12, "a.c", "%d", 3); }), 0);
  EXPECT_GT(report([] { Msg_public("%s", "all"); }), 0);
  EXPECT_GT(report([] { Msg_verbeux(0, "%s", "few"); }), 0);
  EXPECT_GT(report([] { fct_Trace("aff_lieu", 1, "a.c"); }), 0);
  EXPECT_GT(report([] { zarelmem_free(MSG_get(11), __FILE__, __LINE__); }), 0);
  EXPECT_FALSE(thrown);
}

TEST_F(Procedural, RemainsOfTheOlderDesignDoNothing) {
  EXPECT_EQ(MSG_load("x"), 0);
  EXPECT_EQ(MSG_load_default("x"), 0);
  EXPECT_EQ(MSG_get_last_id(), 0);
  EXPECT_EQ(Msg_fget(), 0);
  EXPECT_EQ(Msg_fopen("x"), -1);
  MSG_free();
  Msg_fclose();
  Msg_fset(1);
  setErrAff(1);
  setMsgAff(1);
  setWarnAff(1);
}

TEST_F(Procedural, VocabularyHas49Texts) {
  EXPECT_EQ(ZAREL_ERROR_TEXTS, 49);
  for (const char* text : zarel_errorTexts)
    EXPECT_GE(std::strlen(text), 9u);
  EXPECT_STREQ(zarel_errorTexts[0], "Pas d'erreur");
  EXPECT_STREQ(zarel_errorTexts[1], "Erreur inconnue");
  EXPECT_STREQ(zarel_errorTexts[11], "L'adresse de fin d'etape est a zero");
  EXPECT_STREQ(zarel_errorTexts[17],
               "Erreur: tentative d'ecraser un champ d'une etape dans la base");
  EXPECT_STREQ(zarel_errorTexts[24], "Erreur de positionnement du pointeur de fichier");
  EXPECT_STREQ(zarel_errorTexts[37], "Erreur dans la fonction 'strcpy'");
  EXPECT_STREQ(zarel_errorTexts[45],
               "Il n'y a aucun point valide dans l'ensemble des points a traiter");
  EXPECT_STREQ(zarel_errorTexts[48], "Methode non referencee");
}

TEST_F(Procedural, SilentBoxShowsNothing) {
  zarel_setErrorBox(zarel_silentErrorBox);
  const Captured c = capture([] { fct_Trace("aff_lieu", 1, "a.c"); });
  EXPECT_EQ(c.out + c.err, "");
  EXPECT_EQ(zarel_setErrorBox(noteBox), zarel_silentErrorBox);
}

} // namespace runtime_test
