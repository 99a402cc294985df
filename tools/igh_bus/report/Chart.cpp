#include "report/Chart.h"

#include "report/Html.h"
#include "text/Text.h"

#include <cmath>

namespace igh_bus {
namespace {

constexpr double SIZE = 1000;    // of the drawing, both ways; it is stretched
constexpr double TEXT_LINE = 15; // pixels

} // namespace

Chart::Chart(double height, const Axis& x, const Axis& y) : m_height(height), m_x(x), m_y(y) {}

std::string Chart::at(double x, double y) const {
  return format("%.4g %.4g", m_x.place(x) * SIZE, (1 - m_y.place(y)) * SIZE);
}

// x is a share of the width.
void Chart::text(double x, double yPixels, const char* anchor, int shift, const std::string& text,
                 const char* style) {
  m_texts += format("<text class=\"%s\" x=\"%.4g%%\" dx=\"%d\" y=\"%.4g\" text-anchor=\"%s\">", style,
                    x * 100, shift, yPixels, anchor) +
             escaped(text) + "</text>\n";
}

void Chart::axisX(const std::string& label) {
  for (const double tick : m_x.ticks()) {
    const double place = m_x.place(tick);
    m_drawing += format("<path class=\"grid\" d=\"M%.4g 0V%g\"/>\n", place * SIZE, SIZE);
    text(place, m_height + TEXT_LINE, place > 0.96 ? "end" : "middle", 0, tickText(tick), "tick");
  }
  text(0.5, m_height + 2.2 * TEXT_LINE, "middle", 0, label, "axis");
}

void Chart::axisY(const std::string& unit) {
  for (const double tick : m_y.ticks()) {
    const double place = 1 - m_y.place(tick);
    m_drawing += format("<path class=\"grid\" d=\"M0 %.4gH%g\"/>\n", place * SIZE, SIZE);
    text(0, place * m_height + 4, "end", -7, tickText(tick), "tick");
  }
  text(0, -9, "end", -7, unit, "axis");
}

void Chart::bars(const Points& heights, double barWidth, const char* style) {
  std::string path;
  for (const auto& [x, y] : heights)
    path += "M" + at(x, m_y.from) + "L" + at(x, y) + "L" + at(x + barWidth, y) + "L" +
            at(x + barWidth, m_y.from) + "z";
  m_drawing += format("<path class=\"%s\" d=\"", style) + path + "\"/>\n";
}

void Chart::line(const Points& points, const char* style) {
  std::string path;
  for (const auto& [x, y] : points)
    path += std::isnan(y) ? "" : (path.empty() ? "M" : "L") + at(x, y);
  if (path.empty())
    return;
  // The short end makes a dot of a single point.
  m_drawing += format("<path class=\"%s\" d=\"", style) + path + "h.1\"/>\n";
}

void Chart::area(const Points& lower, const Points& upper, const char* style) {
  auto outline = lower;
  outline.insert(outline.end(), upper.rbegin(), upper.rend());
  line(outline, style);
}

void Chart::box(double x0, double x1, double y0, double y1, const char* style) {
  m_drawing += format("<path class=\"%s\" d=\"M", style) + at(x0, y0) + "L" + at(x0, y1) + "L" + at(x1, y1) +
               "L" + at(x1, y0) + "z\"/>\n";
}

void Chart::dot(double x, double y, const char* style) {
  m_drawing += format("<path class=\"dot %s\" d=\"M", style) + at(x, y) + "h.1\"/>\n";
}

void Chart::label(double x, double y, const std::string& words) {
  const double place = m_x.place(x);
  const bool left = place > 0.5;
  text(place, (1 - m_y.place(y)) * m_height - 7, left ? "end" : "start", left ? -6 : 6, words, "note");
}

void Chart::vertical(double x, int row, const std::string& words) {
  const double place = m_x.place(x);
  const bool left = place > 0.6;
  m_drawing += format("<path class=\"mark\" d=\"M%.4g 0V%g\"/>\n", place * SIZE, SIZE);
  text(place, TEXT_LINE * (row + 1), left ? "end" : "start", left ? -5 : 5, words, "note");
}

void Chart::horizontal(double y, const std::string& words) {
  const double place = 1 - m_y.place(y);
  m_drawing += format("<path class=\"mark\" d=\"M0 %.4gH%g\"/>\n", place * SIZE, SIZE);
  text(1, place * m_height - 5, "end", -4, words, "note");
}

void Chart::laneLabel(double y, const std::string& words) {
  text(0, (1 - m_y.place(y)) * m_height + 4, "end", -7, words, "tick");
}

std::string Chart::svg(const std::string& id, const std::string& title,
                       const std::string& description) const {
  return format("<svg class=\"chart\" height=\"%g\" role=\"img\" aria-labelledby=\"%s-title %s-text\">",
                m_height, id.c_str(), id.c_str()) +
         "<title id=\"" + id + "-title\">" + escaped(title) + "</title><desc id=\"" + id + "-text\">" +
         escaped(description) + "</desc>\n" +
         format("<rect class=\"frame\" width=\"100%%\" height=\"%g\"/>\n<svg width=\"100%%\" height=\"%g\" "
                "viewBox=\"0 0 %g %g\" preserveAspectRatio=\"none\">\n",
                m_height, m_height, SIZE, SIZE) +
         m_drawing + "</svg>\n" + m_texts + "</svg>\n";
}

std::string figure(const std::string& title, const std::string& caption, const std::vector<Key>& keys,
                   const std::string& pictures) {
  std::string legend;
  for (const auto& [style, words] : keys)
    legend += format("<li><svg class=\"key\" viewBox=\"0 0 26 12\" aria-hidden=\"true\"><path class=\"%s\" "
                     "d=\"M1 %s\"/></svg>",
                     style, std::string(style).rfind("fill", 0) == 0 ? "1H25V11H1z" : "6H25") +
              escaped(words) + "</li>\n";
  return "<figure>\n<figcaption><strong>" + escaped(title) + "</strong> " + escaped(caption) +
         "</figcaption>\n" + (legend.empty() ? "" : "<ul class=\"legend\">\n" + legend + "</ul>\n") +
         pictures + "</figure>\n";
}

// What stays as it is needs no more points: so do most watched entries of a long bus.
Points steps(const std::vector<double>& starts, const std::vector<double>& values, double end) {
  Points points;
  for (std::size_t i = 0; i < starts.size() && i < values.size(); ++i) {
    const double until = i + 1 < starts.size() ? starts[i + 1] : end;
    if (points.empty() || points.back().second != values[i])
      points.insert(points.end(), {{starts[i], values[i]}, {until, values[i]}});
    points.back().first = until;
  }
  return points;
}

} // namespace igh_bus
