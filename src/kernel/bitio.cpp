// Bit vectors in text and binary files.
#include <algorithm>
#include <cstdio>

#include <zarel/lm_bitvec.h>

#include "kernel/binaryfile.h"
#include "kernel/bitruns.h"
#include "kernel/record.h"

using namespace Zarel::kernel;

namespace {

const char* nameOf(int kind) {
  static const char* const names[] = {"?", "bloc", "codage", "ivec", "direct", "tout"};
  return kind >= LM_BV_BLOC && kind <= LM_BV_TOUT ? names[kind] : names[0];
}

enum { IndicesPerLine = 10 };

using Next = int (*)(const BVEC*, int, int&);

void printIndices(FILE* stream, const BVEC* bv, Next next) {
  FILE* const to = stream ? stream : stdout;
  if (!bv) {
    std::fputs("NULL bit vector\n", to);
    return;
  }
  int state = 0, count = 0;
  for (int i = next(bv, 0, state); i < bv->dim; i = next(bv, i + 1, state))
    std::fprintf(to, "%d%c", i, ++count % IndicesPerLine == 0 ? '\n' : ' ');
  if (count % IndicesPerLine != 0) std::fputc('\n', to);
}

// The words of a set behind its head.
void writeData(BinaryWriter& writer, const BVEC* bv) {
  for (const IVEC* const data : {bv->starts, bv->ends, bv->bits})
    if (data) writer.integers(data->ive, bv->count);
}

// Whether the entries ascend and lie in 0 to dim - 1.
bool ascend(const int* x, int count, int dim) {
  for (int k = 0; k < count; ++k)
    if (x[k] < (k > 0 ? x[k - 1] + 1 : 0) || x[k] >= dim) return false;
  return true;
}

// Whether the runs are in order and in range; a run may begin where the one before it ends.
bool areRuns(const int* starts, const int* ends, int count, int dim) {
  for (int k = 0; k < count; ++k)
    if (starts[k] < (k > 0 ? ends[k - 1] : 0) || ends[k] < starts[k] || ends[k] >= dim ||
        (k > 0 && ends[k] <= ends[k - 1]))
      return false;
  return true;
}

bool wordsFit(const int* words, int count, int dim) {
  const int used = dim % bits::WordBits;
  return count == 0 || used == 0 || (static_cast<std::uint32_t>(words[count - 1]) >> used) == 0;
}

// How many words the data of a set have, or -1 if the head can't be right.
int dataLength(int kind, int dim, int count) {
  if (dim < 0 || count < 0) return -1;
  switch (kind) {
  case LM_BV_BLOC:
    return count <= dim && count <= 0x3FFFFFFF ? 2 * count : -1;
  case LM_BV_CODAGE:
    return count == bits::wordCount(dim) ? count : -1;
  case LM_BV_IVEC:
    return count <= dim ? count : -1;
  case LM_BV_DIRECT:
    return count == dim ? count : -1;
  case LM_BV_TOUT:
    return count == 0 ? 0 : -1;
  default:
    return -1;
  }
}

bool isValid(int kind, int dim, int count, const int* data) {
  switch (kind) {
  case LM_BV_BLOC:
    return areRuns(data, data + count, count, dim);
  case LM_BV_CODAGE:
    return wordsFit(data, count, dim);
  case LM_BV_IVEC:
    return ascend(data, count, dim);
  default:
    return true;
  }
}

BVEC* assembled(const Call& call, int kind, int dim, int count, const int* data) {
  BVEC* const bv = bits::create(call, call.tag(), allocationFlag(), kind, dim, count);
  if (!bv) return nullptr;
  bv->count = count;
  for (IVEC* const part : {bv->starts, bv->ends, bv->bits}) {
    if (!part) continue;
    std::copy_n(data, count, part->ive);
    data += count;
  }
  return bv;
}

BVEC* readSet(const Call& call, FILE* stream, BVEC* out) {
  BinaryReader reader(stream);
  const int kind = reader.integer();
  const int dim = reader.integer();
  const int count = reader.integer();
  const int words = dataLength(kind, dim, count);
  Growing<int> data(call);
  reader.require(words >= 0);
  if (!reader.failed()) reader.integers(words, data);
  if (!reader.failed()) reader.require(isValid(kind, dim, count, data.data()));
  if (reader.failed()) return call.fail(reader.error());
  return bits::install(assembled(call, kind, dim, count, data.data()), out);
}

} // namespace

void LM_bv_print(FILE* stream, const BVEC* bv) {
  FILE* const to = stream ? stream : stdout;
  if (!bv) {
    std::fputs("NULL bit vector\n", to);
    return;
  }
  std::fprintf(to, "Bit vector: kind %s, dim %d, %d on\n", nameOf(bv->kind), bv->dim,
               LM_bv_nb_on(bv));
  int onState = 0, offState = 0;
  for (int i = bits::nextOn(bv, 0, onState); i < bv->dim; i = bits::nextOn(bv, i, onState)) {
    const int end = bits::nextOff(bv, i, offState);
    std::fprintf(to, "%d - %d\n", i, end - 1);
    i = end;
  }
}

void LM_bv_on_print(FILE* stream, const BVEC* bv) {
  printIndices(stream, bv, bits::nextOn);
}

void LM_bv_off_print(FILE* stream, const BVEC* bv) {
  printIndices(stream, bv, bits::nextOff);
}

int LM_bv_boutput(FILE* stream, const BVEC* bv, int* status) {
  LM_ENTER_STATUS(LM_bv_boutput);
  const bool known = bv && bv->kind >= LM_BV_BLOC && bv->kind <= LM_BV_TOUT;
  if (!stream || !known) {
    call.refuse();
    return -1;
  }
  BinaryWriter writer(stream);
  writer.integer(bv->kind);
  writer.integer(bv->dim);
  writer.integer(bv->count);
  writeData(writer, bv);
  const int result = writer.finish();
  if (result != 0) call.refuse();
  return result;
}

BVEC* LM_bv_binput(FILE* stream, BVEC* bv, int* status) {
  LM_ENTER_STATUS(LM_bv_binput);
  if (!stream) return call.refuse();
  return readSet(call, stream, bv);
}
