#ifndef ETHERCATOBJECT_SDO_SDOSERVICE_H
#define ETHERCATOBJECT_SDO_SDOSERVICE_H

#include "EthercatObject/Sdo/IssuedSdos.h"
#include "EthercatObject/Sdo/SdoCursor.h"
#include "EthercatObject/Sdo/SdoInfo.h"

#include "ENIObject/ENIObject.h"

#include <vector>

// Carries out what is armed: one step of one transfer in each cycle, round robin over the read and the write
// of every request. Each step is told to the sink.
class CSdoService {
public:
  explicit CSdoService(LOG_FUNCTION log) : m_pfnLog(log) {}

  // For the cycle; rests below PREOP. `issued` learns of each request that is given its first transfer.
  void step(unsigned int alStates, std::vector<_SDO_INFO_OBJECT>& objects, CIssuedSdos& issued);
  // This request comes next; false while another one waits for that.
  bool force(unsigned int id) { return m_cursor.force(id); }
  // To be called behind each arming, with what came of it.
  bool wake(bool armed) {
    if (armed) {
      m_cursor.wake();
    }
    return armed;
  }
  // Back to the start, for a table that was cleared.
  void reset() { m_cursor.reset(); }

private:
  void serve(std::vector<_SDO_INFO_OBJECT>& objects, CIssuedSdos& issued);
  static void issue(_SDO_INFO_OBJECT& object, bool read, CIssuedSdos& issued);
  void moveToNextSdoId(unsigned long requests) { m_cursor.advance(requests); }
  void report(const char* text) const;

  CSdoCursor m_cursor;
  LOG_FUNCTION m_pfnLog;
};

#endif
