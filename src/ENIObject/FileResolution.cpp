// One EtherCATInfo element: vendor, modules, and which of its devices count.
#include "ENIObject/CMasterENIObject.h"
#include "ENIObject/DescriptionElements.h"

#include <utility>

unsigned int CMasterENIObject::resolveEthercatInfo(CXmlParser& parser, _XmlNode* root) {
  unsigned int vendorId = 0;
  std::string vendorName;
  if (!resolveVendorInfo(parser, xml_file_get_child_node(0, root, "Vendor"), vendorId, vendorName)) {
    reportMessage(m_pfnLog, 0, "Can't find vendor information!");
    return 0;
  }

  REVISIONS_BY_PRODUCT revisions;
  REVISIONS_BY_PRODUCT hidden;
  for (_XmlNode* descriptions : xml_file_children(root, "Descriptions")) {
    resolveModules(parser, descriptions);
    collectRevisions(parser, descriptions, revisions, hidden);
  }
  for (const auto& [product, hiddenRevisions] : hidden) {
    for (unsigned int revision : hiddenRevisions) {
      revisions[product].erase(revision);
    }
  }
  for (_XmlNode* descriptions : xml_file_children(root, "Descriptions")) {
    resolveVisibleDevices(parser, descriptions, vendorId, revisions);
  }
  return 1;
}

bool CMasterENIObject::resolveVendorInfo(CXmlParser& parser, _XmlNode* vendorNode, unsigned int& vendorId,
                                         std::string& vendorName) {
  const unsigned int id = childNumber(parser, vendorNode, "Id");
  if (id == 0) {
    return false;
  }
  vendorId = id;
  vendorName = childText(parser, vendorNode, "Name");
  if (vendorName.empty()) {
    vendorName = "Unknown vendor name";
  }
  reportMessage(m_pfnLog, 1, "Vendor id = 0x%X, Vendor name = %s", vendorId, vendorName.c_str());
  return true;
}

void CMasterENIObject::resolveModules(CXmlParser& parser, _XmlNode* descriptions) {
  for (_XmlNode* modules : xml_file_children(descriptions, "Modules")) {
    for (_XmlNode* module : xml_file_children(modules, "Module")) {
      resolveModuleInfo(parser, module);
    }
  }
}

void CMasterENIObject::collectRevisions(CXmlParser& parser, _XmlNode* descriptions,
                                        REVISIONS_BY_PRODUCT& revisions, REVISIONS_BY_PRODUCT& hidden) {
  for (_XmlNode* devices : xml_file_children(descriptions, "Devices")) {
    for (_XmlNode* device : xml_file_children(devices, "Device")) {
      unsigned int productCode = 0;
      unsigned int revisionNo = 0;
      std::string typeName;
      std::set<unsigned int> hiddenRevisions;
      if (!resolveDeviceInfo(parser, device, productCode, revisionNo, typeName, hiddenRevisions)) {
        reportMessage(m_pfnLog, 0, "Can't find device information!");
        continue;
      }
      revisions[{productCode}].insert(revisionNo);
      if (!hiddenRevisions.empty()) {
        hidden[{productCode}].merge(hiddenRevisions);
      }
      reportMessage(m_pfnLog, 3, "ProductCode = 0x%X, RevisionNo = 0x%X, class = %s", productCode, revisionNo,
                    typeName.c_str());
    }
  }
}

void CMasterENIObject::resolveVisibleDevices(CXmlParser& parser, _XmlNode* descriptions,
                                             unsigned int vendorId, const REVISIONS_BY_PRODUCT& visible) {
  for (_XmlNode* devices : xml_file_children(descriptions, "Devices")) {
    for (_XmlNode* device : xml_file_children(devices, "Device")) {
      unsigned int productCode = 0;
      unsigned int revisionNo = 0;
      std::string typeName;
      if (!resolveDeviceInfo(parser, device, productCode, revisionNo, typeName)) {
        continue;
      }
      const auto found = visible.find({productCode});
      if (found != visible.end() && found->second.count(revisionNo) != 0) {
        resolveDeviceDetail(parser, device, vendorId);
      }
    }
  }
}

bool CMasterENIObject::resolveDeviceInfo(CXmlParser& parser, _XmlNode* device, unsigned int& productCode,
                                         unsigned int& revisionNo, std::string& typeName) {
  _XmlNode* type = xml_file_get_child_node(0, device, "Type");
  std::string productText;
  std::string revisionText;
  const bool hasProduct = parser.getAttributeValue("ProductCode", type, productText);
  const bool hasRevision = parser.getAttributeValue("RevisionNo", type, revisionText);
  std::string typeText = parser.getNodeValue(type);
  if (!hasProduct || !hasRevision || typeText.empty()) {
    reportMessage(m_pfnLog, 0, "Device resolve error (ProductCode = %s, RevisionNo = %s, class = %s)",
                  productText.c_str(), revisionText.c_str(), typeText.c_str());
    return false;
  }
  productCode = resolveENIValue(productText.c_str());
  revisionNo = resolveENIValue(revisionText.c_str());
  typeName = std::move(typeText);
  return true;
}

bool CMasterENIObject::resolveDeviceInfo(CXmlParser& parser, _XmlNode* device, unsigned int& productCode,
                                         unsigned int& revisionNo, std::string& typeName,
                                         std::set<unsigned int>& hiddenRevisions) {
  if (!resolveDeviceInfo(parser, device, productCode, revisionNo, typeName)) {
    return false;
  }
  for (_XmlNode* hideType : xml_file_children(device, "HideType")) {
    std::string revisionText;
    if (parser.getAttributeValue("RevisionNo", hideType, revisionText)) {
      hiddenRevisions.insert(resolveENIValue(revisionText.c_str()));
    }
  }
  return true;
}
