// A process-data domain: where its blocks lie, the datagrams that carry them, and its working counter.
#ifndef ETHERCAT_SIMULATION_DOMAIN_H
#define ETHERCAT_SIMULATION_DOMAIN_H

#include "wire/Datagram.h"

#include <memory>

namespace ethercat_simulation {

class Domain {
public:
  explicit Domain(unsigned int number) : m_number(number) {}

  unsigned int number() const { return m_number; } // in order of creation
  std::size_t size() const { return m_size; }

  // Brings the sync manager of the entry into the domain. Byte offset, or -ENOENT, -EOVERFLOW, -EFAULT.
  int registerEntry(SlaveConfiguration& configuration, std::uint16_t index, std::uint8_t subindex,
                    unsigned int* bitPosition);

  // Activation. False when one block does not fit a datagram.
  bool fitsDatagrams() const;
  // `start` is the place of the domain in the image of all domains. The application does not see an unmapped
  // image.
  void build(std::uint8_t* image, std::size_t start, bool mapped);
  std::uint8_t* data() const { return m_data; }

  void queue();
  void process();
  void state(ec_domain_state_t& state) const;

  // What is queued goes out with a frame, or is refused because the link is down; a receive finds it back.
  void transmit(const Flight& flight);
  void refuse();
  void land(const SimulatedTime& time, Moment timeout);

private:
  struct Block {
    SlaveConfiguration* configuration;
    Fmmu fmmu;
  };

  // The place of a sync manager in the domain, taken on first use; null when the slave has no FMMU left.
  const Fmmu* reserve(SlaveConfiguration& configuration, unsigned int syncManager);

  unsigned int m_number;
  std::size_t m_size = 0;
  std::vector<Block> m_blocks;
  std::vector<Datagram> m_datagrams;
  std::uint8_t* m_data = nullptr;
  std::uint32_t m_expected = 0;
  std::uint32_t m_counter = 0;
};

using Domains = std::vector<std::unique_ptr<Domain>>;

} // namespace ethercat_simulation

#endif
