// SDO service in the cycle: one step of one request, round robin over the read and the write phase of every
// request.
#include "EthercatObject/CEthercatMaster.h"

// The cursor stays on a request until its transfer is done, so a failing one is retried while the others
// wait. The position before the one it starts at is not visited within one step.
void CEthercatMaster::serviceSdoRequests() {
  if (m_uiMasterState < EC_AL_STATE_PREOP || m_vecSdoInfo.empty()) {
    return;
  }
  const unsigned long positions = 2 * m_vecSdoInfo.size();
  const unsigned long stop = m_ulSdoCursor == 0 ? positions - 1 : m_ulSdoCursor - 1;
  if (m_bSdosIdle) { // where the walk below would end as well
    m_ulSdoCursor = stop;
    m_ulForcedSdoId = NO_FORCED_SDO;
    return;
  }
  const bool wholeRound = m_ulForcedSdoId == NO_FORCED_SDO;
  while (m_ulSdoCursor != stop) {
    _SDO_INFO_OBJECT& object = m_vecSdoInfo[m_ulSdoCursor / 2];
    const bool read = m_ulSdoCursor % 2 == 0;
    if (object.request != nullptr && object.isArmed(read)) {
      serviceSdo(object, read);
      return;
    }
    moveToNextSdoId();
  }
  m_bSdosIdle = wholeRound && !m_vecSdoInfo[stop / 2].isArmed(stop % 2 == 0);
}

void CEthercatMaster::serviceSdo(_SDO_INFO_OBJECT& object, bool read) {
  switch (ecrt_sdo_request_state(object.request)) {
  case EC_REQUEST_UNUSED:
  case EC_REQUEST_SUCCESS:
    if (!object.inProgress) {
      object.issue(read);
      reportSdo(read ? "ReadSDO:ecrt_sdo_request_read called!\n"
                     : "WriteSDO:ecrt_sdo_request_write called!\n");
      return;
    }
    if (read) {
      object.exportSdoData();
    }
    object.finish(read);
    moveToNextSdoId();
    reportSdo(read ? "ReadSDO:EC_REQUEST_SUCCESS\n" : "WriteSDO:EC_REQUEST_SUCCESS\n");
    return;
  case EC_REQUEST_BUSY:
    reportSdo(read ? "ReadSDO:EC_REQUEST_BUSY\n" : "WriteSDO:EC_REQUEST_BUSY\n");
    return;
  case EC_REQUEST_ERROR:
    object.issue(read);
    reportSdo(read ? "ReadSDO:EC_REQUEST_ERROR\n" : "WriteSDO:EC_REQUEST_ERROR\n");
    return;
  }
}

void CEthercatMaster::reportSdo(const char* text) const {
  reportMessage(m_pfnLog, 3, "%s", text);
}

void CEthercatMaster::moveToNextSdoId() {
  const size_t requests = m_vecSdoInfo.size();
  const unsigned long forced = m_ulForcedSdoId;
  m_ulForcedSdoId = NO_FORCED_SDO;
  if (forced < requests) {
    m_ulSdoCursor = 2 * forced;
    return;
  }
  m_ulSdoCursor = m_ulSdoCursor + 1 >= 2 * requests ? 0 : m_ulSdoCursor + 1;
}
