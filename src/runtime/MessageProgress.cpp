// Progress reports.
#include <zarel/C_MessageTool.h>

#include <cstdio>

#include "runtime/access.h"
#include "runtime/fail.h"
#include "runtime/format.h"
#include "runtime/keys.h"

namespace Zarel {

namespace {

C_ZarelMessage progressMessage(const std::string& text, E_VerbosityLevel_enum level) {
  return C_ZarelMessage("", "", 0, std::string(defaultKey), text, E_MsgProgress, level, 0,
                        ALL_STREAMS);
}

C_ZarelMessage progressMessage(E_MessageCode_t code, E_VerbosityLevel_enum level) {
  return C_ZarelMessage("", "", 0, code, E_MsgProgress, level, 0, ALL_STREAMS);
}

// Shows a progress on one stream. `stop` tells that the others must not be served any more.
int show(C_MessageTool& tool, const std::string& text, int value, E_MessageStream_enum stream,
         bool& stop) {
  C_MessageStreamCtrl* ctrl = MessageToolAccess::controller(tool, stream);
  const auto set = [&](FILE*) {
    return ctrl && ctrl->AppSetProgress(text, value, stream) != 0 ? -1 : 0;
  };
  if (stream != LOG) return set(nullptr);
  stop = true; // until the log turns out to open
  return MessageToolAccess::withLog(tool, [&](FILE* log) {
    stop = false;
    return set(log);
  });
}

} // namespace

void MessageToolAccess::openProgress(C_MessageTool& tool, int max) {
  tool._progressMax = max;
  tool._progressOpen = true;
  tool._progressStopped = false;
}

void MessageToolAccess::closeProgress(C_MessageTool& tool) {
  tool._progressOpen = false;
  tool._progressValue = 0;
}

int MessageToolAccess::progressValue(C_MessageTool& tool, int value) {
  if (value >= 0) tool._progressValue = value;
  return tool._progressValue;
}

int C_MessageTool::OpenProgress(int max, const std::string& text) {
  return OpenProgress(max, progressMessage(text, 0));
}

int C_MessageTool::OpenProgress(int max, E_MessageCode_t code) {
  return OpenProgress(max, progressMessage(code, 0));
}

int C_MessageTool::OpenProgress(int max, const C_ZarelMessage& message) {
  C_MessageTool* tool = Instance(message.getKey());
  if (!tool) return -1;
  MessageToolAccess::openProgress(*tool, max);
  const E_MessageStream_enum stream = message.getMessageStream();
  int result = 0;
  if (tool->MessageActive(message, stream)) {
    const int own = stream == ALL_STREAMS ? SCREEN : stream;
    C_MessageStreamCtrl* ctrl = MessageToolAccess::controller(*tool, own);
    if (ctrl && ctrl->AppOpenProgress() != 0) result = -1;
  }
  return SetProgress(0, message) == 0 ? result : -1;
}

int C_MessageTool::SetProgress(int value, const std::string& text, E_VerbosityLevel_enum level) {
  return SetProgress(value, progressMessage(text, level));
}

int C_MessageTool::SetProgress(int value, E_MessageCode_t code, E_VerbosityLevel_enum level) {
  return SetProgress(value, progressMessage(code, level));
}

// The text is taken before the copy learns of a stop: controllers see the caller's words even
// then. Hosts tell a stop by `ProgressStopped`.
int C_MessageTool::SetProgress(int value, const C_ZarelMessage& message) {
  C_MessageTool* tool = Instance(message.getKey());
  if (!tool) return -1;
  C_ZarelMessage copy = message;
  if (!tool->MessageActive(copy, copy.getMessageStream())) {
    MessageToolAccess::progressValue(*tool, value);
    return 0;
  }
  std::string text;
  int result = MessageToolAccess::textOf(copy, text);
  const int shown = MessageToolAccess::progressValue(*tool, value);
  if (MessageToolAccess::stopped(*tool)) copy.Set(std::string("Processing stopped..."));
  bool stop = false;
  forEachStream(copy.getMessageStream(), [&](E_MessageStream_enum stream) {
    if (stop || !tool->MessageActive(copy, stream)) return;
    if (show(*tool, text, shown, stream, stop) != 0) result = -1;
  });
  return result;
}

int C_MessageTool::SetProgressArg(int value, const char* format, E_VerbosityLevel_enum level, ...) {
  std::va_list args;
  va_start(args, level);
  const std::string text = formatted16384(format, args);
  va_end(args);
  return SetProgress(value, text, level);
}

int C_MessageTool::CloseProgress(const std::string& key) {
  if (!HasInstance(key)) return 0;
  C_MessageTool& tool = *Instance(key);
  int result = 0;
  forEachStream(ALL_STREAMS, [&](int stream) {
    C_MessageStreamCtrl* ctrl = MessageToolAccess::controller(tool, stream);
    if (ctrl && ctrl->AppCloseProgress() != 0) result = -1;
  });
  MessageToolAccess::closeProgress(tool);
  return result;
}

bool C_MessageTool::ProgressStopped(const std::string& key) {
  return HasInstance(key) && MessageToolAccess::stopped(*Instance(key));
}

int C_MessageTool::AppOpenProgress() {
  return 0;
}
int C_MessageTool::AppCloseProgress() {
  return 0;
}

int C_MessageTool::AppSetProgress(const std::string& text, int value, E_MessageStream_enum stream) {
  if (!_progressOpen) return traced();
  if (stream != SCREEN) return 0;
  const auto percent = static_cast<float>(value * 100.0 / _progressMax);
  const int printed = std::printf(" %4.1f%% %s\n", static_cast<double>(percent), text.c_str());
  return std::fflush(stdout) != 0 || printed < 0 ? -1 : 0;
}

C_DevNullCtrl::~C_DevNullCtrl() = default;
int C_DevNullCtrl::AppHandleMessage(const std::string&, E_MessageType_enum, E_MessageStream_enum,
                                    FILE*) {
  return 0;
}
int C_DevNullCtrl::AppOpenProgress() {
  return 0;
}
int C_DevNullCtrl::AppSetProgress(const std::string&, int, E_MessageStream_enum) {
  return 0;
}
int C_DevNullCtrl::AppCloseProgress() {
  return 0;
}

} // namespace Zarel
