/**
 * @file C_MessageDatabase.h
 * Message texts by number.
 */
#ifndef ZAREL_C_MESSAGEDATABASE_H
#define ZAREL_C_MESSAGEDATABASE_H

#include <string>

#include <zarel/C_ZarelBase.h>

namespace Zarel {

/**
 * The message texts of a language, read from a resource file. Belongs to one message tool.
 *
 * Reading resource files is not provided yet: `LoadFile` of a valid file name throws 103, "load
 * failed", and no number has a text.
 */
class ZAREL_API C_MessageDatabase : public C_ZarelBase {
public:
  /** A plain language number; 0 is the language that others fall back to. */
  typedef int E_CodeLang;

  C_MessageDatabase();
  ~C_MessageDatabase() override;
  C_MessageDatabase(const C_MessageDatabase&) = delete;
  C_MessageDatabase& operator=(const C_MessageDatabase&) = delete;

  /** Loads the texts of a language. Returns 0; throws 102 when `name` is no regular file and 103
   * when it cannot be read. */
  int LoadFile(const std::string& name, E_CodeLang language);

  /** Composes the text of a number. `args` is the address of a `va_list`, cast, or null for none.
   * Returns 0; throws 104 for a number that has no text. */
  int GetMessage(std::string& text, int id, char** args);
  /** The same with the arguments given directly. */
  int GetMessage(std::string& text, int id, ...);

  /** Tells whether a path can be examined and is a regular file. */
  static bool _isValidFileName(const std::string& name);

private:
  E_CodeLang _language;
  std::string _fileName;
};

} // namespace Zarel

#endif
