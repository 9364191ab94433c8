#include "support/FailingCall.h"

#include "system/calls.h"

namespace support {

namespace {

Zarel::SystemCalls real;
std::string chosen; // the entry that counts, all if empty
std::string victim;
long left = 0;
long counted = 0;
int errorToGive = 0;

bool fails(const char* name) {
  if (!chosen.empty() && chosen != name) return false;
  ++counted;
  if (left <= 0 || --left > 0) return false;
  victim = name;
  return true;
}

template <class R>
R failure() {
  if constexpr (std::is_pointer_v<R>)
    return reinterpret_cast<R>(-1); // MAP_FAILED
  else
    return static_cast<R>(-1);
}

template <auto entry, class Pointer>
struct Counted;

template <auto entry, class R, class... Arguments>
struct Counted<entry, R (*Zarel::SystemCalls::*)(Arguments...)> {
  static const char* name;
  static bool ends; // the call takes effect even when it reports a failure

  static R call(Arguments... arguments) {
    if (!fails(name)) return (real.*entry)(arguments...);
    if (ends) (real.*entry)(arguments...);
    errno = errorToGive;
    return failure<R>();
  }
  static void replace(const char* itsName, bool itsEnds) {
    name = itsName;
    ends = itsEnds;
    Zarel::systemCalls().*entry = call;
  }
};
template <auto entry, class R, class... Arguments>
const char* Counted<entry, R (*Zarel::SystemCalls::*)(Arguments...)>::name = "";
template <auto entry, class R, class... Arguments>
bool Counted<entry, R (*Zarel::SystemCalls::*)(Arguments...)>::ends = false;

template <auto entry>
void replace(const char* name, bool ends = false) {
  Counted<entry, decltype(entry)>::replace(name, ends);
}

#define REPLACE(name) replace<&Zarel::SystemCalls::name>(#name)

void replaceAll() {
  REPLACE(open);
  REPLACE(read);
  REPLACE(write);
  REPLACE(lseek);
  replace<&Zarel::SystemCalls::close>("close", true);
  REPLACE(pread);
  REPLACE(pwrite);
  REPLACE(fsync);
  REPLACE(fstat);
  REPLACE(ftruncate);
  REPLACE(fallocate);
  REPLACE(unlink);
  REPLACE(accessMode);
  REPLACE(duplicate);
  REPLACE(mmap);
  REPLACE(munmap);
  REPLACE(madvise);
  REPLACE(msync);
  REPLACE(stat);
  REPLACE(access);
  REPLACE(rename);
  static_assert(sizeof(Zarel::SystemCalls) == 21 * sizeof(void (*)()), "no entry is left out");
}

} // namespace

FailingCall::FailingCall(long n, const char* name, int error) {
  real = Zarel::systemCalls();
  chosen = name ? name : "";
  victim.clear();
  left = n;
  counted = 0;
  errorToGive = error;
  replaceAll();
}

FailingCall::~FailingCall() {
  Zarel::systemCalls() = real;
}

bool FailingCall::happened() {
  return !victim.empty();
}
std::string FailingCall::failed() {
  return victim;
}
long FailingCall::count() {
  return counted;
}

} // namespace support
