// The whole program but its entry.
#ifndef IGH_BUS_APPLICATION_H
#define IGH_BUS_APPLICATION_H

namespace igh_bus {

// The exit status; what went wrong is printed by then.
int program(int argc, char** argv);

} // namespace igh_bus

#endif
