/**
 * @file library.h
 * What the library has to say about a failure, and how its messages reach the user.
 */
#ifndef ZAREL_APP_LIBRARY_H
#define ZAREL_APP_LIBRARY_H

#include "console.h"

#include <string>
#include <zarel/Kriging.h>

namespace app::library {

/**
 * While this lives, what the library would show in its last-resort box, which is where its traces
 * of a failure end when no message tool is set up, is collected here instead.
 */
class Details {
public:
  Details();
  Details(const Details&) = delete;
  Details& operator=(const Details&) = delete;
  ~Details();

  /** The first thing collected on one line, such as the source place of a failed read. */
  std::string text() const;

private:
  Details* former_;
  std::string text_;
  friend void collect(const char* text);
};

/** A progress bar over the trial fits of one model; the library sends a message after each. */
class FitProgress {
public:
  FitProgress(Console& console, const std::string& what, Kriging<double>& model);
  FitProgress(const FitProgress&) = delete;
  FitProgress& operator=(const FitProgress&) = delete;
  ~FitProgress();

private:
  static int onMessage(int* code);

  Progress progress_;
  double trials_ = 0;
  FitProgress* former_;
};

/** Most trial fits that a search over `multipliers` makes, but for a long run of moves. */
double expectedTrials(int multipliers);

} // namespace app::library

#endif
