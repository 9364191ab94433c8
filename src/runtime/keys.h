// The key of the tool that nearly all code uses.
#ifndef ZAREL_RUNTIME_KEYS_H
#define ZAREL_RUNTIME_KEYS_H

namespace Zarel {

constexpr const char* defaultKey = "DefaultMessageTool";

}

#endif
