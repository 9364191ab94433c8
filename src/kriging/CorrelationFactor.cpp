#include "kriging/CorrelationFactor.h"

#include <cmath>

namespace Zarel {

double fittingCriterion(int order, const double* diagonal) {
  const double power = 2.0 / order;
  double total = 1.0;
  double group = 1.0;
  for (int i = 0; i < order; ++i) {
    group *= diagonal[i];
    if (i % 20 == 0) {
      total *= std::pow(group, power);
      group = 1.0;
    }
  }
  if ((order - 1) % 20 != 0) total *= std::pow(group, power);
  return total;
}

void CorrelationFactor::shape(int m, C_MatMSym<double>& packed) {
  inverse = &packed;
  if (m == order) return;
  order = 0;
  full.Release(); // nothing of it is worth copying to a larger block
  full.Resize(static_cast<__int64>(m) * m);
  diag.Resize(m);
  order = m;
}

int CorrelationFactor::factorise(const Refill& refill) {
  definite = factoriseFull();
  if (definite) return 0;
  if (const int code = refill()) return code;
  factorisePacked();
  return 0;
}

bool CorrelationFactor::factoriseFull() {
  int info = 0;
  ITF_dpotrf(Option('L'), order, full.Adr(0), order, &info);
  bool finite = info == 0; // some implementations pass a NaN without a word
  for (int i = 0; i < order && finite; ++i) {
    diag.Adr(0)[i] = *column(i);
    finite = std::isfinite(*column(i));
  }
  return finite;
}

void CorrelationFactor::factorisePacked() {
  inverse->Shape(order, 1);
  double* const packed = inverse->Adr();
  packLower(order, full.Adr(0), order, packed);
  int info = 0;
  ITF_dpptrf(Option('L'), order, packed, &info);
  long at = 0;
  for (int i = 0; i < order; at += order - i, ++i)
    diag.Adr(0)[i] = packed[at];
  invertPackedLower(order, packed);
}

void CorrelationFactor::apply(char trans, double* x, int count) {
  if (definite) {
    ITF_dtrsm(Option('L'), Option('L'), Option(trans), Option('N'), order, count, 1.0, full.Adr(0),
              order, x, order);
    return;
  }
  for (int j = 0; j < count; ++j)
    ITF_dtpmv(Option('L'), Option(trans), Option('N'), order, inverse->Adr(),
              x + static_cast<long>(j) * order, 1);
}

void CorrelationFactor::invert() {
  if (!definite) return;
  int info = 0;
  ITF_dtrtri(Option('L'), Option('N'), order, full.Adr(0), order, &info);
  inverse->Shape(order, 1);
  packLower(order, full.Adr(0), order, inverse->Adr());
}

} // namespace Zarel
