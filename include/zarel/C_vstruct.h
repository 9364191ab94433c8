/**
 * @file C_vstruct.h
 * Sets of equally long vectors, in memory or on a data file.
 */
#ifndef ZAREL_C_VSTRUCT_H
#define ZAREL_C_VSTRUCT_H

#include <cstdio>
#include <string>
#include <vector>

#include <zarel/C_Mat.h>
#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>
#include <zarel/C_ZarelBase.h>
#include <zarel/C_ZarelException.h>

struct BVEC;

class C_MapPtr;

namespace Zarel {

/**
 * An inner product of two vectors: the dot product, conjugated on the left. A host derives from it
 * to weigh the product; `ip(x, x)` must be real and not negative.
 * Exists for the scalars of ZAREL_MATRIX_SCALARS.
 */
template <class T>
class ZAREL_API C_FInnerProd {
public:
  C_FInnerProd() = default;
  C_FInnerProd(const C_FInnerProd&) = default;
  C_FInnerProd& operator=(const C_FInnerProd&) = default;
  virtual ~C_FInnerProd();
  /** Returns the product of `a` and `b`. Throws 2872 when their lengths differ. */
  virtual T operator()(C_Vec<T, int>& a, C_Vec<T, int>& b);
};

/// @cond
struct _Cblock;
template <class T>
struct VectorSetFiles;
template <class T>
class CoefficientSink;
class RowPanels;

/** Keeps the inherited change of shape away from the shape that the storage of a set stands on. */
template <class T>
class ZAREL_API C_VectorSetShape : public C_Mat<T> {
public:
  using C_Mat<T>::C_Mat;
  /** Changes the number of vectors. Throws 2872 when `rows` is not the length of the vectors. */
  int Resize(int rows, int columns) final;

private:
  virtual void resizeTo(int vectors) = 0;
};
/// @endcond

/**
 * A set of `NbVec` vectors of length `DimVec`: the columns of a tall matrix Q that can be far
 * larger than memory.
 *
 * Storage, chosen when the set is made (a picture stands in docs/vectorsets.md):
 *  - **in core** (CoreMode 1): one block of memory, vector j at `Adr() + j * LeadDim()`;
 *  - **mapped** (CoreMode 2): a data file, of which one range of vectors is in memory at any
 *    moment. Vector j begins at byte `getInitialOffSet() + j * (getBlockGap() + LeadDim() *
 *    sizeof(T))`. Where those are no multiples of `alignof(T)` a range is a copy of its vectors,
 *    `LeadDim()` apart, that goes back to the file when it is unmapped;
 *  - **file-resident** (CoreMode 2, `GetMapFile()` false): vectors that are read through a stream
 *    with no mapping at all. Such a set comes from Read.
 *
 * Code that works for all three asks for a range with MapBlock, works on the vectors that
 * `operator[]` gives, and releases the range with UnmapBlock. A set has **one** mapped range: the
 * request of a vector outside of it drops it, and pointers into it are then stale.
 *
 * Ownership: a set made by size owns its block or its temporary data file, may be resized, and
 * takes both away at its end. A set over foreign memory, a link into another set and a set over a
 * file that was read own nothing and cannot be resized. A link must not outlive what it looks
 * into. Growing an out-of-core set writes no data; new vectors read as zeros. A shrunk tail is
 * gone for good.
 *
 * Results: an `int` operation returns 0, and all failures are exceptions with these codes:
 *
 * | code     | raised when                                                       |
 * |----------|-------------------------------------------------------------------|
 * | 1, 0     | there is no memory                                                |
 * | 3, 0     | CoreMode is neither 1 nor 2                                       |
 * | 4, 0     | no temporary file name could be formed                            |
 * | 11, 0    | the set is not valid                                              |
 * | 12, 0    | an index or a length is out of range, or an operand has no data   |
 * | 13, 100  | a range could not be mapped                                       |
 * | 14, 100  | a range could not be unmapped                                     |
 * | 19, 100  | the data file could not be created or opened                      |
 * | 20, 21   | a position or values could not be reached in a file               |
 * | 34, 0    | the position of a stream could not be told                        |
 * | 22, 35   | a file could not be written, portably or raw                      |
 * | 24, 100  | the data file could not take its size: the disk is full           |
 * | 27, 100  | the data file could not be closed                                 |
 * | 2866, 0  | SetVector: the vector depends on the earlier ones                 |
 * | 2870, 0  | resize of a set that does not own its storage                     |
 * | 2871, 0  | the operation does not exist for integers                         |
 * | 2872, 0  | the operand of Mv does not fit                                    |
 * | 14014, 0 | a vector object could not be given back                           |
 *
 * Pointers named `err` are set to 0 when they are not null, and never to anything else.
 *
 * Integers (`short int`, `int`): what scales a vector throws 2871; a contiguous product prints a
 * message and ends the process with exit code -1, as BLAS knows no integers.
 *
 * Threads: one thread at a time, also for reading, since MapBlock changes the set.
 *
 * Example:
 * @code
 * Zarel::C_VSTRUCT<double> q(2, 250, 1000000, nullptr);  // 2 GB on a temporary file
 * for (int j = 0; j < q.getDim(); ++j) {
 *   q.MapBlock(j, j);
 *   fill(q[j]->Adr(0), q.getDim1());
 *   q.UnmapBlock(j, j, nullptr);
 * }
 * C_MatMGe<double> gram;
 * q.MatQtQ(gram);
 * @endcode
 *
 * Exists for the scalars of ZAREL_MATRIX_SCALARS.
 */
template <class T>
class ZAREL_API C_VSTRUCT : public C_ZarelBase, public C_VectorSetShape<T> {
public:
  /** A vector in memory. */
  using Vector = C_VecPi<T, int, C_PtrInCore<T, int>>;
  /** Whole numbers, one a vector. */
  using Counts = C_VecPi<int, int, C_PtrInCore<int, int>>;

