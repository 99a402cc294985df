// Who holds the master, whether it runs, and whether an activation maps the image.
#ifndef ETHERCAT_SIMULATION_RESERVATION_H
#define ETHERCAT_SIMULATION_RESERVATION_H

namespace ethercat_simulation {

class Reservation {
public:
  bool held() const { return m_held; }
  bool active() const { return m_active; }

  void begin() {
    m_held = true;
    m_activatedBefore = false;
  }
  void end() { m_held = false; }
  void activate() {
    m_active = true;
    m_activatedBefore = true;
  }
  void deactivate() { m_active = false; }

  // Like the real master, a second activation on one reservation leaves the image unmapped.
  bool mapsImage() const { return !m_neverMapped && !(m_activatedBefore && m_reactivationUnmapped); }
  void setReactivationUnmapped(bool unmapped) { m_reactivationUnmapped = unmapped; }
  void setNeverMapped(bool never) { m_neverMapped = never; }

private:
  bool m_held = false;
  bool m_active = false;
  bool m_activatedBefore = false; // on this reservation
  bool m_reactivationUnmapped = true;
  bool m_neverMapped = false;
};

} // namespace ethercat_simulation

#endif
