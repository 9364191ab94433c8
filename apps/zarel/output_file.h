/**
 * @file output_file.h
 * Files that the program writes: the former file stays whole until the new one is complete and on
 * disk, and no failed write passes unnoticed.
 */
#ifndef ZAREL_APP_OUTPUT_FILE_H
#define ZAREL_APP_OUTPUT_FILE_H

#include <string>
#include <string_view>

namespace app {

/**
 * Throws the `usage` failure if `path` is a regular file that may not be overwritten. Commands
 * call it before their work, so that an hour of fitting is not lost on a forgotten --force.
 */
void checkOverwrite(const std::string& path, bool force);

/**
 * One output. `-` is standard output; a device or a pipe is written in place; anything else is
 * written to a temporary of the same folder (unnamed where the file system can, exclusive
 * otherwise) and takes its name in `commit`, after it was synced. Without `commit` nothing stays.
 * The first error is kept and reported by the call that meets it and by `commit`.
 * Errors are `Failure` with code `io`, or `usage` if the file exists and `force` is false.
 */
class OutputFile {
public:
  OutputFile(std::string path, bool force);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& path() const { return path_; }
  bool isStandardOutput() const { return path_ == "-"; }

  /** Writes all of it, or throws. */
  void write(std::string_view bytes);

  /** Syncs, closes and gives the file its name. */
  void commit();

  /** As `commit`, under another name of the same folder, which may be overwritten. */
  void commitAs(const std::string& path);

private:
  void openTemporary();
  void openNamedTemporary();
  [[noreturn]] void fail(int error);
  void check();
  void syncAndLink(const std::string& target, bool replace);
  void nameUnnamed(const std::string& target, bool replace);
  void closeDescriptor();

  std::string path_;
  std::string target_; ///< path_ with links resolved
  std::string folder_;
  std::string temporary_; ///< empty when unnamed or written in place
  bool force_;
  bool inPlace_ = false;
  bool done_ = false;
  int fd_ = -1;
  int error_ = 0;
};

} // namespace app

#endif