  /** @name Making and ending @{ */
  /** An empty set that is not valid; Allocate, LinkTo, Read or Restore make it so. */
  C_VSTRUCT();
  /** A set of its own, all zeros. Arguments and failures are those of Allocate. */
  C_VSTRUCT(int CoreMode, int NbVec, int DimVec, char const* prefix);
  /** A set in core over foreign memory: vector j at `data + j * DimVec`. Throws 1. */
  C_VSTRUCT(int NbVec, int DimVec, T* data);
  /** A link, as LinkTo. */
  C_VSTRUCT(C_VSTRUCT& other, int firstVec, int lastVec, int firstRow, int lastRow);
  C_VSTRUCT(const C_VSTRUCT&) = delete;
  /** Copy of all vectors. */
  C_VSTRUCT& operator=(const C_VSTRUCT& source);
  /** Releases the set and its own data file. A file-resident set leaves its file alone. */
  ~C_VSTRUCT() override;

  /**
   * Makes the set anew with `NbVec` zero vectors of length `DimVec` (negative counts are 0), in
   * core (`CoreMode` 1) or on a data file (2). The file has the name of setDataFileName or is a
   * temporary one, whose name begins with `prefix` ("ZRLVS" if null).
   *
   * A full disk is reported through the message tool before 24 is thrown. A failure leaves
   * neither file nor vectors. Throws 1, 3, 4, 19, 24.
   */
  int Allocate(int CoreMode, int NbVec, int DimVec, char const* prefix);
  /**
   * Gives everything back; the set is then empty and not valid. With `removeFile` the data file
   * that the set owns is deleted; a file that cannot be deleted keeps its name here. Throws 14,
   * 27, 14014.
   */
  void Release(bool removeFile);
  /**
   * Changes the number of vectors and keeps the first ones, in place. The present number is always
   * accepted. A failure leaves the vectors as they were. Throws 11, 12, 2870, 1, 24, 14.
   */
  void Resize(int n, int* err);
  /** The same; name, file and line say for the accounting of memory who asks. */
  void Resize(int n, char const* name, char const* file, int line, int* err);
  /** Takes size and values of another set and keeps the own storage. Throws 11 when that set is not
   * valid. */
  int Initialize(C_VSTRUCT const& other);
  /** The same, made anew in core (`mode` 1) or on a data file (2). */
  int Initialize(C_VSTRUCT const& other, int mode);
  /** Becomes a set in core over foreign memory. Throws 1. */
  void LinkTo(int NbVec, int DimVec, T* data);
  /**
   * Becomes a view of the vectors `firstVec` to `lastVec` and the rows `firstRow` to `lastRow` of
   * another set, ends exclusive; a last of -1 means all that follow. Nothing is copied, and
   * `other` must outlive the link. A mask of the other set is the link's from its first row on.
   * Throws 12 for a rectangle that does not lie in the other set, 11, 3, 1.
   */
  void LinkTo(C_VSTRUCT& other, int firstVec, int lastVec, int firstRow, int lastRow);
  /** @} */

