#include "watch/Lines.h"

#include "bus/SlaveList.h"
#include "run/Verdict.h"
#include "text/Text.h"

#include <algorithm>
#include <cinttypes>
#include <numeric>

namespace igh_bus {

Lines::Lines(const RunOptions& options, const std::vector<FoundSlave>& slaves, const std::string& realTime)
    : m_options(options), m_slaves(slaves), m_realTime(realTime), m_processData(hasProcessData(slaves)) {
  for (const auto& watch : options.watches)
    m_types.push_back(&parseType(findEntry(*slaves[watch.slave].device, watch.entry).entry->type));
}

Page Lines::page(const LivePicture& picture, const std::vector<SlaveSight>& sights, bool errorsFirst) const {
  Page page{top(picture), {}};
  std::vector<std::size_t> order(m_slaves.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (errorsFirst)
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
      return picture.slaveErrors[left] > picture.slaveErrors[right];
    });
  page.scroll.push_back(
      {"  #  STATE              ERRORS  NAME                          STATUS", Style::heading});
  for (const auto number : order)
    page.scroll.push_back(slave(number, picture.slaveErrors[number], sights[number]));
  page.scroll.push_back({"  #  ENTRY                                   VALUE", Style::heading});
  for (std::size_t i = 0; i < m_options.watches.size(); ++i)
    page.scroll.push_back(
        {format("%3u  %-38s  %s", m_options.watches[i].slave, m_options.watches[i].entry.c_str(),
                valueText(*m_types[i], picture.values[i]).c_str())});
  return page;
}

std::vector<Line> Lines::top(const LivePicture& picture) const {
  ErrorCounts counts;
  counts.total = picture.errors;
  const auto errors = errorsText(counts, m_processData);
  return {{format("igh_bus watch  Master %u: %zu slaves, period %.10g us%s", unsigned{m_options.master},
                  m_slaves.size(), m_options.periodNs / 1e3, IGH_BUS_SIMULATED ? " (simulated bus)" : ""),
           Style::title},
          {format("States   %s, cycle %" PRIu64 ", left out %" PRIu64, stateText(picture.states).c_str(),
                  picture.cycles, picture.leftOut)},
          {format("Latency  %.1f us in the last second, worst %.1f us%s%s", picture.latencyUs,
                  picture.worstUs, m_realTime.empty() ? "" : ", not real-time: ", m_realTime.c_str())},
          {"Errors   " + errors, errors == "no errors" ? Style::plain : Style::bad}};
}

// Before the first look the states are those from which the run began.
Line Lines::slave(std::size_t slave, std::uint64_t errors, const SlaveSight& sight) const {
  const auto& info = m_slaves[slave].info;
  const bool seen = !sight.answers || sight.alState != 0;
  const bool troubled = seen && isTroubled(sight);
  return {format("%3zu  %-15s %9" PRIu64 "  %-28s  %s", slave,
                 sight.answers ? slaveStateText(seen ? sight.alState : info.al_state).c_str() : "-", errors,
                 *info.name ? info.name : "", troubled ? sightText(sight).c_str() : ""),
          troubled ? Style::bad : Style::plain};
}

Page Lines::help() {
  return {{{"igh_bus watch: keys", Style::title}},
          {{"Up, Down, PgUp, PgDn, Home, End   move the list"},
           {"F6, s                             slaves by errors, or as they lie on the bus"},
           {"Space                             hold the picture; the bus runs on"},
           {"Ctrl-L                            draw everything anew"},
           {"F1, h, ?                          this page, and back"},
           {"F10, q, Ctrl-C                    end the run in order"},
           {""},
           {"ERRORS counts what the library reported of a slave, STATUS says what is wrong with it now."},
           {"Latency is how late the cycle woke up: the worst of the last second, and of the run."}}};
}

} // namespace igh_bus
