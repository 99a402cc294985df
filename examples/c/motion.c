/* Two servo drives (CiA 402, cyclic synchronous position) on one sine: enable, move, stop together.
 *
 * Whatever fails, a drive, the bus or one slave of it, both axes stop in the same cycle. Exit status: 0 moved
 * and stopped, 1 not set up, 2 usage, 3 stopped for a fault, with the reason on standard error. */
#define _POSIX_C_SOURCE 200809L
#include <igh_master.h>

#include <errno.h>
#include <math.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <time.h>

enum { MASTER = 0, PERIOD_NS = 1000000, PERIODS_PER_S = 1000, AXES = 2, DRIVE_PRODUCT_CODE = 0x510 };
enum { CYCLIC_POSITION = 8, AL_OP = 8 };
/* Controlwords on the way up and down. */
enum { SHUTDOWN = 0x06, SWITCH_ON = 0x07, ENABLE = 0x0F, QUICK_STOP = 0x02, FAULT_RESET = 0x80 };
/* In cycles; a real bus climbs for seconds. A drive bridges a few missed frames with its last target. */
enum { ENABLE_LIMIT = 15 * PERIODS_PER_S, STOP_LIMIT = 2 * PERIODS_PER_S, MISSED_FRAMES_LIMIT = 3 };
static const double AMPLITUDE = 10000, FREQUENCY = 0.5; /* counts, Hz */

typedef struct {
  uint32_t slave;
  uint32_t controlword, target, mode;      /* handles of outputs */
  uint32_t statusword, actual, error_code; /* handles of inputs */
  unsigned status, command;
  double position, start, farthest; /* counts; the farthest that it was behind its target */
} Axis;

/* What the error callback saw in the last exchange. */
typedef struct {
  int code, frames_missed; /* missed in a row */
  unsigned slave;
} Problem;
typedef enum { ENABLING, MOVING, STOPPING, STOPPED } Phase;

static void on_error(unsigned master, unsigned slave, int code, void* user) {
  Problem* problem = user;
  (void)master;
  if (code == ETHERCAT_ERROR_WORKING_COUNTER) {
    problem->frames_missed = 1;
  } else if (problem->code == ETHERCAT_ERROR_NONE) {
    problem->code = code;
    problem->slave = slave;
  }
}

static bool is_enabled(const Axis* axis) {
  return (axis->status & 0x6F) == 0x27;
}

/* Without power: switch on disabled, or failed and at rest. */
static bool is_off(const Axis* axis) {
  return (axis->status & 0x4F) == 0x40 || (axis->status & 0x4F) == 0x08;
}

/* The next step on the way to operation enabled; a fault of earlier times is reset by a rising edge. */
static unsigned step_up(const Axis* axis) {
  if ((axis->status & 0x4F) == 0x08)
    return axis->command == FAULT_RESET ? 0 : FAULT_RESET;
  if ((axis->status & 0x4F) == 0x40)
    return SHUTDOWN;
  return (axis->status & 0x6F) == 0x21                       ? SWITCH_ON
         : (axis->status & 0x6F) == 0x23 || is_enabled(axis) ? ENABLE
                                                             : 0;
}

static void write_axis(Axis* axis, unsigned command, double target) {
  axis->command = command;
  igh_master_pdo_send(MASTER, axis->mode, CYCLIC_POSITION);
  igh_master_pdo_send(MASTER, axis->controlword, command);
  igh_master_pdo_send(MASTER, axis->target, target);
}

/* A sine that swells in the first second and fades in the last one, so that it begins and ends at rest. */
static double sine_at(long cycle, long cycles) {
  const double now = (double)cycle / PERIODS_PER_S, left = (double)(cycles - cycle) / PERIODS_PER_S;
  const double share = fmin(1.0, fmin(now, left));
  return AMPLITUDE * share * share * sin(2 * 3.14159265358979 * FREQUENCY * now);
}

