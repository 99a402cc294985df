#include "slave/SdoQueue.h"

#include "slave/SlaveUnit.h"

#include <algorithm>

namespace ethercat_simulation {

SdoRequest& SdoQueue::add(const std::string& slave, const SdoPlace& place, std::size_t size) {
  m_requests.push_back(std::make_unique<SdoRequest>(slave, place, size));
  return *m_requests.back();
}

void SdoQueue::step(SlaveUnit* unit, const SdoPace& pace, Moment now) {
  if (m_running != nullptr && !m_running->is(SdoRequest::Phase::running)) {
    m_running = nullptr; // the application started it anew
  }
  if (unit == nullptr) {
    failAll();
    return;
  }
  for (const auto& request : m_requests) {
    request->wait();
  }
  if (m_running == nullptr && unit->ready()) {
    pick(*unit, pace, now);
  }
  if (m_running != nullptr) {
    progress(*unit, now);
  }
}

bool SdoQueue::isAnyBusy() const {
  return std::any_of(m_requests.begin(), m_requests.end(),
                     [](const auto& request) { return request->isBusy(); });
}

void SdoQueue::failAll() {
  for (const auto& request : m_requests) {
    if (request->isBusy()) {
      request->fail();
    }
  }
  m_running = nullptr;
}

void SdoQueue::pick(const SlaveUnit& unit, const SdoPace& pace, Moment now) {
  for (const auto& request : m_requests) {
    if (!request->is(SdoRequest::Phase::queued)) {
      continue;
    }
    if (request->hasWaitedTooLong(pace.isInTime(), now) || !unit.hasMailbox()) {
      request->fail();
      continue;
    }
    const bool answers = unit.responding() && request->fault(unit.dictionary()) != SdoFault::timeOut;
    m_running = request.get();
    m_running->run();
    m_end.begin(answers ? pace.answered : pace.unanswered, now);
    return;
  }
}

void SdoQueue::progress(SlaveUnit& unit, Moment now) {
  if (m_running->fault(unit.dictionary()) == SdoFault::busyForEver || !m_end.ends(now)) {
    return;
  }
  if (unit.responding() && unit.hasMailbox()) {
    m_running->finish(unit.dictionary());
  } else {
    m_running->fail();
  }
  m_running = nullptr;
}

} // namespace ethercat_simulation
