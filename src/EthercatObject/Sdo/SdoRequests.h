#ifndef ETHERCATOBJECT_SDO_SDOREQUESTS_H
#define ETHERCATOBJECT_SDO_SDOREQUESTS_H

#include "EthercatObject/Base/HandleTable.h"
#include "EthercatObject/Sdo/IssuedSdos.h"
#include "EthercatObject/Sdo/SdoInfo.h"

#include <ecrt.h>
#include <functional>
#include <igh_master.h>
#include <vector>

// The SDO requests by handle: made at the platform with a slave configuration, shared by their users, made
// again after a deactivation, which frees them all.
class CSdoRequests {
public:
  // What is asked for beside the key. Size in bytes, time-out in ms.
  struct _FORM {
    ETHERCAT_DATA_TYPE type;
    unsigned long size;
    int timeout;
  };

  // Whole elements of the type, at least one; otherwise false, with a line on standard error.
  static bool checkSdoSize(const _SDO_INFO_KEY& key, const _FORM& form);
  // Without a configuration (null) nothing is made; what is refused says its line on standard error.
  bool create(const _SDO_INFO_KEY& key, ec_slave_config_t* config, const _FORM& form, bool read,
              unsigned int* id);
  void destroy(unsigned int id, bool read);

  // After a deactivation, with the new configurations: what was armed starts over. A request that is refused
  // says its line, and its slot is free.
  void renew(const std::function<ec_slave_config_t*(unsigned int slave)>& configOf);
  // After a deactivation for good: all slots are free.
  void drop();
  void clear() { m_handles.clear(); }

  _SDO_INFO_OBJECT* find(unsigned int id) { return m_handles.find(id); }
  std::vector<_SDO_INFO_OBJECT>& objects() { return m_handles.objects(); }
  // Has room for every request made since it was cleared.
  CIssuedSdos& issued() { return m_issued; }

private:
  bool request(const _SDO_INFO_KEY& key, ec_slave_config_t* config, _SDO_INFO_OBJECT& object);

  CHandleTable<_SDO_INFO_KEY, _SDO_INFO_OBJECT> m_handles;
  CIssuedSdos m_issued;
};

#endif
