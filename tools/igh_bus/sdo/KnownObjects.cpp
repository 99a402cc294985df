#include "sdo/KnownObjects.h"

#include <algorithm>

namespace igh_bus {
namespace {

constexpr std::pair<std::uint16_t, const char*> NAMES[] = {
    {0x1000, "Device type"},
    {0x1001, "Error register"},
    {0x1003, "Errors so far"},
    {0x1008, "Device name"},
    {0x1009, "Hardware version"},
    {0x100A, "Software version"},
    {0x100B, "Bootloader version"},
    {0x1010, "Store parameters"},
    {0x1011, "Restore default parameters"},
    {0x1018, "Identity"},
    {0x10F0, "Backup parameters"},
    {0x10F1, "Error settings"},
    {0x10F3, "Diagnosis history"},
    {0x10F8, "Timestamp"},
    {0x1C00, "Types of the sync managers"},
    {0x1C10, "PDOs of sync manager 0"},
    {0x1C11, "PDOs of sync manager 1"},
    {0x1C12, "PDOs of sync manager 2"},
    {0x1C13, "PDOs of sync manager 3"},
    {0x1C32, "Synchronization of the outputs"},
    {0x1C33, "Synchronization of the inputs"},
    {0xF000, "Modules"},
    {0xF010, "Profiles of the modules"},
    {0xF030, "Configured modules"},
    {0xF050, "Modules found"},
};

constexpr std::pair<std::uint8_t, const char*> IDENTITY[] = {
    {1, "Vendor"}, {2, "Product"}, {3, "Revision"}, {4, "Serial number"}};
constexpr std::uint16_t IDENTITY_OBJECT = 0x1018;

} // namespace

KnownObjects::KnownObjects(const Device* device) {
  if (!device)
    return;
  for (auto& object : describedObjects(*device)) {
    m_described[object.index].insert(object.subindex);
    m_objects.try_emplace({object.index, object.subindex}, std::move(object));
  }
}

const SdoType* KnownObjects::type(std::uint16_t index, std::uint8_t subindex) const {
  const auto found = m_objects.find({index, subindex});
  return found == m_objects.end() ? nullptr : findType(found->second.type);
}

std::string KnownObjects::name(std::uint16_t index, std::uint8_t subindex) const {
  const auto found = m_objects.find({index, subindex});
  if (found != m_objects.end() && !found->second.name.empty())
    return found->second.name;
  if (index == IDENTITY_OBJECT) {
    for (const auto& [place, text] : IDENTITY) {
      if (place == subindex)
        return text;
    }
  }
  for (const auto& [known, text] : NAMES) {
    if (known == index && subindex == 0)
      return text;
  }
  return "";
}

std::string KnownObjects::text(std::uint16_t index, std::uint8_t subindex, const Bytes& bytes) const {
  const auto* known = type(index, subindex);
  const bool fits = known && (known->size == 0 || (!bytes.empty() && bytes.size() % known->size == 0));
  return fits ? valuesText(*known, bytes) : plainText(bytes);
}

std::vector<std::uint16_t> communicationObjects() {
  std::vector<std::uint16_t> indexes;
  for (const auto& [index, text] : NAMES)
    indexes.push_back(index);
  return indexes;
}

} // namespace igh_bus
