// A master as the control side reaches it: locked from the arrow to the end of the expression.
#ifndef ETHERCAT_SIMULATION_LOCKED_MASTER_H
#define ETHERCAT_SIMULATION_LOCKED_MASTER_H

#include "base/Lock.h"
#include "master/Master.h"

namespace ethercat_simulation {

class LockedMaster {
public:
  explicit LockedMaster(Master& master) : m_master(master) {}

  class Access {
  public:
    explicit Access(Master& master) : m_master(master) {}
    Master* operator->() const { return &m_master; }

  private:
    Guard m_guard;
    Master& m_master;
  };
  Access operator->() const { return Access(m_master); }
  Master& get() const { return m_master; } // for who holds the lock

private:
  Master& m_master;
};

} // namespace ethercat_simulation

#endif
