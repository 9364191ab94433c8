/**
 * @file C_Counter.h
 * How many objects of a class were made, and how many there are.
 */
#ifndef ZAREL_C_COUNTER_H
#define ZAREL_C_COUNTER_H

#include <zarel/export.h>

/**
 * Counts the objects of class `X`, which inherits from `C_Counter<X>`.
 *
 * | event                | `objects_created` | `objects_alive` |
 * |----------------------|-------------------|-----------------|
 * | default construction | +1                | +1              |
 * | copy construction    | unchanged         | unchanged       |
 * | destruction          | unchanged         | -1              |
 *
 * A copy is not counted when it is made but is uncounted at its end, so `objects_alive` may fall
 * below the true number and below zero. Hosts compare these figures between releases: the
 * asymmetry stays. The counters steer nothing.
 *
 * Threads: plain integers without a lock, so only approximate under concurrent use.
 */
template <class X>
class ZAREL_API C_Counter {
public:
  static int objects_created; ///< default constructions so far
  static int objects_alive;   ///< default constructions less destructions

  C_Counter() noexcept {
    ++objects_created;
    ++objects_alive;
  }
  C_Counter(const C_Counter&) noexcept {}
  C_Counter& operator=(const C_Counter&) noexcept { return *this; }
  virtual ~C_Counter() { --objects_alive; }
};

template <class X>
int C_Counter<X>::objects_created = 0;
template <class X>
int C_Counter<X>::objects_alive = 0;

namespace Zarel {
using ::C_Counter;
}

#endif
