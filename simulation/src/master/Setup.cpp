#include "master/Setup.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace ethercat_simulation {

SlaveConfiguration* Setup::configuration(std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                                         std::uint32_t productCode) {
  SlaveConfiguration*& place = m_places[static_cast<std::uint32_t>(alias) << 16U | position];
  if (place == nullptr) {
    m_configurations.push_back(
        std::make_unique<SlaveConfiguration>(m_master, alias, position, vendorId, productCode));
    place = m_configurations.back().get();
    m_topology.add(*place);
    place->loadDefaultMapping();
  } else if (!place->describes(vendorId, productCode)) {
    std::fprintf(stderr, "Slave %s of master %u was configured as another type before.\n",
                 place->place().c_str(), m_master);
    return nullptr;
  }
  return place;
}

Domain& Setup::createDomain() {
  m_domains.push_back(std::make_unique<Domain>(static_cast<unsigned int>(m_domains.size())));
  return *m_domains.back();
}

int Setup::registerEntries(Domain& domain, const ec_pdo_entry_reg_t* rows) {
  for (const ec_pdo_entry_reg_t* row = rows; row != nullptr && row->index != 0; ++row) {
    SlaveConfiguration* wanted = configuration(row->alias, row->position, row->vendor_id, row->product_code);
    if (wanted == nullptr) {
      return -ENOENT;
    }
    const int offset = domain.registerEntry(*wanted, row->index, row->subindex, row->bit_position);
    if (offset < 0) {
      return offset;
    }
    *row->offset = static_cast<unsigned int>(offset);
  }
  return 0;
}

SdoRequest& Setup::createSdoRequest(SlaveConfiguration& configuration, const SdoPlace& place,
                                    std::size_t size) {
  SdoRequest& request = configuration.createSdoRequest(place, size);
  m_hasSdoRequests = true;
  return request;
}

int Setup::arrange(bool mapped) {
  std::size_t size = 0;
  for (const auto& domain : m_domains) {
    if (!domain->fitsDatagrams()) {
      std::fprintf(stderr, "Failed to activate master %u: a sync manager exceeds %zu bytes.\n", m_master,
                   DATAGRAM_CAPACITY);
      return -EINVAL;
    }
    size += domain->size();
  }
  for (const auto& configuration : m_configurations) {
    configuration->allocateProcessData();
  }
  m_image.assign(size, 0);
  std::size_t start = 0;
  for (const auto& domain : m_domains) {
    domain->build(m_image.data(), start, mapped);
    start += domain->size();
  }
  return 0;
}

void Setup::clear() {
  m_hasSdoRequests = false;
  m_topology.forgetConfigurations();
  m_domains.clear();
  m_places.clear();
  m_configurations.clear();
  std::vector<std::uint8_t>().swap(m_image);
}

void Setup::stepSdoRequests(const SdoPace& pace, const SimulatedTime& time) {
  if (m_hasSdoRequests) {
    const Moment now = pace.isInTime() ? time.now() : 0;
    for (const auto& configuration : m_configurations) {
      configuration->stepSdoRequests(pace, now);
    }
  }
}

bool Setup::hasBusySdoRequest() const {
  return std::any_of(m_configurations.begin(), m_configurations.end(),
                     [](const auto& configuration) { return configuration->hasBusySdoRequest(); });
}

} // namespace ethercat_simulation
