#include <zarel/C_MapManager.h>

#include <algorithm>
#include <cerrno>
#include <sys/mman.h>
#include <type_traits>

#include <zarel/C_MessageTool.h>

#include "mapping/reserve.h"
#include "runtime/fail.h"
#include "runtime/keys.h"
#include "system/calls.h"
#include "system/mapping.h"

using namespace Zarel;

static_assert(std::is_trivially_copyable_v<C_MapPtr>, "views are copied word by word");

namespace {

enum Mode { Reading = 0, ReadWrite = 2 };
enum Code { MapFailed = 13, UnmapFailed = 14 };
constexpr int reasonInErrno = 100;

[[noreturn]] void refuse(int error) {
  errno = error;
  fail(MapFailed, reasonInErrno);
}

// The bytes that the file behind the handles can show now. A page behind the end of a file has no
// bytes to show, and touching it kills the process.
unsigned __int64 bytesToShow(const __2Handles& handles) {
  struct stat status;
  if (systemCalls().fstat(handles.file, &status) != 0) fail(MapFailed, reasonInErrno);
  return std::min(handles.size, static_cast<unsigned __int64>(status.st_size));
}

// Stores into [from, to) will find their place. What is known to be solid costs no system call.
void makeSolid(__2Handles& handles, unsigned __int64 from, unsigned __int64 to) {
  if (from >= handles.solidFrom && to <= handles.solidTo) return;
  unsigned __int64 solid = nextHole(handles.file, from, handles.size);
  if (solid < to) {
    if (!reserveRange(handles.file, from, to)) fail(MapFailed, reasonInErrno);
    solid = to;
  }
  const bool touching = from <= handles.solidTo && solid >= handles.solidFrom;
  handles.solidFrom = touching ? std::min(handles.solidFrom, from) : from;
  handles.solidTo = touching ? std::max(handles.solidTo, solid) : solid;
}

int protectionOf(int mode) {
  return mode == ReadWrite ? PROT_READ | PROT_WRITE : PROT_READ;
}

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
  }
  return {-1, -1};
}

} // namespace

void C_MapPtr::MapToFile(unsigned __int64 offset, unsigned __int64 length, unsigned int granularity,
                         __2Handles* handles) {
  _offset = offset;
  _userLength = length;
  _handles = handles;
  if (granularity == 0 || (_mode != Reading && _mode != ReadWrite)) refuse(EINVAL);
  const unsigned __int64 end = offset + length;
  if (end < offset || end > bytesToShow(*handles)) refuse(ENXIO);
  const unsigned __int64 aligned = granularity * (offset / granularity);
  if (_mode == ReadWrite) makeSolid(*handles, aligned, end);
  const unsigned __int64 mapLength = end - aligned;
  void* view = systemCalls().mmap(nullptr, mapLength, protectionOf(_mode), MAP_SHARED,
                                  handles->file, static_cast<off_t>(aligned));
  if (view == MAP_FAILED) fail(MapFailed, reasonInErrno);
  _mapPtr = static_cast<char*>(view);
  _mapLength = mapLength;
  _userPtr = _mapPtr + (offset - aligned);
}

void C_MapPtr::UnMap() {
  if (!_mapPtr) return;
  if (systemCalls().munmap(_mapPtr, _mapLength) != 0) {
    C_ZarelException failure("Throwing", __FILE__, __LINE__, UnmapFailed, reasonInErrno,
                             defaultKey);
    C_MessageTool::HandleMessage(failure, E_MsgError, 0);
    return;
  }
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
                               _mode == ReadWrite ? writing : reading) == 0;
}
