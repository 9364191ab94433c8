// What the time manager, in a higher room, puts here to be told of frames.
#ifndef ZAREL_RUNTIME_TIMEHOOKS_H
#define ZAREL_RUNTIME_TIMEHOOKS_H

namespace Zarel {

struct TimeHooks {
  void (*begin)(char* name); // a block opens
  void (*end)(char* name);   // a block closes
  void (*init)(int level);   // COLLECTIMES asks for a manager
  void (*release)();         // the library ends
};

// The hooks in use, all null while there is no time manager. Constant-initialised, so a higher
// room may fill them while the library loads.
extern TimeHooks timeHooks;

} // namespace Zarel

#endif
