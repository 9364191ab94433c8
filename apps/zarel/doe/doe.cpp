#include "doe/doe.h"

#include "csv.h"
#include "doe/design.h"
#include "doe/picture.h"
#include "interrupt.h"
#include "number.h"
#include "option_values.h"
#include "report.h"

#include <cmath>
#include <memory>
#include <optional>

namespace app {
namespace doe {
namespace {

void addOptions(CLI::App& command, Choice& choice) {
  addInteger(command, "--factors", choice.factors,
             "Number of factors, called x1, x2, ... with values from -1 to 1", 1, mostFactors)
      ->default_str("");
  command.add_option("--input", choice.inputs, "A factor with its bounds; once for each factor")
      ->type_name("NAME=LOW:HIGH");
  command.add_option("--bounds", choice.bounds, "File with a factor and its bounds a line")
      ->type_name("FILE")
      ->take_last();
  addInteger(command, "--points", choice.points, "Points to draw; ten a factor without it", 0,
             mostPoints)
      ->default_str("");
  addInteger(command, "--levels", choice.levels,
             "Evenly spaced values of each factor that drawn points may have; 2 for corners, 0 for "
             "any value",
             0, 1000);
  command.add_flag("--centre,--center", choice.centre, "The centre of the space, in front");
  command.add_option("--keep", choice.keep, "CSV file of points that belong to the design")
      ->type_name("POINTS.csv")
      ->take_last();
  command
      .add_option("--away", choice.away,
                  "CSV file of points to stay away from, which do not belong to the design")
      ->type_name("POINTS.csv")
      ->take_last();
  command.add_flag("--coded", choice.coded, "Write values from -1 to 1 instead of physical ones");
  command.add_option("-o,--output", choice.output, "CSV file to write; - for a stream")
      ->capture_default_str()
      ->type_name("OUT.csv")
      ->take_last();
  command.add_option("--svg,--plot", choice.svg, "Picture to write: every pair of factors")
      ->type_name("OUT.svg")
      ->take_last();
}

void checkOutputs(const Choice& choice, const Globals& globals) {
  if (!choice.svg.empty() && choice.svg == choice.output)
    throw Failure(ExitCode::usage, "points and picture cannot both go to " + choice.output,
                  "give another file to --output or --svg");
  if (choice.svg == "-" && globals.json)
    throw Failure(ExitCode::usage, "document and picture cannot both go to standard output",
                  "give a file to --svg");
  checkOverwrite(choice.output, globals.force);
  if (!choice.svg.empty()) checkOverwrite(choice.svg, globals.force);
}

const Points& rowsToWrite(const Choice& choice, const Design& design) {
  return choice.coded ? design.coded : design.values;
}

void writeCsv(OutputFile& output, const Design& design, const Points& rows) {
  CsvWriter writer(output);
  writer.header(design.names());
  for (const auto& row : rows) {
    for (const double value : row)
      writer.field(value);
    writer.endRow();
  }
  writer.flush();
}

/// Both files are whole before the first takes its name.
void writeFiles(const Choice& choice, const Globals& globals, const Design& design) {
  std::optional<OutputFile> picture, table;
  if (!choice.svg.empty()) {
    picture.emplace(choice.svg, globals.force);
    picture->write(svgFile({{designChart(design)}}, "Design of experiments"));
  }
  if (choice.output != "-" || !globals.json) {
    table.emplace(choice.output, globals.force);
    writeCsv(*table, design, rowsToWrite(choice, design));
  }
  interrupt::check("nothing was written; give the same command again");
  if (table) table->commit();
  if (picture) picture->commit();
}

/// Distances in coded values; not finite where there are too few points.
struct Distances {
  NearestPair pair;
  double away;
};

Json distanceJson(double distance) {
  return std::isfinite(distance) ? Json(distance) : Json(nullptr);
}

Json designReport(const Choice& choice, const Globals& globals, const Design& design,
                  const Distances& distances) {
  Json document = newReport("doe");
  document["factors"] = Json::array();
  for (const auto& variable : design.variables)
    document["factors"].push_back(
        {{"name", variable.name}, {"low", variable.low}, {"high", variable.high}});
  document["levels"] = design.levels;
  document["seed"] = globals.seed;
  document["points"] = design.coded.size();
  document["centre"] = design.count(Origin::centre);
  document["kept"] = design.count(Origin::kept);
  document["drawn"] = design.count(Origin::drawn);
  document["stay_away_from"] = design.away.size();
  document["smallest_distance"] = distanceJson(distances.pair.distance);
  if (std::isfinite(distances.pair.distance))
    document["nearest_points"] = {distances.pair.first + 1, distances.pair.second + 1};
  document["distance_to_others"] = distanceJson(distances.away);
  document["values"] = choice.coded || !design.physical ? "coded" : "physical";
  document["output"] = choice.output;
  if (!choice.svg.empty()) document["picture"] = choice.svg;
  document["columns"] = design.names();
  if (choice.output == "-") document["rows"] = rowsToWrite(choice, design);
  return document;
}

std::string countText(std::size_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

/// "21 points of 2 factors: the centre, 4 kept, 16 drawn".
std::string contentText(const Design& design) {
  std::string parts;
  const auto part = [&parts](std::size_t count, const std::string& words) {
    if (count > 0) parts += (parts.empty() ? ": " : ", ") + words;
  };
  part(design.count(Origin::centre), "the centre");
  part(design.count(Origin::kept), std::to_string(design.count(Origin::kept)) + " kept");
  part(design.count(Origin::drawn), std::to_string(design.count(Origin::drawn)) + " drawn");
  return countText(design.coded.size(), "point", "points") + " of " +
         countText(design.variables.size(), "factor", "factors") + parts;
}

void tell(Console& console, const Design& design, const Distances& distances) {
  if (design.repeated > 0)
    console.warn(countText(design.repeated, "kept point stands", "kept points stand") +
                 " more than once; each is taken once");
  if (design.outside > 0)
    console.warn(countText(design.outside, "kept point lies", "kept points lie") +
                 " outside the bounds");
  console.note(contentText(design));
  const NearestPair& pair = distances.pair;
  if (std::isfinite(pair.distance))
    console.note("smallest distance " + roundedText(pair.distance) + ", between points " +
                 std::to_string(pair.first + 1) + " and " + std::to_string(pair.second + 1) +
                 ", where every factor goes from -1 to 1");
  if (std::isfinite(distances.away))
    console.note("smallest distance to the points to stay away from " +
                 roundedText(distances.away));
}

void run(const Choice& choice, Globals& globals) {
  checkOutputs(choice, globals);
  const Design design = makeDesign(choice, globals.seed);
  const Distances distances{nearestPair(design.coded), smallestDistance(design.coded, design.away)};
  writeFiles(choice, globals, design);
  tell(globals.console, design, distances);
  if (globals.json) printReport(designReport(choice, globals, design, distances));
}

} // namespace
} // namespace doe

void addDoe(CLI::App& root, Globals& globals) {
  auto choice = std::make_shared<doe::Choice>();
  CLI::App& command =
      *root.add_subcommand("doe", "Place points that lie far from each other: where to simulate");
  doe::addOptions(command, *choice);
  command.footer(globalsFooter());
  command.callback(
      [choice, &globals] { globals.action = [choice, &globals] { doe::run(*choice, globals); }; });
}

} // namespace app
