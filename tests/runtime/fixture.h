// Tools of their own for each test, a controller that notes what it gets, and the error box.
#ifndef TESTS_RUNTIME_FIXTURE_H
#define TESTS_RUNTIME_FIXTURE_H

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zarel/C_MessageTool.h>
#include <zarel/C_Trace.h>
#include <zarel/erreur.h>

#include "support/Capture.h"
#include "support/Files.h"

namespace runtime_test {

using namespace Zarel;
using support::capture;
using support::Captured;

// Notes each call as a line: "stream type text", "open", "progress stream value text", "close".
class NotingCtrl : public C_MessageStreamCtrl {
public:
  std::vector<std::string> lines;
  int result = 0;

  int AppHandleMessage(const std::string& text, E_MessageType_enum type,
                       E_MessageStream_enum stream, FILE* log) override {
    lines.push_back(std::to_string(stream) + " " + std::to_string(type) + " " + text +
                    (log ? " +log" : ""));
    return result;
  }
  int AppOpenProgress() override { return note("open"); }
  int AppSetProgress(const std::string& text, int value, E_MessageStream_enum stream) override {
    return note("progress " + std::to_string(stream) + " " + std::to_string(value) + " " + text);
  }
  int AppCloseProgress() override { return note("close"); }

private:
  int note(const std::string& line) {
    lines.push_back(line);
    return result;
  }
};

inline std::vector<std::string> boxes;
inline void noteBox(const char* title, const char* text) {
  boxes.push_back(std::string(title) + ": " + text);
}

constexpr const char* defaultKey = "DefaultMessageTool";

// Every test begins and ends without any tool and with no message variable set.
class Messages : public testing::Test {
protected:
  Messages() : noVerbosity("ZAREL_VERBOSITY", nullptr), noScopes("ZAREL_DEBUG_SCOPES", nullptr) {
    boxes.clear();
    box = zarel_setErrorBox(noteBox);
    dropTools();
  }
  ~Messages() override {
    SetXternalPrint(nullptr);
    dropTools();
    zarel_setErrorBox(box);
  }

  static void dropTools() {
    for (const char* key : {defaultKey, "own", "other"})
      if (C_MessageTool::HasInstance(key)) delete C_MessageTool::Instance(key);
  }
  static C_MessageTool& tool(const std::string& key = defaultKey) {
    return *C_MessageTool::Instance(key);
  }
  // A tool that is initialized because nobody reads its texts, with `noting` put in afterwards.
  C_MessageTool& initialized(const std::string& key = defaultKey) {
    C_MessageTool& t = tool(key);
    t.setMessageStreamCtrl(&devNull, ALL_STREAMS);
    EXPECT_EQ(t.Initialize(), 0);
    t.setMessageStreamCtrl(&noting, ALL_STREAMS);
    return t;
  }
  static C_ZarelMessage message(const std::string& text, E_MessageType_enum type = E_MsgInfo,
                                int level = 0, int scope = 0,
                                E_MessageStream_enum stream = ALL_STREAMS) {
    return C_ZarelMessage("f", "file.cpp", 7, std::string(defaultKey), text, type, level, scope,
                          stream);
  }

  C_DevNullCtrl devNull;
  NotingCtrl noting;

private:
  support::Environment noVerbosity, noScopes;
  zarel_ErrorBox box;
};

} // namespace runtime_test

#endif
