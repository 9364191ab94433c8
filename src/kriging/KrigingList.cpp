// A list of models: its construction, its sizes, samples and options.
#include <zarel/KrigingList.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "kriging/columns.h"
#include "kriging/instantiate.h"
#include "kriging/models.h"
#include "kriging/streamed.h"

using Zarel::forEachModel;
using Zarel::forEachSlice;
using Zarel::forTarget;

// ----- construction ------------------------------------------------------------------------------

template <class T>
KrigingList<T>::KrigingList()
    : NumKriging(0),
      NumVar(0),
      NumSamp(0),
      NumSol(0),
      TestSize(0.0),
      NumNewPoints(0),
      NewPointIds{} {}

template <class T>
KrigingList<T>::KrigingList(KrigingList const& source) = default;

template <class T>
KrigingList<T>& KrigingList<T>::operator=(KrigingList const& source) = default;

template <class T>
KrigingList<T>::~KrigingList() = default;

template <class T>
KrigingList<T>::KrigingList(KrigingList& source, int& error) : KrigingList() {
  int count = 0;
  error = Zarel::failed(source.GetNumKriging(count)) || count < 1 ? 1 : 0;
  if (error != 0) return;
  std::vector<int> all(count);
  std::iota(all.begin(), all.end(), 0);
  error = copyModels(source, all);
}

template <class T>
KrigingList<T>::KrigingList(KrigingList& source, std::vector<int>& ids, int& error)
    : KrigingList() {
  error = copyModels(source, ids);
}

template <class T>
int KrigingList<T>::copyModels(KrigingList& source, std::vector<int> const& ids) {
  int const count = static_cast<int>(ids.size());
  if (Zarel::failed(source.GetNumSamp(NumSamp)) || Zarel::failed(source.GetNumVar(NumVar)))
    return 1;
  if (count < 1 || NumSamp < 1 || NumVar < 1) return 1;
  auto const exists = [&](int id) { return id >= 0 && id < source.NumKriging; };
  if (!std::all_of(ids.begin(), ids.end(), exists)) return 1;
  makeModels(count);
  return forEachModel(Models.get(), NumKriging, [&](Kriging<T>& model, int i) {
    int const code = model.Copy(&source.Models[ids[i]]);
    return code != 0 ? code : adoptSize(model, i);
  });
}

template <class T>
void KrigingList<T>::makeModels(int count) {
  std::shared_ptr<Kriging<T>[]> models(new Kriging<T>[count]);
  std::shared_ptr<int[]> sizes(new int[count]());
  Models = std::move(models);
  SolPerModel = std::move(sizes);
  NumKriging = count;
  NumSol = 0;
}

template <class T>
int KrigingList<T>::adoptSize(Kriging<T>& model, int i) {
  int outputs = 0;
  if (model.GetNumSol(outputs) != 0 || outputs < 1) return 1;
  if (outputs > std::numeric_limits<int>::max() - NumSol) return 1;
  SolPerModel[i] = outputs;
  NumSol += outputs;
  return 0;
}

template <class T>
char const* KrigingList<T>::Version() const {
  return "1.0";
}

// ----- sizes -------------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::PutNumKriging(int const& value) {
  if (value < 0) return 1;
  makeModels(value);
  return 0;
}

template <class T>
int KrigingList<T>::GetNumKriging(int& value) const {
  value = NumKriging;
  return 0;
}

template <class T>
int KrigingList<T>::PutNumVar(int const& value) {
  if (value < 1) return 1;
  if (value == NumVar) return 0;
  NumVar = value;
  return forTarget(Models.get(), NumKriging, -1,
                   [&](Kriging<T>& model) { return model.PutNumVar(value); });
}

template <class T>
int KrigingList<T>::GetNumVar(int& value) const {
  value = NumVar;
  return 0;
}

template <class T>
int KrigingList<T>::PutNumSol(int const& total, int const& numModels, int* sizes) {
  if (numModels != NumKriging || total < 0 || (sizes == nullptr && numModels > 0)) return 1;
  bool const negative = std::any_of(sizes, sizes + numModels, [](int size) { return size < 0; });
  if (negative || std::accumulate(sizes, sizes + numModels, 0LL) != total) return 1;
  // A list that shares its models with this one keeps the sizes that it knows.
  std::shared_ptr<int[]> own(new int[numModels]);
  std::copy_n(sizes, numModels, own.get());
  SolPerModel = std::move(own);
  NumSol = total;
  return forEachModel(Models.get(), NumKriging, [&](Kriging<T>& model, int i) {
    return model.PutNumSol(sizes[i], 1, nullptr);
  });
}

template <class T>
int KrigingList<T>::GetOptNumSamp(int& value) {
  long long const terms = (NumVar + 1LL) * (NumVar + 2LL) / 2;
  value = static_cast<int>(std::min<long long>(terms, std::numeric_limits<int>::max()));
  return 0;
}

template <class T>
int KrigingList<T>::SetOptNumSamp() {
  return forTarget(Models.get(), NumKriging, -1,
                   [](Kriging<T>& model) { return model.SetOptNumSamp(); });
}

