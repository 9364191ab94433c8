#include "svd/svd.h"

#include "csv.h"
#include "interrupt.h"
#include "library.h"
#include "number.h"
#include "option_values.h"
#include "refine/charts.h"
#include "report.h"
#include "svd/decompose.h"
#include "svg.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <unistd.h>

namespace app {

namespace {

struct SvdCommand {
  SnapshotChoice input;
  SvdChoice choice;
  double memory = 0; ///< bytes that the vectors may take; 0: half of the machine's
  bool inPlace = false;
  bool valuesGiven = false;
  std::string basis, values = "-", coefficients, plot;
};

using Clock = std::chrono::steady_clock;

/** "1.5G" as bytes; the units are powers of 1024. */
double readSize(const std::string& option, const std::string& text) {
  constexpr std::string_view units = "kMGT";
  std::string number = text;
  double unit = 1;
  const std::size_t place =
      text.empty() ? std::string_view::npos : units.find(text.back() == 'K' ? 'k' : text.back());
  if (place != std::string_view::npos) {
    number.pop_back();
    unit = std::pow(1024.0, static_cast<double>(place) + 1);
  }
  double value = 0;
  if (parseNumber(number, value) != NumberStatus::ok || !(value > 0))
    throw CLI::ValidationError(option, "\"" + text + "\" is no size, such as 512M or 2G");
  return value * unit;
}

double halfOfMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES), bytes = sysconf(_SC_PAGESIZE);
  return pages > 0 && bytes > 0 ? 0.5 * static_cast<double>(pages) * static_cast<double>(bytes)
                                : 1e9;
}

const std::vector<NamedValue>& methods() {
  static const std::vector<NamedValue> all{
      {"lapack", static_cast<int>(SvdMethod::lapack),
       "all values, in place; taken if the vectors fit into memory"},
      {"arpack", static_cast<int>(SvdMethod::arpack), "the largest values, by products"}};
  return all;
}

const std::vector<NamedValue>& formats() {
  static const std::vector<NamedValue> all{
      {"set", static_cast<int>(SnapshotFormat::vectorSet), "a vector set file"},
      {"npy", static_cast<int>(SnapshotFormat::npy), "an array of doubles"},
      {"raw", static_cast<int>(SnapshotFormat::raw), "doubles and nothing else"},
      {"csv", static_cast<int>(SnapshotFormat::csv), "a column a vector"}};
  return all;
}

std::string methodName(SvdMethod method) {
  return nameOf(methods(), static_cast<int>(method));
}

/** Little-endian, whatever the machine. */
void appendCount(std::string& bytes, int count) {
  const auto word = static_cast<std::uint32_t>(count);
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<char>((word >> shift) & 0xff));
}

std::string setHead(int vectors, int length) {
  std::string head;
  appendCount(head, vectors);
  appendCount(head, length);
  return head;
}

/** All files of a run. They take their names when all of them are complete. */
class Outputs {
public:
  Outputs(const SvdCommand& command, bool force, bool json) {
    open(basis_, command.basis, force);
    if (command.valuesGiven || !json) open(values_, command.values, force);
    open(coefficients_, command.coefficients, force);
    open(plot_, command.plot, force);
  }

  void startBasis(int kept, int length) {
    if (basis_) basis_->write(setHead(kept, length));
  }
  void vector(const double* values, int length) {
    if (basis_)
      basis_->write({reinterpret_cast<const char*>(values),
                     static_cast<std::size_t>(length) * sizeof(double)});
  }
  /** Writes what is left and gives all files their names. */
  void finish(SvdResult& result) {
    if (values_) writeValues(result);
    if (coefficients_) writeCoefficients(result.coefficients);
    if (plot_)
      plot_->write(svgFile({{refine::screeChart(result.values, result.errors, result.kept)}},
                           "Singular values"));
    for (auto* file : {&basis_, &coefficients_, &plot_, &values_})
      if (*file) (*file)->commit();
  }

private:
  static void open(std::optional<OutputFile>& file, const std::string& path, bool force) {
    if (!path.empty()) file.emplace(path, force);
  }
  void writeValues(const SvdResult& result) {
    CsvWriter csv(*values_);
    csv.header({"number", "singular_value", "error", "kept"});
    for (std::size_t i = 0; i < result.values.size(); ++i) {
      csv.field(static_cast<double>(i + 1));
      csv.field(result.values[i]);
      csv.field(result.errors[i]);
      csv.field(static_cast<int>(i) < result.kept ? 1.0 : 0.0);
      csv.endRow();
    }
    csv.flush();
  }
  void writeCoefficients(C_MatMGe<double>& coefficients) {
    CsvWriter csv(*coefficients_);
    std::vector<std::string> names;
    for (int j = 0; j < coefficients.NbCol(); ++j)
      names.push_back("vector_" + std::to_string(j + 1));
    csv.header(names);
    for (int i = 0; i < coefficients.NbRow(); ++i) {
      for (int j = 0; j < coefficients.NbCol(); ++j)
        csv.field(coefficients(i, j));
      csv.endRow();
    }
    csv.flush();
  }

