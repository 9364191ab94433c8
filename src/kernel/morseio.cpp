// Sparse vectors in text and binary files.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <zarel/bf.h>
#include <zarel/lm_morse.h>
#include <zarel/zarelmem.h>

#include "kernel/binaryfile.h"
#include "kernel/morse.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

template <class S>
void print(FILE* stream, const char* title, const S* v) {
  FILE* const to = stream ? stream : stdout;
  if (!v) {
    std::fputs("NULL vector\n", to);
    return;
  }
  const char* const rule = "------------------------------\n\n";
  std::fprintf(to, "%s :\nDim = %d, Number of effective values = %d\n", title, v->dim, v->nb);
  if (v->nb == 0) return;
  std::fputs(rule, to);
  morse::eachEntry(v, [to](int i, double x) { std::fprintf(to, "[%d] : %g\n", i, x); });
  std::fputs(rule, to);
}

// The words of an entry lie side by side in the file of a tree: 4 bytes of index, 8 of value.
// Entries pass through a stage, in the byte order of the stream.
enum { EntryBytes = 12, IndexBytes = 4, StageEntries = 256 };

bool isReversed(FILE* stream) {
  const int one = 1;
  char first = 0;
  std::memcpy(&first, &one, 1);
  const bool littleHost = first == 1;
  return littleHost == (IsFileException(stream) != 0);
}

void turn(char* entry) {
  SwapBytes(entry, IndexBytes);
  SwapBytes(entry + IndexBytes, EntryBytes - IndexBytes);
}

class EntryWriter {
public:
  explicit EntryWriter(FILE* stream) : _stream(stream), _reversed(isReversed(stream)) {}

  void add(int index, double value) {
    char* const entry = _stage + _count * EntryBytes;
    std::memcpy(entry, &index, IndexBytes);
    std::memcpy(entry + IndexBytes, &value, sizeof value);
    if (_reversed) turn(entry);
    if (++_count == StageEntries) write();
  }
  bool finish() {
    write();
    return !_failed;
  }

private:
  void write() {
    if (_count > 0 && !_failed) _failed = BF_fwrite_char(_stream, _stage, _count * EntryBytes) != 0;
    _count = 0;
  }

  FILE* _stream;
  bool _reversed;
  bool _failed = false;
  int _count = 0;
  char _stage[StageEntries * EntryBytes];
};

// Appends nodes to a list; false where the file ends or memory does.
class EntryReader {
public:
  explicit EntryReader(FILE* stream) : _stream(stream), _reversed(isReversed(stream)) {}

  int readInto(Growing<VECM_NODE>& nodes, int count) {
    while (count > 0) {
      const int batch = std::min<int>(count, StageEntries);
      if (BF_fread_char(_stream, _stage, batch * EntryBytes) != 0) return 7;
      VECM_NODE* const place = nodes.more(static_cast<std::size_t>(batch));
      if (!place) return 3;
      for (int k = 0; k < batch; ++k)
        place[k] = node(_stage + k * EntryBytes);
      count -= batch;
    }
    return 0;
  }

private:
  VECM_NODE node(char* entry) const {
    VECM_NODE made = {};
    if (_reversed) turn(entry);
    std::memcpy(&made.index, entry, IndexBytes);
    std::memcpy(&made.value, entry + IndexBytes, sizeof made.value);
    return made;
  }

  FILE* _stream;
  bool _reversed;
  char _stage[StageEntries * EntryBytes];
};

// The frame of all writers: what is refused, and what the end tells.
template <class S, class Body>
int write(const Call& call, FILE* stream, const S* v, Body body) {
  if (!stream || !v || static_cast<int>(v->dim) < 1) {
    call.refuse();
    return -1;
  }
  BinaryWriter writer(stream);
  const bool written = body(writer);
  const int result = writer.finish() == 0 && written ? 0 : -1;
  if (result != 0) call.refuse();
  return result;
}

// Writes the head and the entries that `each` gives.
template <class Each>
bool writeEntries(BinaryWriter& head, FILE* stream, int dim, int nb, Each each) {
  head.integer(dim);
  head.integer(nb);
  EntryWriter writer(stream);
  each([&writer](int i, double x) { writer.add(i, x); });
  return writer.finish();
}

bool writePacked(BinaryWriter& writer, const VECMP* v) {
  writer.integer(v->dim);
  writer.integer(v->nb);
  writer.integers(v->idx, v->nb);
  writer.reals(v->val, v->nb);
  return true;
}

struct Head {
  int dim;
  int nb;
};

// The two counts that every form begins with.
Head readHead(BinaryReader& reader) {
  const int dim = reader.integer();
  const int nb = reader.integer();
  reader.require(dim >= 1 && nb >= 0 && nb <= dim);
  return {dim, nb};
}

bool ascend(const Growing<VECM_NODE>& nodes, int dim) {
  int lowest = 0;
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    if (nodes[k].index < lowest || nodes[k].index >= dim) return false;
    lowest = nodes[k].index + 1;
  }
  return true;
}

VECM* readTree(const Call& call, FILE* stream, VECM* out) {
  BinaryReader reader(stream);
  const Head head = readHead(reader);
  if (reader.failed()) return call.fail(reader.error());
  Growing<VECM_NODE> nodes(call);
  const int number = EntryReader(stream).readInto(nodes, head.nb);
  if (number != 0) return call.fail(number);
  if (!ascend(nodes, head.dim)) return call.fail(6);
  VECM* const v = out ? out : morse::createTree(call, head.dim, head.nb);
  if (!v || !morse::emptyTree(call, v, head.dim, head.nb)) return nullptr;
  VECM_NODE* last = nullptr;
  for (int k = 0; k < head.nb; ++k)
    last = morse::append(v, last, nodes[static_cast<std::size_t>(k)].index,
                         nodes[static_cast<std::size_t>(k)].value);
  return v;
}

