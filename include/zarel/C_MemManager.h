/**
 * @file C_MemManager.h
 * The library's allocator and its books.
 */
#ifndef ZAREL_C_MEMMANAGER_H
#define ZAREL_C_MEMMANAGER_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <zarel/C_Singleton.h>
#include <zarel/C_ZarelBase.h>

/** One sample of the process's memory. */
class ZAREL_API C_MemTrack {
public:
  C_MemTrack(char const* label, __int64& memory, double& time);

  double Time() const { return _time; }               ///< seconds since the first sample
  const std::string& Label() const { return _label; } ///< what the host called the moment
  __int64 Memory() const { return _memory; }          ///< resident bytes

private:
  double _time;
  std::string _label;
  __int64 _memory;
};

/**
 * The one allocator of a process: it hands out blocks, keeps the books on them by tag, and answers
 * questions about the machine's memory.
 *
 * All memory of the library comes from it, through the functions of zarelmem.h. Before each block
 * stands a header of 16 bytes: who allocated it (the tag), where it came from and how big it is.
 * The books count a block with its header. A block whose booked size is at or above a threshold
 * comes from the host's allocator (`Init`), any other from the process heap, and each goes back to
 * where it came from, whatever the threshold is by then. Blocks are aligned to 16 bytes.
 *
 * A host may derive from the manager and have its own used (`Install`).
 *
 * Threads: one at a time; the books take no lock. Threads that allocate at once get their blocks
 * all the same, but the books may then miss some. `Init` holds lock 107 of the parallel manager.
 * Failures: null results; nothing is thrown but `std::bad_alloc`, by the constructor, `Init` and
 * `TrackMem`. Sizes and tags are not tested: a size with its header, and the product of `Calloc`,
 * must fit 64 bits, and a tag lies between 0 and 999. The functions of zarelmem.h test sizes.
 */
class ZAREL_API C_MemManager : public C_Singleton<C_MemManager>, protected Zarel::C_ZarelBase {
public:
  /** What `InfoMem` can be asked for. */
  enum E_MemKey : int {
    E_MemPhysicalTotal = 1,    ///< bytes of memory that the machine has
    E_MemCommitTotal = 4,      ///< bytes that the system has promised to all processes
    E_MemKernelTotal = 16,     ///< pages that the kernel keeps for itself
    E_MemKernelPaged = 32,     ///< those of them that it can give up
    E_MemKernelNonpaged = 64,  ///< those that it cannot
    E_MemPhysicalAvail = 128,  ///< bytes that a process can have without swapping
    E_MemSystemCache = 4096,   ///< bytes of files that the system keeps in memory
    E_MemPageSize = 8192,      ///< bytes of a page
    E_MemHandleCount = 16384,  ///< open files of all processes
    E_MemThreadCount = 32768,  ///< threads of all processes
    E_MemProcessCount = 65536, ///< processes
    E_MemCommitLimit = 131072  ///< pages that the system may promise
  };

  /** @name Host functions: size or block, 0, file and line of the caller @{ */
  using ExtCalloc = void* (*)(unsigned __int64, int, char*, int);
  using ExtMalloc = void* (*)(unsigned __int64, int, char*, int);
  using ExtRealloc = void* (*)(void*, unsigned __int64, int, char*, int);
  using ExtFree = void (*)(void*, char*, int);
  using ExtInfo = __int64 (*)(int* key, int* zero);
  /** @} */

  /** Writes the samples as `DumpTracks("Test")` does and deletes them. Blocks stay. */
  ~C_MemManager() override;

  /** Sets the booked size (request and header) from which on blocks come from the host. */
  virtual void SetMinSizeForExtAlloc(unsigned __int64 size);
  /** Asks the memory information function for an `E_MemKey`; -1 for another key and when the
   * system does not tell. */
  virtual __int64 InfoMem(int key);
  virtual __int64 TotalMem(); ///< `InfoMem(E_MemPhysicalTotal)`
  virtual __int64 AvailMem(); ///< `InfoMem(E_MemPhysicalAvail)`
  /** Tells the bytes of memory that the process occupies now; 0 if the system does not tell. */
  virtual __int64 AllocMem();

  /** Allocates a block, of no bytes too; null after `HandleError` when there is no memory. `name`,
   * `file` and `line` say who asks; they are not kept. */
  virtual void* Malloc(unsigned __int64 size, const char* name, const char* file, int line);
  /** The same, of `number` elements of `size` bytes that are all zero. */
  virtual void* Calloc(unsigned __int64 number, unsigned __int64 size, const char* name,
                       const char* file, int line);
  /**
   * Changes a block's size and keeps its content; a null block goes to `Malloc`. It stays where it
   * came from, whatever its size. Null after `HandleError`, and the block as it was, when there is
   * no memory or the block is none of this manager's.
   *
   * The header takes the current tag, but the change of size is booked on the tag that stood there
   * before: bytes stay booked where they were allocated, until the whole block is released from
   * the tag that it has then.
   */
  virtual void* Realloc(void* block, unsigned __int64 size, const char* name, const char* file,
                        int line);
  /** Releases a block. Null, and a pointer to what is no block of this manager, do nothing. */
  virtual void Free(void* block, const char* file, int line);
  /** Called when there is no memory, before the null result. Does nothing; for derived managers. */
  virtual void HandleError();

