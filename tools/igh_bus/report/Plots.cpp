#include "report/Plots.h"

#include <cmath>

namespace igh_bus {

Plots::Plots(std::size_t entries)
    : m_entries(entries), m_ranges(INTERVALS * entries), m_source(INTERVALS * entries) {}

void Plots::note(const double* values) {
  mergePair();
  const bool fresh = m_filled == m_width;
  if (fresh && m_used == INTERVALS) {
    m_ranges.swap(m_source);
    m_merged = 0;
    m_used = INTERVALS / 2;
    m_width *= 2;
  }
  if (fresh) {
    ++m_used;
    m_filled = 0;
  }
  ++m_filled;
  Range* const ranges = m_ranges.data() + (m_used - 1) * m_entries;
  for (std::size_t i = 0; i < m_entries; ++i) // what is no number leaves those that are
    ranges[i] = fresh
                    ? Range{values[i], values[i]}
                    : Range{std::fmin(ranges[i].minimum, values[i]), std::fmax(ranges[i].maximum, values[i])};
}

void Plots::mergePair() {
  if (m_merged == INTERVALS / 2)
    return;
  const Range* const first = m_source.data() + 2 * m_merged * m_entries;
  const Range* const second = first + m_entries;
  Range* const ranges = m_ranges.data() + m_merged++ * m_entries;
  for (std::size_t i = 0; i < m_entries; ++i)
    ranges[i] = {std::fmin(first[i].minimum, second[i].minimum),
                 std::fmax(first[i].maximum, second[i].maximum)};
}

void Plots::describe(std::size_t entry, nlohmann::ordered_json& plot) {
  while (m_merged != INTERVALS / 2)
    mergePair();
  for (const char* const key : {"cycles", "minimum", "maximum"})
    plot[key] = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < m_used; ++i) {
    const Range& range = m_ranges[i * m_entries + entry];
    plot["cycles"].push_back(i * m_width);
    plot["minimum"].push_back(range.minimum);
    plot["maximum"].push_back(range.maximum);
  }
}

} // namespace igh_bus
