// What is known of a slave's objects before it is asked: by its description, and of every slave by the
// standards.
#ifndef IGH_BUS_KNOWN_OBJECTS_H
#define IGH_BUS_KNOWN_OBJECTS_H

#include "descriptions/Device.h"
#include "sdo/SdoValue.h"

#include <map>
#include <set>

namespace igh_bus {

class KnownObjects {
public:
  explicit KnownObjects(const Device* device); // null: no description

  // Of the description.
  const std::map<std::uint16_t, std::set<std::uint8_t>>& described() const { return m_described; }
  // Null when it is not told, or is a type that no value is read of.
  const SdoType* type(std::uint16_t index, std::uint8_t subindex) const;
  // Empty when there is none.
  std::string name(std::uint16_t index, std::uint8_t subindex) const;
  // By the type when the bytes can be one, otherwise as they are.
  std::string text(std::uint16_t index, std::uint8_t subindex, const Bytes& bytes) const;

private:
  std::map<std::pair<std::uint16_t, std::uint8_t>, DescribedObject> m_objects;
  std::map<std::uint16_t, std::set<std::uint8_t>> m_described;
};

// The objects of the communication profile and of modular devices that a slave may have.
std::vector<std::uint16_t> communicationObjects();

} // namespace igh_bus

#endif
