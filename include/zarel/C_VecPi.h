/**
 * @file C_VecPi.h
 * The concrete vector over a storage policy.
 */
#ifndef ZAREL_C_VECPI_H
#define ZAREL_C_VECPI_H

#include <cstdio>
#include <utility>

#include <zarel/C_Ptr.h>
#include <zarel/C_Vec.h>

/**
 * A full vector of scalar `T` and index `I` whose values lie in a storage object `P`, an
 * implementation of `C_Ptr<T, I>`.
 *
 * States: empty (dimension 0, null data), owner, attached. An attached vector is a view: it may
 * shrink but not grow, and must not outlive the block. `capacity` is what the storage was last
 * sized for, 0 for a view.
 *
 * Another way of keeping the values is another storage `P`; a class derived from this one cannot
 * put its own in place of Adr, GetVal, SetVal and the index, so that they cost a loop no call.
 *
 * Ranges: where an operation takes `first` and `last`, a `first` below 0 or above the dimension
 * stops it, and a `last` of -1, or not below the dimension, means the last value.
 *
 * Failures: see C_Vec.
 *
 * Example:
 * @code
 * C_VecPi<double, int, C_PtrInCore<double, int>> x(3, 1.0), y(3, 2.0);
 * x.Axpy(y, 10.0);   // y is now 12, 12, 12
 * double d = x * y;  // 36
 * @endcode
 *
 * Exists over `C_PtrInCore` for the pairs of ZAREL_STORAGE_SCALARS, and over `C_PtrOnFile`
 * (C_PtrOnFile.h) for ZAREL_MATRIX_SCALARS with `I` = `int`.
 */
template <class T, class I, class P>
class ZAREL_API C_VecPi : public C_Vec<T, I> {
public:
  C_VecPi() = default;
  /** `n` cleared values. A negative `n` gives no values but that dimension. Throws 1001. */
  explicit C_VecPi(I n);
  /** `n` values set to `value`. Throws 1001. */
  C_VecPi(I n, T value);
  /** A view on `n` values at `data`. */
  C_VecPi(I n, T* data);
  /** A copy that owns its block, also of a view. Throws 1001, 2 for a negative dimension. */
  C_VecPi(const C_VecPi& other);
  /** Copy. Throws as Copy. */
  C_VecPi& operator=(const C_VecPi& other);
  ~C_VecPi() override;

  using C_Vec<T, I>::Copy;
  using C_Vec<T, I>::GetVal;
  using C_Vec<T, I>::FirstVal;
  using C_Vec<T, I>::NextVal;
  using C_Vec<T, I>::Write;
  using C_Vec<T, I>::WriteMatlab;
  using C_Vec<T, I>::Print;

  int MemSize() const override { return this->MemSizeOf(); }
  int InCore() override { return storage_.InCore(); }
  int Full() override { return 1; }
  char* AffType() const override;
  int Write(int handle) override;
  int Write(FILE* file) override;
  int Read(int handle) override;
  int Read(FILE* file) override;
  /**
   * Reads dimension and values. A dimension that is negative or that promises more than the file
   * still holds throws 21 and leaves the vector as it was. Throws 12, 21, 1001, 2870.
   */
  int Read(int handle, int unused) override;
  int Read(FILE* file, int unused) override;
  int WriteMatlab(FILE* file) override;
  int Print(FILE* file) override;
  int Zero(I first, I last) override;
  int Release() override;
  /**
   * Changes the dimension. Within the capacity only the dimension changes, and values past it come
   * back on a later growth; else the storage is sized. Throws 2, 1001, 2870 for a growing view.
   */
  int Resize(I n) override;

  T* Adr(I i) final { return storage_.Adr(i); }
  T GetVal(I i) final { return storage_[i]; }
  int SetVal(I i, T value) final { return storage_.SetVal(i, value); }
  T& operator[](I i) final { return storage_[i]; }
  T* Extract(I first, I last, T* buffer) override;
  int Init(T value, I first, I last) override;
  T Sum(I first, I last) override;
  int Copy(C_Vec<T, I>& source) override;
  /**
   * In core: a view of the values from `first` on, which must not outlive this vector. On a file: a
   * vector on the same stream, which must stay open. Otherwise a copy of them. Throws 2872 for
   * `first` outside 0 to the dimension.
   */
  C_Vec<T, I>* Lnk(I first) override;
  int Attach(I n, T* data) override;
  /**
   * Becomes a view on `n` values of a stream, from where it stands. Only for a storage on a file
   * (C_PtrOnFile), which reads through a window of `bufferSize` values. Returns 0. Throws 20, 21,
   * 34.
   */
  template <class Q = P>
  auto Attach(I n, FILE* stream, I bufferSize)
      -> decltype(std::declval<Q&>().Attach(stream, n, bufferSize)) {
    setAttached(n);
    return storage_.Attach(stream, n, bufferSize);
  }
  int SMlt(T alpha, I first, I last) override;
  C_VecPi& operator*=(T alpha) override;
  T operator*(C_Vec<T, I>& other) override;
  int Axpy(C_Vec<T, I>& y, T alpha) override;

  /** Returns the values that the storage was last sized for; 0 for a view. */
  I Capacity() const { return capacity_; }
  /** Returns the storage object. */
  P& Storage() { return storage_; }

protected:
  /** Applies the rule for `last`; returns the count of values, 0 for an empty range. */
  I CompLength(I& first, I& last);

private:
  bool startsInRange(I first) const { return first >= 0 && first <= this->dim_; }
  void setAttached(I n);
  C_VecPi* inCoreTwin(C_Vec<T, I>& other);
  template <class Handle>
  int writeTo(Handle handle);
  template <class Handle>
  int readFrom(Handle handle);

  I capacity_ = 0;
  P storage_;
};

/// @cond
#define ZAREL_EXTERN(T, I) extern template class C_VecPi<T, I, C_PtrInCore<T, I>>;
ZAREL_STORAGE_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
