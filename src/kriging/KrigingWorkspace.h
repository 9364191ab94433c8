/**
 * @file KrigingWorkspace.h
 * What one fit keeps between its trials.
 */
#ifndef ZAREL_KRIGING_KRIGINGWORKSPACE_H
#define ZAREL_KRIGING_KRIGINGWORKSPACE_H

#include <memory>

#include <zarel/C_MatMGe.h>
#include <zarel/C_MatMSym.h>
#include <zarel/C_VecPi.h>

#include "kriging/CorrelationFactor.h"
#include "kriging/dense.h"

namespace Zarel {

/**
 * Scaled samples and regression terms do not depend on the kernel, so they are computed once a fit;
 * the buffers are kept from trial to trial because the first touch of fresh pages is expensive.
 */
template <class T>
struct KrigingWorkspace {
  bool samplesReady = false;
  C_MatMGe<T> inputs;  ///< scaled, m x n
  C_MatMGe<T> outputs; ///< scaled, m x q

  bool trendReady = false;
  int numTerms = 0;  ///< p
  C_MatMGe<T> trend; ///< m x p

  CorrelationFactor factor;
  C_MatMGe<T> whitened;     ///< C^-1 [F Y], m x (p + q); its last q columns become the residual
  C_MatMGe<T> leastSquares; ///< the copy that the least squares destroys
  C_VecPi<T, int, C_PtrInCore<T, int>> gelsWork;
  LongBuffer planes; ///< real and imaginary parts, for complex T
};

/** Lets one fit have a workspace, and frees it when the outermost user of it is done. */
template <class T>
class WorkspaceScope {
public:
  using Owner = std::unique_ptr<KrigingWorkspace<T>>;

  explicit WorkspaceScope(Owner& owner_) : owner(owner_), outermost(!owner_) {
    if (outermost) owner = std::make_unique<KrigingWorkspace<T>>();
  }
  ~WorkspaceScope() {
    if (outermost) owner.reset();
  }
  WorkspaceScope(const WorkspaceScope&) = delete;
  WorkspaceScope& operator=(const WorkspaceScope&) = delete;

private:
  Owner& owner;
  const bool outermost;
};

/** State of the pattern search over the kernel multipliers. */
struct KernSearch {
  C_MatMGe<double> bounds;                                ///< column 0 lower, column 1 upper
  C_VecPi<double, int, C_PtrInCore<double, int>> factors; ///< step factors D
  double best = 0.0;                                      ///< smallest criterion so far
};

} // namespace Zarel

#endif
