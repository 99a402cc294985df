#include "EthercatObject/Clock/DcController.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int INTERVAL_CYCLES = 1024;
constexpr long long MAX_ADJUST_NS = 1000;

int sign(int value) {
  return (value > 0 ? 1 : 0) - (value < 0 ? 1 : 0);
}

// 32-bit times wrap every 4.3 s, and so do their differences.
int wrappingSum(int a, int b) {
  return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}
int wrappingDifference(int a, int b) {
  return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

} // namespace

void CDcController::reset(unsigned long long applicationTimeNs) {
  *this = CDcController();
  m_ullStartTimeNs = applicationTimeNs;
}

int CDcController::wrap(unsigned int periodNs, int rawDifference) {
  const int period = static_cast<int>(periodNs);
  const int half = static_cast<int>(periodNs >> 1U);
  return wrappingDifference(wrappingSum(half, rawDifference) % period, period / 2);
}

void CDcController::update(unsigned int periodNs, unsigned long long applicationTimeNs, unsigned int alState,
                           bool debug) {
  const int period = static_cast<int>(periodNs);
  const int rawDifference = dc_differ_ns;
  const int previousRaw = m_iPreviousRawDifferenceNs;
  dc_differ_ns = wrap(periodNs, rawDifference);
  m_iPreviousRawDifferenceNs = rawDifference;
  if (!m_bStarted) {
    start(period, applicationTimeNs, debug);
    return;
  }
  ++m_iIntervalCount;
  m_llDifferenceSum += dc_differ_ns;
  m_llDriftSum += wrappingDifference(rawDifference, previousRaw);
  if (m_iIntervalCount == INTERVAL_CYCLES) {
    endInterval(period, alState, debug);
  }
  m_llSystemBaseOffsetNs += sign(dc_differ_ns) + dc_adjust_ns;
  max_dc_differ_ns = std::max<long long>(max_dc_differ_ns, dc_differ_ns);
  min_dc_differ_ns = std::min<long long>(min_dc_differ_ns, dc_differ_ns);
}

// The first difference other than 0 says that the reference clock answers.
void CDcController::start(int period, unsigned long long applicationTimeNs, bool debug) {
  m_bStarted = dc_differ_ns != 0;
  if (!m_bStarted) {
    return;
  }
  if (debug) {
    std::printf("First master diff: %d.\n", dc_differ_ns);
  }
  m_ullStartTimeNs = applicationTimeNs;
  restartExtremes(period);
}

void CDcController::endInterval(int period, unsigned int alState, bool debug) {
  const int step =
      (m_llDifferenceSum > INTERVAL_CYCLES - 1 ? 1 : 0) - (m_llDifferenceSum < 1 - INTERVAL_CYCLES ? 1 : 0);
  dc_adjust_ns += (m_llDriftSum + INTERVAL_CYCLES / 2) / INTERVAL_CYCLES + step;
  dc_adjust_ns = std::clamp(dc_adjust_ns, -MAX_ADJUST_NS, MAX_ADJUST_NS);
  m_iIntervalCount = 0;
  m_llDifferenceSum = 0;
  m_llDriftSum = 0;
  if (debug) {
    print("", alState);
  }
  restartExtremes(period);
}

void CDcController::restartExtremes(int period) {
  min_dc_differ_ns = std::max(period, dc_differ_ns);
  max_dc_differ_ns = std::min(dc_differ_ns, 0);
}

void CDcController::print(const char* prefix, unsigned int alState) const {
  std::printf("%sstate = %d, dc_differ_ns = %d, dc_adjust_ns = %ld, min_dc_differ_ns = %ld, max_dc_differ_ns "
              "= %ld!\n",
              prefix, static_cast<int>(alState), dc_differ_ns, static_cast<long>(dc_adjust_ns),
              static_cast<long>(min_dc_differ_ns), static_cast<long>(max_dc_differ_ns));
}