  /** @name The mapped range @{ */
  /**
   * Brings the vectors `first` to `last` (both included; a `last` past the end means the end) into
   * memory. Returns the id of the range, or 0 if nothing had to be mapped. A range that holds all
   * of them already stays; any other is dropped first. The flag has no effect. Throws 11, 12, 13,
   * 14, 1; after all but 11 and 12 nothing is mapped then.
   */
  unsigned int MapBlock(unsigned int first, unsigned int last, int* err, bool flag);
  unsigned int MapBlock(unsigned int first, unsigned int last, bool flag = false);
  /** Brings all vectors into memory as one matrix; Adr is then set. */
  void MapAllBlocks(bool flag = false);
  /** Drops the range of that id; an unknown id changes nothing. Throws 14. */
  void UnmapBlock(unsigned int id, int* err = nullptr);
  /** Drops the range of exactly these vectors; any other changes nothing. Throws 14. */
  void UnmapBlock(unsigned int first, unsigned int last, int* err);
  /** Drops the range, if there is one. Throws 14. */
  void UnmapAllBlocks(int* err = nullptr);
  /** Tells whether vector `i` can be used; always true unless the set is mapped. */
  bool isMapped(unsigned int i);
  /** Tells whether all of a range can be used; true for an empty range. */
  bool isMapped(unsigned int first, unsigned int last);
  /** @} */

  /** @name Vectors, rows and elements @{ */
  /**
   * Shows vector `i`, which the caller has mapped. Of a file-resident set it is a copy, which the
   * next call overwrites. Throws 12.
   */
  Vector* operator[](int i);
  /** Maps vector `i` and shows it. Throws 12 and as MapBlock. */
  Vector* GetVector(int i, int* err);
  /** Maps vector `j` and makes `v` a view on it. Throws 12 and as MapBlock. */
  int GetCol(int j, C_Vec<T, int>& v) override;
  using C_Mat<T>::GetVal;
  /** Returns an element. Throws 12 and as MapBlock. */
  T GetVal(int row, int column) override;
  /** Stores an element, on the file of a file-resident set. Returns 0. Throws as GetVal. */
  int SetVal(int row, int column, T value) override;
  /** Copies row `i` of all vectors to `out` (NbVec elements). Returns 0. Throws 12, 13, 14. */
  int GetRow(int i, T* out);
  /** The same; `v` is resized. */
  int GetRow(int i, Vector& v);
  /** Clears all values. Returns 0. */
  int Zero() override;
  /**
   * Clears the rows whose entry in `mask` (DimVec entries; null: that of setMasterDof) is 0. With
   * neither mask does nothing.
   */
  int ZeroNonMasterDof(int* mask);
  /** Returns the first vector from `first` to `last` (-1: the end) that holds NaN or infinity, -1
   * if there is none. */
  int FirstNotFinite(int first = 0, int last = -1);
  /** @} */

