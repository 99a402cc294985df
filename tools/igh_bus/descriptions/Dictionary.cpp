#include "descriptions/Dictionary.h"

#include "descriptions/Elements.h"

#include <map>

namespace igh_bus {
namespace {

using DataTypes = std::map<std::string, const _XmlNode*>;

constexpr std::uint32_t LAST_SUBINDEX = 255;

std::uint32_t numberIn(const _XmlNode* node, const char* name) {
  return CMasterENIObject::resolveENIValue(childText(node, name).c_str());
}

DataTypes dataTypesOf(const _XmlNode* dictionary) {
  DataTypes types;
  for (const auto* type : xml_file_children(firstChild(dictionary, "DataTypes"), "DataType"))
    types.try_emplace(childText(type, "Name"), type);
  return types;
}

// Null for a type that has no parts of its own.
const _XmlNode* find(const DataTypes& types, const std::string& name) {
  const auto found = types.find(name);
  return found == types.end() ? nullptr : found->second;
}

// The elements of an array lie behind sub-index 0 in one item, whose type says how many there are.
void addArray(const DescribedObject& object, const _XmlNode* array, std::vector<DescribedObject>& objects) {
  const auto* bounds = firstChild(array, "ArrayInfo");
  const auto first = numberIn(bounds, "LBound");
  const auto count = numberIn(bounds, "Elements");
  for (std::uint32_t place = 0; place < count && first + place <= LAST_SUBINDEX; ++place)
    objects.push_back(
        {object.index, static_cast<std::uint8_t>(first + place), object.name, childText(array, "BaseType")});
}

void addItems(const DescribedObject& object, const _XmlNode* type, const DataTypes& types,
              std::vector<DescribedObject>& objects) {
  const auto most = objects.size() + LAST_SUBINDEX; // many objects may share a type with many parts
  for (const auto* item : xml_file_children(type, "SubItem")) {
    if (objects.size() > most)
      return;
    const auto* array = find(types, childText(item, "Type"));
    const auto subindex = numberIn(item, "SubIdx");
    if (firstChild(array, "ArrayInfo"))
      addArray(object, array, objects);
    else if (subindex <= LAST_SUBINDEX)
      objects.push_back({object.index, static_cast<std::uint8_t>(subindex),
                         object.name + ": " + childText(item, "Name"), childText(item, "Type")});
  }
}

} // namespace

std::vector<DescribedObject> dictionaryOf(const _XmlNode* device) {
  std::vector<DescribedObject> objects;
  const auto* dictionary = firstChild(firstChild(device, "Profile"), "Dictionary");
  const auto types = dataTypesOf(dictionary);
  for (const auto* node : xml_file_children(firstChild(dictionary, "Objects"), "Object")) {
    const DescribedObject object{static_cast<std::uint16_t>(numberIn(node, "Index")), 0,
                                 childText(node, "Name"), childText(node, "Type")};
    const auto* type = find(types, object.type);
    if (firstChild(type, "SubItem"))
      addItems(object, type, types, objects);
    else
      objects.push_back(object);
  }
  return objects;
}

} // namespace igh_bus
