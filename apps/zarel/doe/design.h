/**
 * @file design.h
 * A design of experiments as `zarel doe` makes it: what is asked for, and what comes out.
 */
#ifndef ZAREL_APP_DOE_DESIGN_H
#define ZAREL_APP_DOE_DESIGN_H

#include "console.h"
#include "space_filling.h"
#include "variable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace app::doe {

/** The options. */
struct Choice {
  long long factors = 0;           ///< 0: by `inputs` or `bounds`
  std::vector<std::string> inputs; ///< "NAME=LOW:HIGH"
  std::string bounds;              ///< file of them
  long long points = -1;           ///< to draw; -1: ten a factor, or as many as the levels leave
  long long levels = 0;            ///< 0: any value
  bool centre = false;
  std::string keep; ///< CSV file of points that belong to the design
  std::string away; ///< CSV file of points to stay away from
  bool coded = false;
  std::string output = "-";
  std::string svg;
};

enum class Origin { centre, kept, drawn };

/** A design. Rows of `values` and `coded` are the same points. */
struct Design {
  std::vector<Variable> variables;
  bool physical = false; ///< values are physical: the variables have bounds
  int levels = 0;
  Points coded;
  Points values;
  std::vector<Origin> origins;
  Points away;              ///< coded
  std::size_t repeated = 0; ///< given points that stood twice and were left out
  std::size_t outside = 0;  ///< kept points outside the bounds

  std::vector<std::string> names() const;
  std::size_t count(Origin origin) const;
};

/** Reads the files and makes the design. Throws `Failure` for one that cannot be made. */
Design makeDesign(const Choice& choice, std::uint64_t seed);

} // namespace app::doe

#endif
