// Takes the messages that models and lists send to the screen as long as it lives.
#ifndef ZAREL_TESTS_KRIGING_LISTENER_H
#define ZAREL_TESTS_KRIGING_LISTENER_H

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zarel/C_MessageTool.h>

namespace kriging_test {

using Texts = std::vector<std::string>;

/// Lets scope 502 and level 3 through, and nothing of the screen to anybody else.
class Listener : public Zarel::C_MessageStreamCtrl {
public:
  Listener() : tool_(Zarel::C_MessageTool::Instance("DefaultMessageTool")) {
    tool_->setMessageStreamCtrl(this, Zarel::SCREEN);
    letThrough(3, true);
  }
  ~Listener() override {
    tool_->ResetMessageStreamCtrl(Zarel::SCREEN);
    letThrough(0, false);
  }

  void letThrough(int level, bool scope) {
    tool_->setVerbosityLevel(level, Zarel::SCREEN);
    tool_->ActivateDebugScope(502, scope, Zarel::SCREEN);
  }

  int AppHandleMessage(std::string const& text, Zarel::E_MessageType_enum type,
                       Zarel::E_MessageStream_enum stream, FILE*) override {
    if (stream != Zarel::SCREEN) return 0;
    EXPECT_EQ(type, Zarel::E_MsgInfo);
    texts.push_back(text);
    return 0;
  }
  int AppOpenProgress() override { return 0; }
  int AppSetProgress(std::string const&, int, Zarel::E_MessageStream_enum) override { return 0; }
  int AppCloseProgress() override { return 0; }

  /// How many fits at one kernel there were; each has its line.
  int kernelLines() const {
    return static_cast<int>(std::count_if(texts.begin(), texts.end(), isKernelLine));
  }
  /// All but the lines of these fits.
  Texts otherLines() const {
    Texts others;
    std::remove_copy_if(texts.begin(), texts.end(), std::back_inserter(others), isKernelLine);
    return others;
  }

  Texts texts;

private:
  static bool isKernelLine(std::string const& text) { return text.find("   Kernel : ") == 0; }

  Zarel::C_MessageTool* tool_;
};

} // namespace kriging_test

#endif
