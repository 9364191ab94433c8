#include "doe/design.h"

#include "columns.h"
#include "csv.h"
#include "failure.h"
#include "number.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace app::doe {

namespace {

constexpr int pointsPerFactor = 10;
/// Points that a file may give.
constexpr std::size_t mostGiven = 100000;
/// A given value this near to a level stands on it: it has been through text and bounds.
constexpr double levelTolerance = 1e-9;

[[noreturn]] void failUsage(const std::string& what, const std::string& hint = {}) {
  throw Failure(ExitCode::usage, what, hint);
}

std::string counted(double number, const char* one, const char* many) {
  return numberText(number) + ' ' + (number == 1 ? one : many);
}

std::vector<Variable> boundedVariables(const Choice& choice) {
  if (choice.bounds.empty()) return parseVariables(choice.inputs);
  if (!choice.inputs.empty())
    failUsage("--bounds and --input say both what the factors are", "give one of them");
  if (choice.bounds == "-")
    failUsage("bounds come from a file, not from standard input", "name the file");
  return readBounds(choice.bounds);
}

std::vector<Variable> chosenVariables(const Choice& choice) {
  const bool named = !choice.bounds.empty() || !choice.inputs.empty();
  if (choice.factors > 0 && named)
    failUsage("--factors and bounds say both what the factors are", "give one of them");
  if (choice.factors > 0) return codedVariables(static_cast<int>(choice.factors));
  if (!named)
    failUsage("a design needs factors",
              "say how many, --factors 3, or which: --input width=0.5:2, or a file for --bounds");
  std::vector<Variable> variables = boundedVariables(choice);
  if (variables.size() > mostFactors)
    failUsage("more than " + std::to_string(mostFactors) + " factors");
  return variables;
}

Columns factorColumns(const CsvReader& csv, const std::vector<std::string>& names) {
  if (csv.hasHeader()) {
    Columns columns;
    for (const auto& name : names)
      columns.push_back(findColumn(name, csv.names(), csv.file()));
    return columns;
  }
  if (csv.names().size() != names.size())
    throw Failure(ExitCode::badInput,
                  std::to_string(csv.names().size()) + " columns for " +
                      std::to_string(names.size()) + " factors",
                  "give a column a factor, or name the columns in the first line",
                  Place{csv.file(), 0, 0, 0, ""});
  return allColumns(names.size());
}

Points readPoints(const std::string& path, const std::vector<std::string>& names) {
  Points points;
  if (path.empty()) return points;
  CsvReader csv(path);
  const Columns columns = factorColumns(csv, names);
  while (csv.next()) {
    if (points.size() == mostGiven)
      throw Failure(ExitCode::badInput, "more than " + std::to_string(mostGiven) + " points", "",
                    csv.place());
    points.emplace_back();
    for (const auto column : columns)
      points.back().push_back(csv.number(column));
  }
  return points;
}

/// Gathers the points of a design that are not drawn, each once.
class Gathering {
public:
  explicit Gathering(Design& design) : design_(design) {}

  void addCentre() {
    const std::vector<double> zero(design_.variables.size(), 0.0);
    add(zero, physical(zero), Origin::centre);
  }

  void keep(const Points& points) {
    for (const auto& values : points) {
      const std::vector<double> coded = codedPoint(values);
      if (!add(coded, values, Origin::kept)) ++design_.repeated;
    }
  }

  void stayAwayFrom(const Points& points) {
    for (const auto& values : points) {
      const std::vector<double> coded = codedPoint(values);
      if (present_.insert(coded).second) design_.away.push_back(coded);
    }
  }

  void draw(int count, unsigned seed) {
    Points present = design_.coded;
    present.insert(present.end(), design_.away.begin(), design_.away.end());
    const int factors = static_cast<int>(design_.variables.size());
    for (const auto& coded : spacedPoints(count, factors, design_.levels, present, seed))
      add(coded, physical(coded), Origin::drawn);
  }

