// One SDO transfer, and the two ways it can go.
#ifndef IGH_BUS_SDO_TRANSFER_H
#define IGH_BUS_SDO_TRANSFER_H

#include "bus/OpenedMaster.h"
#include "sdo/SdoValue.h"

namespace igh_bus {

struct SdoTransfer {
  std::uint32_t slave = 0;
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  bool complete = false; // the whole object, in bytes
  bool read = true;
  const SdoType* type = nullptr;     // null: bytes
  std::optional<std::uint32_t> size; // bytes that an answer must have
  Bytes bytes;                       // to be written, or what was read

  std::string object() const;
};

// What a slave says to one call.
struct SdoAnswer {
  int result = 0; // 0 or a negative error number
  std::uint32_t abortCode = 0;
  Bytes bytes; // of a read
};

// With the calls that wait: they need no activation and go beside a running application, which must cycle.
SdoAnswer callSlave(const OpenedMaster& master, const SdoTransfer& transfer);
// The slave's reason as one line; empty when it did what was asked. `seconds` have passed meanwhile.
std::string refusalText(const SdoTransfer& transfer, const SdoAnswer& answer, double seconds);
// Throws unless an answer has this length, or is made of whole values of the type.
void checkLength(const SdoTransfer& transfer, const Bytes& bytes);

// Calls the slave within this time. Throws Failure with the slave's reason.
void transferByCall(const OpenedMaster& master, double timeoutSeconds, SdoTransfer& transfer);

// By the library's cyclic requests: brings the bus up, transfers, and lets the bus go. A read needs `size`.
// What the library does not tell is asked of the slave afterwards. Throws Failure with the slave's reason, or
// with the time when there was no answer.
void transferByLibrary(const ScanOptions& options, double timeoutSeconds, SdoTransfer& transfer);

} // namespace igh_bus

#endif
