// The answers of C_MemManager::InfoMem.
#ifndef ZAREL_MEMORY_INFORMATION_H
#define ZAREL_MEMORY_INFORMATION_H

#include <zarel/export.h>

namespace Zarel {

// The default memory information function: the value of a C_MemManager::E_MemKey, -1 for another
// key and for a figure that the system does not tell.
__int64 memoryInformation(int* key, int* unused);

} // namespace Zarel

#endif
