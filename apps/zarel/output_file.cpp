#include "output_file.h"

#include "failure.h"
#include "standard_streams.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace app {

namespace {

bool isRegular(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool existsOtherwise(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

/** Where a link leads; the path itself when it does not exist yet. */
std::string resolved(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::weakly_canonical(path, error);
  return error ? path : real.string();
}

std::string folderOf(const std::string& path) {
  const auto folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

[[noreturn]] void refuseOverwrite(const std::string& path) {
  throw Failure(ExitCode::usage, "\"" + path + "\" exists already",
                "give --force to overwrite it, or another name");
}

/** A name in `folder` that nothing else uses. */
std::string freshName(const std::string& target, int attempt) {
  return folderOf(target) + "/." + std::filesystem::path(target).filename().string() + "." +
         std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
}

void syncFolder(const std::string& folder) {
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return; // a folder that may be written but not read
  fsync(fd);
  close(fd);
}

constexpr int freshNameAttempts = 100;

} // namespace

void checkOverwrite(const std::string& path, bool force) {
  if (path != "-" && !force && isRegular(path)) refuseOverwrite(path);
}

OutputFile::OutputFile(std::string path, bool force) : path_(std::move(path)), force_(force) {
  if (isStandardOutput()) {
    inPlace_ = true;
    fd_ = dataDescriptor();
    return;
  }
  checkOverwrite(path_, force_);
  target_ = resolved(path_);
  folder_ = folderOf(target_);
  inPlace_ = existsOtherwise(path_);
  if (inPlace_)
    fd_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
  else
    openTemporary();
  if (fd_ < 0) failIo("cannot write \"" + path_ + "\"", errno);
}

void OutputFile::openTemporary() {
  fd_ = open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (fd_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) openNamedTemporary();
  struct stat former {};
  if (fd_ >= 0 && stat(target_.c_str(), &former) == 0) fchmod(fd_, former.st_mode & 07777);
}

void OutputFile::openNamedTemporary() {
  for (int attempt = 0; attempt < freshNameAttempts; ++attempt) {
    temporary_ = freshName(target_, attempt);
    fd_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd_ >= 0 || errno != EEXIST) break;
  }
  if (fd_ < 0) temporary_.clear();
}

OutputFile::~OutputFile() {
  if (!done_ && !temporary_.empty()) unlink(temporary_.c_str());
  if (fd_ >= 0 && !isStandardOutput()) close(fd_);
}

void OutputFile::fail(int error) {
  if (error_ == 0) error_ = error;
  const std::string name = isStandardOutput() ? "standard output" : "\"" + path_ + "\"";
  const std::string stays = !inPlace_ && isRegular(path_) ? "the former file is unchanged" : "";
  throw Failure(ExitCode::io,
                "cannot write " + name + ": " + std::generic_category().message(error_), stays);
}

void OutputFile::check() {
  if (error_ != 0) fail(error_);
}

void OutputFile::write(std::string_view bytes) {
  check();
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      fail(errno);
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void OutputFile::commit() {
  syncAndLink(target_, force_);
}

void OutputFile::commitAs(const std::string& path) {
  syncAndLink(resolved(path), true);
}

void OutputFile::syncAndLink(const std::string& target, bool replace) {
  check();
  // Devices, pipes and terminals cannot be synced; they say EINVAL or EROFS.
  if (fsync(fd_) != 0 && !inPlace_) fail(errno);
  if (!inPlace_) {
    nameUnnamed(target, replace);
    syncFolder(folder_);
  }
  closeDescriptor();
  done_ = true;
}

void OutputFile::nameUnnamed(const std::string& target, bool replace) {
  const std::string self = "/proc/self/fd/" + std::to_string(fd_);
  if (temporary_.empty() && !replace) {
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0) return;
    if (errno == EEXIST) refuseOverwrite(path_);
    fail(errno);
  }
  if (!temporary_.empty() && !replace) {
    if (link(temporary_.c_str(), target.c_str()) != 0) {
      if (errno == EEXIST) refuseOverwrite(path_);
      fail(errno);
    }
    unlink(temporary_.c_str());
    return;
  }
  for (int attempt = 0; temporary_.empty() && attempt < freshNameAttempts; ++attempt) {
    const std::string name = freshName(target, attempt);
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
      temporary_ = name;
    else if (errno != EEXIST)
      fail(errno);
  }
  if (rename(temporary_.c_str(), target.c_str()) != 0) fail(errno);
}

void OutputFile::closeDescriptor() {
  if (isStandardOutput()) return; // closed, and checked, at the end of the program
  const int fd = fd_;
  fd_ = -1;
  if (close(fd) != 0 && errno != EINTR) fail(errno);
}

} // namespace app
