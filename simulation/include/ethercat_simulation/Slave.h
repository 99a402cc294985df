// A simulated slave, as a test describes it.
#ifndef ETHERCAT_SIMULATION_SLAVE_H
#define ETHERCAT_SIMULATION_SLAVE_H

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

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
