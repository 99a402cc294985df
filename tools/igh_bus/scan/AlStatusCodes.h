// The AL status codes, register 0x0134, in words.
#ifndef IGH_BUS_AL_STATUS_CODES_H
#define IGH_BUS_AL_STATUS_CODES_H

#include <cstdint>

namespace igh_bus {

const char* alStatusText(std::uint16_t code);

} // namespace igh_bus

#endif
