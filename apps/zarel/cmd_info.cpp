#include "cli.h"
#include "number.h"
#include "report.h"
#include "suggest.h"
#include "surrogate.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

namespace app {

namespace {

using Matrix = C_MatMGe<double>;

/** Smallest and largest value of a named column. */
struct Span {
  std::string name;
  double lowest = 0;
  double highest = 0;
};

std::vector<Span> spans(Matrix& matrix, const std::vector<std::string>& names) {
  std::vector<Span> result;
  for (int j = 0; j < matrix.NbCol(); ++j) {
    const double* column = matrix[j];
    const auto [low, high] = std::minmax_element(column, column + matrix.NbRow());
    result.push_back({names[static_cast<std::size_t>(j)], *low, *high});
  }
  return result;
}

struct ModelInfo {
  int samples = 0;
  std::vector<Span> inputs;
  std::vector<Span> outputs;
  std::vector<ModelFacts> models;
  ModelNotes notes;
};

ModelInfo readInfo(const std::string& path) {
  KrigingList<double> list;
  ModelInfo info;
  readModel(path, list, info.notes);
  list.GetNumSamp(info.samples);
  Matrix x;
  Matrix y;
  if (list.GetInpSampMtx(x, 0) != 0 || list.GetOutSampMtx(y, -1) != 0 ||
      x.NbCol() != static_cast<int>(info.notes.inputs.size()) ||
      y.NbCol() != static_cast<int>(info.notes.outputs.size()))
    throw Failure(ExitCode::badInput, "the models of the file do not fit each other", "",
                  Place{path, 0, 0, 0, ""});
  info.inputs = spans(x, info.notes.inputs);
  info.outputs = spans(y, info.notes.outputs);
  info.models = modelFacts(list, info.notes);
  return info;
}

void appendSpans(std::string& text, const char* title, const std::vector<Span>& columns) {
  std::size_t width = 0;
  for (const auto& span : columns)
    width = std::max(width, span.name.size());
  text += title;
  for (const auto& span : columns)
    text += "  " + span.name + std::string(width - span.name.size(), ' ') + "  " +
            roundedText(span.lowest, 6) + " to " + roundedText(span.highest, 6) + "\n";
}

std::string infoText(const std::string& path, const ModelInfo& info) {
  std::string text = (path == "-" ? "standard input" : path) + ": " +
                     std::to_string(info.models.size()) +
                     (info.models.size() == 1 ? " model, " : " models, ") +
                     std::to_string(info.samples) + " samples\n";
  appendSpans(text, "inputs\n", info.inputs);
  appendSpans(text, "outputs\n", info.outputs);
  text += "models\n";
  for (const auto& model : info.models)
    text += "  " + factsText(model) + "\n";
  if (!info.notes.stored) text += "the file names no columns; x1.. and y1.. stand in\n";
  return text;
}

Json spansJson(const std::vector<Span>& columns) {
  Json json = Json::array();
  for (const auto& span : columns)
    json.push_back({{"name", span.name}, {"lowest", span.lowest}, {"highest", span.highest}});
  return json;
}

Json infoReport(const std::string& path, const ModelInfo& info) {
  Json document = newReport("info");
  document["model"] = path;
  document["samples"] = info.samples;
  document["inputs"] = spansJson(info.inputs);
  document["outputs"] = spansJson(info.outputs);
  document["models"] = Json::array();
  for (const auto& model : info.models)
    document["models"].push_back(factsJson(model));
  document["drop_tolerance"] = info.notes.dropTolerance;
  document["lower_bound"] = info.notes.lowerBound;
  document["upper_bound"] = info.notes.upperBound;
  document["names_stored"] = info.notes.stored;
  return document;
}

void runInfo(const std::string& path, Globals& globals) {
  const ModelInfo info = readInfo(path);
  if (globals.json)
    printReport(infoReport(path, info));
  else
    printData(infoText(path, info));
}

} // namespace

void addInfo(CLI::App& root, Globals& globals) {
  auto path = std::make_shared<std::string>();
  CLI::App* info = root.add_subcommand("info", "Tell what a model file holds");
  info->add_option("model", *path, "Model file; - for a stream")->required()->type_name("MODEL");
  info->footer(globalsFooter());
  info->callback(
      [path, &globals] { globals.action = [path, &globals] { runInfo(*path, globals); }; });
}

} // namespace app
