// Passes over the rows of many vectors at once.
#ifndef ZAREL_VECTORSET_ROWPANELS_H
#define ZAREL_VECTORSET_ROWPANELS_H

#include <algorithm>

#include <zarel/C_MapManager.h>

#include "vectorset/walk.h"

namespace Zarel {

/** Some of the vectors of a matrix. */
struct VectorRange {
  int first;
  int count;
};

/**
 * Cuts matrices into panels of rows when they lie in a mapped range, and has each panel read before
 * it is used. BLAS walks across the vectors; left alone, the system would find no order in that and
 * read single pages where whole pieces of a vector are wanted.
 */
class RowPanels {
public:
  /** Of vectors in memory: one panel. */
  explicit RowPanels(int rows) : rows_(rows) {}
  /** Of vectors `stride` bytes apart; the view starts with vector `first`. */
  RowPanels(int rows, std::size_t width, const C_MapPtr& view, int first, unsigned __int64 stride)
      : rows_(rows), width_(width), view_(&view), first_(first), stride_(stride) {}

  /** Calls work(row, rows) for the panels of two groups of vectors. */
  template <class Work>
  void forEach(VectorRange a, VectorRange b, Work work) const {
    const int most = panelRows(a.count + b.count);
    for (int row = 0, rows = 0; row < rows_; row += rows) {
      rows = std::min(most, rows_ - row);
      prepare(a, row, rows);
      prepare(b, row, rows);
      work(row, rows);
    }
  }

  /** Has the rows `row` to `row + rows` of some vectors read. */
  void prepare(VectorRange vectors, int row, int rows) const {
    if (view_ == nullptr) return;
    for (int j = vectors.first; j < vectors.first + vectors.count; ++j)
      view_->Advise(E_MapReadAll,
                    static_cast<unsigned __int64>(j - first_) * stride_ +
                        static_cast<unsigned __int64>(row) * width_,
                    static_cast<unsigned __int64>(rows) * width_);
  }

private:
  static constexpr unsigned __int64 leastRows = 512;

  int panelRows(int vectors) const {
    if (view_ == nullptr || vectors == 0) return std::max(rows_, 1);
    const unsigned __int64 fitting = rangeBytes / (static_cast<std::size_t>(vectors) * width_);
    const auto rows = static_cast<unsigned __int64>(std::max(rows_, 1));
    return static_cast<int>(std::min(std::max(fitting / 8 * 8, leastRows), rows));
  }

  int rows_;
  std::size_t width_ = 0;
  const C_MapPtr* view_ = nullptr;
  int first_ = 0;
  unsigned __int64 stride_ = 0;
};

} // namespace Zarel

#endif
