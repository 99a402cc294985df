// The wire: which slaves are plugged in, and which of them frames reach.
#ifndef ETHERCAT_SIMULATION_LINE_H
#define ETHERCAT_SIMULATION_LINE_H

#include "slave/SlaveUnit.h"

#include <memory>

namespace ethercat_simulation {

class Line {
public:
  std::size_t size() const { return m_wire.size(); }
  std::size_t reachedSize() const { return m_reached; } // from the first slave on
  SlaveUnit* at(std::size_t position) const { return position < m_wire.size() ? m_wire[position] : nullptr; }
  std::size_t capacity() const { return m_wire.capacity(); } // without a further allocation
  bool link() const { return m_link; }                       // at the master
  bool hasReferenceClock() const;
  bool anyAnswers() const;
  // All that frames reach, in order.
  void list(std::vector<SlaveUnit*>& slaves) const;
  // Their AL states, one over the other.
  std::uint8_t states() const;

  SlaveUnit& insert(std::size_t position, const Slave& slave);
  // False: nothing has changed.
  bool remove(std::size_t position);
  bool setWireBroken(std::size_t position, bool broken); // behind this slave
  bool setPowered(std::size_t position, bool powered);
  void setLink(bool up);

  // A frame broke on its way to the first slave.
  void countLostFrame();
  // One cycle of every drive, whether a frame reached it or not. True when that has changed an AL state.
  bool stepDrives();
  void askForOp(bool asked);
  // All configurations are about to be freed.
  void forgetConfigurations();

private:
  // Which slaves frames reach, from this position on.
  void reach(std::size_t from);
  void countLostLink(std::size_t position);

  std::vector<std::unique_ptr<SlaveUnit>> m_units; // every slave that ever was there
  std::vector<SlaveUnit*> m_wire;
  std::size_t m_reached = 0;
  bool m_hasDrives = false;
  bool m_link = true;
  bool m_asked = false; // for OP
};

} // namespace ethercat_simulation

#endif
