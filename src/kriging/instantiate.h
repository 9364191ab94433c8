/**
 * @file instantiate.h
 * The scalars of the models, once: every source file that holds bodies of `Kriging` or
 * `KrigingList` ends with this macro.
 */
#ifndef ZAREL_KRIGING_INSTANTIATE_H
#define ZAREL_KRIGING_INSTANTIATE_H

#include <complex>

#define ZAREL_INSTANTIATE_FOR_KRIGING_SCALARS(Class)                                               \
  template class Class<double>;                                                                    \
  template class Class<std::complex<double>>;

#endif
