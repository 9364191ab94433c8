/**
 * @file model_file.h
 * Model files: a list of models as the library writes it, and behind it the program's notes: the
 * names of the columns, and what a fit needs that the library does not store. The layout is told
 * in docs/formats/program.md. Files without notes, such as a host writes, are read too.
 */
#ifndef ZAREL_APP_MODEL_FILE_H
#define ZAREL_APP_MODEL_FILE_H

#include "model_options.h"
#include "output_file.h"
#include "report.h"

#include <string>
#include <vector>
#include <zarel/KrigingList.h>

namespace app {

/** What stands behind the list. */
struct ModelNotes {
  std::vector<std::string> inputs;  ///< names
  std::vector<std::string> outputs; ///< names, in the order of the list's columns
  double dropTolerance = ModelOptions().dropTolerance;
  double lowerBound = ModelOptions().lowerBound;
  double upperBound = ModelOptions().upperBound;
  bool stored = false; ///< false when the file had none and the names were made up
};

/** Names "x1", "x2", ... or the like. */
std::vector<std::string> numberedNames(const std::string& stem, std::size_t count);

/**
 * Writes list and notes; the output is not committed.
 * Throws `numerical` if a model is not solved, `io` if a write fails.
 */
void writeModel(OutputFile& output, KrigingList<double>& list, const ModelNotes& notes);

/**
 * Writes a model file and commits it: the former file stays whole until the new one is on disk.
 */
void saveModel(const std::string& path, bool force, KrigingList<double>& list,
               const ModelNotes& notes);

/**
 * Reads a model file, or standard input for `-`. The drop tolerance and the bounds of the notes
 * are given to the models.
 * Throws `io` if it cannot be read, `badInput` if it is cut short, damaged or no model file.
 */
void readModel(const std::string& path, KrigingList<double>& list, ModelNotes& notes);

} // namespace app

#endif
