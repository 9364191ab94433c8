/**
 * @file C_PtrOnFile.h
 * Values that stay in a file, of which a window lies in memory.
 */
#ifndef ZAREL_C_PTRONFILE_H
#define ZAREL_C_PTRONFILE_H

#include <cstdio>
#include <type_traits>

#include <zarel/C_Ptr.h>
#include <zarel/C_VecPi.h>

/**
 * A stream of values of scalar `T` that can be moved by whole values.
 *
 * Counts and offsets are in values. The functions give 0, or -1 where nothing is there to work on.
 * Exists for ZAREL_MATRIX_SCALARS.
 */
template <class T>
class ZAREL_API C_File {
public:
  C_File() = default;
  C_File(const C_File&) = default;
  C_File& operator=(const C_File&) = delete;
  virtual ~C_File();

  /** Returns a second object on the same stream; the caller deletes it. */
  virtual C_File* Lnk(int offset) = 0;
  /** Moves to value `offset` (mode 0), or by `offset` values from where the stream stands. */
  virtual int Seek(int offset, int mode) = 0;
  /** Reads `count` values, at least 1. Throws 21. */
  virtual int Read(T* values, int count) = 0;
  /** Writes `count` values, at least 1. Throws 22. */
  virtual int Write(T* values, int count) = 0;
};

/**
 * The values of a `FILE*` from a base on, in the portable form of docs/formats/primitives.md.
 *
 * The stream is borrowed: it must stay open as long as this object is used. All transfers go to its
 * descriptor and round its buffer; what the buffer holds back, or has read ahead, is settled when
 * the base is taken. All objects on one stream share its position, and each operation but the
 * relative Seek, Read and Write moves it first: one thread at a time.
 *
 * Example:
 * @code
 * C_FilePtr<double> values(stream);   // value 0 is where the stream stands
 * double two[2];
 * values.Seek(5, 0);
 * values.Read(two, 2);                // values 5 and 6
 * @endcode
 */
template <class T>
class ZAREL_API C_FilePtr : public C_File<T> {
public:
  /** Value 0 is where the stream stands. Throws 34 if that cannot be told, as of a null stream. */
  explicit C_FilePtr(FILE* stream);
  C_FilePtr(const C_FilePtr&) = default;
  C_FilePtr& operator=(const C_FilePtr&) = delete;

  /**
   * Returns a new object with the base that this one has now; the caller deletes it. If `offset`
   * is not 0 it is this object that moves on: its base becomes the former value `offset`.
   * Throws 20, 34; this object is as it was then.
   */
  C_FilePtr* Lnk(int offset) override;
  /** Gives -1 for a null stream. Throws 20. */
  int Seek(int offset, int mode) override;
  int Read(T* values, int count) override;
  int Write(T* values, int count) override;

  /** Returns the byte of the stream at which value 0 begins. */
  __int64 Base() const { return base_; }

private:
  C_FilePtr(FILE* stream, __int64 base) : stream_(stream), base_(base) {}

  FILE* stream_;
  __int64 base_;
};

/**
 * The values of a vector that stay in a file; a buffer holds a window of consecutive ones.
 *
 * Reads come from the window, which moves by its whole length when a value outside is asked for.
 * Single values and fills are written to the file at once and leave the window as it is, so that a
 * value in it keeps its former look until the window moves; what is written through a reference
 * changes the window alone. SMlt changes both.
 *
 * Storage: the stream is borrowed and must stay open as long as this storage, or a result of Lnk,
 * is used; buffer and position are owned. The buffer has room for a block of 4096 values, or for
 * all values if they are fewer, even if its window is shorter: the vectors work in such blocks.
 * Threads: all storages on one stream share its position; one thread at a time.
 * Failures, all thrown: 12 nothing is attached; 20 the stream cannot be moved; 21 and 22 values
 * that cannot be read and written, or that lie outside the vector; 34 the stream does not tell its
 * position; 1001 no memory; 2871 a block of memory for the values, another size.
 *
 * Exists for ZAREL_MATRIX_SCALARS with `I` = `int`.
 *
 * Example:
 * @code
 * C_VecPi<double, int, C_PtrOnFile<double, int>> x;
 * x.Attach(1000000, stream, 4096); // one million values from where the stream stands
 * double sum = x.Sum(0, -1);
 * @endcode
 */
template <class T, class I>
class ZAREL_API C_PtrOnFile : public C_Ptr<T, I> {
public:
  /** Nothing attached. */
  C_PtrOnFile() = default;
  /** `count` values, but nothing attached. */
  explicit C_PtrOnFile(I count) : count_(count) {}
  /** Throws 2871: the values cannot lie in a block of memory. */
  explicit C_PtrOnFile(T* values);
  /**
   * Takes over all fields as they are. Both objects believe that they own position and buffer, and
   * the caller has to prevent the second release. Use Copy.
   */
  C_PtrOnFile(const C_PtrOnFile&) = default;
  C_PtrOnFile& operator=(const C_PtrOnFile&) = delete;
  ~C_PtrOnFile() override;

