// What the application has set up under its reservation: slave configurations, domains and the image. All of
// it ends with the deactivation.
#ifndef ETHERCAT_SIMULATION_SETUP_H
#define ETHERCAT_SIMULATION_SETUP_H

#include "wire/Domain.h"
#include "wire/Topology.h"

#include <unordered_map>

namespace ethercat_simulation {

class Setup {
public:
  Setup(unsigned int master, Topology& topology) : m_master(master), m_topology(topology) {}

  const Domains& domains() const { return m_domains; }

  // The configuration of this place, made on first use; null when it was made for another identity.
  SlaveConfiguration* configuration(std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                                    std::uint32_t productCode);
  Domain& createDomain();
  // Rows up to the one with index 0, in order; the first error ends it and leaves the earlier rows
  // registered.
  int registerEntries(Domain& domain, const ec_pdo_entry_reg_t* rows);
  SdoRequest& createSdoRequest(SlaveConfiguration& configuration, const SdoPlace& place, std::size_t size);

  // Activation: lays out the image. The application does not see one that is not mapped. 0, or -EINVAL when a
  // sync manager fits no datagram.
  int arrange(bool mapped);
  void clear();

  // One exchange with every slave's mailbox.
  void stepSdoRequests(const SdoPace& pace, const SimulatedTime& time);
  bool hasBusySdoRequest() const;

private:
  unsigned int m_master; // its index
  Topology& m_topology;
  std::vector<std::unique_ptr<SlaveConfiguration>> m_configurations;
  std::unordered_map<std::uint32_t, SlaveConfiguration*> m_places; // by alias and position
  Domains m_domains;
  std::vector<std::uint8_t> m_image; // all domains back to back
  bool m_hasSdoRequests = false;
};

} // namespace ethercat_simulation

#endif
