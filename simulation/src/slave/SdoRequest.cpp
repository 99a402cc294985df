#include "slave/SdoRequest.h"

#include "interface/Invoke.h"

#include <algorithm>
#include <cstdio>

namespace ethercat_simulation {

namespace {

constexpr std::uint8_t UNWRITTEN = 0xA5; // the real buffer is not initialised

} // namespace

SdoRequest::SdoRequest(SlaveConfiguration& owner, const SdoPlace& place, std::size_t size)
    : m_owner(owner), m_place(place), m_size(size), m_dataSize(size), m_buffer(size, UNWRITTEN),
      m_kernel(size, UNWRITTEN) {}

Master& SdoRequest::master() const {
  return m_owner.master();
}

std::string SdoRequest::place() const {
  return m_owner.place() + " " + hexText(m_place.index, 4) + ":" +
         (m_place.complete ? "complete" : hexText(m_place.subindex, 2).substr(2));
}

ec_request_state_t SdoRequest::state() {
  master().catchUp();
  switch (m_phase) {
  case Phase::unused:
    return EC_REQUEST_UNUSED;
  case Phase::queued:
  case Phase::running:
    return EC_REQUEST_BUSY;
  case Phase::error:
    return EC_REQUEST_ERROR;
  case Phase::success:
    break;
  }
  if (m_read) {
    if (m_kernelSize > m_size) {
      std::fprintf(stderr, "Received %zu bytes do not fit info SDO data memory (%zu bytes)!\n", m_kernelSize,
                   m_size);
      return EC_REQUEST_ERROR; // does not fit, and says so each time
    }
    std::copy_n(m_kernel.begin(), m_kernelSize, m_buffer.begin());
    m_dataSize = m_kernelSize;
  }
  return EC_REQUEST_SUCCESS;
}

void SdoRequest::start(bool read) {
  if (isBusy()) {
    master().recorder().addBusyRequest(read ? Call::sdoRead : Call::sdoWrite, "the");
  }
  if (!read && m_dataSize == 0) {
    std::fprintf(stderr, "Failed to write SDO %s: Invalid argument\n", place().c_str());
    return;
  }
  if (!read) {
    std::copy_n(m_buffer.begin(), m_dataSize, m_kernel.begin());
    m_kernelSize = m_dataSize;
  }
  m_read = read;
  m_phase = Phase::queued;
  m_waited = 0;
  m_started = master().time().now();
}

bool SdoRequest::hasWaitedTooLong(bool inTime, Moment now) const {
  const std::uint64_t waited =
      inTime ? static_cast<std::uint64_t>((now - m_started) / MILLISECOND) : m_waited;
  return m_timeout != 0 && waited > m_timeout;
}

void SdoRequest::finish(ObjectDictionary& dictionary) {
  const SdoFault fault = dictionary.fault(m_place);
  bool done = fault != SdoFault::abort && fault != SdoFault::timeOut;
  if (done && m_read) {
    done = dictionary.upload(m_place, m_kernel.data(), m_size, &m_kernelSize) == SdoAbort::none;
    if (fault == SdoFault::shortAnswer && m_kernelSize > 0) {
      --m_kernelSize;
    } else if (fault == SdoFault::longAnswer) {
      m_kernelSize += 1;
    }
  } else if (done) {
    done = dictionary.download(m_place, m_kernel.data(), m_kernelSize) == SdoAbort::none;
  }
  m_phase = done ? Phase::success : Phase::error;
}

SdoRequest& SdoQueue::add(SlaveConfiguration& owner, const SdoPlace& place, std::size_t size) {
  m_requests.push_back(std::make_unique<SdoRequest>(owner, place, size));
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
