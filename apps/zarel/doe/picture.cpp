#include "doe/picture.h"

#include "failure.h"
#include "number.h"

#include <algorithm>

namespace app::doe {

namespace {

using svg::dot;
using svg::Frame;
using svg::line;
using svg::px;
using svg::text;

constexpr double leftMargin = 64;
constexpr double topMargin = 58;
constexpr double bottomMargin = 26;
constexpr double gap = 8;
constexpr double padding = 7; // of a panel, so that points on the bounds stand whole

const char* dotClass(Origin origin) {
  switch (origin) {
  case Origin::centre:
    return "dot good";
  case Origin::kept:
    return "dot b";
  case Origin::drawn:
    break;
  }
  return "dot a";
}

std::string rectangle(const Frame& frame) {
  return "<rect class=\"panel\" x=\"" + px(frame.left - padding) + "\" y=\"" +
         px(frame.top - padding) + "\" width=\"" + px(frame.width + 2 * padding) + "\" height=\"" +
         px(frame.height + 2 * padding) + "\"/>\n";
}

/// A text cut to the room that there is, at about seven pixels a letter.
std::string fitting(const std::string& name, double room) {
  const auto letters = static_cast<std::size_t>(std::max(room / 7.5, 3.0));
  if (name.size() <= letters) return name;
  return name.substr(0, letters - 1) + "…";
}

/// The bounds and the middle.
Axis axisOf(const Variable& variable) {
  Axis axis;
  axis.low = variable.low;
  axis.high = variable.high;
  axis.ticks = {variable.low, 0.5 * variable.low + 0.5 * variable.high, variable.high};
  return axis;
}

/// Keeps the picture in its panel: points outside the bounds stand on the edge.
double inside(double value, const Axis& axis) {
  return std::clamp(value, axis.low, axis.high);
}

class Picture {
public:
  explicit Picture(const Design& design)
      : design_(design),
        factors_(design.variables.size()),
        cell_(std::clamp(760.0 / static_cast<double>(factors_), 48.0, 340.0)),
        radius_(std::clamp(cell_ / 65, 1.7, 4.0)) {
    for (const auto& point : design.away) {
      away_.emplace_back();
      for (std::size_t k = 0; k < factors_; ++k)
        away_.back().push_back(physicalValue(design.variables[k], point[k]));
    }
  }

  Chart chart() const {
    const double side = static_cast<double>(factors_) * (cell_ + gap) - gap;
    Chart chart{std::max(leftMargin + side + 20, 420.0), topMargin + side + bottomMargin, {}};
    chart.body += text(leftMargin, 18, "head", title()) + legend();
    for (std::size_t i = 0; i < factors_; ++i) {
      for (std::size_t j = 0; j < i; ++j)
        chart.body += pair(i, j);
      chart.body += diagonal(i);
    }
    return chart;
  }

private:
  std::string title() const {
    const auto count = [](std::size_t n, const char* what) {
      return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s");
    };
    std::string words = count(design_.coded.size(), "point") + " of " + count(factors_, "factor");
    if (design_.levels > 0) words += " at " + std::to_string(design_.levels) + " levels";
    return words;
  }

  std::string legend() const {
    double x = leftMargin + 5;
    std::string out;
    const auto entry = [&](std::size_t count, const std::string& cls, const std::string& words) {
      if (count == 0) return;
      out += dot(x, 36, 3.6, cls) + text(x + 9, 40, "tick", words);
      x += 24 + 6.2 * static_cast<double>(words.size());
    };
    entry(design_.count(Origin::drawn), dotClass(Origin::drawn), "drawn");
    entry(design_.count(Origin::centre), dotClass(Origin::centre), "centre");
    entry(design_.count(Origin::kept), dotClass(Origin::kept), "kept");
    entry(design_.away.size(), "dot hollow", "to stay away from");
    return out;
  }

