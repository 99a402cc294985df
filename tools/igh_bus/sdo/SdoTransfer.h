// One SDO transfer: through the library, and past it to learn what the library does not tell.
#ifndef IGH_BUS_SDO_TRANSFER_H
#define IGH_BUS_SDO_TRANSFER_H

#include "bus/Options.h"
#include "sdo/SdoValue.h"

namespace igh_bus {

struct SdoTransfer {
  std::uint32_t slave = 0;
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  bool complete = false; // the whole object, in bytes
  bool read = true;
  const SdoType* type = nullptr; // null: bytes
  std::vector<double> values;    // of a type: to be written, or as many as shall be read
  std::vector<std::uint8_t> bytes;

  std::string object() const;
  std::size_t size() const { return type ? values.size() * type->size : bytes.size(); }
};

// Brings the bus up, transfers, and lets the bus go. What was read is in `values` or `bytes` then. Throws
// Failure with the slave's reason, or with the time when there was no answer.
void runTransfer(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer);

} // namespace igh_bus

#endif
