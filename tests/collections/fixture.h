// Lists of texts and what the functions report.
#ifndef TESTS_COLLECTIONS_FIXTURE_H
#define TESTS_COLLECTIONS_FIXTURE_H

#include <algorithm>
#include <string>
#include <vector>

#include <zarel/bf.h>
#include <zarel/liste_chainee.h>
#include <zarel/zarelmem.h>

#include "runtime/fixture.h"
#include "support/FailingAllocation.h"

namespace collections_test {

using runtime_test::capture;
using Texts = std::vector<std::string>;

// An initialized tool without texts of its own, whose errors are kept.
class Collections : public runtime_test::Messages {
protected:
  Collections() { initialized(); }

  // The texts of the errors since the last call.
  Texts errors() {
    Texts texts;
    for (const std::string& line : noting.lines)
      if (line.rfind("0 2 ", 0) == 0) texts.push_back(line.substr(4));
    noting.lines.clear();
    return texts;
  }

  // The functions that were blamed since the last call of this or of errors().
  Texts blamed() {
    Texts functions;
    for (const std::string& line : noting.lines)
      if (line.rfind("0 8 0 ", 0) == 0) functions.push_back(line.substr(6, line.find('(') - 6));
    noting.lines.clear();
    return functions;
  }

  // How many returns of this room left a trace since the last call of this or of the others.
  int traces() {
    const int count = static_cast<int>(
        std::count_if(noting.lines.begin(), noting.lines.end(), [](const std::string& line) {
          return line.rfind("0 8 fct_Trace: aff_lieu(), src/collections/", 0) == 0;
        }));
    noting.lines.clear();
    return count;
  }
};

// A text as an object of a list; the list does not own it.
inline void* text(const char* characters) {
  return const_cast<char*>(characters);
}

// The texts of a chain of nodes, and the same read backwards from its end.
inline Texts textsOf(const LIS* node) {
  Texts texts;
  for (; node; node = node->next)
    texts.emplace_back(static_cast<const char*>(node->object));
  return texts;
}

// A stream that takes nothing: what is printed on it fails at once.
class FullStream {
public:
  FullStream() : _file(std::fopen("/dev/full", "w")) { std::setvbuf(_file, nullptr, _IONBF, 0); }
  ~FullStream() { std::fclose(_file); }
  FullStream(const FullStream&) = delete;
  FullStream& operator=(const FullStream&) = delete;

  FILE* get() const { return _file; }

private:
  FILE* _file;
};

// Lets each allocation of `operation` fail in turn and expects that no run of it leaves a block
// behind. Returns how many failed.
template <class Operation>
long failuresWithoutLoss(Operation operation) {
  const auto before = zarel_sum_memsize();
  return support::forEachFailingAllocation([&] {
    operation();
    const support::Unharmed unharmed;
    EXPECT_EQ(zarel_sum_memsize(), before);
  });
}

// Whether the links of a chain agree in both directions.
inline bool isSound(const LIS* first) {
  if (first && first->previous) return false;
  for (; first && first->next; first = first->next)
    if (first->next->previous != first) return false;
  return true;
}

// Whether a head tells what its chain is.
inline bool isSound(const LTE* head) {
  const LIS* last = nullptr;
  int count = 0;
  for (const LIS* node = head->first; node; node = node->next, ++count)
    last = node;
  return isSound(head->first) && head->last == last && head->count == count;
}

// Counts the objects that a list frees.
inline int freed = 0;
inline void countFree(void*) {
  ++freed;
}

inline int writeText(FILE* stream, const void* object) {
  return BF_fwrite_str(stream, static_cast<const char*>(object));
}

inline void* readText(FILE* stream, int* error) {
  char* result = nullptr;
  *error = BF_fread_str(stream, &result);
  return result;
}

} // namespace collections_test

#endif
