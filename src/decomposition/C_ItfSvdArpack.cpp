#include <zarel/C_AlgoSvd.h>

#include <algorithm>
#include <limits>

#include <zarel/C_Lapack.h>

#include "containers/finite.h"
#include "decomposition/report.h"

using Zarel::C_VSTRUCT;
using Zarel::traced;
using Zarel::decomposition::refused;
using Zarel::decomposition::refusedNotFinite;

namespace {

using Vector = C_VecPi<double, int, C_PtrInCore<double, int>>;

constexpr char method[] = "C_ItfSvdArpackCVstruct::ProdAtAV";
constexpr int mappingFailed = 13;

/** Bytes of a panel of rows: it is read from memory for A x and from the cache for A^T. */
constexpr std::int64_t panelBytes = 1 << 19;
constexpr std::int64_t leastPanelRows = 256;

/** Tells what a set throws before passing it on. */
template <class Operation>
auto told(Operation operation) {
  try {
    return operation();
  } catch (C_ZarelException& e) {
    Zarel::C_MessageTool::HandleMessage(e, Zarel::E_MsgError, 0);
    throw;
  }
}

} // namespace

C_ItfSvdArpack::~C_ItfSvdArpack() = default;

int C_ItfSvdArpack::ProdAMat(C_MatMGe<double>& X, C_MatMGe<double>& Y) {
  for (int j = 0; j < X.NbCol(); ++j) {
    Vector x(X.NbRow(), X[j]), y(Y.NbRow(), Y[j]);
    if (ProdAV(x, y) != 0) return traced();
  }
  return 0;
}

C_ItfSvdArpackCVstruct::C_ItfSvdArpackCVstruct(C_VSTRUCT<double>& set)
    : set_(&set), blocks_(blocksOf(set.getDim())) {}
C_ItfSvdArpackCVstruct::~C_ItfSvdArpackCVstruct() = default;

int C_ItfSvdArpackCVstruct::blocksOf(int vectors) const {
  return (vectors + blockSize_ - 1) / blockSize_;
}

int C_ItfSvdArpackCVstruct::GetSize(int& m, int& n) {
  m = set_->getDim1();
  n = set_->getDim();
  noWholeView_ = false;
  return 0;
}

/** Values between the starts of two vectors; 0 if that is no whole number that fits. */
int C_ItfSvdArpackCVstruct::lead() const {
  const unsigned __int64 gap = set_->getCoreMode() == 2 ? set_->getBlockGap() : 0;
  const unsigned __int64 values = static_cast<unsigned>(set_->LeadDim()) + gap / sizeof(double);
  const bool fits = gap % sizeof(double) == 0 && values <= std::numeric_limits<int>::max();
  return fits ? static_cast<int>(values) : 0;
}

/** The set as one matrix with the leading dimension lead(), or null where it cannot be one. */
double* C_ItfSvdArpackCVstruct::wholeMatrix() {
  if (set_->getDim() == 0 || set_->getDim1() == 0 || lead() == 0) return nullptr;
  if (set_->getCoreMode() == 1) return set_->Adr();
  if (!set_->GetMapFile()) return nullptr;
  if (set_->Adr() != nullptr) return set_->Adr();
  if (noWholeView_) return nullptr;
  try {
    set_->MapAllBlocks();
  } catch (const C_ZarelException& e) {
    if (e.getExceptionCode() != mappingFailed) throw;
    noWholeView_ = true; // the set goes in parts, and no product tries in vain again
    return nullptr;
  }
  return set_->Adr();
}

int C_ItfSvdArpackCVstruct::multiply(C_Vec<double, int>& x, C_Vec<double, int>& y) {
  const int m = set_->getDim1(), n = set_->getDim();
  if (x.Dim() != n) return traced();
  if (y.Dim() != m) y.Resize(m);
  if (double* const a = wholeMatrix())
    Zarel::Lapack::gemv('N', m, n, 1.0, a, lead(), x.Adr(0), 1, 0.0, y.Adr(0), 1);
  else
    set_->Mv(x, y, false, 0, -1);
  return 0;
}

int C_ItfSvdArpackCVstruct::ProdAV(C_Vec<double, int>& x, C_Vec<double, int>& y) {
  return told([&] { return multiply(x, y); });
}

void C_ItfSvdArpackCVstruct::gramProduct(double* a, C_Vec<double, int>& x, C_Vec<double, int>& y) {
  const int m = set_->getDim1(), n = set_->getDim(), step = lead();
  const std::int64_t inCache = panelBytes / (static_cast<std::int64_t>(sizeof(double)) * n);
  const int panel = static_cast<int>(std::min<std::int64_t>(m, std::max(leastPanelRows, inCache)));
  work_.Resize(panel);
  y.Zero(0, -1);
  for (int row = 0; row < m; row += panel) {
    const int rows = std::min(panel, m - row);
    Zarel::Lapack::gemv('N', rows, n, 1.0, a + row, step, x.Adr(0), 1, 0.0, work_.Adr(0), 1);
    Zarel::Lapack::gemv('T', rows, n, 1.0, a + row, step, work_.Adr(0), 1, 1.0, y.Adr(0), 1);
  }
}

int C_ItfSvdArpackCVstruct::ProdAtAV(C_Vec<double, int>& x, C_Vec<double, int>& y) {
  if (x.Dim() != set_->getDim()) return traced();
  if (y.Dim() != x.Dim()) y.Resize(x.Dim());
  if (useGram_) return gram_.Mv(1.0, x, 0.0, y, 'N');
  return told([&] {
    if (double* const a = wholeMatrix()) {
      gramProduct(a, x, y);
    } else {
      if (multiply(x, work_) != 0) return traced();
      set_->Mv(work_, y, true, 0, -1);
    }
    // Each vector at fault spoils its own entry, and often all of them.
    return Zarel::allFinite(y.Adr(0), y.Dim()) ? 0 : tellFault();
  });
}

int C_ItfSvdArpackCVstruct::tellFault() {
  const int bad = set_->FirstNotFinite();
  if (bad >= 0) return refusedNotFinite(method, bad, __FILE__, __LINE__);
  return refused(method, __FILE__, __LINE__,
                 "ERROR in %s: the squares of the values overflow; scale the vectors\n", method);
}

int C_ItfSvdArpackCVstruct::ProdAMat(C_MatMGe<double>& X, C_MatMGe<double>& Y) {
  const int m = set_->getDim1(), n = set_->getDim();
  if (X.NbRow() != n || Y.NbRow() != m || X.NbCol() != Y.NbCol()) return traced();
  double* const a = told([&] { return wholeMatrix(); });
  if (a == nullptr) return C_ItfSvdArpack::ProdAMat(X, Y);
  Zarel::Lapack::gemm('N', 'N', m, X.NbCol(), n, 1.0, a, lead(), X.Adr(), X.LeadDim(), 0.0, Y.Adr(),
                      Y.LeadDim());
  return 0;
}

int C_ItfSvdArpackCVstruct::SetNewA(C_VSTRUCT<double>& q) {
  if (q.getDim1() != set_->getDim1()) return traced();
  return told([&] {
    set_->Resize(q.getDim(), nullptr);
    for (int i = 0; i < q.getDim(); ++i) {
      q.MapBlock(static_cast<unsigned>(i), static_cast<unsigned>(i));
      if (set_->AddVector(*q[i], i, false, 0, nullptr) != 0) return traced();
    }
    blocks_ = blocksOf(set_->getDim());
    return 0;
  });
}
