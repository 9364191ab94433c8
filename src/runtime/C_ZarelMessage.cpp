#include <zarel/C_ZarelMessage.h>

#include <cstring>

#include "runtime/access.h"
#include "runtime/format.h"
#include "runtime/keys.h"

namespace Zarel {

namespace {

int (*externalPrint)(int*) = nullptr;

bool handledOutside() {
  int active = 1;
  return externalPrint && externalPrint(&active) == 0;
}

} // namespace

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, E_MessageType_enum type,
                               E_VerbosityLevel_enum level, int scope, E_MessageStream_enum stream)
    : _key(key),
      _code(MessageCode::E_NoMessage),
      _type(type),
      _level(level),
      _scope(static_cast<E_DebugScope_enum>(scope)),
      _stream(stream),
      _callStack(C_CallStack::Empty()),
      _ownCallStack(0),
      _location(function, file, line) {}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, const std::string& text,
                               E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                               E_MessageStream_enum stream)
    : C_ZarelMessage(function, file, line, key, type, level, scope, stream) {
  _text = text;
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line, const char* text,
                               E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                               E_MessageStream_enum stream)
    : C_ZarelMessage(function, file, line, std::string(defaultKey), std::string(text ? text : ""),
                     type, level, scope, stream) {}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, E_MessageCode_t code,
                               E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                               E_MessageStream_enum stream)
    : C_ZarelMessage(function, file, line, key, type, level, scope, stream) {
  _code = code;
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, E_MessageType_enum type, const char* format,
                               ...)
    : C_ZarelMessage(function, file, line, key, type, 0, 0, ALL_STREAMS) {
  ZAREL_WITH_ARGS(format, _text = formatted16384(format, args));
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, E_MessageType_enum type,
                               const std::string& text)
    : C_ZarelMessage(function, file, line, key, text, type, 0, 0, ALL_STREAMS) {}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               const std::string& key, E_MessageType_enum type,
                               E_MessageCode_t code, ...)
    : C_ZarelMessage(function, file, line, key, code, type, 0, 0, ALL_STREAMS) {
  ZAREL_WITH_ARGS(code, C_ZarelMessage::Set(code, cursorOn(&args)));
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               E_MessageCode_t code, E_MessageType_enum type,
                               E_VerbosityLevel_enum level, int scope, E_MessageStream_enum stream)
    : C_ZarelMessage(function, file, line, std::string(defaultKey), code, type, level, scope,
                     stream) {}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               E_MessageType_enum type, const char* format, ...)
    : C_ZarelMessage(function, file, line, type, 0, 0, ALL_STREAMS) {
  ZAREL_WITH_ARGS(format, _text = formatted16384(format, args));
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               E_MessageType_enum type, const std::string& text)
    : C_ZarelMessage(function, file, line, std::string(defaultKey), type, text) {}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               E_MessageType_enum type, E_MessageCode_t code, ...)
    : C_ZarelMessage(function, file, line, code, type, 0, 0, ALL_STREAMS) {
  ZAREL_WITH_ARGS(code, C_ZarelMessage::Set(code, cursorOn(&args)));
}

C_ZarelMessage::C_ZarelMessage(const char* function, const char* file, int line,
                               E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                               E_MessageStream_enum stream)
    : C_ZarelMessage(function, file, line, std::string(defaultKey), type, level, scope, stream) {}

C_ZarelMessage::~C_ZarelMessage() = default;

void C_ZarelMessage::Set(const char* format, char** args) {
  _text = formattedAt(format, args);
}

void C_ZarelMessage::Set(E_MessageCode_t code, char** args) {
  _code = code;
  _text = MessageToolAccess::lookUpOrFailure(_key, code, args);
}

void C_ZarelMessage::Set(const char* format, ...) {
  ZAREL_WITH_ARGS(format, Set(format, cursorOn(&args)));
}

void C_ZarelMessage::Set(const std::string& text) {
  _text = text;
}

void C_ZarelMessage::Set(E_MessageCode_t code, ...) {
  ZAREL_WITH_ARGS(code, Set(code, cursorOn(&args)));
}

