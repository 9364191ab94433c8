#include "svd/snapshots.h"

#include "csv.h"
#include "interrupt.h"
#include "library.h"
#include "number.h"
#include "svd/npy.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>
#include <zarel/zarelsys.h>

namespace app {

namespace {

constexpr std::size_t setHeadBytes = 8;
constexpr const char* nothingWritten = "nothing was written";

/** Bytes that are copied at a time where the order has to be turned. */
constexpr std::size_t turnBytes = std::size_t(32) << 20;
/** Vectors that are written side by side then: as many as share a line of the cache. */
constexpr std::size_t tileWidth = 8;

Failure badFile(const std::string& path, const std::string& what, const std::string& hint = {}) {
  return {ExitCode::badInput, what, hint, Place{path, 0, 0, 0, ""}};
}

std::string wholeText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", value);
  return text;
}

/** A file opened for reading, closed at the end. */
class InputFile {
public:
  /** Does not wait for the other end of a pipe, which is then refused. */
  explicit InputFile(const std::string& path)
      : InputFile(path, open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat info {};
    if (fd_ < 0 || fstat(fd_, &info) != 0) failIo("cannot read \"" + path + "\"", errno);
    if (S_ISDIR(info.st_mode))
      throw Failure(ExitCode::usage, "\"" + path + "\" is a folder", "name a file in it");
    if (!S_ISREG(info.st_mode))
      throw Failure(ExitCode::usage, "\"" + path + "\" is no regular file",
                    "only CSV is read from streams: add --format csv if it is CSV");
    size_ = static_cast<std::size_t>(info.st_size);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (fd_ >= 0) close(fd_);
  }

  std::size_t size() const { return size_; }
  /** Reads all of `bytes` at `offset`, or throws. */
  void read(void* target, std::size_t bytes, std::size_t offset) const {
    auto* at = static_cast<char*>(target);
    while (bytes > 0) {
      const ssize_t got = pread(fd_, at, bytes, static_cast<off_t>(offset));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) failIo("cannot read \"" + path_ + "\"", errno);
      if (got == 0) throw badFile(path_, "the file became shorter while it was read");
      at += got;
      offset += static_cast<std::size_t>(got);
      bytes -= static_cast<std::size_t>(got);
    }
  }
  std::string head(std::size_t bytes) const {
    std::string text(std::min(bytes, size_), '\0');
    read(text.data(), text.size(), 0);
    return text;
  }

private:
  InputFile(std::string path, int fd) : path_(std::move(path)), fd_(fd) {}

  std::string path_;
  int fd_ = -1;
  std::size_t size_ = 0;
};

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

SnapshotFormat formatOf(const SnapshotChoice& choice) {
  if (choice.format != SnapshotFormat::byName) return choice.format;
  if (choice.path == "-" || endsWith(choice.path, ".csv")) return SnapshotFormat::csv;
  if (isNpy(InputFile(choice.path).head(6))) return SnapshotFormat::npy;
  const bool counted = choice.vectors > 0 || choice.length > 0;
  return counted ? SnapshotFormat::raw : SnapshotFormat::vectorSet;
}

std::string countsText(const SnapshotLayout& layout) {
  return std::to_string(layout.vectors) + " vectors of " + std::to_string(layout.length) +
         " numbers";
}

/** A file whose size or counts are not those of its kind. */
Failure badSize(const SnapshotChoice& choice, const SnapshotLayout& layout,
                const std::string& what) {
  switch (layout.format) {
  case SnapshotFormat::npy:
    return badFile(choice.path, "its head tells of " + what, "was it copied to its end?");
  case SnapshotFormat::raw:
    return badFile(choice.path, "no raw file of " + what, "mend --vectors or --length");
  default:
    return badFile(choice.path, "no vector set file: its head would tell of " + what,
                   "a raw file needs --vectors or --length, and --format names any other kind");
  }
}

/** Counts that a set can have, and a file that holds as many numbers. */
void checkSize(const SnapshotChoice& choice, const SnapshotLayout& layout, std::size_t size,
               bool exact) {
  if (layout.vectors < 1 || layout.length < 1 || layout.vectors > INT_MAX ||
      layout.length > INT_MAX)
    throw badSize(choice, layout, countsText(layout) + "; both go from 1 to 2147483647");
  const double promised = static_cast<double>(layout.offset) + layout.bytes();
  const auto present = static_cast<double>(size);
  if (promised > present || (exact && promised < present))
    throw badSize(choice, layout,
                  countsText(layout) + ", which take " + wholeText(promised) +
                      " bytes, but it has " + std::to_string(size));
}

