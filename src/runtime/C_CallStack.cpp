#include <zarel/C_CallStack.h>

#include <cstring>
#include <new>

#include "runtime/timehooks.h"
#include "system/environment.h"

namespace Zarel {

TimeHooks timeHooks = {nullptr, nullptr, nullptr, nullptr};

namespace {

constexpr int reservedEntries = 30;

template <size_t N>
void copyCut(char (&to)[N], const char* from) noexcept {
  const size_t length = from ? strnlen(from, N - 1) : 0;
  std::memcpy(to, from, length);
  to[length] = '\0';
}

// The stack itself hangs on a plain pointer, which stays usable when the thread's objects are
// gone already: a frame that a late destructor opens finds null and gets a new stack.
thread_local C_CallStack* currentStack = nullptr;

struct StackReaper {
  ~StackReaper() {
    delete currentStack;
    currentStack = nullptr;
  }
};

} // namespace
} // namespace Zarel

C_Entry::C_Entry(const char* functionName, const char* fileName, int lineNumber) noexcept
    : line(lineNumber) {
  Zarel::copyCut(file, fileName ? fileName : "");
  Zarel::copyCut(function, functionName ? functionName : "");
}

C_CallStack::C_CallStack() : _top(nullptr), _mark(false) {
  _entries.reserve(Zarel::reservedEntries);
  MarkTop();
}

C_CallStack::C_CallStack(const C_CallStack& other) : _entries(other._entries), _mark(other._mark) {
  MarkTop();
}

C_CallStack& C_CallStack::operator=(const C_CallStack& other) {
  if (this == &other) return *this;
  _entries = other._entries;
  _mark = other._mark;
  MarkTop();
  return *this;
}

C_CallStack::~C_CallStack() = default;

void C_CallStack::Push(const C_Entry& entry) {
  _entries.push_back(entry);
  MarkTop();
  cTimeManagerBeginBlock(_entries.back().function);
}

void C_CallStack::Pop() {
  char none[] = "";
  cTimeManagerEndBlock(_entries.empty() ? none : _entries.back().function);
  if (!_entries.empty()) _entries.pop_back();
  MarkTop();
}

void C_CallStack::Clear() {
  _entries.clear();
  _mark = false;
  MarkTop();
}

C_StackCollection::C_StackCollection() : _valid(true) {
  const auto level = Zarel::environment("COLLECTIMES");
  if (level && Zarel::timeHooks.init) Zarel::timeHooks.init(Zarel::numberIn(level->c_str()));
}

C_StackCollection::~C_StackCollection() {
  _valid = false;
  if (Zarel::timeHooks.release) Zarel::timeHooks.release();
}

C_CallStack* C_StackCollection::GetCurrentCallStack() noexcept {
  if (!Zarel::currentStack) {
    static thread_local Zarel::StackReaper reaper;
    static_cast<void>(&reaper);
    try {
      Zarel::currentStack = new C_CallStack;
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }
  return Zarel::currentStack;
}

C_StackCollection& GlobalCallstackCollection() {
  static C_StackCollection collection;
  return collection;
}

void cTimeManagerBeginBlock(char* name) {
  if (Zarel::timeHooks.begin) Zarel::timeHooks.begin(name);
}

void cTimeManagerEndBlock(char* name) {
  if (Zarel::timeHooks.end) Zarel::timeHooks.end(name);
}
