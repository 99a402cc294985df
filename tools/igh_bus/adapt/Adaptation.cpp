#include "adapt/Adaptation.h"

#include "adapt/Check.h"
#include "adapt/Writer.h"
#include "descriptions/Descriptions.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace igh_bus::adapt {
namespace {

const Device* findLoaded(const std::map<DeviceKey, const Device*>& devices, const DeviceKey& key) {
  const auto found = devices.find(key);
  return found == devices.end() ? nullptr : found->second;
}

std::map<DeviceKey, const Device*> byKey(const std::vector<Device>& devices) {
  std::map<DeviceKey, const Device*> map;
  for (const auto& device : devices)
    map.try_emplace(device.key, &device);
  return map;
}

// The first item of each object that the master writes.
std::map<std::pair<std::uint16_t, std::uint8_t>, const Item*> firstWritten(const Plan& plan) {
  std::map<std::pair<std::uint16_t, std::uint8_t>, const Item*> firsts;
  for (const auto& layout : plan.layout) {
    for (const auto& item : layout.items) {
      if (!item.free && !item.entry.gap())
        firsts.try_emplace({item.entry.index, item.entry.subindex}, &item);
    }
  }
  return firsts;
}

// Why it is out of reach, in words that several share.
std::string reasonFor(const Plan& plan, const Missing& missing, bool again) {
  if (!missing.item)
    return plan.clockWished ? "no operation mode switches them on" : "--mode none";
  if (missing.item->entry.bits == 0)
    return "the description gives it no length";
  if (again)
    return "its object stands in the process data before it, the master writes both into the slave, and "
           "finds "
           "the first only";
  if (!missing.item->free)
    return "the master writes the entries of its PDO into the slave (CoE with PdoConfig, not fixed), so they "
           "must stay as the slave knows them, and the library converts none of this kind there";
  if (missing.layout->assigned)
    return "it shares a byte with another PDO, and the master assigns the PDOs one by one";
  return "it lies in no whole byte of its own";
}

void explain(Plan& plan, const std::vector<Missing>& missing) {
  std::map<std::string, std::string> byReason;
  const auto firsts = firstWritten(plan);
  for (const auto& one : missing) {
    const bool again = one.item && !one.item->free &&
                       firsts.at({one.item->entry.index, one.item->entry.subindex}) != one.item;
    auto& names = byReason[reasonFor(plan, one, again)];
    names += names.empty() ? "\"" : ", \"";
    names += (one.item ? one.item->name : "distributed clocks") + '"';
  }
  for (const auto& [reason, names] : byReason) {
    plan.reasons.push_back(names);
    plan.reasons.back() += ": " + reason;
  }
}

// Why it must not be written; empty when it may be.
std::string judgeWritten(Plan& plan, const Device* device) {
  auto wrong = device ? difference(plan, *device) : "the library does not find it in what was made";
  if (!wrong.empty())
    return wrong;
  std::vector<Missing> missing;
  plan.after = judge(plan, device, &missing);
  explain(plan, missing);
  return {};
}

void checkMessages(const FileReport& report) {
  if (!report.loaded)
    throw Failure(usageError,
                  "what was made cannot be read again: " + report.reason + "; nothing is written");
  for (const auto& message : report.messages) {
    if (message.level == 0)
      throw Failure(usageError,
                    "the library complains of what was made: " + message.text + "; nothing is written");
  }
}

// What the library reads of what was made.
std::vector<Device> store(const SourceFile& vendor, const std::vector<const Plan*>& plans,
                          const std::string& path) {
  std::error_code error;
  std::filesystem::resize_file(path, 0, error);
  Document document;
  if (error || !document.create(path))
    throw Failure(usageError, path + " cannot be written");
  buildDocument(document, vendor, plans);
  document.store();
  auto report = Descriptions().load(path, false);
  checkMessages(report);
  return std::move(report.devices);
}

} // namespace

Summary Adaptation::summary() const {
  Summary sum;
  for (const auto& plan : plans) {
    if (plan.entries == 0)
      continue;
    ++sum.devices;
    sum.wholeBefore += plan.before.whole ? 1 : 0;
    sum.wholeAfter += plan.after.whole ? 1 : 0;
    sum.entries += plan.entries;
    sum.reachableBefore += plan.before.reachable;
    sum.reachableAfter += plan.after.reachable;
  }
  return sum;
}

std::vector<Request> requestAll(const Sources& sources, std::vector<std::string>& notes) {
  std::vector<Request> requests;
  std::set<DeviceKey> known;
  for (const auto& device : sources.devices) {
    if (known.insert(device.key).second) {
      Request request;
      request.device = &device;
      request.key = device.key;
      requests.push_back(std::move(request));
    } else {
      notes.push_back(format("%s: \"%s\" 0x%08X revision 0x%08X is described before; the first counts",
                             sources.files[device.file].path.c_str(), device.typeName.c_str(),
                             device.key.productCode, device.key.revision));
    }
  }
  return requests;
}

Adaptation adaptDevices(const Sources& sources, const std::vector<Request>& requests,
                        const std::vector<Device>& before) {
  Adaptation adaptation;
  const auto loaded = byKey(before);
  std::map<std::uint32_t, std::size_t> partOf;
  for (const auto& request : requests) {
    auto plan = planDevice(sources, *request.device, request.key, request.wishes);
    plan.slaves = request.slaves;
    plan.changes.insert(plan.changes.begin(), request.told.begin(), request.told.end());
    plan.open.insert(plan.open.begin(), request.open.begin(), request.open.end());
    // Under the slave's own revision, as the library looks for it; hidden devices are not among them.
    plan.before = judge(plan, findLoaded(loaded, request.key));
    const auto [part, fresh] = partOf.try_emplace(request.key.vendorId, adaptation.parts.size());
    if (fresh)
      adaptation.parts.push_back({request.device->file, {}});
    adaptation.parts[part->second].plans.push_back(adaptation.plans.size());
    adaptation.plans.push_back(std::move(plan));
  }
  for (const auto& path : sources.missing)
    adaptation.notes.push_back(path + ": a file refers to it, and it is not there");
  return adaptation;
}

void storePart(const Sources& sources, Adaptation& adaptation, const Part& part, const std::string& path,
               bool leaveOut) {
  auto numbers = part.plans;
  for (bool stored = false; !stored;) {
    std::vector<const Plan*> plans;
    plans.reserve(numbers.size());
    for (const auto number : numbers)
      plans.push_back(&adaptation.plans[number]);
    const auto devices = store(sources.files[part.vendorFile], plans, path);
    const auto loaded = byKey(devices);
    const auto wrong = std::stable_partition(numbers.begin(), numbers.end(), [&](std::size_t number) {
      auto& plan = adaptation.plans[number];
      plan.reasons.clear();
      const auto reason = judgeWritten(plan, findLoaded(loaded, plan.key));
      if (!reason.empty() && !leaveOut)
        throw Failure(usageError, format("\"%s\" revision 0x%08X: %s; nothing is written",
                                         plan.name().c_str(), plan.key.revision, reason.c_str()));
      if (!reason.empty())
        plan.reasons.push_back("left out: " + reason);
      return reason.empty();
    });
    stored = wrong == numbers.end();
    numbers.erase(wrong, numbers.end());
  }
}

} // namespace igh_bus::adapt
