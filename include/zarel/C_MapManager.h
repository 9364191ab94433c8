/**
 * @file C_MapManager.h
 * Byte ranges of data files in memory.
 */
#ifndef ZAREL_C_MAPMANAGER_H
#define ZAREL_C_MAPMANAGER_H

#include <map>
#include <string>

#include <zarel/C_Singleton.h>
#include <zarel/C_ZarelBase.h>

/** What all views of one file share. It is made with the first view on a descriptor and stands in
 * the map manager's table until it is released; callers only carry it. */
struct __2Handles {
  /** The manager's own descriptor of the file, -1 if it could not be had. */
  int file = -1;
  /** The file's bytes at the time of the first view: what views may reach. 0 if the file cannot
   * be mapped. */
  unsigned __int64 size = 0;
  /** A range of the file that is known to have its place on the disk. */
  unsigned __int64 solidFrom = 0;
  unsigned __int64 solidTo = 0; ///< The end of that range.
  /** Device and number of the file behind the caller's descriptor at the first view, 0 without
   * one: a descriptor that has become another file's is not taken for it. */
  unsigned __int64 device = 0;
  unsigned __int64 number = 0; ///< The file's number on that device.
};

/** What a host knows of its next accesses to a view. */
enum E_MapAdvice : int {
  E_MapNormal = 0,     ///< nothing in particular
  E_MapSequential = 1, ///< from low to high addresses: read far ahead, give up early what is behind
  E_MapRandom = 2,     ///< here and there: do not read ahead
  E_MapWillNeed = 3,   ///< soon: start to read, without waiting
  E_MapDontNeed = 4,   ///< not soon: leave the process; the file keeps all that was written
  E_MapHugePages = 5,  ///< large and dense: serve it by huge pages where the file system has them
  E_MapPopulate = 6,   ///< at once: read, and have every page ready when the call returns
  E_MapReadAll = 7 ///< the same for reading only: no page of a view for writing counts as changed
};

/**
 * One view: a byte range of a file, at an address.
 *
 * A plain record: it is copied word by word, and no destructor unmaps it. All zero while it is
 * unmapped. The view is shared with the file: what is written to it is in the file, for every
 * process, at once.
 *
 * Failures: `C_ZarelException`. Reading or writing a view whose file is cut short afterwards ends
 * the process (`SIGBUS`); cut a file only when no view of it is left.
 */
class ZAREL_API C_MapPtr {
public:
  C_MapPtr() = default;

  /**
   * Maps the bytes `offset` to `offset + length` of the file behind `handles`, in the mode set
   * before. The view starts at the multiple of `granularity` below `offset`; `granularity` is a
   * multiple of the system's page size. A view that the record shows is forgotten, not ended: end
   * it before, or through a copy of the record.
   *
   * A view for writing first gets its place on the disk, holes of the file included, so that a
   * full disk is an error here and no signal later.
   *
   * Fails with (13, 100) when the system refuses, the mode is neither 0 nor 2, the disk is full
   * (reason 5), or the range ends behind the end of the file: the end that the file had when
   * `handles` was made or the one that it has now, whichever comes first (reason 17). Offset and
   * length are then stored, and nothing is mapped.
   */
  void MapToFile(unsigned __int64 offset, unsigned __int64 length, unsigned int granularity,
                 __2Handles* handles);

  /** Ends the view and clears the record, except that it keeps its handles; does nothing when
   * nothing is mapped. A failure is reported as error 14 to the message tool, and the record stays
   * as it was. */
  void UnMap();

  /** Sets the mode of the next view: 0 to read, 2 to read and write. */
  void Init(int mode) { _mode = mode; }

  /** Tells the byte offset that was asked for. */
  unsigned __int64 GetOffsetUser() const { return _offset; }
  /** Shows the address of that byte; null while nothing is mapped. */
  char* GetPtrUser() const { return _userPtr; }
  /** Tells the bytes of the view, counted from the multiple of the granularity where it starts. */
  unsigned __int64 GetLength() const { return _mapLength; }

