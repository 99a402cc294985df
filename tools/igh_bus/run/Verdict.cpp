#include "run/Verdict.h"

#include "text/Text.h"

#include <cinttypes>
#include <igh_master.h>

namespace igh_bus {
namespace {

constexpr std::uint32_t OP = 8;

// Error 1 says nothing on a bus without process data.
bool counts(std::size_t code, bool processData) {
  return processData || code != ETHERCAT_ERROR_WORKING_COUNTER;
}

std::uint64_t errorSum(const ErrorCounts& errors, bool processData) {
  std::uint64_t sum = 0;
  for (std::size_t code = 1; code < errors.total.size(); ++code)
    sum += counts(code, processData) ? errors.total[code] : 0;
  return sum;
}

std::string stateFault(const RunFacts& facts) {
  constexpr std::uint64_t LASTING = 3; // single late frames happen on healthy buses
  if (facts.bySignal)
    return {};
  if (facts.seenOp && facts.states == 0)
    return std::string("the bus left OP; at the end ") +
           (facts.errors.lasting(ETHERCAT_ERROR_LINK_DOWN, LASTING) ? "the link was down"
                                                                    : "no slave answered");
  if (!facts.seenOp)
    return "the bus never reached OP; it ended in " + stateText(facts.states);
  if (facts.states != OP)
    return "the bus left OP; it ended in " + stateText(facts.states);
  for (const int code :
       {ETHERCAT_ERROR_WORKING_COUNTER, ETHERCAT_ERROR_LINK_DOWN, ETHERCAT_ERROR_SLAVE_STATE}) {
    if (counts(static_cast<std::size_t>(code), facts.processData) && facts.errors.lasting(code, LASTING))
      return std::string("at the end of the run: ") + errorText(code);
  }
  return {};
}

std::string limitFaults(const RunFacts& facts, const Limits& limits) {
  std::string text;
  const auto add = [&](const std::string& fault) { text += (text.empty() ? "" : "; ") + fault; };
  const std::optional<std::uint64_t> none = limits.strict ? std::optional<std::uint64_t>(0) : std::nullopt;
  const auto mostErrors = limits.errors ? limits.errors : none;
  const auto mostMissed = limits.missed ? limits.missed : none;
  if (mostErrors && errorSum(facts.errors, facts.processData) > *mostErrors)
    add(errorsText(facts.errors, facts.processData) + format(", allowed are %" PRIu64, *mostErrors));
  if (limits.latencyNs && facts.latestNs > *limits.latencyNs)
    add(format("a wake-up was %.1f us late, allowed are %.10g us", facts.latestNs / 1e3,
               *limits.latencyNs / 1e3));
  if (mostMissed && facts.missed > *mostMissed)
    add(format("%" PRIu64 " cycles missed, allowed are %" PRIu64, facts.missed, *mostMissed));
  return text;
}

// How many there were, where the limits have not said so.
std::string errorsBeside(const RunFacts& facts, const std::string& beyond) {
  const auto text = errorsText(facts.errors, facts.processData);
  return errorSum(facts.errors, facts.processData) != 0 && beyond.find(text) == std::string::npos ? text : "";
}

std::string joined(std::initializer_list<std::string> parts) {
  std::string text;
  for (const auto& part : parts)
    text += (text.empty() || part.empty() ? "" : "; ") + part;
  return text;
}

} // namespace

std::string errorsText(const ErrorCounts& errors, bool processData) {
  const auto sum = errorSum(errors, processData);
  if (sum == 0)
    return "no errors";
  std::string kinds;
  for (std::size_t code = 1; code < errors.total.size(); ++code) {
    if (counts(code, processData) && errors.total[code] != 0)
      kinds += (kinds.empty() ? "" : ", ") + std::string(errorText(static_cast<int>(code))) +
               format(" %" PRIu64, errors.total[code]);
  }
  return format("%" PRIu64 " error%s (", sum, sum == 1 ? "" : "s") + kinds + ")";
}

Verdict judge(const RunFacts& facts, const Limits& limits) {
  const auto state = stateFault(facts);
  const auto beyond = limitFaults(facts, limits);
  const auto errors = errorSum(facts.errors, facts.processData);
  if (!state.empty())
    return {false, joined({state, facts.troubles, beyond, errorsBeside(facts, beyond)}), errors};
  if (!beyond.empty())
    return {false, beyond, errors};
  return {true,
          (facts.byKey      ? "ended by a key, in "
           : facts.bySignal ? "ended by a signal, in "
                            : "in ") +
              stateText(facts.states) + " at the end, with " + errorsText(facts.errors, facts.processData),
          errors};
}

} // namespace igh_bus
