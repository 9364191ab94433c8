// Which messages pass which stream of a tool.
#include <zarel/C_MessageTool.h>

#include <cstdio>

#include "runtime/access.h"
#include "system/environment.h"

namespace Zarel {

namespace {

constexpr unsigned int allTypes = 65535;

bool isStream(E_MessageStream_enum stream) {
  return stream >= SCREEN && stream <= LOG_RECORD;
}

// Calls `use(number)` for each piece of a text between semicolons; empty pieces do not count.
template <class Use>
void forEachNumber(const std::string& text, Use use) {
  for (size_t at = text.find_first_not_of(';'); at != std::string::npos;) {
    const size_t end = text.find(';', at);
    use(numberIn(text.substr(at, end - at).c_str()));
    at = text.find_first_not_of(';', end);
  }
}

} // namespace

void C_MessageTool::setMessageTypeFilter(unsigned int mask, E_MessageStream_enum stream) {
  forEachStream(stream, [&](int k) { _streams[k].filter = mask; });
}

unsigned int C_MessageTool::getMessageTypeFilter(E_MessageStream_enum stream) const {
  return isStream(stream) ? _streams[stream].filter : 0;
}

void C_MessageTool::ActivateMessageType(E_MessageType_enum type, bool on,
                                        E_MessageStream_enum stream) {
  const auto bits = static_cast<unsigned int>(type);
  forEachStream(stream, [&](int k) {
    unsigned int& filter = _streams[k].filter;
    if (type == E_MsgNone)
      filter = on ? allTypes : 0;
    else
      filter = on ? filter | bits : filter & ~bits;
  });
}

void C_MessageTool::setVerbosityLevel(E_VerbosityLevel_enum level, E_MessageStream_enum stream) {
  forEachStream(stream, [&](int k) { _streams[k].level = level; });
}

E_VerbosityLevel_enum C_MessageTool::getVerbosityLevel(E_MessageStream_enum stream) const {
  return isStream(stream) ? _streams[stream].level : 0;
}

void C_MessageTool::ActivateDebugScope(E_DebugScope_enum scope, bool on,
                                       E_MessageStream_enum stream) {
  ActivateDebugScope(static_cast<int>(scope), on, stream);
}

// A reset of all streams runs once for each of them and so announces ZAREL_DEBUG_SCOPES three
// times; scripts that watch a host's output count on it.
void C_MessageTool::ActivateDebugScope(int scope, bool on, E_MessageStream_enum stream) {
  if (stream == ALL_STREAMS)
    forEachStream(stream, [&](E_MessageStream_enum one) { ActivateDebugScope(scope, on, one); });
  else if (scope == E_ScopeReset)
    ResetDebugScopes();
  else if (isStream(stream) && on)
    _streams[stream].scopes.insert(scope);
  else if (isStream(stream))
    _streams[stream].scopes.erase(scope);
}

void C_MessageTool::ResetDebugScopes() {
  for (C_MessageStream& stream : _streams)
    stream.scopes = {E_ScopeNone};
  const auto wanted = environment("ZAREL_DEBUG_SCOPES");
  if (!wanted) return;
  std::printf("\nZAREL_DEBUG_SCOPES defined, activating the debug scopes: ");
  forEachNumber(*wanted, [this](int scope) {
    if (scope == E_ScopeReset) return; // a reset within the reset would never end
    ActivateDebugScope(scope, true, ALL_STREAMS);
    std::printf("%d ", scope);
  });
  std::printf("\n");
  std::fflush(stdout);
}

void C_MessageTool::setMessageStreamCtrl(C_MessageStreamCtrl* ctrl, E_MessageStream_enum stream) {
  forEachStream(stream, [&](int k) { _streams[k].ctrl = ctrl; });
}

void C_MessageTool::ResetMessageStreamCtrl(E_MessageStream_enum stream) {
  setMessageStreamCtrl(this, stream);
}

bool C_MessageTool::MessageTypeActive(E_MessageType_enum type, E_MessageStream_enum stream) const {
  if (!isStream(stream) || type == E_MsgNone) return false;
  return (static_cast<unsigned int>(type) & _streams[stream].filter) != 0;
}

bool C_MessageTool::VerbosityLevelActive(E_VerbosityLevel_enum level,
                                         E_MessageStream_enum stream) const {
  return isStream(stream) && level <= _streams[stream].level;
}

bool C_MessageTool::DebugScopeActive(int scope, E_MessageStream_enum stream) const {
  return isStream(stream) && _streams[stream].scopes.count(scope) != 0;
}

bool C_MessageTool::MessageActive(const C_ZarelMessage& message,
                                  E_MessageStream_enum stream) const {
  bool active = false;
  forEachStream(stream, [&](E_MessageStream_enum one) {
    active = active || (MessageTypeActive(message.getMessageType(), one) &&
                        VerbosityLevelActive(message.getVerbosityLevel(), one) &&
                        DebugScopeActive(message.getDebugScope(), one));
  });
  return active;
}

} // namespace Zarel
