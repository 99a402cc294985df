#include "adapt/Clocks.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cctype>

namespace igh_bus::adapt {
namespace {

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string modeNames(const SourceDevice& device) {
  std::string names;
  for (const auto& mode : device.modes)
    names += (names.empty() ? "" : ", ") + quoted(mode.name);
  return names.empty() ? "none" : names;
}

const SourceMode* wishedMode(const SourceDevice& device, const std::string& name) {
  const auto found = std::find_if(device.modes.begin(), device.modes.end(),
                                  [&](const SourceMode& mode) { return mode.name == name; });
  if (found == device.modes.end())
    throw Failure(usageError, "--mode " + quoted(name) + ": " + quoted(device.typeName) + " has the modes " +
                                  modeNames(device));
  return &*found;
}

// The exact name first, so that a file that needs nothing stays as it is.
const SourceMode* bestMode(const SourceDevice& device, std::string& why) {
  const SourceMode* meant = nullptr;
  const SourceMode* active = nullptr;
  for (const auto& mode : device.modes) {
    if (mode.assignActivate == 0)
      continue;
    if (mode.name == "DC")
      return &mode;
    active = active ? active : &mode;
    meant = meant || !meansClocks(mode.name) ? meant : &mode;
  }
  why = meant ? "the mode that means distributed clocks; the library looks for \"DC\""
              : "the first mode that switches clocks on; the library looks for \"DC\"";
  return meant ? meant : active;
}

std::string handedOver(const SourceMode& mode) {
  const bool ofPeriod = mode.cycle0 == 0;
  std::string shift = format("%d ns", mode.shift0);
  if (mode.shift0 == 0)
    shift = ofPeriod ? "half the period" : format("%u ns", mode.cycle0 / 2);
  return "SYNC0 cycle " + (ofPeriod ? std::string("the period") : format("%u ns", mode.cycle0)) + ", shift " +
         shift + format("; SYNC1 cycle %u ns, shift %d ns", mode.cycle1, mode.shift1);
}

// A factor multiplies the period of the application, which the library does not know of.
void tellFactors(const SourceMode& mode, Changes& changes) {
  if (!mode.factor0.empty() && mode.factor0 != "1")
    changes.push_back({"clock", "mode " + quoted(mode.name), "CycleTimeSync0 Factor " + mode.factor0,
                       handedOver(mode), "the library does not read factors; this is what it hands over"});
  if (std::int64_t{mode.cycle1} + mode.shift1 < 0)
    changes.push_back({"clock", "mode " + quoted(mode.name), format("SYNC1 shift %d ns", mode.shift1),
                       handedOver(mode),
                       "SYNC1 would come before SYNC0: the master makes a wrong time of that"});
}

} // namespace

bool meansClocks(const std::string& name) {
  std::string letters;
  for (const char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)))
      letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  static constexpr const char* NAMES[] = {"dc",
                                          "dcsync",
                                          "dcsynchron",
                                          "dcsynchronous",
                                          "dcsynchronized",
                                          "dcsynchronised",
                                          "dcsync0",
                                          "dcsync01",
                                          "dcsynch",
                                          "dcmode",
                                          "dcon",
                                          "dcenabled",
                                          "dcsyncmode",
                                          "syncdc",
                                          "dcsyn",
                                          "synchrondc",
                                          "distributedclocks",
                                          "distributedclock",
                                          "dcsyncsync0",
                                          "dcsynchronsync0",
                                          "dcsyncron",
                                          "dc0"};
  return std::find(std::begin(NAMES), std::end(NAMES), letters) != std::end(NAMES);
}

ClockChoice chooseClock(const SourceDevice& device, const Wishes& wishes) {
  ClockChoice choice;
  std::string why = "--mode";
  if (!wishes.mode)
    choice.mode = bestMode(device, why);
  else if (*wishes.mode != "none")
    choice.mode = wishedMode(device, *wishes.mode);
  if (wishes.mode && !choice.mode && !device.modes.empty())
    choice.changes.push_back({"clock", "operation modes", modeNames(device), "none", why});
  if (!choice.mode)
    return choice;
  if (choice.mode->name != "DC")
    choice.changes.push_back({"clock", "operation mode", quoted(choice.mode->name), "\"DC\"", why});
  if (choice.mode->assignActivate == 0)
    choice.changes.push_back({"clock", "operation mode", quoted(choice.mode->name), "assign-activate 0",
                              "this mode switches no clock on"});
  tellFactors(*choice.mode, choice.changes);
  return choice;
}

} // namespace igh_bus::adapt
