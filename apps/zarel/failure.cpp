#include "failure.h"

#include <system_error>

namespace app {

std::string Place::text() const {
  std::string out = file;
  if (line > 0) out += ":" + std::to_string(line);
  std::string detail;
  if (row > 0) detail = "row " + std::to_string(row);
  if (column > 0) detail += (detail.empty() ? "" : ", ") + ("column " + std::to_string(column));
  if (!name.empty()) detail += (detail.empty() ? "" : " ") + ("(" + name + ")");
  if (!detail.empty()) out += (out.empty() ? "" : ": ") + detail;
  return out;
}

std::string Failure::text() const {
  const std::string where = place.text();
  return where.empty() ? what() : where + ": " + what();
}

void failIo(const std::string& what, int error) {
  throw Failure(ExitCode::io, what + ": " + std::generic_category().message(error));
}

} // namespace app
