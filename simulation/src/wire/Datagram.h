// One process-data datagram: a run of whole sync-manager blocks of one domain, at most 1486 bytes, with the
// frame content that travels while the application goes on writing into its image.
#ifndef ETHERCAT_SIMULATION_DATAGRAM_H
#define ETHERCAT_SIMULATION_DATAGRAM_H

#include "base/SimulatedTime.h"
#include "slave/SlaveConfiguration.h"

namespace ethercat_simulation {

// What the sender wants to know about the way of a frame.
struct Flight {
  std::uint64_t number; // of the frame
  bool lost;
  bool late;  // found by no receive before the next send
  bool timed; // has a latency; sent and due count
  Moment sent;
  Moment due;
};

enum class TravelState : std::uint8_t { idle, queued, sent, received, failed };

// Where something that was sent is: on the way, back, or given up.
class Travel {
public:
  TravelState state() const { return m_state; }
  bool is(TravelState state) const { return m_state == state; }
  void queue() { m_state = TravelState::queued; }
  void fail() { m_state = TravelState::failed; }
  void settle() { m_state = TravelState::idle; }
  void depart(const Flight& flight);
  // The next send goes out, behind which a late frame is found.
  void passed() { m_late = false; }
  // True at the receive that finds it back. Nothing is awaited longer than the timeout. The time is only
  // asked where a latency makes a difference.
  bool arrive(const SimulatedTime& time, Moment timeout);

private:
  TravelState m_state = TravelState::idle;
  bool m_late = false;
  bool m_timed = false;
  Moment m_sent = 0;
  Moment m_due = 0;
};

class Datagram {
public:
  explicit Datagram(std::size_t start) : m_start(start) {}

  std::size_t size() const { return m_size; }
  void append(SlaveConfiguration& configuration, const Fmmu& fmmu);
  // Fixes type and expected working counter; before it, blocks are appended.
  void finish(std::uint8_t* domainImage);
  std::uint32_t expectedCounter() const { return m_expected; }

  Travel& travel() { return m_travel; }
  const Travel& travel() const { return m_travel; }
  std::uint32_t workingCounter() const { return m_counter; }
  // Passes every slave, on the copy of the image that the frame is.
  void transmit(const Flight& flight);
  void land(const SimulatedTime& time, Moment timeout);

private:
  struct Participant {
    SlaveConfiguration* configuration;
    bool writes = false; // has outputs here
    bool reads = false;  // has inputs here
    std::vector<Fmmu> blocks;
  };

  void pass(Participant& participant, std::uint64_t number);

  std::size_t m_start; // in the domain
  std::size_t m_size = 0;
  std::uint8_t* m_image = nullptr;
  std::vector<std::uint8_t> m_wire;
  std::vector<Participant> m_participants;
  bool m_returns = true; // LRD and LRW are copied back, LWR is not
  std::uint32_t m_writeWeight = 1;
  std::uint32_t m_expected = 0;
  std::uint32_t m_counter = 0;
  Travel m_travel;
};

} // namespace ethercat_simulation

#endif
