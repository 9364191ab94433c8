#include "kriging/fitReport.h"

#include <cstdio>
#include <string>

#include "kriging/message.h"

namespace Zarel {
namespace {

/** The text of a number as printf's "%lf" gives it. */
std::string fixed(double value) {
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, "%lf", value)) + 1, '\0');
  std::snprintf(&text[0], text.size(), "%lf", value);
  text.pop_back();
  return text;
}

} // namespace

void reportKernel(C_VecPi<double, int, C_PtrInCore<double, int>>& kernel, double criterion) {
  std::string text = "   Kernel : ";
  for (int i = 0; i < kernel.Dim(); ++i)
    text += fixed(kernel[i]) + " ";
  reportKriging(text + " -> " + fixed(criterion));
}

} // namespace Zarel
