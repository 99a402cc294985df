// SDO service in the cycle: one step of one request, round robin over the read and the write phase of every
// request.
#include "EthercatObject/CEthercatMaster.h"

void CEthercatMaster::serviceSdoRequests() {
  if (m_watch.alStates() < EC_AL_STATE_PREOP || m_sdoHandles.objects().empty()) {
    return;
  }
  const auto isArmed = [this](unsigned long request, bool read) {
    return m_sdoHandles.objects()[request].request != nullptr &&
           m_sdoHandles.objects()[request].isArmed(read);
  };
  if (m_sdoCursor.findArmed(m_sdoHandles.objects().size(), isArmed)) {
    serviceSdo(m_sdoHandles.objects()[m_sdoCursor.request()], m_sdoCursor.isRead());
  }
}

// A write that became too long for the platform after it was armed waits, without holding up the others,
// until a whole answer has made room for it again.
void CEthercatMaster::serviceSdo(_SDO_INFO_OBJECT& object, bool read) {
  const ec_request_state_t state = ecrt_sdo_request_state(object.request);
  if (!read && state != EC_REQUEST_BUSY && !object.inProgress && object.isWriteCut()) {
    moveToNextSdoId();
    return;
  }
  switch (state) {
  case EC_REQUEST_UNUSED:
  case EC_REQUEST_SUCCESS:
    if (!object.inProgress) {
      issueSdo(object, read);
      object.inProgress = true;
      object.inProgressIsRead = read;
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
    issueSdo(object, read);
    reportSdo(read ? "ReadSDO:EC_REQUEST_ERROR\n" : "WriteSDO:EC_REQUEST_ERROR\n");
    return;
  }
}

void CEthercatMaster::issueSdo(_SDO_INFO_OBJECT& object, bool read) {
  if (!object.issued) {
    object.issued = true;
    m_issuedSdos.add(object.request);
  }
  object.issue(read);
}

void CEthercatMaster::reportSdo(const char* text) const {
  reportMessage(m_pfnLog, 3, "%s", text);
}

void CEthercatMaster::moveToNextSdoId() {
  m_sdoCursor.advance(m_sdoHandles.objects().size());
}