  /** @name State @{ */
  int getCoreMode() const { return coreMode_; }
  /** Shows the descriptor of the data file, -1 if there is none. */
  int getDataFileDescriptor() const { return fileDescriptor_; }
  std::wstring const& getDataFileName() const { return fileName_; }
  /**
   * Presets the name of the data file: of the one that the next Allocate makes anew, or of the one
   * that a Read or Restore from a stream adopts. It serves once.
   */
  void setDataFileName(std::wstring const& name) {
    fileName_ = name;
    namePreset_ = true;
  }
  /** Shows the bytes that this object gave its data file. */
  unsigned __int64 getDataFileSize() const { return fileSize_; }
  /** Tells whether an out-of-core set is mapped (true) or file-resident; of a set in core that was
   * read, what the reader was asked for. */
  bool GetMapFile() const { return mapFile_; }
  /** Shows the number of vectors. */
  int getDim() const { return this->columns_; }
  /** Shows the length of the vectors. */
  int getDim1() const { return this->rows_; }
  /** Shows the elements between the starts of neighbouring vectors. */
  int LeadDim() const { return leadDimension_; }
  /** Shows where in the data file vector 0 begins. */
  unsigned __int64 getInitialOffSet() const { return initialOffSet_; }
  /** Shows the bytes between the vectors of the data file, beyond the leading dimension; of a set
   * in core that was read, what the reader was told, without effect on where its vectors lie. */
  unsigned __int64 getBlockGap() const { return blockGap_; }
  bool getMemOwner() const { return memOwner_; }
  bool isValid() const { return valid_; }
  /** Keeps a mask of DimVec entries for ZeroNonMasterDof; it stays the caller's. */
  void setMasterDof(int* mask) { masterDof_ = mask; }
  /** Prints the state, one field a line. */
  void Info(FILE* file);
  /** @} */

  /** @name As a matrix @{ */
  /** Returns the address of vector 0: of a mapped set only while all of it is mapped, else null. */
  T* Adr() override { return base_; }
  /** Returns the bytes of a set in core, 0 of any other. */
  int MemSize() const override;
  int InCore() override { return coreMode_ == 1; }
  bool Sym() override { return false; }
  __int64 NbVal() override;
  char* AffType() const override;
  char const* Version() const override;
  /** @} */

