// The control side of one simulated master.
#ifndef ETHERCAT_SIMULATION_BUS_H
#define ETHERCAT_SIMULATION_BUS_H

#include <ethercat_simulation/Calls.h>
#include <ethercat_simulation/Fault.h>
#include <ethercat_simulation/Slave.h>
#include <ethercat_simulation/Timing.h>

#include <chrono>
#include <cstddef>
#include <functional>

#pragma GCC visibility push(default)

namespace ethercat_simulation {

// One simulated master with its bus. Lives until reset(); references stay valid until then.
class Bus {
public:
  virtual ~Bus() = default;

  // Building. Slaves take ring positions in the order in which they are added.
  virtual unsigned int addSlave(const Slave& slave) = 0;
  // What a text in JSON says, which has any of a master's keys in a bus file: times are set, "slaves"
  // appended, "faults" added to the schedule, "record" begins. Empty on success, else nothing is done: place
  // and reason.
  virtual std::string configure(const std::string& json) = 0;

  // Speed. A new bus has the timing that ETHERCAT_SIMULATION_TIMING names, "real" or "fast"; real without it.
  // Undoes the orders of setClimbCycles, setScanCycles and setSdoCycles.
  virtual void setTiming(Timing timing) = 0;
  // Makes the time of the bus virtual: each send passes so much of it, and nothing else but passTime does, so
  // that a run repeats itself whatever the machine is busy with. 0: the monotonic clock (default).
  virtual void setCycleTime(std::chrono::nanoseconds cycle) = 0;
  virtual void passTime(std::chrono::nanoseconds time) = 0; // of a virtual time
  // Cycles that each state change of a slave takes (at least 1; 2 with fast timing).
  virtual void setClimbCycles(unsigned int cyclesPerTransition) = 0;
  // Time from send to the moment when receive finds the frame (default 0).
  virtual void setFrameLatency(std::chrono::nanoseconds latency) = 0;
  // A receive later than this after the send gives up a frame that is not back yet (default 4 ms, one tick of
  // a 250 Hz kernel; 500 us on a real master that was built with a cycle counter).
  virtual void setFrameTimeout(std::chrono::nanoseconds timeout) = 0;
  // Cycles for which scan_busy stays set after the topology changed while active (5 with fast timing).
  virtual void setScanCycles(unsigned int cycles) = 0;

  // Exchanges that an SDO transfer takes from its turn in the slave's queue (at least 1; 3 with fast
  // timing). A slave
  // has one transfer at a time, in the order in which the requests were created, and none while it climbs.
  // A request that has waited for its turn longer than its time-out ends in ERROR; a cycle counts as 1 ms.
  // Requests move by cycling only, also before activation.
  virtual void setSdoCycles(unsigned int exchanges) = 0;
  // Without this the reference clock is ideal: it shows the application time of the frame that read it.
  virtual void setReferenceClock(const ReferenceClock& clock) = 0;
  // Receives after activation during which the reference time is not known yet (-EAGAIN; default 0).
  virtual void setClockOffsetCycles(unsigned int cycles) = 0;

