/**
 * @file svg.h
 * Pictures as SVG. Colours come from CSS classes (`chartStyle`), so that the same picture reads on
 * a light and on a dark page.
 */
#ifndef ZAREL_APP_SVG_H
#define ZAREL_APP_SVG_H

#include "axis.h"

#include <functional>
#include <string>
#include <vector>

namespace app {

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

/** The chart as an SVG element for an HTML page. */
std::string inlineSvg(const Chart& chart, const std::string& title);

/** Charts beside and below each other in one SVG file that stands alone; rows of charts. */
std::string svgFile(const std::vector<std::vector<Chart>>& rows, const std::string& title);

/** What charts are made of. Classes are those of `chartStyle`. */
namespace svg {

/** A number in an attribute: tenths of a pixel are enough. */
std::string px(double value);
std::string text(double x, double y, const std::string& cls, const std::string& words);
std::string line(double x1, double y1, double x2, double y2, const std::string& cls);
std::string dot(double x, double y, double radius, const std::string& cls);

/** The plotting area of a chart with its two axes. */
struct Frame {
  double left, top, width, height;
  Axis xAxis, yAxis;

  double x(double value) const { return left + width * xAxis.position(value); }
  double y(double value) const { return top + height * (1 - yAxis.position(value)); }
  double bottom() const { return top + height; }
  double right() const { return left + width; }

  /** Lines at the ticks with their texts, and the axis below. */
  std::string grid(const std::function<std::string(double)>& yText) const;
};

} // namespace svg

} // namespace app

#endif
