// The one kind of message that designs send.
#ifndef ZAREL_DESIGN_REPORT_H
#define ZAREL_DESIGN_REPORT_H

#include <zarel/C_BaseDesign.h>
#include <zarel/C_ZarelMessage.h>

namespace Zarel {

// Information of level 3 on all streams, in the design's scope, without a text.
class DesignMessage : public C_ZarelMessage {
public:
  DesignMessage(const C_BaseDesign& design, const char* function,
                const char* file = __builtin_FILE(), int line = __builtin_LINE())
      : C_ZarelMessage(function, file, line, E_MsgInfo, 3, design.GetDebugScope(), ALL_STREAMS) {}
};

} // namespace Zarel

#endif
