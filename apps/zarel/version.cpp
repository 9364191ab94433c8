#include "version.h"

#include <zarel/blas_info.h>
#include <zarel/version.h>

namespace app {

std::string programVersion() {
  return ZAREL_VERSION;
}

BlasFacts blasFacts() {
  return {zarel_blas_name(), zarel_blas_version(), zarel_blas_core(), zarel_blas_initial_core(),
          zarel_blas_reselected() != 0};
}

std::string versionText() {
  const BlasFacts blas = blasFacts();
  std::string text = "zarel " + programVersion() + "\nBLAS: " + blas.name;
  if (!blas.version.empty()) text += " " + blas.version;
  if (!blas.core.empty()) text += ", kernels for " + blas.core;
  if (blas.reselected) text += " (chosen at load, " + blas.initialCore + " before)";
  return text + "\n";
}

} // namespace app
