#include "ENIObject/DescriptionElements.h"

const CMasterENIObject::_PdoDirection CMasterENIObject::PDO_DIRECTIONS[2] = {
    {"RxPdo", &CSlaveENIObject::createOutputSyncInfoIfNotExist, &_SlotENIInfo::vecRxPdo,
     "Device RxPDO has unexpected fixed value.", "Module RxPDO has unexpected fixed value."},
    {"TxPdo", &CSlaveENIObject::createInputSyncInfoIfNotExist, &_SlotENIInfo::vecTxPdo,
     "Device TxPDO has wrong fixed value.", "Module TxPDO has unexpected fixed value."},
};

unsigned int elementNumber(CXmlParser& parser, const _XmlNode* node) {
  return CMasterENIObject::resolveENIValue(parser.getNodeValue(node).c_str());
}

unsigned int childNumber(CXmlParser& parser, const _XmlNode* node, const char* name) {
  return elementNumber(parser, xml_file_get_child_node(0, node, name));
}

std::string childText(CXmlParser& parser, const _XmlNode* node, const char* name) {
  return parser.getNodeValue(xml_file_get_child_node(0, node, name));
}

std::string attributeText(CXmlParser& parser, const _XmlNode* node, const char* name) {
  std::string value;
  parser.getAttributeValue(name, node, value);
  return value;
}
