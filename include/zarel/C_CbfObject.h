/**
 * @file C_CbfObject.h
 * The persistence interface.
 */
#ifndef ZAREL_C_CBFOBJECT_H
#define ZAREL_C_CBFOBJECT_H

#include <cstdio>
#include <string>

#include <zarel/export.h>

/**
 * What can be written to a binary file and read back. It has no data. The order of the virtual
 * operations is fixed: destructor, TypeCBF, Version, VersionInt, Write, Read, Info.
 */
class ZAREL_API C_CbfObject {
public:
  C_CbfObject() = default;
  C_CbfObject(const C_CbfObject&) = default;
  C_CbfObject& operator=(const C_CbfObject&) = default;
  virtual ~C_CbfObject();

  /** Tells the type number of the class; -1 unless a class has one. */
  virtual int TypeCBF() const;
  /** Tells the version of the class's format, "1" unless a class says otherwise. */
  virtual char const* Version() const;
  /** Tells the version as a number, 1 unless a class says otherwise. */
  virtual int VersionInt() const;
  /** Writes the object at the file's position. Returns 0, or -1 on failure. */
  virtual int Write(FILE* file) = 0;
  /** Reads the object from the file's position. Returns 0, or -1 on failure. */
  virtual int Read(FILE* file) = 0;
  /** Describes the object in `text`. Here: returns 0 and leaves the text alone. */
  virtual int Info(std::string& text);

  /** Lets a routine that knows function pointers only write `object`, a `C_CbfObject*`; returns
   * what its `Write` returns. */
  static int write_function(FILE* file, void* object);
  /**
   * Lets a routine that knows function pointers only read an object. `*object` is a
   * `C_CbfObject*`; the result of its `Read` goes to `*result`. Returns the object.
   */
  static void* read_function(FILE* file, void** object, int* result);
};

namespace Zarel {
using ::C_CbfObject;
}

#endif
