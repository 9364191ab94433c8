#include "library.h"

#include "number.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <vector>
#include <zarel/C_MessageTool.h>
#include <zarel/C_ZarelMessage.h>
#include <zarel/erreur.h>

namespace app::library {

namespace {

Details* details = nullptr;
FitProgress* fit = nullptr;

constexpr int outOfMemory = 1001;
constexpr int messageGoesOn = 1;

/** "fct_Trace( label, LINE, FILE)" at the end of a text as "FILE line LINE". */
std::string tracedPlace(const std::string& text) {
  const auto open = text.rfind('(');
  const auto close = text.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return "";
  std::vector<std::string> parts;
  forEachPart(std::string_view(text).substr(open + 1, close - open - 1), ',',
              [&parts](std::string_view part) { parts.emplace_back(part); });
  if (parts.size() != 3) return "";
  while (parts[2].compare(0, 3, "../") == 0)
    parts[2].erase(0, 3);
  return parts[2] + " line " + parts[1];
}

} // namespace

void collect(const char* /*title*/, const char* text) {
  if (details && details->text_.empty()) details->text_ = tracedPlace(text);
}

int countMessage(int* /*code*/) {
  if (fit) fit->progress_.update(++fit->trials_);
  return messageGoesOn;
}

void install() {
  zarel_setErrorBox(collect);
  SetXternalPrint(countMessage);
  if (auto* tool = Zarel::C_MessageTool::Instance("DefaultMessageTool")) tool->setEndMsgChar('\n');
}

Details::Details() : former_(details) {
  details = this;
}

Details::~Details() {
  details = former_;
}

Failure asFailure(const C_ZarelException& thrown) {
  const int code = static_cast<int>(thrown.getExceptionCode());
  if (code == outOfMemory)
    return {ExitCode::failure, "out of memory", "fit fewer samples or fewer outputs at a time"};
  std::string text = "the library failed with code " + std::to_string(code);
  if (const int reason = static_cast<int>(thrown.getReasonCode()); reason != 0)
    text += ", reason " + std::to_string(reason);
  if (thrown.getErrno() != 0)
    text += " (" + std::generic_category().message(thrown.getErrno()) + ")";
  return {ExitCode::failure, text};
}

double expectedTrials(int multipliers) {
  // A pass tries each multiplier up to twice and then moves; a last fit follows the search.
  const double passes = multipliers < 2 ? 2 : std::min(multipliers, 4);
  return 2 + passes * (2.0 * multipliers + 1);
}

FitProgress::FitProgress(Console& console, const std::string& what, Kriging<double>& model)
    : progress_(console, what, 1), former_(fit) {
  int multipliers = 0;
  int optimise = 0;
  model.GetNumKern(multipliers);
  model.GetKrigingKernOptType(optimise);
  if (optimise != 0) progress_.setTotal(expectedTrials(multipliers));
  fit = this;
}

FitProgress::~FitProgress() {
  fit = former_;
}

} // namespace app::library
