/**
 * @file study_report.h
 * What a study has to show: the table of rounds, CSV files, one JSON document, and a page that a
 * person likes to look at.
 */
#ifndef ZAREL_APP_REFINE_STUDY_REPORT_H
#define ZAREL_APP_REFINE_STUDY_REPORT_H

#include "engine.h"
#include "report.h"
#include "settings.h"
#include "study.h"

#include <optional>
#include <string>

namespace app::refine {

/** All that a report draws from. */
struct ReportData {
  const Settings& settings;
  const Study& study;
  std::vector<ModelFacts> models;         ///< empty before the first fit
  const Comparison* comparison = nullptr; ///< null without validation points
  std::optional<Outcome> outcome;         ///< nothing while the study goes on
};

/** The first lines of the table of rounds. */
std::string tableHead(bool validation);
/** One line of the table. */
std::string tableRow(std::size_t round, const RoundRecord& record);

/** The study as JSON, behind the document's first fields. */
void addToDocument(Json& document, const ReportData& data);

/** A page that needs nothing else: pictures inside, no scripts. */
std::string htmlReport(const ReportData& data);
/** The pictures alone, as one SVG file. */
std::string svgReport(const ReportData& data);

/** All samples with the round that asked for them; and the failed points with their reasons. */
void writeSamples(const std::string& path, const Settings& settings, const Study& study);
void writeFailed(const std::string& path, const Settings& settings, const Study& study);

} // namespace app::refine

#endif
