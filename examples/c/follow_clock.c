/* Follows the reference clock of the bus: DESCRIPTION.xml... [-n CYCLES], 500 us per cycle. Prints how far
 * the master's time has been moved, and how the difference shrinks. Ends with 0 when OP was held to the end.
 */
#define _POSIX_C_SOURCE 200809L
#include <igh_master.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { MASTER = 0, PERIOD_NS = 500000, CYCLES_PER_LINE = 2000, OP = 8 };

static int failed(const char* what) {
  fprintf(stderr, "follow_clock: %s\n", what);
  igh_master_uninitialize(MASTER);
  return 1;
}

static int64_t offset_ns(void) {
  uint64_t offset = 0;
  igh_master_get_system_base_offset(MASTER, &offset);
  return (int64_t)offset;
}

static void sleep_until(int64_t wake_ns) {
  struct timespec wake;
  wake.tv_sec = (time_t)(wake_ns / 1000000000);
  wake.tv_nsec = (long)(wake_ns % 1000000000);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, NULL) == EINTR) {
  }
}

/* The master's time is the real time less the offset. Where the offset grows, the bus time runs slower than
 * this machine's: the next cycle has to wait by as much, or the cycle would wander through the bus period. */
static bool holds_op(long cycles) {
  struct timespec now;
  int64_t wake_ns, offset = 0, printed = 0;
  long printed_at = 0;
  uint32_t state = 0;
  bool lost = false;

  clock_gettime(CLOCK_MONOTONIC, &now);
  wake_ns = (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
  for (long i = 1; i <= cycles; ++i) {
    const int64_t before = offset;
    const bool was_op = state == OP;
    sleep_until(wake_ns);
    igh_master_exchange(MASTER, NULL, NULL);
    offset = offset_ns();
    wake_ns += PERIOD_NS + offset - before;
    igh_master_get_state(MASTER, &state);
    lost = lost || (was_op && state != OP);
    if (i % CYCLES_PER_LINE != 0 && i != cycles)
      continue;
    /* A real machine prints from another thread. */
    printf("cycle %ld: offset %lld ns, moving by %.3f ppm\n", i, (long long)offset,
           (double)(offset - printed) * 1e6 / ((double)PERIOD_NS * (double)(i - printed_at)));
    printed = offset;
    printed_at = i;
  }
  printf("AL state: %u%s\n", (unsigned)state, lost ? ", OP was lost on the way" : "");
  return state == OP && !lost;
}

int main(int argc, char** argv) {
  long cycles = 20000;
  bool held;

  if (argc < 2)
    return fprintf(stderr, "usage: %s DESCRIPTION.xml... [-n CYCLES]\n", argv[0]), 2;
  /* true, true: with distributed clocks, and the master follows the reference clock instead of leading it. */
  if (!igh_master_initialize_ex(MASTER, PERIOD_NS, true, true))
    return failed("no master");
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "-n") == 0 && i + 1 < argc)
      cycles = strtol(argv[++i], NULL, 10);
    else if (!igh_master_append_eni(MASTER, argv[i]))
      return failed("a description file was not loaded");
  }
  if (cycles < 1)
    return failed("the number of cycles must be 1 or more");
  if (!igh_master_scan(MASTER, NULL))
    return failed("no slaves on the bus");
  igh_master_config_all_slave(MASTER);
  /* From now on the library prints the difference, once in 1024 cycles. For commissioning only. */
  igh_master_set_dc_debug_enable(MASTER, true);
  if (!igh_master_active(MASTER))
    return failed("the master was not activated");
  held = holds_op(cycles);
  igh_master_uninitialize(MASTER);
  return held ? 0 : 1;
}
