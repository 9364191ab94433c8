// Words that the steps of a vector set share.
#ifndef ZAREL_VECTORSET_STEPS_H
#define ZAREL_VECTORSET_STEPS_H

#include <new>

#include <zarel/C_Trace.h>
#include <zarel/C_ZarelException.h>

#include "runtime/fail.h"

namespace Zarel {

// What can go wrong with a set, by the number of its text.
constexpr int NoMemory = 1;
constexpr int BadCoreMode = 3;
constexpr int NoFileName = 4;
constexpr int NotValid = 11;
constexpr int OutOfRange = 12;
constexpr int NotMapped = 13;
constexpr int NotUnmapped = 14;
constexpr int FileNotOpened = 19;
constexpr int FileSizeNotSet = 24;
constexpr int FileNotClosed = 27;
constexpr int NoVectorMemory = 1001;
constexpr int Dependent = 2866;
constexpr int NotOwner = 2870;
constexpr int NotForScalar = 2871;
constexpr int WrongLength = 2872;
constexpr int ListNotReleased = 14014;

constexpr int reasonInErrno = 100;

/** Runs a step; whatever way memory ran out in it, that is told as (1, 0). */
template <class Step>
auto withMemory(Step step) -> decltype(step()) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    fail(NoMemory);
  } catch (const C_ZarelException& e) {
    if (e.getExceptionCode() != NoVectorMemory) throw;
    fail(NoMemory);
  }
}

/** Gives a vector or a matrix its size. */
template <class Object, class... Sizes>
void resize(Object& object, Sizes... sizes) {
  withMemory([&] { object.Resize(sizes...); });
}

/** Gives a vector its size, all zeros. */
template <class Vector>
void clearTo(Vector& v, int size) {
  resize(v, size);
  v.Zero(0, -1);
}

/** Makes `to` a copy of another vector. */
template <class To, class From>
void copyTo(To& to, From& from) {
  withMemory([&] { to.Copy(from); });
}

inline void clear(int* err) {
  if (err != nullptr) *err = 0;
}

} // namespace Zarel

/** Opens the frame of a step for the rest of the block. */
#define ZAREL_STEP(name)                                                                           \
  const Zarel::C_Trace frame("C_VSTRUCT<T>::" name, __FILE__, __LINE__, BegFunc(), EndFunc())

#endif
