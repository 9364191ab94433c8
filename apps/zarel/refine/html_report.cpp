#include "charts.h"
#include "number.h"
#include "study_report.h"

#include <cmath>
#include <filesystem>

namespace app::refine {
namespace {

const char* const pageRules = R"(
body { background: @page; color: @ink; }
.card { background: @card; border-color: @grid; }
.lead, .note, th, dt { color: @muted; }
th, td { border-color: @grid; }
.value { color: @ink; } .value.good { color: @good; } .value.bad { color: @bad; }
code { background: @grid; }
)";

const char* const pageLayout = R"(
:root { color-scheme: light dark; }
body { margin: 0 auto; max-width: 70rem; padding: 2rem 1.25rem 4rem;
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; }
h1 { font-size: 1.7rem; margin: 0; } h2 { font-size: 1.15rem; margin: 2.2rem 0 .6rem; }
.lead { margin: .2rem 0 1.4rem; } .note { font-size: .87rem; margin: .4rem 0 0; max-width: 48rem; }
.row { display: flex; flex-wrap: wrap; gap: 1rem; }
.card { border: 1px solid; border-radius: 10px; padding: 1rem 1.2rem; }
.row > .card { flex: 1 1 17rem; } .row > .figure { flex: 1 1 8rem; }
h3 { margin: 0 0 .6rem; font-size: 1rem; overflow-wrap: anywhere; } .value { display: block; font-size: 1.5rem; font-weight: 600; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; width: 100%; }
th, td { text-align: right; padding: .35rem .7rem; border-bottom: 1px solid; white-space: nowrap; }
th { font-weight: 500; font-size: .87rem; } td.text, th.text { text-align: left; white-space: normal; }
dl { display: grid; grid-template-columns: max-content auto; gap: .2rem 1.2rem; margin: 0 0 .8rem; }
dd { margin: 0; } svg { max-width: 100%; height: auto; display: block; }
code { padding: .1rem .35rem; border-radius: 4px; font-size: .87rem; overflow-wrap: anywhere; }
)";

using Cells = std::vector<std::string>;

std::string element(const std::string& tag, const std::string& content) {
  return '<' + tag + '>' + content + "</" + tag.substr(0, tag.find(' ')) + ">\n";
}

std::string percent(double share) {
  return std::isfinite(share) ? roundedText(100 * share, 3) + "&#160;%" : "–";
}

std::string number(double value, int digits) {
  return std::isfinite(value) ? roundedText(value, digits) : "–";
}

/// One of the big numbers on top.
std::string figure(const std::string& value, const std::string& what, const std::string& cls = {}) {
  return element("div class=\"card figure\"",
                 element("span class=\"value" + (cls.empty() ? "" : ' ' + cls) + '"', value) +
                     what);
}

std::string figures(const ReportData& data) {
  const RoundRecord& last = data.study.rounds().back();
  const bool reached = last.predictedError <= data.settings.options.target;
  std::string out =
      figure(std::to_string(last.samples), "samples") +
      figure(std::to_string(data.study.rounds().size() - 1), "refinement rounds") +
      figure(percent(last.predictedError),
             "largest predicted relative error, target " + percent(data.settings.options.target),
             reached ? "good" : "");
  if (last.validation)
    out += figure(percent(last.validation->largestError),
                  "largest relative error on validation points") +
           figure(number(last.validation->smallestR2(), 5), "smallest R² on validation points");
  if (last.failed > 0) out += figure(std::to_string(last.failed), "failed simulations", "bad");
  return element("div class=\"row\"", out);
}

std::string tableLine(const std::string& tag, const Cells& cells) {
  std::string out;
  for (const std::string& cell : cells)
    out += element(tag, cell);
  return element("tr", out);
}

std::string roundsTable(const ReportData& data) {
  const bool validation = !data.settings.validation.x.empty();
  Cells head{"round", "samples", "failed", "largest predicted error", "typical predicted error"};
  if (validation)
    head.insert(head.end(),
                {"largest validation error", "typical validation error", "smallest R²"});
  head.emplace_back("seconds");
  std::string body;
  for (std::size_t r = 0; r < data.study.rounds().size(); ++r) {
    const RoundRecord& round = data.study.rounds()[r];
    Cells cells{std::to_string(r), std::to_string(round.samples), std::to_string(round.failed),
                percent(round.predictedError), percent(round.predictedRms)};
    if (validation && round.validation)
      cells.insert(cells.end(),
                   {percent(round.validation->largestError), percent(round.validation->rmsError),
                    number(round.validation->smallestR2(), 5)});
    cells.push_back(number(round.seconds, 3));
    body += tableLine("td", cells);
  }
  return element("div class=\"scroll\"", element("table", element("thead", tableLine("th", head)) +
                                                              element("tbody", body)));
}

std::string term(const std::string& name, const std::string& value) {
  return element("dt", name) + element("dd", value);
}

