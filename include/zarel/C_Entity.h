/**
 * @file C_Entity.h
 * Persistent objects with a name.
 */
#ifndef ZAREL_C_ENTITY_H
#define ZAREL_C_ENTITY_H

#include <iosfwd>
#include <string>

#include <zarel/C_CbfObject.h>

/**
 * A persistent object with a name, empty by default. Copies take the name and nothing else.
 *
 * On disk a `C_Entity` is one binary string, its name: an `int` byte count and the bytes. Derived
 * classes put this head first. Neither a type tag nor a version is stored.
 */
class ZAREL_API C_Entity : public C_CbfObject {
public:
  C_Entity() = default;
  explicit C_Entity(const std::string& name);
  C_Entity(const C_Entity& other);
  C_Entity& operator=(const C_Entity& other);
  ~C_Entity() override;

  using C_CbfObject::Info;

  /** Writes the head. Returns 0, or -1 after `fct_Trace` when the primitive fails. */
  int Write(FILE* file) override;
  /** Reads the head into the name. On failure the name stays, `fct_Trace` is called, result -1. */
  int Read(FILE* file) override;
  /** Tells the text that displays the class, "C_Entity" here. */
  virtual char const* Type() const;
  /** Prints a line of 40 "=" and the line "<Type> : <name>". */
  virtual void Info(std::ostream& out);

  /** Returns a copy of the name. */
  std::string GetName() const { return _name; }
  /** Replaces the name. */
  void SetName(const std::string& name) { _name = name; }
  /** Shows the name; valid until the name changes. */
  char const* Nom() const { return _name.c_str(); }

private:
  std::string _name;
};

namespace Zarel {
using ::C_Entity;
}

#endif
