/**
 * @file snapshots.h
 * Sets of vectors that a decomposition reads: from a vector set file, a .npy file, raw doubles or
 * CSV, in memory or on a data file.
 */
#ifndef ZAREL_APP_SVD_SNAPSHOTS_H
#define ZAREL_APP_SVD_SNAPSHOTS_H

#include "console.h"

#include <cstddef>
#include <memory>
#include <string>
#include <zarel/C_vstruct.h>

namespace app {

using VectorSet = Zarel::C_VSTRUCT<double>;

enum class SnapshotFormat { byName, vectorSet, npy, raw, csv };

/** What the command line says about the input. */
struct SnapshotChoice {
  std::string path;
  SnapshotFormat format = SnapshotFormat::byName;
  bool rows = false;      ///< the numbers of a file stand row after row, not vector after vector
  bool transpose = false; ///< the vectors are the rows of the table
  long long vectors = 0;  ///< of a raw file; 0: not given
  long long length = 0;
};

/** The numbers of a file as they lie there. */
struct SnapshotLayout {
  SnapshotFormat format = SnapshotFormat::byName;
  long long vectors = 0;
  long long length = 0;
  bool vectorAfterVector = true; ///< else row after row
  std::size_t offset = 0;        ///< of the first number in the file

  double bytes() const { return 8.0 * static_cast<double>(vectors) * static_cast<double>(length); }
};

/**
 * Finds out what a file holds. Failures: `badInput` for a file that is not what it seems or is
 * shorter than it promises, `usage` for choices that do not fit, `io`.
 */
SnapshotLayout inspectSnapshots(const SnapshotChoice& choice);

/** Bytes of a file in memory, for reading or for both ways. */
class MappedFile {
public:
  /**
   * Maps the first `bytes` of a file; for both ways, holes get their place on the disk first, so
   * that a full disk is an error and no signal later. Throws `io`.
   */
  MappedFile(const std::string& path, std::size_t bytes, bool writable);
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile();

  char* data() const { return data_; }
  /**
   * Looks whether the file still has all bytes, as reading those that were cut off ends the
   * process. Throws `badInput`.
   */
  void check() const;
  /** Writes changes back, cuts the file and syncs it. Throws `io`. */
  void finish(std::size_t bytes);

private:
  std::string path_;
  int fd_ = -1;
  char* data_ = nullptr;
  std::size_t bytes_;
};

/** A set, and the file that it looks into if it does. */
struct Snapshots {
  std::unique_ptr<MappedFile> file; ///< outlives the set
  std::unique_ptr<VectorSet> set;
};

/** Shows the vectors of a file that lie one after the other, without reading them. */
Snapshots viewSnapshots(const std::string& path, const SnapshotLayout& layout, bool writable);

/** Copies the numbers into a set of its own, in memory or on a temporary data file. */
Snapshots loadSnapshots(const SnapshotChoice& choice, const SnapshotLayout& layout, bool inCore,
                        Console& console);

/** Whether two names lead to one file; both exist. */
bool isSameFile(const std::string& a, const std::string& b);

/** Whether two outputs would be one file, whether it exists or not. Devices take several. */
bool isSameOutput(const std::string& a, const std::string& b);

} // namespace app

#endif