SnapshotLayout inspectSet(const SnapshotChoice& choice) {
  const InputFile file(choice.path);
  if (file.size() < setHeadBytes)
    throw badFile(choice.path,
                  "its " + std::to_string(file.size()) + " bytes are too few for a vector set file",
                  "--format names any other kind");
  std::int32_t counts[2];
  file.read(counts, sizeof counts, 0);
  SnapshotLayout layout{SnapshotFormat::vectorSet, counts[0], counts[1], true, setHeadBytes};
  checkSize(choice, layout, file.size(), true);
  return layout;
}

SnapshotLayout inspectNpy(const SnapshotChoice& choice) {
  const InputFile file(choice.path);
  const NpyHead head = parseNpyHead(file.head(npyHeadLimit), choice.path);
  if (head.type != "<f8")
    throw badFile(choice.path, "its numbers are \"" + head.type + "\"",
                  "only doubles with the low byte first, \"<f8\", are read");
  if (head.shape.empty() || head.shape.size() > 2)
    throw badFile(choice.path, "an array of " + std::to_string(head.shape.size()) + " dimensions",
                  "vectors are the columns of an array of two");
  if (choice.rows && head.columnOrder)
    throw Failure(ExitCode::usage, "--rows, but the head of the file says column order",
                  "leave --rows out: the head of a .npy file tells its order");
  const long long columns = head.shape.size() == 2 ? head.shape[1] : 1;
  SnapshotLayout layout{SnapshotFormat::npy, columns, head.shape[0], head.columnOrder,
                        head.dataOffset};
  if (layout.vectors == 1) layout.vectorAfterVector = true;
  checkSize(choice, layout, file.size(), false);
  return layout;
}

SnapshotLayout inspectRaw(const SnapshotChoice& choice) {
  const InputFile file(choice.path);
  const auto numbers = static_cast<long long>(file.size() / sizeof(double));
  SnapshotLayout layout{SnapshotFormat::raw, choice.vectors, choice.length, !choice.rows, 0};
  if (layout.vectors == 0 && layout.length == 0)
    throw Failure(ExitCode::usage, "a raw file does not tell how many vectors it holds",
                  "give --vectors or --length");
  if (layout.vectors == 0) layout.vectors = numbers / layout.length;
  if (layout.length == 0) layout.length = numbers / layout.vectors;
  checkSize(choice, layout, file.size(), true);
  return layout;
}

constexpr const char* noRows = "there are no rows in it";
constexpr const char* rowsWanted = "a line of names if you like, then a row of numbers a line";

/** What can be read only once, from its start to its end. */
bool isStream(const std::string& path) {
  struct stat info {};
  return path == "-" ||
         (stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode));
}

/** CSV has a record a row; the records have to be counted. */
SnapshotLayout inspectCsv(const SnapshotChoice& choice) {
  if (isStream(choice.path))
    return {SnapshotFormat::csv, 0, 0, false, 0}; // known once it has been read
  CsvReader reader(choice.path);
  while (reader.next()) {
  }
  SnapshotLayout layout{SnapshotFormat::csv, static_cast<long long>(reader.names().size()),
                        reader.row(), false, 0};
  if (layout.length == 0) throw badFile(choice.path, noRows, rowsWanted);
  return layout;
}

SnapshotLayout inspectAs(SnapshotFormat format, const SnapshotChoice& choice) {
  switch (format) {
  case SnapshotFormat::npy:
    return inspectNpy(choice);
  case SnapshotFormat::raw:
    return inspectRaw(choice);
  case SnapshotFormat::csv:
    return inspectCsv(choice);
  default:
    return inspectSet(choice);
  }
}

void checkChoice(SnapshotFormat format, const SnapshotChoice& choice) {
  if (format != SnapshotFormat::raw && (choice.vectors > 0 || choice.length > 0))
    throw Failure(ExitCode::usage, "--vectors and --length are for raw files",
                  "add --format raw if it is one");
  if (format == SnapshotFormat::vectorSet && choice.rows)
    throw Failure(ExitCode::usage, "a vector set file holds vector after vector, never rows", "");
  if (choice.path == "-" && format != SnapshotFormat::csv)
    throw Failure(ExitCode::usage, "only CSV is read from standard input", "");
}

