#include <zarel/erreur.h>

#include <cstdio>
#include <cstring>
#include <new>

#include <zarel/zarelsys.h>

#include "runtime/access.h"
#include "runtime/format.h"
#include "runtime/keys.h"
#include "system/box.h"

using namespace Zarel;

namespace {

char reportText[16384];

C_MessageTool* defaultTool() {
  return C_MessageTool::Instance(defaultKey);
}

/** What `report` gives, or `without` if memory ends before it: C has no way to catch that. */
template <class Result, class Report>
Result reported(Result without, Report report) {
  try {
    return report();
  } catch (const std::bad_alloc&) {
    return without;
  }
}

int printed(C_ZarelMessage& message, const char* format, std::va_list args) {
  if (!format || std::vsnprintf(reportText, sizeof reportText, format, args) < 0)
    reportText[0] = '\0';
  message.Set(std::string(reportText));
  return message.Print();
}

int say(int level, int scope, const char* format, std::va_list args) {
  return reported(-1, [&] {
    C_ZarelMessage message("", "", 0, E_MsgInfo, level, scope, ALL_STREAMS);
    return printed(message, format, args);
  });
}

int blame(E_MessageType_enum type, const char* function, int line, const char* file,
          const char* format, std::va_list args) {
  return reported(-1, [&] {
    C_ZarelMessage message(function, file, line, type, 0, 0, ALL_STREAMS);
    return printed(message, format, args);
  });
}

// Why there is no tool that knows numbers; null if there is one.
constexpr const char* noDefaultTool = "*** We couldn't retrieve the Default Message Tool !";
constexpr const char* noLastTool = "*** We couldn't retrieve the \"last used\" Message Tool !";
constexpr const char* lastToolNotInitialized =
    "*** The \"last used\" Message Tool is not initialized !";

// The default tool if it is initialized, else the last used one if that is.
const char* findUsableTool(C_MessageTool*& tool) {
  tool = defaultTool();
  if (!tool) return noDefaultTool;
  if (tool->isInitialized()) return nullptr;
  tool = C_MessageTool::LastInstance();
  if (!tool) return noLastTool;
  return tool->isInitialized() ? nullptr : lastToolNotInitialized;
}

char* composed(int id, std::va_list args) {
  C_MessageTool* tool = nullptr;
  if (const char* why = findUsableTool(tool)) {
    C_MessageTool::SafeDisplay("%s", why);
    return nullptr;
  }
  if (id < 0) return nullptr;
  std::va_list copy;
  va_copy(copy, args);
  std::string text;
  const int found = C_MessageTool::getMessage(static_cast<E_MessageCode_t>(id), text,
                                              cursorOn(&copy), tool->getKey());
  va_end(copy);
  return found == 0 ? zarel_strdup(text.c_str(), "MSG_get") : nullptr;
}

char* composedIfThereIsMemory(int id, std::va_list args) {
  return reported(static_cast<char*>(nullptr), [&] { return composed(id, args); });
}

int trace(const char* label, int line, const char* file) {
  C_MessageTool* tool = nullptr;
  if (const char* why = findUsableTool(tool)) {
    C_MessageTool::SafeDisplay("%s\n*** fct_Trace( %s, %d, %s)", why, label, line, file);
    return -1;
  }
  const C_ZarelMessage message(label, file, line, tool->getKey(), E_MsgCallStack,
                               "fct_Trace: %s(), %s line %d", label, file, line);
  return C_MessageTool::HandleMessage(message);
}

} // namespace

int Erreur(const char* function, int line, const char* file, const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, blame(E_MsgError, function, line, file, format, args));
}

int Warning(const char* function, int line, const char* file, const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, blame(E_MsgWarning, function, line, file, format, args));
}

int Msg_public(const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, say(0, 0, format, args));
}

int Msg_interne(const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, say(3, 0, format, args));
}

int Msg_verbeux(int scope, const char* format, ...) {
  ZAREL_RETURN_WITH_ARGS(format, say(3, scope, format, args));
}

int fct_Trace(const char* label, int line, const char* file) {
  return reported(-1, [=] { return trace(label ? label : "", line, file ? file : ""); });
}

int is_externe_on(void) {
  const C_MessageTool* tool = defaultTool();
  return tool && tool->VerbosityLevelActive(0, SCREEN);
}

int is_interne_on(void) {
  const C_MessageTool* tool = defaultTool();
  return tool && tool->VerbosityLevelActive(3, SCREEN);
}

int is_trace_on(void) {
  const C_MessageTool* tool = defaultTool();
  return tool && tool->MessageTypeActive(E_MsgCallStack, SCREEN);
}

int is_warning_on(void) {
  const C_MessageTool* tool = defaultTool();
  return tool && tool->MessageTypeActive(E_MsgWarning, SCREEN);
}

int is_debug_scope_on(int scope) {
  const C_MessageTool* tool = defaultTool();
  return tool && tool->DebugScopeActive(scope, SCREEN);
}

int is_verbeux_on(int scope) {
  return is_debug_scope_on(scope);
}

int switch_debug_scope(int scope, int state) {
  if (C_MessageTool* tool = defaultTool()) tool->ActivateDebugScope(scope, state == 1, SCREEN);
  return 0;
}

int switch_verbeux(int scope, int state) {
  return switch_debug_scope(scope, state);
}

char* MSG_get(int id, ...) {
  ZAREL_RETURN_WITH_ARGS(id, composedIfThereIsMemory(id, args));
}
char* MSG_get_default(int id, ...) {
  ZAREL_RETURN_WITH_ARGS(id, composedIfThereIsMemory(id, args));
}

int MSG_load(const char*) {
  return 0;
}
int MSG_load_default(const char*) {
  return 0;
}
int MSG_get_last_id(void) {
  return 0;
}
void MSG_free(void) {}
int Msg_fopen(const char*) {
  return -1;
}
int Msg_fget(void) {
  return 0;
}
void Msg_fclose(void) {}
void Msg_fset(int) {}
void setErrAff(int) {}
void setMsgAff(int) {}
void setWarnAff(int) {}

zarel_ErrorBox zarel_setErrorBox(zarel_ErrorBox box) {
  return setErrorBox(box);
}
void zarel_silentErrorBox(const char*, const char*) {}
