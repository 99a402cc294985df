#include "sdo/SdoAborts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace igh_bus {
namespace {

constexpr std::pair<std::uint32_t, const char*> TEXTS[] = {
    {0x05030000, "toggle bit not changed"},
    {0x05040000, "the protocol timed out"},
    {0x05040001, "command specifier not valid or unknown"},
    {0x05040005, "out of memory"},
    {0x06010000, "unsupported access to an object"},
    {0x06010001, "attempt to read a write-only object"},
    {0x06010002, "attempt to write a read-only object"},
    {0x06010003, "sub-index cannot be written: sub-index 0 must be 0 for it"},
    {0x06010004, "complete access is not supported for objects of variable length"},
    {0x06010005, "object is longer than the mailbox"},
    {0x06010006, "object is mapped to an RxPDO and cannot be written"},
    {0x06020000, "object does not exist in the object dictionary"},
    {0x06040041, "object cannot be mapped to a PDO"},
    {0x06040042, "the mapped objects would exceed the length of the PDO"},
    {0x06040043, "general parameter incompatibility"},
    {0x06040047, "general internal incompatibility in the device"},
    {0x06060000, "access failed because of a hardware error"},
    {0x06070010, "data type or length does not match"},
    {0x06070012, "data type does not match: too long"},
    {0x06070013, "data type does not match: too short"},
    {0x06090011, "sub-index does not exist"},
    {0x06090030, "value out of range"},
    {0x06090031, "value too high"},
    {0x06090032, "value too low"},
    {0x06090036, "maximum is less than minimum"},
    {0x08000000, "general error"},
    {0x08000020, "data cannot be transferred or stored"},
    {0x08000021, "data cannot be transferred or stored because of local control"},
    {0x08000022, "data cannot be transferred or stored in the present state of the device"},
    {0x08000023, "the device has no object dictionary, or cannot generate it"},
};

} // namespace

const char* abortText(std::uint32_t code) {
  const auto* const found =
      std::find_if(std::begin(TEXTS), std::end(TEXTS), [&](const auto& text) { return text.first == code; });
  return found == std::end(TEXTS) ? "for a reason of its own" : found->second;
}

} // namespace igh_bus
