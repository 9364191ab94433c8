// The functions of zarelsys.h that give new texts.
#include <zarel/zarelsys.h>

#include <cstring>
#include <cwchar>
#include <exception>
#include <new>

#include <zarel/zarelmem.h>

#include "system/descriptor.h"
#include "system/text.h"

namespace {

// A new text of `length` characters from `text`, which has a NUL behind them.
template <class Char>
Char* newText(const Char* text, size_t length, const char* label) {
  const size_t bytes = (length + 1) * sizeof(Char);
  void* const block = zarelmem_malloc(bytes, label, 1, __FILE__, __LINE__);
  return block ? static_cast<Char*>(std::memcpy(block, text, bytes)) : nullptr;
}

// The text that `make` makes, as a new one; null if there is no memory for either.
template <class Make>
auto newTextOf(Make make, const char* label) noexcept
    -> decltype(newText(make().c_str(), size_t{}, label)) {
  try {
    const auto text = make();
    return newText(text.c_str(), text.size(), label);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

std::string narrowOrEmpty(const wchar_t* text) {
  return text ? Zarel::toUtf8(text) : std::string();
}

std::string unusedTemporaryPath(const wchar_t* directory, const wchar_t* prefix) {
  const std::string chosen = Zarel::temporaryDirectory(narrowOrEmpty(directory));
  return chosen.empty() ? chosen : Zarel::unusedPath(chosen, narrowOrEmpty(prefix));
}

} // namespace

wchar_t* zarel_char2Tchar(const char* text) {
  if (!text) return nullptr;
  return newTextOf([=] { return Zarel::toWide(text); }, "zarel_char2Tchar");
}

char* zarel_Tchar2char(const wchar_t* text) {
  if (!text) return nullptr;
  return newTextOf([=] { return Zarel::toUtf8(text); }, "zarel_Tchar2char");
}

char* zarel_strdup(const char* text, const char* label) {
  return text ? newText(text, std::strlen(text), label) : nullptr;
}

wchar_t* zarel_tempnam(const wchar_t* directory, const wchar_t* prefix) {
  try {
    const std::string path = unusedTemporaryPath(directory, prefix);
    return path.empty() ? nullptr : zarel_char2Tchar(path.c_str());
  } catch (const std::exception&) { // no memory, or no source of random numbers
    return nullptr;
  }
}
