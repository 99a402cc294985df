#include "watch/TerminalType.h"

#include <curses.h>
#include <term.h>
#include <unistd.h>

namespace igh_bus {

bool knowsTerminalType() {
  int reason = 0;
  if (setupterm(nullptr, STDOUT_FILENO, &reason) != OK)
    return false;
  del_curterm(cur_term);
  return true;
}

} // namespace igh_bus
