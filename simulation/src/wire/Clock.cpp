#include "wire/Clock.h"

#include <cerrno>
#include <cmath>
#include <ctime>

namespace ethercat_simulation {

namespace {

// ns since 2000-01-01
std::int64_t realTime() {
  constexpr std::int64_t FROM_1970_TO_2000 = 946'684'800;
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return (std::int64_t{time.tv_sec} - FROM_1970_TO_2000) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

void Clock::runFree(const ReferenceClock& plan) {
  m_free = true;
  m_plan = plan;
  m_random.seed(plan.seed);
  m_started = realTime();
  m_correction = 0;
}

std::uint64_t Clock::referenceTime() const {
  if (!m_free) {
    return m_applicationTime + static_cast<std::uint64_t>(m_correction);
  }
  const std::int64_t real = realTime();
  const auto gained = std::llround(static_cast<double>(real - m_started) * m_plan.driftPpm * 1e-6);
  return static_cast<std::uint64_t>(real + m_plan.offsetNs + gained + m_correction);
}

std::uint64_t Clock::latch() {
  const std::uint64_t time = referenceTime();
  if (!m_free || m_plan.jitterNs == 0) {
    return time;
  }
  const std::uint64_t scatter = m_random() % (2 * std::uint64_t{m_plan.jitterNs} + 1);
  return time + scatter - m_plan.jitterNs;
}

void Clock::start() {
  m_receives = 0;
  m_correction = 0;
  m_started = m_free ? realTime() : 0;
}

void Clock::stop() {
  m_applicationTime = 0;
  m_sentTime = 0;
  m_syncQueued = false;
  m_read.settle();
}

void Clock::queueRead() {
  if (offsetsKnown()) {
    m_read.queue();
  }
}

void Clock::transmit(const Flight& flight) {
  if (m_syncQueued && !flight.lost) {
    m_correction += static_cast<std::int64_t>(m_applicationTime - referenceTime());
  }
  m_syncQueued = false;
  if (m_read.is(TravelState::queued)) {
    m_read.depart(flight);
    m_sentTime = latch();
  }
}

void Clock::land(const SimulatedTime& time, Moment timeout) {
  m_read.arrive(time, timeout);
  m_receives += offsetsKnown() ? 0U : 1U;
}

int Clock::referenceTime(std::uint32_t& time) const {
  if (!offsetsKnown()) {
    return -EAGAIN;
  }
  if (!m_read.is(TravelState::received)) {
    return -EIO;
  }
  time = static_cast<std::uint32_t>(m_sentTime);
  return 0;
}

} // namespace ethercat_simulation
