// A storage that is not in core, for the mixed paths: the values stand in one place, and Extract
// copies them into a window, as a storage on a file would.
#ifndef ZAREL_TESTS_CONTAINERS_OFFCORE_H
#define ZAREL_TESTS_CONTAINERS_OFFCORE_H

#include <algorithm>
#include <vector>

#include <zarel/zarelmem.h>

#include "containers/C_VecPi.tpp"
#include "containers/support.h"

template <class T, class I>
class OffCore : public C_Ptr<T, I> {
public:
  OffCore() = default;
  explicit OffCore(I n) { Resize(n); }
  explicit OffCore(T*) { Zarel::fail(2871); }

  OffCore* Lnk(I first) override {
    auto* rest = new OffCore;
    rest->values.assign(values.begin() + first, values.end());
    return rest;
  }
  int Copy(C_Ptr<T, I>& other, I count) override {
    auto& source = dynamic_cast<OffCore&>(other);
    values.assign(source.values.begin(), source.values.begin() + count);
    window.assign(4096, T(0));
    return 0;
  }
  int InCore() override { return 0; }
  int Resize(I n) override {
    values.resize(static_cast<std::size_t>(n));
    window.assign(4096, T(0));
    return 0;
  }
  T* Adr(I) override { return window.data(); }
  T GetVal(I i) override { return values[static_cast<std::size_t>(i)]; }
  int SetVal(I i, T value) override {
    values[static_cast<std::size_t>(i)] = value;
    return 0;
  }
  T& operator[](I i) override { return values[static_cast<std::size_t>(i)]; }
  T* Extract(I first, I count, T* buffer) override {
    reads.push_back({first, count});
    if (buffer == nullptr)
      buffer = static_cast<T*>(zarelmem_calloc(static_cast<std::size_t>(count), sizeof(T), "test",
                                               1, __FILE__, __LINE__));
    std::copy_n(values.begin() + first, count, buffer);
    return buffer;
  }
  int Zero(I first, I count) override { return Init(T(0), first, count); }
  int Init(T value, I first, I count) override {
    std::fill_n(values.begin() + first, count, value);
    return 0;
  }
  T Sum(I first, I count) override {
    T sum(0);
    for (I i = 0; i < count; ++i)
      sum = Zarel::plus(sum, GetVal(first + i));
    return sum;
  }
  int SMlt(T alpha, I first, I count) override {
    for (I i = 0; i < count; ++i)
      SetVal(first + i, Zarel::times(alpha, GetVal(first + i)));
    return 0;
  }
  int Attach(T*) { Zarel::fail(2871); }
  int Release() { return 0; }

  struct Run {
    long long first;
    long long count;
    bool operator==(const Run& other) const { return first == other.first && count == other.count; }
  };
  std::vector<T> values;
  std::vector<T> window;
  std::vector<Run> reads;
};

template <class T, class I = int>
using OffCoreVec = C_VecPi<T, I, OffCore<T, I>>;

/**
 * A sparse vector: values at a few places, the rest 0. Its functions are not inlined: where the
 * compiler guesses the class of a vector, it would warn of members that the other class lacks.
 */
template <class T>
class SparseVec : public VecOf<T> {
public:
  SparseVec(int n, std::vector<int> places, T value)
      : VecOf<T>(n), places_(std::move(places)), value_(value) {}
  [[gnu::noinline]] int Full() override { return 0; }
  [[gnu::noinline]] int FirstVal(T& value) override {
    at_ = 0;
    return NextVal(value);
  }
  [[gnu::noinline]] int NextVal(T& value) override {
    if (at_ >= places_.size()) return -1;
    value = value_;
    return places_[at_++];
  }
  using VecOf<T>::FirstVal;
  using VecOf<T>::NextVal;

private:
  std::vector<int> places_;
  T value_;
  std::size_t at_ = 0;
};

#endif
