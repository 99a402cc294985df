// What the library makes of a description, held against the slave.
#ifndef IGH_BUS_ADAPT_CHECK_H
#define IGH_BUS_ADAPT_CHECK_H

#include "adapt/Plan.h"

namespace igh_bus::adapt {

// By the library's own reading; `device` is null when it has no description of it. The missing places are
// listed in `missing` when that is not null.
Judgement judge(const Plan& plan, const Device* device, std::vector<std::string>* missing = nullptr);

// Empty when every sync manager of the library's reading has the bytes of the slave's, and every bit of the
// plan is found under its name in the slave's place; else the first difference.
std::string difference(const Plan& plan, const Device& device);

} // namespace igh_bus::adapt

#endif
