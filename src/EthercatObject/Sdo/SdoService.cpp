#include "EthercatObject/Sdo/SdoService.h"

void CSdoService::step(unsigned int alStates, std::vector<_SDO_INFO_OBJECT>& objects, CIssuedSdos& issued) {
  if (alStates < EC_AL_STATE_PREOP || objects.empty()) {
    return;
  }
  const auto isArmed = [&objects](unsigned long request, bool read) {
    return objects[request].request != nullptr && objects[request].isArmed(read);
  };
  if (m_cursor.findArmed(objects.size(), isArmed)) {
    serve(objects, issued);
  }
}

// A write that became too long for the platform after it was armed waits, without holding up the others,
// until a whole answer has made room for it again.
void CSdoService::serve(std::vector<_SDO_INFO_OBJECT>& objects, CIssuedSdos& issued) {
  _SDO_INFO_OBJECT& object = objects[m_cursor.request()];
  const bool read = m_cursor.isRead();
  const ec_request_state_t state = ecrt_sdo_request_state(object.request);
  if (!read && state != EC_REQUEST_BUSY && !object.inProgress && object.isWriteCut()) {
    moveToNextSdoId(objects.size());
    return;
  }
  switch (state) {
  case EC_REQUEST_UNUSED:
  case EC_REQUEST_SUCCESS:
    if (!object.inProgress) {
      issue(object, read, issued);
      object.inProgress = true;
      object.inProgressIsRead = read;
      report(read ? "ReadSDO:ecrt_sdo_request_read called!\n" : "WriteSDO:ecrt_sdo_request_write called!\n");
      return;
    }
    if (read) {
      object.exportSdoData();
    }
    object.finish(read);
    moveToNextSdoId(objects.size());
    report(read ? "ReadSDO:EC_REQUEST_SUCCESS\n" : "WriteSDO:EC_REQUEST_SUCCESS\n");
    return;
  case EC_REQUEST_BUSY:
    report(read ? "ReadSDO:EC_REQUEST_BUSY\n" : "WriteSDO:EC_REQUEST_BUSY\n");
    return;
  case EC_REQUEST_ERROR:
    issue(object, read, issued);
    report(read ? "ReadSDO:EC_REQUEST_ERROR\n" : "WriteSDO:EC_REQUEST_ERROR\n");
    return;
  }
}

void CSdoService::issue(_SDO_INFO_OBJECT& object, bool read, CIssuedSdos& issued) {
  if (!object.issued) {
    object.issued = true;
    issued.add(object.request);
  }
  object.issue(read);
}

void CSdoService::report(const char* text) const {
  reportMessage(m_pfnLog, 3, "%s", text);
}
