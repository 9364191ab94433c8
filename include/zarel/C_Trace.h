/**
 * @file C_Trace.h
 * The guard that records a call.
 */
#ifndef ZAREL_C_TRACE_H
#define ZAREL_C_TRACE_H

#include <zarel/C_CallStack.h>

namespace Zarel {

/**
 * Opens a frame on the calling thread's stack for as long as it lives, and a block of the time
 * manager with it. Construct it as a local variable; never keep it beyond its scope.
 *
 * The constructor copies the texts (63 and 127 bytes at most), pushes the entry, tells the time
 * manager and then calls the begin hook with the function text that it was given. The destructor
 * calls the end hook with the text of the top entry, tells the time manager and removes the
 * entry. The end hook is the one of the constructor, whatever `SetXternalTrackFuncs` sets
 * between.
 *
 * Throws `std::bad_alloc` when a stack deeper than 30 cannot grow; the frame is then not open.
 *
 * @code
 * char name[] = "C_MatMGe<T>::Factor";
 * Zarel::C_Trace frame(name, __FILE__, __LINE__, BegFunc(), EndFunc());
 * @endcode
 */
class ZAREL_API C_Trace {
public:
  C_Trace(char const* function, char const* file, int line);
  C_Trace(char const* function, char const* file, int line, void (*begin)(char*),
          void (*end)(char*));
  ~C_Trace();
  C_Trace(const C_Trace&) = delete;
  C_Trace& operator=(const C_Trace&) = delete;

private:
  void (*_end)(char*);
};

} // namespace Zarel

/** Sets the pair of hooks that functions of the library hand to their frames; null for none. */
ZAREL_API void SetXternalTrackFuncs(void (*begin)(char*), void (*end)(char*));
/** Shows the begin hook, null until one is set. */
ZAREL_API void (*BegFunc())(char*);
/** Shows the end hook, null until one is set. */
ZAREL_API void (*EndFunc())(char*);

#endif
