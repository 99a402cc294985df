// Process-data handles: entries by name, their values, and their way to and from the domain image.
#include "EthercatObject/CEthercatMaster.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

namespace {

constexpr unsigned int INVALID_ID = 0xFFFFFFFFU;

// A text of a description by the two-step size protocol: length first, then the bytes.
template <class READER> std::string readText(READER reader) {
  unsigned long size = 0;
  if (!reader(nullptr, size) || size == 0) {
    return {};
  }
  std::string text(size, '\0');
  reader(text.data(), size);
  text.resize(std::strlen(text.c_str()));
  return text;
}

} // namespace

std::string CEthercatMaster::entryName(const CSlaveENIObject& description, unsigned int entry) {
  return readText(
      [&](char* text, unsigned long& size) { return description.getPDOEntryName(entry, text, size); });
}

std::string CEthercatMaster::entryTypeName(const CSlaveENIObject& description, unsigned int entry) {
  return readText(
      [&](char* text, unsigned long& size) { return description.getPDOEntryDataType(entry, text, size); });
}

int CEthercatMaster::_PDO_ENTRY_INFO_KEY::compare(const _PDO_ENTRY_INFO_KEY& a,
                                                  const _PDO_ENTRY_INFO_KEY& b) {
  if (a.slave != b.slave) {
    return a.slave < b.slave ? -1 : 1;
  }
  const int names = a.name.compare(b.name);
  return names == 0 ? 0 : (names < 0 ? -1 : 1);
}

bool CEthercatMaster::_PDO_ENTRY_INFO_OBJECT::initPdoEntryDataType(const std::string& typeName) {
  dataType = CEthercatDataHelper::getTypeByName(typeName.c_str());
  size = CEthercatDataHelper::getTypeSize(dataType);
  return size != 0;
}

bool CEthercatMaster::createPdoInfo(unsigned int slave, const char* name, bool read, unsigned int* id) {
  if (m_reservation.master() == nullptr || name == nullptr || id == nullptr || slave >= m_vecSlaves.size()) {
    return false;
  }
  const _PDO_ENTRY_INFO_KEY key{slave, name};
  if (_PDO_ENTRY_INFO_OBJECT* const shared = m_pdoHandles.findKey(key, *id)) {
    shared->users.add(read);
    m_bArrangementStale = true;
    return true;
  }
  CSlaveENIObject* const description = m_vecSlaves[slave]->getENIObject();
  _PDO_ENTRY_INFO_OBJECT object;
  unsigned long entry = ULONG_MAX;
  if (description != nullptr) {
    object.registration = description->getSlavePDOEntryReg(name, entry);
  }
  if (entry == ULONG_MAX) {
    *id = INVALID_ID;
    return false;
  }
  object.offset = m_vecSlaves[slave]->getPdoEntryOffset(static_cast<unsigned int>(entry));
  object.users.add(read);
  object.initPdoEntryDataType(entryTypeName(*description, static_cast<unsigned int>(entry)));
  const auto size = static_cast<unsigned int>(object.size);
  auto place = m_pdoHandles.makePlace(key);
  m_inputs.reserve(size);
  m_outputs.reserve(size);
  if (size != 0) { // from here on nothing fails
    object.inputPosition = m_inputs.add(size);
    object.outputPosition = m_outputs.add(size);
  }
  *id = m_pdoHandles.enter(std::move(place), object);
  m_bArrangementStale = true;
  return true;
}

void CEthercatMaster::destroyPdoInfo(unsigned int id, bool read) {
  if (m_reservation.master() == nullptr) {
    return;
  }
  m_pdoHandles.release(id, read);
  m_bArrangementStale = m_bArrangementStale || m_pdoHandles.find(id) != nullptr;
}

bool CEthercatMaster::readPdo(unsigned int id, double* value) {
  if (m_reservation.master() == nullptr || m_pPdoEntryRegs == nullptr || value == nullptr) {
    return false;
  }
  const _PDO_ENTRY_INFO_OBJECT* const object = m_pdoHandles.find(id);
  if (object == nullptr || (object->users.flags & HANDLE_READABLE) == 0) {
    return false;
  }
  CEthercatDataHelper::doubleFromBuffer(object->dataType, m_inputs.at(object->inputPosition), false, value,
                                        0);
  return true;
}

bool CEthercatMaster::writePdo(unsigned int id, double value) {
  if (m_reservation.master() == nullptr || m_pPdoEntryRegs == nullptr) {
    return false;
  }
  const _PDO_ENTRY_INFO_OBJECT* const object = m_pdoHandles.find(id);
  if (object == nullptr || (object->users.flags & HANDLE_WRITABLE) == 0) {
    return false;
  }
  CEthercatDataHelper::doubleToBuffer(value, object->dataType, false, m_outputs.at(object->outputPosition),
                                      0);
  return true;
}

void CEthercatMaster::copyInputs() {
  if (m_bArrangementStale) {
    arrangeProcessData();
  }
  if (m_pDomainData != nullptr) {
    m_inputs.copyFromImage(m_pDomainData);
  }
}

void CEthercatMaster::copyOutputs() {
  if (m_bArrangementStale) {
    arrangeProcessData();
  }
  if (m_pDomainData != nullptr) {
    m_outputs.copyToImage(m_pDomainData);
  }
}

void CEthercatMaster::arrangeProcessData() {
  m_inputs.beginItems();
  m_outputs.beginItems();
  for (_PDO_ENTRY_INFO_OBJECT& object : m_vecPdoInfo) {
    if (object.isFree() || object.size == 0) {
      continue;
    }
    const auto size = static_cast<unsigned int>(object.size);
    const unsigned int inImage = bytesInImage(object);
    const unsigned int input = (object.users.flags & HANDLE_READABLE) != 0 ? inImage : 0;
    const unsigned int output = (object.users.flags & HANDLE_WRITABLE) != 0 ? inImage : 0;
    m_inputs.addItem({&object.inputPosition, size, input == 0 ? UINT_MAX : object.offset->offset, input});
    m_outputs.addItem({&object.outputPosition, size, output == 0 ? UINT_MAX : object.offset->offset, output});
  }
  m_inputs.arrange();
  m_outputs.arrange();
  m_bArrangementStale = false;
}

// 0 for an entry that has no place in the image: a gap was never registered.
unsigned int CEthercatMaster::bytesInImage(const _PDO_ENTRY_INFO_OBJECT& object) const {
  if (m_pDomainData == nullptr || object.offset == nullptr || object.registration->index == 0 ||
      object.offset->offset >= m_uiImageSize) {
    return 0;
  }
  return std::min(static_cast<unsigned int>(object.size), m_uiImageSize - object.offset->offset);
}