  /**
   * @name Numerics
   * The vectors of a set that is not one block are read in ranges of a few dozen megabytes, in
   * order. A range that was mapped before the call stays if it holds all that the call needs;
   * otherwise nothing is mapped afterwards, unless a function says so. Operands must not be views
   * into a range that the operation drops.
   * docs/vectorsets.md has the mathematics. @{
   */
  /**
   * Computes y = Q x over the vectors `first` to `last` (-1: the end), or y = Q^H x with
   * `transpose`. `y` is resized. One BLAS call when the set is one block, which then starts
   * `first * DimVec` elements into it: of a link into longer vectors ask for a `first` of 0 only.
   * Otherwise vectors with a zero coefficient are not read. Throws 2872 when `x` does not fit, 12
   * for vectors that do not exist or an operand without data.
   */
  int Mv(C_Vec<T, int>& x, C_Vec<T, int>& y, bool transpose, int first, int last);
  /** Computes y = alpha op(Q) x + beta y; op is Q for `trans` 'N', else Q^H. Throws 2872. */
  int Mv(T alpha, C_Vec<T, int>& x, T beta, C_Vec<T, int>& y, char trans) override;
  /** Computes C = alpha op(Q) B + beta C, column by column; `C` is resized. Throws 2872, and 12
   * when `C` is this set. */
  void MM(T alpha, C_Mat<T>& B, T beta, C_Mat<T>& C, char trans);
  /**
   * Computes the Gram matrix M (NbVec x NbVec): M(i, j) = vector i^H vector j for i <= j, mirrored
   * below the diagonal without conjugation: a complex M is symmetric, not Hermitian. The last
   * vector of a mapped set stays mapped.
   */
  int MatQtQ(C_MatMGe<T>& M);
  /**
   * Computes M = Q1^H Q (n x n) over the first `n` vectors (-1: all). Both sets are mapped whole.
   * The rows of a set may be spread over processes: the product is summed over the communicator,
   * a collective call. Throws 12 when the sets do not fit.
   */
  int MatQ1tQ(C_VSTRUCT& Q1, C_MatMGe<T>& M, int n);
  /**
   * Makes the vectors from `start` on orthonormal, in place, and drops those of which less than
   * the fraction `tol` remains after the projection. Earlier vectors take no part. The set must
   * own its storage when a vector is dropped.
   *
   * `R` takes the coefficients column by column: input vector i has `lengths[i]` of them, and
   * vector i = sum over k of R[column + k] times result vector k. The column of a dropped vector
   * has no diagonal. Either may be null. Throws 2870, 2871, 12.
   */
  int GramSchmidt(double tol, int start, Counts* lengths, Vector* R);
  /**
   * Stores `x` as vector `i`, after making it orthonormal to the vectors before it if
   * `orthogonalise`; `x` is changed by that. Returns 0, or 5 for a vector shorter than tol / 100 or
   * of length 0, or 12 for one of which less than the fraction `tol`, or nothing, remained; the set
   * is then unchanged.
   * `ratio` (may be null) takes that fraction. Throws 12, 2871.
   */
  int AddVector(C_Vec<T, int>& x, int i, bool orthogonalise, double tol, double* ratio);
  /** As AddVector, with no test of the length; throws 2866 where the vector is dependent. */
  int SetVector(C_Vec<T, int>& x, int i, bool orthogonalise, double tol, double* ratio);
  /**
   * The same with the inner product `ip`. `coef` is resized to i + 1: the given x is the sum over j
   * of coef[j] times vector j. A negative `ip(x, x)` is refused as dependence. Throws 12, 2866,
   * 2871.
   */
  int SetVector(C_Vec<T, int>& x, int i, double tol, C_Vec<T, int>& coef, double* ratio,
                C_FInnerProd<T>* ip);
  /** Copies rows and vectors to `M`, ends exclusive, a second one of -1 meaning all. Throws 12. */
  int GetRows(C_MatMGe<T>& M, int row0, int row1, int col0, int col1);
  /**
   * Copies the rows whose bit is set in `mask`, of the vectors `first` to `last` (exclusive, -1:
   * all), to the columns from `first` on of `M`. `M` is resized to last - first columns, so that a
   * `first` above 0 asks for a matrix that has room already. Throws 12.
   */
  int Extract(C_MatMGe<T>& M, BVEC* mask, int first, int last);
  /**
   * Becomes a copy of the vectors `first` to `last` (exclusive, -1: all) of another set. A set of
   * other length is made anew in core. Between two sets in core it is one flat copy from the start
   * of the source's block, whatever `first` and its leading dimension are; use Initialize for
   * links.
   */
  int Copy(C_VSTRUCT& source, int first, int last);
  /** Appends copies of all vectors of another set. Throws 2870 unless the set owns its storage. */
  void Merge(C_VSTRUCT& other);
  /** Returns an empty vector. */
  Vector operator*(C_VSTRUCT& other);
  /** @} */

