// One Module element: templates of PDOs and entries, which the slots of devices place later.
#include "ENIObject/CMasterENIObject.h"
#include "ENIObject/DescriptionElements.h"

#include <utility>

unsigned int CMasterENIObject::resolveModuleInfo(CXmlParser& parser, _XmlNode* module) {
  const std::string ident = attributeText(parser, xml_file_get_child_node(0, module, "Type"), "ModuleIdent");
  const std::string nameId = attributeText(parser, xml_file_get_child_node(0, module, "Name"), "LcId");
  if (ident.empty() || nameId.empty()) {
    reportMessage(m_pfnLog, 2, "Module type id and name id can not be empty.");
    return 0;
  }
  _SlotENIInfo info;
  info.uiNameId = resolveENIValue(nameId.c_str());
  info.uiModuleIdent = resolveENIValue(ident.c_str());
  for (const _PdoDirection& direction : PDO_DIRECTIONS) {
    resolveModulePdos(parser, module, direction, info.*direction.templates);
  }
  const unsigned int key = info.uiModuleIdent;
  if (m_mapModule.count(key) == 0) {
    m_vecNewModule.push_back(key);
    m_mapModule.emplace(key, std::move(info));
  }
  return 1;
}

void CMasterENIObject::resolveModulePdos(CXmlParser& parser, _XmlNode* module, const _PdoDirection& direction,
                                         std::vector<_PdoInfoTemplate>& templates) {
  for (_XmlNode* pdo : xml_file_children(module, direction.element)) {
    const std::string sync = attributeText(parser, pdo, "Sm");
    if (sync.empty()) {
      reportMessage(m_pfnLog, 3, "%s", MISSING_SYNC_MANAGER_TEXT);
      continue;
    }
    if (attributeText(parser, pdo, "Fixed") != "true") {
      reportMessage(m_pfnLog, 2, "%s", direction.moduleFixedWarning);
    }
    _XmlNode* index = xml_file_get_child_node(0, pdo, "Index");
    _PdoInfoTemplate pdoTemplate;
    pdoTemplate.uiIndex = elementNumber(parser, index);
    pdoTemplate.uiSync = resolveENIValue(sync.c_str());
    pdoTemplate.bDependOnSlot = attributeText(parser, index, "DependOnSlot") == "true";
    for (_XmlNode* entry : xml_file_children(pdo, "Entry")) {
      pdoTemplate.vecEntry.push_back(resolveEntry(parser, entry));
    }
    if (!pdoTemplate.vecEntry.empty()) {
      templates.push_back(std::move(pdoTemplate));
    }
  }
}

_PdoEntryInfoTemplate CMasterENIObject::resolveEntry(CXmlParser& parser, _XmlNode* entryNode) {
  _XmlNode* index = xml_file_get_child_node(0, entryNode, "Index");
  _PdoEntryInfoTemplate entry;
  entry.bDependOnSlot = attributeText(parser, index, "DependOnSlot") == "true";
  entry.entry.index = static_cast<unsigned short>(elementNumber(parser, index));
  entry.entry.subindex = static_cast<unsigned char>(childNumber(parser, entryNode, "SubIndex"));
  entry.entry.bit_length = static_cast<unsigned char>(childNumber(parser, entryNode, "BitLen"));
  entry.strName = childText(parser, entryNode, "Name");
  entry.strDataType = childText(parser, entryNode, "DataType");
  return entry;
}
