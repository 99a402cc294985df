// By which the library and the master tell entries apart: names, objects, PDO indices.
#ifndef IGH_BUS_ADAPT_IDENTITY_H
#define IGH_BUS_ADAPT_IDENTITY_H

#include "adapt/Plan.h"

namespace igh_bus::adapt {

// Makes them unique in the target. What the master writes into the slave keeps its objects.
void identify(Plan& plan);

} // namespace igh_bus::adapt

#endif
