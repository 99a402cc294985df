#include "wire/Domain.h"

#include <algorithm>
#include <cerrno>

namespace ethercat_simulation {

int Domain::registerEntry(SlaveConfiguration& configuration, std::uint16_t index, std::uint8_t subindex,
                          unsigned int* bitPosition) {
  EntryPosition place{};
  if (!configuration.find(index, subindex, place)) {
    return -ENOENT;
  }
  const Fmmu* fmmu = reserve(configuration, place.syncManager);
  if (fmmu == nullptr) {
    return -EOVERFLOW;
  }
  if (bitPosition != nullptr) {
    *bitPosition = static_cast<unsigned int>(place.bit % 8);
  } else if (place.bit % 8 != 0) {
    return -EFAULT; // the block stays reserved
  }
  return static_cast<int>(fmmu->offset + place.bit / 8);
}

const Fmmu* Domain::reserve(SlaveConfiguration& configuration, unsigned int syncManager) {
  const Fmmu* fmmu = configuration.fmmu(m_number, syncManager);
  if (fmmu != nullptr) {
    return fmmu;
  }
  fmmu = configuration.addFmmu(m_number, syncManager, m_size);
  if (fmmu != nullptr) {
    m_blocks.push_back({&configuration, *fmmu});
    m_size += fmmu->size;
  }
  return fmmu;
}

bool Domain::fitsDatagrams() const {
  return std::all_of(m_blocks.begin(), m_blocks.end(),
                     [](const Block& block) { return block.fmmu.size <= DATAGRAM_CAPACITY; });
}

void Domain::build(std::uint8_t* image, std::size_t start, bool mapped) {
  for (const Block& block : m_blocks) {
    if (m_datagrams.empty() || m_datagrams.back().size() + block.fmmu.size > DATAGRAM_CAPACITY) {
      m_datagrams.emplace_back(block.fmmu.offset);
    }
    m_datagrams.back().append(*block.configuration, block.fmmu);
  }
  for (Datagram& datagram : m_datagrams) {
    datagram.finish(image + start);
    m_expected += datagram.expectedCounter();
  }
  // The real library adds the domain's place to a null image: only a domain at its start reads as null.
  m_data =
      mapped ? image + start : reinterpret_cast<std::uint8_t*>(start); // NOLINT(performance-no-int-to-ptr)
}

void Domain::queue() {
  for (Datagram& datagram : m_datagrams) {
    datagram.travel().queue();
  }
}

void Domain::transmit(const Flight& flight) {
  for (Datagram& datagram : m_datagrams) {
    if (datagram.travel().is(TravelState::queued)) {
      datagram.transmit(flight);
    }
  }
}

void Domain::refuse() {
  for (Datagram& datagram : m_datagrams) {
    if (datagram.travel().is(TravelState::queued)) {
      datagram.travel().fail();
    }
  }
}

void Domain::land(const SimulatedTime& time, Moment timeout) {
  for (Datagram& datagram : m_datagrams) {
    datagram.land(time, timeout);
  }
}

void Domain::process() {
  m_counter = 0;
  for (const Datagram& datagram : m_datagrams) {
    m_counter += datagram.travel().is(TravelState::received) ? datagram.workingCounter() : 0U;
  }
}

void Domain::state(ec_domain_state_t& state) const {
  state.working_counter = m_counter;
  state.wc_state = m_counter == 0 ? EC_WC_ZERO : m_counter == m_expected ? EC_WC_COMPLETE : EC_WC_INCOMPLETE;
  state.redundancy_active = 0;
}

} // namespace ethercat_simulation