// Puts a new record into the caller's, if there is one.
template <class R>
R* install(R* made, R* out, void (*release)(R*)) {
  if (!made || !out) return made;
  std::swap(*made, *out);
  release(made);
  return out;
}

VECMP* readPacked(const Call& call, FILE* stream, VECMP* out) {
  BinaryReader reader(stream);
  const Head head = readHead(reader);
  Growing<int> indices(call);
  Growing<double> values(call);
  if (!reader.failed()) reader.integers(head.nb, indices);
  for (std::size_t k = 0; k < indices.size() && !reader.failed(); ++k)
    reader.require(indices[k] >= 0 && indices[k] < head.dim);
  if (!reader.failed()) reader.reals(head.nb, values);
  if (reader.failed()) return call.fail(reader.error());
  VECMP* const made = morse::createPacked(call, head.dim, head.nb);
  if (!made) return nullptr;
  std::copy_n(indices.data(), head.nb, made->idx);
  std::copy_n(values.data(), head.nb, made->val);
  return install(made, out, vecmp_free);
}

// Whether words describe `nb` values in ascending places below `dim`.
bool describe(const Growing<int>& words, bool firstRun, int nb, int dim) {
  std::int64_t next = 0, values = 0;
  for (std::size_t k = 0; k < words.size();) {
    const bool isRun = words[k] < 0 || (k == 0 && firstRun);
    if (isRun && k + 1 >= words.size()) return false;
    const std::int64_t first = std::abs(std::int64_t{words[k]});
    const std::int64_t count = isRun ? words[k + 1] : 1;
    if ((k == 0 && firstRun && first != 0) || first < next || count < 1 || (isRun && count < 2) ||
        first + count > dim)
      return false;
    next = first + count;
    values += count;
    k += isRun ? 2 : 1;
  }
  return values == nb;
}

VECMW* readWindows(const Call& call, FILE* stream, VECMW* out) {
  BinaryReader reader(stream);
  const Head head = readHead(reader);
  const int nw = reader.integer();
  const int firstRun = reader.integer();
  // A group has no more words than values.
  reader.require(nw >= 0 && nw <= head.nb && (nw > 0) == (head.nb > 0));
  Growing<int> words(call);
  Growing<double> values(call);
  if (!reader.failed()) reader.integers(nw, words);
  if (!reader.failed()) reader.require(describe(words, firstRun != 0, head.nb, head.dim));
  if (!reader.failed()) reader.reals(head.nb, values);
  if (reader.failed()) return call.fail(reader.error());
  VECMW* const made = morse::createWindows(call, head.dim, head.nb, nw);
  if (!made) return nullptr;
  made->first_run = firstRun != 0 ? 1 : 0;
  if (head.nb > 0) {
    std::copy_n(words.data(), nw, made->words);
    std::copy_n(values.data(), head.nb, made->val);
  }
  return install(made, out, vecmw_free);
}

} // namespace

void vecm_output(FILE* stream, const VECM* v) {
  print(stream, "Morse Vector", v);
}
void vecmp_output(FILE* stream, const VECMP* v) {
  print(stream, "Morse Packed Vector", v);
}
void vecmw_output(FILE* stream, const VECMW* v) {
  print(stream, "Morse Window Vector", v);
}

int vecm_boutput(FILE* stream, const VECM* v, int* status) {
  LM_ENTER_STATUS(vecm_boutput);
  return write(call, stream, v, [stream, v](BinaryWriter& head) {
    return writeEntries(head, stream, v->dim, v->nb, [v](auto f) { morse::eachEntry(v, f); });
  });
}

int v_boutput_as_vecm(FILE* stream, const VEC* v, int* status) {
  LM_ENTER_STATUS(v_boutput_as_vecm);
  return write(call, stream, v, [stream, v](BinaryWriter& head) {
    return writeEntries(head, stream, length(v), morse::countKept(v),
                        [v](auto f) { morse::eachKept(v, f); });
  });
}

int vecmp_boutput(FILE* stream, const VECMP* v, int* status) {
  LM_ENTER_STATUS(vecmp_boutput);
  return write(call, stream, v, [v](BinaryWriter& writer) { return writePacked(writer, v); });
}

int vecm_boutput_as_vecmp(FILE* stream, const VECM* v, int* status) {
  LM_ENTER_STATUS(vecm_boutput_as_vecmp);
  return write(call, stream, v, [&call, v](BinaryWriter& writer) {
    VECMP* const packed = morse::createPacked(call, v->dim, v->nb);
    if (!packed) return false;
    BT_fill_pack(v, packed->idx, packed->val);
    writePacked(writer, packed);
    vecmp_free(packed);
    return true;
  });
}

int vecmw_boutput(FILE* stream, const VECMW* v, int* status) {
  LM_ENTER_STATUS(vecmw_boutput);
  return write(call, stream, v, [v](BinaryWriter& writer) {
    for (const int word : {v->dim, v->nb, v->nw, v->first_run})
      writer.integer(word);
    writer.integers(v->words, v->nw);
    writer.reals(v->val, v->nb);
    return true;
  });
}

#define LM_DEFINE_BINPUT(name, R, body)                                                            \
  R* name(FILE* stream, R* v, int* status) {                                                       \
    LM_ENTER_STATUS(name);                                                                         \
    if (!stream) return call.refuse();                                                             \
    return body(call, stream, v);                                                                  \
  }
LM_DEFINE_BINPUT(LM_vecm_binput, VECM, readTree)
LM_DEFINE_BINPUT(LM_vecmp_binput, VECMP, readPacked)
LM_DEFINE_BINPUT(LM_vecmw_binput, VECMW, readWindows)
