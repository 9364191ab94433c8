// What the symmetric solver says about the routine's answer.
#ifndef ZAREL_CONTAINERS_SPTRSREPORT_H
#define ZAREL_CONTAINERS_SPTRSREPORT_H

namespace Zarel {

/**
 * Returns 0; for a negative `info` reports which argument was refused, as an error, and returns
 * -1. The text names getrf, whatever the routine. A positive `info` is not an error.
 */
int reportSptrs(int info);

} // namespace Zarel

#endif
