#include "EthercatObject/DcController.h"

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
  const int rawDifference = m_iDifferenceNs;
  const int previousRaw = m_iPreviousRawDifferenceNs;
  m_iDifferenceNs = wrap(periodNs, rawDifference);
  m_iPreviousRawDifferenceNs = rawDifference;
  if (!m_bStarted) {
    start(period, applicationTimeNs, debug);
    return;
  }
  ++m_iIntervalCount;
  m_llDifferenceSum += m_iDifferenceNs;
  m_llDriftSum += wrappingDifference(rawDifference, previousRaw);
  if (m_iIntervalCount == INTERVAL_CYCLES) {
    endInterval(period, alState, debug);
  }
  m_llSystemBaseOffsetNs += sign(m_iDifferenceNs) + m_llAdjustNs;
  m_llMaxDifferenceNs = std::max<long long>(m_llMaxDifferenceNs, m_iDifferenceNs);
  m_llMinDifferenceNs = std::min<long long>(m_llMinDifferenceNs, m_iDifferenceNs);
}

// The first difference other than 0 says that the reference clock answers.
void CDcController::start(int period, unsigned long long applicationTimeNs, bool debug) {
  m_bStarted = m_iDifferenceNs != 0;
  if (!m_bStarted) {
    return;
  }
  if (debug) {
    std::printf("First master diff: %d.\n", m_iDifferenceNs);
  }
  m_ullStartTimeNs = applicationTimeNs;
  restartExtremes(period);
}

void CDcController::endInterval(int period, unsigned int alState, bool debug) {
  const int step =
      (m_llDifferenceSum > INTERVAL_CYCLES - 1 ? 1 : 0) - (m_llDifferenceSum < 1 - INTERVAL_CYCLES ? 1 : 0);
  m_llAdjustNs += (m_llDriftSum + INTERVAL_CYCLES / 2) / INTERVAL_CYCLES + step;
  m_llAdjustNs = std::clamp(m_llAdjustNs, -MAX_ADJUST_NS, MAX_ADJUST_NS);
  m_iIntervalCount = 0;
  m_llDifferenceSum = 0;
  m_llDriftSum = 0;
  if (debug) {
    print("", alState);
  }
  restartExtremes(period);
}

void CDcController::restartExtremes(int period) {
  m_llMinDifferenceNs = std::max(period, m_iDifferenceNs);
  m_llMaxDifferenceNs = std::min(m_iDifferenceNs, 0);
}

void CDcController::print(const char* prefix, unsigned int alState) const {
  std::printf("%sstate = %d, dc_differ_ns = %d, dc_adjust_ns = %ld, min_dc_differ_ns = %ld, max_dc_differ_ns "
              "= %ld!\n",
              prefix, static_cast<int>(alState), m_iDifferenceNs, static_cast<long>(m_llAdjustNs),
              static_cast<long>(m_llMinDifferenceNs), static_cast<long>(m_llMaxDifferenceNs));
}
