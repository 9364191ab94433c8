/**
 * @file columns.h
 * Slices of columns: how the outputs of a list are dealt to its models and collected again.
 */
#ifndef ZAREL_KRIGING_COLUMNS_H
#define ZAREL_KRIGING_COLUMNS_H

#include <algorithm>

#include <zarel/C_MatMGe.h>

namespace Zarel {

/// Makes `slice` a copy of `count` columns of `from`, from `first` on.
template <class T>
void takeColumns(C_MatMGe<T>& from, int first, int count, C_MatMGe<T>& slice) {
  slice.Resize(from.NbRow(), count);
  for (int j = 0; j < count; ++j)
    std::copy_n(from[first + j], from.NbRow(), slice[j]);
}

/// Copies all columns of `slice` into those of `to` from `first` on. The rows must agree.
template <class T>
void putColumns(C_MatMGe<T>& slice, C_MatMGe<T>& to, int first) {
  for (int j = 0; j < slice.NbCol(); ++j)
    std::copy_n(slice[j], slice.NbRow(), to[first + j]);
}

/// Copies row `i` of `from` to row `k` of `to`. The columns must agree.
template <class T>
void copyRow(C_MatMGe<T>& from, int i, C_MatMGe<T>& to, int k) {
  for (int j = 0; j < from.NbCol(); ++j)
    to(k, j) = from(i, j);
}

} // namespace Zarel

#endif
