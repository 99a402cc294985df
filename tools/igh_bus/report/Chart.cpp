#include "report/Chart.h"

#include "text/Text.h"

#include <algorithm>
#include <cmath>

namespace igh_bus {
namespace {

constexpr double LEFT = 110;
constexpr double RIGHT = 30;
constexpr double TOP = 34;
constexpr double BOTTOM = 44;

} // namespace

std::string escaped(const std::string& text) {
  std::string safe;
  for (const char letter : text) {
    switch (letter) {
    case '&':
      safe += "&amp;";
      break;
    case '<':
      safe += "&lt;";
      break;
    case '>':
      safe += "&gt;";
      break;
    case '"':
      safe += "&quot;";
      break;
    default:
      safe += letter;
    }
  }
  return safe;
}

double Axis::place(double value) const {
  const double share = logarithmic ? std::log(std::max(value, from) / from) / std::log(to / from)
                                   : (value - from) / (to - from);
  return std::clamp(share, 0.0, 1.0);
}

std::vector<double> Axis::ticks() const {
  std::vector<double> places;
  if (logarithmic) {
    const int last = static_cast<int>(std::floor(std::log10(to)));
    for (int exponent = static_cast<int>(std::ceil(std::log10(from))); exponent <= last; ++exponent)
      places.push_back(std::pow(10, exponent));
    return places;
  }
  constexpr double WANTED = 8;
  const double rough = (to - from) / WANTED;
  const double decade = std::pow(10, std::floor(std::log10(rough)));
  const double step = decade * (rough > 5 * decade ? 10 : rough > 2 * decade ? 5 : rough > decade ? 2 : 1);
  const auto last = static_cast<long long>(std::floor(to / step));
  for (auto count = static_cast<long long>(std::ceil(from / step)); count <= last; ++count)
    places.push_back(static_cast<double>(count) * step);
  return places;
}

Chart::Chart(const std::string& title, double height, const Axis& x, const Axis& y)
    : m_title(title), m_height(height), m_x(x), m_y(y) {
  m_body = format("<rect class=\"frame\" x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\"/>\n", LEFT, TOP,
                  WIDTH - LEFT - RIGHT, m_height - TOP - BOTTOM);
}

double Chart::px(double x) const {
  return LEFT + m_x.place(x) * (WIDTH - LEFT - RIGHT);
}

double Chart::py(double y) const {
  return m_height - BOTTOM - m_y.place(y) * (m_height - TOP - BOTTOM);
}

void Chart::axisX(const std::string& label) {
  for (const double tick : m_x.ticks())
    m_body += format("<path class=\"grid\" d=\"M%.1f %gV%g\"/><text x=\"%.1f\" y=\"%g\" "
                     "text-anchor=\"middle\">%.10g</text>\n",
                     px(tick), TOP, m_height - BOTTOM, px(tick), m_height - BOTTOM + 16, tick);
  m_body += format("<text x=\"%g\" y=\"%g\" text-anchor=\"middle\">%s</text>\n", (LEFT + WIDTH - RIGHT) / 2,
                   m_height - 8, escaped(label).c_str());
}

void Chart::axisY(const std::string& label) {
  for (const double tick : m_y.ticks())
    m_body += format("<path class=\"grid\" d=\"M%g %.1fH%g\"/><text x=\"%g\" y=\"%.1f\" "
                     "text-anchor=\"end\">%.10g</text>\n",
                     LEFT, py(tick), WIDTH - RIGHT, LEFT - 6, py(tick) + 4, tick);
  m_body += format("<text transform=\"translate(18 %g) rotate(-90)\" text-anchor=\"middle\">%s</text>\n",
                   (TOP + m_height - BOTTOM) / 2, escaped(label).c_str());
}

void Chart::bars(const std::vector<std::pair<double, double>>& heights, double barWidth) {
  const double base = m_height - BOTTOM;
  std::string path;
  for (const auto& [x, y] : heights) {
    const double from = px(x);
    const double wide = std::max(px(x + barWidth) - from, 1.0); // a single sample must be seen
    path += format("M%.1f %.1fV%.1fh%.1fV%.1fz", from, base, py(y), wide, base);
  }
  m_body += "<path class=\"bars\" d=\"" + path + "\"/>\n";
}

void Chart::line(const std::vector<std::pair<double, double>>& points, const char* style) {
  std::string path;
  for (const auto& [x, y] : points)
    path += format("%c%.1f %.1f", path.empty() ? 'M' : 'L', px(x), py(y));
  // The short end makes a dot of a single point.
  m_body += format("<path class=\"%s\" d=\"", style) + path + "h.1\"/>\n";
}

void Chart::band(const std::vector<std::pair<double, double>>& lower,
                 const std::vector<std::pair<double, double>>& upper, const char* style) {
  auto outline = lower;
  outline.insert(outline.end(), upper.rbegin(), upper.rend());
  line(outline, style);
}

void Chart::box(double x0, double x1, double y0, double y1, const char* style, const std::string& hint) {
  m_body += format("<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"><title>", style,
                   px(x0), py(y1), std::max(px(x1) - px(x0), 2.0), py(y0) - py(y1)) +
            escaped(hint) + "</title></rect>\n";
}

void Chart::rowLabel(double y, const std::string& text) {
  m_body += format("<text x=\"%g\" y=\"%.1f\" text-anchor=\"end\">", LEFT - 6, py(y) + 4) + escaped(text) +
            "</text>\n";
}

void Chart::note(const std::string& text) {
  constexpr double LINE_HEIGHT = 16;
  m_body += format("<text class=\"note\" x=\"%g\" y=\"%g\" text-anchor=\"end\">", WIDTH - RIGHT - 8,
                   TOP + LINE_HEIGHT * ++m_notes) +
            escaped(text) + "</text>\n";
}

std::string Chart::svg() const {
  return format("<svg viewBox=\"0 0 %g %g\" role=\"img\" aria-label=\"", WIDTH, m_height) + escaped(m_title) +
         format("\">\n<text class=\"title\" x=\"%g\" y=\"20\">", LEFT) + escaped(m_title) + "</text>\n" +
         m_body + "</svg>\n";
}

} // namespace igh_bus