/* What ends the movement early, into `text`; false for nothing. */
static bool find_fault(const Axis axes[AXES], const Problem* problem, char* text, size_t size) {
  uint32_t state = 0;
  double code = 0;
  if (problem->code != ETHERCAT_ERROR_NONE)
    return snprintf(text, size, "bus error %d, slave %d", problem->code, (int)problem->slave) > 0;
  if (problem->frames_missed > MISSED_FRAMES_LIMIT)
    return snprintf(text, size, "%d frames in a row lost or incomplete", problem->frames_missed) > 0;
  if (igh_master_get_state(MASTER, &state) && state != AL_OP)
    return snprintf(text, size, "the bus left OP: AL states %u", (unsigned)state) > 0;
  for (int i = 0; i < AXES; ++i)
    if (!is_enabled(&axes[i]) && igh_master_pdo_recv(MASTER, axes[i].error_code, &code))
      return snprintf(text, size, "axis %d: statusword 0x%04X, error 0x%04X", i, axes[i].status,
                      (unsigned)code) > 0;
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

/* One exchange, and what it brought. */
static void exchange(Axis axes[AXES], Problem* problem, bool* enabled, bool* off) {
  const int missed = problem->frames_missed;
  uint32_t state = 0;
  *problem = (Problem){0};
  igh_master_exchange(MASTER, NULL, NULL);
  problem->frames_missed += problem->frames_missed > 0 ? missed : 0;
  *enabled = *off = true;
  for (int i = 0; i < AXES; ++i) {
    double status = 0;
    igh_master_pdo_recv(MASTER, axes[i].statusword, &status);
    igh_master_pdo_recv(MASTER, axes[i].actual, &axes[i].position);
    axes[i].status = (unsigned)status;
    *enabled = *enabled && is_enabled(&axes[i]);
    *off = *off && is_off(&axes[i]);
  }
  /* The drives may be enabled while the states that the master tells are still those of the climb. */
  *enabled = *enabled && igh_master_get_state(MASTER, &state) && state == AL_OP;
}

static void command_axis(Axis* axis, Phase phase, double offset) {
  if (phase == ENABLING) {
    axis->start = axis->position; /* no jump when the power comes */
    write_axis(axis, step_up(axis), axis->start);
  } else if (phase == MOVING) {
    axis->farthest = fmax(axis->farthest, fabs(axis->start + offset - axis->position));
    write_axis(axis, ENABLE, axis->start + offset);
  } else {
    write_axis(axis, phase == STOPPING ? QUICK_STOP : 0, axis->position);
  }
}

/* From enabling to standstill. The reason is in `fault` when it ended early. */
static void run(Axis axes[AXES], Problem* problem, long cycles, char* fault, size_t size) {
  Phase phase = ENABLING;
  bool enabled = false, off = false;
  long cycle = 0; /* of the phase */
  struct timespec wake;
  clock_gettime(CLOCK_MONOTONIC, &wake);
  while (phase != STOPPED) {
    const Phase before = phase;
    sleep_until_next(&wake);
    exchange(axes, problem, &enabled, &off);
    if ((phase == ENABLING && cycle == ENABLE_LIMIT && snprintf(fault, size, "not enabled in time") > 0) ||
        (phase == MOVING && (find_fault(axes, problem, fault, size) || cycle == cycles)))
      phase = STOPPING;
    else if (phase == ENABLING && enabled)
      phase = MOVING;
    else if (phase == STOPPING && (off || cycle == STOP_LIMIT))
      phase = STOPPED;
    cycle = phase == before ? cycle + 1 : 0;
    for (int i = 0; i < AXES; ++i)
      command_axis(&axes[i], phase, sine_at(cycle, cycles));
  }
  igh_master_exchange(MASTER, NULL, NULL); /* the last words go out */
}

static bool find_axes(Axis axes[AXES]) {
  uint32_t slaves = 0, code = 0;
  int found = 0;
  igh_master_scan(MASTER, &slaves);
  for (uint32_t slave = 0; slave < slaves && found < AXES; ++slave)
    if (igh_master_get_slave_product_code(MASTER, slave, &code) && code == DRIVE_PRODUCT_CODE)
      axes[found++].slave = slave;
  return found == AXES;
}

static bool open_axis(Axis* axis) {
  return igh_master_create_pdo_info(MASTER, axis->slave, "Controlword", false, &axis->controlword) &&
         igh_master_create_pdo_info(MASTER, axis->slave, "Target position", false, &axis->target) &&
         igh_master_create_pdo_info(MASTER, axis->slave, "Modes of operation", false, &axis->mode) &&
         igh_master_create_pdo_info(MASTER, axis->slave, "Statusword", true, &axis->statusword) &&
         igh_master_create_pdo_info(MASTER, axis->slave, "Position actual value", true, &axis->actual) &&
         igh_master_create_pdo_info(MASTER, axis->slave, "Error code", true, &axis->error_code);
}

static int failed(const char* what) {
  fprintf(stderr, "motion: %s\n", what);
  igh_master_uninitialize(MASTER);
  return 1;
}

int main(int argc, char** argv) {
  static Axis axes[AXES];
  static Problem problem;
  char fault[96] = "";
  const struct sched_param priority = {.sched_priority = 80};
  const long cycles = argc == 3 ? strtol(argv[2], NULL, 10) : 10L * PERIODS_PER_S;
  if (argc < 2 || argc > 3 || cycles < 1)
    return fprintf(stderr, "usage: %s DESCRIPTION.xml [CYCLES]\n", argv[0]), 2;
  if (!igh_master_initialize(MASTER, PERIOD_NS, false) || !igh_master_append_eni(MASTER, argv[1]))
    return failed("no master, or the description was not loaded");
  igh_master_set_error_callback(MASTER, on_error, &problem);
  if (!find_axes(axes))
    return failed("there are no two drives on the bus");
  igh_master_config_all_slave(MASTER);
  if (!open_axis(&axes[0]) || !open_axis(&axes[1]))
    return failed("the drive's description lacks an entry");
  if (!igh_master_active(MASTER))
    return failed("the master was not activated");
  if (mlockall(MCL_CURRENT | MCL_FUTURE) != 0 || sched_setscheduler(0, SCHED_FIFO, &priority) != 0)
    fprintf(stderr, "motion: without real-time priority\n");

  run(axes, &problem, cycles, fault, sizeof fault);
  if (fault[0] != '\0')
    fprintf(stderr, "motion: stopped for a fault: %s\n", fault);
  for (int i = 0; i < AXES; ++i)
    printf("Axis %d: at %.0f, at most %.0f counts behind, %s\n", i, axes[i].position, axes[i].farthest,
           is_off(&axes[i]) ? "off" : "not off");
  igh_master_uninitialize(MASTER);
  return fault[0] == '\0' ? 0 : 3;
}
