// igh_bus: looks into device descriptions, lists the slaves on a bus, runs a bus, reads and writes objects
// and registers of slaves.
#include "Application.h"

#include <csignal>

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN); // a reader that went away must not end a run out of order
  std::signal(SIGXFSZ, SIG_IGN); // nor must a file that grows too large
  return igh_bus::program(argc, argv);
}
