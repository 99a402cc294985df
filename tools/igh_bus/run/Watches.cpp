#include "run/Watches.h"

namespace igh_bus {
namespace {

std::vector<std::string> namesOf(const std::vector<EntryAddress>& watches) {
  std::vector<std::string> names;
  names.reserve(watches.size());
  for (const auto& watch : watches)
    names.push_back(std::to_string(watch.slave) + ":" + watch.entry);
  return names;
}

std::uint32_t errorsOf(const ErrorCounts& errors, std::uint64_t cycle) {
  std::uint32_t bits = 0;
  for (std::size_t code = 0; code < errors.total.size(); ++code)
    bits |= errors.total[code] != 0 && errors.lastCycle[code] == cycle ? 1U << code : 0U;
  return bits;
}

} // namespace

Watches::Watches(const RunOptions& options) : m_values(options.watches.size()) {
  const RecordPlan plan{options.recordFile, options.recordEvery};
  if (!plan.path.empty()) {
    const double perSecond = 1e9 / options.periodNs / static_cast<double>(plan.every);
    m_recorder =
        std::make_unique<Recorder>(plan, namesOf(options.watches), rowsBetween(perSecond, m_values.size()));
  }
  if (!options.reportFolder.empty() && !m_values.empty())
    m_plots = std::make_unique<Plots>(m_values.size());
}

void Watches::note(std::uint64_t cycle, std::uint32_t states, const Session& session,
                   const Pacemaker& pacemaker) {
  if (m_live)
    m_live->note(states, session, pacemaker);
  if (!m_recorder && !m_plots)
    return;
  for (std::size_t i = 0; i < m_values.size(); ++i)
    m_values[i] = session.watched(i);
  if (m_recorder)
    m_recorder->note(
        {cycle, pacemaker.wokenNs(), pacemaker.latencyNs(), 0, states, errorsOf(session.errors(), cycle)},
        m_values.data());
  if (m_plots)
    m_plots->note(m_values.data());
}

std::optional<RecordResult> Watches::finish() {
  return m_recorder ? std::optional<RecordResult>(m_recorder->finish()) : std::nullopt;
}

nlohmann::ordered_json Watches::plots(const std::vector<EntryAddress>& watches,
                                      const std::vector<FoundSlave>& slaves) {
  auto list = nlohmann::ordered_json::array();
  for (std::size_t i = 0; m_plots && i < watches.size(); ++i) {
    const auto& [info, device] = slaves[watches[i].slave];
    list.push_back({{"slave", watches[i].slave},
                    {"slave_name", *info.name ? info.name : device->typeName},
                    {"entry", watches[i].entry}});
    m_plots->describe(i, list.back());
  }
  return list;
}

} // namespace igh_bus
