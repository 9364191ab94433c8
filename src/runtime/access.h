// What the bodies of this room may do to a tool beyond its interface.
#ifndef ZAREL_RUNTIME_ACCESS_H
#define ZAREL_RUNTIME_ACCESS_H

#include <string>

#include <zarel/C_MessageTool.h>

namespace Zarel {

struct MessageToolAccess {
  // The text of a number from the database of a tool; throws 104 if there is none.
  static std::string lookUp(C_MessageTool& tool, E_MessageCode_t code, char** args);
  // The same through the key; what fails, for whatever reason, yields the failure text.
  static std::string lookUpOrFailure(const std::string& key, E_MessageCode_t code, char** args);
  static std::string failureText(E_MessageCode_t code);

  static C_MessageStreamCtrl* controller(C_MessageTool& tool, int stream);
  static FILE* log(C_MessageTool& tool) { return tool._log; }
  // The text that a message is handled with: its own, that of its number, or one blank. -1 when
  // the number has none; the text then says so.
  static int textOf(const C_ZarelMessage& message, std::string& text);
  // Opens the log for the stream LOG and calls `use` with it; closes the log whatever happens.
  template <class Use>
  static int withLog(C_MessageTool& tool, Use use);

  static void openProgress(C_MessageTool& tool, int max);
  static void closeProgress(C_MessageTool& tool);
  static int progressValue(C_MessageTool& tool, int value);
  static bool stopped(const C_MessageTool& tool) { return tool._progressStopped; }
};

constexpr int numberOfStreams = 3;

// Calls `use(stream)` for the streams that `stream` stands for: itself, or all three.
template <class Use>
void forEachStream(E_MessageStream_enum stream, Use use) {
  if (stream == ALL_STREAMS) {
    for (int k = 0; k < numberOfStreams; ++k)
      use(static_cast<E_MessageStream_enum>(k));
  } else if (stream >= SCREEN && stream <= LOG_RECORD) {
    use(stream);
  }
}

template <class Use>
int MessageToolAccess::withLog(C_MessageTool& tool, Use use) {
  struct Closer {
    C_MessageTool& tool;
    ~Closer() { tool.closeLogFile(); }
  };
  if (const int result = tool.openLogFile()) return result;
  const Closer closer{tool};
  return use(tool._log);
}

} // namespace Zarel

#endif
