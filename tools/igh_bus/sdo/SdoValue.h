// Values of objects: as texts of the command line, as bytes for the slave, as numbers for the library.
#ifndef IGH_BUS_SDO_VALUE_H
#define IGH_BUS_SDO_VALUE_H

#include <cstdint>
#include <igh_master.h>
#include <string>
#include <vector>

namespace igh_bus {

struct SdoType {
  enum class Kind : std::uint8_t { truth, natural, integer, real, text };

  const char* name;
  Kind kind;
  std::uint32_t size;                    // bytes; 0: any number
  ETHERCAT_DATA_TYPE id = DATA_TYPE_RAW; // which the library does not convert

  bool whole() const { return kind == Kind::natural || kind == Kind::integer; }
  bool converted() const { return id != DATA_TYPE_RAW; }
  // Whole numbers from lowest() up to, but not, limit().
  double lowest() const;
  double limit() const;
};

using Bytes = std::vector<std::uint8_t>;

// All that parse throw Failure(usageError) with the reason. The type by its name, in either case; findType
// also knows a description's "STRING(20)", and gives null for what is none.
const SdoType& parseType(const std::string& name);
const SdoType* findType(const std::string& name);
// Numbers that the type holds, whole ones also in hexadecimal; of a text one word.
Bytes parseValues(const SdoType& type, const std::vector<std::string>& texts);
// Throws unless the type holds this number; `text` names it in the reason.
void checkFits(const SdoType& type, double value, const std::string& text);
// Pairs of hexadecimal digits, with or without blanks between them.
Bytes parseBytes(const std::vector<std::string>& texts);

// "39 (0x0027)", the hexadecimal number as wide as the type; several with commas; a text in quotes.
std::string valueText(const SdoType& type, double value); // of a type with numbers
std::string valuesText(const SdoType& type, const Bytes& bytes);
// For bytes of an unknown type: "FE (254, signed -2)", "\"EM500\"", "01 02 03".
std::string plainText(const Bytes& bytes);

// For types that the library converts.
Bytes encode(const SdoType& type, const std::vector<double>& values);
std::vector<double> decode(const SdoType& type, const Bytes& bytes);

} // namespace igh_bus

#endif
