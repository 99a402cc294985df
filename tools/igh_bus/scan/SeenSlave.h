// A slave as it is seen, with as much of it as was asked for.
#ifndef IGH_BUS_SEEN_SLAVE_H
#define IGH_BUS_SEEN_SLAVE_H

#include "bus/Survey.h"
#include "descriptions/Markup.h"
#include "scan/SlaveDetails.h"

#include <nlohmann/json.hpp>

namespace igh_bus {

struct DescribedRevision {
  std::uint32_t revision;
  bool hidden; // by a HideType: no slave gets this description
};

struct SeenSlave {
  FoundSlave found;
  std::vector<DescribedRevision> revisions; // of its product, for a slave without a description
  std::optional<SlaveDetails> details;
  std::optional<std::vector<SyncManager>> syncManagers;
};

std::vector<DescribedRevision> describedRevisions(const ec_slave_info_t& slave,
                                                  const std::vector<Device>& devices,
                                                  const std::vector<HiddenDevice>& hidden);

// `described`: there are descriptions, so a slave has one or misses it.
void printSeen(const std::vector<SeenSlave>& slaves, bool described);
nlohmann::ordered_json seenJson(const SeenSlave& slave, bool described);

// "MII"
const char* portText(ec_slave_port_desc_t kind);

} // namespace igh_bus

#endif
