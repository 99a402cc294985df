#include "adapt/Slaves.h"

#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <ecrt.h>

#include <array>

namespace igh_bus::adapt {
namespace {

std::string revisionsText(const std::vector<std::uint32_t>& revisions) {
  if (revisions.empty())
    return "none of its product is";
  std::string text = "described are revisions";
  for (std::size_t i = 0; i < revisions.size(); ++i)
    text += format(i == 0 ? " 0x%08X" : ", 0x%08X", revisions[i]);
  return text + " (see --revision)";
}

void requireDescriptions(const Sources& sources, const std::vector<FoundSlave>& slaves, RevisionRule rule) {
  std::string first;
  std::size_t further = 0;
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    const auto& info = slaves[i].info;
    const DeviceKey key{info.vendor_id, info.product_code, info.revision_number};
    if (chooseRevision(sources.devices, key, rule))
      continue;
    if (first.empty())
      first =
          format("slave %zu \"%s\" (vendor 0x%08X, product 0x%08X, revision 0x%08X) is not described: ", i,
                 info.name, key.vendorId, key.productCode, key.revision) +
          revisionsText(describedRevisions(sources.devices, key));
    else
      ++further;
  }
  if (!first.empty())
    throw Failure(usageError, first + (further != 0 ? format("; nor are %zu more slaves", further) : ""));
}

Wishes wishesOf(const std::map<unsigned int, Wishes>& wishes, unsigned int slave) {
  const auto found = wishes.find(slave);
  return found == wishes.end() ? Wishes() : found->second;
}

// An alias keeps the slave offline, and only the user can clear it.
void tellAlias(Request& request, unsigned int slave, const ec_slave_info_t& info) {
  if (info.alias == 0)
    return;
  request.told.push_back(
      {"alias", format("slave %u", slave), std::to_string(info.alias), std::to_string(info.alias),
       format("the real master keeps the slave offline with it; clear it with `ethercat alias "
              "-p %u 0` and switch the slave off and on",
              slave)});
}

void share(Request& request, unsigned int slave, const Wishes& wishes) {
  const auto& first = request.wishes;
  if (wishes.mode != first.mode || wishes.pdos != first.pdos || wishes.modules != first.modules)
    throw Failure(usageError,
                  format("slaves %u and %u are of one kind and share one description: give both the "
                         "same --mode, --pdo and --module",
                         request.slaves[0], slave));
  if (wishes.reported != first.reported)
    request.open.push_back(
        format("slave %u reports other modules than slave %u of the same kind, and the library "
               "has one description for both: that of slave %u is written",
               slave, request.slaves[0], request.slaves[0]));
}

bool upload(ec_master_t* master, unsigned int slave, std::uint16_t index, unsigned int subindex,
            std::uint32_t& value) {
  std::array<std::uint8_t, 4> bytes{};
  std::size_t size = 0;
  std::uint32_t abortCode = 0;
  if (ecrt_master_sdo_upload(master, static_cast<std::uint16_t>(slave), index,
                             static_cast<std::uint8_t>(subindex), bytes.data(), bytes.size(), &size,
                             &abortCode) != 0)
    return false;
  value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    value = value << 8U | bytes[i];
  return true;
}

std::map<unsigned int, std::uint32_t> identsAt(ec_master_t* master, unsigned int slave, std::uint16_t index) {
  std::map<unsigned int, std::uint32_t> idents;
  std::uint32_t count = 0;
  if (!upload(master, slave, index, 0, count))
    return idents;
  for (unsigned int slot = 1; slot <= (count & 0xFFU); ++slot) {
    if (!upload(master, slave, index, slot, idents[slot]))
      return {};
  }
  return idents;
}

} // namespace

std::vector<Request> requestSlaves(const Sources& sources, const std::vector<FoundSlave>& slaves,
                                   RevisionRule rule, const std::map<unsigned int, Wishes>& wishes) {
  requireDescriptions(sources, slaves, rule);
  std::vector<Request> requests;
  std::map<DeviceKey, std::size_t> places;
  for (unsigned int i = 0; i < slaves.size(); ++i) {
    const auto& info = slaves[i].info;
    const DeviceKey key{info.vendor_id, info.product_code, info.revision_number};
    const auto [place, fresh] = places.try_emplace(key, requests.size());
    if (fresh) {
      Request request;
      request.device = chooseRevision(sources.devices, key, rule);
      request.key = key;
      request.wishes = wishesOf(wishes, i);
      requests.push_back(std::move(request));
    } else {
      share(requests[place->second], i, wishesOf(wishes, i));
    }
    requests[place->second].slaves.push_back(i);
    tellAlias(requests[place->second], i, info);
  }
  return requests;
}

std::map<unsigned int, std::uint32_t> readModules(const ScanOptions& options, unsigned int slave) {
  static constexpr std::uint16_t DETECTED = 0xF050;
  static constexpr std::uint16_t CONFIGURED = 0xF030;
  const StderrCapture quiet; // a slave without such an object is nothing to complain of
  ec_master_t* master = ecrt_open_master(options.master);
  if (!master)
    return {};
  auto idents = identsAt(master, slave, DETECTED);
  if (idents.empty())
    idents = identsAt(master, slave, CONFIGURED);
  ecrt_release_master(master);
  return idents;
}

} // namespace igh_bus::adapt