  std::optional<OutputFile> basis_, values_, coefficients_, plot_;
};

void checkDistinct(const std::vector<const std::string*>& paths) {
  for (std::size_t i = 0; i < paths.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const std::string &a = *paths[j], &b = *paths[i];
      if (a.empty() || b.empty() || a == "-" || b == "-" || !isSameOutput(a, b)) continue;
      throw Failure(ExitCode::usage, "\"" + a + "\" and \"" + b + "\" are one file",
                    "give each output a file of its own");
    }
}

void checkOutputs(const SvdCommand& command, const Globals& globals) {
  int streams = globals.json ? 1 : 0;
  if (command.valuesGiven || !globals.json) streams += command.values == "-";
  for (const std::string* path : {&command.basis, &command.coefficients, &command.plot})
    streams += *path == "-";
  if (streams > 1)
    throw Failure(ExitCode::usage, "more than one output goes to standard output",
                  "give all but one of them a file name");
  for (const std::string* path :
       {&command.basis, &command.values, &command.coefficients, &command.plot}) {
    if (path->empty() || *path == "-") continue;
    if (isSameFile(*path, command.input.path))
      throw Failure(ExitCode::usage, "\"" + *path + "\" is the input, which is never overwritten",
                    "--in-place turns a vector set file into its basis");
    checkOverwrite(*path, globals.force);
  }
  checkDistinct({&command.basis, &command.values, &command.coefficients, &command.plot});
  if (command.inPlace && !command.basis.empty())
    throw Failure(ExitCode::usage, "--in-place and --output are two places for one basis",
                  "leave one of them out");
}

void checkInPlace(const SnapshotLayout& layout, const SvdCommand& command) {
  if (layout.format != SnapshotFormat::vectorSet || command.input.transpose)
    throw Failure(ExitCode::usage, "--in-place is for vector set files as they are",
                  "write the basis to a file with --output");
}

/** The solver that a wish, the shape and the room lead to. */
SvdMethod chosenMethod(const SvdCommand& command, const SnapshotLayout& layout, bool inCore) {
  if (command.choice.method != SvdMethod::automatic) return command.choice.method;
  if (command.choice.largest > 0) return SvdMethod::arpack;
  const bool tall = layout.length >= layout.vectors && layout.vectors > 1;
  return inCore || !tall ? SvdMethod::lapack : SvdMethod::arpack;
}

/** How the vectors are held during a run. */
Snapshots openSnapshots(const SvdCommand& command, const SnapshotLayout& layout, SvdMethod method,
                        bool inCore, Console& console) {
  const bool readable = layout.vectorAfterVector && layout.offset % sizeof(double) == 0;
  if (command.inPlace) return viewSnapshots(command.input.path, layout, true);
  if (method == SvdMethod::arpack && readable && layout.format != SnapshotFormat::csv)
    return viewSnapshots(command.input.path, layout, false);
  return loadSnapshots(command.input, layout, inCore, console);
}

/** Gives the file of a set its basis: the first vectors, the new head, the new length. */
class InPlace {
public:
  explicit InPlace(Snapshots& snapshots)
      : set_(*snapshots.set), file_(*snapshots.file), length_(set_.getDim1()) {}

  void vector(int i, const double* values) {
    double* const target =
        set_.Adr() + static_cast<std::size_t>(i) * static_cast<unsigned>(length_);
    if (target != values)
      std::memcpy(target, values, static_cast<unsigned>(length_) * sizeof(double));
  }
  void finish(int kept) {
    const std::string head = setHead(kept, length_);
    std::memcpy(file_.data(), head.data(), head.size());
    file_.finish(head.size() +
                 static_cast<std::size_t>(kept) * static_cast<unsigned>(length_) * sizeof(double));
  }

private:
  VectorSet& set_;
  MappedFile& file_;
  int length_;
};

