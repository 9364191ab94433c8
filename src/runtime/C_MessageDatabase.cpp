#include <zarel/C_MessageDatabase.h>

#include "runtime/fail.h"
#include "system/files.h"

namespace Zarel {

C_MessageDatabase::C_MessageDatabase() : _language(0) {}
C_MessageDatabase::~C_MessageDatabase() = default;

int C_MessageDatabase::LoadFile(const std::string& name, E_CodeLang language) {
  _language = language;
  _fileName = name;
  if (!_isValidFileName(name)) fail(102);
  fail(103);
}

int C_MessageDatabase::GetMessage(std::string&, int, char**) {
  fail(104);
}

int C_MessageDatabase::GetMessage(std::string& text, int id, ...) {
  return GetMessage(text, id, static_cast<char**>(nullptr));
}

bool C_MessageDatabase::_isValidFileName(const std::string& name) {
  return isRegularFile(name);
}

} // namespace Zarel
