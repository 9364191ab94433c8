// Transposition of a rectangular array in place.
#ifndef ZAREL_CONTAINERS_TRANSPOSE_H
#define ZAREL_CONTAINERS_TRANSPOSE_H

namespace Zarel {

/**
 * Moves the values of a (columns x rows, by columns) to where they stand as (rows x columns), by
 * following the cycles of the permutation.
 *
 * The value that belongs at position p = i + j rows stands at source(p). A cycle and its mirror
 * (p to last - p) move together. `moved` remembers the first positions, so that the start of the
 * next cycle is mostly a look-up; beyond them a start is one whose cycle meets nothing smaller.
 */
template <class T>
class CycleTransposition {
public:
  CycleTransposition(T* values, int rows, int columns, int* moved, int remembered)
      : values_(values),
        rows_(rows),
        columns_(columns),
        moved_(moved),
        remembered_(remembered),
        last_(rows_ * columns_ - 1) {}

  /** Needs at least 2 rows and 2 columns, and `moved` cleared. */
  void run() {
    markFixedPoints();
    for (long long start = 1; done_ <= last_; ++start)
      if (isStart(start)) moveCycle(start);
  }

private:
  long long source(long long p) const { return p * columns_ - (p / rows_) * last_; }

  void mark(long long p) {
    if (p <= remembered_) moved_[p - 1] = 1;
  }

  /** The first and the last value never move, nor do those that the formula finds. */
  void markFixedPoints() {
    done_ = 2;
    for (long long i = 1; i <= columns_ - 2; ++i) {
      const long long product = (rows_ - 1) * i;
      if (product % (columns_ - 1) != 0) continue;
      ++done_;
      mark(i * rows_ + product / (columns_ - 1));
    }
  }

  bool isStart(long long start) const {
    if (start <= remembered_) return moved_[start - 1] == 0;
    long long p = source(start);
    if (p == start) return false;
    while (p > start && p <= last_ - start)
      p = source(p);
    return p == start;
  }

  void moveCycle(long long start) {
    const long long mirror = last_ - start;
    const T first = values_[start];
    const T second = values_[mirror];
    for (long long p = start;;) {
      const long long from = source(p);
      mark(p);
      mark(last_ - p);
      done_ += 2;
      if (from == start || from == mirror) {
        values_[p] = from == start ? first : second;
        values_[last_ - p] = from == start ? second : first;
        return;
      }
      values_[p] = values_[from];
      values_[last_ - p] = values_[last_ - from];
      p = from;
    }
  }

  T* values_;
  long long rows_;
  long long columns_;
  int* moved_;
  long long remembered_;
  long long last_;
  long long done_ = 0;
};

} // namespace Zarel

#endif
