// Control side of the simulated EtherCAT master: what a test or a test bench says to the bus.
//
// The library under test calls <ecrt.h>; the test builds the bus, sets faults and reads what happened here.
// Nothing locks: use one thread, or none of this while another thread cycles. States, transfers and scans
// take the time of a real master, unless setTiming says otherwise; they move only while the application
// cycles.
#ifndef ETHERCAT_SIMULATION_SIMULATION_H
#define ETHERCAT_SIMULATION_SIMULATION_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace ethercat_simulation {

// What a slave does with its process data once it exchanges.
enum class SlaveModel {
  loopback, // the inputs mirror the outputs byte for byte, as far as both reach, as of the frame before
  counter,  // every input entry counts frames, modulo its width
  drive,    // a CiA 402 drive: its objects move with SDO transfers and with the entries that are mapped
};

// The axis of a drive. Time passes by cycles, each of them cycleUs long, whatever the real period is.
struct DriveParameters {
  std::uint32_t cycleUs = 1000;
  std::uint32_t lagUs = 2000;         // first-order lag of the actual values; 0: they follow at once
  double ratedAcceleration = 1e6;     // counts/s^2 at the rated torque, which is 1000
  std::uint32_t watchdogUs = 100'000; // without process data in OP, until it falls to SAFEOP; 0: never
};

enum class Direction { output, input }; // seen from the master

struct Entry {
  std::uint16_t index = 0; // 0 is a gap
  std::uint8_t subindex = 0;
  std::uint8_t bitLength = 0;
};

struct Pdo {
  std::uint16_t index = 0;
  std::vector<Entry> entries;
  bool fixed = false;                       // its mapping is read-only
  std::vector<std::uint16_t> excludes = {}; // PDOs that must not be assigned beside it
};

struct SyncManager {
  std::uint8_t index = 0;
  Direction direction = Direction::output;
  std::vector<Pdo> pdos;
};

// One entry of a slave's object dictionary.
struct Object {
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  std::vector<std::uint8_t> bytes;
  bool readOnly = false;
};

// What becomes of the transfers of one object; for complete access the lowest subindex of the object tells.
enum class SdoFault {
  none,
  abort,
  timeOut,     // no answer: ERROR after ten times the cycles of a transfer
  shortAnswer, // reads give one byte less than the object has
  longAnswer,  // reads give one byte more
  busyForEver, // holds up the later requests of the slave as well
};

struct Slave {
  std::uint32_t vendorId = 0;
  std::uint32_t productCode = 0;
  std::uint32_t revisionNumber = 0;
  std::uint32_t serialNumber = 0;
  std::uint16_t alias = 0;
  std::string name;
  SlaveModel model = SlaveModel::loopback;
  DriveParameters drive;                  // of the model drive
  bool distributedClocks = true;          // has a clock that can serve as reference
  std::uint32_t configurationUs = 28'000; // in PREOP, while the master configures it; with real timing
  // What the slave maps and assigns without configuration. A slave that lists anything here or in furtherPdos
  // compares the length that the master gives each sync manager with what it needs, and refuses SAFEOP with
  // AL status code 0x001D (outputs) or 0x001E (inputs) when they differ.
  std::vector<SyncManager> defaultMapping;
  std::vector<Pdo> furtherPdos; // that can be assigned, and are not
  bool checksLengths = true;    // false: the simplest of I/O chips, in which the bits just move
  bool coe = true;              // has a mailbox with objects
  // What of its PDOs the master writes, when it has CoE; otherwise it warns of a difference and goes on. An
  // entry is known to the slave when it is an object or stands in one of its PDOs.
  bool pdoAssign = false; // 0x1C12, 0x1C13
  bool pdoConfig = false; // 0x1600, 0x1A00 and on, but for fixed PDOs
  // Reached by SDO requests. Complete access transfers subindex 0, padded to 16 bits, and then the others in
  // their order; writes must have the length of the object.
  // A drive adds its own objects where they are not listed; 0x6064 is where its axis stands at first.
  std::vector<Object> objects;
};

enum class FaultKind {
  lostFrame,    // of each cycle
  lateFrame,    // of each cycle
  silentSlave,  // its share of the working counter is missing
  linkDown,     // at the master
  wireBreak,    // behind the slave
  powerOff,     // of the slave, and on again
  alError,      // the slave falls back
  sdoAbort,     // of one object
  sdoSilence,   // of one object
  errorCounter, // counts up by one in each cycle
  clockStep,    // of the reference clock, once
};

