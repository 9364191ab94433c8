/**
 * @file C_ZarelBase.h
 * The root of the managers, the message classes and the vector sets.
 */
#ifndef ZAREL_C_ZARELBASE_H
#define ZAREL_C_ZARELBASE_H

#include <zarel/export.h>

namespace Zarel {

/** A virtual destructor and nothing else. */
class ZAREL_API C_ZarelBase {
public:
  C_ZarelBase() = default;
  C_ZarelBase(const C_ZarelBase&) = default;
  C_ZarelBase& operator=(const C_ZarelBase&) = default;
  virtual ~C_ZarelBase();
};

} // namespace Zarel

#endif
