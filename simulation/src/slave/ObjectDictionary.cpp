#include "slave/ObjectDictionary.h"

#include <algorithm>
#include <cstdio>
#include <tuple>
#include <utility>

namespace ethercat_simulation {

std::string SdoPlace::text() const {
  char text[32];
  if (complete) {
    std::snprintf(text, sizeof text, "0x%04X:complete", unsigned{index});
  } else {
    std::snprintf(text, sizeof text, "0x%04X:%02X", unsigned{index}, unsigned{subindex});
  }
  return text;
}

ObjectDictionary::ObjectDictionary(const std::vector<Object>& objects) {
  for (const Object& object : objects) {
    m_items.push_back({object, SdoFault::none});
  }
  std::sort(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) {
    return std::tie(a.object.index, a.object.subindex) < std::tie(b.object.index, b.object.subindex);
  });
}

std::size_t ObjectDictionary::firstAt(std::uint16_t index, std::uint8_t subindex) const {
  const auto before = [&](const Item& item, int /*unused*/) {
    return std::tie(item.object.index, item.object.subindex) < std::tie(index, subindex);
  };
  return static_cast<std::size_t>(std::lower_bound(m_items.begin(), m_items.end(), 0, before) -
                                  m_items.begin());
}

const ObjectDictionary::Item* ObjectDictionary::find(std::uint16_t index, std::uint8_t subindex) const {
  const std::size_t place = firstAt(index, subindex);
  const bool found = place < m_items.size() && m_items[place].object.index == index &&
                     m_items[place].object.subindex == subindex;
  return found ? &m_items[place] : nullptr;
}

ObjectDictionary::Item* ObjectDictionary::find(std::uint16_t index, std::uint8_t subindex) {
  return const_cast<Item*>(std::as_const(*this).find(index, subindex));
}

const std::vector<std::uint8_t>* ObjectDictionary::value(std::uint16_t index, std::uint8_t subindex) const {
  const Item* item = find(index, subindex);
  return item != nullptr ? &item->object.bytes : nullptr;
}

std::vector<std::uint8_t>* ObjectDictionary::bytes(std::uint16_t index, std::uint8_t subindex) {
  Item* item = find(index, subindex);
  return item != nullptr ? &item->object.bytes : nullptr;
}

void ObjectDictionary::restore(const std::vector<Object>& objects) {
  for (const Object& object : objects) {
    setValue(object.index, object.subindex, object.bytes);
  }
}

bool ObjectDictionary::setValue(std::uint16_t index, std::uint8_t subindex,
                                const std::vector<std::uint8_t>& bytes) {
  Item* item = find(index, subindex);
  if (item != nullptr) {
    item->object.bytes = bytes;
  }
  return item != nullptr;
}

bool ObjectDictionary::setFault(std::uint16_t index, std::uint8_t subindex, SdoFault fault) {
  Item* item = find(index, subindex);
  if (item != nullptr) {
    item->fault = fault;
  }
  return item != nullptr;
}

SdoFault ObjectDictionary::fault(const SdoPlace& place) const {
  const std::size_t first = firstAt(place.index, place.subindex);
  const bool found = first < m_items.size() && m_items[first].object.index == place.index &&
                     (place.complete || m_items[first].object.subindex == place.subindex);
  return found ? m_items[first].fault : SdoFault::none;
}

SdoAbort ObjectDictionary::missing(const SdoPlace& place) const {
  const std::size_t first = firstAt(place.index, 0);
  const bool known = first < m_items.size() && m_items[first].object.index == place.index;
  return known ? SdoAbort::noSubindex : SdoAbort::noObject;
}

SdoAbort ObjectDictionary::upload(const SdoPlace& place, std::uint8_t* answer, std::size_t capacity,
                                  std::size_t* length) const {
  *length = 0;
  bool found = false;
  for (std::size_t i = firstAt(place.index, place.subindex); i < m_items.size(); ++i) {
    const Object& object = m_items[i].object;
    if (object.index != place.index || (!place.complete && object.subindex != place.subindex)) {
      break;
    }
    found = true;
    const std::size_t span = place.complete ? m_items[i].span() : object.bytes.size();
    for (std::size_t byte = 0; byte < span && *length + byte < capacity; ++byte) {
      answer[*length + byte] = byte < object.bytes.size() ? object.bytes[byte] : std::uint8_t{0};
    }
    *length += span;
    if (!place.complete) {
      break;
    }
  }
  return found ? SdoAbort::none : missing(place);
}

// The count in subindex 0 may be written over by a whole object, and keeps its value when it is read-only.
SdoAbort ObjectDictionary::refusal(const SdoPlace& place, std::size_t first, std::size_t size) const {
  std::size_t expected = 0;
  std::size_t i = first;
  for (; i < m_items.size() && m_items[i].object.index == place.index; ++i) {
    const Object& object = m_items[i].object;
    if (!place.complete && object.subindex != place.subindex) {
      break;
    }
    if (object.readOnly && (!place.complete || object.subindex != 0)) {
      return SdoAbort::readOnly;
    }
    expected += place.complete ? m_items[i].span() : object.bytes.size();
  }
  if (i == first) {
    return missing(place);
  }
  return expected == size ? SdoAbort::none : SdoAbort::length;
}

SdoAbort ObjectDictionary::download(const SdoPlace& place, const std::uint8_t* data, std::size_t size) {
  const std::size_t first = firstAt(place.index, place.subindex);
  const SdoAbort reason = refusal(place, first, size);
  if (reason != SdoAbort::none) {
    return reason;
  }
  const std::uint8_t* const end = data + size;
  for (std::size_t i = first; data < end; ++i) {
    Object& object = m_items[i].object;
    if (!object.readOnly) {
      std::copy_n(data, object.bytes.size(), object.bytes.begin());
    }
    data += place.complete ? m_items[i].span() : object.bytes.size();
  }
  return SdoAbort::none;
}

} // namespace ethercat_simulation
