#include "library.h"

#include "number.h"
#include "version.h"

#include <algorithm>
#include <string_view>
#include <sys/mman.h>
#include <system_error>
#include <vector>
#include <zarel/C_ZarelMessage.h>
#include <zarel/erreur.h>
#include <zarel/itf.h>

namespace app::library {

namespace {

Details* details = nullptr;
FitProgress* fit = nullptr;

constexpr int outOfMemory = 1001; ///< of models
constexpr int noMemory = 1;       ///< of containers and sets
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

Hushed::Hushed() : tool_(Zarel::C_MessageTool::Instance("DefaultMessageTool")) {
  if (tool_ == nullptr) return;
  filter_ = tool_->getMessageTypeFilter(Zarel::SCREEN);
  tool_->ActivateMessageType(Zarel::E_MsgError, false, Zarel::SCREEN);
  // Stacks of calls pass all filters of types.
  level_ = tool_->getVerbosityLevel(Zarel::SCREEN);
  if (level_ == 0) tool_->setVerbosityLevel(-1, Zarel::SCREEN);
}

Hushed::~Hushed() {
  if (tool_ == nullptr) return;
  tool_->setMessageTypeFilter(filter_, Zarel::SCREEN);
  tool_->setVerbosityLevel(level_, Zarel::SCREEN);
}

void takeBlasBuffer() {
  static bool taken = false;
  if (taken || blasFacts().name != "OpenBLAS") return;
  // As much as OpenBLAS 0.3.21 asks for on x86-64, elsewhere less.
  constexpr std::size_t bytes = std::size_t(128) << 20;
  void* const room =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (room == MAP_FAILED)
    throw Failure(ExitCode::failure, "out of memory: the BLAS needs 128 MiB to work in",
                  "raise the limit on memory (ulimit -v, ulimit -d)");
  munmap(room, bytes);
  char left = 'L', upper = 'U', plain = 'N', whole = 'N';
  double triangle[] = {1, 0, 0, 1}, right[] = {1, 0, 0, 1};
  ITF_dtrsm(&left, &upper, &plain, &whole, 2, 2, 1.0, triangle, 2, right, 2);
  taken = true;
}

bool isOutOfMemory(const C_ZarelException& thrown) {
  const int code = static_cast<int>(thrown.getExceptionCode());
  return code == outOfMemory || code == noMemory;
}

Failure asFailure(const C_ZarelException& thrown) {
  const int code = static_cast<int>(thrown.getExceptionCode());
  if (isOutOfMemory(thrown))
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
