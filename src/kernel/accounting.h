// The lists of types that accounting and static work objects share.
#ifndef ZAREL_KERNEL_ACCOUNTING_H
#define ZAREL_KERNEL_ACCOUNTING_H

#include <zarel/lm_memory.h>

namespace Zarel::kernel {

struct TypeList {
  int count = 0;
  const char* const* names = nullptr;
  const MEM_FREE* frees = nullptr;
  MEM_ENTRY* table = nullptr;
};

// A list; null outside the range or if nothing is attached.
const TypeList* attachedList(int list);

} // namespace Zarel::kernel

#endif
