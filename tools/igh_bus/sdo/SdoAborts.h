// The abort codes of CANopen over EtherCAT in words.
#ifndef IGH_BUS_SDO_ABORTS_H
#define IGH_BUS_SDO_ABORTS_H

#include <cstdint>

namespace igh_bus {

const char* abortText(std::uint32_t code);

} // namespace igh_bus

#endif
