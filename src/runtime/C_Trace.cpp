#include <zarel/C_Trace.h>

namespace Zarel {

namespace {

void (*beginHook)(char*) = nullptr;
void (*endHook)(char*) = nullptr;

C_CallStack* currentStack() {
  return GlobalCallstackCollection().GetCurrentCallStack();
}

} // namespace

C_Trace::C_Trace(char const* function, char const* file, int line)
    : C_Trace(function, file, line, nullptr, nullptr) {}

C_Trace::C_Trace(char const* function, char const* file, int line, void (*begin)(char*),
                 void (*end)(char*))
    : _end(end) {
  if (C_CallStack* stack = currentStack()) stack->Push(C_Entry(function, file, line));
  if (begin) begin(const_cast<char*>(function));
}

C_Trace::~C_Trace() {
  C_CallStack* stack = currentStack();
  if (_end) {
    const bool known = stack && !stack->GetStack().empty();
    C_Entry top = known ? stack->GetStack().back() : C_Entry();
    _end(top.function);
  }
  if (stack) stack->Pop();
}

} // namespace Zarel

void SetXternalTrackFuncs(void (*begin)(char*), void (*end)(char*)) {
  Zarel::beginHook = begin;
  Zarel::endHook = end;
}

void (*BegFunc())(char*) {
  return Zarel::beginHook;
}
void (*EndFunc())(char*) {
  return Zarel::endHook;
}
