#ifndef ETHERCATOBJECT_PROCESSIMAGE_DOMAIN_H
#define ETHERCATOBJECT_PROCESSIMAGE_DOMAIN_H

#include "EthercatObject/ProcessImage/Image.h"

#include <cstdint>
#include <ecrt.h>

// The platform's domain and its image, which belong to the platform and die with a deactivation.
class CDomain {
public:
  // False when the platform refuses; there is no domain then.
  bool create(ec_master_t* master) {
    m_image = {};
    m_pDomain = ecrt_master_create_domain(master);
    return m_pDomain != nullptr;
  }
  ec_domain_t* core() const { return m_pDomain; }
  const _IMAGE& image() const { return m_image; }

  // The master was activated, and registered entries reach this many bytes. Without an image the platform
  // answers null plus the place of the domain, which is not 0 when a failed activation has left another
  // domain in front of it.
  void map(unsigned int size) {
    unsigned char* const address = ecrt_domain_data(m_pDomain);
    const bool mapped = reinterpret_cast<std::uintptr_t>(address) >= FIRST_MAPPED_ADDRESS;
    m_image = {mapped ? address : nullptr, size};
  }
  // Entries were registered, and yet the active master has no image.
  bool isImageMissing() const { return m_image.size > 0 && m_image.data == nullptr; }
  void unmap() { m_image.data = nullptr; }
  // An image that is still mapped is that of slaves that are gone.
  void forgetEntries() { m_image.size = 0; }
  // The platform has freed it.
  void drop() { m_pDomain = nullptr; }

  // The cycle. Without a domain nothing is done, and no working counter is read.
  void process() {
    if (m_pDomain != nullptr) {
      static_cast<void>(ecrt_domain_process(m_pDomain));
    }
  }
  void queue() {
    if (m_pDomain != nullptr) {
      static_cast<void>(ecrt_domain_queue(m_pDomain));
    }
  }
  bool readWorkingCounter(bool& complete) const {
    complete = false;
    if (m_pDomain == nullptr) {
      return false;
    }
    ec_domain_state_t state{};
    static_cast<void>(ecrt_domain_state(m_pDomain, &state));
    complete = state.wc_state == EC_WC_COMPLETE;
    return true;
  }

private:
  // The lowest address that Linux maps for a program (vm.mmap_min_addr).
  static constexpr std::uintptr_t FIRST_MAPPED_ADDRESS = 65536;

  ec_domain_t* m_pDomain = nullptr;
  _IMAGE m_image;
};

#endif
