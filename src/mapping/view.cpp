#include "mapping/view.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>

#include "mapping/reserve.h"
#include "system/calls.h"
#include "system/descriptor.h"
#include "system/mapping.h"
#include "system/text.h"

namespace Zarel {

namespace {

bool refused(int error) {
  errno = error;
  return false;
}

// Whether the file shows the bytes below `end`. A page behind the end of a file has no bytes to
// show, and touching it kills the process.
bool reaches(const __2Handles& handles, unsigned __int64 end) {
  struct stat status;
  if (systemCalls().fstat(handles.file, &status) != 0) return false;
  const auto now = static_cast<unsigned __int64>(status.st_size);
  return end <= std::min(handles.size, now) || refused(ENXIO);
}

// Stores into [from, to) will find their place. What is known to be solid costs no system call.
bool makeSolid(__2Handles& handles, unsigned __int64 from, unsigned __int64 to) {
  if (from >= handles.solidFrom && to <= handles.solidTo) return true;
  unsigned __int64 solid = nextHole(handles.file, from, handles.size);
  if (solid < to) {
    if (!reserveRange(handles.file, from, to)) return false;
    solid = to;
  }
  const bool touching = from <= handles.solidTo && solid >= handles.solidFrom;
  handles.solidFrom = touching ? std::min(handles.solidFrom, from) : from;
  handles.solidTo = touching ? std::max(handles.solidTo, solid) : solid;
  return true;
}

bool isMode(int mode) {
  return mode == mapReading || mode == mapReadWrite;
}

// Whether there is something that cannot be mapped and may not be opened like a file: a pipe keeps
// its reader waiting for a writer, a device may do anything.
bool opensOtherwise(const std::string& name) {
  struct stat status;
  return systemCalls().stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

} // namespace

int openForViews(const wchar_t* file, int mode) {
  const std::string name = file ? toUtf8(file) : std::string();
  if (!file || opensOtherwise(name)) {
    errno = EINVAL;
    return -1;
  }
  return openDescriptor(name, mode == mapReadWrite ? O_RDWR | O_CREAT : O_RDONLY).release();
}

bool takeSize(__2Handles& handles) {
  struct stat status;
  if (systemCalls().fstat(handles.file, &status) != 0) return false;
  if (!S_ISREG(status.st_mode) || status.st_size == 0) return refused(EINVAL);
  handles.size = static_cast<unsigned __int64>(status.st_size);
  return true;
}

bool mapView(__2Handles& handles, int mode, unsigned __int64 offset, unsigned __int64 length,
             unsigned __int64 granularity, View& view) {
  const unsigned __int64 end = offset + length;
  if (granularity == 0 || !isMode(mode)) return refused(EINVAL);
  if (end < offset) return refused(ENXIO);
  if (!reaches(handles, end)) return false;
  const unsigned __int64 aligned = granularity * (offset / granularity);
  if (mode == mapReadWrite && !makeSolid(handles, aligned, end)) return false;
  Mapping mapping =
      mapFile(handles.file, static_cast<off_t>(aligned), end - aligned, mode == mapReadWrite);
  if (!mapping) return false;
  view = {mapping.data(), mapping.data() + (offset - aligned), end - aligned};
  mapping.release();
  return true;
}

} // namespace Zarel
