// The order of the words on a stream.
#ifndef ZAREL_BINARY_EXCEPTIONS_H
#define ZAREL_BINARY_EXCEPTIONS_H

#include <cstdio>

namespace Zarel {

// Whether the words on a stream are in the host's order.
bool isHostOrdered(FILE* file);

} // namespace Zarel

#endif
