// A process-data domain: where its blocks lie, the datagrams that carry them, and its working counter.
#ifndef ETHERCAT_SIMULATION_DOMAIN_H
#define ETHERCAT_SIMULATION_DOMAIN_H

#include "wire/Datagram.h"

namespace ethercat_simulation {

class Domain {
public:
  Domain(Master& owner, unsigned int number) : m_owner(owner), m_number(number) {}

  Master& master() const { return m_owner; }
  unsigned int number() const { return m_number; } // in order of creation
  std::size_t size() const { return m_size; }
  void append(SlaveConfiguration& configuration, const Fmmu& fmmu);

  // Rows up to the one with index 0, in order; the first error ends it and leaves the earlier rows
  // registered.
  int registerEntries(const ec_pdo_entry_reg_t* rows);

  // Activation. False when one block does not fit a datagram.
  bool fitsDatagrams() const;
  // `start` is the place of the domain in the image of all domains. The application does not see an unmapped
  // image.
  void build(std::uint8_t* image, std::size_t start, bool mapped);
  std::uint8_t* data() const { return m_data; }

  void queue();
  void process();
  void state(ec_domain_state_t& state) const;

  std::vector<Datagram>& datagrams() { return m_datagrams; }

private:
  struct Block {
    SlaveConfiguration* configuration;
    Fmmu fmmu;
  };

  Master& m_owner;
  unsigned int m_number;
  std::size_t m_size = 0;
  std::vector<Block> m_blocks;
  std::vector<Datagram> m_datagrams;
  std::uint8_t* m_data = nullptr;
  std::uint32_t m_expected = 0;
  std::uint32_t m_counter = 0;
};

} // namespace ethercat_simulation

#endif
