/**
 * @file C_Vec.h
 * The abstract vectors: `C_BaseVec` knows the dimension, `C_Vec` the arithmetic.
 */
#ifndef ZAREL_C_VEC_H
#define ZAREL_C_VEC_H

#include <cstdio>
#include <string>

#include <zarel/C_Counter.h>
#include <zarel/C_Type.h>
#include <zarel/export.h>
#include <zarel/scalars.h>

/** Norms of vectors and matrices. */
enum E_NrmType : int {
  E_NrmInf = 0, ///< largest modulus; of a matrix, largest row sum of moduli
  E_Nrm1 = 1,   ///< sum of moduli; of a matrix, largest column sum of moduli
  E_Nrm2 = 2    ///< Euclidean norm; of a matrix, the spectral norm
};

/**
 * What all vectors share whatever their scalar: a dimension of index type `I`, files and text.
 *
 * Files: the head of a vector is its dimension, one little-endian word as wide as `I`
 * (docs/formats/containers.md).
 * Failures: an operation that only a derived class can offer throws 2871. A null stream (0 for the
 * forms on a descriptor) throws 12, a failing read 21, a failing write 22.
 * Exists for `I` = `int` and `__int64`.
 */
template <class I>
class ZAREL_API C_BaseVec : public C_Type {
public:
  explicit C_BaseVec(I dimension = 0) : dim_(dimension) {}
  C_BaseVec(const C_BaseVec&) = default;
  C_BaseVec& operator=(const C_BaseVec&) = default;
  ~C_BaseVec() override;

  /** Returns the bytes of all values, as an `int`. */
  virtual int MemSize() const = 0;
  /** Tells whether all values lie in memory. */
  virtual int InCore() = 0;
  /** Tells whether every index has a stored value; a sparse vector would answer 0. */
  virtual int Full() = 0;
  /** Returns the name of the class as it is printed. */
  virtual char* AffType() const;
  /** Returns the scalar. */
  virtual C_Type::E_Type Type();
  /** Writes the vector on a descriptor. Returns 0. Throws 12, 22. */
  virtual int Write(int handle);
  /** Writes the vector on a stream, past the stream's buffer. Returns 0. Throws 12, 22. */
  virtual int Write(FILE* file);
  /** Reads the vector from a descriptor. Returns 0. Throws 12, 21. */
  virtual int Read(int handle);
  /** Reads the vector from a stream, past the stream's buffer. Returns 0. Throws 12, 21. */
  virtual int Read(FILE* file);
  /** Opens the file `name` for writing, writes the numbers as text, closes it. Throws 12. */
  virtual int WriteMatlab(char const* name);
  /** Writes the numbers as text. Throws 12 on a null stream. */
  virtual int WriteMatlab(FILE* file);
  /**
   * Prints into the file `name`, at its end if `append`. Without a name, or when the file cannot
   * be opened, prints nothing. Returns 0.
   */
  virtual int Print(char const* name, bool append);
  /** Prints the vector for a reader. Returns 0; a null stream prints nothing. */
  virtual int Print(FILE* file) = 0;
  /** Clears the values `first` to `last`. Throws 2871 here. */
  virtual int Zero(I first, I last);
  /** Formats value `i` as Print does. Returns 0. */
  virtual int GetVal(I i, std::string& text) = 0;
  /** Formats the first stored value. Returns its index, or -1 if there is none. */
  virtual int FirstVal(std::string& text) = 0;
  /** Formats the next stored value. Returns its index, or -1 at the end. */
  virtual int NextVal(std::string& text) = 0;
  /** Gives all values back. Returns 0; does nothing here. */
  virtual int Release();
  /** Changes the dimension. Returns -1 here. */
  virtual int Resize(I n);
  /** Returns a norm. */
  virtual double Nrm(E_NrmType kind) = 0;
  /** Divides by a norm, which is stored through `norm` if that is not null. */
  virtual int Normalize(E_NrmType kind, double* norm) = 0;

  /** Returns the number of values. */
  I Dim() const { return dim_; }

protected:
  I dim_ = 0;
};

