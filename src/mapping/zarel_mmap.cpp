#include <zarel/zarel_mmap.h>

#include <climits>
#include <cstdio>
#include <new>

#include <zarel/hash_util.h>
#include <zarel/zarelmem.h>

#include "mapping/report.h"
#include "mapping/view.h"
#include "system/calls.h"
#include "system/descriptor.h"
#include "system/mapping.h"

using namespace Zarel;

namespace {

constexpr int buckets = 509;
constexpr unsigned __int64 largestReadOnlyView = 0xFFFFFFFF;

HashTable* mappings = nullptr;
int lastId = 0;

// The name of a mapping in the register. The id tells mappings apart that had the same address one
// after the other.
struct Key {
  explicit Key(const ZAREL_MMAP& record) {
    std::snprintf(text, sizeof text, "%p %d", record.address, record.id);
  }
  char text[48];
};

// Numbers start anew behind the largest one: an address is mapped once at a time, so that keys stay
// different.
int followerOf(int id) {
  return id == INT_MAX ? 1 : id + 1;
}

bool haveRegister() {
  return mappings || hashCreate(buckets, &mappings) == 0;
}

ZAREL_MMAP_VIEW* registered(const ZAREL_MMAP& record) {
  void* value = nullptr;
  if (mappings) hashSearch(mappings, Key(record).text, &value);
  return static_cast<ZAREL_MMAP_VIEW*>(value);
}

template <class Record>
Record* newRecord(const char* name, const Caller& caller) {
  return static_cast<Record*>(zarelmem_malloc(sizeof(Record), name, 1, caller.source, caller.line));
}

void release(void* record, const Caller& caller) {
  zarelmem_free(record, caller.source, caller.line);
}

bool isTooLongToRead(int mode, unsigned __int64 offset, unsigned __int64 length) {
  return mode == mapReading &&
         (length > largestReadOnlyView || offset % pageSize() + length > largestReadOnlyView);
}

// Opens and maps; the file stays open with the view. False if the system refuses.
bool makeView(const wchar_t* file, int mode, unsigned __int64 offset, unsigned __int64 length,
              ZAREL_MMAP_VIEW& record) {
  if (isTooLongToRead(mode, offset, length)) return false;
  Descriptor descriptor(openForViews(file, mode));
  __2Handles handles;
  handles.file = descriptor.get();
  View view;
  if (!descriptor || !takeSize(handles) ||
      !mapView(handles, mode, offset, length, pageSize(), view))
    return false;
  record = {view.start, view.user, view.length, descriptor.release()};
  return true;
}

bool makeViewOrNone(const wchar_t* file, int mode, unsigned __int64 offset, unsigned __int64 length,
                    ZAREL_MMAP_VIEW& record) {
  try {
    return makeView(file, mode, offset, length, record);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Fills a record in and registers it. False, and the record is not registered, without memory.
bool enter(ZAREL_MMAP& record, ZAREL_MMAP_VIEW* view) {
  record = {view->address, followerOf(lastId), 'Y', 0};
  if (!haveRegister() || hashAdd(mappings, Key(record).text, view) != 0) return false;
  lastId = record.id;
  return true;
}

// Takes a mapping whose view has ended out of the register.
int leave(ZAREL_MMAP& record, ZAREL_MMAP_VIEW* view, const Caller& caller) {
  record.mapped = 'N';
  const int result = hashDelete(mappings, Key(record).text);
  release(view, caller);
  return result == 0 ? 0 : caller.fail(registerFailed, "zarel_munmap");
}

} // namespace

ZAREL_MMAP_VIEW* zarel_mmap_(ZAREL_MMAP_VIEW* record, int, const wchar_t* file, int mode,
                             unsigned __int64 offset, unsigned __int64 length, const char* name,
                             const char* source, int line, int* error) {
  const Caller caller{source, line, error};
  caller.succeed();
  ZAREL_MMAP_VIEW* const result = record ? record : newRecord<ZAREL_MMAP_VIEW>(name, caller);
  if (result && makeViewOrNone(file, mode, offset, length, *result)) return result;
  if (!record) release(result, caller);
  caller.refuse();
  return nullptr;
}

ZAREL_MMAP* zarel_mmap(ZAREL_MMAP* record, int fd, const wchar_t* file, int mode,
                       unsigned __int64 offset, unsigned __int64 length, const char* name,
                       const char* source, int line, int* error) {
  const Caller caller{source, line, error};
  ZAREL_MMAP_VIEW* const view =
      zarel_mmap_(nullptr, fd, file, mode, offset, length, name, source, line, error);
  if (!view) return nullptr;
  ZAREL_MMAP* const result = record ? record : newRecord<ZAREL_MMAP>(name, caller);
  ZAREL_MMAP entry;
  if (result && enter(entry, view)) {
    *result = entry;
    return result;
  }
  if (!record) release(result, caller);
  zarel_munmap_(view, name, source, line);
  release(view, caller);
  caller.refuse();
  return nullptr;
}

int zarel_munmap_(ZAREL_MMAP_VIEW* record, const char*, const char* source, int line) {
  const Caller caller{source, line, nullptr};
  if (!record || !record->view) return 0;
  if (systemCalls().munmap(record->view, record->length) != 0) return caller.fail(registerFailed);
  record->view = nullptr;
  const int file = record->file;
  record->file = -1;
  return systemCalls().close(file) == 0 ? 0 : caller.fail(registerFailed);
}

int zarel_munmap(ZAREL_MMAP* record, const char* name, const char* source, int line, int* error) {
  const Caller caller{source, line, error};
  if (!record || !record->address) return caller.refuse();
  caller.succeed();
  ZAREL_MMAP_VIEW* const view = record->mapped == 'Y' ? registered(*record) : nullptr;
  if (!view) return 0;
  if (zarel_munmap_(view, name, source, line) == 0) return leave(*record, view, caller);
  return caller.failTraced();
}

void free_variables_zarel_mmap(void) {
  if (!mappings) return;
  for (int k = 0; k < mappings->size; ++k) {
    for (const HashNode* node = mappings->buckets[k]; node; node = node->next) {
      auto* const view = static_cast<ZAREL_MMAP_VIEW*>(node->value);
      if (view->file >= 0) systemCalls().close(view->file);
      zarelmem_free(view, __FILE__, __LINE__);
    }
  }
  hashDestroy(mappings);
  mappings = nullptr;
}
