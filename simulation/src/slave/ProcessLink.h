// The configurations of one slave: the one that the last scan attached, and the one whose FMMUs it carries.
// They differ while the master scans anew: what has been written to a slave goes on working meanwhile.
#ifndef ETHERCAT_SIMULATION_PROCESS_LINK_H
#define ETHERCAT_SIMULATION_PROCESS_LINK_H

#include "slave/ProcessData.h"

namespace ethercat_simulation {

class SlaveConfiguration;

class ProcessLink {
public:
  explicit ProcessLink(SlaveUnit& unit) : m_unit(unit) {}

  SlaveConfiguration* attached() const { return m_attached; }
  const SlaveConfiguration* written() const { return m_written; }
  void attach(SlaveConfiguration* configuration) { m_attached = configuration; }

  // The PDOs of the attached configuration. 0, or the AL status code with which the slave refuses SAFEOP
  // then.
  std::uint16_t configure() const;
  // Sync managers and FMMUs of the attached configuration; open from then on.
  void write();
  bool isOpen() const { return m_open; }
  void close() { m_open = false; }

  // The configuration is about to be freed; the slave keeps its FMMUs and its last outputs.
  void forget();
  // The FMMUs that it still carries are those of the attached configuration: it answers in its name.
  void resume();
  void powerUp();

  // False when no outputs have come since the last call.
  bool takeObjects() const;
  std::vector<std::uint8_t> outputs() const;
  bool outputValue(std::uint16_t index, std::uint8_t subindex, std::uint64_t& value) const;
  std::vector<std::uint8_t> inputs() const; // none without a configuration

private:
  SlaveUnit& m_unit;
  SlaveConfiguration* m_attached = nullptr;
  SlaveConfiguration* m_written = nullptr;
  bool m_open = false;
  std::vector<std::uint8_t> m_lastOutputs;
  std::vector<FmmuPlace> m_carried; // FMMUs of the last life
};

} // namespace ethercat_simulation

#endif