template <class T>
int KrigingList<T>::PutNumSamp(int const& value) {
  if (value < 1) return 1;
  if (value == NumSamp) return 0;
  NumSamp = value;
  return forTarget(Models.get(), NumKriging, -1,
                   [&](Kriging<T>& model) { return model.PutNumSamp(value); });
}

template <class T>
int KrigingList<T>::GetNumSamp(int& value) const {
  value = NumSamp;
  return 0;
}

// ----- samples -----------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::PutInpSampMtx(Matrix& X) {
  if (X.NbRow() < 1 || X.NbCol() < 1) return 1;
  NumSamp = X.NbRow();
  NumVar = X.NbCol();
  return forTarget(Models.get(), NumKriging, -1,
                   [&](Kriging<T>& model) { return model.PutInpSampMtx(X); });
}

template <class T>
int KrigingList<T>::GetInpSampMtx(Matrix& X, int i) {
  return i < 0 || i >= NumKriging ? 1 : Models[i].GetInpSampMtx(X);
}

template <class T>
int KrigingList<T>::PutOutSampMtx(Matrix& Y) {
  if (Y.NbRow() != NumSamp || Y.NbCol() != NumSol) return 1;
  Matrix slice;
  int const* const sizes = SolPerModel.get();
  return forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
    Zarel::takeColumns(Y, first, sizes[i], slice);
    return model.PutOutSampMtx(slice);
  });
}

template <class T>
int KrigingList<T>::GetOutSampMtx(Matrix& Y, int i) {
  if (i >= NumKriging) return 1;
  return i < 0 ? joinOutSamples(Y) : Models[i].GetOutSampMtx(Y);
}

template <class T>
int KrigingList<T>::joinOutSamples(Matrix& Y) {
  Matrix slice;
  int const* const sizes = SolPerModel.get();
  return forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
    if (model.GetOutSampMtx(slice) != 0 || slice.NbCol() != sizes[i]) return 1;
    if (i == 0) Y.Resize(slice.NbRow(), NumSol);
    if (slice.NbRow() != Y.NbRow()) return 1;
    Zarel::putColumns(slice, Y, first);
    return 0;
  });
}

template <class T>
int KrigingList<T>::AppendSampData(Matrix& X, Matrix& Y) {
  bool const shapesFit = X.NbRow() >= 1 && X.NbCol() >= 1 && Y.NbRow() == X.NbRow() &&
                         Y.NbCol() == NumSol && X.NbCol() == NumVar;
  if (!shapesFit) return 1;
  Matrix slice;
  int const* const sizes = SolPerModel.get();
  int const result =
      forEachSlice(Models.get(), NumKriging, sizes, [&](Kriging<T>& model, int i, int first) {
        Zarel::takeColumns(Y, first, sizes[i], slice);
        return model.AppendSampData(X, slice, false);
      });
  if (result == 0) NumSamp += X.NbRow();
  return result;
}

template <class T>
int KrigingList<T>::GetKernVec(RealVec& value) {
  RealVec part;
  int length = 0;
  return forTarget(Models.get(), NumKriging, -1, [&](Kriging<T>& model) {
    if (model.GetKernVec(part) != 0) return 1;
    value.Resize(length + part.Dim());
    std::copy_n(part.Adr(0), part.Dim(), value.Adr(length));
    length += part.Dim();
    return 0;
  });
}

// ----- options -----------------------------------------------------------------------------------

template <class T>
int KrigingList<T>::PutCorrFuncType(int const& value, int index) {
  return forTarget(Models.get(), NumKriging, index,
                   [&](Kriging<T>& model) { return model.PutCorrFuncType(value); });
}

template <class T>
int KrigingList<T>::PutKrigingKernVarType(int const& value, int index) {
  return forTarget(Models.get(), NumKriging, index,
                   [&](Kriging<T>& model) { return model.PutKrigingKernVarType(value); });
}

template <class T>
int KrigingList<T>::PutKrigingKernOptType(int const& value, int index) {
  return forTarget(Models.get(), NumKriging, index,
                   [&](Kriging<T>& model) { return model.PutKrigingKernOptType(value); });
}

template <class T>
int KrigingList<T>::PutScalingType(int const& value, int index) {
  return forTarget(Models.get(), NumKriging, index,
                   [&](Kriging<T>& model) { return model.PutScalingType(value); });
}

template <class T>
int KrigingList<T>::PutPolynomType(int const& value, int index) {
  return forTarget(Models.get(), NumKriging, index,
                   [&](Kriging<T>& model) { return model.PutPolynomType(value); });
}

template <class T>
int KrigingList<T>::SetStep(int const& value, int index) {
  forTarget(Models.get(), NumKriging, index,
            [&](Kriging<T>& model) { return model.SetStep(value); });
  return 1; // also where all went well: what callers have always seen, and none looks at it
}

template <class T>
Kriging<T>* KrigingList<T>::GetItemKriging(int i) {
  return i < 0 || i > NumKriging ? nullptr : Models.get() + i;
}

ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(KrigingList)
