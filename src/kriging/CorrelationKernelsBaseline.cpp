#include "kriging/CorrelationKernelsBody.h"

const Zarel::CorrelationKernelSet Zarel::correlationKernelsBaseline = kernelSet;