Json svdReport(const SvdCommand& command, const SvdResult& result, bool inCore, double seconds) {
  Json document = newReport("svd");
  document["input"] = command.input.path;
  document["vectors"] = result.vectors;
  document["length"] = result.length;
  document["storage"] = inCore ? "in core" : "out of core";
  document["method"] = methodName(result.method);
  if (result.method == SvdMethod::arpack) document["products"] = result.products;
  document["kept"] = result.kept;
  document["partial"] = result.partial();
  document["singular_values"] = result.values;
  document["errors"] = result.errors;
  const auto name = [](const std::string& path) { return path.empty() ? Json() : Json(path); };
  document["basis"] = command.inPlace ? Json(command.input.path) : name(command.basis);
  document["values"] = command.valuesGiven ? Json(command.values) : Json();
  document["coefficients"] = name(command.coefficients);
  document["plot"] = name(command.plot);
  document["seconds"] = seconds;
  return document;
}

void tell(const SvdCommand& command, const SvdResult& result, double seconds, Console& console) {
  const std::size_t last = static_cast<std::size_t>(result.kept) - 1;
  std::string text = "kept " + std::to_string(result.kept) + " of " +
                     std::to_string(result.vectors) + " vectors of " +
                     std::to_string(result.length) + " numbers, by " + methodName(result.method);
  if (result.method == SvdMethod::arpack)
    text += " in " + std::to_string(result.products) + " products";
  console.note(text + ", in " + duration(seconds));
  console.note("error of truncation " + roundedText(result.errors[last], 3) +
               (result.partial() ? ", relative to the values that were looked for" : ""));
  if (result.values.front() == 0)
    console.warn("all vectors are zero: any basis would do, and its vectors tell nothing");
  for (const std::string* path : {&command.basis, &command.coefficients, &command.plot})
    if (!path->empty() && *path != "-") console.note("wrote " + *path);
  if (command.inPlace) console.note("turned " + command.input.path + " into its basis");
}

/** Tells after a failure what has become of the vectors. */
void finishBeforeInPlace(Outputs& outputs, SvdResult& result) {
  try {
    outputs.finish(result);
  } catch (Failure& failure) {
    failure.hint = result.method == SvdMethod::arpack
                       ? "the vectors are unchanged"
                       : "the vectors are overwritten: the file holds all left singular vectors";
    throw;
  }
}

/**
 * Decomposes, and leaves all outputs. In place the others are published before the file changes,
 * or, with the direct solver that has used it up by then, before it loses its size: whatever stops
 * this, the vectors are not lost together with what was told of them.
 */
SvdResult decomposeInto(Outputs& outputs, Snapshots& snapshots, const SvdChoice& choice,
                        Console& console) {
  const int length = snapshots.set->getDim1();
  std::optional<InPlace> inPlace;
  if (choice.inPlace) inPlace.emplace(snapshots);
  SvdCalls calls;
  calls.check = [&] {
    if (snapshots.file) snapshots.file->check();
  };
  calls.start = [&](SvdResult& result) {
    if (inPlace)
      finishBeforeInPlace(outputs, result);
    else
      outputs.startBasis(result.kept, length);
  };
  calls.take = [&](int i, const double* values) {
    outputs.vector(values, length);
    if (inPlace) inPlace->vector(i, values);
  };
  SvdResult result = decompose(*snapshots.set, choice, console, calls);
  if (inPlace)
    inPlace->finish(result.kept);
  else
    outputs.finish(result);
  return result;
}

Failure outOfMemory() {
  return {
      ExitCode::failure, "out of memory",
      "--memory with less than the vectors takes them from a file; fewer of --keep or --largest "
      "need less beside them"};
}

/** Runs a step; want of memory ends with a hint that fits. */
template <class Step>
auto withMemory(Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    throw outOfMemory();
  } catch (const C_ZarelException& error) {
    if (library::isOutOfMemory(error)) throw outOfMemory();
    throw;
  }
}

