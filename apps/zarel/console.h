/**
 * @file console.h
 * Words for the person at the terminal, all on standard error: notes, warnings, errors, and
 * progress bars. Standard output belongs to data.
 */
#ifndef ZAREL_APP_CONSOLE_H
#define ZAREL_APP_CONSOLE_H

#include "failure.h"

#include <chrono>
#include <string>
#include <string_view>

namespace app {

/** Writes whole lines on standard error. Colours only on a terminal, and never with NO_COLOR. */
class Console {
public:
  Console();

  /** With true, `note` and progress bars stay silent. */
  void setQuiet(bool quiet) { quiet_ = quiet; }
  bool quiet() const { return quiet_; }
  /** True when progress bars may be drawn: standard error is a terminal and not quiet. */
  bool animated() const { return terminal_ && !quiet_; }

  void note(std::string_view text);
  void warn(std::string_view text, std::string_view hint = {});
  void error(const Failure& failure);

private:
  friend class Progress;
  void line(std::string_view label, const char* colour, std::string_view text,
            std::string_view hint);
  void clearBar();

  bool quiet_ = false;
  bool terminal_ = false;
  bool colour_ = false;
  bool barShown_ = false;
};

/** One progress bar. Draws at most ten times a second, and only on an animated console. */
class Progress {
public:
  /** @param total amount of work in any unit; 0 when unknown (then only the amount is shown) */
  Progress(Console& console, std::string what, double total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { finish(); }

  /** Tells how much is done; cheap enough for inner loops. */
  void update(double done);
  void setTotal(double total) { total_ = total; }
  /** Removes the bar. */
  void finish();

private:
  using Clock = std::chrono::steady_clock;
  void draw(double done, Clock::time_point now);

  Console& console_;
  std::string what_;
  double total_;
  Clock::time_point start_;
  Clock::time_point next_;
};

/** "3.2 s", "2 min 05 s", "1 h 12 min": a duration for people. */
std::string duration(double seconds);

} // namespace app

#endif
