#include "charts.h"

#include "axis.h"
#include "number.h"
#include "svg.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace app::refine {
namespace {

using svg::dot;
using svg::Frame;
using svg::line;
using svg::px;
using svg::text;

/// One line of the error chart.
struct Series {
  std::string label;
  std::string cls;
  std::vector<std::pair<double, double>> points; ///< samples, error
  bool strong = true;
};

Series makeSeries(const std::vector<RoundRecord>& rounds, const std::string& label,
                  const std::string& cls, bool strong,
                  const std::function<double(const RoundRecord&)>& value) {
  Series series{label, cls, {}, strong};
  for (const RoundRecord& round : rounds) {
    const double v = value(round);
    if (std::isfinite(v) && v > 0) series.points.emplace_back(round.samples, v);
  }
  return series;
}

std::vector<Series> errorSeries(const std::vector<RoundRecord>& rounds) {
  const auto validation = [](double Validation::*field) {
    return [field](const RoundRecord& r) {
      return r.validation ? (*r.validation).*field : std::nan("");
    };
  };
  std::vector<Series> all{
      makeSeries(rounds, "predicted, largest", "a", true,
                 [](const RoundRecord& r) { return r.predictedError; }),
      makeSeries(rounds, "predicted, typical", "a", false,
                 [](const RoundRecord& r) { return r.predictedRms; }),
      makeSeries(rounds, "validation, largest", "b", true, validation(&Validation::largestError)),
      makeSeries(rounds, "validation, typical", "b", false, validation(&Validation::rmsError))};
  all.erase(
      std::remove_if(all.begin(), all.end(), [](const Series& s) { return s.points.empty(); }),
      all.end());
  return all;
}

std::string polyline(const Frame& frame, const Series& series) {
  std::string out =
      "<polyline class=\"line " + series.cls + (series.strong ? "" : " thin") + "\" points=\"";
  for (const auto& [samples, error] : series.points)
    out += px(frame.x(samples)) + ',' + px(frame.y(error)) + ' ';
  out.back() = '"';
  out += "/>\n";
  for (const auto& [samples, error] : series.points)
    out += dot(frame.x(samples), frame.y(error), series.strong ? 3.5 : 2.5,
               "dot " + series.cls + (series.strong ? "" : " thin"));
  return out;
}

/// Labels at the right end of each line, pushed apart where they would overlap.
std::string endLabels(const Frame& frame, const std::vector<Series>& all) {
  constexpr double spacing = 30;
  std::vector<std::pair<double, const Series*>> labels;
  for (const Series& series : all)
    labels.emplace_back(frame.y(series.points.back().second), &series);
  std::sort(labels.begin(), labels.end());
  for (std::size_t i = 1; i < labels.size(); ++i)
    labels[i].first = std::max(labels[i].first, labels[i - 1].first + spacing);
  double limit = frame.bottom() - 12;
  for (auto label = labels.rbegin(); label != labels.rend(); ++label) {
    label->first = std::min(label->first, limit);
    limit = label->first - spacing;
  }
  std::string out;
  for (const auto& [y, series] : labels) {
    out += text(frame.right() + 12, y, "label " + series->cls, series->label);
    out += text(frame.right() + 12, y + 14, "tick", percentText(series->points.back().second));
  }
  return out;
}

std::pair<double, double> errorRange(const std::vector<Series>& all, double target) {
  double low = std::numeric_limits<double>::infinity(), high = 0;
  for (const Series& series : all)
    for (const auto& point : series.points) {
      low = std::min(low, point.second);
      high = std::max(high, point.second);
    }
  if (target > 0 && high > 0 && target > low / 100) {
    low = std::min(low, target);
    high = std::max(high, target);
  }
  return high > 0 ? std::make_pair(low, high) : std::make_pair(0.01, 1.0);
}

/// The range of simulated and predicted values of an output, without the error bars.
std::pair<double, double> valueRange(const Comparison& comparison, std::size_t output) {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (const auto* rows : {&comparison.simulated, &comparison.predicted})
    for (const Row& row : *rows)
      if (std::isfinite(row[output])) {
        low = std::min(low, row[output]);
        high = std::max(high, row[output]);
      }
  return low <= high ? std::make_pair(low, high) : std::make_pair(0.0, 1.0);
}

std::string errorBar(const Frame& frame, double simulated, double predicted, double error) {
  const double top = std::min(predicted + 2 * error, frame.yAxis.high);
  const double bottom = std::max(predicted - 2 * error, frame.yAxis.low);
  if (!std::isfinite(error) || !(top > bottom)) return {};
  return line(frame.x(simulated), frame.y(top), frame.x(simulated), frame.y(bottom), "bar a");
}

} // namespace

