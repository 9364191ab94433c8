/**
 * @file message.h
 * The one kind of message that models and lists send.
 */
#ifndef ZAREL_KRIGING_MESSAGE_H
#define ZAREL_KRIGING_MESSAGE_H

#include <string>

namespace Zarel {

/// Sends a text as information of level 3 and debug scope 502 to all streams, under the label of
/// `KrigingList<T>::Print` wherever it comes from. @return 0, or what handling it returned.
int reportKriging(std::string const& text, char const* file = __builtin_FILE(),
                  int line = __builtin_LINE());

} // namespace Zarel

#endif
