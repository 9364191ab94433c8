/**
 * @file C_Type.h
 * The root of every container.
 */
#ifndef ZAREL_C_TYPE_H
#define ZAREL_C_TYPE_H

#include <zarel/export.h>

/**
 * Root of vectors, storages and matrices. It gives the two enumerations and a virtual table, and
 * has no data.
 */
class ZAREL_API C_Type {
public:
  /** The scalar of a container, as `Type()` of vectors and matrices tells it. 7 is not used. */
  enum E_Type : int {
    E_TypeDouble = 1,        ///< `double`, printed as "Double"
    E_TypeFloat = 2,         ///< `float`, printed as "Float"
    E_TypeFloatComplex = 3,  ///< `std::complex<float>`, printed as "Float complex"
    E_TypeDoubleComplex = 4, ///< `std::complex<double>`, printed as "Double complex"
    E_TypeInteger = 5,       ///< `int`, printed as "Integer"
    E_TypeHyper = 6,         ///< `__int64`, printed as "Hyper"
    E_TypeShort = 8,         ///< `short int`, printed as "Short"
    E_TypeUnknown = 9        ///< `char` and untyped containers, printed as "Unknown"
  };

  /** A bit number for the flags of a matrix. The library tests none: all belong to the caller. */
  enum E_Flag : int {};

  C_Type() = default;
  C_Type(const C_Type&) = default;
  C_Type& operator=(const C_Type&) = default;
  virtual ~C_Type();
};

namespace Zarel {
using ::C_Type;
}

#endif
