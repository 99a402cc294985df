// One device from the maker's description to the adapted one, with everything that is said about it.
#ifndef IGH_BUS_ADAPT_PLAN_H
#define IGH_BUS_ADAPT_PLAN_H

#include "adapt/Source.h"
#include "adapt/Target.h"
#include "adapt/Wishes.h"

namespace igh_bus::adapt {

struct Judgement {
  bool whole = false; // all entries reachable, and the clock found where there is any
  std::size_t reachable = 0;
};

struct Plan {
  const SourceDevice* source = nullptr;
  DeviceKey key;                    // under which it is written
  std::vector<unsigned int> slaves; // that it serves, by position; none with --all
  std::vector<SmLayout> layout;
  std::vector<TargetSm> target; // as `layout`
  const SourceMode* clock = nullptr;
  bool clockWished = true;          // false: --mode none
  std::vector<std::string> modules; // of the slots
  Changes changes;
  std::vector<std::string> open; // not settled, and with what it can be
  std::size_t entries = 0;       // of its process data, gaps left out
  Judgement before;
  Judgement after;
  std::vector<std::string> reasons; // why it is not whole afterwards

  const std::string& name() const { return source->typeName; }
};

// Throws Failure(usageError) for wishes that this device cannot fulfil.
Plan planDevice(const Sources& sources, const SourceDevice& device, const DeviceKey& key,
                const Wishes& wishes);

// "0x6000:01"
std::string objectText(std::uint16_t index, std::uint8_t subindex);

} // namespace igh_bus::adapt

#endif
