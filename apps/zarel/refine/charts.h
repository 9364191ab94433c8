/**
 * @file charts.h
 * The pictures of a study.
 */
#ifndef ZAREL_APP_REFINE_CHARTS_H
#define ZAREL_APP_REFINE_CHARTS_H

#include "round_model.h"
#include "study.h"
#include "svg.h"

#include <string>
#include <vector>

namespace app::refine {

/** Predicted and validation errors against the number of samples, on a logarithmic scale. */
Chart errorChart(const std::vector<RoundRecord>& rounds, double target);

/** One output on the validation points: predicted against simulated, two standard errors as bars.
 */
Chart scatterChart(const Comparison& comparison, std::size_t output, const std::string& name);

/** How fast an output changes with each input: the kernel multipliers of one model as bars. */
Chart multiplierChart(const std::vector<double>& theta, const std::vector<std::string>& inputs);

/**
 * Singular values relative to the largest, and the error of truncation after each, on a logarithmic
 * scale, with a line behind the last vector that was kept.
 */
Chart screeChart(const std::vector<double>& values, const std::vector<double>& errors, int kept);

} // namespace app::refine

#endif
