/**
 * @file C_Singleton.h
 * One instance of a class for each process.
 */
#ifndef ZAREL_C_SINGLETON_H
#define ZAREL_C_SINGLETON_H

#include <zarel/export.h>

/**
 * Base of a class `X` of which a process has one instance or none.
 *
 * `X` derives from `C_Singleton<X>`, keeps its constructors away from others and names
 * `C_Singleton<X>` its friend. The instance lives from the first `getInstance` to `Kill`; after
 * that the next `getInstance` builds a fresh one.
 *
 * Threads: no lock is taken. Create the instance from one thread before parallel work starts.
 */
template <class X>
class ZAREL_API C_Singleton {
public:
  /** Shows the instance, null while there is none; never creates one. */
  static X* Instance() { return _singleton; }

  /** Shows the instance and creates it with `new` on first use. Throws what `X` throws. */
  static X* getInstance() {
    if (!_singleton) _singleton = new X;
    return _singleton;
  }

  /** Tells whether there is an instance. */
  static bool IsInstanced() { return _singleton != nullptr; }

  /** Deletes the instance if there is one; may be called repeatedly. */
  static void Kill() {
    delete _singleton;
    _singleton = nullptr;
  }

  C_Singleton(const C_Singleton&) = delete;
  C_Singleton& operator=(const C_Singleton&) = delete;

protected:
  C_Singleton() = default;
  virtual ~C_Singleton() = default;

  /** Makes `instance`, from `new`, the one instance: for an `X` of which a host may derive. Kill
   * the former one before. */
  static void Adopt(X* instance) { _singleton = instance; }

private:
  static X* _singleton;
};

template <class X>
X* C_Singleton<X>::_singleton = nullptr;

namespace Zarel {
using ::C_Singleton;
}

#endif