// One line of a fault schedule. Cycles are sends since activation, the first is 1. Exactly one of `at`,
// `every` and `probability` is not 0. A fault that lasts does not begin anew.
struct Fault {
  FaultKind kind = FaultKind::lostFrame;
  std::uint64_t at = 0;
  std::uint64_t every = 0;
  double probability = 0; // of each cycle
  std::uint32_t duration = 1;
  unsigned int slave = 0; // position
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  std::uint8_t alState = 4;
  std::uint16_t alCode = 0x001B;
  std::uint16_t counter = 0x0300; // register, 0x0300 to 0x0313
  std::int64_t stepNs = 0;
  // Outlives a deactivation: its cycles are counted from the first activation on, and go on with the next
  // one.
  bool acrossActivations = false;
};

// Every call that can be traced or made to fail. Device calls are open, close and ioctl of /dev/EtherCAT<n>.
enum class Call {
  requestMaster,
  releaseMaster,
  getSlave,
  slaveConfig,
  configPdos,
  configDc,
  configState,
  createDomain,
  regPdoEntryList,
  domainData,
  domainSize,
  domainProcess,
  domainQueue,
  domainState,
  activate,
  deactivate,
  receive,
  send,
  masterState,
  linkState,
  applicationTime,
  syncReferenceClock,
  syncSlaveClocks,
  referenceClockTime,
  selectReferenceClock,
  createSdoRequest,
  createSdoRequestComplete,
  sdoTimeout,
  sdoState,
  sdoRead,
  sdoWrite,
  sdoData,
  sdoDataSize,
  sdoUpload,
  sdoDownload,
  sdoDownloadComplete,
  deviceOpen,
  deviceClose,
  deviceIoctl,
  count
};

struct TraceEntry {
  Call call;
  // "ecrt_master_slave_config(0, 1, 0x00000002, 0x044C2C52) = 0:1": the name, the arguments without the
  // master (ids in hexadecimal, a slave configuration as alias:position), " = " and the result where there is
  // one.
  std::string text;
};

struct Misuse {
  std::uint64_t deadHandle = 0;    // a handle that deactivation or release has freed, or a null handle
  std::uint64_t foreignHandle = 0; // a handle of another master, or no handle of this simulation at all
  std::uint64_t outOfOrder = 0;    // set-up call while active, cycle call while inactive, a
                                   // transfer started while the request is busy, an end
                                   // of the master while one is, and the like
  std::vector<std::string> lines;  // one sentence for each of the first 100
  std::uint64_t total() const { return deadHandle + foreignHandle + outOfOrder; }
};

// The clock of the reference slave, free-running on CLOCK_REALTIME: at activation it is offsetNs ahead of the
// real time (ns since 2000) and gains driftPpm from then on; each reading scatters by up to jitterNs to both
// sides. ecrt_master_sync_reference_clock sets it to the application time with the next frame.
struct ReferenceClock {
  std::int64_t offsetNs = 0;
  double driftPpm = 0;
  std::uint32_t jitterNs = 0;
  std::uint32_t seed = 1;
};

// What states, SDO transfers, scans and register accesses take.
enum class Timing {
  real, // the times of a real master
  fast, // a few cycles, counted in sends and receives; for tests that look at something else
};

// One simulated master with its bus. Lives until reset(); references stay valid until then.
class Bus {
public:
  virtual ~Bus() = default;

  // Building. Slaves take ring positions in the order in which they are added.
  virtual unsigned int addSlave(const Slave& slave) = 0;

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
  // Adds to an error counter, registers 0x0300 to 0x0313, up to 255.
  virtual void addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) = 0;
  virtual void stepReferenceClock(std::int64_t nanoseconds) = 0;
  // Adds to the schedule; what is random in it repeats itself with the seed, at every activation. False, and
  // nothing added, for a fault without a beginning, or of a slave or an object that is not there. A fault
  // that ends undoes what it did, whoever did the same meanwhile; deactivation ends all that are
  // not told to outlive it.
  virtual bool addFault(const Fault& fault) = 0;
  virtual void setFaultSeed(std::uint32_t seed) = 0;
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
  // Pins the slave's input bytes (all input sync managers in order) instead of its model; empty: model again.
  virtual void setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) = 0;
  // Value of an object; empty when there is none. Setting may change the length; false when there is none.
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
  virtual const std::vector<TraceEntry>& trace() const = 0;
  virtual void clearTrace() = 0;
  virtual const Misuse& misuse() const = 0;
};

// The bus of the master with this index; created empty on first use. From then on the master exists and can
// be requested, and the bus file named by the environment is not read for it any more.
Bus& bus(unsigned int masterIndex = 0);

// Ends every master: buses, handles, traces and misuse counts are gone, and ETHERCAT_SIMULATION_BUS is read
// again at the next request. Handles that the library under test still holds are dead afterwards.
void reset();

// Loads a bus file as ETHERCAT_SIMULATION_BUS would. Empty on success, else one line: file, place, reason.
std::string loadBusFile(const std::string& path);

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
