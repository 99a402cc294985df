#include "scan/SlaveDetails.h"

namespace igh_bus {
namespace {

constexpr std::uint16_t FEATURES = 0x0008; // registers
constexpr std::uint16_t AL_STATUS_CODE = 0x0134;
constexpr std::uint16_t MAILBOX_PROTOCOLS = 0x1C; // word of the SII

unsigned int clockBits(std::uint16_t features) {
  const bool clock = (features >> 2 & 1U) != 0;
  const bool wide = (features >> 3 & 1U) != 0;
  return !clock ? 0 : wide ? 64 : 32;
}

std::vector<std::string> protocols(std::uint16_t bits) {
  static constexpr const char* NAMES[] = {"AoE", "EoE", "CoE", "FoE", "SoE", "VoE"};
  std::vector<std::string> names;
  for (const char* name : NAMES) {
    if ((bits & 1U) != 0)
      names.emplace_back(name);
    bits = static_cast<std::uint16_t>(bits >> 1);
  }
  return names;
}

} // namespace

SlaveDetails readDetails(const DeviceFile& device, std::uint16_t slave) {
  SlaveDetails details;
  if (const auto features = device.reg(slave, FEATURES))
    details.clockBits = clockBits(*features);
  details.alStatusCode = device.reg(slave, AL_STATUS_CODE);
  if (const auto word = device.siiWord(slave, MAILBOX_PROTOCOLS))
    details.mailboxProtocols = protocols(*word);
  return details;
}

} // namespace igh_bus
