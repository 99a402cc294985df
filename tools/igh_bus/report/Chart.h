// Pictures in SVG: a frame with axes, and what is drawn into it.
#ifndef IGH_BUS_REPORT_CHART_H
#define IGH_BUS_REPORT_CHART_H

#include <string>
#include <vector>

namespace igh_bus {

struct Axis {
  double from;
  double to;
  bool logarithmic = false;
  // Where a value lies, 0 at `from` and 1 at `to`; held within.
  double place(double value) const;
  std::vector<double> ticks() const; // round values
};

// Coordinates of the methods are those of the axes.
class Chart {
public:
  static constexpr double WIDTH = 920;
  Chart(const std::string& title, double height, const Axis& x, const Axis& y);

  void axisX(const std::string& label);
  void axisY(const std::string& label);
  // From the lower end of the y axis up. Many bars make one element.
  void bars(const std::vector<std::pair<double, double>>& heights, double barWidth);
  void line(const std::vector<std::pair<double, double>>& points, const char* style);
  void band(const std::vector<std::pair<double, double>>& lower,
            const std::vector<std::pair<double, double>>& upper, const char* style);
  // A box of at least two pixels' width, with a text that shows when pointed at.
  void box(double x0, double x1, double y0, double y1, const char* style, const std::string& hint);
  void rowLabel(double y, const std::string& text);
  // A line of text in the upper right corner, further ones below it.
  void note(const std::string& text);
  std::string svg() const;

private:
  double px(double x) const;
  double py(double y) const;

  std::string m_title;
  double m_height;
  Axis m_x;
  Axis m_y;
  int m_notes = 0;
  std::string m_body;
};

// Text that stands for itself in HTML and SVG.
std::string escaped(const std::string& text);

} // namespace igh_bus

#endif
