#include "kernel/binaryfile.h"

#include <cerrno>
#include <cstring>

#include <zarel/bf.h>
#include <zarel/erreur.h>

namespace Zarel::kernel {

bool BinaryReader::read(int* to, int count) {
  return BF_fread_int(_stream, to, count) == 0;
}
bool BinaryReader::read(double* to, int count) {
  return BF_fread_double(_stream, to, count) == 0;
}

template <class T>
void BinaryReader::batches(int count, Growing<T>& to) {
  for (int done = 0; done < count && !failed();) {
    const int batch = std::min<int>(Batch, count - done);
    T* const place = to.more(batch);
    if (!place)
      fail(NoMemory);
    else if (!read(place, batch))
      fail(InputEnded);
    done += batch;
  }
}

template void BinaryReader::batches<int>(int, Growing<int>&);
template void BinaryReader::batches<double>(int, Growing<double>&);

int BinaryReader::integer() {
  int value = 0;
  if (!failed() && !read(&value, 1)) fail(InputEnded);
  return failed() ? 0 : value;
}

void BinaryWriter::integers(const int* values, int count) {
  if (count > 0 && !_failed) _failed = BF_fwrite_int(_stream, values, count) != 0;
}

void BinaryWriter::reals(const double* values, int count) {
  if (count > 0 && !_failed) _failed = BF_fwrite_double(_stream, values, count) != 0;
}

int BinaryWriter::finish(const char* file, int line) {
  if (std::fflush(_stream) != 0) {
    Erreur("CHKDISK", line, file, "Write error: %s\n", std::strerror(errno));
    _failed = true;
  }
  return _failed ? -1 : 0;
}

} // namespace Zarel::kernel
