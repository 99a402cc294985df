// The master's state machine, which keeps together the wire and the list that the last scan made of it.
#ifndef ETHERCAT_SIMULATION_TOPOLOGY_H
#define ETHERCAT_SIMULATION_TOPOLOGY_H

#include "wire/BusLook.h"
#include "wire/Climb.h"
#include "wire/LinkSight.h"
#include "wire/SlaveList.h"

#include <ethercat_simulation/Timing.h>

namespace ethercat_simulation {

class Topology {
public:
  explicit Topology(const SimulatedTime& time) : m_time(time) {}

  // The wire, changed from the control side.
  void insert(std::size_t position, const Slave& slave);
  void append(const Slave& slave) { insert(m_line.size(), slave); }
  void remove(std::size_t position);
  void setWireBroken(std::size_t position, bool broken); // behind this slave
  void setPowered(std::size_t position, bool powered);
  void setLink(bool up);
  const Line& line() const { return m_line; }
  SlaveUnit* onWire(std::size_t position) const { return m_line.at(position); }

  // As the master found them at its last scan.
  SlaveUnit* listed(std::size_t position) const { return m_list.at(position); }
  int slaveInfo(std::size_t position, ec_slave_info_t& info) const { return m_list.info(position, info); }
  // A new configuration, which finds its slave now or at a later scan.
  void add(SlaveConfiguration& configuration);
  // All configurations are about to be freed.
  void forgetConfigurations();

  void setTiming(Timing timing);
  bool inTime() const { return m_inTime; }
  void setClimbCycles(unsigned int cycles);
  void setScanCycles(unsigned int cycles);

  // Whether somebody holds the master and whether it runs. Nobody: the list follows the wire at once. Held
  // but not running: the list stays as it is. Running: the list is made anew by rounds of frames.
  enum class Drive : std::uint8_t { nobody, held, running };
  void drive(Drive drive);
  // Asks a slave for an AL state: taken while running by rounds, otherwise at once.
  void request(SlaveUnit& unit, std::uint8_t state);
  // Something changed that may give the state machines new work.
  void wake();

  // One round while running: a frame has come back, or has not, or was refused because the link is down.
  void step(bool answered);
  // What the idle master has done meanwhile by itself.
  void catchUp();
  void seeLink();
  bool linkSeen() const { return m_sight.up(); }
  // A frame broke on its way to the first slave.
  void countLostFrame() { m_line.countLostFrame(); }
  // One cycle of every drive, whether a frame reached it or not.
  void stepDrives();

  void state(ec_master_state_t& state);

private:
  void changed();
  void dropList();
  void scanNow();
  void startScan();
  void endScan();
  void settleSlaves();
  void attachAll();
  void stepCounted(bool answered);

  // In time.
  void stepInTime(bool answered, Moment now);
  void loseLink(Moment now);
  void loseFrames(Moment now);
  void noticeChange(Moment now);
  void look(Moment now) { m_look.take(m_line, m_sight.up(), now); }
  void lookIfDue(Moment now);
  void moveSlaves(Moment now);
  bool settlePending(Moment now);
  Moment lap() const;
  bool anyAnswers();

  const SimulatedTime& m_time;
  Line m_line;
  SlaveList m_list;
  LinkSight m_sight;
  BusLook m_look;
  Climb m_climb;
  Drive m_drive = Drive::nobody;
  bool m_inTime = false;
  bool m_rescan = false; // list and wire differ
  bool m_scanning = false;
  Span m_scan{5, 0};
  Wait m_scanEnd;

  // In time.
  bool m_answersKnown = false;
  bool m_answers = false;      // any slave does
  Moment m_noticeAt = 0;       // a change of the wire
  SlaveUnit* m_lost = nullptr; // the first slave that it took away, not missed yet
  Moment m_silentSince = 0;    // no frame came back; 0: they do
};

} // namespace ethercat_simulation

#endif
