/* A test of the motion example on the simulated master: drive X is told to stop 3 cycles after drive Y
 * failed. */
#include <ethercat_simulation.h>

#include <stdio.h>

enum { MASTER = 0, X = 0, Y = 1, CONTROLWORD = 0x6040, QUICK_STOP = 0x02, FAULT_AT = 500 };

int application_main(int argc, char** argv); /* motion.c, compiled with -Dmain=application_main */

static uint64_t stopped_at = 0; /* cycle */

static void watch(unsigned master, uint64_t cycle, void* context) {
  uint64_t controlword = 0;
  (void)context;
  if (stopped_at == 0 && cycle >= FAULT_AT &&
      ethercat_simulation_output_value(master, X, CONTROLWORD, 0, &controlword) == 0 &&
      controlword == QUICK_STOP)
    stopped_at = cycle;
}

/* clang-format off */
static const char FAST_WITH_A_FAULT_OF_Y[] = ETHERCAT_SIMULATION_JSON({
  "timing": "fast", "faults": [{"kind": "drive_fault", "slave": 1, "at": 500}]
});
/* clang-format on */

int main(int argc, char** argv) {
  char* arguments[] = {"motion", argc == 3 ? argv[2] : "", "1000", NULL};
  if (argc != 3)
    return fprintf(stderr, "usage: %s BUS.json DESCRIPTION.xml\n", argv[0]), 2;
  if (ethercat_simulation_load(argv[1]) != 0 ||
      ethercat_simulation_configure(MASTER, FAST_WITH_A_FAULT_OF_Y) != 0 ||
      ethercat_simulation_add_observer(MASTER, watch, NULL) < 0)
    return fprintf(stderr, "%s\n", ethercat_simulation_last_error()), 1;
  application_main(3, arguments);
  printf("X was told to stop in cycle %d\n", (int)stopped_at);
  /* The fault shows in the next frame, is received with the one behind, and answered with the third. */
  return stopped_at == FAULT_AT + 3 && ethercat_simulation_misuse(MASTER) == 0 ? 0 : 1;
}
