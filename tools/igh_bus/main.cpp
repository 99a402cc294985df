// igh_bus: looks into device descriptions, lists the slaves on a bus, runs a bus, reads and writes objects
// and registers of slaves.
#include "Application.h"

int main(int argc, char** argv) {
  return igh_bus::program(argc, argv);
}