std::string modelCard(const ModelFacts& facts, const std::vector<std::string>& inputs) {
  std::string outputs;
  for (const std::string& name : facts.outputs)
    outputs += (outputs.empty() ? "" : ", ") + xmlText(name);
  std::string terms =
      term("correlation", nameOf(correlationNames(), facts.correlation)) +
      term("trend", nameOf(trendNames(), facts.trend) + ", " + std::to_string(facts.terms) +
                        (facts.terms == 1 ? " term" : " terms")) +
      term("scaling", nameOf(scalingNames(), facts.scaling)) +
      term("multipliers", nameOf(kernelNames(), facts.kernel));
  return element("div class=\"card\"", element("h3", outputs) + element("dl", terms) +
                                           inlineSvg(multiplierChart(facts.theta, inputs),
                                                     "kernel multipliers of " + facts.outputs[0]));
}

std::string failedTable(const ReportData& data) {
  std::string body;
  const auto& points = data.study.points();
  for (std::size_t id = 0; id < points.size(); ++id)
    if (points[id].state == StudyPoint::State::failed)
      body += element(
          "tr", element("td", std::to_string(id + 1)) +
                    element("td class=\"text\"", xmlText(points[id].reason)) +
                    element("td class=\"text\"", element("code", xmlText(points[id].folder))));
  if (body.empty()) return {};
  const std::string head = element("th", "point") + element("th class=\"text\"", "reason") +
                           element("th class=\"text\"", "what it left");
  return element("h2", "Failed simulations") +
         element("div class=\"scroll\"",
                 element("table", element("thead", element("tr", head)) + element("tbody", body)));
}

std::string pictures(const ReportData& data) {
  std::string out = element("h2", "Error against samples") +
                    element("div class=\"card\"",
                            inlineSvg(errorChart(data.study.rounds(), data.settings.options.target),
                                      "relative error against the number of samples")) +
                    element("p class=\"note\"",
                            "Predicted errors are the models’ own standard errors at the test "
                            "points, relative to the predicted value; largest over the points, and "
                            "typical as their root mean square.");
  if (!data.comparison) return out;
  std::string cards;
  for (std::size_t j = 0; j < data.settings.outputs.size(); ++j)
    cards += element("div class=\"card\"",
                     inlineSvg(scatterChart(*data.comparison, j, data.settings.outputs[j]),
                               "predicted against simulated " + data.settings.outputs[j]));
  return out + element("h2", "Predicted against simulated") + element("div class=\"row\"", cards) +
         element("p class=\"note\"", "Validation points, none of which the models have seen (" +
                                         std::to_string(data.comparison->simulated.size()) +
                                         " points). Bars are two standard errors to each side.");
}

std::string models(const ReportData& data) {
  std::string cards;
  for (const ModelFacts& facts : data.models)
    cards += modelCard(facts, data.settings.inputNames());
  return element("h2", "Models") + element("div class=\"row\"", cards) +
         element("p class=\"note\"", "Bars are the kernel multipliers: the larger one is, the "
                                     "faster the output departs from its trend along that input.");
}

std::string studyFacts(const ReportData& data) {
  const Options& options = data.settings.options;
  std::string inputs;
  for (const Variable& v : data.settings.variables)
    inputs += (inputs.empty() ? "" : ", ") + xmlText(v.name) + " in [" + roundedText(v.low, 6) +
              ", " + roundedText(v.high, 6) + ']';
  return element("h2", "Study") +
         element("dl", term("simulation", element("code", xmlText(options.command))) +
                           term("inputs", inputs) +
                           term("test points", std::to_string(data.settings.testPoints.size())) +
                           term("seed", data.settings.identity.at("seed").dump()) +
                           term("simulated points", std::to_string(data.study.simulatedCount())));
}

std::string title(const ReportData& data) {
  return std::filesystem::path(data.study.folder()).filename().string();
}

} // namespace

std::string htmlReport(const ReportData& data) {
  const std::string name = xmlText(title(data));
  const std::string state = data.outcome ? outcomeText(*data.outcome) : "the study is under way";
  std::string body = element("h1", name) +
                     element("p class=\"lead\"", "Refinement study: " + xmlText(state) + ".");
  if (!data.study.rounds().empty())
    body += figures(data) + pictures(data) + element("h2", "Rounds") + roundsTable(data);
  if (!data.models.empty()) body += models(data);
  body += failedTable(data) + studyFacts(data);
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
         "<title>" +
         name + "</title>\n<style>" + pageLayout + themed(pageRules) + chartStyle() +
         "</style>\n</head>\n<body>\n" + body + "</body>\n</html>\n";
}

std::string svgReport(const ReportData& data) {
  std::vector<std::vector<Chart>> rows;
  if (!data.study.rounds().empty())
    rows.push_back({errorChart(data.study.rounds(), data.settings.options.target)});
  std::vector<Chart> scatters;
  if (data.comparison)
    for (std::size_t j = 0; j < data.settings.outputs.size(); ++j)
      scatters.push_back(scatterChart(*data.comparison, j, data.settings.outputs[j]));
  constexpr std::size_t beside = 3;
  for (std::size_t first = 0; first < scatters.size(); first += beside)
    rows.emplace_back(scatters.begin() + static_cast<std::ptrdiff_t>(first),
                      scatters.begin() +
                          static_cast<std::ptrdiff_t>(std::min(first + beside, scatters.size())));
  return svgFile(rows, title(data));
}

} // namespace app::refine
