/**
 * @file C_MessageTool.h
 * The message tool: the funnel through which everything that the library says goes.
 */
#ifndef ZAREL_C_MESSAGETOOL_H
#define ZAREL_C_MESSAGETOOL_H

#include <cstdarg>
#include <cstdio>
#include <set>
#include <string>

#include <zarel/C_MessageDatabase.h>
#include <zarel/C_ZarelBase.h>
#include <zarel/C_ZarelException.h>
#include <zarel/C_ZarelMessage.h>
#include <zarel/MessageToolEnums.h>

namespace Zarel {

/** Takes messages and progress where they shall appear. A host derives from it and installs its
 * own with `C_MessageTool::setMessageStreamCtrl`. Results: 0, anything else is a failure. */
class ZAREL_API C_MessageStreamCtrl : public virtual C_ZarelBase {
public:
  /** Takes a text for a stream; `log` is the open log file, or null. */
  virtual int AppHandleMessage(const std::string& text, E_MessageType_enum type,
                               E_MessageStream_enum stream, FILE* log) = 0;
  /** A progress opens. */
  virtual int AppOpenProgress() = 0;
  /** A progress stands at `value`. */
  virtual int AppSetProgress(const std::string& text, int value, E_MessageStream_enum stream) = 0;
  /** A progress closes. */
  virtual int AppCloseProgress() = 0;
};

/** Swallows everything. A tool whose three streams have such a controller needs no resources. */
class ZAREL_API C_DevNullCtrl : public C_MessageStreamCtrl {
public:
  ~C_DevNullCtrl() override;
  int AppHandleMessage(const std::string& text, E_MessageType_enum type,
                       E_MessageStream_enum stream, FILE* log) override;
  int AppOpenProgress() override;
  int AppSetProgress(const std::string& text, int value, E_MessageStream_enum stream) override;
  int AppCloseProgress() override;
};

/** One of the three streams of a tool. */
struct ZAREL_API C_MessageStream {
  unsigned int filter = 15;            ///< types that pass
  E_VerbosityLevel_enum level = 0;     ///< highest level that passes
  std::set<int> scopes{0};             ///< debug scopes that pass
  C_MessageStreamCtrl* ctrl = nullptr; ///< not owned; null: that of stream 0
};

/**
 * Decides for each stream whether a message passes, finds its text and hands it to the stream's
 * controller, which is the tool itself at first: it writes to the standard streams and to a log
 * file. There is one tool for each key; nearly all code uses "DefaultMessageTool".
 *
 * A message passes a stream when its type is in the filter (15 at first: all but progress), its
 * level is at most the stream's (0 at first, or the value of `ZAREL_VERBOSITY`) and its debug
 * scope is active (0 at first, and the numbers of `ZAREL_DEBUG_SCOPES`, separated by ";", in which
 * -1 and texts that are no number are allowed: -1 in that list is passed over). See
 * `docs/messages.md`.
 *
 * Literal texts work at once; numbers do after `Initialize()` succeeded. Unless told otherwise
 * operations return 0, or -1 when a step failed, and throw nothing.
 *
 * Threads: no lock anywhere; messages come from one thread at a time.
 */
class ZAREL_API C_MessageTool : public C_MessageStreamCtrl, public virtual C_ZarelBase {
public:
  /** @name Tools @{ */
  /** Shows the tool of a key and creates it if it is new; null only when memory runs out. */
  static C_MessageTool* Instance(const std::string& key);
  /** Tells whether there is a tool of that key; creates nothing. */
  static bool HasInstance(const std::string& key);
  /** The tool that was last found initialized by `Instance`, null at the start. */
  static C_MessageTool* LastInstance();
  ~C_MessageTool() override;
  C_MessageTool(const C_MessageTool&) = delete;
  C_MessageTool& operator=(const C_MessageTool&) = delete;
  /** @} */