  /**
   * Takes the host's allocators for large blocks and its memory information. None may be null.
   * Blocks that live go back to the functions of the moment. Once the parallel manager knows its
   * workers this also makes room for the samples of each.
   */
  void Init(ExtCalloc calloc, ExtMalloc malloc, ExtRealloc realloc, ExtFree free, ExtInfo info);
  /** Has a derived manager, from `new`, used from now on, and deletes the one used before, unless
   * it is the same. Blocks that live were not booked by the new one: do it before the first
   * allocation. */
  static void Install(C_MemManager* manager);

  /** @name Tags @{ */
  /** Tells the lowest tag from 1 that is not in use, -1 if there is none. Does not mark it. */
  int GetNewTag() const;
  /** Stamps this tag on new blocks from now on and marks it in use. */
  void SetTag(int tag);
  /** Tells the tag that new blocks get; 0 at first. */
  int GetTag() const { return _tag; }
  /** Marks a tag as not in use and forgets its bytes and its peak; it may stay the current one. The
   * release of its blocks that still live takes its bytes below zero, around 2 to the power 64. */
  void FreeTag(int tag);
  /** Books bytes on a tag; the totals stay. */
  void TagBlock(unsigned __int64& size, int tag);
  /** Takes bytes off a tag; its peak and the totals stay. */
  void unTagBlock(unsigned __int64& size, int tag);
  unsigned __int64 TagMemSize(int tag) const;    ///< bytes booked on a tag now
  unsigned __int64 TagMaxMemSize(int tag) const; ///< the most that they were
  unsigned __int64 SumMemSize() const;           ///< sum over all tags
  unsigned __int64 SumMaxMemSize() const;        ///< sum of the peaks, which is no peak of the sum
  /** @} */

  unsigned __int64 MemSize() const;    ///< bytes booked now
  unsigned __int64 MaxMemSize() const; ///< the most that they were

  /** Writes the header of a block of `size` booked bytes, with the current tag; null is passed
   * over. Nothing is written behind the block. */
  void FillHeaderAndFooter(void* block, unsigned __int64& size, bool external);

  /** Samples the process's memory under a label, for the calling worker. */
  void TrackMem(const char* label);
  /**
   * Writes the samples, a file for each worker that has any: "prefix_0.MemTrack" and on. A sample
   * is a line of time (seconds), label (right-aligned in 50 columns) and bytes, separated by tabs,
   * in ascending time. A file that cannot be created, or not written to its end, is left out.
   *
   * A process that took samples writes them at its end with the prefix "Test", unasked.
   */
  void DumpTracks(const char* prefix) const;

protected:
  C_MemManager();

private:
  friend class C_Singleton<C_MemManager>;
  using Tracks = std::map<double, C_MemTrack*>;

  void* Book(void* header, unsigned __int64 booked, std::uint32_t magic);
  void AddToBooks(unsigned __int64 change, int tag);
  void MakeTracks(int workers);
  void EndTracks();
  void DebugMemory() {}
  void DumpExternalSet() {}
  static void DumpAtExit();

  ExtCalloc _extCalloc;
  ExtMalloc _extMalloc;
  ExtRealloc _extRealloc;
  ExtFree _extFree;
  ExtInfo _info;
  unsigned __int64 _total = 0;
  unsigned __int64 _peak = 0;
  [[maybe_unused]] unsigned __int64 _reserved = 0;
  int _lock = 107;
  unsigned __int64 _minExternal = (1ULL << 31) - 1;
  std::set<int>* _externalSets = nullptr;
  int _tags = 1000;
  int _tag = 0;
  std::vector<int> _tagInUse;
  std::vector<unsigned __int64> _tagSize;
  std::vector<unsigned __int64> _tagPeak;
  std::vector<Tracks> _tracks;
};

extern template class C_Singleton<C_MemManager>;

/** Shows the memory manager, created at the first call. */
inline C_MemManager* getGlobalMemManager() {
  return C_MemManager::getInstance();
}
/** Deletes the memory manager if there is one; the next allocation creates a fresh one. */
ZAREL_API void ReleaseGlobalMemManager();

namespace Zarel {
using ::C_MemManager;
using ::C_MemTrack;
using ::getGlobalMemManager;
using ::ReleaseGlobalMemManager;
} // namespace Zarel

#endif
