/**
 * @file KrigingWorkspace.h
 * The buffers that a model keeps between fits and predictions.
 */
#ifndef ZAREL_KRIGING_KRIGINGWORKSPACE_H
#define ZAREL_KRIGING_KRIGINGWORKSPACE_H

namespace Zarel {

template <class T>
struct KrigingWorkspace {};

} // namespace Zarel

#endif
