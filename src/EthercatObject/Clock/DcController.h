#ifndef ETHERCATOBJECT_CLOCK_DCCONTROLLER_H
#define ETHERCATOBJECT_CLOCK_DCCONTROLLER_H

// Makes the master's time follow the reference clock: differences in, one per cycle; out comes an offset that
// is subtracted from the real time. It integrates slowly on purpose: one nanosecond per cycle towards the
// reference, and a rate that is corrected once in 1024 cycles from the drift seen in them. Knows neither bus
// nor clock. Times in ns.
class CDcController {
public:
  // applicationTimeNs: ns since 2000-01-01; remembered as start time until the first difference other than 0.
  void reset(unsigned long long applicationTimeNs = 0);

  // Application time minus reference time, as the 32-bit difference of both; kept until update() wraps it.
  void measure(int rawDifferenceNs) { dc_differ_ns = rawDifferenceNs; }
  // One step with the last difference measured. With debug set, the start and the end of each interval print
  // a line; alState is only printed.
  void update(unsigned int periodNs, unsigned long long applicationTimeNs, unsigned int alState, bool debug);

  // Signed difference wrapped into one period. The remainder keeps the sign of the dividend, so that negative
  // differences wrap into -3/2 to 1/2 of the period.
  static int wrap(unsigned int periodNs, int rawDifference);

  // "state = ..., dc_differ_ns = ..." as printed at the end of an interval and on deactivation, after
  // `prefix`.
  void print(const char* prefix, unsigned int alState) const;

  long long systemBaseOffsetNs() const { return m_llSystemBaseOffsetNs; }
  unsigned long long startTimeNs() const { return m_ullStartTimeNs; }
  bool started() const { return m_bStarted; }
  int differenceNs() const { return dc_differ_ns; }
  long long adjustNs() const { return dc_adjust_ns; }

private:
  void start(int period, unsigned long long applicationTimeNs, bool debug);
  void endInterval(int period, unsigned int alState, bool debug);
  void restartExtremes(int period);

  bool m_bStarted = false;
  long long m_llSystemBaseOffsetNs = 0;
  unsigned long long m_ullStartTimeNs = 0;
  int dc_differ_ns = 0;
  int m_iPreviousRawDifferenceNs = 0;
  long long m_llDifferenceSum = 0; // of wrapped differences in the interval
  long long m_llDriftSum = 0;      // of changes of the raw difference in the interval
  long long dc_adjust_ns = 0;      // per cycle
  int m_iIntervalCount = 0;
  long long min_dc_differ_ns = 0;
  long long max_dc_differ_ns = 0;
};

#endif
