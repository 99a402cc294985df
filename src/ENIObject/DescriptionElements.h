/* What the sources of CMasterENIObject share. */
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
  char const* element;
  bool (CSlaveENIObject::*createSyncInfo)(unsigned int syncIndex);
  std::vector<_PdoInfoTemplate> _SlotENIInfo::*templates;
  char const* deviceFixedWarning;
  char const* moduleFixedWarning;
};

/* Both directions, of modules and of devices, share this text. */
constexpr char const* missingSyncManagerText = "Device RxPDO has no sm channel.";

/* The number in the text of an element, 0 for a null node. */
unsigned int elementNumber(CXmlParser& parser, _XmlNode const* node);

/* The number in the text of the first child of this name, 0 when there is none. */
unsigned int childNumber(CXmlParser& parser, _XmlNode const* node, char const* name);

/* The text of the first child of this name, empty when there is none. */
std::string childText(CXmlParser& parser, _XmlNode const* node, char const* name);

/* Empty when there is no such attribute. */
std::string attributeText(CXmlParser& parser, _XmlNode const* node, char const* name);

#endif
