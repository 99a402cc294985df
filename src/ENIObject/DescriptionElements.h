// What the sources of CMasterENIObject share.
#ifndef ENIOBJECT_DESCRIPTIONELEMENTS_H
#define ENIOBJECT_DESCRIPTIONELEMENTS_H

#include "ENIObject/CMasterENIObject.h"

#include <string>
#include <vector>

struct CMasterENIObject::_DeviceIdentity {
  unsigned int vendorId;
  unsigned int productCode;
  unsigned int revisionNo;
  std::string typeName;
};

struct CMasterENIObject::_PdoDirection {
  const char* element;
  bool (CSlaveENIObject::*createSyncInfo)(unsigned int syncIndex);
  std::vector<_PdoInfoTemplate> _SlotENIInfo::*templates;
  const char* deviceFixedWarning;
  const char* moduleFixedWarning;
};

// Both directions, of modules and of devices, share this text.
constexpr const char* MISSING_SYNC_MANAGER_TEXT = "Device RxPDO has no sm channel.";

// The number in the text of an element, 0 for a null node.
unsigned int elementNumber(CXmlParser& parser, const _XmlNode* node);

// The number in the text of the first child of this name, 0 when there is none.
unsigned int childNumber(CXmlParser& parser, const _XmlNode* node, const char* name);

// The text of the first child of this name, empty when there is none.
std::string childText(CXmlParser& parser, const _XmlNode* node, const char* name);

// Empty when there is no such attribute.
std::string attributeText(CXmlParser& parser, const _XmlNode* node, const char* name);

#endif
