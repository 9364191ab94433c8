#include "svg.h"

#include "number.h"
#include "report.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace app {

namespace {

/// The colours by name, on a light and on a dark page.
struct Colour {
  const char* name;
  const char* light;
  const char* dark;
};

constexpr Colour colours[] = {
    {"ink", "#1b2330", "#e7eaf0"},  {"muted", "#667085", "#97a1b0"}, {"grid", "#e4e7ec", "#2a313d"},
    {"page", "#ffffff", "#10141b"}, {"card", "#f8f9fb", "#171c25"},  {"a", "#2563c9", "#7fb0ff"},
    {"b", "#c2570c", "#ffad66"},    {"good", "#177245", "#6fd39b"},  {"bad", "#b42318", "#ff8a80"}};

const char* const chartRules = R"(
svg text { font: 12px system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; fill: @ink; }
svg text.tick { fill: @muted; font-size: 11px; }
svg text.head { font-size: 14px; font-weight: 600; }
svg text.end { text-anchor: end; }
svg text.middle { text-anchor: middle; }
svg .grid { stroke: @grid; }
svg .axis { stroke: @muted; }
svg .ideal { stroke: @muted; stroke-dasharray: 4 4; }
svg .target { stroke: @good; stroke-width: 1.5; stroke-dasharray: 6 4; }
svg text.good { fill: @good; }
svg .line { fill: none; stroke-width: 2.2; stroke-linejoin: round; }
svg .line.a { stroke: @a; } svg .line.b { stroke: @b; }
svg .line.thin { stroke-width: 1.2; stroke-opacity: .65; }
svg .dot { stroke: @page; stroke-width: 1; }
svg .dot.a { fill: @a; } svg .dot.b { fill: @b; } svg .dot.good { fill: @good; }
svg .dot.hollow { fill: none; stroke: @muted; }
svg .panel { fill: none; stroke: @muted; stroke-opacity: .6; }
svg .rug { stroke: @a; stroke-opacity: .5; }
svg .dot.thin { fill-opacity: .75; }
svg text.label.a { fill: @a; font-weight: 600; } svg text.label.b { fill: @b; font-weight: 600; }
svg .bar.a { stroke: @a; stroke-opacity: .45; stroke-width: 1.4; }
svg .box { fill: @a; fill-opacity: .8; }
svg .page { fill: @page; }
)";

/// Replaces a name that is not part of a longer one.
void replaceAll(std::string& text, const std::string& name, const std::string& by) {
  for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
    const auto after = at + name.size();
    if (after < text.size() && std::isalnum(static_cast<unsigned char>(text[after])))
      at = after;
    else
      text.replace(at, name.size(), by);
  }
}

} // namespace

std::string xmlText(const std::string& words) {
  std::string out;
  // The JSON writer replaces what is not UTF-8; its text is then escaped for XML.
  const std::string quoted = Json(words).dump(-1, ' ', false, Json::error_handler_t::replace);
  const std::string clean = Json::parse(quoted).get<std::string>();
  for (char c : clean) {
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else if (c == '"')
      out += "&quot;";
    else
      out += static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t' ? ' ' : c;
  }
  return out;
}

std::string themed(const std::string& rules) {
  std::string light = rules, dark = rules;
  for (const Colour& colour : colours) {
    replaceAll(light, std::string("@") + colour.name, colour.light);
    replaceAll(dark, std::string("@") + colour.name, colour.dark);
  }
  return light + "@media (prefers-color-scheme: dark) {" + dark + "}\n";
}

std::string chartStyle() {
  return themed(chartRules);
}

std::string inlineSvg(const Chart& chart, const std::string& title) {
  return "<svg viewBox=\"0 0 " + svg::px(chart.width) + ' ' + svg::px(chart.height) +
         "\" width=\"" + svg::px(chart.width) + "\" role=\"img\" aria-label=\"" + xmlText(title) +
         "\">\n" + chart.body + "</svg>\n";
}

std::string svgFile(const std::vector<std::vector<Chart>>& rows, const std::string& title) {
  constexpr double margin = 24, gap = 20;
  double width = 0, y = margin;
  std::string body;
  for (const auto& row : rows) {
    double x = margin, height = 0;
    for (const Chart& chart : row) {
      body += "<g transform=\"translate(" + svg::px(x) + ' ' + svg::px(y) + ")\">\n" + chart.body +
              "</g>\n";
      x += chart.width + gap;
      height = std::max(height, chart.height);
    }
    width = std::max(width, x - gap + margin);
    y += height + gap;
  }
  const std::string size = svg::px(width) + ' ' + svg::px(y - gap + margin);
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
         "viewBox=\"0 0 " +
         size + "\" role=\"img\">\n<title>" + xmlText(title) + "</title>\n<style>\n" +
         chartStyle() +
         "</style>\n<rect class=\"page\" width=\"100%\" "
         "height=\"100%\"/>\n" +
         body + "</svg>\n";
}

namespace svg {

std::string px(double value) {
  return roundedText(std::round(10 * value) / 10, 7);
}

std::string text(double x, double y, const std::string& cls, const std::string& words) {
  return "<text x=\"" + px(x) + "\" y=\"" + px(y) + "\" class=\"" + cls + "\"" + ">" +
         xmlText(words) + "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2, const std::string& cls) {
  return "<line x1=\"" + px(x1) + "\" y1=\"" + px(y1) + "\" x2=\"" + px(x2) + "\" y2=\"" + px(y2) +
         "\" class=\"" + cls + "\"/>\n";
}

std::string dot(double x, double y, double radius, const std::string& cls) {
  return "<circle cx=\"" + px(x) + "\" cy=\"" + px(y) + "\" r=\"" + px(radius) + "\" class=\"" +
         cls + "\"/>\n";
}

std::string Frame::grid(const std::function<std::string(double)>& yText) const {
  std::string out;
  for (double tick : yAxis.ticks) {
    out += line(left, y(tick), right(), y(tick), "grid");
    out += text(left - 8, y(tick) + 4, "tick end", yText(tick));
  }
  for (double tick : xAxis.ticks) {
    out += line(x(tick), bottom(), x(tick), bottom() + 4, "axis");
    out += text(x(tick), bottom() + 18, "tick middle", tickText(tick));
  }
  return out + line(left, bottom(), right(), bottom(), "axis");
}

} // namespace svg

} // namespace app
