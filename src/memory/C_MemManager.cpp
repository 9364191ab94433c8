#include <zarel/C_MemManager.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>

#include <zarel/C_PllMgr.h>

#include "memory/allocator.h"
#include "memory/elapsed.h"
#include "memory/information.h"
#include "system/calls.h"
#include "system/files.h"
#include "system/machine.h"

using namespace Zarel;

template class C_Singleton<C_MemManager>;

namespace {

struct Header {
  std::uint32_t magic;
  std::int32_t tag;
  std::uint64_t size;
};

// What a header adds to a request, and how far behind it the user's bytes start.
constexpr std::uint64_t overhead = 8 + sizeof(std::uint64_t);
constexpr std::uint64_t distance = 8 + sizeof(std::uint64_t);
static_assert(sizeof(Header) == 16 && overhead == 16 && distance == 16);
static_assert(alignof(std::max_align_t) <= distance, "the header keeps the heap's alignment");

constexpr std::uint32_t heapMagic = 33288;
constexpr std::uint32_t externalMagic = 1010101;
constexpr int tracksWithoutWorkers = 1024;

Header* headerOf(void* block) {
  return reinterpret_cast<Header*>(static_cast<char*>(block) - distance);
}

// Plain loads and stores, which two threads that allocate at once may lose but not tear.
unsigned __int64 value(const unsigned __int64& counter) {
  return __atomic_load_n(&counter, __ATOMIC_RELAXED);
}
unsigned __int64 add(unsigned __int64& counter, unsigned __int64 change) {
  const unsigned __int64 sum = value(counter) + change;
  __atomic_store_n(&counter, sum, __ATOMIC_RELAXED);
  return sum;
}
void raise(unsigned __int64& peak, unsigned __int64 to) {
  if (to > value(peak)) __atomic_store_n(&peak, to, __ATOMIC_RELAXED);
}

void* heapCalloc(unsigned __int64 size, int, char*, int) {
  return allocator().calloc(1, size);
}
void* heapMalloc(unsigned __int64 size, int, char*, int) {
  return allocator().malloc(size);
}
void* heapRealloc(void* block, unsigned __int64 size, int, char*, int) {
  return allocator().realloc(block, size);
}
void heapFree(void* block, char*, int) {
  allocator().free(block);
}

// The host's functions take the file as text that they might change; they do not.
char* text(const char* file) {
  return const_cast<char*>(file);
}

} // namespace

C_MemTrack::C_MemTrack(char const* label, __int64& memory, double& time)
    : _time(time), _label(label ? label : ""), _memory(memory) {}

C_MemManager::C_MemManager()
    : _extCalloc(heapCalloc),
      _extMalloc(heapMalloc),
      _extRealloc(heapRealloc),
      _extFree(heapFree),
      _info(memoryInformation) {
  const auto tags = static_cast<size_t>(_tags);
  _tagInUse.resize(tags);
  _tagSize.resize(tags);
  _tagPeak.resize(tags);
  MakeTracks(getGlobalPllManager()->NbWorkers());
}

C_MemManager::~C_MemManager() {
  EndTracks();
  delete[] _externalSets;
}

// Adds to the books of a tag and to the total; a change may be one below zero, modulo 2 to the 64.
inline void C_MemManager::AddToBooks(unsigned __int64 change, int tag) {
  const auto t = static_cast<size_t>(tag);
  raise(_tagPeak[t], add(_tagSize[t], change));
  raise(_peak, add(_total, change));
}

// Writes the header of a fresh block, books it and shows the user's bytes.
inline void* C_MemManager::Book(void* header, unsigned __int64 booked, std::uint32_t magic) {
  if (!header) {
    HandleError();
    return nullptr;
  }
  *static_cast<Header*>(header) = {magic, _tag, booked};
  AddToBooks(booked, _tag);
  return static_cast<char*>(header) + distance;
}

void C_MemManager::SetMinSizeForExtAlloc(unsigned __int64 size) {
  _minExternal = size;
}

__int64 C_MemManager::InfoMem(int key) {
  int zero = 0;
  return _info(&key, &zero);
}

__int64 C_MemManager::TotalMem() {
  return InfoMem(E_MemPhysicalTotal);
}

__int64 C_MemManager::AvailMem() {
  return InfoMem(E_MemPhysicalAvail);
}

__int64 C_MemManager::AllocMem() {
  return std::max(0LL, residentBytes());
}

void* C_MemManager::Malloc(unsigned __int64 size, const char*, const char* file, int line) {
  const unsigned __int64 booked = size + overhead;
  if (booked >= _minExternal)
    return Book(_extMalloc(booked, 0, text(file), line), booked, externalMagic);
  return Book(allocator().malloc(booked), booked, heapMagic);
}

void* C_MemManager::Calloc(unsigned __int64 number, unsigned __int64 size, const char*,
                           const char* file, int line) {
  const unsigned __int64 booked = number * size + overhead;
  if (booked >= _minExternal)
    return Book(_extCalloc(booked, 0, text(file), line), booked, externalMagic);
  return Book(allocator().calloc(1, booked), booked, heapMagic);
}

void* C_MemManager::Realloc(void* block, unsigned __int64 size, const char* name, const char* file,
                            int line) {
  if (!block) return Malloc(size, name, file, line);
  const unsigned __int64 booked = size + overhead;
  Header* const old = headerOf(block);
  const Header before = *old;
  void* header = nullptr;
  if (before.magic == externalMagic)
    header = _extRealloc(old, booked, 0, text(file), line);
  else if (before.magic == heapMagic)
    header = allocator().realloc(old, booked);
  if (!header) {
    HandleError();
    return nullptr;
  }
  *static_cast<Header*>(header) = {before.magic, _tag, booked};
  AddToBooks(booked - before.size, before.tag);
  return static_cast<char*>(header) + distance;
}

