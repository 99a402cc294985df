#include "wire/Domain.h"

#include "master/Master.h"

#include <algorithm>
#include <cerrno>

namespace ethercat_simulation {

void Domain::append(SlaveConfiguration& configuration, const Fmmu& fmmu) {
  m_blocks.push_back({&configuration, fmmu});
  m_size += fmmu.size;
}

int Domain::registerEntries(const ec_pdo_entry_reg_t* rows) {
  for (const ec_pdo_entry_reg_t* row = rows; row != nullptr && row->index != 0; ++row) {
    SlaveConfiguration* configuration =
        m_owner.configuration(row->alias, row->position, row->vendor_id, row->product_code);
    if (configuration == nullptr) {
      return -ENOENT;
    }
    const int offset = configuration->registerEntry(row->index, row->subindex, *this, row->bit_position);
    if (offset < 0) {
      return offset;
    }
    *row->offset = static_cast<unsigned int>(offset);
  }
  return 0;
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
