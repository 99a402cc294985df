// The slaves on the wire, the list that the master made of them at its last scan, and the master's state
// machine that keeps both together.
#ifndef ETHERCAT_SIMULATION_TOPOLOGY_H
#define ETHERCAT_SIMULATION_TOPOLOGY_H

#include "slave/SlaveConfiguration.h"

#include <memory>

namespace ethercat_simulation {

class Topology {
public:
  explicit Topology(const SimulatedTime& time) : m_time(time) {}

  // The wire, changed from the control side.
  void insert(std::size_t position, const Slave& slave);
  void append(const Slave& slave) { insert(m_wire.size(), slave); }
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
  bool hasReferenceClock() const;
  // A frame broke on its way to the first slave.
  void countLostFrame();
  void setLink(bool up);
  bool link() const { return m_link; }
  void setTiming(Timing timing);
  bool inTime() const { return m_inTime; }
  void setClimbCycles(unsigned int cycles);
  void setScanCycles(unsigned int cycles);
  // One cycle of every drive, whether a frame reached it or not.
  void stepDrives();
  // Something changed that may give the state machines new work.
  void wake() {
    m_settled = false;
    m_answersKnown = false;
  }

  // Whether somebody holds the master and whether it runs. Nobody: the list follows the wire at once. Held
  // but not running: the list stays as it is. Running: the list is made anew by rounds of frames.
  enum class Drive : std::uint8_t { nobody, held, running };
  void drive(Drive drive);

  // One round while running: a frame has come back, or has not, or was refused because the link is down.
  void step(bool answered);
  // What the idle master has done meanwhile by itself.
  void catchUp();
  // The link as the sending side has found it.
  void seeLink();
  bool linkSeen() const { return m_seenLink; }

  void state(ec_master_state_t& state);
  int slaveInfo(std::size_t position, ec_slave_info_t& info) const;
  // A new configuration, which finds its slave now or at a later scan.
  void add(SlaveConfiguration& configuration);
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
  void attach(SlaveConfiguration& configuration);
  void attachAll();
  void startScan();
  void endScan();
  void settleSlaves();
  // In cycles, and in time.
  void stepCounted(bool answered);
  void stepInTime(bool answered, Moment now);
  void loseLink(Moment now);
  void loseFrames(Moment now);
  void noticeChange(Moment now);
  void look(Moment now);
  void lookIfDue(Moment now);
  void moveSlaves(Moment now);
  bool settlePending(Moment now);
  Moment lap() const;
  bool anyAnswers();
  void restartSlaves();
  void broadcast();
  SlaveUnit* find(const SlaveConfiguration& configuration, std::size_t* position) const;

  std::vector<SlaveConfiguration*> m_configurations;
  std::vector<std::unique_ptr<SlaveUnit>> m_units; // every slave that ever was there
  std::vector<SlaveUnit*> m_wire;
  std::vector<SlaveUnit*> m_list;
  std::size_t m_reached = 0;
  bool m_hasDrives = false;
  Drive m_drive = Drive::nobody;
  bool m_link = true;
  bool m_seenLink = true;
  bool m_rescan = false; // list and wire differ
  bool m_scanning = false;
  Wait m_scanEnd;
  bool m_settled = false; // nothing to do until something changes
  unsigned int m_climbCycles = 2;
  Span m_scan{5, 0};
  unsigned int m_responding = 0;
  std::uint8_t m_states = 0;

  // In time.
  bool m_answersKnown = false;
  bool m_answers = false; // any slave does
  const SimulatedTime& m_time;
  bool m_inTime = false;
  Moment m_lookedAt = 0;       // at the states of all slaves
  Moment m_lookBy = 0;         // an early look; 0: none
  Moment m_noticeAt = 0;       // a change of the wire
  SlaveUnit* m_lost = nullptr; // the first slave that it took away, not missed yet
  SlaveUnit* m_turn = nullptr; // the slave that climbs
  Moment m_settleAt = 0;       // slaves of the last life still are in OP until then; 0: none
  Moment m_silentSince = 0;    // no frame came back; 0: they do
  Moment m_linkChange = 0;     // what was seen last is not believed before; 0: it is
};

} // namespace ethercat_simulation

#endif
