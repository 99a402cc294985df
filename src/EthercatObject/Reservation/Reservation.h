#ifndef ETHERCATOBJECT_RESERVATION_RESERVATION_H
#define ETHERCATOBJECT_RESERVATION_RESERVATION_H

#include <ecrt.h>

// The platform's master of one index and its device file, held from construction on. What the platform
// refuses is not reported here: it shows where master() or device() is needed.
class CReservation {
public:
  explicit CReservation(unsigned int deviceId);
  ~CReservation() { release(); }
  CReservation(const CReservation&) = delete;
  CReservation& operator=(const CReservation&) = delete;

  // Gives both up, for good.
  void release();
  // Releases the platform's master and requests it anew, without a text; the device file stays open.
  void renew();
  // False when the platform refuses.
  bool activate();
  void deactivate();

  ec_master_t* master() const { return m_pMaster; } // null: none
  int device() const { return m_iDeviceFd; }        // -1: none
  unsigned int deviceId() const { return m_uiDeviceId; }
  bool isActive() const { return m_bActive; }
  bool isUsed() const { return m_bUsed; } // the present reservation has been activated before

private:
  unsigned int m_uiDeviceId;
  ec_master_t* m_pMaster;
  int m_iDeviceFd;
  bool m_bActive = false;
  bool m_bUsed = false;
};

#endif
