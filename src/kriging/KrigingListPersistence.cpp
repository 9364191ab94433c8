// A list to and from a stream, in the layout of docs/formats/kriging.md.
#include <zarel/KrigingList.h>

#include "kriging/instantiate.h"
#include "kriging/models.h"
#include "kriging/streamed.h"

using Zarel::failed;
using Zarel::readInt;
using Zarel::writeInt;

namespace {

/// No model takes less than this in a file: a sample of one variable and one output, no trend.
constexpr long long smallestModel = 108;

/// @return whether what is left of the stream may hold that many models.
bool mayHold(FILE* file, int models) {
  long long const left = Zarel::bytesLeft(file);
  return left < 0 || models <= left / smallestModel;
}

} // namespace

template <class T>
int KrigingList<T>::Write(FILE* file) {
  if (file == nullptr) return 1;
  if (failed(Zarel::settle(file)) || failed(Zarel::writeText(file, Version()))) return 1;
  if (failed(writeInt(file, NumKriging))) return 1;
  if (failed(writeInt(file, NumSamp)) || failed(writeInt(file, NumVar))) return 1;
  return Zarel::forTarget(Models.get(), NumKriging, -1,
                          [&](Kriging<T>& model) { return model.Write(file); });
}

template <class T>
int KrigingList<T>::Read(FILE* file) {
  if (file == nullptr || failed(Zarel::skipText(file))) return 1;
  return Zarel::withoutThrowing([&] { return readModels(file); });
}

template <class T>
int KrigingList<T>::readModels(FILE* file) {
  int count = 0;
  if (failed(readInt(file, count))) return 1;
  if (failed(readInt(file, NumSamp)) || failed(readInt(file, NumVar))) return 1;
  if (count < 1 || NumSamp < 1 || NumVar < 1 || !mayHold(file, count)) return 1;
  makeModels(count);
  return Zarel::forEachModel(Models.get(), NumKriging, [&](Kriging<T>& model, int i) {
    return model.Read(file) != 0 ? 1 : adoptSize(model, i);
  });
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(KrigingList)