/** Row after row into vectors, a panel of rows at a time. */
void turnRows(const InputFile& file, const SnapshotLayout& layout, double* base,
              Progress& progress) {
  const auto n = static_cast<std::size_t>(layout.vectors);
  const auto m = static_cast<std::size_t>(layout.length);
  const std::size_t panel = std::max<std::size_t>(1, turnBytes / (n * sizeof(double)));
  std::vector<double> rows(std::min(panel, m) * n);
  for (std::size_t row = 0; row < m; row += panel) {
    const std::size_t count = std::min(panel, m - row);
    file.read(rows.data(), count * n * sizeof(double), layout.offset + row * n * sizeof(double));
    for (std::size_t tile = 0; tile < n; tile += tileWidth)
      for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = tile; j < std::min(tile + tileWidth, n); ++j)
          base[j * m + row + i] = rows[i * n + j];
    progress.update(static_cast<double>((row + count) * n * sizeof(double)));
    interrupt::check(nothingWritten);
  }
}

void copyVectors(const InputFile& file, const SnapshotLayout& layout, double* base,
                 Progress& progress) {
  const auto total = static_cast<std::size_t>(layout.bytes());
  for (std::size_t done = 0; done < total;) {
    const std::size_t bytes = std::min(turnBytes, total - done);
    file.read(reinterpret_cast<char*>(base) + done, bytes, layout.offset + done);
    done += bytes;
    progress.update(static_cast<double>(done));
    interrupt::check(nothingWritten);
  }
}

void readCsv(const SnapshotChoice& choice, const SnapshotLayout& layout, double* base,
             Progress& progress) {
  CsvReader reader(choice.path);
  progress.setTotal(reader.bytesTotal());
  const auto m = static_cast<std::size_t>(layout.length), n = reader.names().size();
  for (std::size_t i = 0; reader.next(); ++i) {
    if (i == m) throw badFile(choice.path, "the file became longer while it was read");
    for (std::size_t j = 0; j < n; ++j)
      (choice.transpose ? base[i * n + j] : base[j * m + i]) = reader.number(j);
    progress.update(reader.bytesDone());
    interrupt::check(nothingWritten);
  }
}

/** All of a stream, which tells only at its end how much it held. */
Snapshots readCsvStream(const SnapshotChoice& choice) {
  CsvReader reader(choice.path);
  const std::size_t n = reader.names().size();
  std::vector<double> rows;
  while (reader.next()) {
    interrupt::check(nothingWritten);
    for (std::size_t j = 0; j < n; ++j)
      rows.push_back(reader.number(j));
  }
  const std::size_t m = n == 0 ? 0 : rows.size() / n;
  const std::string name = choice.path == "-" ? "standard input" : choice.path;
  if (m == 0) throw badFile(name, noRows, rowsWanted);
  if (m > INT_MAX || n > INT_MAX)
    throw badFile(name, "more vectors or longer ones than 2147483647");
  const auto vectors = static_cast<int>(choice.transpose ? m : n);
  const auto length = static_cast<int>(choice.transpose ? n : m);
  Snapshots result;
  result.set = std::make_unique<VectorSet>(1, vectors, length, nullptr);
  double* const base = result.set->Adr();
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < n; ++j)
      (choice.transpose ? base[i * n + j] : base[j * m + i]) = rows[i * n + j];
  return result;
}

} // namespace

SnapshotLayout inspectSnapshots(const SnapshotChoice& choice) {
  const SnapshotFormat format = formatOf(choice);
  checkChoice(format, choice);
  SnapshotLayout layout = inspectAs(format, choice);
  if (choice.transpose && format != SnapshotFormat::csv) {
    std::swap(layout.vectors, layout.length);
    layout.vectorAfterVector = !layout.vectorAfterVector;
  }
  return layout;
}

namespace {

/** Gives the holes of a file their place on the disk. Returns an errno, 0 after success. */
int fillHoles(int fd, const struct stat& info) {
  constexpr long long statBlock = 512; // whatever the file system's own is
  if (static_cast<long long>(info.st_blocks) * statBlock >= info.st_size) return 0;
  int error = EINTR;
  while (error == EINTR)
    error = posix_fallocate(fd, 0, info.st_size);
  return error == EINVAL || error == EOPNOTSUPP ? 0 : error; // the file system cannot promise it
}

} // namespace

