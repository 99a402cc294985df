// Values of objects: as texts of the command line, as numbers for the library, as bytes for the slave.
#ifndef IGH_BUS_SDO_VALUE_H
#define IGH_BUS_SDO_VALUE_H

#include <cstdint>
#include <igh_master.h>
#include <string>
#include <vector>

namespace igh_bus {

struct SdoType {
  const char* name;
  ETHERCAT_DATA_TYPE id;
  std::uint32_t size; // bytes
  // Bounds of what the type holds; equal for floating-point types, which are bounded by their format.
  double lowest;
  double highest;
  bool whole() const { return lowest != highest; }
};

// All throw Failure(usageError) with the reason. The type by the library's name, in either case:
const SdoType& parseType(const std::string& name);
// A number that the type holds; whole numbers also in hexadecimal.
double parseValue(const SdoType& type, const std::string& text);
// Throws unless the type holds this number; `text` names it in the reason.
void checkFits(const SdoType& type, double value, const std::string& text);
// Pairs of hexadecimal digits, with or without blanks between them.
std::vector<std::uint8_t> parseBytes(const std::vector<std::string>& texts);

// "39 (0x0027)"; the hexadecimal number has the width of the type.
std::string valueText(const SdoType& type, double value);

std::vector<std::uint8_t> encode(const SdoType& type, const std::vector<double>& values);
std::vector<double> decode(const SdoType& type, const std::vector<std::uint8_t>& bytes);

} // namespace igh_bus

#endif
