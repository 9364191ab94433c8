/**
 * @file C_ZarelMessage.h
 * A message and what it says about itself.
 */
#ifndef ZAREL_C_ZARELMESSAGE_H
#define ZAREL_C_ZARELMESSAGE_H

#include <cstdio>
#include <string>

#include <zarel/C_CallStack.h>
#include <zarel/MessageToolEnums.h>

namespace Zarel {

/**
 * A message: a text or the number of one, with its type, level, debug scope, stream, the place
 * where it was made, and the key of the tool that shall handle it.
 *
 * All constructors begin with the function, the source file and the line of the place. What they
 * do not name has its default: key "DefaultMessageTool", number 0, level 0, scope 0, all streams,
 * no text. A message with a number and no text gets its text when it is handled. Formats are those
 * of `printf`; a formatted text is cut at 16383 bytes. Numbers with arguments take the text from
 * the message database, or "MessageDatabase failed to load id %d" where that has none.
 *
 * `char** args`, where it occurs, is the address of a `va_list`, cast; the arguments are taken
 * from a copy of it. Null means none.
 *
 * Wherever a scope is an `int`, an `E_DebugScope_enum` is welcome.
 */
class ZAREL_API C_ZarelMessage {
public:
  C_ZarelMessage(const char* function, const char* file, int line, const char* text,
                 E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                 E_MessageStream_enum stream);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 const std::string& text, E_MessageType_enum type, E_VerbosityLevel_enum level,
                 int scope, E_MessageStream_enum stream);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 E_MessageCode_t code, E_MessageType_enum type, E_VerbosityLevel_enum level,
                 int scope, E_MessageStream_enum stream);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 E_MessageType_enum type, const char* format, ...);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 E_MessageType_enum type, const std::string& text);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 E_MessageType_enum type, E_MessageCode_t code, ...);
  C_ZarelMessage(const char* function, const char* file, int line, const std::string& key,
                 E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                 E_MessageStream_enum stream);
  C_ZarelMessage(const char* function, const char* file, int line, E_MessageCode_t code,
                 E_MessageType_enum type, E_VerbosityLevel_enum level, int scope,
                 E_MessageStream_enum stream);
  C_ZarelMessage(const char* function, const char* file, int line, E_MessageType_enum type,
                 const char* format, ...);
  C_ZarelMessage(const char* function, const char* file, int line, E_MessageType_enum type,
                 const std::string& text);
  C_ZarelMessage(const char* function, const char* file, int line, E_MessageType_enum type,
                 E_MessageCode_t code, ...);
  C_ZarelMessage(const char* function, const char* file, int line, E_MessageType_enum type,
                 E_VerbosityLevel_enum level, int scope, E_MessageStream_enum stream);
  C_ZarelMessage(const C_ZarelMessage&) = default;
  C_ZarelMessage& operator=(const C_ZarelMessage&) = default;

  virtual ~C_ZarelMessage();

  /** @name Text
   * `Set` replaces the text, `Append` adds to it. With a number they store the number, too. @{ */
  virtual void Set(const char* format, char** args);
  virtual void Set(E_MessageCode_t code, char** args);
  virtual void Set(const char* format, ...);
  virtual void Set(const std::string& text);
  virtual void Set(E_MessageCode_t code, ...);
  virtual void Append(const char* format, char** args);
  virtual void Append(const char* format, ...);
  virtual void Append(const std::string& text);
  virtual void Append(E_MessageCode_t code, ...);
  /** @} */

  /** Tells whether a stream of its tool would let the message pass. */
  virtual bool IsActive();

  /** @name Sending
   * Hands the message to the hook of `SetXternalPrint`, and to its tool if there is no hook or
   * the hook does not return 0. With arguments: `Set` first. Returns 0, or -1. @{ */
  virtual int Print(const char* format, ...);
  virtual int Print(const std::string& text);
  virtual int Print(E_MessageCode_t code, ...);
  virtual int Print();
  /** @} */

  virtual void setKey(const std::string& key);
  virtual void setMessageCode(E_MessageCode_t code);
  virtual void setMessageType(E_MessageType_enum type);
  virtual void setVerbosityLevel(E_VerbosityLevel_enum level);
  virtual void setDebugScope(E_DebugScope_enum scope);
  virtual void setMessageStream(E_MessageStream_enum stream);
  virtual std::string getKey() const;
  virtual E_MessageCode_t getMessageCode() const;
  virtual E_MessageType_enum getMessageType() const;
  virtual E_VerbosityLevel_enum getVerbosityLevel() const;
  virtual E_DebugScope_enum getDebugScope() const;
  virtual E_MessageStream_enum getMessageStream() const;
  virtual std::string getMessage() const;
  /** 1 for a message that carries the call stack of its birth, 0 for all others. */
  virtual int getCallStackFlag() const;
  /** The call stack that it carries; empty for a plain message. */
  virtual const C_CallStack& getCallStack() const;
  /** Where the message was made. */
  virtual const C_Entry& getErrorLocation() const;

protected:
  /** Gives the message a copy of the calling thread's stack. Without memory for it, the message
   * goes without entries. */
  void CarryCallStack() noexcept;

private:
  std::string _key;
  E_MessageCode_t _code;
  E_MessageType_enum _type;
  E_VerbosityLevel_enum _level;
  E_DebugScope_enum _scope;
  E_MessageStream_enum _stream;
  std::string _text;
  C_CallStack _callStack;
  int _ownCallStack;
  C_Entry _location;
};

} // namespace Zarel

/**
 * Installs the hook of `C_ZarelMessage::Print`, or takes it away with null. The hook is called
 * with a pointer to an `int` that holds 1; a result of 0 means that it has dealt with the message.
 */
ZAREL_API void SetXternalPrint(int (*hook)(int*));

/** Sends a text of any length through a message, in pieces of 4096 characters, one `Print` each.
 * Returns 0, or -1 if a piece failed. */
ZAREL_API int TPrintStr(Zarel::C_ZarelMessage& message, const char* text);
/** Prints to a stream, with the text as the format: a "%" in it must be doubled. Returns what
 * `fprintf` returns. */
ZAREL_API int TPrintStr(FILE* stream, const char* text);

#endif
