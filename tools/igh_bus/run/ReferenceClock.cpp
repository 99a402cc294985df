#include "run/ReferenceClock.h"

#include <cstring>
#include <unistd.h>

namespace igh_bus {

// glibc's stdout is a variable, and printf of every library looks at it.
DifferenceLines::DifferenceLines()
    : m_kept(stdout), m_stream(fopencookie(this, "w", {nullptr, receive, nullptr, nullptr})) {
  if (!m_stream)
    return;
  std::fflush(stdout);
  std::setvbuf(m_stream, m_buffer.data(), _IOLBF, m_buffer.size());
  stdout = m_stream;
}

DifferenceLines::~DifferenceLines() {
  if (!m_stream)
    return;
  stdout = m_kept;
  std::fclose(m_stream);
  std::fwrite(m_line.data(), 1, m_length, stdout); // a line without an end
}

bool DifferenceLines::take(ClockPoint& point) {
  const bool fresh = m_fresh;
  m_fresh = false;
  if (fresh)
    point = m_point;
  return fresh;
}

ssize_t DifferenceLines::receive(void* self, const char* text, size_t size) {
  for (size_t i = 0; i < size; ++i)
    static_cast<DifferenceLines*>(self)->receive(text[i]);
  return static_cast<ssize_t>(size);
}

void DifferenceLines::receive(char letter) {
  m_line[m_length++] = letter;
  if (letter == '\n' || m_length == m_line.size() - 1)
    endLine();
}

void DifferenceLines::endLine() {
  m_line[m_length] = '\0';
  int state = 0;
  int difference = 0;
  long adjust = 0;
  long minimum = 0;
  long maximum = 0;
  if (std::sscanf(m_line.data(),
                  "state = %d, dc_differ_ns = %d, dc_adjust_ns = %ld, min_dc_differ_ns = %ld, "
                  "max_dc_differ_ns = %ld!",
                  &state, &difference, &adjust, &minimum, &maximum) == 5) {
    m_point = {0, difference, minimum, maximum, 0};
    m_fresh = true;
  } else {
    std::fwrite(m_line.data(), 1, m_length, m_kept);
    std::fflush(m_kept);
  }
  m_length = 0;
}

std::optional<ClockPoint> ReferenceFollower::follow(const Session& session, Pacemaker& pacemaker) {
  // The master's time is the real time less the offset: what the offset gains, the wake-ups must wait.
  const auto offset = session.clockOffsetNs();
  pacemaker.shift(offset - m_offsetNs);
  m_offsetNs = offset;
  ClockPoint point{};
  if (!m_lines.take(point))
    return {};
  point.cycle = session.cycles();
  point.offsetNs = offset;
  return point;
}

void ReferenceFollower::step(const Session& session, std::uint32_t state, Pacemaker& pacemaker,
                             Recording& recording, Lookout* lookout) {
  const auto point = follow(session, pacemaker);
  if (!point)
    return;
  recording.noteClock(*point);
  if (lookout)
    lookout->noteClock(*point, state);
}

} // namespace igh_bus