  /** @name The tool as a controller @{ */
  int AppHandleMessage(const std::string& text, E_MessageType_enum type,
                       E_MessageStream_enum stream, FILE* log) override;
  int AppOpenProgress() override;
  int AppSetProgress(const std::string& text, int value, E_MessageStream_enum stream) override;
  int AppCloseProgress() override;
  /** Composes "<resources directory>/qx<language>.msb". */
  virtual void BuildResourcesFilename(std::string& name) const;
  /**
   * Opens the log file, if it has a name, and truncates it the first time after
   * `setLogFilename(name, false)`. When that fails the log is off from then on, a warning is sent
   * and `C_ZarelException` 29 is thrown.
   */
  virtual int openLogFile();
  /** Closes the log file if it is open. */
  virtual int closeLogFile();
  /** Composes the place and the call stack of a message, innermost frame first, into a buffer of
   * 2048 bytes; deeper stacks are cut. */
  virtual int BuildCallStackString(const C_ZarelMessage& message, char* buffer);
  /** @} */

  /** @name Messages
   * Each builds a message and hands it to the first form. @{ */
  static int HandleMessage(const C_ZarelMessage& message);
  /** Puts the texts of an exception's code and reason together and sends it. */
  static int HandleMessage(C_ZarelException& exception, E_MessageType_enum type,
                           E_VerbosityLevel_enum level);
  static int HandleMessage(const std::string& key, const std::string& text, E_MessageType_enum type,
                           E_VerbosityLevel_enum level, int scope);
  static int HandleMessage(const std::string& key, E_MessageCode_t code, E_MessageType_enum type,
                           E_VerbosityLevel_enum level);
  static int HandleMessage(const std::string& text, E_MessageType_enum type,
                           E_VerbosityLevel_enum level, int scope);
  static int HandleMessage(const char* text, E_MessageType_enum type, E_VerbosityLevel_enum level,
                           int scope);
  static int HandleMessage(E_MessageCode_t code, E_MessageType_enum type,
                           E_VerbosityLevel_enum level);
  static int HandleMessageArg(const std::string& key, const char* format, E_MessageType_enum type,
                              E_VerbosityLevel_enum level, int scope, ...);
  static int HandleMessageArg(const std::string& key, E_MessageCode_t code, E_MessageType_enum type,
                              E_VerbosityLevel_enum level, ...);
  static int HandleMessageArg(const std::string& format, E_MessageType_enum type,
                              E_VerbosityLevel_enum level, int scope, ...);
  static int HandleMessageArg(const char* format, E_MessageType_enum type,
                              E_VerbosityLevel_enum level, int scope, ...);
  static int HandleMessageArg(E_MessageCode_t code, E_MessageType_enum type,
                              E_VerbosityLevel_enum level, ...);
  static int HandleMessageInf(const std::string& text);
  static int HandleMessageInf(const char* text);
  static int HandleMessageInf(const std::string& key, E_MessageCode_t code);
  static int HandleMessageInf(E_MessageCode_t code);
  /** Formats into 1024 bytes. */
  static int HandleMessageInfArg(const char* format, ...);
  static int HandleMessageInfArg(const std::string& key, E_MessageCode_t code, ...);
  static int HandleMessageInfArg(E_MessageCode_t code, ...);
  /** Sends the call stack of a message (type 8) to each stream whose level is at least `level`. */
  static int HandleCallStack(const C_ZarelMessage& message, E_VerbosityLevel_enum level);
  /** Composes the text of a number through the tool of a key. On failure -1, and the text says
   * what is missing. */
  static int getMessage(E_MessageCode_t code, std::string& text, char** args,
                        const std::string& key);
  /** Shows a text of up to 1023 bytes in the error box (`zarel_setErrorBox`): the last resort. */
  static void SafeDisplay(const char* format, ...);
  /** @} */

