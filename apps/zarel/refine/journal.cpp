#include "journal.h"

#include "json_input.h"

#include <array>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app::refine {
namespace {

constexpr std::size_t checksumLength = 8;

std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit)
      value = (value >> 1) ^ ((value & 1) ? 0xEDB88320u : 0u);
    table[i] = value;
  }
  return table;
}

std::string readAll(int fd, const std::string& path) {
  std::string text;
  std::array<char, 1 << 16> block;
  for (;;) {
    const ssize_t got = ::read(fd, block.data(), block.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failIo("cannot read " + path, errno);
    if (got == 0) return text;
    text.append(block.data(), static_cast<std::size_t>(got));
  }
}

/// The JSON text of a line, or nothing if the line is not what was once written.
std::string_view payload(std::string_view line) {
  if (line.size() <= checksumLength + 1 || line[checksumLength] != ' ') return {};
  const std::string_view text = line.substr(checksumLength + 1);
  char expected[checksumLength + 1];
  std::snprintf(expected, sizeof expected, "%08x", static_cast<unsigned>(crc32(text)));
  return line.substr(0, checksumLength) == expected ? text : std::string_view{};
}

} // namespace

std::uint32_t crc32(std::string_view bytes) {
  static const std::array<std::uint32_t, 256> table = makeTable();
  std::uint32_t value = 0xFFFFFFFFu;
  for (char c : bytes)
    value = (value >> 8) ^ table[(value ^ static_cast<unsigned char>(c)) & 0xFFu];
  return value ^ 0xFFFFFFFFu;
}

std::string journalLine(const Json& record) {
  const std::string text = record.dump(-1, ' ', false, Json::error_handler_t::replace);
  char checksum[checksumLength + 2];
  std::snprintf(checksum, sizeof checksum, "%08x ", static_cast<unsigned>(crc32(text)));
  return checksum + text + '\n';
}

Journal::Journal(const std::string& path, const std::function<void(const Json&)>& replay)
    : path_(path) {
  open();
  try {
    replayAll(replay);
  } catch (...) {
    ::close(fd_);
    throw;
  }
}

Journal::~Journal() {
  ::close(fd_);
}

void Journal::open() {
  fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd_ < 0) failIo("cannot open " + path_, errno);
}

void Journal::replayAll(const std::function<void(const Json&)>& replay) {
  const std::string text = readAll(fd_, path_);
  long long number = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    ++number;
    const std::size_t end = text.find('\n', begin);
    const bool complete = end != std::string::npos;
    const std::string_view line(text.data() + begin, (complete ? end : text.size()) - begin);
    const std::string_view record = complete ? payload(line) : std::string_view{};
    if (record.empty()) {
      if (complete && end + 1 < text.size())
        throw Failure(ExitCode::badInput, "the record is damaged",
                      "restore the file from a copy, or start over in another folder",
                      Place{path_, number, 0, 0, {}});
      torn_ = true;
      break;
    }
    replay(parseJson(record, path_));
    begin = end + 1;
    size_ = static_cast<long long>(begin);
  }
  if (torn_) cutTo(size_);
}

void Journal::cutTo(long long size) {
  if (::ftruncate(fd_, size) != 0 || ::fdatasync(fd_) != 0) failIo("cannot mend " + path_, errno);
}

void Journal::append(const Json& record) {
  const std::string line = journalLine(record);
  std::size_t written = 0;
  while (written < line.size()) {
    const ssize_t put = ::write(fd_, line.data() + written, line.size() - written);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) {
      const int error = errno;
      if (::ftruncate(fd_, size_) != 0) torn_ = true; // the next start cuts it off
      failIo("cannot write " + path_, error);
    }
    written += static_cast<std::size_t>(put);
  }
  if (::fdatasync(fd_) != 0) failIo("cannot write " + path_ + " to disk", errno);
  size_ += static_cast<long long>(line.size());
}

void syncFolder(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) failIo("cannot open the folder " + path, errno);
  const int failed = ::fsync(fd);
  const int error = errno;
  ::close(fd);
  if (failed != 0 && error != EINVAL) failIo("cannot write the folder " + path + " to disk", error);
}

} // namespace app::refine