MappedFile::MappedFile(const std::string& path, std::size_t bytes, bool writable)
    : path_(path), bytes_(bytes) {
  fd_ = open(path.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
  if (fd_ < 0) failIo("cannot open \"" + path + "\"", errno);
  struct stat info {};
  const bool whole = fstat(fd_, &info) == 0 && static_cast<std::size_t>(info.st_size) >= bytes;
  int error = whole ? 0 : EIO;
  if (error == 0 && writable) error = fillHoles(fd_, info);
  void* const view =
      error == 0
          ? mmap(nullptr, bytes, writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, fd_, 0)
          : MAP_FAILED;
  if (view == MAP_FAILED) {
    if (error == 0) error = errno;
    close(fd_);
    throw Failure(
        ExitCode::io, "cannot map \"" + path + "\": " + std::generic_category().message(error),
        error == ENOMEM ? "it is shown as a whole: raise the limit on addresses (ulimit -v)" : "");
  }
  data_ = static_cast<char*>(view);
}

MappedFile::~MappedFile() {
  if (data_ != nullptr) munmap(data_, bytes_);
  close(fd_);
}

void MappedFile::check() const {
  struct stat info {};
  if (fstat(fd_, &info) != 0) failIo("cannot read \"" + path_ + "\"", errno);
  if (static_cast<std::size_t>(info.st_size) < bytes_)
    throw badFile(path_, "the file became shorter while it was read");
}

void MappedFile::finish(std::size_t bytes) {
  if (msync(data_, bytes_, MS_SYNC) != 0) failIo("cannot write \"" + path_ + "\"", errno);
  munmap(data_, bytes_);
  data_ = nullptr;
  if (ftruncate(fd_, static_cast<off_t>(bytes)) != 0 || fsync(fd_) != 0)
    failIo("cannot write \"" + path_ + "\"", errno);
}

Snapshots viewSnapshots(const std::string& path, const SnapshotLayout& layout, bool writable) {
  Snapshots result;
  result.file = std::make_unique<MappedFile>(
      path, layout.offset + static_cast<std::size_t>(layout.bytes()), writable);
  result.set =
      std::make_unique<VectorSet>(static_cast<int>(layout.vectors), static_cast<int>(layout.length),
                                  reinterpret_cast<double*>(result.file->data() + layout.offset));
  return result;
}

namespace {

std::string folderOf(const std::wstring& file) {
  const auto folder = std::filesystem::path(file).parent_path().string();
  return folder.empty() ? "the folder for temporary files" : "\"" + folder + "\"";
}

/**
 * A set on a data file that has lost its name before it takes any place, so that nothing stays of
 * it however the run ends.
 */
std::unique_ptr<VectorSet> setOnFile(int vectors, int length) {
  const library::Hushed hushed;
  std::wstring name;
  try {
    auto set = std::make_unique<VectorSet>(2, 0, length, nullptr);
    name = set->getDataFileName();
    zarel_unlink(name.c_str());
    set->Resize(vectors, nullptr);
    return set;
  } catch (const C_ZarelException& error) {
    if (error.getErrno() == 0) throw;
    const double bytes = 8.0 * vectors * length;
    throw Failure(ExitCode::io,
                  "cannot put " + sizeText(bytes) + " of vectors on a file in " + folderOf(name) +
                      ": " + std::generic_category().message(error.getErrno()),
                  "TMPDIR names another folder");
  }
}

} // namespace

Snapshots loadSnapshots(const SnapshotChoice& choice, const SnapshotLayout& layout, bool inCore,
                        Console& console) {
  if (layout.format == SnapshotFormat::csv && isStream(choice.path)) return readCsvStream(choice);
  const bool turned = choice.transpose && layout.format == SnapshotFormat::csv;
  const long long vectors = turned ? layout.length : layout.vectors;
  const long long length = turned ? layout.vectors : layout.length;
  if (vectors > INT_MAX || length > INT_MAX)
    throw badFile(choice.path, "more vectors or longer ones than 2147483647");
  Snapshots result;
  const auto count = static_cast<int>(vectors), rows = static_cast<int>(length);
  result.set =
      inCore ? std::make_unique<VectorSet>(1, count, rows, nullptr) : setOnFile(count, rows);
  result.set->MapAllBlocks();
  double* const base = result.set->Adr();
  Progress progress(console, "reading", layout.bytes());
  if (layout.format == SnapshotFormat::csv)
    readCsv(choice, layout, base, progress);
  else if (layout.vectorAfterVector)
    copyVectors(InputFile(choice.path), layout, base, progress);
  else
    turnRows(InputFile(choice.path), layout, base, progress);
  return result;
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat first {
  }, second{};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool isSameOutput(const std::string& a, const std::string& b) {
  struct stat info {};
  if (stat(a.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) return false;
  std::error_code first, second;
  const auto one = std::filesystem::weakly_canonical(std::filesystem::absolute(a), first);
  const auto other = std::filesystem::weakly_canonical(std::filesystem::absolute(b), second);
  return isSameFile(a, b) || (!first && !second && one == other);
}

} // namespace app
