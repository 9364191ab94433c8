#include <zarel/C_ZarelException.h>

#include <cerrno>

#include "runtime/access.h"
#include "runtime/format.h"
#include "runtime/keys.h"

using namespace Zarel;

namespace {

struct ErrnoReason {
  int systemError;
  int reason;
};

constexpr ErrnoReason errnoReasons[] = {{ENXIO, 17},    {EBADF, 16},  {ENOMEM, 1},
                                        {EACCES, 2828}, {EINVAL, 18}, {ENFILE, 8},
                                        {EMFILE, 7},    {EFBIG, 9},   {ENOSPC, 5}};
constexpr int otherReason = 31;

int reasonOf(int systemError) {
  for (const ErrnoReason& row : errnoReasons)
    if (row.systemError == systemError) return row.reason;
  return otherReason;
}

} // namespace

C_ZarelException::C_ZarelException()
    : C_ZarelException("", "", 0, MessageCode::E_NoMessage, MessageCode::E_NoMessage, defaultKey) {}

C_ZarelException::C_ZarelException(const char* function, const char* file, int line,
                                   E_MessageCode_t code, E_MessageCode_t reason,
                                   const std::string& key)
    : C_ZarelException(function, file, line, static_cast<int>(code), static_cast<int>(reason),
                       key) {}

C_ZarelException::C_ZarelException(const char* function, const char* file, int line, int code,
                                   int reason, const std::string& key)
    : C_ZarelMessage(function, file, line, key, static_cast<E_MessageCode_t>(code), E_MsgError, 0,
                     0, ALL_STREAMS),
      _exceptionCode(static_cast<E_MessageCode_t>(code)),
      _reasonCode(static_cast<E_MessageCode_t>(reason)),
      _systemError(0) {
  TakeReason(_reasonCode);
  CarryCallStack();
}

C_ZarelException::~C_ZarelException() = default;

void C_ZarelException::TakeReason(E_MessageCode_t reason) {
  _reasonCode = reason;
  if (reason == MessageCode::E_ReasonInErrno) TakeReasonFromErrno();
}

void C_ZarelException::TakeReasonFromErrno() {
  _systemError = errno;
  _reasonCode = static_cast<E_MessageCode_t>(reasonOf(_systemError));
}

void C_ZarelException::setExceptionCode(E_MessageCode_t code, ...) {
  _exceptionCode = code;
  setMessageCode(code);
  ZAREL_WITH_ARGS(code, _exceptionMessage =
                            MessageToolAccess::lookUpOrFailure(getKey(), code, cursorOn(&args)));
}

void C_ZarelException::setExceptionCode(E_MessageCode_t code, E_MessageCode_t reason) {
  _exceptionCode = code;
  TakeReason(reason);
}

void C_ZarelException::setReasonCode(E_MessageCode_t reason) {
  TakeReason(reason);
}

void C_ZarelException::setReason(const char* format, ...) {
  ZAREL_WITH_ARGS(format, _reasonMessage = formatted1024(format, args));
}

void C_ZarelException::setReason(E_MessageCode_t reason, ...) {
  TakeReason(reason);
  if (reason == MessageCode::E_ReasonInErrno) return;
  ZAREL_WITH_ARGS(reason, _reasonMessage = MessageToolAccess::lookUpOrFailure(getKey(), reason,
                                                                              cursorOn(&args)));
}

E_MessageCode_t C_ZarelException::getExceptionCode() const {
  return _exceptionCode;
}
E_MessageCode_t C_ZarelException::getReasonCode() const {
  return _reasonCode;
}
std::string C_ZarelException::getReasonMessage() const {
  return _reasonMessage;
}
std::string C_ZarelException::getExceptionMessage() const {
  return _exceptionMessage;
}
int C_ZarelException::getErrno() const {
  return _systemError;
}
