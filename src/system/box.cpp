#include "system/box.h"

#include <atomic>
#include <cstdio>

namespace Zarel {

namespace {

// A system without a screen of its own has standard error where others have a modal box.
void standardErrorBox(const char* title, const char* text) {
  std::fprintf(stderr, "%s: %s\n", title, text);
}

std::atomic<ErrorBox> errorBox{standardErrorBox};

} // namespace

ErrorBox setErrorBox(ErrorBox box) {
  return errorBox.exchange(box ? box : standardErrorBox);
}

void showErrorBox(const char* title, const char* text) {
  errorBox.load()(title, text);
}

} // namespace Zarel
