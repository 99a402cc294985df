#ifndef ETHERCATOBJECT_TIMING_COMMDIAG_H
#define ETHERCATOBJECT_TIMING_COMMDIAG_H

#include <igh_master.h>

#include <ctime>

// Time stamps of one phase of a cycle, CLOCK_MONOTONIC. Both zero when the phase did not run.
struct _CYCLE_PHASE {
  timespec start{};
  timespec end{};
};

struct _CYCLE_STAMPS {
  _CYCLE_PHASE total;
  _CYCLE_PHASE receive;
  _CYCLE_PHASE sdo;
  _CYCLE_PHASE send;
  _CYCLE_PHASE callback;
};

// span = end - start; seconds and nanoseconds are subtracted separately, so nanoseconds may be negative.
void getClockSpan(const timespec* start, const timespec* end, timespec* span);

// The records of the fastest, the last and the slowest cycle since reset(): stamps in, records out.
class CCommDiag {
public:
  void reset() { *this = CCommDiag(); }
  // The first cycle (0) sets all three records; later at most one extreme is replaced per cycle.
  void record(unsigned long long cycle, const _CYCLE_STAMPS& stamps);
  bool get(unsigned int index, _ETHERCAT_COMM_DIAG_INFO* out) const;
  static void print(const char* title, const _ETHERCAT_COMM_DIAG_INFO* info); // null prints nothing

private:
  _ETHERCAT_COMM_DIAG_INFO m_records[3] = {};
};

#endif
