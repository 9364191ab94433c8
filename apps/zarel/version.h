/**
 * @file version.h
 * What `zarel --version` says.
 */
#ifndef ZAREL_APP_VERSION_H
#define ZAREL_APP_VERSION_H

#include <string>

namespace app {

/** "0.1.0". */
std::string programVersion();

/** The BLAS in the process; texts that it does not tell are empty. */
struct BlasFacts {
  std::string name;
  std::string version;
  std::string core;
  std::string initialCore;
  bool reselected = false;
};
BlasFacts blasFacts();

/** The version, and the BLAS in use. */
std::string versionText();

} // namespace app

#endif
