/**
 * @file charts.h
 * The pictures of a study as SVG groups. Colours come from CSS classes (`chartStyle`), so that the
 * same picture reads on a light and on a dark page.
 */
#ifndef ZAREL_APP_REFINE_CHARTS_H
#define ZAREL_APP_REFINE_CHARTS_H

#include "round_model.h"
#include "study.h"

#include <string>
#include <vector>

namespace app::refine {

/** A piece of a picture and the room it takes. */
struct Chart {
  double width = 0;
  double height = 0;
  std::string body; ///< SVG elements, in a box from (0, 0) to (width, height)
};

/** Text made safe for XML: markup escaped, control characters and broken UTF-8 replaced. */
std::string xmlText(const std::string& text);

/**
 * CSS rules for a light and for a dark page, from rules that name their colours @ink, @muted,
 * @grid, @page, @card, @a, @b, @good and @bad. No CSS variables: many viewers of SVG have none.
 */
std::string themed(const std::string& rules);

/** Colours and fonts of all charts, for a style element. */
std::string chartStyle();

/** Predicted and validation errors against the number of samples, on a logarithmic scale. */
Chart errorChart(const std::vector<RoundRecord>& rounds, double target);

/** One output on the validation points: predicted against simulated, two standard errors as bars.
 */
Chart scatterChart(const Comparison& comparison, std::size_t output, const std::string& name);

/** How fast an output changes with each input: the kernel multipliers of one model as bars. */
Chart multiplierChart(const std::vector<double>& theta, const std::vector<std::string>& inputs);

/** The chart as an SVG element for an HTML page. */
std::string inlineSvg(const Chart& chart, const std::string& title);

/** Charts beside and below each other in one SVG file that stands alone; rows of charts. */
std::string svgFile(const std::vector<std::vector<Chart>>& rows, const std::string& title);

} // namespace app::refine

#endif
