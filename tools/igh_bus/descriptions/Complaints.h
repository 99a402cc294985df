// What an application could not use of a described device, and why, in plain words.
#ifndef IGH_BUS_COMPLAINTS_H
#define IGH_BUS_COMPLAINTS_H

#include "descriptions/Device.h"

namespace igh_bus {

struct Complaint {
  std::string reason;
  std::vector<std::string> places; // entries or PDOs; none when it concerns the device
};

std::vector<Complaint> complaintsAbout(const Device& device);

// 0x6000:01
std::string objectText(const Entry& entry);

} // namespace igh_bus

#endif
