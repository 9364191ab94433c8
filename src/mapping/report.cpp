#include "mapping/report.h"

#include <memory>
#include <new>

#include <zarel/erreur.h>
#include <zarel/zarelmem.h>

namespace Zarel {

namespace {

// What is said where the host has brought no texts.
const char* plainText(MapMessage message) {
  switch (message) {
  case outOfMemory:
    return "Not enough memory for a mapped file";
  case notMapped:
    return "A file cannot be mapped";
  case notUnmapped:
    return "The mapping of a file cannot be ended";
  case fileNotMade:
    return "A file cannot be created, opened or sized";
  case fileNotDeleted:
    return "A file cannot be deleted";
  case fileNotClosed:
    return "A file cannot be closed";
  case registerFailed:
    return "A mapped file is not registered";
  }
  return "";
}

struct FreeText {
  void operator()(char* text) const { zarelmem_free(text, __FILE__, __LINE__); }
};

const char* sourceOf(const Caller& caller) {
  return caller.source ? caller.source : "";
}

// Runs what tells of a failure. Callers in C expect no exception, and the failure counts more than
// its report.
template <class Report>
void tell(Report report) {
  try {
    report();
  } catch (const std::bad_alloc&) {
  }
}

} // namespace

int Caller::fail(MapMessage message, const char* function) const {
  tell([&] {
    const std::unique_ptr<char, FreeText> text(MSG_get(message));
    Erreur(function, line, sourceOf(*this), "%s", text ? text.get() : plainText(message));
  });
  return refuse();
}

int Caller::failTraced() const {
  tell([this] { fct_Trace("aff_lieu", line, sourceOf(*this)); });
  return refuse();
}

} // namespace Zarel
