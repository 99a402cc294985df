// One process-data datagram: a run of whole sync-manager blocks of one domain, at most 1486 bytes, with the
// frame content that travels while the application goes on writing into its image.
#ifndef ETHERCAT_SIMULATION_DATAGRAM_H
#define ETHERCAT_SIMULATION_DATAGRAM_H

#include "slave/SlaveConfiguration.h"
#include "wire/Travel.h"

namespace ethercat_simulation {

class Datagram {
public:
  explicit Datagram(std::size_t start) : m_start(start) {}

  std::size_t size() const { return m_size; }
  void append(SlaveConfiguration& configuration, const Fmmu& fmmu);
  // Fixes type and expected working counter; before it, blocks are appended.
  void finish(std::uint8_t* domainImage);
  std::uint32_t expectedCounter() const { return m_expected; }

  Travel& travel() { return m_travel; }
  const Travel& travel() const { return m_travel; }
  std::uint32_t workingCounter() const { return m_counter; }
  // Passes every slave, on the copy of the image that the frame is.
  void transmit(const Flight& flight);
  void land(const SimulatedTime& time, Moment timeout);

private:
  struct Participant {
    SlaveConfiguration* configuration;
    bool writes = false; // has outputs here
    bool reads = false;  // has inputs here
    std::vector<Fmmu> blocks;
  };

  void pass(Participant& participant, std::uint64_t number);

  std::size_t m_start; // in the domain
  std::size_t m_size = 0;
  std::uint8_t* m_image = nullptr;
  std::vector<std::uint8_t> m_wire;
  std::vector<Participant> m_participants;
  bool m_returns = true; // LRD and LRW are copied back, LWR is not
  std::uint32_t m_writeWeight = 1;
  std::uint32_t m_expected = 0;
  std::uint32_t m_counter = 0;
  Travel m_travel;
};

} // namespace ethercat_simulation

#endif