  /**
   * @name Files
   * docs/formats/vectorset.md has the bytes. @{
   */
  /** Writes the set in the portable form. Returns 0. Throws 22, 11. */
  int Write(FILE* file) override;
  /** Writes the set in the portable or the raw form. Returns 0. Throws 22, 35, 11. */
  int Write(FILE* file, bool portable);
  /** Writes the set in the raw form. Returns 0. Throws 22, 35, 11. */
  int Dump(FILE* file);
  /**
   * Writes the set by rows. A set of more than 8 MiB goes out in another, lossy form, which the
   * page on files tells; one of 2 GiB or more is refused (22, or 35 raw) before anything is
   * written. Returns 0. Throws 22, 35, 11, 1.
   */
  int WriteT(FILE* file, bool portable);
  /** Reads a set in the portable form into memory, or, when it does not fit there, adopts it
   * file-resident. Returns 0. Throws 21. */
  int Read(FILE* file) override;
  /**
   * Reads a set in the portable form, or, with `CoreMode` 2, adopts the file's vectors where they
   * lie: mapped, or file-resident without `MapFile`. Counts of 0 are read from the file; `gap`
   * bytes lie between the vectors of an adopted file. The stream must stay open while an adopting
   * set is used; it then stands behind the data. Through a stream that is open for reading only a
   * set is mapped by the name that setDataFileName has preset; the set then shows that name, and
   * its next life does not make that file anew.
   *
   * A mapped set reads no vector, so that a file that is shorter than its head says fails when the
   * vectors are used; a file-resident one reads the first 4096 values of each. A set in core that
   * memory does not hold is adopted instead. Returns 0.
   *
   * Throws 20; 21, also for negative counts, for values in core that the file does not hold and
   * for more vectors than 65536 and 16 for each that it holds; 3; 12 for a negative gap; 1.
   * The set is not valid then.
   */
  int Read(FILE* file, int CoreMode, bool MapFile, int NbVec, int DimVec, __int64 gap);
  /**
   * The same from byte `offset` of a file, which the set opens for reading and writing, and closes:
   * when it is released, or at once when the vectors are in core. Throws 19 too.
   */
  int Read(wchar_t const* name, __int64 offset, int CoreMode, bool MapFile, int NbVec, int DimVec,
           __int64 gap);
  /** Reads or adopts (mapped) the raw form. `name` is the name of the open file. Throws as Read. */
  int Restore(wchar_t* name, FILE* file, int CoreMode, int NbVec, int DimVec);
  /**
   * The same from byte `offset` of a file. The set owns what it adopts: it may be resized, and its
   * end removes the file. The descriptor (getDataFileDescriptor) is the caller's to close, in core
   * too. Throws 19 too.
   */
  int Restore(wchar_t* name, unsigned __int64 offset, int CoreMode, int NbVec, int DimVec);
  /** @} */

private:
  template <class>
  friend struct VectorSetFiles;

  void resizeTo(int vectors) override { Resize(vectors, nullptr); }

  // State.
  /// Takes the counts of a set that has no vectors yet; what stood before is let go.
  void _Initialize(int CoreMode, bool MemOwner, int NbVec, int DimVec, int lead, int* mask);
  void letGo();
  void abandon() noexcept;
  void forgetBlocks() noexcept;
  void requireValid() const;
  void requireVector(int i) const;

  // List of vectors and block in core.
  void _AllocateList();
  void _AllocateBase(unsigned __int64 bytes);
  void _ReallocateBase(unsigned __int64 bytes, char const* name, char const* file, int line);
  void _DeallocateList();
  void reserveList(int n);
  C_Vec<T, int>* newVector() const;
  void attachAll(T* first, unsigned __int64 strideBytes, int count);
  void _ResizeList(int n, char const* name, char const* file, int line);
  void _ResizeIncore(int n, char const* name, char const* file, int line);
  void _ResizeOutofcore(int n, char const* name, char const* file, int line);
  void growList(int n);
  void linkInCore(C_VSTRUCT& other, int firstVec, int firstRow);
  void linkOutOfCore(C_VSTRUCT& other, int firstVec, int firstRow);

  // Data file.
  void _CreateDataFile(std::wstring const& name, char const* prefix);
  unsigned __int64 _ComputeDataFileSize() const;
  unsigned __int64 dataFileSize(int vectors) const;
  void _setDataFileSize(unsigned __int64 size);
  void releaseFileHandle();
  void _CloseDataFile(bool strict);
  void _RemoveDataFile(bool strict);
  void bindFile(std::wstring const& name);
  void leaveFileBehind();
  std::wstring const& presentName() const { return boundName_.empty() ? fileName_ : boundName_; }

