#include "adapt/Words.h"

#include "text/Text.h"

namespace igh_bus::adapt {
namespace {

std::string ownerText(const Plan& plan) {
  if (plan.slaves.empty())
    return "";
  std::string text = plan.slaves.size() == 1 ? "slave" : "slaves";
  for (std::size_t i = 0; i < plan.slaves.size(); ++i)
    text += format(i == 0 ? " %u" : ", %u", plan.slaves[i]);
  return text + "  ";
}

// Every line says whom it is about, so that it can be searched for.
std::string planText(const Plan& plan) {
  const auto owner = ownerText(plan) + '"' + plan.name() + '"';
  std::string text = owner + format(" 0x%08X revision 0x%08X: ", plan.key.productCode, plan.key.revision);
  if (plan.entries == 0)
    text += "no process data\n";
  else
    text += format("%zu of %zu entries reachable, %zu before; %s\n", plan.after.reachable, plan.entries,
                   plan.before.reachable, plan.after.whole ? "whole" : "not whole");
  const auto add = [&](const char* what, const std::string& line) {
    text += "  " + owner + "  " + what + "  " + line + "\n";
  };
  for (const auto& change : plan.changes) {
    const auto to = change.to == change.from ? "" : (change.from.empty() ? "" : " -> ") + change.to;
    add(change.what.c_str(), change.where + ": " + change.from + to + " (" + change.why + ")");
  }
  for (const auto& open : plan.open)
    add("open", open);
  for (const auto& reason : plan.reasons)
    add("out of reach", reason);
  return text;
}

} // namespace

std::string adaptationText(const Adaptation& adaptation) {
  std::string text;
  for (const auto& plan : adaptation.plans)
    text += planText(plan);
  for (const auto& note : adaptation.notes)
    text += note + "\n";
  const auto sum = adaptation.summary();
  return text +
         format("%zu devices with process data: %zu whole, %zu before; %zu of %zu entries reachable, %zu "
                "before\n",
                sum.devices, sum.wholeAfter, sum.wholeBefore, sum.reachableAfter, sum.entries,
                sum.reachableBefore);
}

} // namespace igh_bus::adapt