void runSvd(const SvdCommand& command, Globals& globals) {
  checkChoice(command.choice);
  checkOutputs(command, globals);
  const SnapshotLayout layout = inspectSnapshots(command.input);
  if (command.inPlace) checkInPlace(layout, command);
  const double room = command.memory > 0 ? command.memory : halfOfMemory();
  const bool inCore = layout.bytes() <= room;
  SvdChoice choice = command.choice;
  choice.method = chosenMethod(command, layout, inCore);
  choice.inPlace = command.inPlace;
  if (!inCore)
    globals.console.note(sizeText(layout.bytes()) + " of vectors stay on a file; " +
                         sizeText(room) + " may be kept in memory");
  Outputs outputs(command, globals.force, globals.json);
  const auto begin = Clock::now();
  library::takeBlasBuffer();
  const SvdResult result = withMemory([&] {
    Snapshots snapshots = openSnapshots(command, layout, choice.method, inCore, globals.console);
    interrupt::check("nothing was written");
    return decomposeInto(outputs, snapshots, choice, globals.console);
  });
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  tell(command, result, seconds, globals.console);
  if (globals.json) printReport(svdReport(command, result, inCore, seconds));
  if (command.inPlace)
    interrupt::check("all was finished, as the vectors were overwritten already");
}

void addInputOptions(CLI::App& svd, SnapshotChoice& input) {
  svd.add_option("vectors", input.path,
                 "Vector set, .npy, raw or CSV file; - for CSV from a stream")
      ->required()
      ->type_name("VECTORS");
  addChoice(svd, "--format", formats(), "What the file is; found out from name and content:",
            [&input](int format) { input.format = static_cast<SnapshotFormat>(format); });
  svd.add_flag("--rows", input.rows,
               "The numbers of a raw file stand row after row, not vector after vector");
  svd.add_flag("--transpose", input.transpose, "The vectors are the rows of the table");
  addInteger(svd, "--vectors", input.vectors, "How many vectors a raw file holds", 1, INT_MAX)
      ->default_str("");
  addInteger(svd, "--length", input.length, "How long the vectors of a raw file are", 1, INT_MAX)
      ->default_str("");
}

void addChoiceOptions(CLI::App& svd, SvdCommand& command) {
  addChoice(svd, "--method", methods(), "Solver:", [&command](int method) {
    command.choice.method = static_cast<SvdMethod>(method);
  });
  CLI::Option* keep =
      addInteger(svd, "-k,--keep", command.choice.keep, "How many vectors to keep", 1, INT_MAX)
          ->default_str("");
  addReal(svd, "-t,--threshold", command.choice.threshold,
          "Keep as many as make the error of truncation as small as this", Range{0, 1, false})
      ->excludes(keep)
      ->default_str("1e-7");
  addInteger(svd, "--largest", command.choice.largest,
             "How many values arpack looks for; all but one, or those to keep", 1, INT_MAX)
      ->default_str("");
  svd.add_option_function<std::string>(
         "--memory",
         [&command](const std::string& text) { command.memory = readSize("--memory", text); },
         "How much of the vectors may be kept in memory, as 512M or 2G; half of the machine's")
      ->type_name("SIZE");
}

void addOutputOptions(CLI::App& svd, SvdCommand& command) {
  svd.add_option("-o,--output", command.basis, "Vector set file to write: the kept vectors")
      ->type_name("BASIS");
  svd.add_option_function<std::string>(
         "--values",
         [&command](const std::string& path) {
           command.values = path;
           command.valuesGiven = true;
         },
         "CSV file to write: singular values and the error of truncation after each")
      ->type_name("OUT.csv")
      ->default_str("-");
  svd.add_option("--coefficients", command.coefficients,
                 "CSV file to write: each vector as a combination of the kept ones, a row each")
      ->type_name("OUT.csv");
  svd.add_option("--plot,--svg", command.plot, "SVG picture to write: values and errors")
      ->type_name("OUT.svg");
  svd.add_flag("--in-place", command.inPlace,
               "Turn the input, a vector set file, into its basis; it is lost if that breaks off");
}

} // namespace

void addSvd(CLI::App& root, Globals& globals) {
  auto command = std::make_shared<SvdCommand>();
  CLI::App* svd = root.add_subcommand("svd", "Decompose a set of vectors");
  addInputOptions(*svd, command->input);
  addChoiceOptions(*svd, *command);
  addOutputOptions(*svd, *command);
  svd->footer(globalsFooter());
  svd->callback(
      [command, &globals] { globals.action = [command, &globals] { runSvd(*command, globals); }; });
}

} // namespace app
