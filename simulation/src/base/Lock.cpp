#include "base/Lock.h"

namespace ethercat_simulation {

Lock& Lock::instance() {
  static Lock lock; // never destroyed, for it has no destructor: calls may come while the program ends
  return lock;
}

// A cycle under SCHED_FIFO must not wait for a thread of lower priority that others keep from running.
Lock::Lock() {
  pthread_mutexattr_t attributes{};
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
  pthread_mutex_init(&m_mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void Lock::take() {
  pthread_mutex_lock(&m_mutex);
  ++m_depth;
}

void Lock::give() {
  --m_depth;
  pthread_mutex_unlock(&m_mutex);
}

unsigned int Lock::giveAll() {
  const unsigned int times = m_depth;
  for (unsigned int i = 0; i < times; ++i) {
    give();
  }
  return times;
}

void Lock::takeAgain(unsigned int times) {
  for (unsigned int i = 0; i < times; ++i) {
    take();
  }
}

} // namespace ethercat_simulation
