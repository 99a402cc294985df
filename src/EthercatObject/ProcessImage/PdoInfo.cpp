#include "EthercatObject/ProcessImage/PdoInfo.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

int _PDO_ENTRY_INFO_KEY::compare(const _PDO_ENTRY_INFO_KEY& a, const _PDO_ENTRY_INFO_KEY& b) {
  if (a.slave != b.slave) {
    return a.slave < b.slave ? -1 : 1;
  }
  const int names = a.name.compare(b.name);
  return names == 0 ? 0 : (names < 0 ? -1 : 1);
}

bool _PDO_ENTRY_INFO_OBJECT::initPdoEntryDataType(const std::string& typeName) {
  dataType = CEthercatDataHelper::getTypeByName(typeName.c_str());
  size = CEthercatDataHelper::getTypeSize(dataType);
  return size != 0;
}
