#include "runtime/fail.h"

#include <zarel/C_ZarelException.h>
#include <zarel/erreur.h>

#include "runtime/keys.h"

namespace Zarel {

void fail(int code, int reason, const char* file, int line) {
  throw C_ZarelException("Throwing", file, line, code, reason, defaultKey);
}

int traced(const char* file, int line) {
  fct_Trace("aff_lieu", line, file);
  return -1;
}

} // namespace Zarel
