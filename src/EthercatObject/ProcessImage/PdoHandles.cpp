#include "EthercatObject/ProcessImage/PdoHandles.h"

#include "EthercatDataHelper/EthercatDataHelper.h"
#include "EthercatObject/ProcessImage/EntryText.h"
#include "EthercatObject/Slave/CEthercatSlave.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace {

constexpr unsigned int INVALID_ID = 0xFFFFFFFFU;

// 0 for an entry that has no place in the image: a gap was never registered.
unsigned int bytesInImage(const _PDO_ENTRY_INFO_OBJECT& object, const _IMAGE& image) {
  if (image.data == nullptr || object.offset == nullptr || object.registration->index == 0 ||
      object.offset->offset >= image.size) {
    return 0;
  }
  return std::min(static_cast<unsigned int>(object.size), image.size - object.offset->offset);
}

} // namespace

bool CPdoHandles::create(const CEthercatSlave& slave, const char* name, bool read, unsigned int* id) {
  const _PDO_ENTRY_INFO_KEY key{slave.getSlaveIndex(), name};
  if (_PDO_ENTRY_INFO_OBJECT* const shared = m_handles.findKey(key, *id)) {
    shared->users.add(read);
    m_bArrangementStale = true;
    return true;
  }
  const CSlaveENIObject* const description = slave.getENIObject();
  _PDO_ENTRY_INFO_OBJECT object;
  unsigned long entry = ULONG_MAX;
  if (description != nullptr) {
    object.registration = description->getSlavePDOEntryReg(name, entry);
  }
  if (entry == ULONG_MAX) {
    *id = INVALID_ID;
    return false;
  }
  object.offset = slave.getPdoEntryOffset(static_cast<unsigned int>(entry));
  object.users.add(read);
  object.initPdoEntryDataType(entryTypeName(*description, static_cast<unsigned int>(entry)));
  const auto size = static_cast<unsigned int>(object.size);
  auto place = m_handles.makePlace(key);
  m_inputs.reserve(size);
  m_outputs.reserve(size);
  if (size != 0) { // from here on nothing fails
    object.inputPosition = m_inputs.add(size);
    object.outputPosition = m_outputs.add(size);
  }
  *id = m_handles.enter(std::move(place), object);
  m_bArrangementStale = true;
  return true;
}

void CPdoHandles::destroy(unsigned int id, bool read) {
  m_handles.release(id, read);
  m_bArrangementStale = m_bArrangementStale || m_handles.find(id) != nullptr;
}

void CPdoHandles::clear() {
  m_handles.clear();
  m_inputs.clear();
  m_outputs.clear();
}

bool CPdoHandles::read(unsigned int id, double* value) const {
  const _PDO_ENTRY_INFO_OBJECT* const object = m_handles.find(id);
  if (object == nullptr || value == nullptr || !object->users.has(true)) {
    return false;
  }
  CEthercatDataHelper::doubleFromBuffer(object->dataType, m_inputs.at(object->inputPosition), false, value,
                                        0);
  return true;
}

bool CPdoHandles::write(unsigned int id, double value) {
  const _PDO_ENTRY_INFO_OBJECT* const object = m_handles.find(id);
  if (object == nullptr || !object->users.has(false)) {
    return false;
  }
  CEthercatDataHelper::doubleToBuffer(value, object->dataType, false, m_outputs.at(object->outputPosition),
                                      0);
  return true;
}

void CPdoHandles::copyInputs(const _IMAGE& image) {
  if (m_bArrangementStale) {
    arrange(image);
  }
  if (image.data != nullptr) {
    m_inputs.copyFromImage(image.data);
  }
}

void CPdoHandles::copyOutputs(const _IMAGE& image) {
  if (m_bArrangementStale) {
    arrange(image);
  }
  if (image.data != nullptr) {
    m_outputs.copyToImage(image.data);
  }
}

void CPdoHandles::arrange(const _IMAGE& image) {
  m_inputs.beginItems();
  m_outputs.beginItems();
  for (_PDO_ENTRY_INFO_OBJECT& object : m_handles.objects()) {
    if (object.isFree() || object.size == 0) {
      continue;
    }
    const auto size = static_cast<unsigned int>(object.size);
    const unsigned int inImage = bytesInImage(object, image);
    const unsigned int input = object.users.has(true) ? inImage : 0;
    const unsigned int output = object.users.has(false) ? inImage : 0;
    m_inputs.addItem({&object.inputPosition, size, input == 0 ? UINT_MAX : object.offset->offset, input});
    m_outputs.addItem({&object.outputPosition, size, output == 0 ? UINT_MAX : object.offset->offset, output});
  }
  m_inputs.arrange();
  m_outputs.arrange();
  m_bArrangementStale = false;
}
