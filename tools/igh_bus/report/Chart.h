// Pictures in SVG. What is drawn stretches with the width of the page, while texts and lines keep their size:
// the same picture is read on a telephone, a screen and paper.
#ifndef IGH_BUS_REPORT_CHART_H
#define IGH_BUS_REPORT_CHART_H

#include "report/Axis.h"

#include <string>
#include <utility>
#include <vector>

namespace igh_bus {

using Points = std::vector<std::pair<double, double>>;

// Coordinates of the methods are those of the axes; styles are classes of the style sheet.
class Chart {
public:
  Chart(double height, const Axis& x, const Axis& y);

  void axisX(const std::string& label);
  void axisY(const std::string& unit);
  // From the lower end of the y axis up. Many bars make one element.
  void bars(const Points& heights, double barWidth, const char* style);
  void line(const Points& points, const char* style);
  void area(const Points& lower, const Points& upper, const char* style);
  void box(double x0, double x1, double y0, double y1, const char* style);
  void dot(double x, double y, const char* style);
  // Beside its place, on the side where there is more room.
  void label(double x, double y, const std::string& text);
  // Across the picture, with a text; `row` counts texts from the top.
  void vertical(double x, int row, const std::string& text);
  void horizontal(double y, const std::string& text);
  void laneLabel(double y, const std::string& text);
  // `id` is that of no other picture; title and description are for those who cannot see it.
  std::string svg(const std::string& id, const std::string& title, const std::string& description) const;

private:
  std::string at(double x, double y) const;
  void text(double x, double yPixels, const char* anchor, int shift, const std::string& text,
            const char* style);

  double m_height;
  Axis m_x;
  Axis m_y;
  std::string m_drawing;
  std::string m_texts;
};

struct Key {
  const char* style;
  std::string text;
};

// A picture with its caption and, where there are any, the keys of its styles.
std::string figure(const std::string& title, const std::string& caption, const std::vector<Key>& keys,
                   const std::string& pictures);

// A line that is level for each interval, the last of which ends at `end`.
Points steps(const std::vector<double>& starts, const std::vector<double>& values, double end);

} // namespace igh_bus

#endif
