/**
 * @file C_ZarelException.h
 * The one exception class.
 */
#ifndef ZAREL_C_ZARELEXCEPTION_H
#define ZAREL_C_ZARELEXCEPTION_H

#include <string>

#include <zarel/C_ZarelMessage.h>

/**
 * What failed (the exception code) and why (the reason code), as a message that carries the call
 * stack of its birth. Thrown by value, caught by reference.
 *
 * Code and reason are numbers of message texts. A reason of 100 means that the reason lies in
 * `errno`: it is stored (`getErrno`) and mapped at once, so `getReasonCode` never answers 100.
 *
 * | `errno`        | reason |   | `errno`     | reason |
 * |----------------|--------|---|-------------|--------|
 * | `ENXIO` (6)    | 17     |   | `ENFILE` (23) | 8    |
 * | `EBADF` (9)    | 16     |   | `EMFILE` (24) | 7    |
 * | `ENOMEM` (12)  | 1      |   | `EFBIG` (27)  | 9    |
 * | `EACCES` (13)  | 2828   |   | `ENOSPC` (28) | 5    |
 * | `EINVAL` (22)  | 18     |   | any other     | 31   |
 *
 * By convention a throwing site gives "Throwing" as the function, its own source path and line,
 * and the key "DefaultMessageTool".
 */
class ZAREL_API C_ZarelException : public Zarel::C_ZarelMessage {
public:
  C_ZarelException();
  C_ZarelException(const char* function, const char* file, int line, E_MessageCode_t code,
                   E_MessageCode_t reason, const std::string& key);
  /** The same, with the numbers as they are. */
  C_ZarelException(const char* function, const char* file, int line, int code, int reason,
                   const std::string& key);
  C_ZarelException(const C_ZarelException&) = default;
  C_ZarelException& operator=(const C_ZarelException&) = default;
  ~C_ZarelException() override;

  /** Sets what failed and takes its text from the message database with the arguments, or
   * "MessageDatabase failed to load id %d". */
  virtual void setExceptionCode(E_MessageCode_t code, ...);
  /** Sets what failed and why; texts stay. */
  virtual void setExceptionCode(E_MessageCode_t code, E_MessageCode_t reason);
  /** Sets why. */
  virtual void setReasonCode(E_MessageCode_t reason);
  /** Sets the text of why, formatted, cut at 1023 bytes. */
  virtual void setReason(const char* format, ...);
  /** Sets why and, but for 100, its text from the message database as `setExceptionCode`. */
  virtual void setReason(E_MessageCode_t reason, ...);
  virtual E_MessageCode_t getExceptionCode() const;
  virtual E_MessageCode_t getReasonCode() const;
  virtual std::string getReasonMessage() const;
  virtual std::string getExceptionMessage() const;
  /** The `errno` of the moment at which a reason of 100 was mapped, else 0. */
  virtual int getErrno() const;

private:
  void TakeReason(E_MessageCode_t reason);
  void TakeReasonFromErrno();

  E_MessageCode_t _exceptionCode;
  E_MessageCode_t _reasonCode;
  std::string _exceptionMessage;
  std::string _reasonMessage;
  int _systemError;
};

namespace Zarel {
using ::C_ZarelException;
}

#endif
