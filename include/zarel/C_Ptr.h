/**
 * @file C_Ptr.h
 * Storage policies: where the values of a vector lie.
 */
#ifndef ZAREL_C_PTR_H
#define ZAREL_C_PTR_H

#include <zarel/C_Type.h>
#include <zarel/export.h>
#include <zarel/scalars.h>

/**
 * A run of values of scalar `T`, counted by index `I` (`int` or `__int64`).
 *
 * Storage: decided by the derived class. No index is checked here; the tests of ranges stand in
 * the vector that owns the storage.
 * Threads: no lock; concurrent reading is safe.
 * Failures: an operation that only a concrete storage can offer throws code 2871 here.
 * Exists for the pairs of ZAREL_STORAGE_SCALARS.
 */
template <class T, class I>
class ZAREL_API C_Ptr : public C_Type {
public:
  C_Ptr() = default;
  C_Ptr(const C_Ptr&) = default;
  C_Ptr& operator=(const C_Ptr&) = default;
  ~C_Ptr() override;

  /** Returns a new storage object that begins at value `first`; the caller deletes it. Null here.
   */
  virtual C_Ptr* Lnk(I first);
  /** Becomes a copy of the first `count` values of `other`. Returns 0. */
  virtual int Copy(C_Ptr& other, I count) = 0;
  /** Tells whether all values lie in memory. */
  virtual int InCore() = 0;
  /** Brings the values into memory. Throws 2871 here. */
  virtual int Load();
  /** Lets the values leave memory. Throws 2871 here. */
  virtual int UnLoad();
  /** Makes room for `n` values. Throws 2871 here. */
  virtual int Resize(I n);
  /** Returns the address of value `i`, or of a work buffer if the values are elsewhere. Null here.
   */
  virtual T* Adr(I i);
  /** Returns value `i`. */
  virtual T GetVal(I i) = 0;
  /** Stores value `i`. Does nothing and returns 0 here. */
  virtual int SetVal(I i, T value);
  /** Returns a reference to value `i`. Throws 2871 here. */
  virtual T& operator[](I i);
  /**
   * Gives `count` values from `first` on in one piece, in `buffer` or in a block that the storage
   * chooses when `buffer` is null. Returns their address. Throws 2871 here.
   */
  virtual T* Extract(I first, I count, T* buffer);
  /** Clears `count` values from `first` on. Throws 2871 here. */
  virtual int Zero(I first, I count);
  /** Sets `count` values from `first` on to `value`. Throws 2871 here. */
  virtual int Init(T value, I first, I count);
  /** Returns the sum of `count` values from `first` on, in index order. */
  virtual T Sum(I first, I count) = 0;
  /** Multiplies `count` values from `first` on by `alpha`. */
  virtual int SMlt(T alpha, I first, I count) = 0;
  /**
   * Stores through `result` the square root of the dot product of `count` values with themselves.
   *
   * This general form reads blocks of 4096 values through Extract and begins at value 0 whatever
   * `first` is. Throws 1001 when there is no memory for the work block.
   */
  virtual int Nrm2(I first, I count, T& result);
};

/**
 * Values in one block of memory, owned or only looked at.
 *
 * Storage: contiguous. An owned block comes from the `zarelmem_*` family and is freed by this
 * object. A view (built from a pointer, or by Attach or Lnk) owns nothing and dies with the block
 * that it shows.
 * Failures: 1001 no memory, 2870 a view cannot be resized.
 */
template <class T, class I>
class ZAREL_API C_PtrInCore : public C_Ptr<T, I> {
public:
  /** Empty: no block, ready to own one. */
  C_PtrInCore() = default;
  /** `size` values set to `value`; no block for a size below 1. Throws 1001. */
  explicit C_PtrInCore(I size, T value = T());
  /** A view on `data`; nothing is copied. */
  explicit C_PtrInCore(T* data);
  /**
   * Takes over owner mark and address as they are. If the source owns its block, both objects
   * believe that they do, and the caller has to prevent the second release. Use Copy.
   */
  C_PtrInCore(const C_PtrInCore&) = default;
  C_PtrInCore& operator=(const C_PtrInCore&) = delete;
  ~C_PtrInCore() override;

  /** Returns a new view that begins at value `first`, which is not checked. */
  C_PtrInCore* Lnk(I first) override;
  /** Releases, resizes to `count` and copies `count` values from `other.Adr(0)`. Throws 1001. */
  int Copy(C_Ptr<T, I>& other, I count) override;
  int InCore() override { return 1; }
  /** Does nothing; the values are always loaded. */
  int Load() override { return 0; }
  /** Does nothing. */
  int UnLoad() override { return 0; }
  /**
   * Makes room for `n` values. Values already there stay, new ones have no defined content, but
   * for a first block, which is cleared. 0 frees an owned block and leaves a null address. The
   * owner mark is never changed: a view that was resized to 0 and then grows gets a block which
   * it does not free.
   * Throws 2870 for a view with a block, 1001 when there is no memory (the old block stays).
   */
  int Resize(I n) override;
  T* Adr(I i) override { return data_ + i; }
  T GetVal(I i) override { return data_[i]; }
  int SetVal(I i, T value) override {
    data_[i] = value;
    return 0;
  }
  T& operator[](I i) override { return data_[i]; }
  /**
   * With a null `buffer` returns the address of value `first` itself, without a copy. Otherwise
   * `buffer`, a block of the `zarelmem_*` family, is reallocated to `count` values, filled and
   * returned; for a count below 1 it is returned as it is. Throws 1001.
   */
  T* Extract(I first, I count, T* buffer) override;
  int Zero(I first, I count) override;
  int Init(T value, I first, I count) override;
  T Sum(I first, I count) override;
  /** Scales by one BLAS call; an `alpha` of 0 clears the range, NaN and infinity included. */
  int SMlt(T alpha, I first, I count) override;
  /** One dot product of the range, which begins at `first`, then the square root. */
  int Nrm2(I first, I count, T& result) override;

  /** Frees an owned block; then empty and ready to own. Returns 0. */
  virtual int Release();
  /** Frees an owned block and becomes a view on `data`. Returns 0. */
  int Attach(T* data);
  /** Tells whether the block is freed by this object. */
  int Owner() const { return owner_; }

private:
  void freeOwned();

  int owner_ = 1;
  T* data_ = nullptr;
};

/// @cond
#define ZAREL_EXTERN(T, I)                                                                         \
  extern template class C_Ptr<T, I>;                                                               \
  extern template class C_PtrInCore<T, I>;
ZAREL_STORAGE_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
