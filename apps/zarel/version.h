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

/** The version, and the BLAS in use. */
std::string versionText();

} // namespace app

#endif
