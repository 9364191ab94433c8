#include "kriging/CorrelationKernelsBody.h"

const Zarel::CorrelationKernelSet Zarel::correlationKernelsAvx2 = kernelSet;
