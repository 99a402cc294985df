#include "report/SlaveFacts.h"

namespace igh_bus {

using Json = nlohmann::ordered_json;

Json seenData(const std::vector<SlaveFacts::Seen>& list) {
  Json data = Json::array();
  for (const auto& [cycle, text] : list)
    data.push_back({{"cycle", cycle}, {"text", text}});
  return data;
}

Json slavesData(const std::vector<SlaveFacts>& slaves) {
  Json list = Json::array();
  for (const auto& slave : slaves) {
    Json errors = Json::array();
    for (const auto& [code, count] : slave.errors)
      errors.push_back({{"code", code},
                        {"text", errorText(code)},
                        {"count", count.count},
                        {"first", count.first},
                        {"last", count.last}});
    list.push_back({{"position", slave.position},
                    {"name", slave.name},
                    {"alias", slave.alias},
                    {"state", slave.state},
                    {"al_status", slave.alStatus},
                    {"al_text", slave.alText},
                    {"answers", slave.answers},
                    {"lost_ports", slave.lostPorts},
                    {"errors", errors},
                    {"seen", seenData(slave.seen)}});
  }
  return list;
}

} // namespace igh_bus
