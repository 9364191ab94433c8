/**
 * @file C_CallStack.h
 * Entries of a call stack, the stack of a thread and the collection of all stacks.
 */
#ifndef ZAREL_C_CALLSTACK_H
#define ZAREL_C_CALLSTACK_H

#include <vector>

#include <zarel/export.h>

/** One entry of a call stack. Plain data; longer texts are cut and always end with a NUL. */
struct ZAREL_API C_Entry {
  char file[128];    ///< source file
  char function[64]; ///< function, such as "C_MatMGe<T>::Factor"
  int line;          ///< line in the file

  /** An entry with empty texts and line 0. */
  C_Entry() noexcept : line(0) { file[0] = function[0] = '\0'; }
  /** Takes the first 63 bytes of `function` and the first 127 of `file`; null counts as empty. */
  C_Entry(const char* function, const char* file, int line) noexcept;

  const char* GetFile() const { return file; }
  const char* GetFunction() const { return function; }
  int GetLine() const { return line; }
};

/** The open frames of one thread, innermost last. Copies show their own entries. */
class ZAREL_API C_CallStack {
public:
  /** An empty stack with room for 30 entries. */
  C_CallStack();
  C_CallStack(const C_CallStack& other);
  C_CallStack& operator=(const C_CallStack& other);
  ~C_CallStack();

  /** Appends an entry, which becomes the latest, and tells the time manager of its function.
   * Throws `std::bad_alloc` with the stack as it was when it cannot grow. */
  void Push(const C_Entry& entry);
  /** Tells the time manager of the last entry's end and removes that entry. An empty stack stays
   * empty; the time manager is told all the same, with an empty text. */
  void Pop();
  /** Removes all entries; says nothing to the time manager. */
  void Clear();
  /** Shows the entries, outermost first. */
  const std::vector<C_Entry>& GetStack() const { return _entries; }

  /** Shows the position behind the last entry. */
  const C_Entry* GetTop() const { return _top; }
  /** The mark that `Clear` takes away and copies carry. Nothing in the library sets it. */
  bool GetMark() const { return _mark; }
  void SetMark(bool mark) { _mark = mark; }

  /** The stack of something that has none: no entry, no block reserved. */
  struct Empty {};
  explicit C_CallStack(Empty) noexcept : _top(nullptr), _mark(false) {}

private:
  void MarkTop() { _top = _entries.data() + _entries.size(); }

  std::vector<C_Entry> _entries;
  C_Entry* _top;
  bool _mark;
};

/** Gives each thread its stack. A process has one, `GlobalCallstackCollection()`. */
class ZAREL_API C_StackCollection {
public:
  /** Reads `COLLECTIMES`: its value as a number is the level with which a time manager starts. */
  C_StackCollection();
  /** Ends the time manager. */
  ~C_StackCollection();
  C_StackCollection(const C_StackCollection&) = delete;
  C_StackCollection& operator=(const C_StackCollection&) = delete;

  /**
   * Shows the calling thread's stack and creates it on first use; null when there is no memory
   * for it. The stack ends with its thread.
   */
  C_CallStack* GetCurrentCallStack() noexcept;

private:
  bool _valid;
};

/** The process's collection, alive as long as the library. */
ZAREL_API C_StackCollection& GlobalCallstackCollection();

ZAREL_BEGIN_C
/** Opens a block of the time manager under `name`; nothing happens while there is none. */
ZAREL_API void cTimeManagerBeginBlock(char* name);
/** Closes the block `name` of the time manager; nothing happens while there is none. */
ZAREL_API void cTimeManagerEndBlock(char* name);
ZAREL_END_C

namespace Zarel {
using ::C_CallStack;
using ::C_Entry;
using ::C_StackCollection;
} // namespace Zarel

#endif
