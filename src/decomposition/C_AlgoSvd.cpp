#include <zarel/C_AlgoSvd.h>

#include <cstdio>
#include <new>
#include <type_traits>

#include "containers/scalars.h"
#include "runtime/fail.h"

using Zarel::C_ZarelMessage;
using Zarel::traced;
using Zarel::widen;

namespace {

template <class T>
T conjugated(T value) {
  if constexpr (std::is_floating_point_v<T>)
    return value;
  else
    return std::conj(value);
}

template <class T>
double realPart(T value) {
  return std::real(widen(value));
}

template <class Values>
void say(C_ZarelMessage& message, const char* title, Values& values) {
  if (!message.IsActive()) return;
  message.Set("%s", title);
  for (int i = 0; i < values.Dim(); ++i)
    message.Append("[%d]:%E\n", i, realPart(values[i]));
  message.Print();
}

} // namespace

template <class T>
C_AlgoSvd<T>::C_AlgoSvd() : C_Algorithm("") {}
template <class T>
C_AlgoSvd<T>::~C_AlgoSvd() = default;

template <class T>
Zarel::E_DebugScope_enum C_AlgoSvd<T>::GetDebugScope() {
  return Zarel::E_ScopeSvd;
}

template <class T>
int C_AlgoSvd<T>::copyOf(Values& from, Values& to) {
  if (retained_ == 0) {
    std::fprintf(stderr, "Il faut lancer la methode RUN pour obtenir les vp\n");
    return -1;
  }
  to = from;
  return 0;
}

template <class T>
int C_AlgoSvd<T>::GetSingularValues(Values& values) {
  return copyOf(values_, values);
}

template <class T>
int C_AlgoSvd<T>::GetTabErr(Values& errors) {
  return copyOf(errors_, errors);
}

template <class T>
template <class Entry>
int C_AlgoSvd<T>::combine(C_MatMGe<T>& M, Entry entry) {
  try {
    M.Resize(columns_, retained_);
  } catch (const C_ZarelException&) {
    return traced();
  } catch (const std::bad_alloc&) {
    return traced();
  }
  for (int j = 0; j < retained_; ++j) {
    const T value = keptValue(j);
    for (int i = 0; i < columns_; ++i)
      M(i, j) = entry(rightHand_(j, i), value);
  }
  return 0;
}

template <class T>
int C_AlgoSvd<T>::GetLinearComb(C_MatMGe<T>& M) {
  return combine(M, [](T right, T value) { return value * right; });
}

template <class T>
int C_AlgoSvd<T>::GetLinearCombFromVecToBase(C_MatMGe<T>& M) {
  return combine(M, [](T right, T value) { return conjugated(right) / value; });
}

template <class T>
int C_AlgoSvd<T>::SetThresholdValue(double threshold) {
  threshold_ = threshold;
  return 0;
}

template <class T>
T C_AlgoSvd<T>::keptValue(int j) {
  return values_[j];
}

template <class T>
T C_AlgoSvd<T>::lostShare(double kept, double total, int i) {
  return errorMode_ == 1 ? Zarel::fromReal<T>(1 - kept / total) : values_[i + 1] / values_[0];
}

template <class T>
int C_AlgoSvd<T>::ErrorEstimation() {
  const int n = values_.Dim();
  errors_.Resize(n);
  C_ZarelMessage message("C_AlgoSvd<T>::ErrorEstimation", __FILE__, __LINE__, Zarel::E_MsgInfo, 3,
                         GetDebugScope(), Zarel::ALL_STREAMS);
  say(message, "Valeurs propres : ", values_);
  double total = 0, kept = 0;
  for (int i = 0; i < n; ++i)
    total += realPart(values_[i]);
  if (errorMode_ != 0 && errorMode_ != 1) Zarel::fail(3);
  for (int i = 0; i < n - 1; ++i) {
    kept += realPart(values_[i]);
    errors_[i] = lostShare(kept, total, i);
  }
  if (n > 0) errors_[n - 1] = T(0);
  say(message, "Erreur Troncature : ", errors_);
  retained_ = n;
  for (int i = 0; i < n; ++i)
    if (threshold_ >= realPart(errors_[i])) {
      retained_ = i + 1;
      break;
    }
  return 0;
}

#define ZAREL_INSTANTIATE(T) template class C_AlgoSvd<T>;
ZAREL_BLAS_SCALARS(ZAREL_INSTANTIATE)
