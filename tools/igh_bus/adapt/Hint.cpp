#include "adapt/Hint.h"

#include "adapt/Before.h"
#include "adapt/ScratchFile.h"
#include "text/Failure.h"
#include "text/Text.h"

namespace igh_bus::adapt {
namespace {

Summary summaryOf(const std::vector<std::string>& paths) {
  const auto sources = readSources(paths);
  std::vector<std::string> notes;
  auto adaptation = adaptDevices(sources, requestAll(sources, notes), loadedBefore(sources, false));
  for (const auto& part : adaptation.parts) {
    const ScratchFile scratch;
    storePart(sources, adaptation, part, scratch.path(), true);
  }
  return adaptation.summary();
}

} // namespace

std::string adaptHint(const std::vector<std::string>& paths) {
  try {
    const auto sum = summaryOf(paths);
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
