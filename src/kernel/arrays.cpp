#include <algorithm>

#include <zarel/lm_arrays.h>

#include "kernel/arrays.h"

using namespace Zarel::kernel;

namespace {

template <class T, class F>
void each(const T* a, const T* b, T* out, int length, F f) {
  for (int i = 0; i < length; ++i)
    out[i] = f(a[i], b[i]);
}

template <class T>
void scaled(const T* a, T s, T* out, int length) {
  for (int i = 0; i < length; ++i)
    out[i] = s * a[i];
}

template <class T>
void clear(T* a, int length) {
  std::fill_n(a, std::max(length, 0), T());
}

} // namespace

void _add__(const double* a, const double* b, double* out, int length) {
  each(a, b, out, length, [](double x, double y) { return x + y; });
}
void _sub__(const double* a, const double* b, double* out, int length) {
  each(a, b, out, length, [](double x, double y) { return x - y; });
}
void _smlt__(const double* a, double s, double* out, int length) {
  scaled(a, s, out, length);
}
void _mltadd__(double* a, const double* b, double s, int length) {
  loops::multiplyAdd(a, b, s, length);
}
double _ip__(const double* a, const double* b, int length) {
  return loops::product(a, b, length);
}
void _zero__(double* a, int length) {
  clear(a, length);
}
void _izero__(int* a, int length) {
  clear(a, length);
}

void _zadd__(const ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX* out, int length) {
  each(a, b, out, length, [](ZCOMPLEX x, ZCOMPLEX y) { return x + y; });
}
void _zsub__(const ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX* out, int length) {
  each(a, b, out, length, [](ZCOMPLEX x, ZCOMPLEX y) { return x - y; });
}
void _zmlt__(const ZCOMPLEX* a, ZCOMPLEX s, ZCOMPLEX* out, int length) {
  scaled(a, s, out, length);
}
void _zmltadd__(ZCOMPLEX* a, const ZCOMPLEX* b, ZCOMPLEX s, int length, int conjugate) {
  if (conjugate)
    loops::multiplyAdd<true>(a, b, s, length);
  else
    loops::multiplyAdd(a, b, s, length);
}
ZCOMPLEX _zip__(const ZCOMPLEX* a, const ZCOMPLEX* b, int length, int conjugate) {
  return conjugate ? loops::product<true>(a, b, length) : loops::product(a, b, length);
}
void _zconj__(ZCOMPLEX* a, int length) {
  for (int i = 0; i < length; ++i)
    a[i] = conjugate(a[i]);
}
void _zzero__(ZCOMPLEX* a, int length) {
  clear(a, length);
}
