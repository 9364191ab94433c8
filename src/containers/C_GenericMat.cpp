#include <zarel/C_Mat.h>

#include "containers/files.h"
#include "runtime/fail.h"

using Zarel::fail;

namespace {

char kGenericMatName[] = "C_GenericMat Type";

constexpr C_GenericMat::E_Side kWholeMatrix = static_cast<C_GenericMat::E_Side>(3);

bool isFlagBit(int flag) {
  return flag >= 0 && flag < 32;
}

} // namespace

C_GenericMat::~C_GenericMat() = default;

C_GenericMat::E_Side C_GenericMat::GetSide() {
  return kWholeMatrix;
}
int C_GenericMat::MaxLength() {
  return -1;
}
char* C_GenericMat::AffType() const {
  return kGenericMatName;
}
char const* C_GenericMat::Version() const {
  return "0.1";
}
C_Type::E_Type C_GenericMat::Type() {
  return C_Type::E_TypeUnknown;
}
int C_GenericMat::WriteMatlab(FILE*) {
  fail(2871);
}
int C_GenericMat::Print(FILE*, int) {
  return 0;
}
int C_GenericMat::ResizeAndKeepValues(int, int) {
  fail(2871);
}
int C_GenericMat::EraseCol(int, int) {
  fail(2871);
}
int C_GenericMat::EraseRow(int, int) {
  fail(2871);
}
int C_GenericMat::Zero() {
  fail(2871);
}
double C_GenericMat::Nrm(E_NrmType) {
  fail(2871);
}

__int64 C_GenericMat::NbVal() {
  return static_cast<int>(static_cast<unsigned>(rows_) * static_cast<unsigned>(columns_));
}

int C_GenericMat::Write(FILE* file) {
  Zarel::requireHandle(file);
  Zarel::writeValues(file, &rows_, 1);
  Zarel::writeValues(file, &columns_, 1);
  return 0;
}

int C_GenericMat::Read(FILE* file) {
  Zarel::requireHandle(file);
  const int rows = Zarel::readOne<int>(file);
  columns_ = Zarel::readOne<int>(file);
  rows_ = rows;
  return 0;
}

int C_GenericMat::WriteMatlab(char const* name) {
  const Zarel::TextFile file(name, "w");
  return WriteMatlab(file.get());
}

int C_GenericMat::Print(char const* name, int row, bool append) {
  const Zarel::TextFile file(name, append ? "a" : "w");
  return file.get() == nullptr ? 0 : Print(file.get(), row);
}

int C_GenericMat::GenCopy(C_GenericMat& source) {
  rows_ = source.rows_;
  columns_ = source.columns_;
  return 0;
}

int C_GenericMat::Resize(int rows, int columns) {
  rows_ = rows;
  columns_ = columns;
  return 0;
}

int C_GenericMat::Row(int row) {
  if (row >= rows_) return -1;
  row_cursor_ = row;
  return row;
}

int C_GenericMat::NextRow() {
  ++row_cursor_;
  return row_cursor_ >= rows_ ? -1 : row_cursor_;
}

bool C_GenericMat::getFlag(int flag) const {
  return isFlagBit(flag) && (static_cast<unsigned>(flags_) >> flag & 1U) != 0;
}

void C_GenericMat::setFlag(int flag, bool value) {
  if (!isFlagBit(flag)) return;
  const unsigned bit = 1U << flag;
  const unsigned others = static_cast<unsigned>(flags_) & ~bit;
  flags_ = static_cast<int>(value ? others | bit : others);
}