/**
 * A vector of scalar `T` with index `I`, and its arithmetic.
 *
 * Two speeds: operands that are in core and full go through one BLAS call and allocate nothing;
 * all others go through Extract in blocks of 4096 values.
 *
 * Storage: decided by the concrete class (C_VecPi). A vector may be a view on memory that it does
 * not own and that it must not outlive.
 * Threads: no lock; concurrent reading of one vector is safe.
 * Failures, all thrown: 2 negative size, 3 unknown norm, 12 null file or operands of which only
 * one is full, 21 and 22 failing read and write, 38 values not in memory, 1001 no memory, 2870 a
 * view cannot grow, 2871 not offered by this class, 2872 dimensions differ or index out of range,
 * 2873 operand not full, 14014 operand not accessible in one piece. A failed operation leaves its
 * target as it was, except where a Resize stands ahead of the failing test (Had, Copy).
 * Exists for the pairs of ZAREL_VECTOR_SCALARS.
 */
template <class T, class I>
class ZAREL_API C_Vec : public C_Counter<C_Vec<T, I>>, public C_BaseVec<I> {
public:
  explicit C_Vec(I dimension = 0) : C_BaseVec<I>(dimension) {}
  /** Takes only the dimension. The copy is not counted (C_Counter). */
  C_Vec(const C_Vec& other);
  C_Vec& operator=(const C_Vec&) = delete;
  ~C_Vec() override;

  /** Reads from a descriptor; the number plays no part. Reads the head only here. Throws 12, 21. */
  virtual int Read(int handle, int unused);
  /** Reads from a stream; the number plays no part. Reads the head only here. Throws 12, 21. */
  virtual int Read(FILE* file, int unused);
  /** Returns the address of value `i`, or of a work buffer if the values are elsewhere. Null here.
   */
  virtual T* Adr(I i);
  /** Returns value `i`, not checked. Throws 2871 here. */
  virtual T GetVal(I i);
  /** Stores value `i`, not checked. Throws 2871 here. */
  virtual int SetVal(I i, T value);
  /** Returns a reference to value `i`, not checked. Throws 2871 here. */
  virtual T& operator[](I i);
  /** Gives the first stored value. Returns its index, -1 if there is none. Throws 2871 here. */
  virtual int FirstVal(T& value);
  /** Gives the next stored value. Returns its index, -1 at the end. Throws 2871 here. */
  virtual int NextVal(T& value);
  /**
   * Gives the values `first` to `last` (-1: the last one) in one piece. Null if `first` is out of
   * range. What `buffer` may be is told by the storage (C_PtrInCore::Extract). Throws 2871 here.
   */
  virtual T* Extract(I first, I last, T* buffer);
  /** Sets the values `first` to `last` (-1: the last one). -1 if out of range. Throws 2871 here. */
  virtual int Init(T value, I first, I last);
  /** Returns the sum of the values `first` to `last` (-1: the last one); 0 if out of range. */
  virtual T Sum(I first, I last) = 0;
  /** Becomes a copy of `source`. Throws 12, 38, 2870, 1001, 2872 if it cannot take the size. */
  virtual int Copy(C_Vec& source);
  /** Returns a new vector that begins at value `first`; the caller deletes it. Throws 2872. */
  virtual C_Vec* Lnk(I first) = 0;
  /** Becomes a view on `n` values at `data`; neither is tested. Throws 2871 here. */
  virtual int Attach(I n, T* data);
  /** Multiplies the values `first` to `last` (-1: the last one) by `alpha`. -1 if out of range. */
  virtual int SMlt(T alpha, I first, I last) = 0;
  /** Multiplies all values. Throws 38 unless in core and full. */
  virtual C_Vec& operator*=(T alpha);
  /** Adds `other`. Throws 2872, 2873. */
  virtual C_Vec& operator+=(C_Vec& other);
  /** Adds a number to every value. Throws 38 if the values are not in memory. */
  virtual C_Vec& operator+=(T value);
  /** Tells whether dimensions and all values are equal (a NaN never is). Throws 38. */
  virtual bool operator==(C_Vec& other);
  /**
   * Returns the dot product, the sum of conj(this value) times the other: for complex scalars
   * `a * b` and `b * a` are conjugate. Throws 2872.
   */
  virtual T operator*(C_Vec& other);
  /**
   * Adds `alpha` times this vector to `y`. The argument changes, not this vector. Returns 0.
   * Throws 2872, 2873.
   */
  virtual int Axpy(C_Vec& y, T alpha);
  /** Subtracts `other`. Throws 2872, 2873. */
  virtual C_Vec& operator-=(C_Vec& other);
  /**
   * Becomes the product, value by value, of `x` and `y`. When one of the three is not in core both
   * factors are read from `x`, so that the result is the square of `x`. Throws 2872, 2873.
   */
  virtual int Had(C_Vec& x, C_Vec& y);
  /**
   * Stores the modulus of the sum of the squared differences: no square root, no conjugation.
   * 0 for the vector itself. Throws 2872, 14014.
   */
  virtual int Diff(C_Vec& other, double& result);
  /** Returns the Euclidean norm. */
  virtual double Nrm2();
  /** Returns the largest modulus. */
  virtual double NrmInf();
  /**
   * Returns the position, counted from `first`, of the smallest modulus among `first` to `last`
   * (-1: the last one); -1 for an empty range. Complex: of the smallest |re| + |im|. Throws 38.
   */
  virtual I IMin(I first, I last);
  /** As IMin for the largest modulus; an empty range is told before anything else is tested. */
  virtual I IMax(I first, I last);
  /** Sends dimension and values to a process (C_Vec_Send). Throws 2880 above 2147483647 values. */
  virtual int Send(int handle, int destination);
  /** Takes dimension and values that a process sends (C_Vec_Recv). Throws 2880. */
  virtual int Recv(int handle, int source);
  /** Takes dimension and values of the process `root` (C_Vec_Bcast). Throws 2880. */
  virtual int Bcast(int root);

