/**
 * @file MessageToolEnums.h
 * Numbers of the message classes.
 */
#ifndef ZAREL_MESSAGETOOLENUMS_H
#define ZAREL_MESSAGETOOLENUMS_H

namespace Zarel {

namespace MessageToolEnums {

/** The kind of a message, a bit of a filter mask. */
enum E_MessageType_enum : int {
  E_MsgInfo = 1,      ///< standard output, "%s%c"
  E_MsgError = 2,     ///< standard error, "*** %s%c"
  E_MsgWarning = 4,   ///< standard error, "*** Warning: %s%c"
  E_MsgCallStack = 8, ///< standard error, "%s%c"
  E_MsgProgress = 16, ///< standard output, "%s%c"
  E_MsgNone = 65535   ///< goes nowhere: such a message is never active
};

/** Where a message goes. `ALL_STREAMS` means all three in setters and messages; in a getter it
 * yields 0 or false. */
enum E_MessageStream_enum : int { SCREEN = 0, LOG = 1, LOG_RECORD = 2, ALL_STREAMS = 3 };

/** A plain number: a message of level L passes a stream of level V when L <= V. Ordinary messages
 * and new streams have 0; at 5 a stream shows what it is given on standard output as well. */
typedef int E_VerbosityLevel_enum;

/** A number that names a part of the program. 0 is no particular part, always on at first; -1
 * resets the scopes. Any number may be used. */
enum E_DebugScope_enum : int {
  E_ScopeReset = -1,
  E_ScopeNone = 0,
  E_ScopePower = 306,
  E_ScopeSvd = 451,
  E_ScopeDesign = 452,
  E_ScopeKriging = 502
};

} // namespace MessageToolEnums

namespace MessageCode {

/** The number of a message text; 0 is no number. Any number may be used. */
enum E_MessageCode_t : int { E_NoMessage = 0, E_ReasonInErrno = 100 };

} // namespace MessageCode

using namespace MessageToolEnums;
using MessageCode::E_MessageCode_t;

} // namespace Zarel

using Zarel::MessageCode::E_MessageCode_t;

#endif