  /// Where the panel of a row and a column plots, inside its padding.
  Frame frame(std::size_t i, std::size_t j) const {
    return {leftMargin + static_cast<double>(j) * (cell_ + gap) + padding,
            topMargin + static_cast<double>(i) * (cell_ + gap) + padding,
            cell_ - 2 * padding,
            cell_ - 2 * padding,
            axisOf(design_.variables[j]),
            axisOf(design_.variables[i])};
  }

  /// Ticks below the last row, with the bounds where there is room for them.
  std::string below(const Frame& frame) const {
    const double edge = frame.bottom() + padding;
    std::string out;
    for (double tick : frame.xAxis.ticks)
      out += line(frame.x(tick), edge, frame.x(tick), edge + 4, "axis");
    if (cell_ < 60) return out;
    return out + text(frame.left - 4, edge + 17, "tick", roundedText(frame.xAxis.low, 4)) +
           text(frame.right() + 4, edge + 17, "tick end", roundedText(frame.xAxis.high, 4));
  }

  std::string beside(const Frame& frame) const {
    const double edge = frame.left - padding;
    std::string out;
    for (double tick : frame.yAxis.ticks)
      out += line(edge - 4, frame.y(tick), edge, frame.y(tick), "axis");
    return out + text(edge - 7, frame.bottom() + 4, "tick end", roundedText(frame.yAxis.low, 4)) +
           text(edge - 7, frame.top + 4, "tick end", roundedText(frame.yAxis.high, 4));
  }

  std::string middles(const Frame& frame) const {
    const double x = frame.x(frame.xAxis.ticks[1]), y = frame.y(frame.yAxis.ticks[1]);
    return line(x, frame.top - padding, x, frame.bottom() + padding, "grid") +
           line(frame.left - padding, y, frame.right() + padding, y, "grid");
  }

  std::string mark(const Frame& frame, double x, double y, const std::string& cls) const {
    return dot(frame.x(inside(x, frame.xAxis)), frame.y(inside(y, frame.yAxis)), radius_, cls);
  }

  std::string pair(std::size_t i, std::size_t j) const {
    const Frame panel = frame(i, j);
    std::string out = rectangle(panel) + middles(panel);
    for (const auto& point : away_)
      out += mark(panel, point[j], point[i], "dot hollow");
    for (std::size_t p = design_.values.size(); p-- > 0;) // given points, which come first, on top
      out += mark(panel, design_.values[p][j], design_.values[p][i], dotClass(design_.origins[p]));
    if (i + 1 == factors_) out += below(panel);
    if (j == 0) out += beside(panel);
    return out;
  }

  /// The name, and a stroke for each value of the factor.
  std::string diagonal(std::size_t i) const {
    const Frame panel = frame(i, i);
    std::string out = rectangle(panel);
    for (const auto& point : design_.values) {
      const double x = panel.x(inside(point[i], panel.xAxis));
      out += line(x, panel.bottom() - panel.height / 5, x, panel.bottom(), "rug");
    }
    out += text(panel.left + panel.width / 2, panel.top + panel.height / 2, "middle",
                fitting(design_.variables[i].name, panel.width));
    if (i + 1 == factors_) out += below(panel);
    return out;
  }

  const Design& design_;
  std::size_t factors_;
  double cell_;
  double radius_;
  Points away_;
};

void checkSize(const Design& design) {
  const std::size_t factors = design.variables.size();
  if (factors > mostPictured)
    throw Failure(ExitCode::usage,
                  "a picture shows " + std::to_string(mostPictured) + " factors at most, not " +
                      std::to_string(factors),
                  "leave --svg out");
  const double pairs = 0.5 * static_cast<double>(factors * (factors - 1));
  const double dots = pairs * static_cast<double>(design.coded.size() + design.away.size());
  if (dots > mostDots)
    throw Failure(ExitCode::usage,
                  "a picture of so many points would hold " + numberText(dots) + " dots",
                  "leave --svg out, or draw fewer points");
}

} // namespace

Chart designChart(const Design& design) {
  checkSize(design);
  return Picture(design).chart();
}

} // namespace app::doe