  // Faults. Those of the line count up in the slaves' error counters, registers 0x0300 to 0x0313:
  //   lost frame     invalid frame at port 0 of the first slave (0x0300), forwarded error at the others
  //                  (0x0308)
  //   link down      lost link at port 0 of the first slave (0x0310)
  //   removed slave, broken wire, slave without power
  //                  lost link at the ports that faced it (0x0311 before it, 0x0310 behind it)
  //   silent slave   its own PDI error counter (0x030D), once each time it falls silent
  virtual void dropFrames(unsigned int count) = 0; // the next count sent frames never come back
  // The next count sent frames reach the slaves, and come back too late: behind the next send.
  virtual void delayFrames(unsigned int count) = 0;
  virtual void setLinkUp(bool up) = 0;
  // Behind this slave: those behind it are gone until the wire is whole again. They keep their state
  // meanwhile.
  virtual void setWireBroken(unsigned int position, bool broken) = 0;
  // Off: gone, and with it all behind it. On: as a slave that has just been switched on, to be configured.
  virtual void setPowered(unsigned int position, bool powered) = 0;
  // The slave falls to `alState` with the AL status code in register 0x0134, the error bit in its AL state
  // and the error flag, and stays there. Code 0: the cause is gone; the master acknowledges and brings it
  // back.
  virtual void setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode) = 0;
  virtual void setErrorFlag(unsigned int position, bool set) = 0;
  virtual void setResponding(unsigned int position,
                             bool responding) = 0; // silent slave: WC short, still listed
  virtual void setMaximumState(unsigned int position,
                               std::uint8_t alState) = 0; // climbs no further; falls back
  // False when the slave has no such object.
  virtual bool setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                           SdoFault fault) = 0;
  // What troubles a drive until it is switched off again; the error code belongs to `fault`, and shows in
  // 0x603F and 0x1003. False when there is no drive at this position, or the code is 0.
  virtual bool setDriveTrouble(unsigned int position, DriveTrouble trouble, bool on,
                               std::uint16_t errorCode = 0x2310) = 0;
  // Adds to an error counter, registers 0x0300 to 0x0313, up to 255.
  virtual void addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) = 0;
  virtual void stepReferenceClock(std::int64_t nanoseconds) = 0;
  // Adds to the schedule; what is random in it repeats itself with the seed, at every activation. False, and
  // nothing added, for a fault without a beginning, or of a slave or an object that is not there. A fault
  // that ends undoes what it did, whoever did the same meanwhile; deactivation ends all that are
  // not told to outlive it.
  virtual bool addFault(const Fault& fault) = 0;
  virtual void setFaultSeed(std::uint32_t seed) = 0;
  virtual void clearFaults() = 0; // empties the schedule; faults of it that last are ended
  virtual void removeSlave(unsigned int position) = 0; // later slaves move up
  virtual void insertSlave(unsigned int position, const Slave& slave) = 0;
  // Like the real master, a second activation on one reservation leaves the image unmapped (default true).
  virtual void setReactivationUnmapped(bool unmapped) = 0;
  // Leave the image unmapped on every activation, whatever went before (default false).
  virtual void setImageNeverMapped(bool never) = 0;
  // The next call of this kind fails once: pointers are null, number results are `result`, out records stay
  // untouched, the call has no effect; device calls give -1 and the error number -result. A second order for
  // the same call queues behind the first; `after` lets that many calls of the kind pass first.
  virtual void failNext(Call call, int result = -1, unsigned int after = 0) = 0;

  // Looking.
  virtual std::size_t slaveCount() const = 0;
  virtual std::uint8_t alState(unsigned int position) const = 0;
  virtual bool reserved() const = 0;
  virtual bool active() const = 0;
  virtual int openDeviceFiles() const = 0;
  virtual std::uint64_t framesSent() const = 0;
  // Bytes that the slave took from its last frame, all output sync managers in order.
  virtual std::vector<std::uint8_t> outputs(unsigned int position) const = 0;
  // The lower 64 bits of one mapped entry of them. False when the configuration in use maps no such output.
  virtual bool outputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                           std::uint64_t& value) const = 0;
  // Bytes that the slave put into its last frame, all input sync managers in order; empty while it is not
  // configured.
  virtual std::vector<std::uint8_t> inputs(unsigned int position) const = 0;
  // Pins the slave's input bytes (all input sync managers in order) instead of its model; empty: model again.
  virtual void setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) = 0;
  // Pins one entry, wherever it is mapped as an input, on top of model and setInputs; until the next
  // setInputs.
  virtual void setInputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                             std::uint64_t value) = 0;
  // Value of an object; empty when there is none. Setting may change the length, but not of what a drive
  // works with; false when that is asked for, or when there is none.
  virtual std::vector<std::uint8_t> objectValue(unsigned int position, std::uint16_t index,
                                                std::uint8_t subindex) const = 0;
  virtual bool setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                              const std::vector<std::uint8_t>& bytes) = 0;
  // Registers of the slave as the device file shows them, and any of them set, counters included. Live ones
  // (type, station address, AL status, system time) keep showing the state of the slave.
  virtual std::vector<std::uint8_t> registers(unsigned int position, std::uint16_t address,
                                              std::size_t size) const = 0;
  virtual void setRegisters(unsigned int position, std::uint16_t address,
                            const std::vector<std::uint8_t>& bytes) = 0;
  // What the reference clock shows now without jitter, ns since 2000-01-01.
  virtual std::uint64_t referenceTime() const = 0;
  virtual std::uint64_t callCount(Call call) const = 0;
  // Tracing allocates; it is off by default so that a cycle stays free of allocations.
  virtual void setTracing(bool on) = 0;
  // It and misuse() show what still grows: look at them while no other thread makes calls on this master.
  virtual const std::vector<TraceEntry>& trace() const = 0;
  virtual void clearTrace() = 0;
  virtual const Misuse& misuse() const = 0;

  // Called with the bus at the end of each ecrt_master_send on the active master: the frame has gone round or
  // is lost, slaves have taken its outputs and given it their inputs, drives have moved. `cycle` counts sends
  // since activation from 1, as the fault schedule does. What the observer changes concerns the next frame.
  // It may use the control side, but for reset() and loadBusFile; it must not throw, nor call <ecrt.h> or
  // what does.
  using Observer = std::function<void(Bus& bus, std::uint64_t cycle)>;
  virtual unsigned int addObserver(Observer observer) = 0; // its number
  // From inside an observer as well, also itself. False when there is none with this number.
  virtual bool removeObserver(unsigned int number) = 0;
  // Writes each cycle to a CSV file, from the next one on; empty: no more. What fails is told once on
  // standard error.
  virtual void setRecord(const std::string& path) = 0;
};

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
