#include <zarel/C_MapManager.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <sys/mman.h>
#include <type_traits>

#include <zarel/C_MessageTool.h>

#include "mapping/view.h"
#include "runtime/fail.h"
#include "runtime/keys.h"
#include "system/calls.h"
#include "system/mapping.h"

using namespace Zarel;

static_assert(std::is_trivially_copyable_v<C_MapPtr>, "views are copied word by word");

namespace {

enum Code { MapFailed = 13, UnmapFailed = 14 };
constexpr int reasonInErrno = 100;

struct SystemAdvice {
  int advice;
  int forWriting; // for views that are written
};

SystemAdvice systemAdvice(E_MapAdvice advice) {
  switch (advice) {
  case E_MapNormal:
    return {MADV_NORMAL, MADV_NORMAL};
  case E_MapSequential:
    return {MADV_SEQUENTIAL, MADV_SEQUENTIAL};
  case E_MapRandom:
    return {MADV_RANDOM, MADV_RANDOM};
  case E_MapWillNeed:
    return {MADV_WILLNEED, MADV_WILLNEED};
  case E_MapDontNeed:
    return {MADV_DONTNEED, MADV_DONTNEED};
  case E_MapHugePages:
    return {MADV_HUGEPAGE, MADV_HUGEPAGE};
  case E_MapPopulate:
    return {MADV_POPULATE_READ, MADV_POPULATE_WRITE};
  case E_MapReadAll:
    return {MADV_POPULATE_READ, MADV_POPULATE_READ};
  }
  return {-1, -1};
}

// Views end in destructors, where nothing may be thrown, not even for want of memory. The reason
// stays in errno for callers who report it too.
void reportNotUnmapped() {
  const int reason = errno;
  try {
    C_ZarelException failure("Throwing", __FILE__, __LINE__, UnmapFailed, reasonInErrno,
                             defaultKey);
    C_MessageTool::HandleMessage(failure, E_MsgError, 0);
  } catch (const std::bad_alloc&) {
  }
  errno = reason;
}

} // namespace

void C_MapPtr::MapToFile(unsigned __int64 offset, unsigned __int64 length, unsigned int granularity,
                         __2Handles* handles) {
  const int mode = _mode;
  *this = C_MapPtr();
  _mode = mode;
  _offset = offset;
  _userLength = length;
  _handles = handles;
  View view;
  if (!mapView(*handles, _mode, offset, length, granularity, view)) fail(MapFailed, reasonInErrno);
  _mapPtr = view.start;
  _userPtr = view.user;
  _mapLength = view.length;
}

void C_MapPtr::UnMap() {
  if (!_mapPtr) return;
  if (systemCalls().munmap(_mapPtr, _mapLength) != 0) return reportNotUnmapped();
  __2Handles* const handles = _handles;
  *this = C_MapPtr();
  _handles = handles;
}

bool C_MapPtr::Advise(E_MapAdvice advice, unsigned __int64 from, unsigned __int64 length) const {
  const auto [reading, writing] = systemAdvice(advice);
  if (!_mapPtr || from >= _userLength || reading < 0) return false;
  const unsigned __int64 bytes = std::min(length, _userLength - from);
  const unsigned __int64 page = pageSize();
  const auto first = static_cast<unsigned __int64>(_userPtr - _mapPtr) + from;
  const unsigned __int64 start = first / page * page;
  return systemCalls().madvise(_mapPtr + start, first + bytes - start,
                               _mode == mapReadWrite ? writing : reading) == 0;
}
