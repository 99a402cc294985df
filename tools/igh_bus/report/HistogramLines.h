#ifndef IGH_BUS_REPORT_HISTOGRAM_LINES_H
#define IGH_BUS_REPORT_HISTOGRAM_LINES_H

#include "report/Histogram.h"

namespace igh_bus {

// In the form of cyclictest -h, so that what reads the one reads the other: a line "000012 000345" for each
// microsecond in use, then total, minimum, maximum and what was longer than all classes as comments.
void printHistogram(const Histogram& histogram);

} // namespace igh_bus

#endif
