#include "run/LiveValues.h"

#include <algorithm>

namespace igh_bus {
namespace {

constexpr std::uint64_t TENTH_NS = 100000000;

// Of a row: these, the errors by code, those of each slave, the values.
enum Place : std::size_t { cycles, states, leftOut, latency, worst, firstError };
constexpr std::size_t FIRST_SLAVE = firstError + std::tuple_size_v<decltype(LivePicture::errors)>;

std::uint64_t sumOf(const std::array<SlaveErrorCount, 6>& counts) {
  std::uint64_t sum = 0;
  for (const auto& count : counts)
    sum += count.count;
  return sum;
}

} // namespace

LiveValues::LiveValues(const RunOptions& options, std::size_t slaves)
    : m_cyclesPerPicture((TENTH_NS + options.periodNs - 1) / options.periodNs), m_slaves(slaves),
      m_watches(options.watches.size()), m_row(FIRST_SLAVE + m_slaves + m_watches) {}

void LiveValues::note(std::uint32_t alStates, const Session& session, const Pacemaker& pacemaker) {
  m_tenths[m_tenth] = std::max(m_tenths[m_tenth], pacemaker.latencyNs());
  if (session.cycles() % m_cyclesPerPicture != 0)
    return;
  handOver(alStates, session, pacemaker);
  m_tenth = (m_tenth + 1) % m_tenths.size();
  m_tenths[m_tenth] = 0;
}

void LiveValues::handOver(std::uint32_t alStates, const Session& session, const Pacemaker& pacemaker) {
  m_row.begin();
  m_row.put(cycles, session.cycles());
  m_row.put(states, std::uint64_t{alStates});
  m_row.put(leftOut, pacemaker.leftOut());
  m_row.put(latency, *std::max_element(m_tenths.begin(), m_tenths.end()));
  m_row.put(worst, pacemaker.latestNs());
  for (std::size_t code = 0; code < session.errors().total.size(); ++code)
    m_row.put(firstError + code, session.errors().total[code]);
  for (std::size_t slave = 0; slave < m_slaves; ++slave)
    m_row.put(FIRST_SLAVE + slave, sumOf(session.errors().bySlave[slave]));
  for (std::size_t i = 0; i < m_watches; ++i)
    m_row.put(FIRST_SLAVE + m_slaves + i, session.watched(i));
  m_row.end();
}

LivePicture LiveValues::picture() const {
  std::vector<std::uint64_t> row;
  m_row.read(row);
  const auto us = [&](std::size_t place) {
    return static_cast<double>(Handover::as<std::int64_t>(row[place])) / 1e3;
  };
  LivePicture picture;
  picture.cycles = row[cycles];
  picture.states = static_cast<std::uint32_t>(row[states]);
  picture.leftOut = row[leftOut];
  picture.latencyUs = us(latency);
  picture.worstUs = us(worst);
  std::copy_n(row.begin() + firstError, picture.errors.size(), picture.errors.begin());
  const auto slaves = row.begin() + FIRST_SLAVE;
  const auto values = slaves + static_cast<std::ptrdiff_t>(m_slaves);
  picture.slaveErrors.assign(slaves, values);
  for (auto value = values; value != row.end(); ++value)
    picture.values.push_back(Handover::as<double>(*value));
  return picture;
}

} // namespace igh_bus