void C_ZarelMessage::Append(const char* format, char** args) {
  _text += formattedAt(format, args);
}

void C_ZarelMessage::Append(const char* format, ...) {
  ZAREL_WITH_ARGS(format, Append(format, cursorOn(&args)));
}

void C_ZarelMessage::Append(const std::string& text) {
  _text += text;
}

void C_ZarelMessage::Append(E_MessageCode_t code, ...) {
  _code = code;
  ZAREL_WITH_ARGS(code, _text += MessageToolAccess::lookUpOrFailure(_key, code, cursorOn(&args)));
}

bool C_ZarelMessage::IsActive() {
  const C_MessageTool* tool = C_MessageTool::Instance(_key);
  return tool && tool->MessageActive(*this, _stream);
}

int C_ZarelMessage::Print(const char* format, ...) {
  ZAREL_WITH_ARGS(format, Set(format, cursorOn(&args)));
  return Print();
}

int C_ZarelMessage::Print(const std::string& text) {
  Set(text);
  return Print();
}

int C_ZarelMessage::Print(E_MessageCode_t code, ...) {
  ZAREL_WITH_ARGS(code, Set(code, cursorOn(&args)));
  return Print();
}

int C_ZarelMessage::Print() {
  return handledOutside() ? 0 : C_MessageTool::HandleMessage(*this);
}

void C_ZarelMessage::setKey(const std::string& key) {
  _key = key;
}
void C_ZarelMessage::setMessageCode(E_MessageCode_t code) {
  _code = code;
}
void C_ZarelMessage::setMessageType(E_MessageType_enum type) {
  _type = type;
}
void C_ZarelMessage::setVerbosityLevel(E_VerbosityLevel_enum level) {
  _level = level;
}
void C_ZarelMessage::setDebugScope(E_DebugScope_enum scope) {
  _scope = scope;
}
void C_ZarelMessage::setMessageStream(E_MessageStream_enum stream) {
  _stream = stream;
}
std::string C_ZarelMessage::getKey() const {
  return _key;
}
E_MessageCode_t C_ZarelMessage::getMessageCode() const {
  return _code;
}
E_MessageType_enum C_ZarelMessage::getMessageType() const {
  return _type;
}
E_VerbosityLevel_enum C_ZarelMessage::getVerbosityLevel() const {
  return _level;
}
E_DebugScope_enum C_ZarelMessage::getDebugScope() const {
  return _scope;
}
E_MessageStream_enum C_ZarelMessage::getMessageStream() const {
  return _stream;
}
std::string C_ZarelMessage::getMessage() const {
  return _text;
}
int C_ZarelMessage::getCallStackFlag() const {
  return _ownCallStack;
}
const C_CallStack& C_ZarelMessage::getCallStack() const {
  return _callStack;
}
const C_Entry& C_ZarelMessage::getErrorLocation() const {
  return _location;
}

void C_ZarelMessage::CarryCallStack() noexcept {
  _ownCallStack = 1;
  try {
    const C_CallStack* stack = GlobalCallstackCollection().GetCurrentCallStack();
    if (stack) _callStack = *stack;
  } catch (...) {
    // The exception that is being made matters more than its stack.
  }
}

} // namespace Zarel

void SetXternalPrint(int (*hook)(int*)) {
  Zarel::externalPrint = hook;
}

int TPrintStr(Zarel::C_ZarelMessage& message, const char* text) {
  constexpr size_t piece = 4096;
  const std::string all = text ? text : "";
  int result = 0;
  size_t at = 0;
  do {
    if (message.Print(all.substr(at, piece)) != 0) result = -1;
    at += piece;
  } while (at < all.size());
  return result;
}

// The text is a format without arguments: "%%" is one "%". What would ask for an argument is
// printed as it stands, since there is none.
int TPrintStr(FILE* stream, const char* text) {
  std::string plain;
  for (const char* c = text ? text : ""; *c; ++c) {
    plain.push_back(*c);
    if (c[0] == '%' && c[1] == '%') ++c;
  }
  return std::fprintf(stream, "%s", plain.c_str());
}