  /** Becomes a copy of `source`. */
  int Copy(C_Vec const& source) { return Copy(const_cast<C_Vec&>(source)); }

  using C_BaseVec<I>::Print;
  using C_BaseVec<I>::WriteMatlab;
  char* AffType() const override;
  C_Type::E_Type Type() override;
  int Write(int handle) override;
  int Write(FILE* file) override;
  int Read(int handle) override;
  int Read(FILE* file) override;
  int WriteMatlab(FILE* file) override;
  int Print(FILE* file) override;
  int GetVal(I i, std::string& text) override;
  int FirstVal(std::string& text) override;
  int NextVal(std::string& text) override;
  int Resize(I n) override;
  /**
   * Returns a norm; 0 for an empty vector. The infinity norm is the modulus at the index that
   * IMax finds. Throws 3, 38.
   */
  double Nrm(E_NrmType kind) override;
  /** Divides by a norm unless that is 0. Returns 0. Throws 3, 38. */
  int Normalize(E_NrmType kind, double* norm) override;

protected:
  int MemSizeOf() const;
};

/**
 * @name Vectors between processes
 * What C_Vec::Send, Recv and Bcast do. A vector travels through the installed C_Communicator as two
 * messages: its dimension, one word as wide as `I`, and its values. Without a communicator nothing
 * is done, as in a run of one process. All return 0.
 *
 * Failures: 2880 above 2147483647 values; the sender of Bcast throws it together with the
 * receivers, behind the first message. 2 for a negative dimension, and what Resize throws, 2870 for
 * a view that cannot grow among it. @{
 */
template <class T, class I>
ZAREL_API int C_Vec_Send(C_Vec<T, I>* v, int handle, int destination);
template <class T, class I>
ZAREL_API int C_Vec_Recv(C_Vec<T, I>* v, int handle, int source);
template <class T, class I>
ZAREL_API int C_Vec_Bcast(C_Vec<T, I>& v, int root);
/** @} */

/// @cond
extern template class C_BaseVec<int>;
extern template class C_BaseVec<__int64>;
#define ZAREL_EXTERN(T, I)                                                                         \
  extern template class C_Counter<C_Vec<T, I>>;                                                    \
  extern template class C_Vec<T, I>;
ZAREL_VECTOR_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

#endif
