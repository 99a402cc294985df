// The course of each watched entry over a whole run, as lowest and highest value of intervals.
#ifndef IGH_BUS_REPORT_PLOTS_H
#define IGH_BUS_REPORT_PLOTS_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace igh_bus {

class Plots {
public:
  static constexpr std::size_t INTERVALS = 1000;

  explicit Plots(std::size_t entries);

  // One cycle, the first one being number 0. Takes the same time in each, and allocates nothing.
  void note(const double* values);

  // Adds "cycles", the first cycle of each interval, "minimum" and "maximum".
  void describe(std::size_t entry, nlohmann::ordered_json& plot);

private:
  struct Range {
    double minimum;
    double maximum;
  };
  void mergePair();

  std::size_t m_entries;
  std::vector<Range> m_ranges; // the entries of an interval side by side
  // A full table becomes the source of one with intervals of twice the length, which takes it over bit by
  // bit: all at once would hold up one cycle.
  std::vector<Range> m_source;
  std::size_t m_merged = INTERVALS / 2; // intervals taken over
  std::size_t m_used = 0;
  std::uint64_t m_width = 1;  // cycles of an interval
  std::uint64_t m_filled = 1; // cycles of the last one
};

} // namespace igh_bus

#endif
