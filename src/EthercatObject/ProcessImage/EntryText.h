// Texts of a description's entries, by its two-step size protocol: length first, then the bytes.
#ifndef ETHERCATOBJECT_PROCESSIMAGE_ENTRYTEXT_H
#define ETHERCATOBJECT_PROCESSIMAGE_ENTRYTEXT_H

#include "ENIObject/ENIObject.h"

#include <cstring>
#include <string>

template <class READER> std::string readEntryText(READER reader) {
  unsigned long size = 0;
  if (!reader(nullptr, size) || size == 0) {
    return {};
  }
  std::string text(size, '\0');
  reader(text.data(), size);
  text.resize(std::strlen(text.c_str()));
  return text;
}

inline std::string entryName(const CSlaveENIObject& description, unsigned int entry) {
  return readEntryText(
      [&](char* text, unsigned long& size) { return description.getPDOEntryName(entry, text, size); });
}

inline std::string entryTypeName(const CSlaveENIObject& description, unsigned int entry) {
  return readEntryText(
      [&](char* text, unsigned long& size) { return description.getPDOEntryDataType(entry, text, size); });
}

#endif
