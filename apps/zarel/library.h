/**
 * @file library.h
 * The library's hooks, as the program uses them: what it has to say about a failure, its messages,
 * and the progress of a fit.
 */
#ifndef ZAREL_APP_LIBRARY_H
#define ZAREL_APP_LIBRARY_H

#include "console.h"

#include <string>
#include <zarel/C_MessageTool.h>
#include <zarel/C_ZarelException.h>
#include <zarel/Kriging.h>

namespace app::library {

/**
 * Sets the hooks: texts of last resort go to the living `Details` or nowhere, and messages end
 * with a line feed. Call once, at the start.
 */
void install();

/**
 * While this lives, what the library would show in its box of last resort, which is where its
 * traces of a failure end when no message tool is set up, is collected here.
 */
class Details {
public:
  Details();
  Details(const Details&) = delete;
  Details& operator=(const Details&) = delete;
  ~Details();

  /** Where the first trace was made, the one nearest to the failure: "src/a/b.cpp line 7". */
  const std::string& text() const { return text_; }

private:
  friend void collect(const char* title, const char* text);

  Details* former_;
  std::string text_;
};

/**
 * The library's own words about a failure stay unsaid while this lives, as the program has better
 * ones; its stacks of calls too, unless ZAREL_VERBOSITY asks for more than is usual.
 */
class Hushed {
public:
  Hushed();
  Hushed(const Hushed&) = delete;
  Hushed& operator=(const Hushed&) = delete;
  ~Hushed();

private:
  Zarel::C_MessageTool* tool_;
  unsigned filter_ = 0;
  int level_ = 0;
};

/**
 * Gives the BLAS the buffer that it works in, once. Commands that compute call it first: OpenBLAS
 * takes the buffer in its first product and, where the system refuses it, asks for ever. Throws the
 * failure "out of memory" instead.
 */
void takeBlasBuffer();

/** Tells whether an exception of the library means that there is no memory. */
bool isOutOfMemory(const C_ZarelException& thrown);

/** An exception of the library as a failure: its code, its reason and where it was thrown. */
Failure asFailure(const C_ZarelException& thrown);

/**
 * A progress bar over the trial fits of one model: the library sends a message after each. Living
 * ones must end in the reverse order of their start.
 */
class FitProgress {
public:
  FitProgress(Console& console, const std::string& what, Kriging<double>& model);
  FitProgress(const FitProgress&) = delete;
  FitProgress& operator=(const FitProgress&) = delete;
  ~FitProgress();

private:
  friend int countMessage(int* code);

  Progress progress_;
  double trials_ = 0;
  FitProgress* former_;
};

/** Most trial fits that a search over `multipliers` makes, but for a long run of moves. */
double expectedTrials(int multipliers);

} // namespace app::library

#endif
