// The `_vars` forms: a list of addresses of pointers, ended by a null one.
#ifndef ZAREL_KERNEL_LISTS_H
#define ZAREL_KERNEL_LISTS_H

#include <cstdarg>

// The body of a form that sets each pointer to what `expression` makes of `entry`; counts them.
#define LM_FOR_LIST(Record, first, expression)                                                     \
  va_list list;                                                                                    \
  va_start(list, first);                                                                           \
  int made = 0;                                                                                    \
  for (Record** entry = first; entry && made >= 0; entry = va_arg(list, Record**)) {               \
    Record* const object = expression;                                                             \
    if (object) *entry = object;                                                                   \
    made = object ? made + 1 : -1;                                                                 \
  }                                                                                                \
  va_end(list);                                                                                    \
  return made;

// The body of a form that releases each object and clears its pointer; counts the objects.
#define LM_FREE_LIST(Record, first, release)                                                       \
  va_list list;                                                                                    \
  va_start(list, first);                                                                           \
  int freed = 0;                                                                                   \
  for (Record** entry = first; entry; entry = va_arg(list, Record**)) {                            \
    if (release(*entry) == 0) ++freed;                                                             \
    *entry = nullptr;                                                                              \
  }                                                                                                \
  va_end(list);                                                                                    \
  return freed;

#endif
