// The lock behind every call into the simulation, as a real master has its own in the kernel: of <ecrt.h>, of
// the device file and of the control side, from whatever thread.
#ifndef ETHERCAT_SIMULATION_LOCK_H
#define ETHERCAT_SIMULATION_LOCK_H

#include <pthread.h>

namespace ethercat_simulation {

// One for the whole process and for all masters. Who holds it may take it again, as an order of the control
// side does that makes calls of its own. Nothing is allocated for it.
class Lock {
public:
  static Lock& instance();

  void take();
  void give();
  // Gives it however often it was taken, and tells how often that was.
  unsigned int giveAll();
  void takeAgain(unsigned int times);

private:
  Lock();

  pthread_mutex_t m_mutex{};
  unsigned int m_depth = 0;
};

// Holds the lock for a scope.
class Guard {
public:
  Guard() { Lock::instance().take(); }
  ~Guard() { Lock::instance().give(); }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
};

// Lets the lock go for a scope, so that the others go on while one waits. Whatever the holder had looked up
// before may be gone afterwards.
class Unguarded {
public:
  Unguarded() : m_times(Lock::instance().giveAll()) {}
  ~Unguarded() { Lock::instance().takeAgain(m_times); }
  Unguarded(const Unguarded&) = delete;
  Unguarded& operator=(const Unguarded&) = delete;

private:
  unsigned int m_times;
};

} // namespace ethercat_simulation

#endif
