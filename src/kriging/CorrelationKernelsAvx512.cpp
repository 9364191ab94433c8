#include "kriging/CorrelationKernelsBody.h"

const Zarel::CorrelationKernelSet Zarel::correlationKernelsAvx512 = kernelSet;