  /** @name Filters
   * Setters with `ALL_STREAMS` apply to all three; other stream numbers than 0 to 3 are passed
   * over. @{ */
  void setMessageTypeFilter(unsigned int mask, E_MessageStream_enum stream);
  unsigned int getMessageTypeFilter(E_MessageStream_enum stream) const;
  /** Sets or clears the bits of a type; `E_MsgNone` sets the whole mask to 65535 or 0. */
  void ActivateMessageType(E_MessageType_enum type, bool on, E_MessageStream_enum stream);
  void setVerbosityLevel(E_VerbosityLevel_enum level, E_MessageStream_enum stream);
  E_VerbosityLevel_enum getVerbosityLevel(E_MessageStream_enum stream) const;
  /** Switches a scope on or off; -1 puts all streams back to scope 0 and `ZAREL_DEBUG_SCOPES`. */
  void ActivateDebugScope(E_DebugScope_enum scope, bool on, E_MessageStream_enum stream);
  void ActivateDebugScope(int scope, bool on, E_MessageStream_enum stream);
  /** Installs a controller, which stays its owner's; null: that of stream 0 serves. */
  void setMessageStreamCtrl(C_MessageStreamCtrl* ctrl, E_MessageStream_enum stream);
  /** Makes the tool the controller again. */
  void ResetMessageStreamCtrl(E_MessageStream_enum stream);
  bool MessageTypeActive(E_MessageType_enum type, E_MessageStream_enum stream) const;
  bool VerbosityLevelActive(E_VerbosityLevel_enum level, E_MessageStream_enum stream) const;
  bool DebugScopeActive(int scope, E_MessageStream_enum stream) const;
  /** Tells whether a message passes a stream; with `ALL_STREAMS`, whether it passes one. */
  bool MessageActive(const C_ZarelMessage& message, E_MessageStream_enum stream) const;
  /** Sets what ends each message, a blank at first. */
  void setEndMsgChar(char end);
  bool isInitialized() const;
  std::string getKey() const;
  /** @} */

  /** @name Log file @{ */
  std::string getLogFilename() const;
  /** Names the log file, empty for none. `append` false truncates it at the first message. */
  int setLogFilename(std::string name, bool append);
  /** Composes a name for a log: the base without its extension, or only its file name where its
   * directory does not exist, and then the extension, which comes with its point. */
  std::string GenerateDefaultLogFilename(const std::string& base, const std::string& extension);
  /** @} */

  /** @name Resources @{ */
  int setResourcesDir(const std::string& dir, C_MessageDatabase::E_CodeLang language);
  int setResourcesDirByEnv(const std::string& variable, C_MessageDatabase::E_CodeLang language);
  /** Names the resource file; -1 and a line on standard error if it does not exist. */
  int setResourcesFilename(const std::string& name, C_MessageDatabase::E_CodeLang language);
  /** Loads the texts. Where all controllers are `C_DevNullCtrl` nothing needs to be loaded. */
  int Initialize();
  /** @} */

  /** @name Progress
   * The filter must let `E_MsgProgress` pass, which it does not at first. @{ */
  static int OpenProgress(int max, const std::string& text);
  static int OpenProgress(int max, E_MessageCode_t code);
  static int OpenProgress(int max, const C_ZarelMessage& message);
  /** A negative value stands for the last one. */
  static int SetProgress(int value, const std::string& text, E_VerbosityLevel_enum level);
  static int SetProgress(int value, E_MessageCode_t code, E_VerbosityLevel_enum level);
  static int SetProgress(int value, const C_ZarelMessage& message);
  static int SetProgressArg(int value, const char* format, E_VerbosityLevel_enum level, ...);
  static int CloseProgress(const std::string& key);
  /** Tells whether a derived tool or the host asked for a stop. */
  static bool ProgressStopped(const std::string& key);
  /** Asks for a stop, or takes it back; `OpenProgress` takes it back, too. */
  void setProgressStopped(bool stopped) { _progressStopped = stopped; }
  /** @} */

protected:
  /** Tools are made by `Instance`; a host's own derive from this one. */
  explicit C_MessageTool(const std::string& key);

private:
  friend struct MessageToolAccess;

  void ResetDebugScopes();
  [[noreturn]] void LogFailed(int systemError);
  bool EverythingIsSwallowed();
  std::string MissingResourcesReport() const;
  int FindFallbackResources();
  int LoadDatabase();

  C_MessageStream _streams[3];
  std::string _key;
  std::string _resourcesDir;
  std::string _resourcesFile;
  std::string _resourcesVariable;
  std::string _resourcesValue;
  std::string _logName;
  FILE* _log;
  bool _append;
  bool _initialized;
  bool _progressOpen;
  bool _progressStopped;
  int _progressMax;
  int _progressValue;
  C_MessageDatabase* _database;
  C_MessageDatabase::E_CodeLang _language;
  char _end;
};

} // namespace Zarel

#endif
