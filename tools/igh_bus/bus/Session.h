// One master through the public functions, from igh_master_initialize to igh_master_uninitialize.
#ifndef IGH_BUS_SESSION_H
#define IGH_BUS_SESSION_H

#include "bus/ErrorCounts.h"
#include "bus/Options.h"

#include <functional>
#include <igh_master.h>

namespace igh_bus {

class Session {
public:
  // Takes the master up to activation; `prepare` runs just before it. Throws Failure; the library has printed
  // its reason by then.
  explicit Session(const RunOptions& options, const std::function<void()>& prepare = nullptr);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Activates again, which deactivates first. Throws Failure.
  void reactivate() const;

  // One cycle; the AL states seen in it, ORed. Neither allocates nor prints.
  std::uint32_t exchange();
  // Everything that was counted and read stays as it is; the bus can be cycled on all the same.
  void closeBooks();
  void exchangeUncounted() const;
  double watched(std::size_t number) const;
  const ErrorCounts& errors() const { return m_errors; }
  std::uint64_t cycles() const { return m_errors.cycle; }
  std::uint64_t callbacks() const { return m_callbacks; }
  std::int64_t clockOffsetNs() const; // by which the master's time follows the reference clock
  _ETHERCAT_COMM_DIAG_INFO record(COMM_DIAG_INDEX index) const;

private:
  struct Handle {
    std::uint32_t id;
    bool read;
  };
  void bringUp(const std::function<void()>& prepare);
  std::uint32_t createHandle(const EntryAddress& address, bool read);
  void end();

  const RunOptions& m_options;
  std::vector<Handle> m_handles; // watches first, in order
  ErrorCounts m_errors;
  std::uint64_t m_callbacks = 0;
  bool m_closed = false;
  std::vector<double> m_lastWatched;
  std::array<_ETHERCAT_COMM_DIAG_INFO, 3> m_lastRecords{}; // by index
};

} // namespace igh_bus

#endif
