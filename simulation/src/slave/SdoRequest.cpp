#include "slave/SdoRequest.h"

#include <algorithm>
#include <cstdio>

namespace ethercat_simulation {

namespace {

constexpr std::uint8_t UNWRITTEN = 0xA5; // the real buffer is not initialised

} // namespace

SdoRequest::SdoRequest(std::string slave, const SdoPlace& place, std::size_t size)
    : m_slave(std::move(slave)), m_place(place), m_size(size), m_dataSize(size), m_buffer(size, UNWRITTEN),
      m_kernel(size, UNWRITTEN) {}

std::string SdoRequest::place() const {
  return m_slave + " " + m_place.text();
}

ec_request_state_t SdoRequest::state() {
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

void SdoRequest::start(bool read, Moment now) {
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
  m_started = now;
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

} // namespace ethercat_simulation
