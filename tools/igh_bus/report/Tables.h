// The tables of the page.
#ifndef IGH_BUS_REPORT_TABLES_H
#define IGH_BUS_REPORT_TABLES_H

#include <nlohmann/json.hpp>

#include <string>

namespace igh_bus {

std::string timingTable(const nlohmann::ordered_json& data);
std::string errorTable(const nlohmann::ordered_json& data);
// What became of slaves while the bus ran; nothing where nothing did.
std::string troubleTable(const nlohmann::ordered_json& data);
std::string slaveTable(const nlohmann::ordered_json& data);
// Names and values of one object.
std::string factTable(const std::string& caption, const nlohmann::ordered_json& facts);

} // namespace igh_bus

#endif
