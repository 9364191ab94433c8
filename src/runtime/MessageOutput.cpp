// The tool as a controller: the standard streams, the log file and the call stack.
#include <zarel/C_MessageTool.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "runtime/access.h"
#include "runtime/fail.h"
#include "runtime/format.h"
#include "system/files.h"
#include "system/text.h"

namespace Zarel {

namespace {

constexpr int traceLevel = 5;
constexpr size_t callStackText = 2048;

// How a type of message looks, and whether the screen has it on standard error.
struct Look {
  E_MessageType_enum type;
  const char* before;
  bool toError;
};

constexpr Look looks[] = {{E_MsgInfo, "", false},
                          {E_MsgError, "*** ", true},
                          {E_MsgWarning, "*** Warning: ", true},
                          {E_MsgCallStack, "", true},
                          {E_MsgProgress, "", false}};

const Look* lookOf(E_MessageType_enum type) {
  for (const Look& look : looks)
    if (look.type == type) return &look;
  return nullptr;
}

int put(FILE* out, const char* before, const std::string& text, char end) {
  return std::fprintf(out, "%s%s%c", before, text.c_str(), end) < 0 ? -1 : 0;
}

int traceStream(FILE* out, const char* stream, E_MessageType_enum type, const std::string& text,
                char end) {
  const auto number = static_cast<int>(type);
  return std::fprintf(out, "AppHandleMessage(%s,%d): %s%c", stream, number, text.c_str(), end) < 0
             ? -1
             : 0;
}

// A log on a full disk is told at the message that did not fit.
int putToLog(FILE* log, const Look& look, const std::string& text, char end) {
  const int result = put(log, look.before, text, end);
  return std::fflush(log) != 0 ? -1 : result;
}

} // namespace

int C_MessageTool::AppHandleMessage(const std::string& text, E_MessageType_enum type,
                                    E_MessageStream_enum stream, FILE* log) {
  if (type == E_MsgNone || stream == ALL_STREAMS || text.empty()) return 0;
  const Look* look = lookOf(type);
  const bool known = stream >= SCREEN && stream <= LOG_RECORD;
  // A stream that is none has no level of its own; the screen's tells whether it is traced.
  const bool traced = _streams[known ? stream : SCREEN].level == traceLevel;
  int result = 0;
  if (traced) {
    static constexpr const char* names[] = {"SCREEN", "LOG", "LOG_RECORD"};
    result = traceStream(known ? stdout : stderr, known ? names[stream] : "UNKNOWN STREAM", type,
                         text, _end);
  }
  if (stream == SCREEN && look)
    result = std::min(result, put(look->toError ? stderr : stdout, look->before, text, _end));
  if (stream == LOG && look && log) result = std::min(result, putToLog(log, *look, text, _end));
  return result;
}

int C_MessageTool::openLogFile() {
  closeLogFile();
  if (_logName.empty()) return 0;
  _log = openShared(_logName, _append ? "a" : "w");
  if (!_log) LogFailed(errno);
  _append = true;
  return 0;
}

// Takes the log's name away first: the warning must not try to open the log again.
void C_MessageTool::LogFailed(int systemError) {
  const std::string name = _logName;
  _logName.clear();
  HandleMessage(_key, textOf("Cannot open file %s for write.", name.c_str()), E_MsgWarning, 0, 0);
  errno = systemError;
  fail(29, 100);
}

int C_MessageTool::closeLogFile() {
  if (_log) std::fclose(_log);
  _log = nullptr;
  return 0;
}

int C_MessageTool::setLogFilename(std::string name, bool append) {
  closeLogFile();
  _logName = std::move(name);
  _append = append;
  return 0;
}

std::string C_MessageTool::GenerateDefaultLogFilename(const std::string& base,
                                                      const std::string& extension) {
  const std::string stem = toUtf8(withoutExtension(toWide(base)));
  const std::string directory = directoryOf(stem);
  const bool usable = directory.empty() || isDirectory(directory);
  return (usable ? stem : fileNameOf(stem)) + extension;
}

int C_MessageTool::BuildCallStackString(const C_ZarelMessage& message, char* buffer) {
  const C_CallStack none{C_CallStack::Empty()};
  const C_CallStack* stack = message.getCallStackFlag()
                                 ? &message.getCallStack()
                                 : GlobalCallstackCollection().GetCurrentCallStack();
  const std::vector<C_Entry>& entries = (stack ? *stack : none).GetStack();
  const C_Entry& place = message.getErrorLocation();
  const auto count = static_cast<int>(entries.size());
  std::string text = textOf("%d %s(), %s line %d\n", count, place.function, place.file, place.line);
  for (int k = count - 1; k >= 0 && text.size() < callStackText; --k) {
    const C_Entry& entry = entries[static_cast<size_t>(k)];
    text += textOf("%d %s(), %s line %d\n", k, entry.function, entry.file, entry.line);
  }
  text.resize(std::min(text.size(), callStackText - 1));
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return 0;
}

int C_MessageTool::HandleCallStack(const C_ZarelMessage& message, E_VerbosityLevel_enum level) {
  C_MessageTool* tool = Instance(message.getKey());
  if (!tool) {
    SafeDisplay("%s\n*** Cannot handle callstack.", "MessageTool is not initialized!");
    return 0;
  }
  char buffer[callStackText] = {};
  tool->BuildCallStackString(message, buffer);
  const std::string text = buffer;
  return MessageToolAccess::withLog(*tool, [&](FILE* log) {
    int result = 0;
    forEachStream(ALL_STREAMS, [&](E_MessageStream_enum stream) {
      if (tool->_streams[stream].level < level) return;
      C_MessageStreamCtrl* ctrl = MessageToolAccess::controller(*tool, stream);
      if (ctrl && ctrl->AppHandleMessage(text, E_MsgCallStack, stream, log) != 0) result = -1;
    });
    return result;
  });
}

} // namespace Zarel
