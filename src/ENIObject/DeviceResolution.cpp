// One Device element: a finished slave description.
#include "ENIObject/CMasterENIObject.h"
#include "ENIObject/DescriptionElements.h"

#include <utility>

namespace {

// Rough size of a placed PDO, and of a placed entry: record, array rows, and the name in record, table and
// indexes.
constexpr std::size_t RECORD_SIZE = 256;

std::size_t placementCost(const _SlotENIInfo& module) {
  std::size_t cost = 0;
  for (const auto* templates : {&module.vecRxPdo, &module.vecTxPdo}) {
    for (const _PdoInfoTemplate& pdo : *templates) {
      cost += RECORD_SIZE;
      for (const _PdoEntryInfoTemplate& entry : pdo.vecEntry) {
        cost += RECORD_SIZE + 4 * entry.strName.size() + entry.strDataType.size();
      }
    }
  }
  return cost;
}

bool spend(std::size_t cost, std::size_t& budget) {
  if (cost > budget) {
    return false;
  }
  budget -= cost;
  return true;
}

} // namespace

unsigned int CMasterENIObject::resolveDeviceDetail(CXmlParser& parser, _XmlNode* device,
                                                   unsigned int vendorId) {
  _XmlNode* type = xml_file_get_child_node(0, device, "Type");
  std::string productText;
  std::string revisionText;
  if (!parser.getAttributeValue("ProductCode", type, productText) ||
      !parser.getAttributeValue("RevisionNo", type, revisionText)) {
    return 0;
  }
  const _DeviceIdentity identity{vendorId, resolveENIValue(productText.c_str()),
                                 resolveENIValue(revisionText.c_str()), parser.getNodeValue(type)};
  reportDevice(1, "ResolveDeviceDetail invoke for", identity, "\n");

  auto& revisions = m_mapVendor[vendorId].mapProduct[identity.productCode].mapRevision;
  if (revisions.count(identity.revisionNo) != 0) {
    reportDevice(0, "Device ignore", identity);
    return 0;
  }

  auto slave = std::make_unique<CSlaveENIObject>(vendorId, identity.productCode, identity.revisionNo,
                                                 identity.typeName, m_pfnLog);
  slave->beginEditSyncInfo();
  for (_XmlNode* slots : xml_file_children(device, "Slots")) {
    resolveSlots(parser, slots, identity, *slave);
  }
  for (const _PdoDirection& direction : PDO_DIRECTIONS) {
    resolveDevicePdos(parser, device, direction, identity, *slave);
  }
  resolveDcOpModes(parser, device, *slave);
  slave->endEditSyncInfo();

  m_vecDescription.push_back(std::move(slave));
  revisions.emplace(identity.revisionNo, m_vecDescription.back().get());
  return 1;
}

// A slot whose module is unknown takes no room: the modules behind it move up.
void CMasterENIObject::resolveSlots(CXmlParser& parser, _XmlNode* slots, const _DeviceIdentity& identity,
                                    CSlaveENIObject& slave) {
  const unsigned int indexIncrement =
      resolveENIValue(attributeText(parser, slots, "SlotIndexIncrement").c_str());
  const unsigned int pdoIncrement = resolveENIValue(attributeText(parser, slots, "SlotPdoIncrement").c_str());
  slave.setSlotNumber(static_cast<unsigned int>(xml_file_get_child_count(slots, "Slot")));
  slave.setSlotIndexIncrement(indexIncrement);
  slave.setSlotPdoIncrement(pdoIncrement);

  unsigned int position = 0;
  unsigned int pdoOffset = 0;
  unsigned int indexOffset = 0;
  for (_XmlNode* slot : xml_file_children(slots, "Slot")) {
    ++position;
    const auto module = m_mapModule.find(childNumber(parser, slot, "ModuleIdent"));
    if (module == m_mapModule.end()) {
      continue;
    }
    // A small hostile file can name a large module in very many slots.
    if (!spend(placementCost(module->second), m_ulPlacementBudget)) {
      const std::string leftOut = "Device slots expand too far, left out from slot " +
                                  std::to_string(position) + " of " + std::to_string(slave.getSlotNumber()) +
                                  " on.";
      reportDevice(0, leftOut.c_str(), identity);
      return;
    }
    placeModule(module->second, formatSeqInEnglish(position), pdoOffset, indexOffset, slave);
    pdoOffset += pdoIncrement;
    indexOffset += indexIncrement;
  }
}