  // Mapped range.
  unsigned __int64 strideBytes() const;
  void mapRange(unsigned int first, unsigned int last);
  void attachRange(_Cblock const& block);
  bool aligned() const;
  std::vector<T> roomForCopies(C_MapPtr& view, unsigned int vectors);
  std::size_t valuesOf(unsigned int vectors) const;
  template <class Visit>
  void forEachCopy(Visit visit);
  void storeCopies();
  void readMapped();
  void _UnmapBlock(_Cblock* block);
  _Cblock* blockOf(unsigned int i) const;
  bool mapped() const { return coreMode_ == 2 && mapFile_; }
  bool fileResident() const { return coreMode_ == 2 && !mapFile_; }
  template <class Work>
  void withVector(int j, Work work);
  template <class Visit>
  void forEachRange(int first, int last, Visit visit);
  bool asMatrix(int first, int last, T*& data, int& lead);
  void requireOperand(C_Vec<T, int>& v) const;

  // Values.
  void store(int i, T const* values);
  void storeVector(int i, C_Vec<T, int>& x);
  void copyVector(int to, C_VSTRUCT& source, int from);
  void copyAll(C_VSTRUCT& source, int at);
  T valueOnFile(int i, int j);
  void readRow(int i, T* out);
  template <class Visit>
  void forEachPiece(int row, int count, int col0, int col1, Visit visit);

  // Numerics.
  void mvOneBlock(T* x, T* y, bool transpose, int first, int count);
  void mvTransposed(T* x, T* y, int first, int last);
  void mvPlain(T* x, T* y, int first, int last);
  RowPanels rowPanels() const;
  bool gramByPanels(C_MatMGe<T>& M);
  void gramByVectors(C_MatMGe<T>& M);
  void productByVectors(C_VSTRUCT& Q1, C_MatMGe<T>& M, int n);
  int orthonormaliseByBlocks(double tol, int start, CoefficientSink<T>& sink, T* data, int lead);
  int orthonormaliseByVectors(double tol, int start, CoefficientSink<T>& sink);
  void projectOut(C_Vec<T, int>& t, int j, T& coefficient);
  void requirePlace(C_Vec<T, int>& x, int i) const;
  template <class With>
  void forEachBefore(int i, With with);
  static void addIfFelt(Vector& v, C_Vec<T, int>& x, T a, double norm0);
  static void requireIndependent(double left, double whole, double tol, double* ratio);

  // DimVec and NbVec are rows_ and columns_ of the matrix.
  bool valid_ = false;
  int leadDimension_ = 0;
  int* masterDof_ = nullptr;
  C_Vec<T, int>** list_ = nullptr; ///< room for `listed_` vectors, from zarelmem_
  int listed_ = 0;
  Vector work_;
  Counts flags_;
  int fileDescriptor_ = -1;
  FILE* stream_ = nullptr;
  unsigned __int64 initialOffSet_ = 0;
  unsigned __int64 blockGap_ = 0;
  std::wstring fileName_;
  bool namePreset_ = false; ///< fileName_ is the caller's wish and has not served yet
  std::string boundPath_;   ///< the same as the system takes it: removing a file needs no memory
  std::wstring boundName_;  ///< name of the file at hand; fileName_ may be preset for the next one
  unsigned __int64 fileSize_ = 0;
  bool memOwner_ = false;
  bool mapFile_ = true;
  bool fileOpenedHere_ = false;
  int coreMode_ = 1;
  T* base_ = nullptr;
  unsigned int lastBlockId_ = 0;
  std::vector<_Cblock*> blocks_;
  std::vector<T> copies_; ///< the mapped range, where its vectors are not aligned
  int highestMapped_ = -1;
  bool shared_ = false; ///< a link and this set have the same vectors on a file
};

/// @cond
#define ZAREL_EXTERN(T)                                                                            \
  extern template class C_FInnerProd<T>;                                                           \
  extern template class C_VectorSetShape<T>;                                                       \
  extern template class C_VSTRUCT<T>;
ZAREL_MATRIX_SCALARS(ZAREL_EXTERN)
#undef ZAREL_EXTERN
/// @endcond

} // namespace Zarel

#endif
