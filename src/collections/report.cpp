#include "collections/report.h"

#include <memory>
#include <new>

#include <zarel/erreur.h>
#include <zarel/zarelmem.h>

namespace Zarel {

namespace {

// What is said where the host has brought no texts.
const char* plainText(CollectionMessage message) {
  switch (message) {
  case noMemory:
    return "Not enough memory for a list";
  case writeFailed:
    return "Write error";
  case nothingToRead:
    return "There is no list to read";
  case argumentMissing:
    return "An argument is missing";
  case tableMissing:
    return "There is no hash table";
  case noMemoryForTable:
    return "Not enough memory for a hash table";
  case keyMissing:
    return "The key is not in the hash table";
  }
  return "";
}

struct FreeText {
  void operator()(char* text) const { zarelmem_free(text, __FILE__, __LINE__); }
};

void report(CollectionMessage message, const char* detail, const char* function, const char* file,
            int line) {
  const std::unique_ptr<char, FreeText> text(MSG_get(message, detail));
  if (text)
    Erreur(function, line, file, "%s", text.get());
  else
    Erreur(function, line, file, "%s%s%s", plainText(message), *detail ? ": " : "", detail);
}

} // namespace

// Callers in C expect no exception, and the failure counts more than its report.
int reported(CollectionMessage message, const char* detail, const char* function, const char* file,
             int line) {
  try {
    report(message, detail, function, file, line);
  } catch (const std::bad_alloc&) {
  }
  return -1;
}

int printedOn(FILE* file, const char* function) {
  return std::ferror(file) ? reported(writeFailed, "", function) : 0;
}

} // namespace Zarel
