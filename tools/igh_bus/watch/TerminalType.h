// The type of the terminal, apart from <term.h>, whose macros take many short names.
#ifndef IGH_BUS_WATCH_TERMINAL_TYPE_H
#define IGH_BUS_WATCH_TERMINAL_TYPE_H

namespace igh_bus {

// Whether ncurses can draw on it; newterm() would tell as well, but keeps memory when it fails.
bool knowsTerminalType();

} // namespace igh_bus

#endif
