/**
 * @file layout.h
 * Which parts of a model its options call for.
 */
#ifndef ZAREL_KRIGING_LAYOUT_H
#define ZAREL_KRIGING_LAYOUT_H

#include <zarel/Kriging.h>

namespace Zarel {

inline bool scalesInputs(int scaling) {
  return scaling == E_ScaleInputs || scaling == E_ScaleBoth;
}

inline bool scalesOutputs(int scaling) {
  return scaling == E_ScaleOutputs || scaling == E_ScaleBoth;
}

} // namespace Zarel

#endif
