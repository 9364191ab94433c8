#include "version.h"

namespace app {

std::string programVersion() {
  return ZAREL_VERSION;
}

std::string versionText() {
  return "zarel " + programVersion() + "\n";
}

} // namespace app
