#include "report/HistogramLines.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace igh_bus {

void printHistogram(const Histogram& histogram) {
  std::printf("\n# Histogram\n");
  for (std::size_t place = 0; place < histogram.usedClasses(); ++place) {
    if (histogram.count(place) != 0)
      std::printf("%06zu %06" PRIu64 "\n", place, histogram.count(place));
  }
  std::printf("# Total: %09" PRIu64 "\n", histogram.samples());
  std::printf("# Min Latencies: %05.0f\n", std::floor(histogram.minimumUs()));
  std::printf("# Max Latencies: %05.0f\n", std::floor(histogram.maximumUs()));
  std::printf("# Histogram Overflows: %05" PRIu64 "\n", histogram.beyond());
}

} // namespace igh_bus
