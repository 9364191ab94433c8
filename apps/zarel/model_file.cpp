#include "model_file.h"

#include "failure.h"
#include "json_input.h"
#include "library.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {

namespace {

constexpr char magic[] = "ZRLNOTE1";
constexpr std::size_t word = 8;
constexpr std::size_t footerSize = 4 * word;
constexpr std::size_t blockSize = 1 << 16;

[[noreturn]] void refuse(const std::string& path, const std::string& what,
                         const std::string& hint = "") {
  Place place;
  place.file = path;
  throw Failure(ExitCode::badInput, what, hint, place);
}

/** FNV-1a of 64 bits (Fowler, Noll, Vo): any single changed byte changes the sum. */
class Checksum {
public:
  void add(const char* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
      sum_ = (sum_ ^ static_cast<unsigned char>(bytes[i])) * 0x100000001b3u;
  }
  std::uint64_t sum() const { return sum_; }

private:
  std::uint64_t sum_ = 0xcbf29ce484222325u;
};

void appendWord(std::string& out, std::uint64_t value) {
  for (std::size_t i = 0; i < word; ++i)
    out += static_cast<char>(value >> (8 * i) & 0xff);
}

std::uint64_t wordAt(const std::string& bytes, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < word; ++i)
    value |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  return value;
}

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/** A nameless file in memory. */
Stream memoryStream() {
  const int fd = memfd_create("zarel-model", MFD_CLOEXEC);
  std::FILE* stream = fd < 0 ? nullptr : fdopen(fd, "w+b");
  if (!stream) failIo("cannot create a file in memory", errno);
  return Stream(stream);
}