  /// Points of the levels that are taken.
  std::size_t taken() const {
    return static_cast<std::size_t>(
        std::count_if(present_.begin(), present_.end(), [this](const auto& point) {
          return std::all_of(point.begin(), point.end(),
                             [this](double x) { return x == nearestLevel(x, design_.levels); });
        }));
  }

private:
  bool add(const std::vector<double>& coded, const std::vector<double>& values, Origin origin) {
    if (!present_.insert(coded).second) return false;
    if (std::any_of(coded.begin(), coded.end(), [](double x) { return std::fabs(x) > 1 + 1e-9; }))
      ++design_.outside;
    design_.coded.push_back(coded);
    design_.values.push_back(values);
    design_.origins.push_back(origin);
    return true;
  }

  std::vector<double> physical(const std::vector<double>& coded) const {
    std::vector<double> values;
    for (std::size_t k = 0; k < coded.size(); ++k)
      values.push_back(physicalValue(design_.variables[k], coded[k]));
    return values;
  }

  std::vector<double> codedPoint(const std::vector<double>& values) const {
    std::vector<double> coded;
    for (std::size_t k = 0; k < values.size(); ++k) {
      double x = codedValue(design_.variables[k], values[k]);
      if (std::fabs(x) < levelTolerance) x = 0; // the centre, for a range of any two numbers
      if (design_.levels > 0) {
        const double level = nearestLevel(x, design_.levels);
        if (std::fabs(x - level) < levelTolerance) x = level;
      }
      coded.push_back(x);
    }
    return coded;
  }

  Design& design_;
  std::set<std::vector<double>> present_;
};

/// How many points to draw. Levels have room for only so many.
int pointsToDraw(const Choice& choice, const Design& design, const Gathering& gathering) {
  const int factors = static_cast<int>(design.variables.size());
  const int usual = std::min(pointsPerFactor * factors, mostPoints);
  if (design.levels == 0) return choice.points < 0 ? usual : static_cast<int>(choice.points);
  const double all = gridSize(factors, design.levels);
  const double free = all - static_cast<double>(gathering.taken());
  if (choice.points < 0) return static_cast<int>(std::min<double>(usual, free));
  if (static_cast<double>(choice.points) <= free) return static_cast<int>(choice.points);
  const std::string what =
      design.levels == 2 ? counted(all, "corner", "corners") : counted(all, "point", "points");
  failUsage(std::to_string(design.levels) + " levels of " + counted(factors, "factor", "factors") +
                " have " + what +
                (free < all ? ", of which " + numberText(free) + " are free; " : "; ") +
                std::to_string(choice.points) + " different points do not fit",
            "ask for fewer --points or more --levels");
}

} // namespace

std::vector<std::string> Design::names() const {
  std::vector<std::string> names;
  for (const auto& variable : variables)
    names.push_back(variable.name);
  return names;
}

std::size_t Design::count(Origin origin) const {
  return static_cast<std::size_t>(std::count(origins.begin(), origins.end(), origin));
}

Design makeDesign(const Choice& choice, std::uint64_t seed) {
  if (choice.levels == 1)
    failUsage("--levels 1 leaves no choice", "2 for corners, more for a grid, 0 for any value");
  if (choice.keep == "-" && choice.away == "-")
    failUsage("--keep and --away cannot both come from standard input",
              "give one of them as a file");
  Design design;
  design.variables = chosenVariables(choice);
  design.physical = choice.factors == 0;
  design.levels = static_cast<int>(choice.levels);
  Gathering gathering(design);
  if (choice.centre) gathering.addCentre();
  gathering.keep(readPoints(choice.keep, design.names()));
  gathering.stayAwayFrom(readPoints(choice.away, design.names()));
  gathering.draw(pointsToDraw(choice, design, gathering), designSeed(seed, 0));
  if (design.coded.empty())
    failUsage("a design without points", "ask for --points, --centre or --keep");
  return design;
}

} // namespace app::doe
