// Where a tool finds its message texts.
#include <zarel/C_MessageTool.h>

#include <cstdio>
#include <memory>

#include "runtime/access.h"
#include "runtime/format.h"
#include "system/environment.h"
#include "system/files.h"

namespace Zarel {

namespace {

constexpr const char* fallbackFiles[] = {"zarel0.msb", "qx0.msb", "lum0.msb"};

std::string fallbackFile() {
  for (const char* name : fallbackFiles)
    if (fileExists(name)) return name;
  return {};
}

std::string loadFailure(const C_ZarelException& exception) {
  std::string report = "Cannot load messages database";
  switch (static_cast<int>(exception.getExceptionCode())) {
  case 102:
    return report + ": invalid filename";
  case 103:
    return report + ": load failed";
  default:
    return report;
  }
}

} // namespace

void C_MessageTool::BuildResourcesFilename(std::string& name) const {
  name = textOf("%s/qx%d.msb", _resourcesDir.c_str(), static_cast<int>(_language));
}

int C_MessageTool::setResourcesDir(const std::string& dir, C_MessageDatabase::E_CodeLang language) {
  _resourcesDir = dir;
  _language = language;
  BuildResourcesFilename(_resourcesFile);
  return 0;
}

int C_MessageTool::setResourcesDirByEnv(const std::string& variable,
                                        C_MessageDatabase::E_CodeLang language) {
  _resourcesVariable = variable;
  _resourcesValue = environment(variable.c_str()).value_or(" ");
  return setResourcesDir(_resourcesValue, language);
}

int C_MessageTool::setResourcesFilename(const std::string& name,
                                        C_MessageDatabase::E_CodeLang language) {
  _language = language;
  if (!fileExists(name)) {
    std::fprintf(stderr, "Resource filename %s does not exist.", name.c_str());
    return -1;
  }
  _resourcesFile = name;
  const std::string directory = directoryOf(name);
  if (!directory.empty()) _resourcesDir = directory;
  return 0;
}

int C_MessageTool::Initialize() {
  if (!EverythingIsSwallowed()) {
    const bool found = !_resourcesFile.empty() && fileExists(_resourcesFile);
    if (!found && FindFallbackResources() != 0) return -1;
    if (LoadDatabase() != 0) return -1;
  }
  _initialized = true;
  return 0;
}

bool C_MessageTool::EverythingIsSwallowed() {
  bool all = true;
  forEachStream(ALL_STREAMS, [&](int stream) {
    all = all && dynamic_cast<C_DevNullCtrl*>(MessageToolAccess::controller(*this, stream));
  });
  return all;
}

std::string C_MessageTool::MissingResourcesReport() const {
  std::string report = _resourcesFile.empty()
                           ? "Programming error: resources file is not specified."
                           : "Resources file '" + _resourcesFile + "' not found.";
  if (_resourcesVariable.empty()) return report;
  report += " " + _resourcesVariable;
  return report + (_resourcesValue.empty() ? " is not specified." : " = " + _resourcesValue);
}

int C_MessageTool::FindFallbackResources() {
  const std::string report = MissingResourcesReport();
  _resourcesFile = fallbackFile();
  if (_resourcesFile.empty()) {
    HandleMessage(_key, report, E_MsgError, 0, 0);
    return -1;
  }
  HandleMessage(_key, report + "\nFound file '" + _resourcesFile + "': loading and continuing.",
                E_MsgWarning, 0, 0);
  return 0;
}

int C_MessageTool::LoadDatabase() {
  delete _database;
  _database = nullptr;
  _database = new C_MessageDatabase;
  try {
    try {
      _database->LoadFile(_resourcesFile, _language);
    } catch (const C_ZarelException&) {
      if (_language == 0) throw;
      _language = 0;
      BuildResourcesFilename(_resourcesFile);
      _database->LoadFile(_resourcesFile, _language);
    }
  } catch (const C_ZarelException& exception) {
    HandleMessage(_key, loadFailure(exception), E_MsgError, 0, 0);
    _initialized = false;
    return -1;
  }
  return 0;
}

} // namespace Zarel
