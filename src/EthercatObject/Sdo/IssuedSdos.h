#ifndef ETHERCATOBJECT_SDO_ISSUEDSDOS_H
#define ETHERCATOBJECT_SDO_ISSUEDSDOS_H

#include <ecrt.h>
#include <vector>

// The platform's requests that were given a transfer and live on at the platform, whatever has become of the
// handles: of a transfer that is under way, the master must not be deactivated.
class CIssuedSdos {
public:
  // Room for one more request of the platform, so that add() takes no memory. Throws when there is none.
  void makeRoom() {
    if (m_vecRequests.capacity() <= m_ulRoom) {
      m_vecRequests.reserve(2 * m_ulRoom + 16);
    }
    ++m_ulRoom;
  }
  void add(ec_sdo_request_t* request) { m_vecRequests.push_back(request); }
  // One call to the platform for each request, and one more for each time that one is found busy. Only for
  // the end, when nothing is issued any more: what has come to rest is forgotten.
  bool isAnyBusy() {
    while (!m_vecRequests.empty() && ecrt_sdo_request_state(m_vecRequests.back()) != EC_REQUEST_BUSY) {
      m_vecRequests.pop_back();
    }
    return !m_vecRequests.empty();
  }
  // The platform has freed them all.
  void clear() {
    m_vecRequests.clear();
    m_ulRoom = 0;
  }

private:
  std::vector<ec_sdo_request_t*> m_vecRequests;
  unsigned long m_ulRoom = 0; // requests that the platform may have
};

#endif
