#include "library.h"

#include <algorithm>
#include <system_error>
#include <zarel/C_MessageTool.h>
#include <zarel/C_ZarelMessage.h>
#include <zarel/erreur.h>

namespace app::library {

namespace {

Details* details = nullptr;
FitProgress* fit = nullptr;

constexpr int outOfMemory = 1001;
constexpr int messageGoesOn = 1;

std::string oneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

} // namespace

void collect(const char* /*title*/, const char* text) {
  if (details && details->text_.empty()) details->text_ = oneLine(text);
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
