// An open list, and lists of models that know their coefficients without a fit.
#ifndef ZAREL_TESTS_KRIGING_LISTFIXTURE_H
#define ZAREL_TESTS_KRIGING_LISTFIXTURE_H

#include "kriging/ModelFixture.h"

namespace kriging_test {

template <class T>
class OpenList : public KrigingList<T> {
public:
  using KrigingList<T>::KrigingList;
  using KrigingList<T>::NumKriging;
  using KrigingList<T>::Models;
  using KrigingList<T>::NumVar;
  using KrigingList<T>::NumSamp;
  using KrigingList<T>::NumSol;
  using KrigingList<T>::SolPerModel;
  using KrigingList<T>::InpTestMtx;
  using KrigingList<T>::TestSize;
  using KrigingList<T>::NumNewPoints;
  using KrigingList<T>::NewPointIds;
  using KrigingList<T>::ComputeSizeOfTestMtx;
  using KrigingList<T>::searchNewPoints;
  using KrigingList<T>::searchNextNewPoint;
  using KrigingList<T>::IsCloseToExistingPoint;

  std::vector<int> sizes() const {
    return std::vector<int>(SolPerModel.get(), SolPerModel.get() + NumKriging);
  }
};

/// Sets up a list of models with the given outputs, and its samples; nothing is fitted.
template <class T>
void makeList(KrigingList<T>& list, std::vector<int> sizes, int m, int n) {
  int const models = static_cast<int>(sizes.size());
  int const total = std::accumulate(sizes.begin(), sizes.end(), 0);
  C_MatMGe<T> x = pattern<T>(m, n, 0.3);
  C_MatMGe<T> y = pattern<T>(m, total, 1.7);
  ASSERT_EQ(list.PutNumKriging(models), 0);
  ASSERT_EQ(list.PutNumVar(n), 0);
  ASSERT_EQ(list.PutNumSol(total, models, sizes.data()), 0);
  ASSERT_EQ(list.PutNumSamp(m), 0);
  ASSERT_EQ(list.PutInpSampMtx(x), 0);
  ASSERT_EQ(list.PutOutSampMtx(y), 0);
}

/// The same with models that have coefficients, as if fitted.
template <class T>
void makeSolvedList(KrigingList<T>& list, std::vector<int> const& sizes, int m, int n,
                    int scaling = E_ScaleNone, int trend = E_PolyConst) {
  makeList(list, sizes, m, n);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    OpenModel<T> model;
    makeSolved(model, m, n, sizes[i], scaling, trend);
    C_MatMGe<T> y;
    ASSERT_EQ(list.GetOutSampMtx(y, static_cast<int>(i)), 0);
    model.OutSampMtx.Copy(y);
    ASSERT_EQ(list.GetItemKriging(static_cast<int>(i))->Copy(&model), 0);
  }
}

} // namespace kriging_test

#endif
