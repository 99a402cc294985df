#ifndef IGH_BUS_REPORT_AXIS_H
#define IGH_BUS_REPORT_AXIS_H

#include <string>
#include <vector>

namespace igh_bus {

struct Axis {
  // Symmetric: as a logarithm to both sides of 0, evenly between -10 and 10.
  enum Scale { linear, logarithmic, symmetric };
  double from;
  double to;
  Scale scale = linear;

  // Where a value lies, 0 at `from` and 1 at `to`; held within.
  double place(double value) const;
  // Round values, few enough for their texts to stand side by side on a telephone.
  std::vector<double> ticks() const;
};

// A linear axis that holds all of these with some room.
Axis around(double lowest, double highest);

// "1.2M" for 1200000.
std::string tickText(double value);

} // namespace igh_bus

#endif
