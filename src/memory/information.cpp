#include "memory/information.h"

#include <zarel/C_MemManager.h>

#include "system/machine.h"
#include "system/mapping.h"

namespace Zarel {

namespace {

constexpr __int64 unknown = -1;

// The sum of figures, unknown if one of them is.
template <class... Figures>
__int64 sum(Figures... figures) {
  return ((figures < 0) || ...) ? unknown : (figures + ...);
}

__int64 inPages(__int64 bytes) {
  return bytes < 0 ? unknown : bytes / static_cast<__int64>(pageSize());
}

// What the kernel can give up when memory runs short: caches of its own objects.
__int64 reclaimable() {
  return memoryFigure("SReclaimable");
}

__int64 fixedKernelBytes() {
  return sum(memoryFigure("SUnreclaim"), memoryFigure("KernelStack"), memoryFigure("PageTables"));
}

} // namespace

__int64 memoryInformation(int* key, int*) {
  switch (*key) {
  case C_MemManager::E_MemPhysicalTotal:
    return memoryFigure("MemTotal");
  case C_MemManager::E_MemCommitTotal:
    return memoryFigure("Committed_AS");
  case C_MemManager::E_MemKernelTotal:
    return inPages(sum(reclaimable(), fixedKernelBytes()));
  case C_MemManager::E_MemKernelPaged:
    return inPages(reclaimable());
  case C_MemManager::E_MemKernelNonpaged:
    return inPages(fixedKernelBytes());
  case C_MemManager::E_MemPhysicalAvail:
    return memoryFigure("MemAvailable");
  case C_MemManager::E_MemSystemCache:
    return sum(memoryFigure("Cached"), memoryFigure("Buffers"));
  case C_MemManager::E_MemPageSize:
    return static_cast<__int64>(pageSize());
  case C_MemManager::E_MemHandleCount:
    return openFileCount();
  case C_MemManager::E_MemThreadCount:
    return threadCount();
  case C_MemManager::E_MemProcessCount:
    return processCount();
  case C_MemManager::E_MemCommitLimit:
    return inPages(memoryFigure("CommitLimit"));
  default:
    return unknown;
  }
}

} // namespace Zarel
