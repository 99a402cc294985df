#include "run/Entries.h"

#include "sdo/SdoValue.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <set>

namespace igh_bus {
namespace {

// The library would take an input's name for an output, or an entry that it cannot convert, in silence.
const Entry& checkedEntry(const EntryAddress& address, bool write, const std::vector<FoundSlave>& slaves) {
  checkSlave(address.slave, slaves);
  const auto* device = slaves[address.slave].device;
  if (!device)
    throw Failure(usageError, format("slave %u has no description and therefore no entries", address.slave));
  const auto [entry, output] = findEntry(*device, address.entry);
  const std::string name =
      format("entry \"%s\" of slave %u (%s)", address.entry.c_str(), address.slave, device->typeName.c_str());
  if (!entry)
    throw Failure(usageError, "there is no " + name + "; igh_bus describe lists the names");
  if (convertedBytes(entry->type) == 0)
    throw Failure(usageError, name + " has type " + entry->type + ", which cannot be converted");
  if (write && !output)
    throw Failure(usageError, name + " is an input and cannot be set");
  return *entry;
}

} // namespace

void checkEntries(const RunOptions& options, const std::vector<FoundSlave>& slaves) {
  for (const auto& watch : options.watches)
    checkedEntry(watch, false, slaves);
  for (const auto& [address, value] : options.settings) {
    const auto& type = parseType(checkedEntry(address, true, slaves).type);
    checkFits(type, value, format("%.17g for %u:%s", value, address.slave, address.entry.c_str()));
  }
}

std::vector<EntryAddress> allEntries(const std::vector<FoundSlave>& slaves) {
  std::vector<EntryAddress> entries;
  for (std::uint32_t slave = 0; slave < slaves.size(); ++slave) {
    if (!slaves[slave].device)
      continue;
    std::set<std::string> seen;
    forEachEntry(*slaves[slave].device, [&](const SyncManager&, const Pdo&, const Entry& entry) {
      const auto* const reached = findEntry(*slaves[slave].device, entry.name).entry;
      if (!entry.gap() && reached && convertedBytes(reached->type) != 0 && seen.insert(entry.name).second)
        entries.push_back({slave, entry.name});
    });
  }
  return entries;
}

} // namespace igh_bus
