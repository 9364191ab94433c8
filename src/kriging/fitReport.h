/**
 * @file fitReport.h
 * What a fit says of itself.
 */
#ifndef ZAREL_KRIGING_FIT_REPORT_H
#define ZAREL_KRIGING_FIT_REPORT_H

#include <zarel/C_VecPi.h>

namespace Zarel {

/** Sends the line of one trial: its kernel multipliers and its criterion. */
void reportKernel(C_VecPi<double, int, C_PtrInCore<double, int>>& kernel, double criterion);

} // namespace Zarel

#endif