void CMasterENIObject::placeModule(const _SlotENIInfo& module, const std::string& namePrefix,
                                   unsigned int pdoOffset, unsigned int indexOffset, CSlaveENIObject& slave) {
  for (const _PdoDirection& direction : PDO_DIRECTIONS) {
    for (const _PdoInfoTemplate& pdo : module.*direction.templates) {
      if (!(slave.*direction.createSyncInfo)(pdo.uiSync)) {
        continue;
      }
      CSlaveENIObject::_SYNCINFO* syncInfo = slave.getSyncInfo(pdo.uiSync);
      const unsigned int pdoIndex = pdo.uiIndex + (pdo.bDependOnSlot ? pdoOffset : 0);
      slave.createPDOInfoIfNotExist(syncInfo, pdoIndex);
      CSlaveENIObject::_PDOINFO* pdoInfo = slave.getPDOInfo(syncInfo, pdoIndex);
      for (const _PdoEntryInfoTemplate& entry : pdo.vecEntry) {
        ec_pdo_entry_info_t placed = entry.entry;
        placed.index = static_cast<unsigned short>(placed.index + (entry.bDependOnSlot ? indexOffset : 0));
        slave.addPDOEntry(pdoInfo, namePrefix + entry.strName, entry.strDataType, placed);
      }
    }
  }
}

void CMasterENIObject::resolveDevicePdos(CXmlParser& parser, _XmlNode* device, const _PdoDirection& direction,
                                         const _DeviceIdentity& identity, CSlaveENIObject& slave) {
  for (_XmlNode* pdo : xml_file_children(device, direction.element)) {
    std::string syncText;
    if (!parser.getAttributeValue("Sm", pdo, syncText)) {
      reportDevice(3, MISSING_SYNC_MANAGER_TEXT, identity);
      continue;
    }
    if (attributeText(parser, pdo, "Fixed") != "true") {
      reportDevice(2, direction.deviceFixedWarning, identity);
    }
    const unsigned int syncIndex = resolveENIValue(syncText.c_str());
    if (!(slave.*direction.createSyncInfo)(syncIndex)) {
      continue;
    }
    if (xml_file_get_child_node(0, pdo, "Entry") == nullptr) {
      continue;
    }
    CSlaveENIObject::_SYNCINFO* syncInfo = slave.getSyncInfo(syncIndex);
    const unsigned int pdoIndex = childNumber(parser, pdo, "Index");
    slave.createPDOInfoIfNotExist(syncInfo, pdoIndex);
    CSlaveENIObject::_PDOINFO* pdoInfo = slave.getPDOInfo(syncInfo, pdoIndex);
    for (_XmlNode* entryNode : xml_file_children(pdo, "Entry")) {
      _PdoEntryInfoTemplate entry = resolveEntry(parser, entryNode);
      slave.addPDOEntry(pdoInfo, std::move(entry.strName), std::move(entry.strDataType), entry.entry);
    }
  }
}

void CMasterENIObject::resolveDcOpModes(CXmlParser& parser, _XmlNode* device, CSlaveENIObject& slave) {
  for (_XmlNode* dc : xml_file_children(device, "Dc")) {
    for (_XmlNode* mode : xml_file_children(dc, "OpMode")) {
      CSlaveENIObject::_DCOPMODEINFO info;
      info.assignActivate = static_cast<unsigned short>(childNumber(parser, mode, "AssignActivate"));
      info.cycleTimeSync0 = childNumber(parser, mode, "CycleTimeSync0");
      info.shiftTimeSync0 = static_cast<int>(childNumber(parser, mode, "ShiftTimeSync0"));
      info.cycleTimeSync1 = childNumber(parser, mode, "CycleTimeSync1");
      info.shiftTimeSync1 = static_cast<int>(childNumber(parser, mode, "ShiftTimeSync1"));
      slave.addDcOpMode(childText(parser, mode, "Name").c_str(), info);
    }
  }
}

void CMasterENIObject::reportDevice(unsigned int level, const char* text, const _DeviceIdentity& identity,
                                    const char* end) const {
  reportMessage(m_pfnLog, level, "%s (VendorId = 0x%X, ProductCode = 0x%X, RevisionNo = 0x%X, class = %s)%s",
                text, identity.vendorId, identity.productCode, identity.revisionNo, identity.typeName.c_str(),
                end);
}
