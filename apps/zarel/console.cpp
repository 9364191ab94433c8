#include "console.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace app {

namespace {

bool wantsColour() {
  const char* noColour = std::getenv("NO_COLOR");
  const char* term = std::getenv("TERM");
  return !(noColour && *noColour) && !(term && std::string_view(term) == "dumb");
}

void put(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

/** Names and fields come from files: what would steer a terminal, or break a line, is shown as ?.
 */
std::string printable(std::string_view text) {
  std::string out(text);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const auto byte = static_cast<unsigned char>(out[i]);
    if ((byte < 0x20 && byte != '\t') || byte == 0x7F) out[i] = '?';
    // The other control characters, U+0080 to U+009F in UTF-8.
    if (i > 0 && out[i - 1] == '\xC2' && byte >= 0x80 && byte < 0xA0) out[i - 1] = out[i] = '?';
  }
  return out;
}

constexpr auto drawInterval = std::chrono::milliseconds(100);
constexpr int barWidth = 24;

} // namespace

Console::Console() : terminal_(isatty(STDERR_FILENO) == 1), colour_(terminal_ && wantsColour()) {}

void Console::clearBar() {
  if (!barShown_) return;
  put("\r\033[K");
  barShown_ = false;
}

void Console::line(std::string_view label, const char* colour, std::string_view text,
                   std::string_view hint) {
  clearBar();
  std::string out;
  if (!label.empty()) {
    out += "zarel: ";
    if (colour_) out += colour;
    out += label;
    if (colour_) out += "\033[0m";
  }
  out += printable(text) + '\n';
  if (!hint.empty()) out += "       " + printable(hint) + '\n';
  put(out);
}

void Console::note(std::string_view text) {
  if (!quiet_) line("", "", text, "");
}

void Console::warn(std::string_view text, std::string_view hint) {
  line("warning: ", "\033[33m", text, hint);
}

void Console::error(const Failure& failure) {
  line("error: ", "\033[31m", failure.text(), failure.hint);
}

Progress::Progress(Console& console, std::string what, double total)
    : console_(console),
      what_(std::move(what)),
      total_(total),
      start_(Clock::now()),
      next_(start_ + drawInterval) {}

void Progress::update(double done) {
  if (!console_.animated()) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + drawInterval;
  draw(done, now);
}

void Progress::draw(double done, Clock::time_point now) {
  std::string out = "\r\033[K" + printable(what_);
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  if (total_ > 0) {
    const double share = std::clamp(done / total_, 0.0, 1.0);
    const int full = static_cast<int>(share * barWidth);
    out += " [" + std::string(full, '#') + std::string(barWidth - full, '.') + "] ";
    out += std::to_string(static_cast<int>(100 * share)) + " %";
    if (share > 0.01 && elapsed > 0.5)
      out += ", " + duration(elapsed * (1 - share) / share) + " left";
  } else {
    out += ", " + duration(elapsed);
  }
  put(out);
  std::fflush(stderr);
  console_.barShown_ = true;
}

void Progress::finish() {
  console_.clearBar();
}

std::string duration(double seconds) {
  char out[64];
  if (seconds < 0.995) {
    std::snprintf(out, sizeof out, "%.2f s", seconds);
  } else if (seconds < 60) {
    std::snprintf(out, sizeof out, "%.1f s", seconds);
  } else if (seconds < 3600) {
    const int whole = static_cast<int>(std::lround(seconds));
    std::snprintf(out, sizeof out, "%d min %02d s", whole / 60, whole % 60);
  } else {
    const long long minutes = std::llround(seconds / 60);
    std::snprintf(out, sizeof out, "%lld h %02lld min", minutes / 60, minutes % 60);
  }
  return out;
}

} // namespace app
