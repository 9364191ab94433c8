#include <zarel/zarelmem_ooc.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <fcntl.h>
#include <new>

#include <zarel/liste_chainee.h>
#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

#include "mapping/report.h"
#include "mapping/reserve.h"
#include "mapping/view.h"
#include "system/calls.h"
#include "system/descriptor.h"

using namespace Zarel;

namespace {

constexpr wchar_t temporaryPrefix[] = L"ZRLVS";
constexpr wchar_t noName[] = L"";
constexpr int unitType = 1;

enum State : char { adopted = 0, opened = 'O', closed = 'C' };

struct Unit {
  ZAREL_MMAP* map;
  unsigned __int64 size;
  wchar_t* fileName;
  int descriptor;
  char state;
  char* path; // the name as the system takes it, so that no memory is needed to delete the file
};

// What a function was called with, to hand on.
struct Call : Caller {
  Call(const char* itsName, const char* itsSource, int itsLine, int* itsError)
      : Caller{itsSource, itsLine, itsError}, name(itsName) {
    succeed();
  }
  // The null result of a function that failed.
  std::nullptr_t none(MapMessage message, const char* function = __builtin_FUNCTION()) const {
    fail(message, function);
    return nullptr;
  }
  const char* name;
};

LTE* units = nullptr;
int allocationMode = ZAREL_IN_CORE;

int hasName(const void* object, const void* key) {
  const wchar_t* const name = static_cast<const Unit*>(object)->fileName;
  return name && key && std::wcscmp(name, static_cast<const wchar_t*>(key)) == 0;
}

int hasRecord(const void* object, const void* key) {
  const ZAREL_MMAP* const map = static_cast<const Unit*>(object)->map;
  const auto* const record = static_cast<const ZAREL_MMAP*>(key);
  return map && record && map->address == record->address && map->id == record->id;
}

LIS* nodeOf(const void* key, LIS_COMPARE compare) {
  LIS* node = nullptr;
  if (units && key) LTE_chercher(units, key, compare, &node);
  return node;
}

Unit* unitOf(const ZAREL_MMAP* record) {
  const LIS* const node = nodeOf(record, hasRecord);
  return node ? static_cast<Unit*>(node->object) : nullptr;
}

// What the list tells of its failure needs memory, too.
bool addToList(Unit* unit) {
  try {
    if (!units) units = LTE_creer(nullptr);
    return units && LTE_ins_fin(units, unit, unitType) == 0;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// An empty list takes no memory.
void dropEmptyList() {
  if (LTE_length(units) != 0) return;
  LTE_free(units, nullptr);
  units = nullptr;
}

bool append(Unit* unit) {
  if (addToList(unit)) return true;
  dropEmptyList();
  return false;
}

void closeFile(Unit& unit) {
  if (unit.descriptor >= 0) systemCalls().close(unit.descriptor);
  unit.descriptor = -1;
}

// Releases a unit that stands in no list; its file stays.
void release(Unit* unit) {
  closeFile(*unit);
  zarelmem_free(unit->fileName, __FILE__, __LINE__);
  zarelmem_free(unit->path, __FILE__, __LINE__);
  zarelmem_free(unit, __FILE__, __LINE__);
}

bool remove(Unit* unit) {
  LIS* const node = nodeOf(unit->map, hasRecord);
  const bool removed = node && LTE_sup_elt(units, node, nullptr) == 0;
  release(unit);
  dropEmptyList();
  return removed;
}

wchar_t* copyOf(const wchar_t* text, const Call& call) {
  const size_t bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
  void* const block = zarelmem_malloc(bytes, call.name, 1, call.source, call.line);
  return block ? static_cast<wchar_t*>(std::memcpy(block, text, bytes)) : nullptr;
}

// A unit without a file yet, with copies of the name; null without memory.
Unit* newUnit(const wchar_t* file, unsigned __int64 size, const Call& call) {
  auto* const unit =
      static_cast<Unit*>(zarelmem_calloc(1, sizeof(Unit), call.name, 1, call.source, call.line));
  if (!unit) return nullptr;
  *unit = {nullptr, size, copyOf(file, call), -1, adopted, zarel_Tchar2char(file)};
  if (unit->fileName && unit->path) return unit;
  release(unit);
  return nullptr;
}

bool deleteFile(const Unit& unit) {
  return systemCalls().unlink(unit.path) == 0;
}

bool openFile(Unit& unit, int flags) {
  unit.descriptor = openDescriptor(unit.path, O_RDWR | flags).release();
  return unit.descriptor >= 0;
}

bool closeNow(Unit& unit) {
  const int descriptor = unit.descriptor;
  unit.descriptor = -1;
  return systemCalls().close(descriptor) == 0;
}

// The unit's whole file as a new mapping.
bool map(Unit& unit, const Call& call) {
  ZAREL_MMAP* const record = zarel_mmap(nullptr, -1, unit.fileName, mapReadWrite, 0, unit.size,
                                        call.name, call.source, call.line, nullptr);
  if (!record) return false;
  if (unit.map) zarelmem_free(unit.map, call.source, call.line);
  unit.map = record;
  return true;
}

bool unmap(Unit& unit, const Call& call) {
  return zarel_munmap(unit.map, call.name, call.source, call.line, nullptr) == 0;
}

// Undoes a unit that did not come about, with its mapping.
void discard(Unit* unit, const Call& call) {
  if (unit->map) {
    unmap(*unit, call);
    zarelmem_free(unit->map, call.source, call.line);
  }
  release(unit);
}

// What went wrong, 0 if nothing.
using Problem = int;
constexpr Problem none = 0;

// Whether a descriptor is of a file that may be sized, and deleted if the unit does not come about:
// not a device, a pipe or the like, which stays what it was.
bool isRegularFile(int descriptor) {
  struct stat status;
  return systemCalls().fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

Problem makeFile(Unit& unit) {
  if (unit.size != 0 && !setFileSize(unit.descriptor, unit.size)) return fileNotMade;
  return closeNow(unit) ? none : Problem(fileNotMade);
}

// Everything from the new, empty file on. The file reads as zero, so that nothing is cleared.
Problem buildOnFile(Unit& unit, const Call& call) {
  if (const Problem problem = makeFile(unit)) return problem;
  if (!map(unit, call)) return notMapped;
  unit.state = closed;
  return append(&unit) ? none : Problem(registerFailed);
}

// Opens the file of a new unit, which no other unit has. What was created exclusively is regular.
bool openForItself(Unit& unit, int flags) {
  return !nodeOf(unit.fileName, hasName) && openFile(unit, O_CREAT | flags) &&
         ((flags & O_EXCL) || isRegularFile(unit.descriptor));
}

ZAREL_MMAP* make(const wchar_t* file, int flags, unsigned __int64 size, const Call& call,
                 const char* function) {
  Unit* const unit = newUnit(file, size, call);
  if (!unit) return call.none(outOfMemory, function);
  Problem problem = fileNotMade;
  if (openForItself(*unit, flags)) {
    problem = buildOnFile(*unit, call);
    if (problem) deleteFile(*unit);
  }
  if (!problem) return unit->map;
  discard(unit, call);
  return call.none(static_cast<MapMessage>(problem), function);
}

ZAREL_MMAP* makeTemporary(unsigned __int64 size, const Call& call, const char* function) {
  wchar_t* const file = zarel_tempnam(nullptr, temporaryPrefix);
  if (!file) return call.none(fileNotMade, function);
  ZAREL_MMAP* const record = make(file, O_EXCL, size, call, function);
  zarelmem_free(file, __FILE__, __LINE__);
  return record;
}

Problem adoptFile(Unit& unit, const Call& call) {
  struct stat status;
  if (nodeOf(unit.fileName, hasName) || !openFile(unit, 0)) return fileNotMade;
  const bool holds = systemCalls().fstat(unit.descriptor, &status) == 0 &&
                     static_cast<unsigned __int64>(status.st_size) >= unit.size;
  if (!closeNow(unit) || !holds) return fileNotMade;
  if (!map(unit, call)) return notMapped;
  return append(&unit) ? none : Problem(registerFailed);
}

ZAREL_MMAP* adopt(const wchar_t* file, unsigned __int64 size, const Call& call,
                  const char* function) {
  Unit* const unit = file ? newUnit(file, size, call) : nullptr;
  if (!unit) return call.none(outOfMemory, function);
  const Problem problem = adoptFile(*unit, call);
  if (!problem) return unit->map;
  discard(unit, call);
  return call.none(static_cast<MapMessage>(problem), function);
}

// The wide name in the bytes of a narrow text, as far as that goes: up to its first zero byte. The
// last character is filled up with zeros.
std::wstring wideInNarrow(const char* file) {
  const size_t bytes = std::strlen(file);
  std::wstring name((bytes + sizeof(wchar_t) - 1) / sizeof(wchar_t), L'\0');
  std::memcpy(name.data(), file, bytes);
  return name;
}

ZAREL_MMAP* adoptNarrow(const char* file, unsigned __int64 size, const Call& call,
                        const char* function) {
  try {
    return adopt(file ? wideInNarrow(file).c_str() : nullptr, size, call, function);
  } catch (const std::bad_alloc&) {
    return call.none(outOfMemory, function);
  }
}

bool cut(int descriptor, unsigned __int64 size) {
  if (systemCalls().ftruncate(descriptor, static_cast<off_t>(size)) == 0) return true;
  if (errno == EACCES)
    std::printf(" errno : EACCES\n");
  else
    std::printf(" errno : %d\n", errno);
  return false;
}

Problem setSize(const Unit& unit, unsigned __int64 size) {
  struct stat status;
  if (systemCalls().fstat(unit.descriptor, &status) != 0) return registerFailed;
  const bool longer = static_cast<unsigned __int64>(status.st_size) > size;
  const bool done = longer ? cut(unit.descriptor, size) : setFileSize(unit.descriptor, size);
  return done ? none : Problem(fileNotMade);
}

// The steps behind the open file.
Problem resizeFile(Unit& unit, unsigned __int64 size, const Call& call) {
  if (const Problem problem = setSize(unit, size)) return problem;
  unit.state = closed;
  unit.size = size;
  if (!closeNow(unit)) return fileNotClosed;
  return map(unit, call) ? none : Problem(notMapped);
}

ZAREL_MMAP* resize(Unit* unit, unsigned __int64 size, const Call& call, const char* function) {
  if (!unmap(*unit, call)) return call.none(notUnmapped, function);
  if (unit->state != opened && !openFile(*unit, 0)) {
    remove(unit);
    return call.none(fileNotMade, function);
  }
  unit->state = opened;
  const Problem problem = resizeFile(*unit, size, call);
  return problem ? call.none(static_cast<MapMessage>(problem), function) : unit->map;
}

} // namespace

ZAREL_MMAP* zarelmem_calloc_ooc(unsigned __int64 number, unsigned __int64 size, const wchar_t* file,
                                const char* name, const char* source, int line, int* error) {
  const Call call(name, source, line, error);
  if (size != 0 && number > UINT64_MAX / size) return call.none(fileNotMade);
  return file ? make(file, O_TRUNC, number * size, call, __func__)
              : makeTemporary(number * size, call, __func__);
}

ZAREL_MMAP* zarelmem_malloc_ooc(unsigned __int64 size, const wchar_t* file, const char* name,
                                const char* source, int line, int* error) {
  return zarelmem_calloc_ooc(1, size, file, name, source, line, error);
}

ZAREL_MMAP* zarelmem_realloc_ooc(ZAREL_MMAP* record, unsigned __int64 size, const char* file,
                                 const char* name, const char* source, int line, int* error) {
  const Call call(name, source, line, error);
  if (!record) return adoptNarrow(file, size, call, __func__);
  Unit* const unit = unitOf(record);
  return unit ? resize(unit, size, call, __func__) : call.none(registerFailed);
}

ZAREL_MMAP* zarelmem_adopt_ooc(unsigned __int64 size, const wchar_t* file, const char* name,
                               const char* source, int line, int* error) {
  return adopt(file, size, Call(name, source, line, error), __func__);
}

void zarelmem_free_ooc(ZAREL_MMAP* record, int mode, const char* name, const char* source, int line,
                       int* error) {
  const Call call(name, source, line, error);
  Unit* const unit = unitOf(record);
  if (!unit) return;
  ZAREL_MMAP* const map = unit->map;
  if (!unmap(*unit, call)) {
    call.fail(notUnmapped);
  } else if (mode != ZAREL_OOC_DELETE && mode != ZAREL_OOC_KEEP) {
    call.fail(fileNotClosed);
  } else {
    if (mode == ZAREL_OOC_DELETE && !deleteFile(*unit)) call.fail(fileNotDeleted);
    if (!remove(unit)) call.fail(registerFailed);
    zarelmem_free(map, source, line);
  }
}

int zarelmem_close_mapped_unit(ZAREL_MMAP* record, const char* name, const char* source, int line,
                               int* error) {
  const Call call(name, source, line, error);
  Unit* const unit = unitOf(record);
  if (!unit || unit->state != opened) return 0;
  unit->state = closed;
  return closeNow(*unit) ? 0 : call.fail(fileNotClosed);
}

wchar_t* zarelmem_get_mapped_filename(const ZAREL_MMAP* record, const char* source, int line,
                                      int* error) {
  const Call call("zarelmem_get_mapped_filename", source, line, error);
  if (!record) return nullptr;
  const Unit* const unit = unitOf(record);
  if (!unit) return const_cast<wchar_t*>(noName);
  wchar_t* const copy = copyOf(unit->fileName, call);
  return copy ? copy : call.none(outOfMemory);
}

unsigned __int64 zarelmem_get_mapped_size(const ZAREL_MMAP* record, const char* source, int line,
                                          int* error) {
  Call("", source, line, error).succeed();
  const Unit* const unit = unitOf(record);
  return unit ? unit->size : 0;
}

int zarelmem_get_mapped_unit(const ZAREL_MMAP* record, const char* source, int line, int* error) {
  Call("", source, line, error).succeed();
  const Unit* const unit = unitOf(record);
  return unit ? unit->descriptor : -1;
}

int zarelmem_ismapped(const ZAREL_MMAP* record) {
  return unitOf(record) ? 1 : 0;
}

int zarelmem_setmode(int mode) {
  if (mode == ZAREL_IN_CORE || mode == ZAREL_OUT_OF_CORE) allocationMode = mode;
  return mode - 1;
}

int zarelmem_getmode(void) {
  return allocationMode;
}
