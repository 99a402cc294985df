#ifndef ETHERCATOBJECT_PROCESSIMAGE_REGISTRATIONLIST_H
#define ETHERCATOBJECT_PROCESSIMAGE_REGISTRATIONLIST_H

#include "EthercatObject/Slave/CEthercatSlave.h"

#include <ecrt.h>
#include <memory>
#include <string>
#include <vector>

// All entries of the slaves of a scan, as rows to be registered at the platform, which writes the place of
// each entry in the image to its slave.
class CRegistrationList {
public:
  // One row for each entry, in the order of the slaves, and a terminating zero row.
  void build(const SLAVE_LIST& slaves);
  bool isBuilt() const { return m_pRows != nullptr; }
  void clear() { *this = CRegistrationList(); }

  // False when the platform refuses.
  bool registerAt(ec_domain_t* domain) const;
  // Bytes of the image up to the end of the last registered entry of these slaves, those of the rows.
  unsigned int measureImage(const SLAVE_LIST& slaves) const;
  // As source text, to be pasted into an application.
  void print() const;

private:
  unsigned int m_uiPdoEntryCount = 0;
  std::unique_ptr<ec_pdo_entry_reg_t[]> m_pRows;
  std::vector<std::string> m_vecPdoEntryNames;  // by row
  std::vector<unsigned char> m_vecPdoEntryBits; // by row
};

#endif
