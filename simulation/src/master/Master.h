// One simulated master: its reservation, the configuration made under it, and the cycle. The control side
// (Simulation.h) is the same object seen from outside the application.
#ifndef ETHERCAT_SIMULATION_MASTER_H
#define ETHERCAT_SIMULATION_MASTER_H

#include "base/SimulatedTime.h"
#include "faults/FaultSchedule.h"
#include "interface/Handles.h"
#include "master/Recorder.h"
#include "wire/Clock.h"
#include "wire/Domain.h"
#include "wire/Topology.h"

#include <unordered_map>

namespace ethercat_simulation {

// What ETHERCAT_SIMULATION_TIMING names.
Timing timingOfEnvironment();

class Master final : public Bus {
public:
  explicit Master(unsigned int index);

  // Life.
  unsigned int index() const { return m_index; }
  Master& master() { return *this; }
  Recorder& recorder() { return m_recorder; }
  // Null while somebody else holds it.
  ec_master_t* reserve();
  void release();
  int activate();
  void deactivate();
  // To be asked before the end: the real master frees a request that its state machine is still at work on.
  void chargeBusyRequests(Call call);

  // Set-up.
  ec_slave_config_t* createConfiguration(std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                                         std::uint32_t productCode);
  // The configuration of this place, made on first use; null when it was made for another identity.
  SlaveConfiguration* configuration(std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                                    std::uint32_t productCode);
  ec_domain_t* createDomain();
  ec_sdo_request_t* createSdoRequest(SlaveConfiguration& configuration, const SdoPlace& place,
                                     std::size_t size);

  // Device file. 0 or a positive error number; answered also while nobody cycles.
  int readRegisters(std::size_t position, std::uint16_t address, std::uint8_t* data, std::size_t size) const;
  int writeRegisters(std::size_t position, std::uint16_t address, const std::uint8_t* data, std::size_t size);
  int requestState(std::size_t position, std::uint8_t state);

  // Cycle.
  void receive();
  void send();
  // What the idle master has done meanwhile by itself.
  void catchUp();
  // Blocks as a call that has to wait for the bus does; a virtual time does not wait for anybody.
  void waitForBus(Moment time) const;
  const SimulatedTime& time() const { return m_time; }
  Clock& clock() { return m_clock; }
  bool hasReferenceClock() const;

  Topology& topology() { return m_topology; }
  const Topology& topology() const { return m_topology; }
  void countDeviceFile(int change) { m_deviceFiles += change; }

  // Control side.
  unsigned int addSlave(const Slave& slave) override;
  void setTiming(Timing timing) override;
  void setCycleTime(std::chrono::nanoseconds cycle) override;
  void passTime(std::chrono::nanoseconds time) override;
  void setClimbCycles(unsigned int cyclesPerTransition) override;
  void setFrameLatency(std::chrono::nanoseconds latency) override;
  void setFrameTimeout(std::chrono::nanoseconds timeout) override;
  void setScanCycles(unsigned int cycles) override;
  void setSdoCycles(unsigned int exchanges) override;
  void setReferenceClock(const ReferenceClock& clock) override;
  void setClockOffsetCycles(unsigned int cycles) override;
  void dropFrames(unsigned int count) override;
  void delayFrames(unsigned int count) override;
  void setLinkUp(bool up) override;
  void setWireBroken(unsigned int position, bool broken) override;
  void setPowered(unsigned int position, bool powered) override;
  void setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode) override;
  void setErrorFlag(unsigned int position, bool set) override;
  void setResponding(unsigned int position, bool responding) override;
  void setMaximumState(unsigned int position, std::uint8_t alState) override;
  bool setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                   SdoFault fault) override;
  void addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) override;
  void stepReferenceClock(std::int64_t nanoseconds) override;
  bool addFault(const Fault& fault) override;
  void setFaultSeed(std::uint32_t seed) override;
  void removeSlave(unsigned int position) override;
  void insertSlave(unsigned int position, const Slave& slave) override;
  void setReactivationUnmapped(bool unmapped) override;
  void setImageNeverMapped(bool never) override;
  void failNext(Call call, int result, unsigned int after) override;
  std::size_t slaveCount() const override;
  std::uint8_t alState(unsigned int position) const override;
  bool reserved() const override;
  bool active() const override;
  int openDeviceFiles() const override;
  std::uint64_t framesSent() const override;
  std::vector<std::uint8_t> outputs(unsigned int position) const override;
  void setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) override;
  std::vector<std::uint8_t> objectValue(unsigned int position, std::uint16_t index,
                                        std::uint8_t subindex) const override;
  bool setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                      const std::vector<std::uint8_t>& bytes) override;
  std::vector<std::uint8_t> registers(unsigned int position, std::uint16_t address,
                                      std::size_t size) const override;
  void setRegisters(unsigned int position, std::uint16_t address,
                    const std::vector<std::uint8_t>& bytes) override;
  std::uint64_t referenceTime() const override;
  std::uint64_t callCount(Call call) const override;
  void setTracing(bool on) override;
  const std::vector<TraceEntry>& trace() const override;
  void clearTrace() override;
  const Misuse& misuse() const override;

private:
  EscRegisters::Live liveRegisters(const SlaveUnit& unit, std::size_t position) const;
  void clearConfiguration();
  void stepSdoRequests();
  bool imageIsMapped() const;
  Flight makeFlight();
  void transmit();
  void refuseQueued();

  unsigned int m_index;
  Recorder m_recorder;
  SimulatedTime m_time;
  Configurations m_configurations;
  std::unordered_map<std::uint32_t, SlaveConfiguration*> m_places; // by alias and position
  mutable Topology m_topology{m_configurations, m_time};           // moves on by itself while nobody cycles
  std::vector<std::unique_ptr<Domain>> m_domains;
  std::vector<std::uint8_t> m_image; // all domains back to back
  Clock m_clock;
  Travel m_stateMachine; // the frame that carries the master's own datagrams
  void* m_handle = nullptr;
  std::vector<void*> m_handles; // of configurations, domains and SDO requests

  bool m_active = false;
  bool m_activatedBefore = false; // on this reservation
  bool m_reactivationUnmapped = true;
  bool m_imageNeverMapped = false;
  bool m_hasSdoRequests = false;
  SdoPace m_sdoPace{};
  std::uint64_t m_framesSent = 0;
  unsigned int m_framesToDrop = 0;
  unsigned int m_framesToDelay = 0;
  FaultSchedule m_faults;
  Moment m_latency = 0;
  // One tick of a 250 Hz kernel: what the real master waits at least when it is built without a cycle
  // counter.
  Moment m_timeout = 4'000'000;
  int m_deviceFiles = 0;
};

} // namespace ethercat_simulation

#endif
