// How the decompositions tell what went wrong.
#ifndef ZAREL_DECOMPOSITION_REPORT_H
#define ZAREL_DECOMPOSITION_REPORT_H

#include <cstdio>

#include <zarel/C_MessageTool.h>

#include "runtime/fail.h"

namespace Zarel::decomposition {

/** Sends an error of `method` and leaves a trace. Returns -1. */
template <class... Values>
int refused(const char* method, const char* file, int line, const char* format, Values... values) {
  const C_ZarelMessage message(method, file, line, E_MsgError, format, values...);
  C_MessageTool::HandleMessage(message);
  return traced(file, line);
}

/** The error for a value that is no finite number. */
inline int refusedNotFinite(const char* method, int vector, const char* file, int line) {
  return refused(method, file, line,
                 "ERROR in %s: vector %d holds a value that is not a finite number\n", method,
                 vector);
}

/** The words of a method that has no form for vectors to be left out. */
inline int refusedFirst(const char* method, const char* file, int line) {
  std::fprintf(stderr,
               "Methode : %s, Mode de fonctionnement Non prevu pour le moment "
               "(ComputeQtQ && ifirst>0) \n",
               method);
  return traced(file, line);
}

} // namespace Zarel::decomposition

#endif
