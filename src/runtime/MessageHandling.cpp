// The way of a message through a tool.
#include <zarel/C_MessageTool.h>

#include <cstring>
#include <memory>

#include "runtime/access.h"
#include "runtime/fail.h"
#include "runtime/format.h"
#include "runtime/keys.h"
#include "system/box.h"

namespace Zarel {

namespace {

constexpr const char* notInitialized = "MessageTool is not initialized!";
constexpr const char* noFormat = "*** MessageTool: invalid message, empty string in argument!";

C_ZarelMessage plainMessage(const std::string& key, const std::string& text,
                            E_MessageType_enum type, E_VerbosityLevel_enum level, int scope) {
  return C_ZarelMessage("", "", 0, key, text, type, level, scope, ALL_STREAMS);
}

C_ZarelMessage numberedMessage(const std::string& key, E_MessageCode_t code,
                               E_MessageType_enum type, E_VerbosityLevel_enum level) {
  return C_ZarelMessage("", "", 0, key, code, type, level, 0, ALL_STREAMS);
}

int cannotHandle(int code, int type, int level) {
  C_MessageTool::SafeDisplay("%s\n*** Cannot handle message id=%d type=%d level=%d", notInitialized,
                             code, type, level);
  return -1;
}

int sendFormatted(const std::string& key, const char* format, std::va_list args,
                  E_MessageType_enum type, E_VerbosityLevel_enum level, int scope) {
  const std::string text = format && *format ? formatted16384(format, args) : noFormat;
  return C_MessageTool::HandleMessage(plainMessage(key, text, type, level, scope));
}

// Only a message that somebody listens to is worth a look-up.
int sendNumber(const std::string& key, E_MessageCode_t code, char** args, E_MessageType_enum type,
               E_VerbosityLevel_enum level) {
  const C_MessageTool* tool = C_MessageTool::Instance(key);
  if (!tool) return cannotHandle(code, type, level);
  C_ZarelMessage message = numberedMessage(key, code, type, level);
  if (!tool->MessageActive(message, ALL_STREAMS)) return 0;
  std::string text;
  const int found = C_MessageTool::getMessage(code, text, args, key);
  message.Set(text);
  return C_MessageTool::HandleMessage(message) == 0 ? found : -1;
}

// One stream's share of a message.
int deliver(C_MessageTool& tool, const std::string& text, E_MessageType_enum type,
            E_MessageStream_enum stream) {
  C_MessageStreamCtrl* ctrl = MessageToolAccess::controller(tool, stream);
  const auto send = [&](FILE* log) {
    return ctrl && ctrl->AppHandleMessage(text, type, stream, log) != 0 ? -1 : 0;
  };
  return stream == LOG ? MessageToolAccess::withLog(tool, send)
                       : send(MessageToolAccess::log(tool));
}

} // namespace

std::string MessageToolAccess::failureText(E_MessageCode_t code) {
  return Zarel::textOf("MessageDatabase failed to load id %d", static_cast<int>(code));
}

std::string MessageToolAccess::lookUp(C_MessageTool& tool, E_MessageCode_t code, char** args) {
  if (!tool._database) fail(104);
  std::string text;
  tool._database->GetMessage(text, code, args);
  return text;
}

std::string MessageToolAccess::lookUpOrFailure(const std::string& key, E_MessageCode_t code,
                                               char** args) {
  try {
    if (C_MessageTool* tool = C_MessageTool::Instance(key)) return lookUp(*tool, code, args);
  } catch (...) {
    // Told below: the text of a report must not become a failure of its own.
  }
  return failureText(code);
}

int MessageToolAccess::textOf(const C_ZarelMessage& message, std::string& text) {
  text = message.getMessage();
  if (!text.empty()) return 0;
  const E_MessageCode_t code = message.getMessageCode();
  if (code != 0) return C_MessageTool::getMessage(code, text, nullptr, message.getKey());
  text = " ";
  return 0;
}

int C_MessageTool::getMessage(E_MessageCode_t code, std::string& text, char** args,
                              const std::string& key) {
  C_MessageTool* tool = HasInstance(key) ? Instance(key) : nullptr;
  if (!tool || !tool->_initialized) {
    text = notInitialized + textOf(" Cannot get message ID=%d.", static_cast<int>(code));
    return -1;
  }
  try {
    text = MessageToolAccess::lookUp(*tool, code, args);
    return 0;
  } catch (const C_ZarelException&) {
    text = MessageToolAccess::failureText(code);
    return -1;
  }
}

int C_MessageTool::HandleMessage(const C_ZarelMessage& message) {
  const E_MessageType_enum type = message.getMessageType();
  const E_VerbosityLevel_enum level = message.getVerbosityLevel();
  const E_MessageStream_enum stream = message.getMessageStream();
  C_MessageTool* tool = Instance(message.getKey());
  if (!tool) {
    traced();
    return cannotHandle(message.getMessageCode(), type, level);
  }
  if (!tool->MessageActive(message, stream)) return 0;
  std::string text;
  int result = MessageToolAccess::textOf(message, text);
  forEachStream(stream, [&](E_MessageStream_enum one) {
    if (tool->MessageActive(message, one) && deliver(*tool, text, type, one) != 0) result = -1;
  });
  if (type == E_MsgError && HandleCallStack(message, level) != 0) result = -1;
  return result;
}

int C_MessageTool::HandleMessage(C_ZarelException& exception, E_MessageType_enum type,
                                 E_VerbosityLevel_enum level) {
  exception.setMessageType(type);
  exception.setVerbosityLevel(level);
  const std::string key = exception.getKey();
  const E_MessageCode_t code = exception.getExceptionCode();
  const E_MessageCode_t reason = exception.getReasonCode();
  if (!Instance(key)) {
    SafeDisplay("%s\n*** Cannot handle exception code=%d reason=%d type=%d level=%d",
                notInitialized, static_cast<int>(code), static_cast<int>(reason),
                static_cast<int>(type), level);
    return 0;
  }
  std::string what = exception.getExceptionMessage();
  std::string why = exception.getReasonMessage();
  int result = 0;
  if (what.empty() && code != 0) result = getMessage(code, what, nullptr, key);
  if (!what.empty()) exception.Append(what);
  if (why.empty() && reason == MessageCode::E_ReasonInErrno)
    why = std::strerror(exception.getErrno());
  else if (why.empty() && result == 0 && reason != 0)
    result = getMessage(reason, why, nullptr, key);
  if (!why.empty()) exception.Append("\n" + why);
  const C_ZarelMessage& message = exception;
  return HandleMessage(message) == 0 ? result : -1;
}

int C_MessageTool::HandleMessage(const std::string& key, const std::string& text,
                                 E_MessageType_enum type, E_VerbosityLevel_enum level, int scope) {
  return HandleMessage(plainMessage(key, text, type, level, scope));
}

int C_MessageTool::HandleMessage(const std::string& key, E_MessageCode_t code,
                                 E_MessageType_enum type, E_VerbosityLevel_enum level) {
  return HandleMessage(numberedMessage(key, code, type, level));
}

int C_MessageTool::HandleMessage(const std::string& text, E_MessageType_enum type,
                                 E_VerbosityLevel_enum level, int scope) {
  return HandleMessage(plainMessage(defaultKey, text, type, level, scope));
}

int C_MessageTool::HandleMessage(const char* text, E_MessageType_enum type,
                                 E_VerbosityLevel_enum level, int scope) {
  return HandleMessage(std::string(text ? text : ""), type, level, scope);
}

int C_MessageTool::HandleMessage(E_MessageCode_t code, E_MessageType_enum type,
                                 E_VerbosityLevel_enum level) {
  return HandleMessage(numberedMessage(defaultKey, code, type, level));
}

int C_MessageTool::HandleMessageArg(const std::string& key, const char* format,
                                    E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                                    ...) {
  ZAREL_RETURN_WITH_ARGS(scope, sendFormatted(key, format, args, type, level, scope));
}

int C_MessageTool::HandleMessageArg(const std::string& key, E_MessageCode_t code,
                                    E_MessageType_enum type, E_VerbosityLevel_enum level, ...) {
  ZAREL_RETURN_WITH_ARGS(level, sendNumber(key, code, cursorOn(&args), type, level));
}

int C_MessageTool::HandleMessageArg(const std::string& format, E_MessageType_enum type,
                                    E_VerbosityLevel_enum level, int scope, ...) {
  ZAREL_RETURN_WITH_ARGS(scope,
                         sendFormatted(defaultKey, format.c_str(), args, type, level, scope));
}

int C_MessageTool::HandleMessageArg(const char* format, E_MessageType_enum type,
                                    E_VerbosityLevel_enum level, int scope, ...) {
  ZAREL_RETURN_WITH_ARGS(scope, sendFormatted(defaultKey, format, args, type, level, scope));
}

int C_MessageTool::HandleMessageArg(E_MessageCode_t code, E_MessageType_enum type,
                                    E_VerbosityLevel_enum level, ...) {
  ZAREL_RETURN_WITH_ARGS(level, sendNumber(defaultKey, code, cursorOn(&args), type, level));
}

int C_MessageTool::HandleMessageInf(const std::string& text) {
  return HandleMessage(text, E_MsgInfo, 0, 0);
}

int C_MessageTool::HandleMessageInf(const char* text) {
  return HandleMessage(text, E_MsgInfo, 0, 0);
}

int C_MessageTool::HandleMessageInf(const std::string& key, E_MessageCode_t code) {
  return HandleMessage(key, code, E_MsgInfo, 0);
}

int C_MessageTool::HandleMessageInf(E_MessageCode_t code) {
  return HandleMessage(code, E_MsgInfo, 0);
}

int C_MessageTool::HandleMessageInfArg(const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, HandleMessageInf(formatted1024(format, args)));
}

int C_MessageTool::HandleMessageInfArg(const std::string& key, E_MessageCode_t code, ...) {
  ZAREL_RETURN_WITH_ARGS(code, sendNumber(key, code, cursorOn(&args), E_MsgInfo, 0));
}

int C_MessageTool::HandleMessageInfArg(E_MessageCode_t code, ...) {
  ZAREL_RETURN_WITH_ARGS(code, sendNumber(defaultKey, code, cursorOn(&args), E_MsgInfo, 0));
}

void C_MessageTool::SafeDisplay(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  char text[1024] = "";
  if (format) std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  showErrorBox("Error", text);
}

} // namespace Zarel
