// The frame of a kernel function: its status, its errors and the name under which it allocates.
#ifndef ZAREL_KERNEL_CALL_H
#define ZAREL_KERNEL_CALL_H

namespace Zarel::kernel {

// The result of a call that failed: null or 0, whatever the function gives.
struct Failed {
  template <class T>
  operator T() const { // NOLINT(google-explicit-constructor): it stands in return statements
    return T();
  }
};

// Made on entry, when it clears the global status and the caller's.
class Call {
public:
  // `tag` is the function's name behind an underscore, as allocations of its own carry it.
  Call(const char* tag, int argument, const char* text, int* status);
  Call(const char* tag, const Call& caller)
      : Call(tag, caller._argument, caller._text, caller._status) {}
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  const char* tag() const { return _tag; }
  const char* function() const { return _tag + 1; }

  // Reports an error of the table and gives the status to the caller.
  Failed fail(int number, const char* file = __builtin_FILE(), int line = __builtin_LINE()) const;
  // Leaves a trace for a failure that a callee has reported, and which set the global status.
  Failed pass(const char* file = __builtin_FILE(), int line = __builtin_LINE()) const;
  // Fails without a number: status -1 and a trace with the function's own name.
  Failed refuse(const char* file = __builtin_FILE(), int line = __builtin_LINE()) const;

private:
  const char* _tag;
  int _argument;
  const char* _text;
  int* _status;
};

// The flag of the kernel's own allocations.
int allocationFlag();

} // namespace Zarel::kernel

// First words of an exported function that takes LM_ARGS, or a status alone.
#define LM_ENTER(name) const ::Zarel::kernel::Call call("_" #name, argument, text, status)
#define LM_ENTER_STATUS(name) const ::Zarel::kernel::Call call("_" #name, 0, nullptr, status)
// Null arguments are error 8.
#define LM_NEED(condition)                                                                         \
  if (!(condition)) return call.fail(8)

#endif
