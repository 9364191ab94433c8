#include "kriging/message.h"

#include <zarel/C_ZarelMessage.h>

namespace Zarel {

int reportKriging(std::string const& text, char const* file, int line) {
  constexpr E_VerbosityLevel_enum level = 3;
  C_ZarelMessage message("KrigingList<T>::Print", file, line, text.c_str(), E_MsgInfo, level,
                         E_ScopeKriging, ALL_STREAMS);
  return message.Print();
}

} // namespace Zarel
