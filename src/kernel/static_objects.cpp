#include <cstdint>
#include <cstdio>

#include <zarel/lm_error.h>
#include <zarel/lm_memory.h>

#include "kernel/accounting.h"

using Zarel::kernel::attachedList;
using Zarel::kernel::TypeList;

namespace {

// A registered pointer variable.
struct Slot {
  void** variable;
  int type;
  int list;
  int mark;
};

Slot slots[MEM_HASHSIZE];
int currentMark = 0;
int openGroups = 0;

void warnFull() {
  std::fprintf(stderr,
               "\n WARNING !!! static memory: mem_stat_var is too small\n"
               " Increase MEM_HASHSIZE in file: %s (currently = %d)\n\n",
               __FILE__, MEM_HASHSIZE);
}

// The slot of a variable, or the first free one from its hash on; null if the table is full. The
// whole table is looked at, since a release may have left a hole in front of the variable.
Slot* find(void** variable) {
  const auto start = static_cast<int>(reinterpret_cast<std::uintptr_t>(variable) % MEM_HASHSIZE);
  Slot* unused = nullptr;
  for (int step = 0; step < MEM_HASHSIZE; ++step) {
    Slot& slot = slots[(start + step) % MEM_HASHSIZE];
    if (slot.variable == variable) return &slot;
    if (!slot.variable && !unused) unused = &slot;
  }
  return unused;
}

int report(int number, int argument, const char* function, int line = __builtin_LINE()) {
  LM_error(__FILE__, number, line, function, argument, nullptr);
  return -1;
}

void release(Slot& slot, const TypeList& types) {
  const MEM_FREE freeObject = types.frees[slot.type];
  if (freeObject) freeObject(*slot.variable);
  *slot.variable = nullptr;
  slot = Slot();
}

int endGroup(int result) {
  currentMark = 0;
  return result;
}

} // namespace

int mem_stat_mark(int mark) {
  if (mark <= 0) return endGroup(mark == 0 ? 0 : -1);
  currentMark = mark;
  ++openGroups;
  return mark;
}

int mem_stat_reg_list(void** variable, int type, int list) {
  const TypeList* const types = attachedList(list);
  if (!types) return -1;
  if (currentMark == 0) return 0;
  if (!variable) return report(8, list, "mem_stat_reg_list");
  if (type < 0 || type >= types->count) return report(1, type, "mem_stat_reg_list");
  Slot* const slot = find(variable);
  if (!slot) {
    warnFull();
    return -1;
  }
  if (!slot->variable) *slot = {variable, type, list, currentMark};
  return currentMark;
}

int mem_stat_free_list(int mark, int list) {
  const TypeList* const types = attachedList(list);
  if (!types) return -1;
  if (mark <= 0) return endGroup(mark == 0 ? 0 : -1);
  if (openGroups <= 0) return report(2, mark, "mem_stat_free_list");
  for (Slot& slot : slots)
    if (slot.variable && slot.mark == mark && slot.list == list && slot.type < types->count)
      release(slot, *types);
  --openGroups;
  return 0;
}

int mem_stat_show_mark(void) {
  return currentMark;
}

int mem_stat_groups(void) {
  return openGroups;
}

void mem_stat_dump(FILE* file, int list) {
  const TypeList* const types = attachedList(list);
  if (!types) return;
  FILE* const to = file ? file : stdout;
  std::fprintf(to, " Array mem_stat_var (list no. %d):\n", list);
  long number = 0;
  for (const Slot& slot : slots) {
    if (!slot.variable || slot.list != list) continue;
    const char* const name = slot.type < types->count ? types->names[slot.type] : nullptr;
    std::fprintf(to, " %ld.  var = 0x%p, type = %s, mark = %d\n", ++number,
                 static_cast<void*>(slot.variable), name ? name : "???", slot.mark);
  }
}
