#include "record/CsvFile.h"

#include "bus/ErrorCounts.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <igh_master.h>
#include <unistd.h>

namespace igh_bus {
namespace {

constexpr std::size_t NUMBER_ROOM = 32; // the longest number and its comma
constexpr std::size_t FIXED_ROOM = 512; // the columns before the values
constexpr std::size_t BUFFER_BYTES = 1U << 18U;
constexpr std::uint32_t WORKING_COUNTER = 1U << ETHERCAT_ERROR_WORKING_COUNTER;

std::int64_t nowNs(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

std::string errorsOf(std::size_t bits) {
  std::string text;
  for (int code = 0; code < 6; ++code) {
    if ((bits >> static_cast<unsigned int>(code) & 1U) != 0 && code != ETHERCAT_ERROR_WORKING_COUNTER)
      text += (text.empty() ? "" : "; ") + std::string(errorText(code));
  }
  return text;
}

std::string quoted(const std::string& name) {
  std::string text = "\"";
  for (const char letter : name)
    text += letter == '"' ? "\"\"" : std::string(1, letter);
  return text + '"';
}

} // namespace

CsvFile::CsvFile(const std::string& path, const std::vector<std::string>& values)
    : m_file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
      m_sinceEpochNs(nowNs(CLOCK_REALTIME) - nowNs(CLOCK_MONOTONIC)), m_values(values.size()),
      m_buffer(std::max(BUFFER_BYTES, 2 * (FIXED_ROOM + values.size() * NUMBER_ROOM))) {
  std::string head =
      "cycle,time_ns,unix_ns,latency_ns,al_state,working_counter_error,other_errors,lost_before";
  for (const auto& name : values)
    head += "," + quoted(name);
  head += '\n';
  if (m_file < 0 || write(m_file, head.data(), head.size()) != static_cast<ssize_t>(head.size())) {
    const int error = errno;
    close();
    throw Failure(usageError, path + " cannot be written: " + std::strerror(error));
  }
  m_bytes = head.size();
  for (std::size_t states = 0; states < m_states.size(); ++states)
    m_states[states] = stateText(static_cast<std::uint32_t>(states));
  for (std::size_t bits = 0; bits < m_errors.size(); ++bits)
    m_errors[bits] = errorsOf(bits);
}

void CsvFile::add(const Row& row) {
  if (m_error != 0)
    return;
  if (m_buffer.size() - m_used < FIXED_ROOM + m_values * NUMBER_ROOM)
    flush();
  const RowHead& head = *row.head;
  if (m_firstNs < 0)
    m_firstNs = head.timeNs;
  number(head.cycle);
  number(head.timeNs - m_firstNs);
  number(head.timeNs + m_sinceEpochNs);
  number(head.latencyNs);
  text(m_states[head.states % m_states.size()]);
  number((head.errors & WORKING_COUNTER) != 0 ? 1 : 0);
  text(m_errors[head.errors % m_errors.size()]);
  number(head.lostBefore);
  for (std::size_t i = 0; i < m_values; ++i)
    number(row.values[i]);
  m_buffer[m_used - 1] = '\n';
  ++m_buffered;
}

// The shortest form that reads back as the same number.
template <typename Number> void CsvFile::number(Number value) {
  char* const at = m_buffer.data() + m_used;
  char* const end = std::to_chars(at, at + NUMBER_ROOM - 1, value).ptr;
  *end = ',';
  m_used += static_cast<std::size_t>(end - at) + 1;
}

void CsvFile::text(const std::string& text) {
  std::copy(text.begin(), text.end(), m_buffer.data() + m_used);
  m_used += text.size();
  m_buffer[m_used++] = ',';
}

void CsvFile::flush() {
  for (std::size_t done = 0; done < m_used && m_error == 0;) {
    const auto count = write(m_file, m_buffer.data() + done, m_used - done);
    if (count < 0 && errno != EINTR)
      fail(errno);
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  if (m_error == 0) {
    m_bytes += m_used;
    m_rows += m_buffered;
  }
  m_used = 0;
  m_buffered = 0;
}

void CsvFile::fail(int error) {
  m_error = error;
  if (ftruncate(m_file, static_cast<off_t>(m_bytes)) != 0)
    m_error = error; // no plain file: what a pipe has taken cannot be called back
}

void CsvFile::close() {
  if (m_file < 0)
    return;
  flush();
  if (::close(m_file) != 0 && m_error == 0)
    m_error = errno;
  m_file = -1;
}

} // namespace igh_bus
