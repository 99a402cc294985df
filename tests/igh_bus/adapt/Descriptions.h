// Small description files of makers, and what `igh_bus adapt` makes of them.
#pragma once

#include "Program.h"

#include <nlohmann/json.hpp>

namespace descriptions {

using Json = nlohmann::json;

std::string element(const std::string& name, const std::string& text);
std::string device(const std::string& body, const std::string& type = "ProductCode=\"7\" RevisionNo=\"1\"");
std::string file(const std::string& devices, const std::string& modules = "");
// What is written, as "3.16 UINT Name [0x1 bit, 0xFE other]" for each entry: sync manager, bit, type.
std::string entriesOf(const Json& device);
std::string changesOf(const Json& device);
// Adapts, and reads what was written with describe: the messages of the library are looked at there too.
Json adapted(const std::string& xml, const std::string& options, std::string& description);
// Lines that begin with Tx or Rx are PDOs, in the short form of the other traps.
std::string pdos(const std::string& lines);

extern const std::string modular;    // a device with slots
extern const std::string moduleList; // what goes into them

} // namespace descriptions
