// The slaves on the wire, the list that the master made of them at its last scan, and the master's state
// machine that keeps both together.
#ifndef ETHERCAT_SIMULATION_TOPOLOGY_H
#define ETHERCAT_SIMULATION_TOPOLOGY_H

#include "SlaveConfiguration.h"

#include <memory>

namespace ethercat_simulation {

using Configurations = std::vector<std::unique_ptr<SlaveConfiguration>>;

class Topology {
public:
  explicit Topology(const Configurations& configurations) : m_configurations(configurations) {}

  // The wire, changed from the control side.
  void insert(std::size_t position, const Slave& slave);
  void remove(std::size_t position);
  void setWireBroken(std::size_t position, bool broken); // behind this slave
  void setPowered(std::size_t position, bool powered);
  std::size_t wireSize() const { return m_wire.size(); }
  std::size_t reachedSize() const { return m_reached; } // from the first slave on
  SlaveUnit* onWire(std::size_t position) const {
    return position < m_wire.size() ? m_wire[position] : nullptr;
  }
  // As the master found them at its last scan.
  SlaveUnit* listed(std::size_t position) const {
    return position < m_list.size() ? m_list[position] : nullptr;
  }
  // Asks a slave for an AL state: taken while running by rounds, otherwise at once.
  void request(SlaveUnit& unit, std::uint8_t state);
  // A frame broke on its way to the first slave.
  void countLostFrame();
  void setLink(bool up);
  bool link() const { return m_link; }
  void setTiming(Timing timing);
  void setClimbCycles(unsigned int cycles);
  void setScanCycles(unsigned int cycles);
  // One cycle of every drive, whether a frame reached it or not.
  void stepDrives();
  // Something changed that may give the state machines new work.
  void wake() { m_settled = false; }

  // Whether somebody holds the master and whether it runs. Nobody: the list follows the wire at once. Held
  // but not running: the list stays as it is. Running: the list is made anew by rounds of frames.
  enum class Drive : std::uint8_t { nobody, held, running };
  void drive(Drive drive);

  // One round while running; a frame has come back, or was refused because the link is down.
  void step();
  // The link as the sending side has found it.
  void seeLink() {
    m_settled = m_settled && m_seenLink == m_link;
    m_seenLink = m_link;
  }
  bool linkSeen() const { return m_seenLink; }

  void state(ec_master_state_t& state);
  int slaveInfo(std::size_t position, ec_slave_info_t& info) const;
  void attach(SlaveConfiguration& configuration);
  void attachAll();
  // All configurations are about to be freed.
  void forgetConfigurations();

private:
  void changed();
  // Which slaves frames reach, from this position on.
  void reach(std::size_t from);
  void countLostLink(std::size_t position);
  void makeList();
  void scanNow();
  void dropList();
  void startScan();
  void restartSlaves();
  void broadcast();
  SlaveUnit* find(const SlaveConfiguration& configuration, std::size_t* position) const;

  const Configurations& m_configurations;
  std::vector<std::unique_ptr<SlaveUnit>> m_units; // every slave that ever was there
  std::vector<SlaveUnit*> m_wire;
  std::vector<SlaveUnit*> m_list;
  std::size_t m_reached = 0;
  bool m_hasDrives = false;
  Drive m_drive = Drive::nobody;
  bool m_link = true;
  bool m_seenLink = true;
  bool m_rescan = false;       // list and wire differ
  unsigned int m_scanLeft = 0; // rounds until the scan in progress is done
  bool m_settled = false;      // nothing to do until something changes
  unsigned int m_climbCycles = 2;
  unsigned int m_scanCycles = 5;
  unsigned int m_responding = 0;
  std::uint8_t m_states = 0;
};

} // namespace ethercat_simulation

#endif
