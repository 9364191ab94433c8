#include <zarel/C_MapManager.h>

#include <fcntl.h>
#include <memory>
#include <new>

#include <zarel/bf.h>

#include "mapping/reserve.h"
#include "mapping/view.h"
#include "runtime/fail.h"
#include "system/calls.h"
#include "system/mapping.h"
#include "system/text.h"

using namespace Zarel;

namespace {

enum Code { MapFailed = 13, HandleNotClosed = 14, SizeNotSet = 24, FileNotClosed = 27 };
constexpr int reasonInErrno = 100;

// Whether views of a mode can be made through a descriptor.
bool serves(int fd, int mode) {
  const int access = fd < 0 ? -1 : systemCalls().accessMode(fd);
  return access == O_RDWR || (access == O_RDONLY && mode != mapReadWrite);
}

// Notes which file a descriptor is of; nothing if it is of none.
void identify(int fd, __2Handles& handles) {
  struct stat status;
  if (fd < 0 || systemCalls().fstat(fd, &status) != 0) return;
  handles.device = status.st_dev;
  handles.number = status.st_ino;
}

int closeHandle(const __2Handles& handles) {
  return handles.file < 0 ? 0 : systemCalls().close(handles.file);
}

} // namespace

template class C_Singleton<C_MapManager>;

C_MapManager::C_MapManager() : _granularity(static_cast<unsigned int>(pageSize())) {}

C_MapManager::~C_MapManager() {
  for (const auto& entry : _handles)
    closeHandle(entry.second);
}

// A caller may have closed a descriptor without releasing it, and the system gives its number to
// the next file. Views of that one must not show the former.
void C_MapManager::ForgetIfStale(int fd) {
  const auto entry = _handles.find(fd);
  if (entry == _handles.end()) return;
  __2Handles now;
  identify(fd, now);
  const bool same = now.device == entry->second.device && now.number == entry->second.number;
  if (same || (now.device == 0 && now.number == 0)) return;
  closeHandle(entry->second);
  _handles.erase(entry);
}

void C_MapManager::OpenHandles(__2Handles& handles, int fd, const wchar_t* file, int mode) {
  identify(fd, handles);
  handles.file = serves(fd, mode) ? systemCalls().duplicate(fd) : openForViews(file, mode);
  if (handles.file < 0 || !takeSize(handles)) fail(MapFailed);
}

__2Handles& C_MapManager::HandlesOf(int fd, const wchar_t* file, int mode) {
  ForgetIfStale(fd);
  const auto [entry, fresh] = _handles.try_emplace(fd);
  if (!fresh) return entry->second;
  try {
    OpenHandles(entry->second, fd, file, mode);
  } catch (const std::bad_alloc&) {
    closeHandle(entry->second);
    _handles.erase(entry);
    throw;
  }
  return entry->second;
}

C_MapPtr* C_MapManager::MapPtr(C_MapPtr* ptr, int fd, const wchar_t* file, int mode,
                               unsigned __int64 offset, unsigned __int64 length) {
  std::unique_ptr<C_MapPtr> made(ptr ? nullptr : new C_MapPtr);
  C_MapPtr* const view = ptr ? ptr : made.get();
  view->Init(mode);
  view->MapToFile(offset, length, _granularity, &HandlesOf(fd, file, mode));
  return made ? made.release() : view;
}

void C_MapManager::UnMapPtr(C_MapPtr* ptr) {
  if (ptr) ptr->UnMap();
}

void C_MapManager::ReleaseFileHandle(int& fd) {
  const auto entry = _handles.find(fd);
  if (entry == _handles.end()) return;
  const __2Handles handles = entry->second;
  _handles.erase(entry);
  if (closeHandle(handles) != 0) fail(HandleNotClosed);
}

// The number of a descriptor is free even when closing it fails, and soon another file's.
void C_MapManager::CloseDataFile(int& fd) {
  if (fd <= 0) return;
  ReleaseFileHandle(fd);
  const int closing = fd;
  fd = -1;
  if (CBF_close64(closing) != 0) fail(FileNotClosed, reasonInErrno);
}

void C_MapManager::RemoveDataFile(bool strict, std::wstring& name) {
  if (name.empty()) return;
  if (systemCalls().unlink(toUtf8(name).c_str()) != 0 && strict) return;
  name.clear();
}

void C_MapManager::SetDataFileSize(int fd, unsigned __int64 size) {
  if (!setFileSize(fd, size)) fail(SizeNotSet, reasonInErrno);
}

C_MapManager* getGlobalMapManager() {
  return C_MapManager::getInstance();
}
