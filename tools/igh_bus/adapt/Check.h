// What the library makes of a description, held against the slave.
#ifndef IGH_BUS_ADAPT_CHECK_H
#define IGH_BUS_ADAPT_CHECK_H

#include "adapt/Plan.h"

namespace igh_bus::adapt {

// What is out of reach: an item of the layout, or the clocks when there is none.
struct Missing {
  const SmLayout* layout = nullptr;
  const Item* item = nullptr;
};

// By the library's own reading; `device` is null when it has no description of it. What is out of reach is
// listed in `missing` when that is not null.
Judgement judge(const Plan& plan, const Device* device, std::vector<Missing>* missing = nullptr);

// Empty when every sync manager of the library's reading has the bytes of the slave's, and every bit of the
// plan is found under its name in the slave's place; else the first difference.
std::string difference(const Plan& plan, const Device& device);

} // namespace igh_bus::adapt

#endif