  /** Returns a new storage of the values from `first` on; the caller deletes it. Throws 12, 20,
   * 21. */
  C_PtrOnFile* Lnk(I first) override;
  /**
   * Releases and shows the first `count` values of `other`, which must be on a file too, with a
   * window as long as the other's at most. Throws 2871 for any other storage, 20, 21.
   */
  int Copy(C_Ptr<T, I>& other, I count) override;
  int InCore() override { return 0; }
  /** Returns the buffer, whatever the index; null while there are no values. Throws 1001. */
  T* Adr(I) override { return buffer_ != nullptr ? buffer_ : lateBuffer(); }
  /** Returns value `i`; one outside the window makes the window start there. */
  T GetVal(I i) override { return *at(i); }
  /** Writes value `i` to the file; the window stays as it is. */
  int SetVal(I i, T value) override;
  /** Returns value `i` in the buffer, moving the window as GetVal. Assigning changes no file. */
  T& operator[](I i) override { return *at(i); }
  /**
   * Reads `count` values into `buffer`, which has room for them; into a new block that the caller
   * releases with zarelmem_free if it is null; or into this storage's own buffer (Adr), which is
   * then the window and grows if it is too short.
   */
  T* Extract(I first, I count, T* buffer) override;
  /** Writes zeros; the window stays as it is. */
  int Zero(I first, I count) override;
  /** Writes `count` times `value`; the window stays as it is. */
  int Init(T value, I first, I count) override;
  /** Sums in index order through the window, which is then the last part of the range. */
  T Sum(I first, I count) override;
  /** Multiplies on the file, through the window; a modulus of `alpha` below 1e-14 writes zeros. */
  int SMlt(T alpha, I first, I count) override;

  /** Gives buffer and position back; then empty. The stream stays open. Returns 0. */
  virtual int Release();
  /**
   * Shows `count` values from where the stream stands, reads the first `bufferSize` of them, or
   * all if they are fewer, and leaves the stream behind the last value. Returns 0.
   * Throws 34 and leaves the storage as it was; 20, 21 when attached but without a window.
   */
  int Attach(FILE* stream, I count, I bufferSize);
  /** Throws 2871. */
  int Attach(T* values);
  /** Writes `count` values from `first` on; the window is empty then. Returns 0. Throws 12, 20, 22.
   */
  int Store(I first, I count, T* values);
  /**
   * Makes a buffer of `size` values, or of all if they are fewer, fills it from where the stream
   * stands, makes it the window from 0 on and moves the stream by the values that are left. Without
   * memory the buffer size becomes 0, nothing else happens, and values are read one at a time.
   * Returns 0. Throws 12, 20, 21.
   */
  int InitBuff(I size);

  /** Returns the number of values on the file. */
  I Count() const { return count_; }
  /** Returns the number of values in a full window. */
  I BufferSize() const { return bufferSize_; }
  /** Returns the index of the first value in the window. */
  I WindowStart() const { return windowStart_; }
  /** Returns the index after the last value in the window. */
  I WindowEnd() const { return windowStart_ + static_cast<I>(windowLength_); }

private:
  using Place = std::make_unsigned_t<I>;

  /** One test finds out both sides: what lies before the window is a large number behind it. */
  T* at(I i) {
    const Place place = static_cast<Place>(i) - static_cast<Place>(windowStart_);
    return place < windowLength_ ? buffer_ + place : moveWindow(i);
  }
  T* moveWindow(I i);
  T* lateBuffer();
  T* readWindow(I first, I count);
  void seekTo(I first, I count, int code);
  void fill(T value, I first, I count);
  void setWindow(I first, I count);
  void dropBuffer();
  bool makeRoom(I count);
  I blockRoom() const;
  I step() const;

  C_File<T>* file_ = nullptr;
  I count_ = 0;
  I bufferSize_ = 0;
  I windowStart_ = 0;
  Place windowLength_ = 0;
  T* buffer_ = nullptr;
  I room_ = 0;
};

/// @cond
#define ZAREL_EXTERN(T)                                                                            \
  extern template class C_File<T>;                                                                 \
  extern template class C_FilePtr<T>;                                                              \
  extern template class C_PtrOnFile<T, int>;                                                       \
  extern template class C_VecPi<T, int, C_PtrOnFile<T, int>>;
ZAREL_MATRIX_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
