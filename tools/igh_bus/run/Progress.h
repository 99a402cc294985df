// The lines of a run while it lasts: taken down in the cycle, told by another thread.
#ifndef IGH_BUS_PROGRESS_H
#define IGH_BUS_PROGRESS_H

#include "bus/Session.h"
#include "report/Recording.h"
#include "run/Handover.h"

#include <optional>
#include <string>

namespace igh_bus {

class Progress {
public:
  explicit Progress(const RunOptions& options);

  // In the cycle: a line now and then, with the watched values; in a run that follows the reference clock one
  // for each interval of the library's controller instead.
  void note(const Session& session, std::uint32_t states);
  void noteClock(const ClockPoint& point, std::uint32_t states);

  // Beside it: the latest line, once.
  std::optional<std::string> line();
  // On a terminal each line stands over the one before.
  bool isOver() const { return m_over; }

private:
  std::string runLine() const;
  std::string clockLine();

  const RunOptions& m_options;
  std::size_t m_values; // watched, and few enough for a line
  bool m_over;
  std::uint64_t m_cyclesPerLine;
  Handover m_row;
  std::vector<std::uint64_t> m_read;
  std::uint64_t m_told = 0; // rows
  ClockPoint m_before{};
};

} // namespace igh_bus

#endif
