// A limit for calls that wait in the kernel until a bus is cycled.
#ifndef IGH_BUS_PATIENCE_H
#define IGH_BUS_PATIENCE_H

#include <chrono>

namespace igh_bus {

// While an object of this class lives, such a call ends with EINTR once the time has passed: an application
// that holds the master and does not cycle would keep it waiting for ever. What a slave is already asked for
// cannot be interrupted. For programs of one thread: the signal behind it goes to any.
class Patience {
public:
  explicit Patience(double seconds = 5);
  ~Patience();
  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;
  double seconds() const; // since the beginning

private:
  std::chrono::steady_clock::time_point m_start;
};

} // namespace igh_bus

#endif
