// Small texts that several commands print alike.
#ifndef IGH_BUS_TEXT_H
#define IGH_BUS_TEXT_H

#include <cstdint>
#include <string>
#include <vector>

namespace igh_bus {

__attribute__((format(printf, 1, 2))) std::string format(const char* form, ...);

// "01 FF"
std::string hexPairs(const std::vector<std::uint8_t>& bytes);

// "OP"; for the states of several slaves, ORed: "PREOP+OP"; "none" for 0.
std::string stateText(std::uint32_t alStates);

// What a slave calls itself may be noise of an empty EEPROM: a terminal must not act on it, nor a line break.
void replaceControls(char* text);

} // namespace igh_bus

#endif
