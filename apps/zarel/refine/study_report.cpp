#include "study_report.h"

#include "csv.h"
#include "number.h"

#include <cmath>
#include <cstdio>

namespace app::refine {
namespace {

/// At least `width` wide, flush right.
std::string right(const std::string& text, std::size_t width) {
  std::size_t shown = 0; // bytes that begin a character
  for (char c : text)
    shown += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return std::string(shown < width ? width - shown : 0, ' ') + text;
}

std::string fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return std::isfinite(value) ? text : "-";
}

/// Three digits, with a fixed place for the point as far as that goes.
std::string percent(double share) {
  const double value = 100 * share;
  if (!std::isfinite(value)) return "-";
  if (value != 0 && value < 0.01) return roundedText(value, 2) + " %";
  return fixed(value, value < 10 ? 2 : value < 100 ? 1 : 0) + " %";
}

Json numberOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json roundJson(std::size_t number, const RoundRecord& round) {
  Json json = {{"round", number},
               {"samples", round.samples},
               {"simulated", round.simulated},
               {"failed", round.failed},
               {"predicted_error", numberOrNull(round.predictedError)},
               {"predicted_rms", numberOrNull(round.predictedRms)}};
  if (round.validation) {
    Json r2 = Json::array();
    for (double value : round.validation->r2)
      r2.push_back(numberOrNull(value));
    json["validation"] = {{"largest_error", numberOrNull(round.validation->largestError)},
                          {"rms_error", numberOrNull(round.validation->rmsError)},
                          {"r2", r2}};
  }
  json["fit_seconds"] = round.fitSeconds;
  json["seconds"] = round.seconds;
  return json;
}

Json failedJson(const Settings& settings, const Study& study) {
  Json failed = Json::array();
  const auto& points = study.points();
  for (std::size_t id = 0; id < points.size(); ++id) {
    if (points[id].state != StudyPoint::State::failed) continue;
    Json inputs;
    for (std::size_t k = 0; k < settings.variables.size(); ++k)
      inputs[settings.variables[k].name] = points[id].x[k];
    failed.push_back({{"point", id + 1},
                      {"inputs", inputs},
                      {"reason", points[id].reason},
                      {"folder", study.path(points[id].folder)}});
  }
  return failed;
}

void writeRows(const std::string& path, const std::vector<std::string>& names,
               const std::function<void(CsvWriter&)>& rows) {
  OutputFile file(path, true);
  CsvWriter csv(file);
  csv.header(names);
  rows(csv);
  csv.flush();
  file.commit();
}

} // namespace

std::string tableHead(bool validation) {
  std::string first =
      right("round", 5) + right("samples", 9) + right("failed", 8) + right("predicted error", 19);
  std::string second = right("", 22) + right("largest", 9) + right("typical", 10);
  if (validation) {
    first += right("validation error", 20) + right("R²", 10);
    second += right("largest", 10) + right("typical", 10) + right("smallest", 10);
  }
  return first + right("seconds", 11) + '\n' + second + '\n';
}

std::string tableRow(std::size_t round, const RoundRecord& record) {
  std::string row = right(std::to_string(round), 5) + right(std::to_string(record.samples), 9) +
                    right(std::to_string(record.failed), 8) +
                    right(percent(record.predictedError), 9) +
                    right(percent(record.predictedRms), 10);
  if (record.validation)
    row += right(percent(record.validation->largestError), 10) +
           right(percent(record.validation->rmsError), 10) +
           right(fixed(record.validation->smallestR2(), 5), 10);
  return row + right(fixed(record.seconds, 2), 11) + '\n';
}

void addToDocument(Json& document, const ReportData& data) {
  const Study& study = data.study;
  document["study"] = study.folder();
  document["outcome"] = data.outcome ? Json(outcomeName(*data.outcome)) : Json(nullptr);
  document["target"] = data.settings.options.target;
  document["seed"] = data.settings.identity.at("seed");
  document["samples"] = study.rounds().empty() ? 0 : study.rounds().back().samples;
  document["simulated"] = study.simulatedCount();
  document["rounds"] = Json::array();
  for (std::size_t r = 0; r < study.rounds().size(); ++r)
    document["rounds"].push_back(roundJson(r, study.rounds()[r]));
  document["models"] = Json::array();
  for (const ModelFacts& facts : data.models)
    document["models"].push_back(factsJson(facts));
  document["failed"] = failedJson(data.settings, study);
  document["files"] = {{"model", study.path("study.krg")},
                       {"samples", study.path("samples.csv")},
                       {"failed", study.path("failed.csv")},
                       {"report", study.path("report.html")},
                       {"picture", study.path("report.svg")}};
}

void writeSamples(const std::string& path, const Settings& settings, const Study& study) {
  auto names = settings.inputNames();
  names.insert(names.end(), settings.outputs.begin(), settings.outputs.end());
  names.emplace_back("round");
  writeRows(path, names, [&](CsvWriter& csv) {
    for (std::size_t round = 0; round < study.plans().size(); ++round)
      for (std::size_t id : study.finished(study.plans()[round])) {
        for (double value : study.points()[id].x)
          csv.field(value);
        for (double value : study.points()[id].y)
          csv.field(value);
        csv.field(static_cast<double>(round));
        csv.endRow();
      }
  });
}

void writeFailed(const std::string& path, const Settings& settings, const Study& study) {
  auto names = settings.inputNames();
  names.insert(names.end(), {"point", "folder", "reason"});
  writeRows(path, names, [&](CsvWriter& csv) {
    for (std::size_t id = 0; id < study.points().size(); ++id) {
      const StudyPoint& point = study.points()[id];
      if (point.state != StudyPoint::State::failed) continue;
      for (double value : point.x)
        csv.field(value);
      csv.field(static_cast<double>(id + 1));
      csv.field(point.folder);
      csv.field(point.reason);
      csv.endRow();
    }
  });
}

} // namespace app::refine
