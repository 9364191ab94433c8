/**
 * @file variable.h
 * Design variables: names, bounds, and the way from coded values (-1 to 1) to physical ones.
 */
#ifndef ZAREL_APP_VARIABLE_H
#define ZAREL_APP_VARIABLE_H

#include <string>
#include <vector>

namespace app {

/** One design variable and where it may go. */
struct Variable {
  std::string name;
  double low = 0;
  double high = 0;
};

/** Reads "NAME=LOW:HIGH", as an option `--input` gives it; throws `usage`. */
Variable parseVariable(const std::string& text);

/** Reads one or more of them; every name stands once. Throws `usage`. */
std::vector<Variable> parseVariables(const std::vector<std::string>& inputs);

/**
 * Reads a file of them, a line each, with names that stand once; `#` begins a comment, and blank
 * lines do not count. Throws `io`, and `badInput` with the line.
 */
std::vector<Variable> readBounds(const std::string& path);

/** x1, x2, ... from -1 to 1. */
std::vector<Variable> codedVariables(int count);

/** The physical value of a coded one: -1 is the lower bound, 1 the upper one, exactly. */
double physicalValue(const Variable& variable, double coded);

/** The coded value of a physical one. */
double codedValue(const Variable& variable, double physical);

} // namespace app

#endif
