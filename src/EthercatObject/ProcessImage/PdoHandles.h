#ifndef ETHERCATOBJECT_PROCESSIMAGE_PDOHANDLES_H
#define ETHERCATOBJECT_PROCESSIMAGE_PDOHANDLES_H

#include "EthercatObject/ProcessImage/Image.h"
#include "EthercatObject/ProcessImage/PdoBuffers.h"
#include "EthercatObject/ProcessImage/PdoInfo.h"

class CEthercatSlave;

// Process-data handles: entries by name, their values in two blocks of bytes, and the way of these to and
// from the image. Values are converted in the blocks; the cycle moves bytes only.
class CPdoHandles {
public:
  // Who asks again for an entry shares its handle. False for a name that the slave does not have.
  bool create(const CEthercatSlave& slave, const char* name, bool read, unsigned int* id);
  void destroy(unsigned int id, bool read);
  void clear();

  // False for a handle that was not made in this direction, and for a null pointer.
  bool read(unsigned int id, double* value) const;
  bool write(unsigned int id, double value);

  // To be called when entries got their places in the image; when handles came or went, the next copy does
  // it.
  void arrange(const _IMAGE& image);
  void copyInputs(const _IMAGE& image);
  void copyOutputs(const _IMAGE& image);

private:
  CHandleTable<_PDO_ENTRY_INFO_KEY, _PDO_ENTRY_INFO_OBJECT> m_handles;
  CPdoBuffers m_inputs;
  CPdoBuffers m_outputs;
  bool m_bArrangementStale = false; // handles changed since the blocks were arranged
};

#endif