Chart screeChart(const std::vector<double>& values, const std::vector<double>& errors, int kept) {
  Chart chart{1060, 400, {}};
  std::vector<Series> all{{"singular values", "a", {}, true},
                          {"error when cut there", "b", {}, true}};
  constexpr double rounding = 1e-17; // below that there is rounding alone
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = static_cast<double>(i) + 1, value = values[i] / values.front();
    if (value > rounding) all[0].points.emplace_back(x, value);
    if (errors[i] > rounding) all[1].points.emplace_back(x, errors[i]);
  }
  all.erase(
      std::remove_if(all.begin(), all.end(), [](const Series& s) { return s.points.empty(); }),
      all.end());
  const auto [low, high] = errorRange(all, 0);
  const double last = std::max<double>(2, static_cast<double>(values.size()));
  Frame frame{64, 44, 830, 296, linearAxis(1, last, 8), logAxis(low, high)};
  frame.xAxis.low = 1;
  frame.xAxis.high = last;
  auto& ticks = frame.xAxis.ticks;
  ticks.erase(std::remove_if(ticks.begin(), ticks.end(),
                             [&](double t) { return t < 1 || t > last || t != std::floor(t); }),
              ticks.end());
  chart.body += text(0, 18, "head", "Singular values relative to the largest");
  chart.body += frame.grid(percentText);
  chart.body += text(frame.left + frame.width / 2, frame.bottom() + 40, "tick middle", "number");
  if (kept > 0) {
    const double x = frame.x(std::min<double>(kept, last));
    chart.body += line(x, frame.top, x, frame.bottom(), "target");
    chart.body += text(x + 6, frame.top + 12, "good", std::to_string(kept) + " kept");
  }
  for (const Series& series : all)
    chart.body += polyline(frame, series);
  chart.body += endLabels(frame, all);
  return chart;
}

Chart errorChart(const std::vector<RoundRecord>& rounds, double target) {
  Chart chart{1060, 400, {}};
  const std::vector<Series> all = errorSeries(rounds);
  const auto [low, high] = errorRange(all, target);
  const int first = rounds.empty() ? 0 : rounds.front().samples;
  const int last = rounds.empty() ? 1 : std::max(rounds.back().samples, first + 1);
  Frame frame{64, 44, 830, 296, linearAxis(first, last, 8), logAxis(low, high)};
  frame.xAxis.low = first;
  frame.xAxis.high = last;
  auto& ticks = frame.xAxis.ticks;
  ticks.erase(std::remove_if(ticks.begin(), ticks.end(),
                             [&](double t) { return t < first || t > last || t != std::floor(t); }),
              ticks.end());
  chart.body += text(0, 18, "head", "Relative error against the number of samples");
  chart.body += frame.grid(percentText);
  chart.body += text(frame.left + frame.width / 2, frame.bottom() + 40, "tick middle", "samples");
  if (target >= frame.yAxis.low && target <= frame.yAxis.high) {
    chart.body += line(frame.left, frame.y(target), frame.right(), frame.y(target), "target");
    chart.body +=
        text(frame.left + 6, frame.y(target) - 6, "good", "target " + percentText(target));
  }
  for (const Series& series : all)
    chart.body += polyline(frame, series);
  chart.body += endLabels(frame, all);
  return chart;
}

Chart scatterChart(const Comparison& comparison, std::size_t output, const std::string& name) {
  Chart chart{340, 350, {}};
  const auto [low, high] = valueRange(comparison, output);
  const Axis axis = linearAxis(low, high, 4);
  const Frame frame{64, 56, 252, 244, axis, axis};
  const double r2 = comparison.measures.r2[output];
  chart.body += text(0, 18, "head", name);
  chart.body += text(frame.right(), 18, "tick end", "R² = " + roundedText(r2, 5));
  chart.body += frame.grid(tickText);
  chart.body += line(frame.left, frame.bottom(), frame.right(), frame.top, "ideal");
  for (std::size_t i = 0; i < comparison.simulated.size(); ++i)
    chart.body += errorBar(frame, comparison.simulated[i][output], comparison.predicted[i][output],
                           comparison.error[i][output]);
  for (std::size_t i = 0; i < comparison.simulated.size(); ++i)
    if (std::isfinite(comparison.predicted[i][output]))
      chart.body += dot(frame.x(comparison.simulated[i][output]),
                        frame.y(comparison.predicted[i][output]), 2.8, "dot a");
  chart.body += text(frame.left + frame.width / 2, frame.bottom() + 40, "tick middle", "simulated");
  chart.body += text(0, 36, "tick", "predicted");
  return chart;
}

Chart multiplierChart(const std::vector<double>& theta, const std::vector<std::string>& inputs) {
  constexpr double rowHeight = 20, barLeft = 110, barWidth = 130;
  const bool shared = theta.size() != inputs.size();
  Chart chart{330, rowHeight * static_cast<double>(theta.size()) + 6, {}};
  double largest = 0;
  for (double value : theta)
    largest = std::max(largest, value);
  for (std::size_t i = 0; i < theta.size(); ++i) {
    const double y = rowHeight * static_cast<double>(i);
    const double width = largest > 0 ? std::max(1.0, barWidth * theta[i] / largest) : 0;
    chart.body += text(barLeft - 8, y + 14, "end", shared ? "all inputs" : inputs[i]);
    chart.body += "<rect class=\"box\" x=\"" + px(barLeft) + "\" y=\"" + px(y + 4) + "\" width=\"" +
                  px(width) + "\" height=\"12\" rx=\"2\"/>\n";
    chart.body += text(barLeft + width + 6, y + 14, "tick", roundedText(theta[i], 4));
  }
  return chart;
}

} // namespace app::refine