// A foreign or damaged pointer shows by its magic and is passed over without a word.
void C_MemManager::Free(void* block, const char* file, int line) {
  if (!block) return;
  Header* const header = headerOf(block);
  const Header before = *header;
  if (before.magic == externalMagic)
    _extFree(header, text(file), line);
  else if (before.magic == heapMagic)
    allocator().free(header);
  else
    return;
  add(_tagSize[static_cast<size_t>(before.tag)], 0 - before.size);
  add(_total, 0 - before.size);
}

void C_MemManager::HandleError() {}

void C_MemManager::Init(ExtCalloc calloc, ExtMalloc malloc, ExtRealloc realloc, ExtFree free,
                        ExtInfo info) {
  _extCalloc = calloc;
  _extMalloc = malloc;
  _extRealloc = realloc;
  _extFree = free;
  _info = info;
  const C_PllLock guard(_lock);
  const int workers = getGlobalPllManager()->NbWorkers();
  if (!_externalSets) _externalSets = new std::set<int>[static_cast<size_t>(std::max(0, workers))];
  MakeTracks(workers);
}

void C_MemManager::Install(C_MemManager* manager) {
  if (manager == Instance()) return;
  Kill();
  Adopt(manager);
}

int C_MemManager::GetNewTag() const {
  const auto unused = std::find(_tagInUse.begin() + 1, _tagInUse.end(), 0);
  return unused == _tagInUse.end() ? -1 : static_cast<int>(unused - _tagInUse.begin());
}

void C_MemManager::SetTag(int tag) {
  _tag = tag;
  _tagInUse[static_cast<size_t>(tag)] = 1;
}

void C_MemManager::FreeTag(int tag) {
  const auto t = static_cast<size_t>(tag);
  _tagInUse[t] = 0;
  _tagSize[t] = 0;
  _tagPeak[t] = 0;
}

void C_MemManager::TagBlock(unsigned __int64& size, int tag) {
  const auto t = static_cast<size_t>(tag);
  raise(_tagPeak[t], add(_tagSize[t], size));
}

void C_MemManager::unTagBlock(unsigned __int64& size, int tag) {
  add(_tagSize[static_cast<size_t>(tag)], 0 - size);
}

unsigned __int64 C_MemManager::TagMemSize(int tag) const {
  return value(_tagSize[static_cast<size_t>(tag)]);
}

unsigned __int64 C_MemManager::TagMaxMemSize(int tag) const {
  return value(_tagPeak[static_cast<size_t>(tag)]);
}

unsigned __int64 C_MemManager::SumMemSize() const {
  return std::accumulate(_tagSize.begin(), _tagSize.end(), 0ULL);
}

unsigned __int64 C_MemManager::SumMaxMemSize() const {
  return std::accumulate(_tagPeak.begin(), _tagPeak.end(), 0ULL);
}

unsigned __int64 C_MemManager::MemSize() const {
  return value(_total);
}

unsigned __int64 C_MemManager::MaxMemSize() const {
  return value(_peak);
}

void C_MemManager::FillHeaderAndFooter(void* block, unsigned __int64& size, bool external) {
  if (block) *static_cast<Header*>(block) = {external ? externalMagic : heapMagic, _tag, size};
}

// Room for the samples of each worker. There may be samples already, so none is taken away.
void C_MemManager::MakeTracks(int workers) {
  const auto wanted = static_cast<size_t>(workers < 1 ? tracksWithoutWorkers : workers);
  if (wanted > _tracks.size()) _tracks.resize(wanted);
}

// Writes the samples a last time and deletes them.
void C_MemManager::EndTracks() {
  try {
    DumpTracks("Test");
  } catch (const std::bad_alloc&) {
    // The samples are lost for want of memory.
  }
  for (Tracks& tracks : _tracks) {
    for (const auto& sample : tracks)
      delete sample.second;
    tracks.clear();
  }
}

// The process's end, at which the manager itself stays for those that release blocks still later.
void C_MemManager::DumpAtExit() {
  if (C_MemManager* const manager = Instance()) manager->EndTracks();
}

void C_MemManager::TrackMem(const char* label) {
  constexpr double apart = 1e-10;
  static const int registered = std::atexit(DumpAtExit);
  static_cast<void>(registered);
  const auto worker = static_cast<size_t>(getGlobalPllManager()->CurrentWorker());
  if (worker >= _tracks.size()) return;
  Tracks& tracks = _tracks[worker];
  double time = elapsedTime();
  __int64 memory = AllocMem();
  if (tracks.count(time) != 0) time += apart;
  auto sample = std::make_unique<C_MemTrack>(label, memory, time);
  C_MemTrack*& place = tracks[time];
  delete place;
  place = sample.release();
}

namespace {

// A file that holds a part of the samples would pass for all of them, so it goes.
void writeTracks(const std::string& name, const std::map<double, C_MemTrack*>& tracks) {
  FILE* const file = openShared(name, "w");
  if (!file) return;
  for (const auto& [time, sample] : tracks)
    std::fprintf(file, "%lf\t%50s\t%lld\n", time, sample->Label().c_str(), sample->Memory());
  const bool written = std::ferror(file) == 0;
  if (std::fclose(file) != 0 || !written) systemCalls().unlink(name.c_str());
}

} // namespace

void C_MemManager::DumpTracks(const char* prefix) const {
  int number = 0;
  for (const Tracks& tracks : _tracks) {
    if (tracks.empty()) continue;
    writeTracks(std::string(prefix) + "_" + std::to_string(number++) + ".MemTrack", tracks);
  }
}

void ReleaseGlobalMemManager() {
  C_MemManager::Kill();
}
