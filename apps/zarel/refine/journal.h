/**
 * @file journal.h
 * An append-only file of JSON records, one a line, each behind its checksum. What `append` has
 * returned from is on disk; a process may be killed at any moment.
 */
#ifndef ZAREL_APP_REFINE_JOURNAL_H
#define ZAREL_APP_REFINE_JOURNAL_H

#include "report.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace app::refine {

/** CRC-32 of IEEE 802.3 (reflected polynomial 0xEDB88320), as zip files and `crc32` have it. */
std::uint32_t crc32(std::string_view bytes);

/** The line of a record: eight hexadecimal digits, a blank, the JSON text, a line feed. */
std::string journalLine(const Json& record);

/** An open journal. Errors: `Failure`, code `io`, or `badInput` for a damaged file. */
class Journal {
public:
  /**
   * Opens or creates the file, hands every record to `replay` in order, and cuts off a last line
   * that a killed process left unfinished. A damaged line before the last is an error: nothing
   * that was once complete is thrown away silently.
   */
  Journal(const std::string& path, const std::function<void(const Json&)>& replay);
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal();

  /** True if an unfinished last line was cut off. */
  bool wasTorn() const { return torn_; }

  /** Writes the record and waits until it is on disk. A failed write leaves the file as it was. */
  void append(const Json& record);

private:
  void open();
  void replayAll(const std::function<void(const Json&)>& replay);
  void cutTo(long long size);

  std::string path_;
  int fd_ = -1;
  long long size_ = 0; ///< bytes of complete lines
  bool torn_ = false;
};

/** Syncs a folder, so that names made in it outlive a crash of the machine. */
void syncFolder(const std::string& path);

} // namespace app::refine

#endif
