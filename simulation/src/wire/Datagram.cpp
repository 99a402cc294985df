#include "wire/Datagram.h"

#include <algorithm>
#include <cstring>

namespace ethercat_simulation {

void Datagram::append(SlaveConfiguration& configuration, const Fmmu& fmmu) {
  const auto same = [&](const Participant& participant) {
    return participant.configuration == &configuration;
  };
  // Blocks of one slave mostly follow each other.
  auto found = std::find_if(m_participants.rbegin(), m_participants.rend(), same);
  if (found == m_participants.rend()) {
    m_participants.push_back({&configuration, false, false, {}});
    found = m_participants.rbegin();
  }
  (fmmu.direction == EC_DIR_INPUT ? found->reads : found->writes) = true;
  found->blocks.push_back(fmmu);
  found->blocks.back().offset -= m_start;
  m_size += fmmu.size;
}

void Datagram::finish(std::uint8_t* domainImage) {
  m_image = domainImage + m_start;
  m_wire.assign(m_size, 0);
  std::uint32_t writers = 0;
  std::uint32_t readers = 0;
  for (const Participant& participant : m_participants) {
    writers += participant.writes ? 1U : 0U;
    readers += participant.reads ? 1U : 0U;
  }
  m_returns = readers > 0 || writers == 0;
  m_writeWeight = readers > 0 ? 2 : 1;
  m_expected = m_writeWeight * writers + readers;
}

void Datagram::transmit(const Flight& flight) {
  m_travel.depart(flight);
  m_counter = 0;
  if (flight.lost || m_size == 0) {
    return;
  }
  std::memcpy(m_wire.data(), m_image, m_size);
  for (Participant& participant : m_participants) {
    pass(participant, flight.number);
  }
}

void Datagram::pass(Participant& participant, std::uint64_t number) {
  const SlaveUnit* unit = participant.configuration->answering();
  if (unit == nullptr) {
    return;
  }
  ProcessData& data = participant.configuration->processData();
  data.produceInputs(number);
  for (const Fmmu& block : participant.blocks) { // of no bytes, where all entries have 0 bits
    std::uint8_t* const frame = m_wire.data() + block.offset;
    if (block.direction == EC_DIR_INPUT) {
      std::copy_n(data.at(block), block.size, frame);
    } else if (unit->takesOutputs()) {
      data.noteOutputs();
      std::copy_n(frame, block.size, data.at(block));
    }
  }
  m_counter += (participant.writes ? m_writeWeight : 0U) + (participant.reads ? 1U : 0U);
}

void Datagram::land(const SimulatedTime& time, Moment timeout) {
  if (m_travel.arrive(time, timeout) && m_returns && m_size > 0) {
    std::memcpy(m_image, m_wire.data(), m_size);
  }
}

} // namespace ethercat_simulation