  /**
   * Tells the system how `length` bytes from byte `from` of the user's range will be used; what
   * lies behind its end is left out. The advice is given for whole pages. It changes speed and
   * memory use only: false says that the system did not take it, or that nothing is mapped there.
   */
  bool Advise(E_MapAdvice advice, unsigned __int64 from = 0, unsigned __int64 length = ~0ULL) const;

private:
  unsigned __int64 _offset = 0;
  unsigned __int64 _userLength = 0;
  char* _userPtr = nullptr;
  char* _mapPtr = nullptr;
  unsigned __int64 _mapLength = 0;
  [[maybe_unused]] int _reserved = 0;
  int _mode = 0;
  __2Handles* _handles = nullptr;
};

/**
 * Makes views of data files. A file is opened once for all its views, at the first one, and known
 * by the caller's descriptor from then on.
 *
 * Before a file changes its size its handles are released (`ReleaseFileHandle`): views reach as far
 * as the file did when the handles were made.
 *
 * Threads: one at a time. Failures: `C_ZarelException`, as each function tells.
 */
class ZAREL_API C_MapManager : public C_Singleton<C_MapManager>, protected Zarel::C_ZarelBase {
public:
  /** Closes the handles that are left. */
  ~C_MapManager() override;

  /**
   * Maps a range of a file and returns `ptr`, or, when that is null, a new record that the caller
   * deletes.
   *
   * @param fd      the descriptor that the file is known by. At its first view the file is opened
   *                through this descriptor if its access suffices (reading for mode 0, reading and
   *                writing for mode 2), else by `file`; later views use what that gave, whatever
   *                their mode and name. A descriptor that was closed and is now another file's is
   *                seen, and opens that file.
   * @param file    the file's name; may be null if the descriptor serves. Mode 2 creates a file
   *                that does not exist (for its owner only), which is empty and not mapped yet.
   * @param mode    2 to read and write, 0 to read
   * @param offset  the first byte; any
   * @param length  bytes, above 0
   *
   * Fails with (13, 0) when the file cannot be opened, is empty or is no regular file, and with
   * (13, 100) as `C_MapPtr::MapToFile` does. The file stays in the table all the same until it is
   * released.
   */
  C_MapPtr* MapPtr(C_MapPtr* ptr, int fd, const wchar_t* file, int mode, unsigned __int64 offset,
                   unsigned __int64 length);
  /** Ends a view; does not delete the record. Null does nothing. See `C_MapPtr::UnMap`. */
  void UnMapPtr(C_MapPtr* ptr);

  /** Closes what was opened for the views of a descriptor; existing views and the descriptor stay.
   * An unknown descriptor does nothing. Fails with (14, 0) when the system cannot close it; it is
   * forgotten all the same. */
  void ReleaseFileHandle(int& fd);
  /** Releases the handles of a descriptor, closes it and sets it to -1. Descriptors of 0 and below
   * are none. Fails with (27, 100) when closing fails, and the descriptor is gone all the same:
   * `fd` is -1. Fails as `ReleaseFileHandle` does; `fd` is then still open and as it was. */
  void CloseDataFile(int& fd);
  /** Deletes a file and empties its name. An empty name does nothing. When the file cannot be
   * deleted the name is emptied too, unless `strict` is set. */
  void RemoveDataFile(bool strict, std::wstring& name);
  /**
   * Sets the size of a file. What it grows by reads as zero and has its place on the disk. Fails
   * with (24, 100), on a full disk with reason 5; the file then has its former size and content.
   */
  void SetDataFileSize(int fd, unsigned __int64 size);

  /** Tells the bytes of which the start of every view is a multiple. */
  unsigned int GetGranularity() const { return _granularity; }

private:
  friend class C_Singleton<C_MapManager>;
  C_MapManager();

  __2Handles& HandlesOf(int fd, const wchar_t* file, int mode);
  void OpenHandles(__2Handles& handles, int fd, const wchar_t* file, int mode);
  void ForgetIfStale(int fd);

  std::map<int, __2Handles> _handles;
  unsigned int _granularity;
};

extern template class C_Singleton<C_MapManager>;

/** Shows the map manager, created at the first call. */
ZAREL_API C_MapManager* getGlobalMapManager();

namespace Zarel {
using ::C_MapManager;
using ::C_MapPtr;
using ::getGlobalMapManager;
} // namespace Zarel

#endif