std::string bytesOf(std::FILE* stream, off_t offset, std::size_t size) {
  std::string bytes(size, '\0');
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got =
        pread(fileno(stream), bytes.data() + done, size - done, offset + static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failIo("cannot read a model file", errno);
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  bytes.resize(done);
  return bytes;
}

void checkSolved(KrigingList<double>& list) {
  int models = 0;
  list.GetNumKriging(models);
  bool solved = models > 0;
  for (int i = 0; i < models; ++i)
    solved = solved && list.GetItemKriging(i)->GetKrigingStatus() == E_KrigingStatusSolved;
  if (!solved) throw Failure(ExitCode::numerical, "the models are not solved");
}

/** The list as the library writes it. */
std::string listBytes(KrigingList<double>& list) {
  const Stream stream = memoryStream();
  const library::Details details; // keeps its traces off the screen
  checkSolved(list);
  errno = 0;
  if (list.Write(stream.get()) != 0 || std::fflush(stream.get()) != 0)
    failIo("cannot write the model", errno);
  struct stat info {};
  fstat(fileno(stream.get()), &info);
  return bytesOf(stream.get(), 0, static_cast<std::size_t>(info.st_size));
}

Json notesJson(const ModelNotes& notes) {
  Json json;
  json["schema_version"] = 1;
  json["inputs"] = notes.inputs;
  json["outputs"] = notes.outputs;
  json["drop_tolerance"] = notes.dropTolerance;
  json["lower_bound"] = notes.lowerBound;
  json["upper_bound"] = notes.upperBound;
  return json;
}

Stream spooledStandardInput() {
  Stream stream = memoryStream();
  std::array<char, blockSize> block{};
  for (;;) {
    const ssize_t got = read(STDIN_FILENO, block.data(), block.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failIo("cannot read standard input", errno);
    if (got == 0) break;
    if (write(fileno(stream.get()), block.data(), static_cast<std::size_t>(got)) != got)
      failIo("cannot keep standard input in memory", errno);
  }
  lseek(fileno(stream.get()), 0, SEEK_SET);
  return stream;
}

Stream openModel(const std::string& path) {
  if (path == "-") return spooledStandardInput();
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat info {};
  if (fd >= 0 && fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    close(fd);
    failIo("cannot read \"" + path + "\"", EISDIR);
  }
  std::FILE* stream = fd < 0 ? nullptr : fdopen(fd, "rb");
  if (!stream) failIo("cannot read \"" + path + "\"", errno);
  return Stream(stream);
}

std::uint64_t sizeOf(std::FILE* stream) {
  struct stat info {};
  fstat(fileno(stream), &info);
  return static_cast<std::uint64_t>(info.st_size);
}

/** The lengths of the parts of a file with notes; `json` is 0 when it has none. */
struct Parts {
  std::uint64_t list = 0;
  std::uint64_t json = 0;
};

void checkSum(std::FILE* stream, std::uint64_t size, std::uint64_t expected,
              const std::string& path) {
  Checksum sum;
  for (std::uint64_t offset = 0; offset < size; offset += blockSize) {
    const auto bytes = bytesOf(stream, static_cast<off_t>(offset),
                               std::min<std::uint64_t>(blockSize, size - offset));
    sum.add(bytes.data(), bytes.size());
  }
  if (sum.sum() != expected)
    refuse(path, "the model file is damaged: its checksum does not fit", "fit the model again");
}

Parts readFooter(std::FILE* stream, const std::string& path) {
  const std::uint64_t size = sizeOf(stream);
  Parts parts;
  parts.list = size;
  if (size < footerSize) return parts;
  const auto footer = bytesOf(stream, static_cast<off_t>(size - footerSize), footerSize);
  if (footer.size() != footerSize || footer.compare(3 * word, word, magic) != 0) return parts;
  parts.list = wordAt(footer, 0);
  parts.json = wordAt(footer, word);
  const std::uint64_t body = size - footerSize;
  if (parts.list > body || parts.json != body - parts.list)
    refuse(path, "the model file is damaged: its lengths do not fit", "fit the model again");
  checkSum(stream, size - 2 * word, wordAt(footer, 2 * word), path);
  return parts;
}

/** 0 for a list that was read. The containers throw where the models answer 1. */
int readResult(KrigingList<double>& list, std::FILE* stream) {
  try {
    return list.Read(stream);
  } catch (const C_ZarelException&) {
    return 1;
  }
}

void readList(std::FILE* stream, const Parts& parts, KrigingList<double>& list,
              const std::string& path) {
  library::Details details;
  if (readResult(list, stream) != 0)
    refuse(path, "not a model file, or one that is cut short or damaged",
           "give a file that zarel fit or zarel refine wrote" +
               (details.text().empty() ? "" : "; the library stopped at " + details.text()));
  const off_t end = lseek(fileno(stream), 0, SEEK_CUR);
  if (end >= 0 && static_cast<std::uint64_t>(end) != parts.list)
    refuse(path, "the model file is cut short or damaged: bytes behind the model",
           "fit the model again");
}

template <class T>
void take(const Json& json, const char* key, T& target, const std::string& path) {
  if (!json.contains(key)) return;
  try {
    json.at(key).get_to(target);
  } catch (const Json::exception&) {
    refuse(path, std::string("the notes of the model file have a wrong \"") + key + "\"");
  }
}

void readNotes(std::FILE* stream, const Parts& parts, ModelNotes& notes, const std::string& path) {
  const Json json = parseJson(
      bytesOf(stream, static_cast<off_t>(parts.list), static_cast<std::size_t>(parts.json)), path);
  if (!json.is_object()) refuse(path, "the notes of the model file are no JSON object");
  take(json, "inputs", notes.inputs, path);
  take(json, "outputs", notes.outputs, path);
  take(json, "drop_tolerance", notes.dropTolerance, path);
  take(json, "lower_bound", notes.lowerBound, path);
  take(json, "upper_bound", notes.upperBound, path);
  notes.stored = true;
}

std::size_t outputCount(KrigingList<double>& list) {
  int models = 0;
  list.GetNumKriging(models);
  std::size_t total = 0;
  for (int i = 0; i < models; ++i) {
    int outputs = 0;
    list.GetItemKriging(i)->GetNumSol(outputs);
    total += static_cast<std::size_t>(outputs);
  }
  return total;
}

void fitNames(KrigingList<double>& list, ModelNotes& notes, const std::string& path) {
  int inputs = 0;
  list.GetNumVar(inputs);
  const auto inputCount = static_cast<std::size_t>(inputs);
  if (!notes.stored) {
    notes.inputs = numberedNames("x", inputCount);
    notes.outputs = numberedNames("y", outputCount(list));
  }
  if (notes.inputs.size() != inputCount || notes.outputs.size() != outputCount(list))
    refuse(path, "the notes of the model file do not name all columns");
}

void giveTolerances(KrigingList<double>& list, const ModelNotes& notes, const std::string& path) {
  int models = 0;
  list.GetNumKriging(models);
  for (int i = 0; i < models; ++i) {
    auto& model = *list.GetItemKriging(i);
    if (model.PutDropToler(notes.dropTolerance) != 0 ||
        model.PutLowerKernelMultiplierBound(notes.lowerBound) != 0 ||
        model.PutUpperKernelMultiplierBound(notes.upperBound) != 0)
      refuse(path, "the notes of the model file hold a tolerance or bound out of range");
  }
}

} // namespace

std::vector<std::string> numberedNames(const std::string& stem, std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 1; i <= count; ++i)
    names.push_back(stem + std::to_string(i));
  return names;
}

void writeModel(OutputFile& output, KrigingList<double>& list, const ModelNotes& notes) {
  const std::string models = listBytes(list);
  const std::string json = notesJson(notes).dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string footer;
  appendWord(footer, models.size());
  appendWord(footer, json.size());
  Checksum sum;
  for (const std::string_view part : std::initializer_list<std::string_view>{models, json, footer})
    sum.add(part.data(), part.size());
  appendWord(footer, sum.sum());
  output.write(models);
  output.write(json);
  output.write(footer + magic);
}

void saveModel(const std::string& path, bool force, KrigingList<double>& list,
               const ModelNotes& notes) {
  OutputFile output(path, force);
  writeModel(output, list, notes);
  output.commit();
}

void readModel(const std::string& path, KrigingList<double>& list, ModelNotes& notes) {
  const Stream stream = openModel(path);
  const std::string name = path == "-" ? "standard input" : path;
  const Parts parts = readFooter(stream.get(), name);
  readList(stream.get(), parts, list, name);
  notes = ModelNotes();
  if (parts.json > 0) readNotes(stream.get(), parts, notes, name);
  fitNames(list, notes, name);
  if (notes.stored) giveTolerances(list, notes, name);
}

} // namespace app
