#include "adapt/Hint.h"

#include "adapt/Before.h"
#include "adapt/ScratchFile.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <set>

namespace igh_bus::adapt {
namespace {

std::vector<Request> requestKinds(const Sources& sources, const std::vector<DeviceKey>& slaves) {
  std::vector<Request> requests;
  for (const auto& key : std::set<DeviceKey>(slaves.begin(), slaves.end())) {
    Request request;
    request.device = chooseRevision(sources.devices, key, RevisionRule::OLDER);
    request.key = key;
    if (request.device)
      requests.push_back(std::move(request));
  }
  return requests;
}

Summary summaryOf(const std::vector<std::string>& paths, const std::vector<DeviceKey>& slaves) {
  const auto sources = readSources(paths);
  std::vector<std::string> notes;
  const auto requests = slaves.empty() ? requestAll(sources, notes) : requestKinds(sources, slaves);
  auto adaptation = adaptDevices(sources, requests, loadedBefore(sources, false));
  for (const auto& part : adaptation.parts) {
    const ScratchFile scratch;
    storePart(sources, adaptation, part, scratch.path(), true);
  }
  return adaptation.summary();
}

} // namespace

std::string adaptHint(const std::vector<std::string>& paths, const std::vector<DeviceKey>& slaves) {
  try {
    const auto sum = summaryOf(paths, slaves);
    if (sum.reachableAfter <= sum.reachableBefore && sum.wholeAfter <= sum.wholeBefore)
      return {};
    return format(
        "igh_bus adapt would make %zu of %zu entries reachable, %zu are now, and %zu of %zu devices "
        "whole, %zu are now",
        sum.reachableAfter, sum.entries, sum.reachableBefore, sum.wholeAfter, sum.devices, sum.wholeBefore);
  } catch (const Failure&) {
    return {};
  }
}

} // namespace igh_bus::adapt
