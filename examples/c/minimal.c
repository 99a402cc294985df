/* The whole order for one servo drive: description file in, position out and back, 2000 cycles of 1 ms. */
#define _POSIX_C_SOURCE 200809L
#include <igh_master.h>

#include <errno.h>
#include <stdio.h>
#include <time.h>

enum { MASTER = 0, PERIOD_NS = 1000000, CYCLES = 2000, DRIVE_PRODUCT_CODE = 0x500 };

static int failed(const char* what) {
  fprintf(stderr, "minimal: %s\n", what);
  igh_master_uninitialize(MASTER);
  return 1;
}

/* Scan order is bus order: looks for the first drive. */
static bool find_drive(uint32_t slaves, uint32_t* drive) {
  uint32_t code = 0;
  for (*drive = 0; *drive < slaves; ++*drive)
    if (igh_master_get_slave_product_code(MASTER, *drive, &code) && code == DRIVE_PRODUCT_CODE)
      return true;
  return false;
}

static void sleep_until_next(struct timespec* wake) {
  wake->tv_nsec += PERIOD_NS;
  if (wake->tv_nsec >= 1000000000) {
    wake->tv_nsec -= 1000000000;
    ++wake->tv_sec;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, wake, NULL) == EINTR) {
  }
}

int main(int argc, char** argv) {
  uint32_t slaves = 0, drive = 0, target = 0, actual = 0, state = 0;
  double position = 0;
  struct timespec wake;

  if (argc != 2)
    return fprintf(stderr, "usage: %s DESCRIPTION.xml\n", argv[0]), 2;
  if (!igh_master_initialize(MASTER, PERIOD_NS, false))
    return failed("no master");
  if (!igh_master_append_eni(MASTER, argv[1]))
    return failed("the description file was not loaded");
  if (!igh_master_scan(MASTER, &slaves))
    return failed("no slaves on the bus");
  if (!find_drive(slaves, &drive))
    return failed("no drive on the bus");
  igh_master_config_all_slave(MASTER);
  if (!igh_master_create_pdo_info(MASTER, drive, "Target position", false, &target) ||
      !igh_master_create_pdo_info(MASTER, drive, "Position actual value", true, &actual))
    return failed("the drive's description lacks an entry");
  if (!igh_master_active(MASTER))
    return failed("the master was not activated");

  clock_gettime(CLOCK_MONOTONIC, &wake);
  for (int cycle = 0; cycle < CYCLES; ++cycle) {
    sleep_until_next(&wake);
    igh_master_pdo_send(MASTER, target, cycle); /* leaves with this exchange */
    igh_master_exchange(MASTER, NULL, NULL);
  }
  igh_master_pdo_recv(MASTER, actual, &position);
  igh_master_get_state(MASTER, &state);
  printf("Position actual value: %.0f\nAL state: %u\n", position, (unsigned)state);
  igh_master_uninitialize(MASTER);
  return state == 8 ? 0 : 1;
}
